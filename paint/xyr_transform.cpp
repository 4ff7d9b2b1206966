// paint/xyr_transform.cpp — the transform set-up of CXyR: from outline units
// to coverage sub-samples, and the face geometry the painters read.
//
// The projection maps the face's measured box (centre cx, cy, half sizes hw,
// hh, margins included) onto the viewport of Ws × Hs sub-samples with y
// turned downward; the model-view applies, innermost first, slant, scales,
// shear, the move of the box centre to the origin and the rotation. The
// sequence runs twice. Pass 0 projects the outline origin and computes the
// correction (dx, dy) that moves it onto a pixel corner (a multiple of 4
// sub-samples, at least 1 sub-sample inside); pass 1 adds the correction and
// the sub-pixel fraction of the face position (4 sub-samples per pixel, 8 ÷
// Ws in normalised units since the viewport spans 2 units). The origin pixel
// then follows from pass 1's projection without the fraction.
//
// Afterwards the painter rectangle, the face-extents quad, the extents quad
// (grown by the fragments' stroke widths and shadow offsets) and the origin
// point are projected and stored in coverage pixels (sub-samples ÷ 4).
#include <cfloat>
#include <cmath>

#include "paint/face.h"
#include "paint/numeric.h"
#include "paint/xyr.h"
#include "raster/rasterizer.h"
#include "surface/fragment.h"

namespace {

constexpr double kSubPerPx = 4.0;  // sub-samples per pixel side

struct Projected {
    double x = 0.0;
    double y = 0.0;
};

// The affine matrices of the set-up always give w = 1, so Project writes
// its outputs; they start at 0 all the same so none is read unwritten.
Projected ProjectPoint(CRasterizer& r, double x, double y) {
    Projected p;
    double z = 0.0;
    (void)r.Project(x, y, 0.0, nullptr, nullptr, nullptr, &p.x, &p.y, &z);
    return p;
}

// Double to single precision; host values beyond the float range become
// ±infinity rather than meeting an undefined conversion.
float ToFloat(double v) {
    if (v > FLT_MAX) return INFINITY;
    if (v < -FLT_MAX) return -INFINITY;
    return static_cast<float>(v);
}

double Fraction(double v) { return v - std::floor(v); }

// ceil(v) − v + 4 − (trunc(ceil(v)) mod 4), mod keeping the dividend's sign.
double PixelCornerCorrection(double v) {
    const double up = std::ceil(v);
    return up - v + 4.0 - static_cast<double>(tr::TruncateToInt32(up) % 4);
}

// Rounds half up (floor, plus 1 when the remainder is at least 0.5) and
// divides the integer by 4, truncating toward zero.
int32_t OriginPixel(double sub) {
    double whole = std::floor(sub);
    if (sub - whole >= 0.5) whole += 1.0;
    return tr::TruncateToInt32(whole) / 4;
}

void LoadModelView(CRasterizer& r, const CFace& f) {
    r.MatrixMode(kGlModelView);
    r.LoadIdentity();
    const double cr = std::cos(f.rotation), sr = std::sin(f.rotation);
    const double rotation[16] = {cr, sr, 0, 0, -sr, cr, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    r.MultMatrix(rotation);
    r.Translate(-f.centreX, -f.centreY, 0.0);
    // Column-major: x' = x + m[4]·y, y' = m[1]·x + y.
    const double shear[16] = {1, std::tan(f.shearY), 0, 0, std::tan(f.shearX), 1, 0, 0,
                              0, 0, 1, 0, 0, 0, 0, 1};
    r.MultMatrix(shear);
    r.Scale(f.widthScale, f.heightScale, 1.0);
    const double slant[16] = {1, std::tan(f.slantB), 0, 0, std::tan(f.slantA), 1, 0, 0,
                              0, 0, 1, 0, 0, 0, 0, 1};
    r.MultMatrix(slant);
    r.SetTaper(ToFloat(f.taperH), ToFloat(f.taperV));
}

// One pass of the matrix sequence; returns the projected outline origin.
Projected LoadTransform(CRasterizer& r, const CFace& f, bool withFraction, double dx, double dy) {
    const float ws = f.subWidthExact, hs = f.subHeightExact;
    r.Viewport(0.0f, 0.0f, ws, hs);
    r.MatrixMode(kGlProjection);
    r.LoadIdentity();
    if (withFraction) r.Translate(8.0 * Fraction(f.faceX) / ws, 8.0 * Fraction(f.faceY) / hs, 0.0);
    r.Translate(2.0 * dx / ws, 2.0 * dy / hs, 0.0);
    r.Scale(1.0 / f.halfWidth, -1.0 / f.halfHeight, 0.0);
    LoadModelView(r, f);
    return ProjectPoint(r, 0.0, 0.0);
}

void ProjectPainterRectangle(CRasterizer& r, CFace& f) {
    const double cx = f.painterCentreX, cy = f.painterCentreY;
    const Projected p0 = ProjectPoint(r, cx, cy);
    const Projected p1 = ProjectPoint(r, cx + f.painterHalfWidth, cy + f.painterHalfHeight);
    const Projected p2 = ProjectPoint(r, cx, cy + f.painterHalfHeight);
    const Projected p3 = ProjectPoint(r, cx + f.painterHalfWidth, cy);
    auto distance = [](Projected a, Projected b) {
        const double dx = a.x - b.x, dy = a.y - b.y;
        return std::sqrt(dx * dx + dy * dy);
    };
    f.painterHalfWidth = distance(p2, p1) / kSubPerPx;
    f.painterHalfHeight = distance(p3, p1) / kSubPerPx;
    f.painterCentreX = p0.x / kSubPerPx;
    f.painterCentreY = p0.y / kSubPerPx;
}

void StoreProjected(CRasterizer& r, FacePoint& p) {
    const Projected q = ProjectPoint(r, p.x, p.y);
    p.x = q.x / kSubPerPx;
    p.y = q.y / kSubPerPx;
}

}  // namespace

void CXyR::SetUpTransform(CFace& face, std::span<const CFragment> fragments) {
    CRasterizer& r = *rasterizer;
    const Projected first = LoadTransform(r, face, false, 0.0, 0.0);
    const double dx = PixelCornerCorrection(first.x);
    const double dy = PixelCornerCorrection(first.y);
    const Projected origin = LoadTransform(r, face, true, dx, dy);

    face.originColumn = OriginPixel(origin.x - kSubPerPx * Fraction(face.faceX));
    face.originRow = OriginPixel(origin.y - kSubPerPx * Fraction(face.faceY));
    ProjectPainterRectangle(r, face);

    // Room the fragments need beyond the face box: strokes on every side,
    // shadows towards their offset (L, R, B, T = left, right, bottom, top).
    double left = 0.0, right = 0.0, bottom = 0.0, top = 0.0;
    for (const CFragment& fragment : fragments) {
        if (fragment.noMap) continue;
        currentFragment = &fragment;
        r.SetNibbleMap(fragment.nibbleMap);
        const double w = fragment.widthPx;
        const double a = fragment.shadowOffsetA, b = fragment.shadowOffsetB;
        for (double* side : {&left, &right, &bottom, &top}) {
            if (w > *side) *side = w;
        }
        if (a > 0.0 && a + w > right) right = a + w;
        if (a < 0.0 && w - a > left) left = w - a;
        if (b > 0.0 && b + w > top) top = b + w;
        if (b < 0.0 && w - b > bottom) bottom = w - b;
    }
    FacePoint* e = face.extents;
    e[0] = {e[0].x - left, e[0].y - bottom};
    e[1] = {e[1].x + right, e[1].y - bottom};
    e[2] = {e[2].x + right, e[2].y + top};
    e[3] = {e[3].x - left, e[3].y + top};
    for (int i = 0; i < 4; ++i) {
        StoreProjected(r, face.faceExtents[i]);
        StoreProjected(r, face.extents[i]);
    }
    face.origin = {0.0, 0.0};
    StoreProjected(r, face.origin);
    r.MatrixMode(kGlModelView);
}
