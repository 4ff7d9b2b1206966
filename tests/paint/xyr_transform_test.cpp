// The transform set-up of CXyR: where the outline origin lands (a pixel
// corner plus the face position's fraction), the origin pixel, the painter
// rectangle, and the extents quads grown by the fragments, in coverage
// pixels. Expected positions
// come from the face's affine map written out here (slant, scale, shear,
// centre, rotation, then the box onto the viewport with y downward).
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "fragment_test_support.h"
#include "paint/face.h"
#include "paint/xyr.h"
#include "surface/fragment.h"

namespace {

struct FaceValues {
    double rotation, slantA, slantB, shearX, shearY, widthScale, heightScale, faceX, faceY;
};

// Outline box [0, 80] × [−10, 50] at scale 0.5, measured.
void SetUpFace(CFace& f, const FaceValues& v) {
    trtest::SetUpBox(f, 0, -10, 80, 50, 0.5);
    f.rotation = v.rotation;
    f.slantA = v.slantA, f.slantB = v.slantB, f.shearX = v.shearX, f.shearY = v.shearY;
    f.widthScale = v.widthScale, f.heightScale = v.heightScale;
    f.faceX = v.faceX, f.faceY = v.faceY;
    f.Measure();
}

// Runs the set-up (first use) by drawing `list`.
void SetUpTransform(CFace& face, std::span<const CFragment> list) {
    COutline2 outline;
    trtest::LoadGroups(outline, {trtest::SquareGroup(0, 0, 10)}, 100);
    std::vector<uint16_t> coverage(size_t(face.subWidth) * face.subHeight / 4);
    CXyR xyr;
    xyr.DrawFragments({coverage.data(), face.subWidth, face.subHeight, &outline}, list);
}

struct Point {
    double x, y;
};

// Outline point → sub-samples before any correction.
Point Map(const CFace& f, const FaceValues& v, double x, double y) {
    const double sx = x + std::tan(v.slantA) * y, sy = y + std::tan(v.slantB) * x;
    const double kx = sx * v.widthScale, ky = sy * v.heightScale;
    const double cx = kx + std::tan(v.shearX) * ky - f.centreX;
    const double cy = ky + std::tan(v.shearY) * kx - f.centreY;
    const double rx = cx * std::cos(v.rotation) - cy * std::sin(v.rotation);
    const double ry = cx * std::sin(v.rotation) + cy * std::cos(v.rotation);
    return {(rx / f.halfWidth + 1) * f.subWidthExact / 2,
            (-ry / f.halfHeight + 1) * f.subHeightExact / 2};
}

// Every face draws the same list: an unmapped fragment (which does not
// count) and two strokes whose widths and shadow offsets widen the extents
// quad by L = max(5, 2, 2 + 6) = 8, R = max(5, 2, 10 + 5) = 15,
// B = max(5, 2, 5 + 3) = 8 and T = max(5, 2, 4 + 2) = 6.
TEST(TransformSetUp, OriginLandsOnAPixelCornerPlusTheFaceFraction) {
    const FaceValues faces[] = {
        {0, 0, 0, 0, 0, 1, 1, 0, 0},
        {0, 0, 0, 0, 0, 2, 0.5, 3.75, -1.5},
        {0.3, 0, 0, 0, 0, 1, 1, 10.25, 4.5},
        {0.4, 0, 0, 0, 0, 2, 3, 0, 0},
        {0, 0.2, -0.1, 0, 0, 1, 1, 0.5, 0.5},
        {-1.1, 0.1, 0, 0.15, -0.05, 1.5, 1.2, 7.9, 2.01},
        {std::numbers::pi / 2, 0, 0, 0, 0, 1, 1, 0, 0},
    };
    const double grown[4][2] = {{-8, -18}, {95, -18}, {95, 56}, {-8, 56}};
    const uint8_t map[16] = {2};
    for (const FaceValues& v : faces) {
        CFace face(nullptr);
        SetUpFace(face, v);
        const double pcx = face.painterCentreX, pcy = face.painterCentreY;
        const double phw = face.painterHalfWidth, phh = face.painterHalfHeight;
        CFragment list[] = {CFragment(nullptr, 1, 0, 0, 0), CFragment(map, 1, 0, 0, 0),
                            CFragment(map, 1, 0, 0, 0)};
        const double widthAndOffsets[3][3] = {{50, -50, 50}, {5, 10, -3}, {2, -6, 4}};
        for (int i = 0; i < 3; ++i) {
            list[i].face = &face;
            list[i].widthPx = widthAndOffsets[i][0];
            list[i].shadowOffsetA = widthAndOffsets[i][1];
            list[i].shadowOffsetB = widthAndOffsets[i][2];
        }
        SetUpTransform(face, list);

        // The origin moves to the first pixel corner right of (and below)
        // ceil(projection), then by 4 × the face position's fraction.
        const Point o = Map(face, v, 0, 0);
        const double cornerX = (std::floor(std::ceil(o.x) / 4) + 1) * 4;
        const double cornerY = (std::floor(std::ceil(o.y) / 4) + 1) * 4;
        const double dx = cornerX + 4 * (v.faceX - std::floor(v.faceX)) - o.x;
        const double dy = cornerY + 4 * (v.faceY - std::floor(v.faceY)) - o.y;
        EXPECT_EQ(face.originColumn, static_cast<int32_t>(cornerX / 4)) << v.rotation;
        EXPECT_EQ(face.originRow, static_cast<int32_t>(cornerY / 4)) << v.rotation;
        EXPECT_NEAR(face.origin.x * 4, o.x + dx, 1e-6) << v.rotation;
        EXPECT_NEAR(face.origin.y * 4, o.y + dy, 1e-6) << v.rotation;
        // Every projected point moves by the same correction.
        for (int i = 0; i < 4; ++i) {
            const Point p = Map(face, v, i == 1 || i == 2 ? 80 : 0, i < 2 ? -10 : 50);
            EXPECT_NEAR(face.faceExtents[i].x * 4, p.x + dx, 1e-6) << i;
            EXPECT_NEAR(face.faceExtents[i].y * 4, p.y + dy, 1e-6) << i;
            const Point q = Map(face, v, grown[i][0], grown[i][1]);
            EXPECT_NEAR(face.extents[i].x * 4, q.x + dx, 1e-6) << i;
            EXPECT_NEAR(face.extents[i].y * 4, q.y + dy, 1e-6) << i;
        }
        // Painter rectangle: its centre mapped, half sizes as mapped lengths.
        const Point c = Map(face, v, pcx, pcy), a = Map(face, v, pcx, pcy + phh);
        const Point b = Map(face, v, pcx + phw, pcy + phh), d = Map(face, v, pcx + phw, pcy);
        EXPECT_NEAR(face.painterCentreX * 4, c.x + dx, 1e-6);
        EXPECT_NEAR(face.painterCentreY * 4, c.y + dy, 1e-6);
        EXPECT_NEAR(face.painterHalfWidth, std::hypot(a.x - b.x, a.y - b.y) / 4, 1e-9);
        EXPECT_NEAR(face.painterHalfHeight, std::hypot(d.x - b.x, d.y - b.y) / 4, 1e-9);
    }
}

}  // namespace
