// paint/overlap_compositor.cpp — sample ownership between overlapping
// characters, shading of the owners and the blend.
//
// One core, instantiated per count class with arrays sized for the class;
// the two-character class settles joined ties that no layer value decides
// in favour of the first character, the others give such samples to nobody.
// A pixel where at most one character paints is that character's own
// counted pixel (through the shared blend memo when its colours allow); a
// pixel where every character's footprint is uniform (interiors) is decided
// once for all 48 samples; the others are unpacked to one number per sample
// and decided sample by sample.
#include "paint/overlap_compositor.h"

#include <algorithm>
#include <cassert>

#include "paint/blend_memo.h"
#include "paint/coverage_footprint.h"

namespace tr {
namespace {

struct OverlapCharacter {
    const CPainter* painter = nullptr;
    CColorApplicator* slots[kNumberCount] = {};
    int32_t originX = 0;  // floor of the painter position
    int32_t originY = 0;
    bool memoFits = false;  // the region's memo answers for these slots
};

// Bit i set when slot i (1-15) of every character joins its neighbours.
uint32_t JoinedSlots(CPainter* const* painters, int32_t count) {
    uint32_t joined = 0;
    for (int32_t slot = 1; slot < static_cast<int32_t>(kNumberCount); ++slot) {
        bool all = true;
        for (int32_t c = 0; c < count && all; ++c) {
            const CColorApplicator* applicator = painters[c]->GetSlot(slot);
            all = applicator && applicator->joinsNeighbours;
        }
        if (all) joined |= 1u << slot;
    }
    return joined;
}

// Nibbles of 2..15 in a coverage word: any of the upper three bits set.
constexpr uint32_t kPaintedNibbles = 0xEEEEEEEEu;

// Per-pixel state of kMax characters: footprint numbers, owner counts and
// the layer values asked so far.
template <int32_t kMax>
struct OverlapPixel {
    uint8_t samples[kMax][kFootprintSamples];
    uint8_t counts[kMax][kNumberCount];
    uint32_t layerValues[kMax][kNumberCount];
    uint32_t layerKnown[kMax];
    int32_t x[kMax];  // the pixel in each character's painter coordinates
    int32_t y[kMax];
};

template <int32_t kMax>
uint32_t LayerValue(OverlapPixel<kMax>& px, const OverlapCharacter& ch, int32_t c, uint32_t n) {
    if (!(px.layerKnown[c] & (1u << n))) {
        px.layerValues[c][n] = ch.slots[n]->LayerValueAt(px.x[c], px.y[c]);
        px.layerKnown[c] |= 1u << n;
    }
    return px.layerValues[c][n];
}

// Owner of a tie on joined number n at sample s, or −1 for none.
template <int32_t kMax, bool kTieToFirst>
int32_t SettleJoinedTie(OverlapPixel<kMax>& px, const OverlapCharacter* chars, int32_t count,
                        int32_t s, uint32_t n) {
    int32_t owner = -1;
    uint32_t best = 0;
    for (int32_t c = 0; c < count; ++c) {
        if (px.samples[c][s] != n) continue;
        const uint32_t value = LayerValue(px, chars[c], c, n);
        if ((kTieToFirst && owner < 0) || value > best) {
            owner = c;
            best = value;
        }
    }
    return owner;
}

// Owner of sample s (−1 for none) and its number: the highest number, the
// first listed on a tie, or the joined-tie rule.
template <int32_t kMax, bool kTieToFirst>
inline int32_t OwnerOfSample(OverlapPixel<kMax>& px, const OverlapCharacter* chars, int32_t count,
                             uint32_t joined, int32_t s, uint32_t* number) {
    uint32_t n = px.samples[0][s];
    int32_t owner = 0;
    bool tied = false;
    for (int32_t c = 1; c < count; ++c) {
        const uint32_t v = px.samples[c][s];
        if (v > n) {
            n = v;
            owner = c;
            tied = false;
        } else if (v == n) {
            tied = true;
        }
    }
    if (tied && (joined >> n & 1u)) {
        owner = SettleJoinedTie<kMax, kTieToFirst>(px, chars, count, s, n);
    }
    *number = n;
    return owner;
}

// Counts every sample for its owner. Neighbouring samples mostly share owner
// and number, so runs are summed in registers and stored once per run
// rather than incrementing one counter 48 times through memory.
template <int32_t kMax, bool kTieToFirst>
void CountOwners(OverlapPixel<kMax>& px, const OverlapCharacter* chars, int32_t count,
                 uint32_t joined) {
    int32_t runOwner = -1;
    uint32_t runNumber = 0;
    uint32_t run = 0;
    for (int32_t s = 0; s < kFootprintSamples; ++s) {
        uint32_t n;
        const int32_t owner = OwnerOfSample<kMax, kTieToFirst>(px, chars, count, joined, s, &n);
        if (owner == runOwner && n == runNumber) {
            ++run;
            continue;
        }
        if (runOwner >= 0) px.counts[runOwner][runNumber] += static_cast<uint8_t>(run);
        runOwner = owner;
        runNumber = n;
        run = 1;
    }
    if (runOwner >= 0) px.counts[runOwner][runNumber] += static_cast<uint8_t>(run);
}

// When every character's footprint is uniform, all 48 samples see the same
// numbers, so one ownership decision stands for all of them: the owner gets
// 48 samples of its number, exactly what the per-sample loop would count.
// Returns false (nothing decided) when some footprint is not uniform.
template <int32_t kMax, bool kTieToFirst>
bool CompositeUniformFootprints(OverlapPixel<kMax>& px, const OverlapCharacter* chars,
                                int32_t count, uint32_t joined, const FootprintWords* words,
                                uint32_t& target, int32_t blendMode) {
    for (int32_t c = 0; c < count; ++c) {
        uint32_t n;
        if (!IsUniformFootprint(words[c], &n)) return false;
        px.samples[c][0] = static_cast<uint8_t>(n);
    }
    uint32_t n;
    const int32_t owner = OwnerOfSample<kMax, kTieToFirst>(px, chars, count, joined, 0, &n);
    if (owner < 0 || n < kFirstPaintedNumber) return true;  // P = 0
    ShadedSums sums;
    sums.painted = kFootprintSamples;
    CColorApplicator* applicator = chars[owner].slots[n];
    const float alpha = applicator->ShadeAt(px.x[owner], px.y[owner]);
    AccumulateShade(sums, kFootprintSamples, alpha, applicator->color);
    target = BlendCounted(target, sums, blendMode);
    return true;
}

template <int32_t kMax, bool kTieToFirst>
uint32_t CompositeOverlapPixel(OverlapPixel<kMax>& px, const OverlapCharacter* chars, int32_t count,
                               uint32_t joined, int32_t tx, int32_t ty, uint32_t target,
                               int32_t blendMode, BlendMemo& memo) {
    FootprintWords words[kMax];
    for (int32_t c = 0; c < count; ++c) {
        const CPainter& painter = *chars[c].painter;
        px.x[c] = tx - chars[c].originX;
        px.y[c] = ty - chars[c].originY;
        words[c] = LoadFootprint(CoveragePixel(painter, px.x[c], px.y[c]), painter.coveragePitch16);
        px.layerKnown[c] = 0;
    }
    // A character with no painted number anywhere in its footprint owns
    // nothing that is shaded; when at most one character paints here, the
    // pixel is that character's own counted pixel (same shades in the same
    // order, same blend). The test is on whole words, the unused halves of
    // the side words included, so it may keep a character it could drop.
    int32_t painting = 0, only = 0;
    for (int32_t c = 0; c < count; ++c) {
        const FootprintWords& f = words[c];
        const uint32_t any = f.above | f.own0 | f.own1 | f.below | f.left0 | f.left1 | f.right0 |
                             f.right1;
        if (any & kPaintedNibbles) {
            ++painting;
            only = c;
        }
    }
    if (painting == 0) return target;
    if (painting == 1) {
        const OverlapCharacter& ch = chars[only];
        return ch.memoFits ? CompositeCountedMemo(words[only], ch.slots, px.x[only], px.y[only],
                                                  target, blendMode, memo)
                           : CompositeCounted(words[only], ch.slots, px.x[only], px.y[only],
                                              target, blendMode);
    }
    if (CompositeUniformFootprints<kMax, kTieToFirst>(px, chars, count, joined, words, target,
                                                      blendMode)) {
        return target;
    }
    for (int32_t c = 0; c < count; ++c) {
        int32_t s = 0;
        ForEachFootprintSample(words[c],
                               [&](uint32_t n) { px.samples[c][s++] = static_cast<uint8_t>(n); });
        std::fill(px.counts[c], px.counts[c] + kNumberCount, uint8_t{0});
    }
    CountOwners<kMax, kTieToFirst>(px, chars, count, joined);
    ShadedSums sums;
    for (int32_t c = 0; c < count; ++c) {
        for (uint32_t i = kFirstPaintedNumber; i < kNumberCount; ++i) {
            sums.painted += px.counts[c][i];
        }
    }
    if (sums.painted == 0) return target;
    for (uint32_t i = kFirstPaintedNumber; i < kNumberCount; ++i) {
        for (int32_t c = 0; c < count; ++c) {
            const uint32_t k = px.counts[c][i];
            if (k == 0) continue;
            CColorApplicator* applicator = chars[c].slots[i];
            const float alpha = applicator->ShadeAt(px.x[c], px.y[c]);
            AccumulateShade(sums, k, alpha, applicator->color);
        }
    }
    return BlendCounted(target, sums, blendMode);
}

template <int32_t kMax, bool kTieToFirst>
void CompositeOverlap(CPainter* const* painters, int32_t count, const CompositeRect& rect,
                      int32_t blendMode) {
    count = std::min(count, kMax);
    if (count < 2) return;
    TargetSpan span = SpanOf(rect);
    OverlapCharacter chars[kMax];
    for (int32_t c = 0; c < count; ++c) {
        assert(painters[c] && "every listed plan has a painter");
        span = ClipToPainter(*painters[c], span);
        chars[c].painter = painters[c];
        GatherSlots(*painters[c], chars[c].slots);
        chars[c].originX = painters[c]->GetOriginColumn();
        chars[c].originY = painters[c]->GetOriginRow();
    }
    if (span.IsEmpty()) return;
    const uint32_t joined = JoinedSlots(painters, count);
    // Characters in one style share the memo of their single-character
    // pixels; the first listed character picks it.
    BlendMemo& memo = SharedBlendMemo(chars[0].slots, blendMode);
    chars[0].memoFits = true;
    for (int32_t c = 1; c < count; ++c) chars[c].memoFits = memo.Matches(chars[c].slots, blendMode);
    OverlapPixel<kMax> px;
    for (int32_t ty = span.y0; ty < span.y1; ++ty) {
        uint32_t* dst = TargetPixel(*painters[0], span.x0, ty);
        for (int32_t tx = span.x0; tx < span.x1; ++tx, ++dst) {
            *dst = CompositeOverlapPixel<kMax, kTieToFirst>(px, chars, count, joined, tx, ty, *dst,
                                                            blendMode, memo);
        }
    }
}

}  // namespace
}  // namespace tr

void CompositeTwoCharacters(CPainter* const* painters, const CompositeRect& rect,
                            int32_t blendMode) {
    tr::CompositeOverlap<2, true>(painters, 2, rect, blendMode);
}

void CompositeThreeCharacters(CPainter* const* painters, const CompositeRect& rect,
                              int32_t blendMode) {
    tr::CompositeOverlap<3, false>(painters, 3, rect, blendMode);
}

void CompositeFourCharacters(CPainter* const* painters, const CompositeRect& rect,
                             int32_t blendMode) {
    tr::CompositeOverlap<4, false>(painters, 4, rect, blendMode);
}

void CompositeFiveCharacters(CPainter* const* painters, const CompositeRect& rect,
                             int32_t blendMode) {
    tr::CompositeOverlap<5, false>(painters, 5, rect, blendMode);
}

void CompositeUpToSevenCharacters(CPainter* const* painters, int32_t count,
                                  const CompositeRect& rect, int32_t blendMode) {
    tr::CompositeOverlap<7, false>(painters, count, rect, blendMode);
}

void CompositeUpToTwelveCharacters(CPainter* const* painters, int32_t count,
                                   const CompositeRect& rect, int32_t blendMode) {
    tr::CompositeOverlap<12, false>(painters, count, rect, blendMode);
}

void CompositeUpToEighteenCharacters(CPainter* const* painters, int32_t count,
                                     const CompositeRect& rect, int32_t blendMode) {
    tr::CompositeOverlap<18, false>(painters, count, rect, blendMode);
}

void CompositeManyCharacters(CPainter* const* painters, int32_t count, const CompositeRect& rect,
                             int32_t blendMode) {
    tr::CompositeOverlap<kMaxOverlapCharacters, false>(painters, count, rect, blendMode);
}

void CompositeRegion(CPainter* const* painters, int32_t count, const CompositeRect& rect,
                     int32_t layerBlendMode) {
    if (count <= 0 || !painters) return;
    switch (count) {
        case 1:
            CompositeCharacter(*painters[0], rect);
            return;
        case 2:
            CompositeTwoCharacters(painters, rect, layerBlendMode);
            return;
        case 3:
            CompositeThreeCharacters(painters, rect, layerBlendMode);
            return;
        case 4:
            CompositeFourCharacters(painters, rect, layerBlendMode);
            return;
        case 5:
            CompositeFiveCharacters(painters, rect, layerBlendMode);
            return;
        default:
            break;
    }
    if (count <= 7) {
        CompositeUpToSevenCharacters(painters, count, rect, layerBlendMode);
    } else if (count <= 12) {
        CompositeUpToTwelveCharacters(painters, count, rect, layerBlendMode);
    } else if (count <= 18) {
        CompositeUpToEighteenCharacters(painters, count, rect, layerBlendMode);
    } else {
        CompositeManyCharacters(painters, count, rect, layerBlendMode);
    }
}
