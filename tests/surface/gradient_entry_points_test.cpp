// The four generator entry points on hostile input; the sanitizer builds
// turn undefined conversions of huge or non-finite numbers into failures.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

uint32_t Opaque(int32_t, int32_t, uintptr_t) { return 0xFF808080u; }

// Each returns the rows it stepped (the four-corner count), or 0.
std::vector<std::pair<std::string, std::function<uint32_t(const ImageBlock*)>>> Generators() {
    static const FourCornerGradientParameters ramp{{}, 0.0, {0xFF0000FFu, 0, 0, 0}, 2.0, 0, 0, 0.0, 0.0};
    static const ClassicRecord classic{0, 0xFFFF0000u, 0, 0, 0.0, 100.0, 0.0, 0, 0, 0.0, 0, 0, 0.0, 0.0};
    static const TextureRecord texture{Opaque, 0, 4, 1, 1, {}};
    static const TextureStyle style{0, 0, 0.5, 0.5, 0.5};
    return {
        {"solid", [](const ImageBlock* b) { return FillSolid(b, 0x12345678u), 0u; }},
        {"four-corner", [](const ImageBlock* b) { return FillFourCornerGradient(b, &ramp); }},
        {"classic",
         [](const ImageBlock* b) { return RenderClassicGradient(b, 2, 2, 2, 2, 0.3, 0, 0, &classic, &texture), 0u; }},
        {"sampled",
         [](const ImageBlock* b) {
             return RenderClassicGradientSampled(b, 2, 2, 2, 2, 0.3, 0, 0, &ramp, Opaque, &style, 0), 0u;
         }},
    };
}

// A block of width 0 still counts its rows as stepped.
uint32_t ExpectedRows(const std::string& name, const ImageBlock* b) {
    return name == "four-corner" && b && b->width < 1 && b->height > 0 ? static_cast<uint32_t>(b->height) : 0u;
}

TEST(GradientEntryPoints, BadBlocksAreLeftAloneAndOneRowNeedsNoStride) {
    const int32_t bad[][3] = {{0, 4, 16}, {-4, 4, 16}, {4, 0, 16}, {4, -4, 16},
                              {4, 4, 15}, {4, 4, -15}, {4, 4, 0}};
    GuardedImage untouched(6, 4, 24);  // null records
    RenderClassicGradient(untouched.Block(), 3, 2, 3, 2, 0, 0, 0, nullptr, nullptr);
    RenderClassicGradientSampled(untouched.Block(), 3, 2, 3, 2, 0, 0, 0, nullptr, Opaque, nullptr, 0);
    EXPECT_EQ(FillFourCornerGradient(untouched.Block(), nullptr), 0u);
    EXPECT_TRUE(untouched.Untouched());
    for (const auto& [name, run] : Generators()) {
        for (const auto& c : bad) {
            GuardedImage image(4, 4, 16);
            ImageBlock block{image.Block()->pixels, c[0], c[1], c[2]};
            EXPECT_EQ(run(&block), ExpectedRows(name, &block)) << name;
            EXPECT_TRUE(image.Untouched()) << name << ": " << c[0] << "x" << c[1] << " " << c[2];
        }
        ImageBlock noPixels{nullptr, 4, 4, 16};
        EXPECT_EQ(run(&noPixels) + run(nullptr), 0u);
        for (int32_t stride : {0, -4}) {
            GuardedImage image(7, 1, 28);
            image.Block()->stride = stride;
            EXPECT_EQ(run(image.Block()), name == "four-corner" ? 1u : 0u);
            EXPECT_TRUE(image.GuardsIntact()) << name << " stride " << stride;
            for (int32_t x = 0; x < 7; ++x) EXPECT_NE(image.At(x, 0), tr_test::kSentinel) << name;
        }
    }
}

TEST(GradientEntryPoints, ExtremeNumbersStayInBounds) {
    const double inf = std::numeric_limits<double>::infinity();
    const double values[] = {0.0, -0.0, 1e-310, 1e-30, 0.5,   3.0, -7.25, 1e9,
                             3e9, -3e9, 1e300,  -1e300, inf, -inf, std::nan("")};
    std::mt19937 random(7);
    std::uniform_int_distribution<size_t> pick(0, std::size(values) - 1);
    std::uniform_int_distribution<uint32_t> word;
    auto any = [&] { return values[pick(random)]; };
    for (int trial = 0; trial < 400; ++trial) {
        const FourCornerGradientParameters ramp{
            {}, any(), {word(random), word(random), word(random), word(random)}, any(), word(random), 0,
            any(), any()};
        const ClassicRecord classic{uint32_t(trial % 2), word(random), word(random), 0, any(), any(), any(),
                                    trial % 3 == 0 ? word(random) : trial % 5, 0, any(), word(random), 0,
                                    any(), any()};
        const TextureRecord texture{Opaque, 0, word(random) % 12, uint8_t(trial & 1),
                                    uint8_t(trial >> 1 & 1), {}};
        const TextureStyle style{0, 0, any(), any(), any()};
        const double g[7] = {any(), any(), any(), any(), any(), any(), any()};

        GuardedImage a(5, 4, -6 * 4), b(5, 4, 6 * 4), c(5, 4, 5 * 4);
        FillFourCornerGradient(a.Block(), &ramp);
        RenderClassicGradient(b.Block(), g[0], g[1], g[2], g[3], g[4], g[5], g[6], &classic, &texture);
        RenderClassicGradientSampled(c.Block(), g[0], g[1], g[2], g[3], g[4], g[5], g[6], &ramp,
                                     Opaque, &style, 0);
        ASSERT_TRUE(a.GuardsIntact() && b.GuardsIntact() && c.GuardsIntact()) << trial;
    }
}

} // namespace
