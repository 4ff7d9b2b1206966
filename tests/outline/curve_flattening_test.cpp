// Curve flattening: 24 points per cubic segment against de Casteljau, the
// quadratic stepper against the closed form.
#include "outline/curve_flattening.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tr {
namespace {

Point2 Lerp(Point2 a, Point2 b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

TEST(CurveFlattening, CubicGives24PointsEndingExactlyOnTheEndPoint) {
    const Point2 p0{0, 0}, c1{10, 40}, c2{70, -30}, e{100.125, 3.5};
    std::list<CPoint3D> out;
    AppendCubic(out, p0, c1, c2, e, -12.0);
    ASSERT_EQ(out.size(), 24u);
    EXPECT_EQ(out.back().x, e.x);
    EXPECT_EQ(out.back().y, e.y);
    int i = 1;
    for (const CPoint3D& p : out) {
        const double t = i++ / 24.0;
        const Point2 a = Lerp(p0, c1, t), b = Lerp(c1, c2, t), c = Lerp(c2, e, t);
        const Point2 q = Lerp(Lerp(a, b, t), Lerp(b, c, t), t);
        EXPECT_NEAR(p.x, q.x, 1e-9) << t;
        EXPECT_NEAR(p.y, q.y, 1e-9) << t;
        EXPECT_EQ(p.z, -12.0);
    }
}

TEST(CurveFlattening, QuadraticPieceStopsOneStepBeforeItsEnd) {
    const Point2 s{0, 0}, c{50, 100}, e{100, 0};
    std::list<CPoint3D> out;
    AppendQuadraticPiece(out, s, c, e, 2.0);
    ASSERT_EQ(out.size(), 24u);
    int k = 1;
    for (const CPoint3D& p : out) {
        const double t = k++ / 25.0, mt = 1 - t;
        EXPECT_NEAR(p.x, mt * mt * s.x + 2 * mt * t * c.x + t * t * e.x, 1e-9) << t;
        EXPECT_NEAR(p.y, mt * mt * s.y + 2 * mt * t * c.y + t * t * e.y, 1e-9) << t;
        EXPECT_EQ(p.z, 2.0);
    }
}

}  // namespace
}  // namespace tr
