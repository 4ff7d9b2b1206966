// raster/union_scan.cpp — set-up of a chunk of triangles as boundary
// segments (see union_scan.h for why the scan is exact).
//
// Each triangle is set up as the prepared walk sets it up: sorted by y,
// rows clamped to the map, the area test, the split at the middle vertex,
// the three edges positioned. Its left edges get winding +1 and its right
// edges -1 over their rows, plus a pair of correcting segments over rows
// where a part is inverted. A segment whose twin (same edge, same rows,
// opposite winding) is already in the chunk cancels it - the two sum to
// nothing - found through a small open-addressing table keyed by the
// edge's vertex numbers. Keeping whole edges (the corrections apart) is
// what lets a triangle's edges meet their neighbours' twins.
#include "raster/union_scan.h"

#include <algorithm>
#include <cstring>

namespace tr {
namespace {

uint64_t EdgeKey(uint32_t upper, uint32_t lower) {
    return static_cast<uint64_t>(upper) << 32 | lower;
}

uint32_t HashSlot(uint64_t key, uint32_t slots) {
    // Fibonacci hashing; slots is a power of 2.
    return static_cast<uint32_t>((key * 0x9E3779B97F4A7C15ull) >> 40) & (slots - 1);
}

}  // namespace

void CUnionScan::Begin(int32_t width, int32_t height) {
    width_ = width;
    height_ = height;
    triangleCount_ = segmentCount_ = liveCount_ = 0;
    triangleRows_ = boundaryRows_ = 0;
    std::memset(slots_, 0xFF, sizeof slots_);
}

inline void CUnionScan::AddSegment(const PreparedEdge& e, int64_t rowOfE, uint64_t key,
                                   int64_t rowBegin, int64_t rowEnd, int32_t winding) {
    assert(rowBegin < rowEnd);
    uint32_t slot = HashSlot(key, kHashSlots);
    for (; slots_[slot] != kEmptySlot; slot = (slot + 1) & (kHashSlots - 1)) {
        Segment& twin = segments_[slots_[slot]];
        if (twin.key == key && twin.winding == -winding && twin.rowBegin == rowBegin &&
            twin.rowEnd == rowEnd) {
            twin.winding = 0;
            boundaryRows_ -= rowEnd - rowBegin;
            --liveCount_;
            return;
        }
    }
    assert(segmentCount_ < kMaxSegments && "four segments per triangle at most");
    slots_[slot] = static_cast<uint16_t>(segmentCount_);
    segments_[segmentCount_++] = Segment{e.xFx + (rowBegin - rowOfE) * e.stepFx, e.stepFx, key,
                                         static_cast<int32_t>(rowBegin),
                                         static_cast<int32_t>(rowEnd), winding};
    boundaryRows_ += rowEnd - rowBegin;
    ++liveCount_;
}

// Rows [r0, r1) of a part between the long edge and a short edge, both
// already added over the whole part. On rows where the left edge lies
// right of the right one the triangle covers nothing, but its edges would
// count -1 between them; a second pair of segments with opposite windings
// takes those rows back out. D(i) = XL - XR on row r0 + i is linear in i,
// so the rows are a run at one end of the part (InvertedRows). All
// positions involved are walk positions, so nothing overflows.
inline void CUnionScan::CorrectInvertedRows(const PreparedEdge& longEdge, int64_t longRow,
                                            uint64_t longKey, const PreparedEdge& shortEdge,
                                            int64_t shortRow, uint64_t shortKey,
                                            int32_t longWinding, int64_t r0, int64_t r1) {
    const int64_t longX = longEdge.xFx + (r0 - longRow) * longEdge.stepFx;
    const int64_t shortX = shortEdge.xFx + (r0 - shortRow) * shortEdge.stepFx;
    const int64_t last = r1 - 1 - r0;
    const int64_t d0 = (longX - shortX) * longWinding;
    const int64_t d1 = (longX + last * longEdge.stepFx - (shortX + last * shortEdge.stepFx)) *
                       longWinding;
    if (d0 <= 0 && d1 <= 0) return;
    const int64_t slope = (longEdge.stepFx - shortEdge.stepFx) * longWinding;
    const RowRange inverted = InvertedRows(d0, d1, slope, r0, r1);
    AddCorrection(longEdge, longRow, longKey, shortEdge, shortRow, shortKey, longWinding,
                  inverted.begin, inverted.end);
}

// Kept out of line: few parts are inverted anywhere.
void CUnionScan::AddCorrection(const PreparedEdge& longEdge, int64_t longRow, uint64_t longKey,
                               const PreparedEdge& shortEdge, int64_t shortRow,
                               uint64_t shortKey, int32_t longWinding, int64_t rowBegin,
                               int64_t rowEnd) {
    AddSegment(longEdge, longRow, longKey, rowBegin, rowEnd, -longWinding);
    AddSegment(shortEdge, shortRow, shortKey, rowBegin, rowEnd, longWinding);
}

bool CUnionScan::Add(const PreparedVertex& a, const PreparedVertex& b, const PreparedVertex& c,
                     uint32_t ia, uint32_t ib, uint32_t ic) {
    if (triangleCount_ == kMaxTriangles) return false;
    assert(a.walkable && b.walkable && c.walkable && "others take the triangle walk");
    const PreparedVertex* o[3] = {&a, &b, &c};
    uint32_t id[3] = {ia, ib, ic};
    if (o[1]->y < o[0]->y) std::swap(o[0], o[1]), std::swap(id[0], id[1]);
    if (o[2]->y < o[1]->y) std::swap(o[1], o[2]), std::swap(id[1], id[2]);
    if (o[1]->y < o[0]->y) std::swap(o[0], o[1]), std::swap(id[0], id[1]);
    const PreparedVertex &top = *o[0], &mid = *o[1], &bot = *o[2];
    const int64_t begin = std::max<int64_t>(FxCeil(top.yFx), 0);
    const int64_t end = std::min<int64_t>(FxCeil(bot.yFx), height_);
    if (begin >= end) return true;
    const double xt = top.x, yt = top.y;
    const double area = (static_cast<double>(mid.x) - xt) * (static_cast<double>(bot.y) - yt) -
                        (static_cast<double>(bot.x) - xt) * (static_cast<double>(mid.y) - yt);
    if (area > -kMinDoubleArea && area < kMinDoubleArea) return true;
    uint32_t* t = triangles_[triangleCount_++];
    t[0] = ia, t[1] = ib, t[2] = ic;
    triangleRows_ += end - begin;

    const int64_t split = std::clamp<int64_t>(FxCeil(mid.yFx), begin, end);
    const int32_t longWinding = area > 0.0 ? 1 : -1;  // the long edge is left when area > 0
    // Edges first, so that their divisions overlap.
    const PreparedEdge longEdge = SetUpEdge(top, bot, begin);
    const PreparedEdge upper = begin < split ? SetUpEdge(top, mid, begin) : PreparedEdge{};
    const PreparedEdge lower = split < end ? SetUpEdge(mid, bot, split) : PreparedEdge{};
    const uint64_t longKey = EdgeKey(id[0], id[2]);
    AddSegment(longEdge, begin, longKey, begin, end, longWinding);
    if (begin < split) {
        const uint64_t upperKey = EdgeKey(id[0], id[1]);
        AddSegment(upper, begin, upperKey, begin, split, -longWinding);
        CorrectInvertedRows(longEdge, begin, longKey, upper, begin, upperKey, longWinding, begin,
                            split);
    }
    if (split < end) {
        const uint64_t lowerKey = EdgeKey(id[1], id[2]);
        AddSegment(lower, split, lowerKey, split, end, -longWinding);
        CorrectInvertedRows(longEdge, begin, longKey, lower, split, lowerKey, longWinding, split,
                            end);
    }
    return true;
}

// Orders the live segments by first row, then by number: a counting sort
// over the chunk's rows (stable, and segments are visited in number order,
// so ties keep their numbers' order), or a comparison sort when the rows
// span more than the count table holds.
void CUnionScan::OrderLiveSegments() {
    static_assert(kMaxSegments <= 1u << 16, "segment numbers take 16 bits of the order key");
    constexpr int32_t kMaxCountedRows = 2048;
    int32_t lo = height_, hi = -1;
    for (uint32_t i = 0; i < segmentCount_; ++i) {
        if (segments_[i].winding == 0) continue;
        lo = std::min(lo, segments_[i].rowBegin);
        hi = std::max(hi, segments_[i].rowBegin);
    }
    const auto key = [this](uint32_t i) {
        // Rows lie in [0, height): the key sorts by row, then by number.
        return static_cast<uint64_t>(segments_[i].rowBegin) << 16 | i;
    };
    if (hi < lo) {
        assert(liveCount_ == 0);
        return;
    }
    if (hi - lo >= kMaxCountedRows) {
        uint32_t n = 0;
        for (uint32_t i = 0; i < segmentCount_; ++i) {
            if (segments_[i].winding != 0) order_[n++] = key(i);
        }
        assert(n == liveCount_);
        std::sort(order_, order_ + n);
        return;
    }
    uint16_t start[kMaxCountedRows + 1];
    std::fill_n(start, hi - lo + 2, uint16_t{0});
    for (uint32_t i = 0; i < segmentCount_; ++i) {
        if (segments_[i].winding != 0) ++start[segments_[i].rowBegin - lo + 1];
    }
    for (int32_t r = 1; r <= hi - lo; ++r) {
        start[r] = static_cast<uint16_t>(start[r] + start[r - 1]);
    }
    for (uint32_t i = 0; i < segmentCount_; ++i) {
        if (segments_[i].winding != 0) order_[start[segments_[i].rowBegin - lo]++] = key(i);
    }
    assert(start[hi - lo] == liveCount_);
}

}  // namespace tr
