// raster/span_words.h — private to raster/: writing a row span of the
// coverage map tile word by tile word.
//
// Within a row the four sub-samples of a tile share one 16-bit word (x % 4
// = 0 in the high nibble) and consecutive tiles are kWordsPerTile words
// apart. A span [x0, x1) touches a partial head word, whole words, and a
// partial tail word. A word operation gives the new value of a word from
// its old value: Whole(old) when all four nibbles are covered, Part(old, m)
// when only the nibbles set in m are (Part must leave the others as they
// are, and Part(old, 0) must be old).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "raster/fixed_point.h"

namespace tr {

inline constexpr int32_t kWordsPerTile = kSubPerPx;  // words between tiles of a row

// Mask of nibbles [first, end) of a tile word, 0 <= first, end <= 4; empty
// (0) when end <= first.
constexpr uint16_t NibbleRangeMask(int32_t first, int32_t end) {
    return static_cast<uint16_t>((0xFFFFu >> (first * kNibbleBits)) &
                                 ~(0xFFFFu >> (end * kNibbleBits)));
}

inline uint16_t* WordOf(uint16_t* rowBase, int32_t x) {
    return rowBase + static_cast<ptrdiff_t>(x >> kSubShift) * kWordsPerTile;
}

// Writes the non-empty span [x0, x1) of one row.
template <class WordOp>
inline void FillSpanWords(uint16_t* rowBase, int32_t x0, int32_t x1, const WordOp& op) {
    uint16_t* w = WordOf(rowBase, x0);
    int32_t x = x0;
    if ((x & kSubMask) != 0) {  // partial head tile
        const int32_t end = std::min<int32_t>(x1 - (x & ~kSubMask), kSubPerPx);
        *w = op.Part(*w, NibbleRangeMask(x & kSubMask, end));
        x = (x & ~kSubMask) + kSubPerPx;
        w += kWordsPerTile;
    }
    for (; x1 - x >= kSubPerPx; x += kSubPerPx, w += kWordsPerTile) *w = op.Whole(*w);
    if (x < x1) *w = op.Part(*w, NibbleRangeMask(0, x1 - x));  // partial tail tile
}

}  // namespace tr
