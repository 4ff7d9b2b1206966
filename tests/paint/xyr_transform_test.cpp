// The transform set-up of CXyR: where the outline origin lands (a pixel
// corner plus the face position's fraction), the origin pixel, the painter
// rectangle and the extents quads in coverage pixels, and the call sequence.
// Expected positions come from the face's affine map written out here from
// its definition (slant, scale, shear, centre, rotation, then the box onto
// the viewport with y downward).
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "fragment_test_support.h"
#include "paint/face.h"
#include "paint/xyr.h"
#include "surface/fragment.h"

namespace {

using trtest::RecordingRasterizer;

RecordingRasterizer* gLast = nullptr;
CRasterizer* CreateRecording() noexcept { return gLast = new RecordingRasterizer(); }
void ReleaseRecording(CRasterizer* r) noexcept { delete r; }

struct FaceValues {
    double rotation, slantA, slantB, shearX, shearY, widthScale, heightScale;
    double faceX, faceY;
};

// Outline box [0, 80] × [−10, 50] at s = 0.5.
void SetUpFace(CFace& f, const FaceValues& v) {
    f.hasOutline = 1;
    f.dirty = 1;
    f.scale = 0.5;
    f.pixelRatio = 1.0;
    f.rotation = v.rotation;
    f.slantA = v.slantA;
    f.slantB = v.slantB;
    f.shearX = v.shearX;
    f.shearY = v.shearY;
    f.widthScale = v.widthScale;
    f.heightScale = v.heightScale;
    f.faceX = v.faceX;
    f.faceY = v.faceY;
    f.centreX = f.painterCentreX = 40;
    f.centreY = f.painterCentreY = 20;
    f.halfWidth = 40;
    f.halfHeight = 30;
    f.faceExtents[0] = {0, -10};
    f.faceExtents[1] = {80, -10};
    f.faceExtents[2] = {80, 50};
    f.faceExtents[3] = {0, 50};
    for (int i = 0; i < 4; ++i) f.extents[i] = f.faceExtents[i];
    f.Measure();
}

struct Point {
    double x, y;
};

// Outline point → sub-samples before any correction: slant, scales,
// shear, move of the box centre, rotation, then the box onto the viewport.
Point Map(const CFace& f, const FaceValues& v, double x, double y) {
    const double sx = x + std::tan(v.slantA) * y, sy = y + std::tan(v.slantB) * x;
    const double kx = sx * v.widthScale, ky = sy * v.heightScale;
    const double hx = kx + std::tan(v.shearX) * ky, hy = ky + std::tan(v.shearY) * kx;
    const double cx = hx - f.centreX, cy = hy - f.centreY;
    const double rx = cx * std::cos(v.rotation) - cy * std::sin(v.rotation);
    const double ry = cx * std::sin(v.rotation) + cy * std::cos(v.rotation);
    const double ws = f.subWidthExact, hs = f.subHeightExact;
    return {(rx / f.halfWidth + 1) * ws / 2, (-ry / f.halfHeight + 1) * hs / 2};
}

// The first pixel corner strictly right of ceil(v), as the correction makes
// it (v positive here).
double CorrectedCorner(double v) { return (std::floor(std::ceil(v) / 4) + 1) * 4; }

const FaceValues kFaces[] = {
    {0, 0, 0, 0, 0, 1, 1, 0, 0},
    {0, 0, 0, 0, 0, 2, 0.5, 3.75, -1.5},
    {0.3, 0, 0, 0, 0, 1, 1, 10.25, 4.5},
    {0, 0.2, -0.1, 0, 0, 1, 1, 0.5, 0.5},
    {-1.1, 0.1, 0, 0.15, -0.05, 1.5, 1.2, 7.9, 2.01},
    {std::numbers::pi / 2, 0, 0, 0, 0, 1, 1, 0, 0},
};

TEST(TransformSetUp, OriginLandsOnAPixelCornerPlusTheFaceFraction) {
    const uint8_t map[16] = {2};
    for (const FaceValues& v : kFaces) {
        CFace face(nullptr);
        SetUpFace(face, v);
        std::list<CContourGroup> groups{trtest::SquareGroup(0, 0, 10)};
        COutline2 outline;
        trtest::LoadGroups(outline, groups, 100);
        std::vector<uint16_t> coverage(size_t(face.subWidth) * face.subHeight / 4);
        CFragment fragment(map, 0, 0, 0, 0);
        fragment.face = &face;
        CXyR xyr(&CreateRecording, &ReleaseRecording);
        xyr.DrawFragments({coverage.data(), face.subWidth, face.subHeight, &outline},
                          std::span<const CFragment>(&fragment, 1));

        const Point o = Map(face, v, 0, 0);
        const double fx = v.faceX - std::floor(v.faceX), fy = v.faceY - std::floor(v.faceY);
        const double cornerX = CorrectedCorner(o.x), cornerY = CorrectedCorner(o.y);
        EXPECT_EQ(face.originColumn, static_cast<int32_t>(cornerX / 4)) << v.rotation;
        EXPECT_EQ(face.originRow, static_cast<int32_t>(cornerY / 4)) << v.rotation;
        EXPECT_NEAR(face.origin.x * 4, cornerX + 4 * fx, 1e-6) << v.rotation;
        EXPECT_NEAR(face.origin.y * 4, cornerY + 4 * fy, 1e-6) << v.rotation;

        // Every projected point moves by the same correction.
        const double dx = cornerX + 4 * fx - o.x, dy = cornerY + 4 * fy - o.y;
        for (int i = 0; i < 4; ++i) {
            const double ex[4] = {0, 80, 80, 0}, ey[4] = {-10, -10, 50, 50};
            const Point p = Map(face, v, ex[i], ey[i]);
            EXPECT_NEAR(face.faceExtents[i].x * 4, p.x + dx, 1e-6) << i;
            EXPECT_NEAR(face.faceExtents[i].y * 4, p.y + dy, 1e-6) << i;
            // No mapped fragment has width or offset: the quads coincide.
            EXPECT_EQ(face.extents[i].x, face.faceExtents[i].x);
            EXPECT_EQ(face.extents[i].y, face.faceExtents[i].y);
        }
        // Painter rectangle: centre and half sizes as mapped lengths.
        const Point c = Map(face, v, 40, 20);
        EXPECT_NEAR(face.painterCentreX * 4, c.x + dx, 1e-6);
        EXPECT_NEAR(face.painterCentreY * 4, c.y + dy, 1e-6);
    }
}

TEST(TransformSetUp, PainterRectangleHalfSizesAreMappedEdgeLengths) {
    const FaceValues v{0.4, 0, 0, 0, 0, 2, 3, 0, 0};
    CFace face(nullptr);
    SetUpFace(face, v);
    const double pcx = face.painterCentreX, pcy = face.painterCentreY;
    const double phw = face.painterHalfWidth, phh = face.painterHalfHeight;
    std::list<CContourGroup> groups{trtest::SquareGroup(0, 0, 10)};
    COutline2 outline;
    trtest::LoadGroups(outline, groups, 100);
    std::vector<uint16_t> coverage(size_t(face.subWidth) * face.subHeight / 4);
    const uint8_t map[16] = {2};
    CFragment fragment(map, 0, 0, 0, 0);
    fragment.face = &face;
    CXyR xyr;
    xyr.DrawFragments({coverage.data(), face.subWidth, face.subHeight, &outline},
                      std::span<const CFragment>(&fragment, 1));
    // Rotation and the viewport's scales: the horizontal half-width maps to
    // a vector of length phw × widthScale stretched by (Ws/2)/hw along the
    // rotated axis, on both screen axes.
    const Point a = Map(face, v, pcx, pcy + phh), b = Map(face, v, pcx + phw, pcy + phh);
    const Point c = Map(face, v, pcx + phw, pcy);
    EXPECT_NEAR(face.painterHalfWidth, std::hypot(a.x - b.x, a.y - b.y) / 4, 1e-9);
    EXPECT_NEAR(face.painterHalfHeight, std::hypot(c.x - b.x, c.y - b.y) / 4, 1e-9);
    EXPECT_GT(face.painterHalfWidth, 0.0);
}

TEST(TransformSetUp, ExtentsGrowByStrokeWidthsAndShadowOffsets) {
    // (widthPx, offset a, offset b) → L, R, B, T.
    struct Case {
        double w, a, b;
        double left, right, bottom, top;
    };
    const Case cases[] = {
        {5, 10, -3, 5, 15, 8, 5},
        {2, -6, 4, 8, 2, 2, 6},
        {0, 0, 0, 0, 0, 0, 0},
        {3, 0, 1, 3, 3, 3, 4},
    };
    const FaceValues v{0, 0, 0, 0, 0, 1, 1, 0, 0};
    for (const Case& c : cases) {
        CFace face(nullptr);
        SetUpFace(face, v);
        std::list<CContourGroup> groups{trtest::SquareGroup(0, 0, 10)};
        COutline2 outline;
        trtest::LoadGroups(outline, groups, 100);
        std::vector<uint16_t> coverage(size_t(face.subWidth) * face.subHeight / 4);
        const uint8_t map[16] = {2};
        CFragment mapped(map, 1, 0, 0, 0), unmapped(nullptr, 1, 0, 0, 0);
        mapped.face = unmapped.face = &face;
        mapped.widthPx = c.w;
        mapped.shadowOffsetA = c.a;
        mapped.shadowOffsetB = c.b;
        unmapped.widthPx = 50;  // without a map it does not count
        unmapped.shadowOffsetA = -50;
        const CFragment list[] = {unmapped, mapped};
        CXyR xyr;
        xyr.DrawFragments({coverage.data(), face.subWidth, face.subHeight, &outline}, list);
        // One outline unit is (Ws/2)/hw sub-samples across and (Hs/2)/hh
        // down, y flipped; quads are stored in pixels.
        const double ux = face.subWidthExact / 2.0 / face.halfWidth / 4;
        const double uy = face.subHeightExact / 2.0 / face.halfHeight / 4;
        const double gx[4] = {-c.left, c.right, c.right, -c.left};
        const double gy[4] = {-c.bottom, -c.bottom, c.top, c.top};
        for (int i = 0; i < 4; ++i) {
            EXPECT_NEAR(face.extents[i].x - face.faceExtents[i].x, gx[i] * ux, 1e-9)
                << c.w << " corner " << i;
            EXPECT_NEAR(face.extents[i].y - face.faceExtents[i].y, -gy[i] * uy, 1e-9)
                << c.w << " corner " << i;
        }
    }
}

TEST(TransformSetUp, CallSequenceOfTheTwoPasses) {
    FaceValues v{0, 0, 0, 0, 0, 1, 1, 5.25, 2.5};
    CFace face(nullptr);
    SetUpFace(face, v);
    face.taperH = 12.3;
    face.taperV = -4.56;
    std::list<CContourGroup> groups{trtest::SquareGroup(0, 0, 10)};
    COutline2 outline;
    trtest::LoadGroups(outline, groups, 100);
    std::vector<uint16_t> coverage(size_t(face.subWidth) * face.subHeight / 4);
    CFragment fragment(nullptr, 0, 0, 0, 0);
    fragment.face = &face;
    CXyR xyr(&CreateRecording, &ReleaseRecording);
    xyr.DrawFragments({coverage.data(), face.subWidth, face.subHeight, &outline},
                      std::span<const CFragment>(&fragment, 1));
    std::vector<const trtest::Call*> viewports, tapers, translates, modes;
    for (const auto& c : gLast->calls) {
        if (c.name == "Viewport") viewports.push_back(&c);
        if (c.name == "SetTaper") tapers.push_back(&c);
        if (c.name == "Translate") translates.push_back(&c);
        if (c.name == "MatrixMode") modes.push_back(&c);
    }
    ASSERT_EQ(viewports.size(), 2u);
    for (const auto* c : viewports) {
        EXPECT_EQ(c->args,
                  (std::vector<double>{0, 0, face.subWidthExact, face.subHeightExact}));
    }
    ASSERT_EQ(tapers.size(), 2u);
    EXPECT_EQ(tapers[1]->args, (std::vector<double>{12.3f, -4.56f}));
    // Pass 0: correction (0, 0), centre; pass 1: fraction, correction,
    // centre.
    ASSERT_EQ(translates.size(), 5u);
    EXPECT_EQ(translates[0]->args[0], 0.0);
    EXPECT_DOUBLE_EQ(translates[2]->args[0], 8 * 0.25 / face.subWidthExact);
    EXPECT_DOUBLE_EQ(translates[2]->args[1], 8 * 0.5 / face.subHeightExact);
    EXPECT_EQ(translates[4]->args, (std::vector<double>{-face.centreX, -face.centreY, 0}));
    ASSERT_EQ(modes.size(), 5u);
    EXPECT_EQ(modes.back()->args[0], double(kGlModelView));
    EXPECT_EQ(modes[0]->args[0], double(kGlProjection));
}

}  // namespace
