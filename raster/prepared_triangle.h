// raster/prepared_triangle.h — private to raster/: the fast triangle set-up
// and edge walk of the coverage kernels, on vertices prepared once.
//
// The reference walk (triangle_walk.h) takes a triangle of three floats per
// axis and redoes everything per triangle: range checks, fixed-point
// conversion, and per edge two double divisions behind saturating
// conversions. All of the per-vertex part depends on the vertex alone, so a
// vertex shared by several triangles (a glyph triangulation, the strip's
// kept pair) is prepared once: screen position after taper, fixed point,
// and whether the plain walk would take it without clipping.
//
// The edge set-up here is the reference formula in integers. With
// |coordinate| <= kSafeCoord = 2^24 every fixed-point value is below 2^36,
// so for an edge (x0, y0) -> (x1, y1) with dy = y1 - y0 > 0 and
// off = first * 2048 - y0 in [0, 2048):
//
//   N = off * dx  and  M = dx * 2048  have |N|, |M| < 2^47,
//
// exact in doubles, and the reference's trunc(double(N) / dy) and
// trunc(double(dx) / dy * 2048) = trunc(double(M) / dy) (scaling by 2048
// is exact) equal the integer quotients N / dy and M / dy: a correctly
// rounded quotient of integers with |N| < 2^53 cannot cross an integer,
// since a non-integer N / dy is at least 1 / dy away from one while the
// rounding error is at most |N / dy| * 2^-53 < 1 / dy. The saturation
// bounds of the reference (2^48 for the step) are never reached. Edges with
// dy = 0 are never walked (they have no row), exactly as in the reference.
//
// Triangles with a vertex the prepared walk cannot take (not finite, or
// beyond kSafeCoord) go through the reference set-up and clipping
// unchanged. Vertex order, the area test and row and column clamping are
// the reference's, so the covered sub-samples are identical.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "raster/triangle_clip.h"
#include "raster/triangle_walk.h"

namespace tr {

// A screen vertex ready for the walk. xFx and yFx are meaningful only when
// walkable (finite and within kSafeCoord on both axes).
struct PreparedVertex {
    float x;
    float y;
    int64_t xFx;
    int64_t yFx;
    bool walkable;
};

inline PreparedVertex PrepareVertex(float x, float y) {
    PreparedVertex v{x, y, 0, 0, false};
    v.walkable = std::isfinite(x) && std::isfinite(y) && std::fabs(x) <= kSafeCoord &&
                 std::fabs(y) <= kSafeCoord;
    if (v.walkable) {
        // The reference conversion; |x|, |y| <= 2^24 keeps both below 2^36.
        v.xFx = static_cast<int64_t>((static_cast<double>(x) + 0.5) * kFxScale);
        v.yFx = static_cast<int64_t>((static_cast<double>(y) - 0.5) * kFxScale);
    }
    return v;
}

// One edge positioned on a row; integer twin of EdgeWalk (see above).
struct PreparedEdge {
    int64_t xFx;
    int64_t stepFx;

    PreparedEdge(const PreparedVertex& a, const PreparedVertex& b, int64_t row) {
        const int64_t first = FxCeil(a.yFx);
        const int64_t dx = b.xFx - a.xFx;
        const int64_t dy = b.yFx - a.yFx;
        if (dy == 0) {
            xFx = a.xFx;
            stepFx = 0;
            return;
        }
        // |dx| < 2^37 and 0 <= first * 2048 - a.yFx < 2048: no overflow.
        stepFx = dx * kFxOne / dy;
        xFx = a.xFx + (first * kFxOne - a.yFx) * dx / dy + (row - first) * stepFx;
    }
};

// Rows [r0, r1) between a left and a right edge; fn(rowBase, x0, x1) for
// each non-empty span clipped to [0, width). The row's first word moves by
// one word per sub-row and by a tile row (width words) every fourth.
template <class SpanFn>
inline void WalkPreparedPart(PreparedEdge& left, PreparedEdge& right, int64_t r0, int64_t r1,
                             uint16_t* words, int32_t width, SpanFn& fn) {
    int32_t r = static_cast<int32_t>(r0);
    uint16_t* rowBase =
        words + static_cast<ptrdiff_t>(r >> kSubShift) * width + (r & kSubMask);
    int64_t xl = left.xFx, xr = right.xFx;
    const int64_t stepL = left.stepFx, stepR = right.stepFx;
    for (; r < r1; ++r) {
        const int64_t first = std::max<int64_t>(FxFloor(xl - 1), 0);
        const int64_t end = std::min<int64_t>(FxFloor(xr - 1), width);
        if (first < end) fn(rowBase, static_cast<int32_t>(first), static_cast<int32_t>(end));
        xl += stepL;
        xr += stepR;
        rowBase += (r & kSubMask) == kSubMask ? width - kSubMask : 1;
    }
    left.xFx = xl;
    right.xFx = xr;
}

// Set-up and walk of one triangle whose vertices are all walkable, over
// rows [rowBegin, rowEnd) of a map `width` sub-samples wide. Sort, area
// test and row split follow SetUpTriangle and WalkTriangle step by step.
template <class SpanFn>
inline void WalkPreparedTriangle(const PreparedVertex& v0, const PreparedVertex& v1,
                                 const PreparedVertex& v2, uint16_t* words,
                                 const WalkWindow& w, SpanFn& fn) {
    const PreparedVertex* o[3] = {&v0, &v1, &v2};
    if (o[1]->y < o[0]->y) std::swap(o[0], o[1]);
    if (o[2]->y < o[1]->y) std::swap(o[1], o[2]);
    if (o[1]->y < o[0]->y) std::swap(o[0], o[1]);
    const PreparedVertex &top = *o[0], &mid = *o[1], &bot = *o[2];
    const int64_t rowTop = FxCeil(top.yFx);
    const int64_t rowBot = FxCeil(bot.yFx);
    const int64_t begin = std::max<int64_t>(rowTop, w.rowBegin);
    const int64_t end = std::min<int64_t>(rowBot, w.rowEnd);
    // No row in the window: nothing to draw whatever the area test says.
    if (begin >= end) return;
    const double xt = top.x, yt = top.y;
    const double a = (static_cast<double>(mid.x) - xt) * (static_cast<double>(bot.y) - yt) -
                     (static_cast<double>(bot.x) - xt) * (static_cast<double>(mid.y) - yt);
    if (a > -kMinDoubleArea && a < kMinDoubleArea) return;
    const int64_t split = std::clamp<int64_t>(FxCeil(mid.yFx), begin, end);
    const bool longIsLeft = a > 0.0;
    PreparedEdge longEdge(top, bot, begin);
    if (begin < split) {
        PreparedEdge upper(top, mid, begin);
        if (longIsLeft) {
            WalkPreparedPart(longEdge, upper, begin, split, words, w.width, fn);
        } else {
            WalkPreparedPart(upper, longEdge, begin, split, words, w.width, fn);
        }
    }
    if (split < end) {
        PreparedEdge lower(mid, bot, split);
        if (longIsLeft) {
            WalkPreparedPart(longEdge, lower, split, end, words, w.width, fn);
        } else {
            WalkPreparedPart(lower, longEdge, split, end, words, w.width, fn);
        }
    }
}

// Any triangle: the prepared walk when all three vertices are walkable,
// the reference set-up (drop or clip) otherwise. fn(rowBase, x0, x1).
template <class SpanFn>
inline void RasterizePrepared(const PreparedVertex& v0, const PreparedVertex& v1,
                              const PreparedVertex& v2, uint16_t* words, const WalkWindow& w,
                              SpanFn& fn) {
    if (v0.walkable && v1.walkable && v2.walkable) {
        WalkPreparedTriangle(v0, v1, v2, words, w, fn);
        return;
    }
    const ScreenTriangle t{{v0.x, v1.x, v2.x}, {v0.y, v1.y, v2.y}, {}};
    auto rowFn = [&](int32_t row, int32_t x0, int32_t x1) {
        fn(words + static_cast<ptrdiff_t>(row >> kSubShift) * w.width + (row & kSubMask), x0,
           x1);
    };
    auto onSetup = [&](const TriangleSetup&, const ScreenTriangle&) { return rowFn; };
    RasterizeTriangle(t, w, onSetup);
}

}  // namespace tr
