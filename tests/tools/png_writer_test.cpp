// PNG writer: what libpng reads back is the block's pixels in RGBA order,
// straight alpha, whatever the stride.
#include "tools/png/png_writer.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// The PNG decoded by libpng into BGRA words (the bytes of a little-endian
// word, straight alpha) with its size in front, or nothing.
std::vector<uint32_t> Decode(const std::vector<uint8_t>& png) {
    png_image info;
    std::memset(&info, 0, sizeof info);
    info.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&info, png.data(), png.size())) return {};
    info.format = PNG_FORMAT_BGRA;
    std::vector<uint32_t> out(2 + std::size_t{info.width} * info.height);
    out[0] = info.width, out[1] = info.height;
    if (!png_image_finish_read(&info, nullptr, out.data() + 2, 0, nullptr)) return {};
    return out;
}

TEST(PngWriter, RoundTripsStraightAlphaThroughPaddedAndBottomUpStrides) {
    const int32_t w = 17, h = 16, pitch = 19;  // 272 pixels: every alpha value once
    std::vector<uint32_t> pixels(w * h), buffer(pitch * h, 0xDEADBEEFu), flipped;
    for (std::size_t i = 0; i < pixels.size(); ++i)  // colours that premultiplying would change
        pixels[i] = static_cast<uint32_t>(i * 0x01030507u) | static_cast<uint32_t>(i % 256) << 24;
    for (int32_t y = 0; y < h; ++y) std::memcpy(&buffer[y * pitch], &pixels[y * w], w * 4);
    for (int32_t y = h - 1; y >= 0; --y)
        flipped.insert(flipped.end(), pixels.begin() + y * w, pixels.begin() + (y + 1) * w);
    const std::pair<ImageBlock, const std::vector<uint32_t>*> cases[] = {
        {{buffer.data(), w, h, pitch * 4 + 2}, &pixels},  // padded, not a pixel multiple
        {{buffer.data() + pitch * (h - 1), w, h, -pitch * 4}, &flipped}};  // bottom-up
    for (const auto& [block, expected] : cases) {
        std::vector<uint8_t> png;
        std::string error;
        ASSERT_TRUE(tr::EncodePng(block, png, error)) << error;
        std::vector<uint32_t> want = {17, 16};
        want.insert(want.end(), expected->begin(), expected->end());
        EXPECT_EQ(Decode(png), want);
    }
}

TEST(PngWriter, RefusalsLeaveNoOutputAndSayWhy) {
    uint32_t pixel = 0;
    const ImageBlock cases[] = {
        {nullptr, 1, 1, 4}, {&pixel, 0, 1, 4}, {&pixel, 1, 0, 4}, {&pixel, 4, 2, 12}};
    for (const ImageBlock& block : cases) {
        std::vector<uint8_t> png(3);
        std::string error;
        EXPECT_FALSE(tr::EncodePng(block, png, error));
        EXPECT_TRUE(png.empty() && !error.empty()) << error;
    }
    std::string error;
    EXPECT_FALSE(tr::WritePngFile("/nonexistent-dir/x.png", ImageBlock{&pixel, 1, 1, 4}, error));
    EXPECT_NE(error.find("/nonexistent-dir/x.png"), std::string::npos);
}

}  // namespace
