// raster/union_scan.h — private to raster/: the triangles of one indexed
// draw scanned as one region, for nibble maps that are idempotent.
//
// A glyph's triangulation is made of slivers: on DejaVu Sans at 64 px a
// triangle covers about 53 sub-samples over 42 rows, and most of its rows
// cover one sub-sample or none. Walking the triangles one by one costs a
// row step per triangle row. But when the map f is idempotent (f(f(v)) =
// f(v): every constant map, "fill what is empty", "replace a by b"), a
// sub-sample covered by one or several triangles of the draw ends up as
// f(v) whatever their number and order, so only the union of the covered
// sets matters, and the union can be scanned row by row from the edges on
// its boundary alone.
//
// Exactness. On a row r a triangle covers the sub-samples whose centre
// C = (p + 1) * 2048 satisfies XL(r) <= C < XR(r), XL and XR being its left
// and right edges walked as the prepared walk does (prepared_triangle.h);
// an edge's position on a row depends on the edge alone, not on the
// triangle. Give each triangle's left edge a winding of +1 and its right
// edge -1 over the triangle's rows: the sum of the windings of the edges
// at or left of C counts the triangles covering C. Two triangles sharing
// an edge on opposite sides contribute +1 and -1 at the same position on
// the same rows, so the pair can be dropped before the scan; what is left
// is the region's boundary. One correction keeps the count exact: on a row
// where rounding puts XL above XR (a sliver thinner than the walk's
// error) the triangle covers nothing, but its two edges would count -1
// between XR and XL. XL - XR is linear in the row within each part of a
// triangle, so such rows form a run at one end of the part, found with one
// division; two more segments with the opposite windings take them back.
//
// A draw is taken in chunks of up to kMaxTriangles triangles. A chunk is
// scanned as a region only when its boundary has fewer edge rows than its
// triangles have rows; otherwise (heavily overlapping triangles, or
// triangles that share no edges) the caller walks the triangles one by one.
#pragma once

#include <cstdint>

#include "raster/prepared_triangle.h"

namespace tr {

struct RowRange {
    int64_t begin;
    int64_t end;
};

// Rows r0 + i, i in [0, r1 - r0), where D(i) = d0 + i * slope > 0, given
// d0 = D(0) and d1 = D(r1 - 1 - r0), one of them positive: a run at one
// end, bounded with one division.
inline RowRange InvertedRows(int64_t d0, int64_t d1, int64_t slope, int64_t r0, int64_t r1) {
    if (d0 <= 0) return {r0 + -d0 / slope + 1, r1};  // slope > 0: from the first D(i) > 0
    if (d1 <= 0) return {r0, r0 + (d0 - slope - 1) / -slope};  // slope < 0: up to D(i) <= 0
    return {r0, r1};
}

class CUnionScan {
public:
    static constexpr uint32_t kMaxTriangles = 128;
    static constexpr uint32_t kProbeTriangles = 32;

    // Starts an empty chunk for a map of the given size (sub-samples).
    void Begin(int32_t width, int32_t height);
    // Sets up triangle (a, b, c), all walkable, with vertex numbers ia, ib,
    // ic naming them for the whole draw (equal numbers must mean equal
    // vertices). Returns false, adding nothing, when the chunk is full.
    bool Add(const PreparedVertex& a, const PreparedVertex& b, const PreparedVertex& c,
             uint32_t ia, uint32_t ib, uint32_t ic);
    bool Empty() const { return triangleCount_ == 0; }
    // Whether scanning the boundary is cheaper than walking the triangles.
    bool ScanPays() const { return boundaryRows_ < triangleRows_; }
    // False once a chunk's first kProbeTriangles show that its triangles
    // share too few edges for the scan to pay (the caller then walks the
    // rest of the draw).
    bool Promising() const { return triangleCount_ != kProbeTriangles || ScanPays(); }
    // The vertex numbers of triangle i of the chunk, as given to Add.
    const uint32_t* Triangle(uint32_t i) const { return triangles_[i]; }
    uint32_t TriangleCount() const { return triangleCount_; }

    // Writes the union of the chunk's triangles into the map through op
    // (span_words.h).
    template <class WordOp>
    void Scan(uint16_t* words, const WordOp& op);

private:
    static constexpr uint32_t kMaxSegments = 4 * kMaxTriangles;
    static constexpr uint32_t kHashSlots = 2 * kMaxSegments;  // power of 2
    static constexpr uint16_t kEmptySlot = 0xFFFF;

    // One edge over a run of rows with its winding; winding 0 is a
    // segment cancelled by its twin.
    struct Segment {
        int64_t xFx;     // position on rowBegin
        int64_t stepFx;  // per row
        uint64_t key;    // upper and lower vertex numbers
        int32_t rowBegin;
        int32_t rowEnd;
        int32_t winding;
    };
    // A segment crossing the row being scanned.
    struct Crossing {
        int64_t xFx;
        int64_t stepFx;
        int32_t rowEnd;
        int32_t winding;
    };

    void CorrectInvertedRows(const PreparedEdge& longEdge, int64_t longRow, uint64_t longKey,
                             const PreparedEdge& shortEdge, int64_t shortRow, uint64_t shortKey,
                             int32_t longWinding, int64_t r0, int64_t r1);
    void AddCorrection(const PreparedEdge& longEdge, int64_t longRow, uint64_t longKey,
                       const PreparedEdge& shortEdge, int64_t shortRow, uint64_t shortKey,
                       int32_t longWinding, int64_t rowBegin, int64_t rowEnd);
    void AddSegment(const PreparedEdge& e, int64_t rowOfE, uint64_t key, int64_t rowBegin,
                    int64_t rowEnd, int32_t winding);
    void OrderLiveSegments();

    int32_t width_ = 0;
    int32_t height_ = 0;
    uint32_t triangleCount_ = 0;
    uint32_t segmentCount_ = 0;
    uint32_t liveCount_ = 0;
    int64_t triangleRows_ = 0;
    int64_t boundaryRows_ = 0;
    uint32_t triangles_[kMaxTriangles][3];
    Segment segments_[kMaxSegments];
    uint16_t slots_[kHashSlots];
    uint64_t order_[kMaxSegments];     // live segments: rowBegin << 16 | index, sorted
    Crossing active_[kMaxSegments];  // segments on the current row, by x
};

template <class WordOp>
void CUnionScan::Scan(uint16_t* words, const WordOp& op) {
    constexpr int kIndexBits = 16;
    constexpr uint64_t kIndexMask = (uint64_t{1} << kIndexBits) - 1;
    OrderLiveSegments();
    uint32_t next = 0, activeCount = 0;
    int64_t row = 0;
    while (next < liveCount_ || activeCount > 0) {
        if (activeCount == 0) row = static_cast<int64_t>(order_[next] >> kIndexBits);
        // Segments starting on this row join the list, which is ordered by
        // position.
        for (; next < liveCount_ && static_cast<int64_t>(order_[next] >> kIndexBits) == row;
             ++next) {
            const Segment& s = segments_[order_[next] & kIndexMask];
            uint32_t j = activeCount++;
            for (; j > 0 && active_[j - 1].xFx > s.xFx; --j) active_[j] = active_[j - 1];
            active_[j] = Crossing{s.xFx, s.stepFx, s.rowEnd, s.winding};
        }
        // Covered where the winding sum is positive; a run [xa, xb) covers
        // the sub-samples p with xa <= (p + 1) * 2048 < xb. The same pass
        // steps the segments to the next row and drops those that end.
        uint16_t* rowBase = words + static_cast<ptrdiff_t>(row >> kSubShift) * width_ +
                            (row & kSubMask);
        int32_t count = 0;
        int64_t runStart = 0;
        uint32_t kept = 0;
        bool ordered = true;
        for (uint32_t i = 0; i < activeCount; ++i) {
            const Crossing c = active_[i];
            const int32_t before = count;
            count += c.winding;
            if (before <= 0 && count > 0) {
                runStart = c.xFx;
            } else if (before > 0 && count <= 0) {
                const int64_t first = std::max<int64_t>(FxFloor(runStart - 1), 0);
                const int64_t end = std::min<int64_t>(FxFloor(c.xFx - 1), width_);
                if (first < end) {
                    FillSpanWords(rowBase, static_cast<int32_t>(first),
                                  static_cast<int32_t>(end), op);
                }
            }
            if (c.rowEnd > row + 1) {
                const int64_t x = c.xFx + c.stepFx;
                ordered = ordered && (kept == 0 || active_[kept - 1].xFx <= x);
                active_[kept++] = Crossing{x, c.stepFx, c.rowEnd, c.winding};
            }
        }
        activeCount = kept;
        if (!ordered) {  // segments crossed: insertion sort
            for (uint32_t i = 1; i < activeCount; ++i) {
                const Crossing c = active_[i];
                uint32_t j = i;
                for (; j > 0 && active_[j - 1].xFx > c.xFx; --j) active_[j] = active_[j - 1];
                active_[j] = c;
            }
        }
        ++row;
    }
}

}  // namespace tr
