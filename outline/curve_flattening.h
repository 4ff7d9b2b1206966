// outline/curve_flattening.h — folder-private: flattening of the curve
// records of glyph outlines into points.
//
// N = 25 is the step count. A cubic segment gives N - 1 = 24 points at
// t = i/24 (the last one its end point). A quadratic piece gives N - 1 = 24
// points at t = 1/25 .. 24/25, stepped by forward differences; its end point
// itself is not appended.
#pragma once

#include <list>

#include "outline/point3d.h"

namespace tr {

constexpr double kCurveSteps = 25.0;

struct Point2 {
    double x, y;
};

// Appends B(t) for t = i/(N-1), i = 1 .. N-1, from p0 with controls c1, c2
// to e; every point gets z.
void AppendCubic(std::list<CPoint3D>& out, Point2 p0, Point2 c1, Point2 c2, Point2 e, double z);

// Appends the N-1 inner points of the quadratic piece s-c-e, t = k/N.
void AppendQuadraticPiece(std::list<CPoint3D>& out, Point2 s, Point2 c, Point2 e, double z);

}  // namespace tr
