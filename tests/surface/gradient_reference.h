// Test helper of tests/surface/: the gradient formula pieces the generators
// share, for reference pixels in the generator's precision T.
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

// Weights (1 - d / diag)^4 of the corners (0, 0), (W, 0), (W, H), (0, H).
template <class T>
void CornerWeights(T x, T y, T W, T H, T diag, T w[4]) {
    auto weight = [diag](T dx, T dy) {
        const T v = T(1) - std::sqrt(dx * dx + dy * dy) / diag;
        return (v * v) * (v * v);
    };
    w[0] = weight(x, y), w[1] = weight(W - x, y), w[2] = weight(W - x, H - y), w[3] = weight(x, H - y);
}

// The weight k of the colour under the shine band at (x, y), or -1 outside.
// The centre line (angle kept off 0) is shifted by position half-diagonals;
// zeroOnLine says whether the 0/0 distance on the line counts as 0.
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
