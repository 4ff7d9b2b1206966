// The four generator entry points on blocks they cannot draw: nothing is
// written anywhere, nothing crashes, and the row count says so.
#include <gtest/gtest.h>

#include <functional>
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

} // namespace
