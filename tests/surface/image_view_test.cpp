// Validation of host image blocks, byte sizes beyond 32 bits included.
#include "surface/image_view.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using tr::ImageStatus;

TEST(ImageView, ClassifiesBlocks) {
    uint32_t pixel = 0;
    const struct {
        uint32_t* pixels;
        int32_t width, height, stride;
        ImageStatus expected;
    } cases[] = {
        {&pixel, 3, 2, 20, ImageStatus::kDrawable},
        {&pixel, 3, 0, 12, ImageStatus::kEmpty},
        {nullptr, 0, 0, 0, ImageStatus::kEmpty},
        {nullptr, 3, 2, 12, ImageStatus::kNoPixels},
        {&pixel, 3, 2, 11, ImageStatus::kOverlappingRows},
        {&pixel, 3, 2, INT32_MIN, ImageStatus::kDrawable},
        {&pixel, INT32_MAX, 2, INT32_MAX, ImageStatus::kOverlappingRows},
    };
    for (const auto& c : cases) {
        const ImageBlock block{c.pixels, c.width, c.height, c.stride};
        EXPECT_EQ(tr::CheckImage(&block), c.expected) << c.width << "x" << c.height << " " << c.stride;
        EXPECT_EQ(tr::MakeImageView(&block).has_value(), c.expected == ImageStatus::kDrawable);
    }
    EXPECT_EQ(tr::CheckImage(nullptr), ImageStatus::kNoBlock);
}

} // namespace
