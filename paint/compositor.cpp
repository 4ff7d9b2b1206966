// paint/compositor.cpp — one character's coverage into the host's pixels:
// the footprint fast path, the counted path and the plain per-sample twin.
#include "paint/compositor.h"

#include <bit>
#include <cmath>
#include <memory>

#include "paint/blend_memo.h"
#include "paint/coverage_footprint.h"

namespace tr {

void GatherSlots(const CPainter& painter, CColorApplicator* slots[kNumberCount]) {
    static CNullColor emptySlot;  // ShadeAt of a null colour changes nothing
    for (uint32_t i = 0; i < kNumberCount; ++i) {
        CColorApplicator* applicator = painter.GetSlot(static_cast<int32_t>(i));
        slots[i] = applicator ? applicator : &emptySlot;
    }
}

uint32_t ShadeAndBlendCounts(uint32_t painted, const uint8_t counts[kNumberCount],
                             CColorApplicator* const* slots, int32_t x, int32_t y, uint32_t target,
                             int32_t blendMode) {
    ShadedSums sums;
    for (uint32_t m = painted; m != 0; m &= m - 1) sums.painted += counts[std::countr_zero(m)];
    for (; painted != 0; painted &= painted - 1) {
        const int i = std::countr_zero(painted);
        const float alpha = slots[i]->ShadeAt(x, y);
        AccumulateShade(sums, counts[i], alpha, slots[i]->color);
    }
    return BlendCounted(target, sums, blendMode);
}

uint32_t CompositeCounted(const FootprintWords& f, CColorApplicator* const* slots, int32_t x,
                          int32_t y, uint32_t target, int32_t blendMode) {
    uint8_t counts[kNumberCount];
    const uint32_t painted = CountFootprint(f, counts) & ~((1u << kFirstPaintedNumber) - 1);
    if (painted == 0) return target;
    return ShadeAndBlendCounts(painted, counts, slots, x, y, target, blendMode);
}

BlendMemo& SharedBlendMemo(CColorApplicator* const* slots, int32_t blendMode) {
    // One per thread: compositing runs on the closing thread, so no lock.
    thread_local std::unique_ptr<BlendMemo> memo;
    if (!memo || !memo->Matches(slots, blendMode)) {
        memo = std::make_unique<BlendMemo>(slots, blendMode);
    }
    return *memo;
}

namespace {

void CompositeRow(const CPainter& painter, CColorApplicator* const* slots, BlendMemo& memo,
                  int32_t ty, int32_t tx0, int32_t tx1) {
    const int32_t ox = painter.GetOriginColumn();
    const int32_t y = ty - painter.GetOriginRow();
    const int32_t pitch16 = painter.coveragePitch16;
    const int32_t blendMode = painter.blendMode;
    const uint16_t* cell = CoveragePixel(painter, tx0 - ox, y);
    uint32_t* dst = TargetPixel(painter, tx0, ty);
    for (int32_t tx = tx0; tx < tx1; ++tx, cell += kWordsPerPixel, ++dst) {
        const FootprintWords f = LoadFootprint(cell, pitch16);
        uint32_t n;
        if (IsUniformFootprint(f, &n)) {
            if (n < kFirstPaintedNumber) continue;
            uint32_t result;
            if (!memo.FindUniform(n, *dst, &result)) {
                const float alpha = slots[n]->ShadeAt(tx - ox, y);
                result = BlendUniform(*dst, slots[n]->color, alpha, blendMode);
                memo.StoreUniform(n, *dst, result);
            }
            *dst = result;
            continue;
        }
        *dst = CompositeCountedMemo(f, slots, tx - ox, y, *dst, blendMode, memo);
    }
}

// ---- plain twin -----------------------------------------------------------

// Sub-sample (sx, sy) of the coverage, by the buffer's addressing rule.
uint32_t SampleAt(const CPainter& painter, int32_t sx, int32_t sy) {
    const int64_t word = static_cast<int64_t>(sy / 4) * 4 * painter.coverageWidth +
                         static_cast<int64_t>(sx / 4) * 4 + sy % 4;
    return (painter.coverage[word] >> (12 - 4 * (sx % 4))) & 0xFu;
}

// 32-bit word `half` (0: sub-rows 0-1, 1: sub-rows 2-3) of pixel (x, y).
uint32_t WordAt(const CPainter& painter, int32_t x, int32_t y, int32_t half) {
    const int64_t first = (static_cast<int64_t>(y) * painter.coverageWidth + x) * 4 + 2 * half;
    return static_cast<uint32_t>(painter.coverage[first]) |
           (static_cast<uint32_t>(painter.coverage[first + 1]) << 16);
}

// The number n when the eight footprint words are n × 0x11111111, else −1.
int32_t UniformNumberReference(const CPainter& painter, int32_t x, int32_t y) {
    const uint32_t words[8] = {WordAt(painter, x, y - 1, 1), WordAt(painter, x, y, 0),
                               WordAt(painter, x, y, 1),     WordAt(painter, x, y + 1, 0),
                               WordAt(painter, x - 1, y, 0), WordAt(painter, x - 1, y, 1),
                               WordAt(painter, x + 1, y, 0), WordAt(painter, x + 1, y, 1)};
    for (uint32_t n = 0; n < 16; ++n) {
        bool all = true;
        for (uint32_t w : words) all = all && w == n * 0x11111111u;
        if (all) return static_cast<int32_t>(n);
    }
    return -1;
}

void CountReference(const CPainter& painter, int32_t x, int32_t y, int32_t counts[16]) {
    for (int32_t sy = 4 * y - 2; sy <= 4 * y + 5; ++sy) {
        for (int32_t sx = 4 * x; sx < 4 * x + 4; ++sx) ++counts[SampleAt(painter, sx, sy)];
    }
    for (int32_t sx = 4 * x - 4; sx < 4 * x; ++sx) {
        ++counts[SampleAt(painter, sx, 4 * y + 1)];
        ++counts[SampleAt(painter, sx, 4 * y + 3)];
    }
    for (int32_t sx = 4 * x + 4; sx < 4 * x + 8; ++sx) {
        ++counts[SampleAt(painter, sx, 4 * y)];
        ++counts[SampleAt(painter, sx, 4 * y + 2)];
    }
}

uint32_t RoundReference(float v) {
    const double r = std::trunc(static_cast<double>(v) + 0.5);
    if (!(r >= 0.0)) return 0;
    return r > 255.0 ? 255u : static_cast<uint32_t>(r);
}

uint32_t PackReference(const float out[4]) {
    return RoundReference(out[0]) | RoundReference(out[1]) << 8 | RoundReference(out[2]) << 16 |
           RoundReference(out[3]) << 24;
}

uint32_t CompositePixelReference(const CPainter& painter, CColorApplicator* const* slots, int32_t x,
                                 int32_t y, uint32_t target) {
    const float t[3] = {static_cast<float>(target & 0xFF), static_cast<float>((target >> 8) & 0xFF),
                        static_cast<float>((target >> 16) & 0xFF)};
    const float d = static_cast<float>(target >> 24);
    float s = 0.0f, c[3] = {0.0f, 0.0f, 0.0f};
    int32_t p = 0;
    bool uniform = false;
    const int32_t n = UniformNumberReference(painter, x, y);
    if (n == 0 || n == 1) return target;
    float a = 0.0f;
    if (n >= 2) {
        uniform = true;
        a = slots[n]->ShadeAt(x, y);
        const WorkingColor& colour = slots[n]->color;
        c[0] = colour.c0, c[1] = colour.c1, c[2] = colour.c2;
    } else {
        int32_t counts[16] = {};
        CountReference(painter, x, y, counts);
        for (int32_t i = 2; i < 16; ++i) p += counts[i];
        if (p == 0) return target;
        for (int32_t i = 2; i < 16; ++i) {
            if (counts[i] == 0) continue;
            const float w = static_cast<float>(counts[i]) * slots[i]->ShadeAt(x, y);
            s += w;
            c[0] += w * slots[i]->color.c0;
            c[1] += w * slots[i]->color.c1;
            c[2] += w * slots[i]->color.c2;
        }
    }
    float out[4];
    if (painter.blendMode == 0) {
        if (!uniform) {
            if (s == 0.0f) return target;
            a = s / 48.0f;
        }
        const float o = d + a - d * a / 255.0f;
        if (o == 0.0f) return 0;
        for (int j = 0; j < 3; ++j) {
            const float source = uniform ? c[j] : c[j] / s;
            out[j] = source * (a / o) + t[j] * ((d - d * a / 255.0f) / o);
        }
        out[3] = o;
    } else if (uniform) {
        out[0] = c[0], out[1] = c[1], out[2] = c[2], out[3] = a;
    } else {
        const float u = static_cast<float>(48 - p) * d;
        const float total = s + u;
        if (total == 0.0f) return 0;
        for (int j = 0; j < 3; ++j) out[j] = (t[j] * u + c[j]) / total;
        out[3] = total / 48.0f;
    }
    return PackReference(out);
}

}  // namespace
}  // namespace tr


void CompositeCharacter(CPainter& painter, const CompositeRect& rect) {
    using namespace tr;
    const TargetSpan span = ClipToPainter(painter, SpanOf(rect));
    if (span.IsEmpty()) return;
    CColorApplicator* slots[kNumberCount];
    GatherSlots(painter, slots);
    BlendMemo& memo = SharedBlendMemo(slots, painter.blendMode);
    for (int32_t ty = span.y0; ty < span.y1; ++ty)
        CompositeRow(painter, slots, memo, ty, span.x0, span.x1);
}

void CompositeCharacterReference(CPainter& painter, const CompositeRect& rect) {
    using namespace tr;
    const TargetSpan span = ClipToPainter(painter, SpanOf(rect));
    if (span.IsEmpty()) return;
    CColorApplicator* slots[kNumberCount];
    GatherSlots(painter, slots);
    const int32_t ox = painter.GetOriginColumn();
    const int32_t oy = painter.GetOriginRow();
    for (int32_t ty = span.y0; ty < span.y1; ++ty) {
        for (int32_t tx = span.x0; tx < span.x1; ++tx) {
            uint32_t* dst =
                painter.targetPixels + static_cast<int64_t>(painter.targetPitch / 4) * ty + tx;
            *dst = CompositePixelReference(painter, slots, tx - ox, ty - oy, *dst);
        }
    }
}
