// Private header of surface/: the shine band shared by the gradient generators.
//
// A shine is a straight band laid across the gradient box. The band's centre
// line passes through the box centre at the shine angle and is then shifted
// perpendicular to itself by `position` half-diagonals:
//
//      y = x * slope + offset,   slope = tan(angle),
//      offset = (boxHeight - slope * boxWidth) * 0.5,
//      (dx, dy) = (cos(angle + pi/2), sin(angle + pi/2)) * diagonal * 0.5 * position.
//
// A point (x, y) is measured by shifting it by (dx, dy) and taking its
// horizontal distance hd and vertical distance vd to the line; hd * vd / |(hd, vd)|
// is then its perpendicular distance s. Inside the band (s < shine width) the
// colour is pulled towards the shine colour by 1 - k, with k = ShineFactor(s /
// width) rising from 0.05 on the line to 1 at the edge in three linear pieces
// that meet at r = 0.1 (k = 0.125) and r = 0.7 (k = 0.875 / 0.8749962).
//
// Everything is templated on the working precision: the four-corner fill
// works in double, the classic generators in float. Constants are converted
// to T, so the float path uses the float values of 0.1, 0.75, 1.570796325...
#pragma once

#include <algorithm>
#include <cmath>

namespace tr {

// Angles this close to 0 would make the slope 0 and the horizontal distance
// divide by zero; they are moved to 0.001, rounded to float
// (0.0010000000474974513) for both precisions.
template <class T>
T LimitShineAngle(T angle) {
    if (angle > T(-0.001) && angle < T(0.001)) {
        return T(0.001f);
    }
    return angle;
}

// The blend weight of the underlying colour at relative distance r (0 on the
// centre line, 1 at the band's edge).
template <class T>
T ShineFactor(T r) {
    if (r < T(0.1)) {
        return T(0.75) * r + T(0.05);
    }
    if (r < T(0.7)) {
        return T(1.25) * r;
    }
    return std::min(T(1), T(0.416666) * r + T(0.58333));
}

template <class T>
struct ShineLine {
    T slope = 0;  // tan of the limited angle
    T offset = 0; // line passes through the box centre
    T dx = 0;     // shift applied to the measured point
    T dy = 0;

    // `angle` must already be limited; `diagonal` is the box diagonal as the
    // caller computes it.
    static ShineLine Make(T angle, T boxWidth, T boxHeight, T diagonal, T position) {
        constexpr T kQuarterTurn = T(1.570796325);
        ShineLine line;
        line.slope = std::tan(angle);
        line.offset = (boxHeight - line.slope * boxWidth) * T(0.5);
        const T shift = diagonal * T(0.5) * position;
        line.dx = std::cos(angle + kQuarterTurn) * shift;
        line.dy = std::sin(angle + kQuarterTurn) * shift;
        return line;
    }

    T HorizontalDistance(T px, T py) const { return std::abs((py - offset) / slope - px); }
    T VerticalDistance(T px, T py) const { return std::abs(px * slope + offset - py); }

    // Distance of box point (u, v), shifted by (dx, dy), from the line; 0 on
    // the line itself.
    T DistanceFrom(T u, T v) const;
};

// hd * vd / sqrt(hd^2 + vd^2); NaN when both are 0 (the caller decides what
// a point exactly on the line means).
template <class T>
T PerpendicularDistance(T hd, T vd) {
    return hd * vd / std::sqrt(hd * hd + vd * vd);
}

template <class T>
T ShineLine<T>::DistanceFrom(T u, T v) const {
    const T px = u + dx;
    const T py = v + dy;
    const T hd = HorizontalDistance(px, py);
    const T vd = VerticalDistance(px, py);
    return (hd + vd == T(0)) ? T(0) : PerpendicularDistance(hd, vd);
}

} // namespace tr
