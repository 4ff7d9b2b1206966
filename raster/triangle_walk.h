// raster/triangle_walk.h — private to raster/: triangle set-up and edge walk
// shared by every coverage and band kernel.
//
// A triangle arrives as three screen-space vertices (floats, one unit = one
// sub-sample, y down). Set-up sorts them by y, drops slivers whose doubled
// signed area is within +-0.05 and converts to 11-bit fixed point:
//
//     X = trunc((x + 0.5) * 2048)      Y = trunc((y - 0.5) * 2048)
//
// The +0.5 / -0.5 shifts put sub-sample centres on whole multiples of 2048:
// the centre (p + 0.5, r + 0.5) is at X = (p + 1) * 2048, Y = r * 2048. Rows
// run from ceil(Ytop / 2048) to ceil(Ybot / 2048) (exclusive), split at
// ceil(Ymid / 2048). Each edge is walked top-down from its upper end with
//
//     X(first row) = X0 + trunc((first * 2048 - Y0) * dx / dy)
//     X(next row)  = X + trunc(dx / dy * 2048)
//
// and on a row the covered columns are (XL - 1) >> 11 <= p < (XR - 1) >> 11,
// i.e. XL <= centre < XR: left and top edges are in, right and bottom out.
// An edge is always walked from the same end with the same numbers whichever
// triangle it belongs to, so neighbours share it without gap or overlap.
//
// Clipping. Rows and columns outside the caller's window are skipped; an
// edge entering the window late is advanced in closed form (k * step, exact
// in integers), so the sub-samples inside the window are those the unclipped
// walk would give. Non-finite vertices drop the triangle. Vertices beyond
// +-kSafeCoord (where the fixed-point values would no longer fit comfortably
// in 64 bits) are first clipped as a polygon to a guard box around the window
// and the pieces are fanned; that is the only case where the result depends
// on the window.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "raster/fixed_point.h"

namespace tr {

// Twice the signed area at or below which (in magnitude) a triangle is dropped.
inline constexpr double kMinDoubleArea = 0.05;
// Largest |coordinate| walked directly: 2^24 sub-samples gives fixed-point
// values below 2^36 and products below 2^73 in doubles only.
inline constexpr double kSafeCoord = 16777216.0;
// Margin of the clip box used for oversized triangles, in sub-samples.
inline constexpr double kClipGuard = 64.0;

// Screen-space triangle with two interpolated attributes per vertex (depth
// and intensity for the band kernels; unused by the coverage kernels).
struct ScreenTriangle {
    float x[3];
    float y[3];
    double attr[2][3];
};

// The window drawn into: rows [rowBegin, rowEnd), columns [0, width).
struct WalkWindow {
    int32_t rowBegin;
    int32_t rowEnd;
    int32_t width;
};

// Sorted, fixed-point form of a triangle that passed the area test.
struct TriangleSetup {
    int order[3];      // indices of top, middle, bottom vertex
    double area2;      // doubled signed area of the sorted triangle
    int64_t xFx[3];    // sorted, fixed point
    int64_t yFx[3];
};

enum class SetupResult { kDraw, kDrop, kClip };

inline SetupResult SetUpTriangle(const ScreenTriangle& t, TriangleSetup& s) {
    for (int i = 0; i < 3; ++i) {
        if (!std::isfinite(t.x[i]) || !std::isfinite(t.y[i])) return SetupResult::kDrop;
    }
    for (int i = 0; i < 3; ++i) {
        if (std::fabs(t.x[i]) > kSafeCoord || std::fabs(t.y[i]) > kSafeCoord) {
            return SetupResult::kClip;
        }
    }
    // Stable three-element sort by y.
    int o[3] = {0, 1, 2};
    if (t.y[o[1]] < t.y[o[0]]) std::swap(o[0], o[1]);
    if (t.y[o[2]] < t.y[o[1]]) std::swap(o[1], o[2]);
    if (t.y[o[1]] < t.y[o[0]]) std::swap(o[0], o[1]);
    const double xt = t.x[o[0]], yt = t.y[o[0]];
    const double xm = t.x[o[1]], ym = t.y[o[1]];
    const double xb = t.x[o[2]], yb = t.y[o[2]];
    const double a = (xm - xt) * (yb - yt) - (xb - xt) * (ym - yt);
    if (a > -kMinDoubleArea && a < kMinDoubleArea) return SetupResult::kDrop;
    s.area2 = a;
    for (int i = 0; i < 3; ++i) {
        s.order[i] = o[i];
        // |x| <= 2^24 keeps both products below 2^36.
        s.xFx[i] = static_cast<int64_t>((static_cast<double>(t.x[o[i]]) + 0.5) * kFxScale);
        s.yFx[i] = static_cast<int64_t>((static_cast<double>(t.y[o[i]]) - 0.5) * kFxScale);
    }
    return SetupResult::kDraw;
}

// One edge walked downward from (x0, y0) to (x1, y1), fixed point, y0 <= y1.
class EdgeWalk {
public:
    // Positions the edge on `row` (>= the edge's first row ceil(y0 / 2048)).
    EdgeWalk(int64_t x0, int64_t y0, int64_t x1, int64_t y1, int64_t row) {
        const int64_t first = FxCeil(y0);
        const double dx = static_cast<double>(x1 - x0);
        const double dy = static_cast<double>(y1 - y0);
        // The edge only exists on rows when dy > 0; a zero dy never walks.
        const double startOffset =
            dy != 0.0 ? static_cast<double>(first * kFxOne - y0) * dx / dy : 0.0;
        stepFx_ = dy != 0.0 ? SaturatingTrunc<int64_t>(dx / dy * kFxScale, -(int64_t{1} << 48),
                                                       int64_t{1} << 48)
                            : 0;
        // |startOffset| < |dx| < 2^37, and (row - first) * step stays within
        // about 2 |dx| because a row step exists only when dy >= 2048.
        xFx_ = x0 + SaturatingTrunc<int64_t>(startOffset) + (row - first) * stepFx_;
    }
    int64_t X() const { return xFx_; }
    void Step() { xFx_ += stepFx_; }

private:
    int64_t xFx_;
    int64_t stepFx_;
};

// Covered column range of one row, clipped to [0, width).
inline bool SpanColumns(int64_t leftFx, int64_t rightFx, int32_t width, int32_t& x0,
                        int32_t& x1) {
    const int64_t first = std::max<int64_t>(FxFloor(leftFx - 1), 0);
    const int64_t end = std::min<int64_t>(FxFloor(rightFx - 1), width);
    if (first >= end) return false;
    x0 = static_cast<int32_t>(first);
    x1 = static_cast<int32_t>(end);
    return true;
}

// Walks one part (rows [r0, r1)) between a left and a right edge, leaving
// both edges on row r1.
template <class SpanFn>
void WalkPart(EdgeWalk& left, EdgeWalk& right, int64_t r0, int64_t r1, int32_t width,
              SpanFn& fn) {
    for (int64_t r = r0; r < r1; ++r) {
        int32_t x0, x1;
        if (SpanColumns(left.X(), right.X(), width, x0, x1)) {
            fn(static_cast<int32_t>(r), x0, x1);
        }
        left.Step();
        right.Step();
    }
}

// Calls fn(row, x0, x1) for every covered, non-empty span inside the window.
// The long edge is positioned once and carried from the upper part into the
// lower one; stepping is exact, so this equals positioning it anew.
template <class SpanFn>
void WalkTriangle(const TriangleSetup& s, const WalkWindow& w, SpanFn& fn) {
    const int64_t rowTop = FxCeil(s.yFx[0]);
    const int64_t rowMid = FxCeil(s.yFx[1]);
    const int64_t rowBot = FxCeil(s.yFx[2]);
    const int64_t begin = std::max<int64_t>(rowTop, w.rowBegin);
    const int64_t end = std::min<int64_t>(rowBot, w.rowEnd);
    if (begin >= end) return;
    const int64_t split = std::clamp<int64_t>(rowMid, begin, end);
    const bool longIsLeft = s.area2 > 0.0;
    EdgeWalk longEdge(s.xFx[0], s.yFx[0], s.xFx[2], s.yFx[2], begin);
    if (begin < split) {
        EdgeWalk upper(s.xFx[0], s.yFx[0], s.xFx[1], s.yFx[1], begin);
        if (longIsLeft) {
            WalkPart(longEdge, upper, begin, split, w.width, fn);
        } else {
            WalkPart(upper, longEdge, begin, split, w.width, fn);
        }
    }
    if (split < end) {
        EdgeWalk lower(s.xFx[1], s.yFx[1], s.xFx[2], s.yFx[2], split);
        if (longIsLeft) {
            WalkPart(longEdge, lower, split, end, w.width, fn);
        } else {
            WalkPart(lower, longEdge, split, end, w.width, fn);
        }
    }
}

}  // namespace tr
