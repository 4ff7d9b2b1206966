// paint/pixel_blend.h — folder-private: coverage layout constants and the
// arithmetic that turns shaded sample counts into one target pixel.
//
// Shared by the one-character and the overlapping-character compositors.
//
// Terminology:
//   S        sum of the weights w = k × A over the present applicator numbers
//            (k samples of the footprint, A the alpha the slot shaded)
//   C0..C2   sums of w × channel, channel read right after the slot's ShadeAt
//   P        number of footprint samples painted (numbers 2-15)
//   a        source alpha, S ÷ 48 (or the shaded alpha on the uniform path)
//   d        the target's alpha byte
//   o        resulting alpha of "over": d + a − d × a ÷ 255
//   u, T     "replace": u = (48 − P) × d is what the target keeps, T = S + u
//
// Weights and quotients are single precision; every result is rounded by
// adding 0.5 in double precision and truncating. A zero divisor writes a
// pixel of four zero bytes.
//
// With SSE2 the three colour channels and the alpha go through the divisions,
// products and the rounding as one 4-lane vector. IEEE single and double
// operations give the same result per lane as one at a time, so the vector
// blends equal their scalar twins bit for bit (tests/paint/pixel_blend_test
// compares them).
#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#define TR_BLEND_SSE2 1
#endif

#include "paint/color_applicator.h"

namespace tr {

// Sub-samples per pixel side, and the 48 samples of a compositing footprint.
constexpr int32_t kSubShift = 2;
constexpr int32_t kSubPerPixel = 1 << kSubShift;
constexpr int32_t kNibbleBits = 4;
constexpr uint32_t kNibbleMask = 0xFu;
constexpr int32_t kFootprintSamples = 48;
constexpr float kFootprintScale = 48.0f;
// Applicator numbers 0 (uncovered) and 1 (covered, never painted) paint
// nothing; 2-15 are painted by their slot.
constexpr uint32_t kFirstPaintedNumber = 2;
constexpr uint32_t kNumberCount = 16;
constexpr int32_t kBlendOver = 0;

// Entry n is nibble n repeated eight times: a 32-bit coverage word equal to
// entry n holds number n in all eight of its sub-samples.
constexpr uint32_t UniformWord(uint32_t n) { return n * 0x11111111u; }

// Target pixel bytes in memory order blue, green, red, alpha.
constexpr uint32_t PackPixel(uint32_t c0, uint32_t c1, uint32_t c2, uint32_t alpha) {
    return c0 | (c1 << 8) | (c2 << 16) | (alpha << 24);
}
constexpr uint32_t PixelByte(uint32_t pixel, int32_t index) {
    return (pixel >> (8 * index)) & 0xFFu;
}

// +0.5 in double, truncation toward zero, 255 above. Values that truncate
// below zero (never produced from alphas 0..255) and NaN store 0.
inline uint32_t RoundToByte(float v) {
    const double r = static_cast<double>(v) + 0.5;
    if (!(r >= 1.0)) return 0;
    if (r >= 256.0) return 255;
    return static_cast<uint32_t>(r);
}

// Shaded sums of a counted footprint.
struct ShadedSums {
    float s = 0.0f;
    float c[3] = {0.0f, 0.0f, 0.0f};
    int32_t painted = 0;  // P
};

// Adds k samples shaded by an applicator: w = k × A, then w and w × channel.
inline void AccumulateShade(ShadedSums& sums, uint32_t k, float alpha, const WorkingColor& color) {
    const float w = static_cast<float>(k) * alpha;
    sums.s = sums.s + w;
    sums.c[0] = sums.c[0] + w * color.c0;
    sums.c[1] = sums.c[1] + w * color.c1;
    sums.c[2] = sums.c[2] + w * color.c2;
}

// The counted blend. The caller has left the pixel alone when P = 0.
inline uint32_t BlendCountedScalar(uint32_t target, const ShadedSums& sums, int32_t blendMode) {
    const float d = static_cast<float>(PixelByte(target, 3));
    float out[4];
    if (blendMode == kBlendOver) {
        if (sums.s == 0.0f) return target;
        const float a = sums.s / kFootprintScale;
        const float da = d * a / 255.0f;
        const float o = d + a - da;
        if (o == 0.0f) return 0;
        const float sourceScale = a / o;
        const float targetScale = (d - da) / o;
        for (int j = 0; j < 3; ++j) {
            const float t = static_cast<float>(PixelByte(target, j));
            out[j] = (sums.c[j] / sums.s) * sourceScale + t * targetScale;
        }
        out[3] = o;
    } else {
        const float u = static_cast<float>(kFootprintSamples - sums.painted) * d;
        const float total = sums.s + u;
        if (total == 0.0f) return 0;
        for (int j = 0; j < 3; ++j) {
            const float t = static_cast<float>(PixelByte(target, j));
            out[j] = (t * u + sums.c[j]) / total;
        }
        out[3] = total / kFootprintScale;
    }
    return PackPixel(RoundToByte(out[0]), RoundToByte(out[1]), RoundToByte(out[2]),
                     RoundToByte(out[3]));
}

// The uniform-footprint blend: one applicator's colour with alpha A, no
// counts (so no S = 0 shortcut in "over").
inline uint32_t BlendUniformScalar(uint32_t target, const WorkingColor& color, float alpha,
                                   int32_t blendMode) {
    if (blendMode != kBlendOver) {
        return PackPixel(RoundToByte(color.c0), RoundToByte(color.c1), RoundToByte(color.c2),
                         RoundToByte(alpha));
    }
    const float d = static_cast<float>(PixelByte(target, 3));
    const float da = d * alpha / 255.0f;
    const float o = d + alpha - da;
    if (o == 0.0f) return 0;
    const float sourceScale = alpha / o;
    const float targetScale = (d - da) / o;
    const float source[3] = {color.c0, color.c1, color.c2};
    float out[3];
    for (int j = 0; j < 3; ++j) {
        const float t = static_cast<float>(PixelByte(target, j));
        out[j] = source[j] * sourceScale + t * targetScale;
    }
    return PackPixel(RoundToByte(out[0]), RoundToByte(out[1]), RoundToByte(out[2]), RoundToByte(o));
}

#if TR_BLEND_SSE2

// Lanes 0-2 of `colour`, lane 3 of `alpha`.
inline __m128 WithAlphaLane(__m128 colour, __m128 alpha) {
    const __m128 lane3 = _mm_castsi128_ps(_mm_setr_epi32(0, 0, 0, -1));
    return _mm_or_ps(_mm_andnot_ps(lane3, colour), _mm_and_ps(lane3, alpha));
}

inline __m128 UnpackTarget(uint32_t target) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_cvtsi32_si128(static_cast<int>(target));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero));
}

// RoundToByte on four lanes: max(r, 0) also maps NaN to 0 (MAXPD returns its
// second operand when one is NaN); min(r, 255) truncates like "above 255".
inline uint32_t RoundAndPack(__m128 v) {
    const __m128d half = _mm_set1_pd(0.5);
    const __m128d zero = _mm_setzero_pd();
    const __m128d top = _mm_set1_pd(255.0);
    __m128d lo = _mm_add_pd(_mm_cvtps_pd(v), half);
    __m128d hi = _mm_add_pd(_mm_cvtps_pd(_mm_movehl_ps(v, v)), half);
    lo = _mm_min_pd(_mm_max_pd(lo, zero), top);
    hi = _mm_min_pd(_mm_max_pd(hi, zero), top);
    const __m128i ints = _mm_unpacklo_epi64(_mm_cvttpd_epi32(lo), _mm_cvttpd_epi32(hi));
    const __m128i words = _mm_packs_epi32(ints, ints);
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
}

inline uint32_t BlendCounted(uint32_t target, const ShadedSums& sums, int32_t blendMode) {
    const float d = static_cast<float>(PixelByte(target, 3));
    const __m128 t = UnpackTarget(target);
    const __m128 c = _mm_setr_ps(sums.c[0], sums.c[1], sums.c[2], 0.0f);
    if (blendMode == kBlendOver) {
        if (sums.s == 0.0f) return target;
        const float a = sums.s / kFootprintScale;
        const float da = d * a / 255.0f;
        const float o = d + a - da;
        if (o == 0.0f) return 0;
        const __m128 scales = _mm_div_ps(_mm_setr_ps(a, d - da, 0.0f, 0.0f), _mm_set1_ps(o));
        const __m128 source = _mm_div_ps(c, _mm_set1_ps(sums.s));
        const __m128 out = _mm_add_ps(_mm_mul_ps(source, _mm_shuffle_ps(scales, scales, 0x00)),
                                      _mm_mul_ps(t, _mm_shuffle_ps(scales, scales, 0x55)));
        return RoundAndPack(WithAlphaLane(out, _mm_set1_ps(o)));
    }
    const float u = static_cast<float>(kFootprintSamples - sums.painted) * d;
    const float total = sums.s + u;
    if (total == 0.0f) return 0;
    const __m128 out = _mm_div_ps(_mm_add_ps(_mm_mul_ps(t, _mm_set1_ps(u)), c), _mm_set1_ps(total));
    return RoundAndPack(WithAlphaLane(out, _mm_set1_ps(total / kFootprintScale)));
}

inline uint32_t BlendUniform(uint32_t target, const WorkingColor& color, float alpha,
                             int32_t blendMode) {
    const __m128 source = _mm_setr_ps(color.c0, color.c1, color.c2, alpha);
    if (blendMode != kBlendOver) return RoundAndPack(source);
    const float d = static_cast<float>(PixelByte(target, 3));
    const float da = d * alpha / 255.0f;
    const float o = d + alpha - da;
    if (o == 0.0f) return 0;
    const __m128 scales = _mm_div_ps(_mm_setr_ps(alpha, d - da, 0.0f, 0.0f), _mm_set1_ps(o));
    const __m128 out =
        _mm_add_ps(_mm_mul_ps(source, _mm_shuffle_ps(scales, scales, 0x00)),
                   _mm_mul_ps(UnpackTarget(target), _mm_shuffle_ps(scales, scales, 0x55)));
    return RoundAndPack(WithAlphaLane(out, _mm_set1_ps(o)));
}

#else

inline uint32_t BlendCounted(uint32_t target, const ShadedSums& sums, int32_t blendMode) {
    return BlendCountedScalar(target, sums, blendMode);
}

inline uint32_t BlendUniform(uint32_t target, const WorkingColor& color, float alpha,
                             int32_t blendMode) {
    return BlendUniformScalar(target, color, alpha, blendMode);
}

#endif

}  // namespace tr
