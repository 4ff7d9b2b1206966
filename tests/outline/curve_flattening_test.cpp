// Curve flattening: 24 points per cubic segment, the quadratic stepper
// against the closed form.
#include "outline/curve_flattening.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tr {
namespace {

Point2 Lerp(Point2 a, Point2 b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

// de Casteljau, independent of the Bernstein form the code uses.
Point2 Cubic(Point2 p0, Point2 c1, Point2 c2, Point2 e, double t) {
    const Point2 a = Lerp(p0, c1, t), b = Lerp(c1, c2, t), c = Lerp(c2, e, t);
    return Lerp(Lerp(a, b, t), Lerp(b, c, t), t);
}

TEST(CurveFlattening, CubicGives24PointsEndingExactlyOnTheEndPoint) {
    const Point2 p0{0, 0}, c1{10, 40}, c2{70, -30}, e{100.125, 3.5};
    std::list<CPoint3D> out;
    AppendCubic(out, p0, c1, c2, e, -12.0);
    ASSERT_EQ(out.size(), 24u);
    EXPECT_EQ(out.back().x, e.x);
    EXPECT_EQ(out.back().y, e.y);
    int i = 1;
    for (const CPoint3D& p : out) {
        const Point2 q = Cubic(p0, c1, c2, e, i / 24.0);
        EXPECT_NEAR(p.x, q.x, 1e-9) << i;
        EXPECT_NEAR(p.y, q.y, 1e-9) << i;
        EXPECT_EQ(p.z, -12.0);
        ++i;
    }
}

TEST(CurveFlattening, QuadraticPieceStopsOneStepBeforeItsEnd) {
    const Point2 s{0, 0}, c{50, 100}, e{100, 0};
    std::list<CPoint3D> out;
    AppendQuadraticPiece(out, s, c, e, 2.0);
    ASSERT_EQ(out.size(), 24u);
    int k = 1;
    for (const CPoint3D& p : out) {
        const double t = k / 25.0, mt = 1 - t;
        EXPECT_NEAR(p.x, mt * mt * s.x + 2 * mt * t * c.x + t * t * e.x, 1e-9) << k;
        EXPECT_NEAR(p.y, mt * mt * s.y + 2 * mt * t * c.y + t * t * e.y, 1e-9) << k;
        EXPECT_EQ(p.z, 2.0);
        ++k;
    }
    EXPECT_GT(std::fabs(out.back().x - e.x), 1.0) << "the end point is not appended";
}

}  // namespace
}  // namespace tr
