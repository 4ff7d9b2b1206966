// Solid fill: every pixel and nothing else, for every alignment of the row
// start, every tail length of the vector loop and strides that are negative
// or not a whole pixel. Blocks that cannot be drawn are covered with the
// other generators in gradient_entry_points_test.cpp.
#include "surface/solid_fill.h"

#include <gtest/gtest.h>

#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

constexpr uint32_t kColour = 0x80123456u;

void ExpectFilled(int32_t width, int32_t height, int32_t strideBytes, int32_t guard) {
    GuardedImage image(width, height, strideBytes, guard);
    FillSolid(image.Block(), kColour);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            ASSERT_EQ(image.At(x, y), kColour) << width << " " << strideBytes << " " << guard;
        }
    }
    ASSERT_TRUE(image.GuardsIntact()) << width << " " << strideBytes << " " << guard;
}

TEST(SolidFill, FillsEveryWidthAlignmentAndStride) {
    for (int32_t width = 1; width <= 40; ++width) {
        for (int32_t guard = 33; guard < 37; ++guard) { // row start shifted by 0-3 pixels
            for (int32_t stride : {width * 4, width * 4 + 3, (width + 3) * 4, -(width + 1) * 4}) {
                ASSERT_NO_FATAL_FAILURE(ExpectFilled(width, 3, stride, guard));
            }
        }
    }
}

} // namespace
