// Solid fill through its entry point: every pixel, nothing else, for every
// alignment of the row start and every tail length of the vector loop.
#include "surface/solid_fill.h"

#include <gtest/gtest.h>

#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

constexpr uint32_t kColour = 0x80123456u;

bool AllPixelsAre(GuardedImage& image, uint32_t colour) {
    for (int32_t y = 0; y < image.Height(); ++y) {
        for (int32_t x = 0; x < image.Width(); ++x) {
            if (image.At(x, y) != colour) {
                return false;
            }
        }
    }
    return true;
}

TEST(SolidFill, FillsEveryWidthAndAlignment) {
    for (int32_t width = 1; width <= 40; ++width) {
        for (int32_t guard = 0; guard < 4; ++guard) { // shifts the row start by 0-3 pixels
            for (int32_t padding : {0, 1, 3}) {
                GuardedImage image(width, 3, (width + padding) * 4, 33 + guard);
                FillSolid(image.Block(), kColour);
                ASSERT_TRUE(AllPixelsAre(image, kColour)) << width << " " << guard << " " << padding;
                ASSERT_TRUE(image.GuardsIntact()) << width << " " << guard << " " << padding;
            }
        }
    }
}

TEST(SolidFill, NegativeStrideStepsUpward) {
    GuardedImage image(5, 4, -7 * 4);
    FillSolid(image.Block(), kColour);
    EXPECT_TRUE(AllPixelsAre(image, kColour));
    EXPECT_TRUE(image.GuardsIntact());
    // Row 3 lies 21 pixels before row 0 in memory.
    EXPECT_EQ(&image.At(0, 3) + 21, &image.At(0, 0));
}

TEST(SolidFill, StrideThatIsNotAWholePixelTruncates) {
    GuardedImage image(5, 4, 5 * 4 + 3); // rows 5 pixels apart
    FillSolid(image.Block(), kColour);
    EXPECT_TRUE(AllPixelsAre(image, kColour));
    EXPECT_TRUE(image.GuardsIntact());
}

TEST(SolidFill, WritesNothingForBlocksThatCannotBeDrawn) {
    const struct {
        const char* name;
        int32_t width;
        int32_t height;
        int32_t stride;
    } cases[] = {{"width 0", 0, 4, 16}, {"negative width", -3, 4, 16},
                 {"height 0", 4, 0, 16}, {"negative height", 4, -2, 16},
                 {"overlapping rows", 4, 4, 12}, {"zero stride", 4, 4, 0}};
    for (const auto& c : cases) {
        GuardedImage image(4, 4, 16);
        ImageBlock block = *image.Block();
        block.width = c.width;
        block.height = c.height;
        block.stride = c.stride;
        FillSolid(&block, kColour);
        EXPECT_TRUE(image.Untouched()) << c.name;
    }
    ImageBlock noPixels{nullptr, 4, 4, 16};
    FillSolid(&noPixels, kColour); // must not crash
    FillSolid(nullptr, kColour);
}

} // namespace
