// Validation of host image blocks: which blocks may be drawn, and how the
// row pitch follows the byte stride.
#include "surface/image_view.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using tr::ImageStatus;

TEST(ImageView, ClassifiesBlocks) {
    uint32_t pixel = 0;
    struct Case {
        const char* name;
        uint32_t* pixels;
        int32_t width;
        int32_t height;
        int32_t stride;
        ImageStatus expected;
    };
    const Case cases[] = {
        {"plain", &pixel, 3, 2, 12, ImageStatus::kDrawable},
        {"padded rows", &pixel, 3, 2, 20, ImageStatus::kDrawable},
        {"bottom-up", &pixel, 3, 2, -12, ImageStatus::kDrawable},
        {"one row needs no stride", &pixel, 3, 1, 0, ImageStatus::kDrawable},
        {"width 0", &pixel, 0, 2, 12, ImageStatus::kEmpty},
        {"negative width", &pixel, -1, 2, 12, ImageStatus::kEmpty},
        {"height 0", &pixel, 3, 0, 12, ImageStatus::kEmpty},
        {"empty without pixels", nullptr, 0, 0, 0, ImageStatus::kEmpty},
        {"no pixels", nullptr, 3, 2, 12, ImageStatus::kNoPixels},
        {"stride one byte short", &pixel, 3, 2, 11, ImageStatus::kOverlappingRows},
        {"negative stride short", &pixel, 3, 2, -11, ImageStatus::kOverlappingRows},
        {"zero stride", &pixel, 3, 2, 0, ImageStatus::kOverlappingRows},
        {"most negative stride", &pixel, 3, 2, INT32_MIN, ImageStatus::kDrawable},
        {"widest row", &pixel, INT32_MAX, 2, INT32_MAX, ImageStatus::kOverlappingRows},
    };
    for (const Case& c : cases) {
        const ImageBlock block{c.pixels, c.width, c.height, c.stride};
        EXPECT_EQ(tr::CheckImage(&block), c.expected) << c.name;
        EXPECT_EQ(tr::MakeImageView(&block).has_value(), c.expected == ImageStatus::kDrawable)
            << c.name;
    }
    EXPECT_EQ(tr::CheckImage(nullptr), ImageStatus::kNoBlock);
}

TEST(ImageView, PitchTruncatesTowardZero) {
    uint32_t pixels[64] = {};
    const struct {
        int32_t stride;
        ptrdiff_t pitch;
    } cases[] = {{16, 4}, {19, 4}, {-16, -4}, {-19, -4}};
    for (const auto& c : cases) {
        const ImageBlock block{pixels + 32, 4, 3, c.stride};
        const auto view = tr::MakeImageView(&block);
        ASSERT_TRUE(view.has_value()) << c.stride;
        EXPECT_EQ(view->pitch, c.pitch) << c.stride;
        EXPECT_EQ(view->Row(2), pixels + 32 + 2 * c.pitch) << c.stride;
    }
}

} // namespace
