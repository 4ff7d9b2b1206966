// paint/coverage_footprint.h — folder-private: reading the 48-sample
// footprint of a pixel from a character's coverage buffer, and the target
// area a compositing call may touch.
//
// Coverage holds four 16-bit words per pixel, one per sub-row, each with
// four 4-bit applicator numbers (leftmost sub-sample in the high nibble).
// Read as little-endian 32-bit words a pixel is two words: sub-rows 0-1
// (sub-row 0 in the low half) and sub-rows 2-3. The footprint of pixel
// (x, y) is therefore eight 32-bit words:
//   above   word 1 of (x, y − 1)   sub-rows 2-3, all 8 samples
//   own0/1  words 0, 1 of (x, y)   all 16 samples
//   below   word 0 of (x, y + 1)   sub-rows 0-1, all 8 samples
//   left0/1 words 0, 1 of (x − 1)  high halves only (sub-rows 1 and 3)
//   right0/1 words 0, 1 of (x + 1) low halves only (sub-rows 0 and 2)
// The uniform test compares whole words, including the unused halves of
// the side pixels.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "paint/blend_memo.h"
#include "paint/compositor.h"
#include "paint/painter.h"
#include "paint/pixel_blend.h"

namespace tr {

// 16-bit coverage words per pixel and per 32-bit word.
constexpr int32_t kWordsPerPixel = 4;
constexpr int32_t kHalfWords = 2;

// A 32-bit coverage word at a 16-bit word address (memcpy: the buffer is
// typed as 16-bit words).
inline uint32_t LoadCoverageWord(const uint16_t* p) {
    uint32_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

struct FootprintWords {
    uint32_t above, own0, own1, below, left0, left1, right0, right1;
};

// ownPixel: the pixel's first 16-bit word; pitch16: 16-bit words per row.
inline FootprintWords LoadFootprint(const uint16_t* ownPixel, int32_t pitch16) {
    FootprintWords f;
    f.above = LoadCoverageWord(ownPixel - pitch16 + kHalfWords);
    f.own0 = LoadCoverageWord(ownPixel);
    f.own1 = LoadCoverageWord(ownPixel + kHalfWords);
    f.below = LoadCoverageWord(ownPixel + pitch16);
    f.left0 = LoadCoverageWord(ownPixel - kWordsPerPixel);
    f.left1 = LoadCoverageWord(ownPixel - kWordsPerPixel + kHalfWords);
    f.right0 = LoadCoverageWord(ownPixel + kWordsPerPixel);
    f.right1 = LoadCoverageWord(ownPixel + kWordsPerPixel + kHalfWords);
    return f;
}

// True when all eight words hold one number; *number receives it.
inline bool IsUniformFootprint(const FootprintWords& f, uint32_t* number) {
    const uint32_t w = f.own0;
    const bool same = ((w ^ f.own1) | (w ^ f.above) | (w ^ f.below) | (w ^ f.left0) |
                       (w ^ f.left1) | (w ^ f.right0) | (w ^ f.right1)) == 0;
    *number = w & kNibbleMask;
    return same && w == UniformWord(*number);
}

// Calls visit(number) for each of the 48 samples (order: full words, then
// the side halves; callers that compare characters use the same order).
template <typename Visit>
inline void ForEachFootprintSample(const FootprintWords& f, Visit&& visit) {
    const uint32_t full[4] = {f.above, f.own0, f.own1, f.below};
    for (uint32_t w : full) {
        for (int32_t k = 0; k < 8; ++k) visit((w >> (kNibbleBits * k)) & kNibbleMask);
    }
    const uint32_t halves[4] = {f.left0 >> 16, f.left1 >> 16, f.right0 & 0xFFFFu,
                                f.right1 & 0xFFFFu};
    for (uint32_t h : halves) {
        for (int32_t k = 0; k < 4; ++k) visit((h >> (kNibbleBits * k)) & kNibbleMask);
    }
}

// ---- counting by nibble lanes ----------------------------------------------
//
// The 48 footprint numbers are packed as 48 nibbles into three 64-bit words.
// For one number n, a word XOR 16 copies of n has a zero nibble exactly where
// n sits; folding each nibble onto its low bit gives a "mismatch" bit per
// nibble, and summing those bits over the three words counts the samples
// that are not n. Each distinct number costs one such pass (typically two
// or three per edge pixel) instead of 48 dependent table increments.

constexpr uint64_t kNibbleOnes = 0x1111111111111111u;
constexpr uint64_t kByteOnes = 0x0101010101010101u;
constexpr uint64_t kLowNibbles = 0x0F0F0F0F0F0F0F0Fu;

struct PackedFootprint {
    uint64_t lanes[3];
};

inline PackedFootprint PackFootprint(const FootprintWords& f) {
    const uint64_t sides = uint64_t{f.left0 >> 16} | uint64_t{f.left1 >> 16} << 16 |
                           uint64_t{f.right0 & 0xFFFFu} << 32 | uint64_t{f.right1 & 0xFFFFu} << 48;
    return {{uint64_t{f.above} | uint64_t{f.own0} << 32, uint64_t{f.own1} | uint64_t{f.below} << 32,
             sides}};
}

// Bit 4k set when nibble k of v is not n.
inline uint64_t MismatchBits(uint64_t v, uint32_t n) {
    uint64_t x = v ^ (n * kNibbleOnes);
    x |= x >> 2;  // bit 4k: b0|b2, bit 4k+1: b1|b3 of nibble k
    x |= x >> 1;
    return x & kNibbleOnes;
}

// Number of set bits of three mismatch words (0..48).
inline uint32_t CountMismatches(uint64_t a, uint64_t b, uint64_t c) {
    const uint64_t nibbles = a + b + c;  // each nibble 0..3, no carries
    const uint64_t bytes = (nibbles & kLowNibbles) + ((nibbles >> 4) & kLowNibbles);  // 0..6
    return static_cast<uint32_t>((bytes * kByteOnes) >> 56);
}

// Fills counts[n] for every number present in the footprint and returns the
// mask of present numbers (bit n); absent numbers' counts are not written.
inline uint32_t CountFootprint(const FootprintWords& f, uint8_t counts[kNumberCount]) {
    const PackedFootprint p = PackFootprint(f);
    uint64_t pending[3] = {kNibbleOnes, kNibbleOnes, kNibbleOnes};  // not yet counted
    uint32_t present = 0;
    uint32_t n = static_cast<uint32_t>(p.lanes[0]) & kNibbleMask;
    for (;;) {
        const uint64_t m0 = MismatchBits(p.lanes[0], n);
        const uint64_t m1 = MismatchBits(p.lanes[1], n);
        const uint64_t m2 = MismatchBits(p.lanes[2], n);
        counts[n] = static_cast<uint8_t>(kFootprintSamples - CountMismatches(m0, m1, m2));
        present |= 1u << n;
        pending[0] &= m0;
        pending[1] &= m1;
        pending[2] &= m2;
        int lane = 0;
        while (lane < 3 && pending[lane] == 0) ++lane;
        if (lane == 3) return present;
        n = static_cast<uint32_t>(p.lanes[lane] >> std::countr_zero(pending[lane])) & kNibbleMask;
    }
}

// Target pixels a call may touch: [x0, x1) × [y0, y1).
struct TargetSpan {
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    bool IsEmpty() const { return x0 >= x1 || y0 >= y1; }
};

inline TargetSpan SpanOf(const CompositeRect& rect) {
    const int64_t x1 = static_cast<int64_t>(rect.x) + std::max(rect.width, 0);
    const int64_t y1 = static_cast<int64_t>(rect.y) + std::max(rect.height, 0);
    return {rect.x, rect.y, static_cast<int32_t>(std::min<int64_t>(x1, INT32_MAX)),
            static_cast<int32_t>(std::min<int64_t>(y1, INT32_MAX))};
}

// Narrows the span to the pixels whose footprint stays inside the painter's
// coverage (one pixel in from every edge) and that lie on its clip area.
inline TargetSpan ClipToPainter(const CPainter& painter, TargetSpan span) {
    if (!painter.coverage || !painter.targetPixels || painter.coverageWidth < 3 ||
        painter.coverageHeight < 3) {
        return {};
    }
    const int64_t ox = painter.GetOriginColumn();
    const int64_t oy = painter.GetOriginRow();
    const int64_t x0 = std::max<int64_t>({span.x0, 0, ox + 1});
    const int64_t y0 = std::max<int64_t>({span.y0, 0, oy + 1});
    const int64_t x1 =
        std::min<int64_t>({span.x1, painter.clipWidth, ox + painter.coverageWidth - 1});
    const int64_t y1 =
        std::min<int64_t>({span.y1, painter.clipHeight, oy + painter.coverageHeight - 1});
    if (x0 >= x1 || y0 >= y1) return {};
    return {static_cast<int32_t>(x0), static_cast<int32_t>(y0), static_cast<int32_t>(x1),
            static_cast<int32_t>(y1)};
}

// Slot applicators 0-15 of a painter; an empty slot (only possible when the
// defaults at finish did not run) reads as a shared null colour.
void GatherSlots(const CPainter& painter, CColorApplicator* slots[kNumberCount]);

// The counted path of one pixel for one character: shades each painted
// number of `painted` (bit n) once, in increasing order, weighted by its
// count, and blends. P = 0 leaves the target unchanged in CompositeCounted.
uint32_t ShadeAndBlendCounts(uint32_t painted, const uint8_t counts[kNumberCount],
                             CColorApplicator* const* slots, int32_t x, int32_t y, uint32_t target,
                             int32_t blendMode);
uint32_t CompositeCounted(const FootprintWords& f, CColorApplicator* const* slots, int32_t x,
                          int32_t y, uint32_t target, int32_t blendMode);

// CompositeCounted through remembered blends (paint/blend_memo.h); the memo
// must have been made for these slots and blend mode (same pixels). Inline:
// it is the per-pixel path of both compositors.
inline uint32_t CompositeCountedMemo(const FootprintWords& f, CColorApplicator* const* slots,
                                     int32_t x, int32_t y, uint32_t target, int32_t blendMode,
                                     BlendMemo& memo) {
    uint8_t counts[kNumberCount];
    const uint32_t painted = CountFootprint(f, counts) & ~((1u << kFirstPaintedNumber) - 1);
    if (painted == 0) return target;
    const uint64_t key = memo.CountedKey(painted, counts);
    uint32_t result;
    if (memo.FindCounted(key, target, &result)) return result;
    result = ShadeAndBlendCounts(painted, counts, slots, x, y, target, blendMode);
    memo.StoreCounted(key, target, result);
    return result;
}

// The remembered blends of this thread, kept while consecutive calls ask
// for the same flat colours and blend mode and made anew otherwise; shared
// by the characters of a title in one style.
BlendMemo& SharedBlendMemo(CColorApplicator* const* slots, int32_t blendMode);

// Target pixel (x, y): the row start is pitch ÷ 4 × y pixels in.
inline uint32_t* TargetPixel(const CPainter& painter, int32_t x, int32_t y) {
    return painter.targetPixels + static_cast<int64_t>(painter.targetPitch / 4) * y + x;
}

// First 16-bit coverage word of painter pixel (x, y).
inline const uint16_t* CoveragePixel(const CPainter& painter, int32_t x, int32_t y) {
    return painter.coverage + static_cast<int64_t>(y) * painter.coveragePitch16 +
           static_cast<int64_t>(x) * kWordsPerPixel;
}

}  // namespace tr
