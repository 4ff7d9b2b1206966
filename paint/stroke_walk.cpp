// paint/stroke_walk.cpp — outline strokes, extrusions and smears as quad
// strips along a contour.
//
// A stroke walks the closed contour edge by edge. For every edge a → b with
// direction θ (atan2, in [0, 2π)) it emits the pairs (a, a + w·n(θ)) and
// (b, b + w·n(θ)), n being the unit normal on the stroke's side. Between two
// edges the turn θ − θprev + π (again in [0, 2π)) tells whether the offset
// edges leave a gap on the stroke's side: above π for a right-hand stroke,
// below π for a left-hand one. The gap is closed by a fan of pairs at a, all
// sharing a as first vertex, whose second vertices sweep the normal from
// n(θprev) towards n(θ) in k equal steps (a round join), or by one pair on the
// bisector at distance w ÷ cos(h), h half the turn's deviation (a mitre).
//
//            a + w·n(θprev)   join pairs   a + w·n(θ)
//                    *------ *  *  * ------*
//                     \      |  |  |      /
//                      \     |  |  |     /
//                       `----- a ------'
//
// The walk starts with the pair of the first point on the closing edge's
// normal, so the strip is closed and the first vertex gets its join too.
// Right and left strokes share one formula: with base = θprev ∓ π/2 the
// join angles are base + i·(turn − π)/k and the mitre lies at base − h,
// h = (π − turn)/2; negating a difference is exact in IEEE arithmetic, so
// these are bit for bit the mirrored forms of each other.
//
// The walk evaluates each angle's sine and cosine once: an edge's pairs at a
// and at b share the offset w·n(θ), and the closing edge's direction, needed
// at the start, is kept for the last edge. The plain twin evaluates every
// pair's offset on its own; both emit the same doubles, since the offset is
// the same expression of the same angle either way.
//
// Edge directions: an outline block made by the outline builder already
// holds them, each in the z of the edge's end point, computed as
// atan2(b − a) plus 2π when negative. Wrapped once more (an angle that
// rounded up to 2π becomes 0) that is exactly Direction(a, b), so the walk
// reads it from there when the contour says it may, and saves the atan2 of
// every edge.
#include "paint/stroke_walk.h"

#include <algorithm>
#include <cmath>

#include "paint/numeric.h"
#include "raster/rasterizer.h"

namespace tr {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kJoinStep = 0.19634954084936207;       // π/16
constexpr double kRoundRight = 3.455751918948773;       // 1.1π
constexpr double kRoundLeft = 2.827433388230814;        // 0.9π
constexpr double kWideMitreRight = 3.8327430373795477;  // 1.22π
constexpr double kWideRoundRight = 4.743804906920587;   // 1.51π
constexpr double kWideRoundLeft = 1.5393804002589986;   // 0.49π
// A closing edge pointing exactly along +x starts the walk just off 0.
constexpr double kFirstDirectionFloor = 0.000001;
constexpr int32_t kMinJoinSteps = 3;

// atan2 results and turns lie within one turn of [0, 2π), so one step is
// enough; NaN passes through.
double WrapAngle(double a) {
    if (a < 0.0) a += kTwoPi;
    if (a >= kTwoPi) a -= kTwoPi;
    return a;
}

double Direction(const CPoint3D& a, const CPoint3D& b) {
    return WrapAngle(std::atan2(b.y - a.y, b.x - a.x));
}

// Emits the pair (a, a + distance * (cos angle, sin angle)).
template <class Emit>
void EmitOffset(Emit& emit, const CPoint3D& a, double angle, double distance) {
    emit(a, a.x + distance * std::cos(angle), a.y + distance * std::sin(angle));
}

// The pairs of the join at a, where the stroke turns by `turn` from the
// edge whose offset direction is `base`.
template <class Emit>
void EmitJoin(Emit& emit, const CPoint3D& a, double turn, double base, double w, StrokeSide side,
              bool wide) {
    switch (ClassifyTurn(turn, side, wide)) {
        case JoinKind::Round: {
            const int32_t k = RoundJoinSteps(turn, side);
            for (int32_t j = 1; j <= k; ++j) EmitOffset(emit, a, base + j * (turn - kPi) / k, w);
            break;
        }
        case JoinKind::Mitre: {
            const double h = (kPi - turn) * 0.5;
            EmitOffset(emit, a, base - h, w / std::cos(h));
            break;
        }
        case JoinKind::None:
            break;
    }
}

// Calls emit(a, ox, oy) for every pair (a, (ox, oy)) of the stroke.
template <class Emit>
void WalkStrokePlain(ContourView c, double w, StrokeSide side, bool wide, Emit&& emit) {
    const uint32_t n = c.count;
    const CPoint3D* p = c.points;
    const double normal = side == StrokeSide::Right ? -kHalfPi : kHalfPi;
    double prev = Direction(p[n - 1], p[0]);
    if (prev == 0.0) prev = kFirstDirectionFloor;
    EmitOffset(emit, p[0], prev + normal, w);
    for (uint32_t i = 0; i < n; ++i) {
        const CPoint3D& a = p[i];
        const CPoint3D& b = p[i + 1 < n ? i + 1 : 0];
        const double theta = Direction(a, b);
        EmitJoin(emit, a, WrapAngle(theta - prev + kPi), prev + normal, w, side, wide);
        EmitOffset(emit, a, theta + normal, w);
        EmitOffset(emit, b, theta + normal, w);
        prev = theta;
    }
}

// WalkStrokePlain with one evaluation of each edge's offset for both its
// pairs, the closing edge's direction computed once, and stored directions
// read.
template <class Emit>
void WalkStroke(ContourView c, double w, StrokeSide side, bool wide, Emit&& emit) {
    const uint32_t n = c.count;
    const CPoint3D* p = c.points;
    const double normal = side == StrokeSide::Right ? -kHalfPi : kHalfPi;
    constexpr uint32_t kMinStoredPoints = 3;  // shorter contours keep the parser's z
    const bool stored = c.directionsStored && n >= kMinStoredPoints;
    // Direction(a, b), read from b's stored direction when there is one.
    auto direction = [stored](const CPoint3D& a, const CPoint3D& b) {
        return stored ? WrapAngle(b.z) : Direction(a, b);
    };
    const double closing = direction(p[n - 1], p[0]);
    double prev = closing == 0.0 ? kFirstDirectionFloor : closing;
    EmitOffset(emit, p[0], prev + normal, w);
    for (uint32_t i = 0; i < n; ++i) {
        const CPoint3D& a = p[i];
        const bool last = i + 1 == n;
        const CPoint3D& b = p[last ? 0 : i + 1];
        const double theta = last ? closing : direction(a, b);
        EmitJoin(emit, a, WrapAngle(theta - prev + kPi), prev + normal, w, side, wide);
        const double angle = theta + normal;
        const double dx = w * std::cos(angle), dy = w * std::sin(angle);
        emit(a, a.x + dx, a.y + dy);
        emit(b, b.x + dx, b.y + dy);
        prev = theta;
    }
}

// Both stroke strips through one walk: the plain twin's or the default one.
template <bool kPlain, class Emit>
void WalkStrokeWith(ContourView c, double w, StrokeSide side, bool wide, Emit&& emit) {
    if constexpr (kPlain) {
        WalkStrokePlain(c, w, side, wide, emit);
    } else {
        WalkStroke(c, w, side, wide, emit);
    }
}

template <bool kPlain>
void DrawStrokeWith(CRasterizer& r, ContourView c, double width, StrokeSide side, bool wide) {
    if (c.count == 0) return;
    r.Begin();
    WalkStrokeWith<kPlain>(c, width, side, wide, [&r](const CPoint3D& a, double ox, double oy) {
        const double first[2] = {a.x, a.y};
        r.Vertex2dv(first);
        r.Vertex2d(ox, oy);
    });
    r.End();
}

template <bool kPlain>
void DrawStrokeExtrusionWith(CRasterizer& r, ContourView c, double width, StrokeSide side,
                             double offsetX, double offsetY) {
    if (c.count == 0) return;
    r.Begin();
    WalkStrokeWith<kPlain>(c, width, side, false, [&](const CPoint3D&, double ox, double oy) {
        const double first[2] = {ox, oy};
        r.Vertex2dv(first);
        r.Vertex2d(ox + offsetX, oy + offsetY);
    });
    r.End();
}

}  // namespace

JoinKind ClassifyTurn(double turn, StrokeSide side, bool wide) {
    if (side == StrokeSide::Right) {
        if (!wide) return turn > kRoundRight ? JoinKind::Round : JoinKind::None;
        if (turn > kWideRoundRight) return JoinKind::Round;
        return turn > kWideMitreRight ? JoinKind::Mitre : JoinKind::None;
    }
    if (!wide) return turn < kRoundLeft ? JoinKind::Round : JoinKind::None;
    if (turn < kWideRoundLeft) return JoinKind::Round;
    return turn < kRoundLeft ? JoinKind::Mitre : JoinKind::None;
}

int32_t RoundJoinSteps(double turn, StrokeSide side) {
    const double deviation = side == StrokeSide::Right ? turn - kPi : kPi - turn;
    return std::max(kMinJoinSteps, TruncateToInt32(deviation / kJoinStep));
}

void DrawStroke(CRasterizer& r, ContourView c, double width, StrokeSide side, bool wide) {
    DrawStrokeWith<false>(r, c, width, side, wide);
}

void DrawStrokePlain(CRasterizer& r, ContourView c, double width, StrokeSide side, bool wide) {
    DrawStrokeWith<true>(r, c, width, side, wide);
}

void DrawStrokeExtrusion(CRasterizer& r, ContourView c, double width, StrokeSide side,
                         double offsetX, double offsetY) {
    DrawStrokeExtrusionWith<false>(r, c, width, side, offsetX, offsetY);
}

void DrawStrokeExtrusionPlain(CRasterizer& r, ContourView c, double width, StrokeSide side,
                              double offsetX, double offsetY) {
    DrawStrokeExtrusionWith<true>(r, c, width, side, offsetX, offsetY);
}

void DrawExtrusion(CRasterizer& r, ContourView c, double shiftX, double shiftY, double offsetX,
                   double offsetY) {
    if (c.count == 0) return;
    r.Begin();
    for (uint32_t i = 0; i <= c.count; ++i) {
        const CPoint3D& p = c.points[i < c.count ? i : 0];
        const double q[2] = {p.x + shiftX, p.y + shiftY};
        r.Vertex2dv(q);
        r.Vertex2d(q[0] + offsetX, q[1] + offsetY);
    }
    r.End();
}

void DrawSmear(CRasterizer& r, ContourView c, double dx, double dy) {
    if (c.count == 0) return;
    for (const double sign : {1.0, -1.0}) {
        r.Begin();
        for (uint32_t i = 0; i <= c.count; ++i) {
            const CPoint3D& p = c.points[i < c.count ? i : 0];
            const double first[2] = {p.x, p.y};
            r.Vertex2dv(first);
            r.Vertex2d(p.x + sign * dx, p.y + sign * dy);
        }
        r.End();
    }
}

}  // namespace tr
