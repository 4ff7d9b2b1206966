// Tests of the blend arithmetic: the vector blends against their scalar
// twins on random and extreme sums, the rounding rule, and the nibble-lane
// counting against a per-sample count.
#include "paint/pixel_blend.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "paint/coverage_footprint.h"

namespace {

using namespace tr;

TEST(PixelBlend, RoundingRule) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const struct {
        float in;
        uint32_t out;
    } cases[] = {{0.0f, 0},     {0.49f, 0},    {0.5f, 1},    {127.5f, 128}, {254.49f, 254},
                 {254.5f, 255}, {255.49f, 255}, {255.5f, 255}, {1e30f, 255},  {-0.4f, 0},
                 {-0.6f, 0},    {-300.0f, 0},  {kNaN, 0},     {kInf, 255}};
    for (const auto& c : cases) EXPECT_EQ(RoundToByte(c.in), c.out) << c.in;
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

TEST(PixelBlend, NibbleLaneCountsMatchPerSampleCounts) {
    std::mt19937 rng(5);  // 32-bit results below
    for (int i = 0; i < 100000; ++i) {
        // Words drawn from few numbers so that counts are large and varied.
        const uint32_t palette[3] = {uint32_t(rng() % 16), uint32_t(rng() % 16),
                                     uint32_t(rng() % 16)};
        auto word = [&]() -> uint32_t {
            uint32_t w = 0;
            for (int k = 0; k < 8; ++k) w |= palette[rng() % 3] << (4 * k);
            return rng() % 4 == 0 ? uint32_t(rng()) : w;
        };
        const FootprintWords f{word(), word(), word(), word(), word(), word(), word(), word()};
        uint32_t expected[16] = {};
        ForEachFootprintSample(f, [&expected](uint32_t n) { ++expected[n]; });
        uint8_t counts[16];
        const uint32_t present = CountFootprint(f, counts);
        for (uint32_t n = 0; n < 16; ++n) {
            ASSERT_EQ((present >> n) & 1u, expected[n] != 0 ? 1u : 0u) << "number " << n;
            ASSERT_EQ(expected[n] != 0 ? counts[n] : 0u, expected[n]) << "number " << n;
        }
    }
}

}  // namespace
