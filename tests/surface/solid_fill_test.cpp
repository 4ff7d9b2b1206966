// Solid fill: every pixel and nothing else, for every alignment of the row
// start, every tail length of the vector loop and strides that are negative
// or not a whole pixel.
#include "surface/solid_fill.h"

#include <gtest/gtest.h>

#include "guarded_image.h"
#include "titlerender.h"

namespace {

TEST(SolidFill, FillsEveryWidthAlignmentAndStride) {
    constexpr uint32_t kColour = 0x80123456u;
    for (int32_t width = 1; width <= 40; ++width) {
        for (int32_t guard = 33; guard < 37; ++guard) { // row start shifted by 0-3 pixels
            for (int32_t stride : {width * 4, width * 4 + 3, (width + 3) * 4, -(width + 1) * 4}) {
                tr_test::GuardedImage image(width, 3, stride, guard);
                FillSolid(image.Block(), kColour);
                ASSERT_TRUE(image.Holds([](int32_t, int32_t) { return kColour; })) << width << " " << stride;
            }
        }
    }
}

} // namespace
