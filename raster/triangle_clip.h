// raster/triangle_clip.h — private to raster/: clipping of triangles too
// large for the fixed-point walk.
//
// A triangle with a vertex beyond kSafeCoord is intersected with a box that
// exceeds the walk window by kClipGuard on every side, and the resulting
// convex polygon is fanned from its first vertex. The polygon is computed by
// clipping the small box against the triangle's three edge half-planes, not
// the huge triangle against the box: the edge functions
//
//     E(x, y) = (qx - px) * y - (qy - py) * x - (qx * py - qy * px)
//
// have exact float-by-float products, so they stay accurate where a line
// passes near the box even when its end points are ~1e38 away, and all
// interpolation happens between box-sized points. Attributes of the new
// vertices come from barycentric weights E_i(v) / E_i(vertex i). The fan
// pieces share edges, so the fill rule covers the clipped region without gap
// or double coverage.
#pragma once

#include <array>
#include <cmath>

#include "raster/triangle_walk.h"

namespace tr {

struct ClipVertex {
    double x, y, a0, a1;
};

// At most 4 + 3 vertices after clipping the box against three half-planes.
using ClipPolygon = std::array<ClipVertex, 8>;

// Edge function of the directed edge p -> q (see above).
struct EdgeLine {
    double a, b, c;
    EdgeLine(float px, float py, float qx, float qy)
        : a(-(double(qy) - double(py))),
          b(double(qx) - double(px)),
          c(double(qx) * double(py) - double(qy) * double(px)) {}
    double At(double x, double y) const { return b * y + a * x - c; }
};

// Keeps the part of `in` where sign * line(v) >= 0.
inline int ClipAgainst(const ClipPolygon& in, int n, const EdgeLine& line, double sign,
                       ClipPolygon& out) {
    int m = 0;
    for (int i = 0; i < n; ++i) {
        const ClipVertex& p = in[i];
        const ClipVertex& q = in[(i + 1) % n];
        const double dp = sign * line.At(p.x, p.y);
        const double dq = sign * line.At(q.x, q.y);
        if (dp >= 0.0) out[m++] = p;
        if ((dp >= 0.0) != (dq >= 0.0)) {
            const double t = dp / (dp - dq);
            out[m++] = {p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t, 0.0, 0.0};
        }
    }
    return m;
}

// Calls draw(piece) for each triangle of the triangle's part of the guard box.
template <class DrawFn>
void ClipOversized(const ScreenTriangle& t, const WalkWindow& w, DrawFn& draw) {
    const EdgeLine lines[3] = {EdgeLine(t.x[1], t.y[1], t.x[2], t.y[2]),
                               EdgeLine(t.x[2], t.y[2], t.x[0], t.y[0]),
                               EdgeLine(t.x[0], t.y[0], t.x[1], t.y[1])};
    // lines[i] is opposite vertex i; its value there is the doubled area.
    double atVertex[3];
    for (int i = 0; i < 3; ++i) {
        atVertex[i] = lines[i].At(t.x[i], t.y[i]);
        if (!(atVertex[i] != 0.0) || !std::isfinite(atVertex[i])) return;  // degenerate
    }
    const double x0 = -kClipGuard, x1 = w.width + kClipGuard;
    const double y0 = w.rowBegin - kClipGuard, y1 = w.rowEnd + kClipGuard;
    ClipPolygon a{}, b{};
    a[0] = {x0, y0, 0, 0};
    a[1] = {x1, y0, 0, 0};
    a[2] = {x1, y1, 0, 0};
    a[3] = {x0, y1, 0, 0};
    int n = 4;
    n = ClipAgainst(a, n, lines[0], atVertex[0] > 0 ? 1.0 : -1.0, b);
    n = ClipAgainst(b, n, lines[1], atVertex[1] > 0 ? 1.0 : -1.0, a);
    n = ClipAgainst(a, n, lines[2], atVertex[2] > 0 ? 1.0 : -1.0, b);
    for (int i = 0; i < n; ++i) {
        double attr0 = 0.0, attr1 = 0.0;
        for (int k = 0; k < 3; ++k) {
            const double weight = lines[k].At(b[i].x, b[i].y) / atVertex[k];
            attr0 += weight * t.attr[0][k];
            attr1 += weight * t.attr[1][k];
        }
        b[i].a0 = attr0;
        b[i].a1 = attr1;
    }
    for (int i = 1; i + 1 < n; ++i) {
        ScreenTriangle piece;
        const int idx[3] = {0, i, i + 1};
        for (int k = 0; k < 3; ++k) {
            const ClipVertex& v = b[idx[k]];
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
