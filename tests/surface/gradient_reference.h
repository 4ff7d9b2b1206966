// Test helper of tests/surface/: the pieces of the gradient formulas that
// the generators share, written from their definitions for the reference
// pixels of the generator tests. T is the working precision of the
// generator under test; constants are taken in T, as the generators do.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tr_test {

// A rotated gradient box: centre, half sizes, angle and texture origin.
struct Box {
    double x0, y0, halfWidth, halfHeight, angle, originX, originY;
};

inline uint32_t Byte(uint32_t colour, int channel) { return (colour >> (8 * channel)) & 0xFF; }

// Weights (1 - d / diag)^4, as the square of the square, of the corners
// (0, 0), (W, 0), (W, H), (0, H) for the point (x, y).
template <class T>
void CornerWeights(T x, T y, T W, T H, T diag, T w[4]) {
    auto weight = [diag](T dx, T dy) {
        const T v = T(1) - std::sqrt(dx * dx + dy * dy) / diag;
        return (v * v) * (v * v);
    };
    w[0] = weight(x, y), w[1] = weight(W - x, y), w[2] = weight(W - x, H - y), w[3] = weight(x, H - y);
}

// The weight k of the underlying colour at (x, y) in the shine band of a
// W x H box, or -1 outside the band. The centre line passes through the box
// centre at the angle (moved off 0 to the float of 0.001), shifted by
// position half-diagonals; the distance is hd * vd / |(hd, vd)|, which is
// 0/0 on the line itself: zeroOnLine says whether that counts as 0.
template <class T>
T ShineWeight(T x, T y, T W, T H, T diag, T angle, T position, T width, bool zeroOnLine) {
    if (T(-0.001) < angle && angle < T(0.001)) angle = T(0.001f);
    const T t = std::tan(angle), b = (H - W * t) * T(0.5), shift = diag * T(0.5) * position;
    const T px = x + std::cos(angle + T(1.570796325)) * shift;
    const T py = y + std::sin(angle + T(1.570796325)) * shift;
    const T hd = std::fabs((py - b) / t - px), vd = std::fabs(px * t + b - py);
    const T s = zeroOnLine && hd + vd == 0 ? T(0) : hd * vd / std::sqrt(hd * hd + vd * vd);
    if (!(width > s)) return T(-1);
    const T r = s / width;
    return r < T(0.1)   ? T(0.75) * r + T(0.05)
           : r < T(0.7) ? T(1.25) * r
                        : std::min(T(1), T(0.416666) * r + T(0.58333));
}

} // namespace tr_test
