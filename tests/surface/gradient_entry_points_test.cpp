// The four generator entry points on blocks they cannot draw: nothing is
// written anywhere, nothing crashes, and the row count says so.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

uint32_t Opaque(int32_t, int32_t, uintptr_t) { return 0xFF808080u; }

using Generator = std::function<void(const ImageBlock*)>;

std::vector<std::pair<const char*, Generator>> Generators() {
    static const FourCornerGradientParameters ramp = [] {
        FourCornerGradientParameters p{};
        p.corners[0] = 0xFF0000FFu;
        p.shineWidth = 2.0;
        return p;
    }();
    static const ClassicRecord classic = [] {
        ClassicRecord c{};
        c.colour1 = 0xFFFF0000u;
        c.end = 100.0;
        return c;
    }();
    static const TextureRecord texture{Opaque, 0, 4, 1, 1, {}};
    static const TextureStyle style{0, 0, 0.5, 0.5, 0.5};
    return {
        {"FillSolid", [](const ImageBlock* b) { FillSolid(b, 0x12345678u); }},
        {"FillFourCornerGradient", [](const ImageBlock* b) { FillFourCornerGradient(b, &ramp); }},
        {"RenderClassicGradient",
         [](const ImageBlock* b) { RenderClassicGradient(b, 2, 2, 2, 2, 0.3, 0, 0, &classic, &texture); }},
        {"RenderClassicGradientSampled",
         [](const ImageBlock* b) {
             RenderClassicGradientSampled(b, 2, 2, 2, 2, 0.3, 0, 0, &ramp, Opaque, &style, 0);
         }},
    };
}

TEST(GradientEntryPoints, BlocksThatCannotBeDrawnAreLeftAlone) {
    const struct {
        const char* name;
        int32_t width, height, stride;
    } cases[] = {
        {"width 0", 0, 4, 16},        {"negative width", -4, 4, 16},
        {"height 0", 4, 0, 16},       {"negative height", 4, -4, 16},
        {"stride a byte short", 4, 4, 15}, {"negative stride short", 4, 4, -15},
        {"zero stride", 4, 4, 0},
    };
    for (const auto& [generator, run] : Generators()) {
        for (const auto& c : cases) {
            GuardedImage image(4, 4, 16);
            ImageBlock block{image.Block()->pixels, c.width, c.height, c.stride};
            run(&block);
            EXPECT_TRUE(image.Untouched()) << generator << ": " << c.name;
        }
        ImageBlock noPixels{nullptr, 4, 4, 16};
        run(&noPixels);
        run(nullptr);
    }
}

TEST(GradientEntryPoints, SingleRowNeedsNoStrideAndEveryPixelIsWritten) {
    for (const auto& [generator, run] : Generators()) {
        for (int32_t stride : {0, 4, -4}) {
            GuardedImage image(7, 1, 28);
            ImageBlock block = *image.Block();
            block.stride = stride;
            run(&block);
            EXPECT_TRUE(image.GuardsIntact()) << generator << " stride " << stride;
            for (int32_t x = 0; x < 7; ++x) {
                EXPECT_NE(image.At(x, 0), tr_test::kSentinel) << generator << " pixel " << x;
            }
        }
    }
}

// Non-finite, huge and tiny numbers in every double argument and field:
// every pixel still gets a defined value and nothing outside the image is
// written (the sanitizer builds turn undefined conversions into failures).
TEST(GradientEntryPoints, ExtremeNumbersStayDefinedAndInBounds) {
    const double inf = std::numeric_limits<double>::infinity();
    const double values[] = {0.0,  -0.0, 1e-310, 1e-30, 0.5,  3.0,  -7.25,
                             1e9,  3e9,  -3e9,   1e300, -1e300, inf, -inf,
                             std::numeric_limits<double>::quiet_NaN()};
    std::mt19937 random(7);
    std::uniform_int_distribution<size_t> pick(0, std::size(values) - 1);
    std::uniform_int_distribution<uint32_t> word;
    auto any = [&] { return values[pick(random)]; };
    for (int trial = 0; trial < 400; ++trial) {
        FourCornerGradientParameters ramp{};
        ramp.angle = any();
        for (uint32_t& c : ramp.corners) {
            c = word(random);
        }
        ramp.shineWidth = any();
        ramp.shineColour = word(random);
        ramp.shineAngle = any();
        ramp.shinePosition = any();
        ClassicRecord classic{};
        classic.radial = trial % 2;
        classic.colour1 = word(random);
        classic.colour2 = word(random);
        classic.start = any();
        classic.end = any();
        classic.angle = any();
        classic.repeats = trial % 3 == 0 ? word(random) : trial % 5;
        classic.shineWidth = any();
        classic.shineColour = word(random);
        classic.shineAngle = any();
        classic.shinePosition = any();
        const TextureRecord texture{Opaque, 0, word(random) % 12, uint8_t(trial & 1),
                                    uint8_t(trial >> 1 & 1), {}};
        const TextureStyle style{0, 0, any(), any(), any()};
        const double g[7] = {any(), any(), any(), any(), any(), any(), any()};

        GuardedImage a(5, 4, -6 * 4), b(5, 4, 6 * 4), c(5, 4, 5 * 4);
        FillFourCornerGradient(a.Block(), &ramp);
        RenderClassicGradient(b.Block(), g[0], g[1], g[2], g[3], g[4], g[5], g[6], &classic,
                              &texture);
        RenderClassicGradientSampled(c.Block(), g[0], g[1], g[2], g[3], g[4], g[5], g[6], &ramp,
                                     Opaque, &style, 0);
        ASSERT_TRUE(a.GuardsIntact()) << trial;
        ASSERT_TRUE(b.GuardsIntact()) << trial;
        ASSERT_TRUE(c.GuardsIntact()) << trial;
    }
}

} // namespace
