// raster/prepared_triangle.h — private to raster/: the fast triangle set-up
// and edge walk of the coverage kernels, on vertices prepared once.
//
// The reference walk (triangle_walk.h) takes a triangle of three floats per
// axis and redoes everything per triangle: range checks, fixed-point
// conversion, and per edge two divisions behind saturating conversions.
// The per-vertex part depends on the vertex alone, so a vertex shared by
// several triangles (a glyph triangulation, the strip's kept pair) is
// prepared once: screen position after taper, fixed point, and whether the
// reference would walk it without clipping ("walkable").
//
// Edge set-up is the reference's double arithmetic without its saturation:
// with |coordinate| <= kSafeCoord = 2^24 every fixed-point value is below
// 2^36, so for an edge with dy > 0 and off = first * 2048 - y0 in
// [0, 2048) the start offset off * dx / dy is below 2^47 in magnitude and
// the step dx / dy * 2048 at most |dx| * 2048 < 2^48, the saturation
// bound. (Both also equal the integer quotients (off * dx) / dy and
// (dx * 2048) / dy: the numerators are exact in doubles, and a correctly
// rounded quotient of integers below 2^53 never crosses an integer. The
// tests use that to check the walk independently.) Edges with dy = 0 are
// never walked, as in the reference.
//
// Rows are written through a word operation (span_words.h). A row whose
// span lies within one tile - most rows of the slivers a glyph
// triangulation is made of, and every empty row - is one masked write of
// that word, with an empty mask when the row covers nothing, so the row
// loop has no hard-to-predict empty-or-not branch; spans reaching past
// their first tile take the head / whole words / tail path. The edges'
// positions always lie between the x of their end points (the start offset
// and the step are truncated toward zero), so a triangle whose vertices
// lie inside the map needs no column clamping.
//
// Constant-value word operations on triangles at least kTileRowMinWidthFx
// wide and eight rows tall go a tile row (four rows) at a time instead: a
// tile's four row words are adjacent, so a tile every row covers is one
// 8-byte store of the pattern and each tile around them one masked 8-byte
// write, with no per-row branch on the span's length.
//
// Triangles with a vertex that is not walkable go through the reference
// set-up and clipping unchanged. Vertex order, the area test and the row
// and column limits are the reference's, so the covered sub-samples are
// identical.
#pragma once

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "raster/span_words.h"
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
    // Comparisons with NaN are false and infinities exceed the bound, so
    // this also requires both to be finite.
    v.walkable = std::fabs(x) <= kSafeCoord && std::fabs(y) <= kSafeCoord;
    if (v.walkable) {
        // The reference conversion; |x|, |y| <= 2^24 keeps both below 2^36.
        v.xFx = static_cast<int64_t>((static_cast<double>(x) + 0.5) * kFxScale);
        v.yFx = static_cast<int64_t>((static_cast<double>(y) - 0.5) * kFxScale);
    }
    return v;
}

// Edge a -> b (a above b, dy > 0) positioned on `row`.
struct PreparedEdge {
    int64_t xFx = 0;
    int64_t stepFx = 0;
};

[[gnu::always_inline]] inline PreparedEdge SetUpEdge(const PreparedVertex& a, const PreparedVertex& b,
                                                    int64_t row) {
    const int64_t first = FxCeil(a.yFx);
    const double dx = static_cast<double>(b.xFx - a.xFx);
    const double dy = static_cast<double>(b.yFx - a.yFx);
    assert(dy > 0.0 && "an edge with rows descends");
    PreparedEdge e;
    e.stepFx = static_cast<int64_t>(dx / dy * kFxScale);
    e.xFx = a.xFx + static_cast<int64_t>(static_cast<double>(first * kFxOne - a.yFx) * dx / dy) +
            (row - first) * e.stepFx;
    return e;
}

// kSpanMasks[from][to]: nibbles [from, to) of a tile word; from = 4
// (a span starting past the map) masks nothing.
inline constexpr uint16_t kSpanMasks[5][5] = {
    {NibbleRangeMask(0, 0), NibbleRangeMask(0, 1), NibbleRangeMask(0, 2),
     NibbleRangeMask(0, 3), NibbleRangeMask(0, 4)},
    {0, 0, NibbleRangeMask(1, 2), NibbleRangeMask(1, 3), NibbleRangeMask(1, 4)},
    {0, 0, 0, NibbleRangeMask(2, 3), NibbleRangeMask(2, 4)},
    {0, 0, 0, 0, NibbleRangeMask(3, 4)},
    {0, 0, 0, 0, 0},
};

// Column limits of the row loop: Clamp clips spans to [0, width); without
// it the caller guarantees 0 <= first and end <= width - 1 on every row.
enum class Columns { kInside, kClamp };

// Rows [begin, end) (inside the map) of a triangle: the long edge against
// the upper edge above `split` and against the lower edge from `split` on,
// as WalkTriangle splits them, in one loop. A row's words are those of its
// tile row (width words) plus its sub-row.
template <Columns kColumns, class WordOp>
inline void WalkPreparedRows(const PreparedEdge& longEdge, const PreparedEdge& upper,
                             const PreparedEdge& lower, bool longIsLeft, int64_t begin,
                             int64_t split, int64_t end, uint16_t* words, int32_t width,
                             const WordOp& op) {
    assert(begin >= 0 && width >= kSubPerPx && "the caller skips empty maps");
    // The fill rule floors X - 1: walk X - 1.
    const PreparedEdge& upperLeft = longIsLeft ? longEdge : upper;
    const PreparedEdge& upperRight = longIsLeft ? upper : longEdge;
    int64_t xl = upperLeft.xFx - 1, stepL = upperLeft.stepFx;
    int64_t xr = upperRight.xFx - 1, stepR = upperRight.stepFx;
    uint16_t* tileRow = words + static_cast<ptrdiff_t>(begin >> kSubShift) * width;
    int32_t subRow = static_cast<int32_t>(begin & kSubMask);
    for (int64_t r = begin; r < end; ++r) {
        if (r == split) {  // the lower edge takes over from the upper one
            (longIsLeft ? xr : xl) = lower.xFx - 1;
            (longIsLeft ? stepR : stepL) = lower.stepFx;
        }
        int64_t first = FxFloor(xl);
        int64_t last = FxFloor(xr);  // exclusive
        int64_t tile = first & ~int64_t{kSubMask};  // also the tile's word offset
        if constexpr (kColumns == Columns::kClamp) {
            first = std::max<int64_t>(first, 0);
            last = std::min<int64_t>(last, width);
            // A span starting past the map is empty (last <= width <= first);
            // its masked write goes to the last tile with nothing in the mask.
            tile = std::min<int64_t>(first & ~int64_t{kSubMask}, (width - 1) & ~kSubMask);
        }
        uint16_t* rowBase = tileRow + subRow;
        if (last - tile > kSubPerPx) {
            FillSpanWords(rowBase, static_cast<int32_t>(first), static_cast<int32_t>(last), op);
        } else {
            const int64_t from =
                kColumns == Columns::kClamp ? std::min<int64_t>(first - tile, kSubPerPx)
                                            : first & kSubMask;
            uint16_t* w = rowBase + tile;
            *w = op.Part(*w, kSpanMasks[from][std::max<int64_t>(last - tile, 0)]);
        }
        xl += stepL;
        xr += stepR;
        if (++subRow == kSubPerPx) {
            subRow = 0;
            tileRow += width;
        }
    }
}

// Word operations that store one pattern whatever the old value (the
// constant kernels) can fill a tile that all four of its rows cover with a
// single 8-byte store: a tile's four row words are adjacent.
template <class WordOp>
concept StoresPattern = requires { WordOp::kPattern; };

// Narrower or flatter triangles (under two tile rows) have few whole tiles:
// the row walk suits them.
inline constexpr int64_t kTileRowMinWidthFx = int64_t{32} * kFxOne;

// Rows [begin, end) as WalkPreparedRows draws them, a tile row (four rows)
// at a time: the tiles every row covers are stored whole (a tile's four row
// words are adjacent, and so are consecutive tiles), the tiles around them
// get one masked 8-byte write each, the four rows' nibbles at once. Row
// spans and values are those of the row walk (the same edge stepping, kept
// inline in both loops); no data-dependent branch per row.

template <Columns kColumns, StoresPattern WordOp>
inline void WalkPreparedTileRows(const PreparedEdge& longEdge, const PreparedEdge& upper,
                                 const PreparedEdge& lower, bool longIsLeft, int64_t begin,
                                 int64_t split, int64_t end, uint16_t* words, int32_t width,
                                 const WordOp&) {
    constexpr uint64_t kRowUnit = 0x0001000100010001;
    constexpr uint64_t kTilePattern = kRowUnit * WordOp::kPattern;
    constexpr int kRowBits = 16;
    const PreparedEdge& upperLeft = longIsLeft ? longEdge : upper;
    const PreparedEdge& upperRight = longIsLeft ? upper : longEdge;
    int64_t xl = upperLeft.xFx - 1, stepL = upperLeft.stepFx;
    int64_t xr = upperRight.xFx - 1, stepR = upperRight.stepFx;
    // One masked write of tile x: row i covers nibbles [first[i], last[i]).
    auto maskedTile = [](uint16_t* tile, int64_t x, const int64_t* first, const int64_t* last) {
        uint64_t mask = 0;
        for (int i = 0; i < kSubPerPx; ++i) {
            const int64_t from = std::clamp<int64_t>(first[i] - x, 0, kSubPerPx);
            const int64_t to = std::clamp<int64_t>(last[i] - x, 0, kSubPerPx);
            mask |= uint64_t{kSpanMasks[from][to]} << (kRowBits * i);
        }
        uint64_t old;
        std::memcpy(&old, tile, sizeof old);
        old = (old & ~mask) | (kTilePattern & mask);
        std::memcpy(tile, &old, sizeof old);
    };
    for (int64_t r = begin & ~int64_t{kSubMask}; r < end; r += kSubPerPx) {
        // Rows of the tile row outside [begin, end) are empty spans.
        int64_t first[kSubPerPx] = {width, width, width, width};
        int64_t last[kSubPerPx] = {0, 0, 0, 0};
        int64_t low = width, high = 0;      // tiles any row touches
        int64_t innerBegin = 0, innerEnd = width;  // tiles every row covers
        for (int i = 0; i < kSubPerPx; ++i) {
            const int64_t row = r + i;
            if (row >= begin && row < end) {
                if (row == split) {
                    (longIsLeft ? xr : xl) = lower.xFx - 1;
                    (longIsLeft ? stepR : stepL) = lower.stepFx;
                }
                first[i] = FxFloor(xl);
                last[i] = FxFloor(xr);
                if constexpr (kColumns == Columns::kClamp) {
                    first[i] = std::max<int64_t>(first[i], 0);
                    last[i] = std::min<int64_t>(last[i], width);
                }
                xl += stepL;
                xr += stepR;
            }
            low = std::min(low, first[i]);
            high = std::max(high, last[i]);
            innerBegin = std::max(innerBegin, (first[i] + kSubMask) & ~int64_t{kSubMask});
            innerEnd = std::min(innerEnd, last[i] & ~int64_t{kSubMask});
        }
        low &= ~int64_t{kSubMask};
        high = (high + kSubMask) & ~int64_t{kSubMask};
        uint16_t* tileRow = words + static_cast<ptrdiff_t>(r >> kSubShift) * width;
        if (innerEnd <= innerBegin) innerBegin = innerEnd = high;  // no whole tile
        for (int64_t x = low; x < innerBegin; x += kSubPerPx) {
            maskedTile(tileRow + x, x, first, last);
        }
        for (int64_t x = innerBegin; x < innerEnd; x += kSubPerPx) {
            std::memcpy(tileRow + x, &kTilePattern, sizeof kTilePattern);
        }
        for (int64_t x = innerEnd; x < high; x += kSubPerPx) {
            maskedTile(tileRow + x, x, first, last);
        }
    }
}

// The tile-row walk when asked for and the operation stores a pattern, the
// row walk otherwise.
template <Columns kColumns, class WordOp>
inline void WalkPreparedSpans(const PreparedEdge& longEdge, const PreparedEdge& upper,
                              const PreparedEdge& lower, bool longIsLeft, int64_t begin,
                              int64_t split, int64_t end, uint16_t* words, int32_t width,
                              bool tileRows, const WordOp& op) {
    if constexpr (StoresPattern<WordOp>) {
        if (tileRows) {
            WalkPreparedTileRows<kColumns>(longEdge, upper, lower, longIsLeft, begin, split, end,
                                           words, width, op);
            return;
        }
    }
    WalkPreparedRows<kColumns>(longEdge, upper, lower, longIsLeft, begin, split, end, words,
                               width, op);
}

// Set-up and walk of one triangle whose vertices are all walkable, over
// rows [w.rowBegin, w.rowEnd) of a map w.width sub-samples wide. Sort,
// area test and row split follow SetUpTriangle and WalkTriangle.
template <class WordOp>
inline void WalkPreparedTriangle(const PreparedVertex& v0, const PreparedVertex& v1,
                                 const PreparedVertex& v2, uint16_t* words,
                                 const WalkWindow& w, const WordOp& op) {
    const PreparedVertex* o[3] = {&v0, &v1, &v2};
    if (o[1]->y < o[0]->y) std::swap(o[0], o[1]);
    if (o[2]->y < o[1]->y) std::swap(o[1], o[2]);
    if (o[1]->y < o[0]->y) std::swap(o[0], o[1]);
    const PreparedVertex &top = *o[0], &mid = *o[1], &bot = *o[2];
    const int64_t begin = std::max<int64_t>(FxCeil(top.yFx), w.rowBegin);
    const int64_t end = std::min<int64_t>(FxCeil(bot.yFx), w.rowEnd);
    // No row in the window: nothing to draw whatever the area test says.
    if (begin >= end) return;
    const double xt = top.x, yt = top.y;
    const double a = (static_cast<double>(mid.x) - xt) * (static_cast<double>(bot.y) - yt) -
                     (static_cast<double>(bot.x) - xt) * (static_cast<double>(mid.y) - yt);
    if (a > -kMinDoubleArea && a < kMinDoubleArea) return;
    const int64_t split = std::clamp<int64_t>(FxCeil(mid.yFx), begin, end);
    const bool longIsLeft = a > 0.0;
    // All edges are set up before the walk so that their divisions overlap.
    const PreparedEdge longEdge = SetUpEdge(top, bot, begin);
    const PreparedEdge upper = begin < split ? SetUpEdge(top, mid, begin) : PreparedEdge{};
    const PreparedEdge lower = split < end ? SetUpEdge(mid, bot, split) : PreparedEdge{};
    const int64_t minX = std::min({v0.xFx, v1.xFx, v2.xFx});
    const int64_t maxX = std::max({v0.xFx, v1.xFx, v2.xFx});
    const bool tileRows = maxX - minX >= kTileRowMinWidthFx && end - begin >= 2 * kSubPerPx;
    if (minX >= 1 && FxFloor(maxX - 1) <= w.width - 1) {
        WalkPreparedSpans<Columns::kInside>(longEdge, upper, lower, longIsLeft, begin, split, end,
                                            words, w.width, tileRows, op);
    } else {
        WalkPreparedSpans<Columns::kClamp>(longEdge, upper, lower, longIsLeft, begin, split, end,
                                           words, w.width, tileRows, op);
    }
}

// Any triangle in a map of rows [w.rowBegin >= 0, w.rowEnd), columns
// [0, w.width): the prepared walk when all three vertices are walkable,
// the reference set-up (drop or clip) otherwise.
template <class WordOp>
inline void RasterizePrepared(const PreparedVertex& v0, const PreparedVertex& v1,
                              const PreparedVertex& v2, uint16_t* words, const WalkWindow& w,
                              const WordOp& op) {
    if (w.width < kSubPerPx || w.rowBegin >= w.rowEnd) return;  // an empty map
    if (v0.walkable && v1.walkable && v2.walkable) {
        WalkPreparedTriangle(v0, v1, v2, words, w, op);
        return;
    }
    const ScreenTriangle t{{v0.x, v1.x, v2.x}, {v0.y, v1.y, v2.y}, {}};
    auto rowFn = [&](int32_t row, int32_t x0, int32_t x1) {
        FillSpanWords(
            words + static_cast<ptrdiff_t>(row >> kSubShift) * w.width + (row & kSubMask), x0,
            x1, op);
    };
    auto onSetup = [&](const TriangleSetup&, const ScreenTriangle&) { return rowFn; };
    RasterizeTriangle(t, w, onSetup);
}

}  // namespace tr
