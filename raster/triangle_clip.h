// raster/triangle_clip.h — private to raster/: polygon clipping of triangles
// too large for the fixed-point walk.
//
// A triangle with a vertex beyond kSafeCoord is clipped (Sutherland-Hodgman,
// in doubles) against a box that exceeds the walk window by kClipGuard on
// every side, then fanned from its first vertex. Attributes are interpolated
// linearly along the clipped edges. The pieces are small enough to walk
// directly; since they share their fan edges, the fill rule still covers the
// clipped region without gaps or double coverage.
#pragma once

#include <array>
#include <cmath>

#include "raster/triangle_walk.h"

namespace tr {

struct ClipVertex {
    double x, y, a0, a1;
};

// At most 3 + 4 vertices after clipping a triangle against four planes.
using ClipPolygon = std::array<ClipVertex, 8>;

// Keeps the part of `in` where sign * (coord - limit) <= 0.
inline int ClipAgainst(const ClipPolygon& in, int n, bool useY, double limit, double sign,
                       ClipPolygon& out) {
    int m = 0;
    for (int i = 0; i < n; ++i) {
        const ClipVertex& p = in[i];
        const ClipVertex& q = in[(i + 1) % n];
        const double dp = sign * ((useY ? p.y : p.x) - limit);
        const double dq = sign * ((useY ? q.y : q.x) - limit);
        if (dp <= 0.0) out[m++] = p;
        if ((dp <= 0.0) != (dq <= 0.0)) {
            const double t = dp / (dp - dq);
            out[m++] = {p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t, p.a0 + (q.a0 - p.a0) * t,
                        p.a1 + (q.a1 - p.a1) * t};
        }
    }
    return m;
}

// Calls draw(piece) for each triangle of the clipped polygon.
template <class DrawFn>
void ClipOversized(const ScreenTriangle& t, const WalkWindow& w, DrawFn& draw) {
    ClipPolygon a{}, b{};
    for (int i = 0; i < 3; ++i) a[i] = {t.x[i], t.y[i], t.attr[0][i], t.attr[1][i]};
    int n = 3;
    n = ClipAgainst(a, n, false, -kClipGuard, -1.0, b);
    n = ClipAgainst(b, n, false, w.width + kClipGuard, 1.0, a);
    n = ClipAgainst(a, n, true, w.rowBegin - kClipGuard, -1.0, b);
    n = ClipAgainst(b, n, true, w.rowEnd + kClipGuard, 1.0, a);
    for (int i = 1; i + 1 < n; ++i) {
        ScreenTriangle piece;
        const int idx[3] = {0, i, i + 1};
        for (int k = 0; k < 3; ++k) {
            const ClipVertex& v = a[idx[k]];
            piece.x[k] = static_cast<float>(v.x);
            piece.y[k] = static_cast<float>(v.y);
            piece.attr[0][k] = v.a0;
            piece.attr[1][k] = v.a1;
        }
        draw(piece);
    }
}

// Runs set-up and walk for one triangle, clipping it first when oversized.
// onSetup(setup, triangle) is called once per drawable (piece of) triangle
// and returns the span function to walk with.
template <class OnSetup>
void RasterizeTriangle(const ScreenTriangle& t, const WalkWindow& w, OnSetup& onSetup) {
    TriangleSetup s;
    switch (SetUpTriangle(t, s)) {
    case SetupResult::kDrop:
        return;
    case SetupResult::kDraw: {
        auto span = onSetup(s, t);
        WalkTriangle(s, w, span);
        return;
    }
    case SetupResult::kClip: {
        auto drawPiece = [&](const ScreenTriangle& piece) {
            TriangleSetup ps;
            if (SetUpTriangle(piece, ps) != SetupResult::kDraw) return;
            auto span = onSetup(ps, piece);
            WalkTriangle(ps, w, span);
        };
        ClipOversized(t, w, drawPiece);
        return;
    }
    }
}

}  // namespace tr
