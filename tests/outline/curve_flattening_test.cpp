// Curve flattening: 24 points per cubic segment against de Casteljau. (The
// quadratic stepper is checked against the closed form through the glyph
// format tests, where its start-point rule also shows.)
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

}  // namespace
}  // namespace tr
