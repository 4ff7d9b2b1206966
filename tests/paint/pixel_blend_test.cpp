// Tests of the blend arithmetic: the rounding rule, and the vector blends
// against their scalar twins on random and extreme sums (NaN, denormals,
// negatives, zero divisors).
#include "paint/pixel_blend.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace {

using namespace tr;

TEST(PixelBlend, RoundingRule) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const std::pair<float, uint32_t> cases[] = {
        {0.0f, 0},     {0.49f, 0},   {0.5f, 1},    {127.5f, 128},  {254.49f, 254},
        {254.5f, 255}, {255.49f, 255}, {255.5f, 255}, {1e30f, 255}, {-0.4f, 0},
        {-0.6f, 0},    {-300.0f, 0},  {kNaN, 0},     {kInf, 255}};
    for (const auto& [in, out] : cases) EXPECT_EQ(RoundToByte(in), out) << in;
    // 0.5 is added in double: 0.5 − 2^-25 plus 0.5 stays below 1 in double
    // but rounds to 1.0f in single precision.
    const float justBelowHalf = std::nextafter(0.5f, 0.0f);
    ASSERT_EQ(justBelowHalf + 0.5f, 1.0f);
    EXPECT_EQ(RoundToByte(justBelowHalf), 0u);
}

#if TR_BLEND_SSE2
// Zeros, full scale, NaN, negatives, denormals and ordinary values.
float RandomValue(std::mt19937& rng, float scale) {
    const uint32_t kind = rng() % 10;
    if (kind == 0) return 0.0f;
    if (kind == 1) return scale;
    if (kind == 2) return std::numeric_limits<float>::quiet_NaN();
    if (kind == 3) return -scale * 0.01f * float(rng() % 100);
    if (kind == 4) return std::numeric_limits<float>::denorm_min() * float(rng() % 8);
    return scale * float(rng() % 100000) / 100000.0f;
}

TEST(PixelBlend, VectorMatchesScalar) {
    std::mt19937 rng(99);
    for (int i = 0; i < 200000; ++i) {
        const uint32_t target = (rng() % 4 == 0) ? (rng() & 0x00FFFFFFu) : rng();
        const int32_t mode = static_cast<int32_t>(rng() % 3);
        ShadedSums sums;
        sums.painted = static_cast<int32_t>(rng() % 49);
        sums.s = RandomValue(rng, 48.0f * 255.0f);
        for (float& c : sums.c) c = RandomValue(rng, 48.0f * 255.0f * 255.0f);
        ASSERT_EQ(BlendCounted(target, sums, mode), BlendCountedScalar(target, sums, mode)) << i;
        const WorkingColor colour{RandomValue(rng, 255.0f), RandomValue(rng, 255.0f),
                                 RandomValue(rng, 255.0f), 0.0f};
        const float alpha = RandomValue(rng, 255.0f);
        ASSERT_EQ(BlendUniform(target, colour, alpha, mode),
                  BlendUniformScalar(target, colour, alpha, mode))
            << i;
    }
}
#endif

}  // namespace
