// paint/blend_memo.h — folder-private: remembered blends of one character's
// compositing call.
//
// Flat and null colours shade every pixel alike and without side effects,
// so when every number present in a footprint belongs to such a slot the
// blended pixel depends only on the counts of the painted numbers, the
// colours of their slots, the blend mode and the target pixel. A memo is
// therefore made for the kinds and colours of the flat and null slots 2-15
// and a blend mode, and answers for any painter whose slots hold the same
// values: the characters of a title in one style share it, and it stays
// warm from one character to the next. Along a glyph the same few count
// patterns meet the same background again and again; the memo hands back
// the earlier result instead of shading and blending once more. Results
// are those of the blend itself, so memoised and fresh pixels are the same
// bit for bit. Slots of other kinds (ramps, stacks, anything
// position-dependent) are never memoised.
#pragma once

#include <bit>
#include <cstdint>
#include <typeinfo>

#include "paint/color_applicator.h"
#include "paint/pixel_blend.h"

namespace tr {

class BlendMemo {
public:
    BlendMemo(CColorApplicator* const* slots, int32_t blendMode) : blendMode_(blendMode) {
        for (uint32_t n = kFirstPaintedNumber; n < kNumberCount; ++n) {
            kinds_[n] = KindOf(*slots[n]);
            if (kinds_[n] == Kind::kOther) continue;
            constant_ |= 1u << n;
            colors_[n] = slots[n]->color;
        }
    }

    // True when the slots' flat and null colours and the blend mode are
    // those the memo was made for (compared by value, bit for bit).
    bool Matches(CColorApplicator* const* slots, int32_t blendMode) const {
        if (blendMode != blendMode_) return false;
        for (uint32_t n = kFirstPaintedNumber; n < kNumberCount; ++n) {
            if (KindOf(*slots[n]) != kinds_[n]) return false;
            if (kinds_[n] == Kind::kOther) continue;
            const WorkingColor& c = slots[n]->color;
            const WorkingColor& m = colors_[n];
            if (!SameBits(c.c0, m.c0) || !SameBits(c.c1, m.c1) || !SameBits(c.c2, m.c2) ||
                !SameBits(c.alpha, m.alpha)) {
                return false;
            }
        }
        return true;
    }

    // Uniform footprints of number n (the fast path: one shade, no counts).
    bool FindUniform(uint32_t n, uint32_t target, uint32_t* result) const {
        const UniformEntry& e = uniform_[n];
        if (!(constant_ >> n & 1u) || !e.valid || e.target != target) return false;
        *result = e.result;
        return true;
    }
    void StoreUniform(uint32_t n, uint32_t target, uint32_t result) {
        if (constant_ >> n & 1u) uniform_[n] = {target, result, true};
    }

    // Key of a counted footprint: (number, count) pairs of the painted
    // numbers in increasing order, ten bits each; 0 when the pixel cannot be
    // memoised (a slot that is not constant, or more than six numbers).
    uint64_t CountedKey(uint32_t painted, const uint8_t counts[kNumberCount]) const {
        if ((painted & ~constant_) != 0 || painted == 0) return 0;
        uint64_t key = 0;
        int32_t pairs = 0;
        for (uint32_t m = painted; m != 0; m &= m - 1) {
            if (++pairs > kMaxPairs) return 0;
            const uint32_t n = static_cast<uint32_t>(__builtin_ctz(m));
            key = key << 10 | uint64_t{n} << 6 | counts[n];
        }
        return key;
    }
    bool FindCounted(uint64_t key, uint32_t target, uint32_t* result) const {
        const CountedEntry& e = counted_[Slot(key, target)];
        if (key == 0 || e.key != key || e.target != target) return false;
        *result = e.result;
        return true;
    }
    void StoreCounted(uint64_t key, uint32_t target, uint32_t result) {
        if (key != 0) counted_[Slot(key, target)] = {key, target, result};
    }

private:
    static constexpr int32_t kMaxPairs = 6;  // 6 × 10 bits fit one key
    // 1024 entries: the count patterns of a whole title line over a few
    // backgrounds fit with few collisions.
    static constexpr int32_t kCountedBits = 10;

    enum class Kind : uint8_t { kOther, kFlat, kNull };
    static Kind KindOf(const CColorApplicator& applicator) {
        const std::type_info& kind = typeid(applicator);
        if (kind == typeid(CColor)) return Kind::kFlat;
        return kind == typeid(CNullColor) ? Kind::kNull : Kind::kOther;
    }
    static bool SameBits(float a, float b) {
        return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b);
    }

    struct UniformEntry {
        uint32_t target = 0;
        uint32_t result = 0;
        bool valid = false;
    };
    struct CountedEntry {
        uint64_t key = 0;  // 0: empty (a real key has a painted number)
        uint32_t target = 0;
        uint32_t result = 0;
    };

    static uint32_t Slot(uint64_t key, uint32_t target) {
        const uint64_t h = (key ^ uint64_t{target} << 17) * 0x9E3779B97F4A7C15u;
        return static_cast<uint32_t>(h >> (64 - kCountedBits));
    }

    int32_t blendMode_;
    Kind kinds_[kNumberCount] = {};
    WorkingColor colors_[kNumberCount] = {};
    uint32_t constant_ = 0;  // bit n: slot n shades alike everywhere
    UniformEntry uniform_[kNumberCount];
    CountedEntry counted_[1u << kCountedBits];
};

}  // namespace tr
