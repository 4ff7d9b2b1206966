// outline/curve_flattening.cpp — cubic Bernstein evaluation and the
// quadratic forward-difference stepper.
//
// Quadratic piece from s with control c to e, B(t) = s + 2t(c - s) +
// t^2(s - 2c + e). With step h = 1/N the first difference at t = 0 is
// B(h) - B(0) = 2(c - s)/N + (s - 2c + e)/N^2 and the second difference is
// constant, 2(s - 2c + e)/N^2. Stepping N - 1 times reaches t = (N-1)/N.
#include "outline/curve_flattening.h"

namespace tr {

void AppendCubic(std::list<CPoint3D>& out, Point2 p0, Point2 c1, Point2 c2, Point2 e, double z) {
    const int count = static_cast<int>(kCurveSteps) - 1;
    for (int i = 1; i <= count; ++i) {
        const double t = i / (kCurveSteps - 1.0);
        const double mt = 1.0 - t;
        const double b0 = mt * mt * mt;
        const double b1 = 3.0 * t * mt * mt;
        const double b2 = 3.0 * t * t * mt;
        const double b3 = t * t * t;
        out.push_back(CPoint3D{b0 * p0.x + b1 * c1.x + b2 * c2.x + b3 * e.x,
                               b0 * p0.y + b1 * c1.y + b2 * c2.y + b3 * e.y, z});
    }
}

void AppendQuadraticPiece(std::list<CPoint3D>& out, Point2 s, Point2 c, Point2 e, double z) {
    const double n2 = kCurveSteps * kCurveSteps;
    const double ax = s.x - 2.0 * c.x + e.x;
    const double ay = s.y - 2.0 * c.y + e.y;
    const double ddx = 2.0 * ax / n2;
    const double ddy = 2.0 * ay / n2;
    double dx = ax / n2 + 2.0 * (c.x - s.x) / kCurveSteps;
    double dy = ay / n2 + 2.0 * (c.y - s.y) / kCurveSteps;
    double x = s.x;
    double y = s.y;
    const int count = static_cast<int>(kCurveSteps) - 1;
    for (int k = 0; k < count; ++k) {
        x += dx;
        y += dy;
        dx += ddx;
        dy += ddy;
        out.push_back(CPoint3D{x, y, z});
    }
}

}  // namespace tr
