// PNG writer: what libpng reads back is the block's pixels, in RGBA order,
// straight alpha, whatever the stride.
#include "tools/png/png_writer.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Decodes a PNG into RGBA bytes (PNG component order), width and height.
bool DecodeRgba(const std::vector<uint8_t>& png, std::vector<uint8_t>& rgba, uint32_t& width,
                uint32_t& height) {
    png_image info;
    std::memset(&info, 0, sizeof info);
    info.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&info, png.data(), png.size())) {
        return false;
    }
    info.format = PNG_FORMAT_RGBA;
    rgba.resize(PNG_IMAGE_SIZE(info));
    width = info.width;
    height = info.height;
    return png_image_finish_read(&info, nullptr, rgba.data(), 0, nullptr) != 0;
}

std::vector<uint32_t> Pattern(int32_t width, int32_t height) {
    std::vector<uint32_t> pixels(size_t(width) * height);
    for (size_t i = 0; i < pixels.size(); ++i) {
        // Alpha values 0..255 with colours that premultiplying would change.
        pixels[i] = static_cast<uint32_t>(i * 0x01030507u) | (static_cast<uint32_t>(i % 256) << 24);
    }
    return pixels;
}

void ExpectRgbaOf(const std::vector<uint8_t>& rgba, const std::vector<uint32_t>& bgra) {
    ASSERT_EQ(rgba.size(), bgra.size() * 4);
    for (size_t i = 0; i < bgra.size(); ++i) {
        const uint32_t p = bgra[i];
        const uint32_t got = uint32_t{rgba[4 * i]} << 16 | uint32_t{rgba[4 * i + 1]} << 8 |
                             uint32_t{rgba[4 * i + 2]} | uint32_t{rgba[4 * i + 3]} << 24;
        ASSERT_EQ(got, p) << "pixel " << i;
    }
}

TEST(PngWriter, RoundTripsStraightAlphaPixels) {
    const int32_t w = 17, h = 16;
    std::vector<uint32_t> pixels = Pattern(w, h);
    const ImageBlock block{pixels.data(), w, h, w * 4};
    std::vector<uint8_t> png;
    std::string error;
    ASSERT_TRUE(tr::EncodePng(block, png, error)) << error;
    std::vector<uint8_t> rgba;
    uint32_t width = 0, height = 0;
    ASSERT_TRUE(DecodeRgba(png, rgba, width, height));
    EXPECT_EQ(width, 17u);
    EXPECT_EQ(height, 16u);
    ExpectRgbaOf(rgba, pixels);
}

TEST(PngWriter, FollowsPaddedAndBottomUpStrides) {
    const int32_t w = 5, h = 4, pitch = 7;
    std::vector<uint32_t> buffer(size_t(pitch) * h, 0xDEADBEEFu);
    const std::vector<uint32_t> pixels = Pattern(w, h);
    for (int32_t y = 0; y < h; ++y) {
        std::memcpy(&buffer[size_t(y) * pitch], &pixels[size_t(y) * w], w * 4);
    }
    std::vector<uint8_t> png, rgba;
    std::string error;
    uint32_t width = 0, height = 0;
    const ImageBlock padded{buffer.data(), w, h, pitch * 4 + 2};
    ASSERT_TRUE(tr::EncodePng(padded, png, error)) << error;
    ASSERT_TRUE(DecodeRgba(png, rgba, width, height));
    ExpectRgbaOf(rgba, pixels);

    // The same memory read bottom-up: the last row is row 0.
    const ImageBlock bottomUp{buffer.data() + size_t(pitch) * (h - 1), w, h, -pitch * 4};
    ASSERT_TRUE(tr::EncodePng(bottomUp, png, error)) << error;
    ASSERT_TRUE(DecodeRgba(png, rgba, width, height));
    std::vector<uint32_t> flipped;
    for (int32_t y = h - 1; y >= 0; --y) {
        flipped.insert(flipped.end(), pixels.begin() + y * w, pixels.begin() + (y + 1) * w);
    }
    ExpectRgbaOf(rgba, flipped);
}

TEST(PngWriter, RejectsBlocksItCannotRead) {
    uint32_t pixel = 0;
    const ImageBlock cases[] = {{nullptr, 1, 1, 4}, {&pixel, 0, 1, 4}, {&pixel, 1, 0, 4},
                                {&pixel, 4, 2, 12}};
    for (const ImageBlock& block : cases) {
        std::vector<uint8_t> png(3);
        std::string error;
        EXPECT_FALSE(tr::EncodePng(block, png, error));
        EXPECT_TRUE(png.empty());
        EXPECT_FALSE(error.empty());
    }
}

TEST(PngWriter, WritesAFileAndReportsAnUnwritablePath) {
    uint32_t pixels[4] = {0xFF0000FFu, 0x8000FF00u, 0x40FF0000u, 0x00FFFFFFu};
    const ImageBlock block{pixels, 2, 2, 8};
    const std::string path = testing::TempDir() + "png_writer_test.png";
    std::string error;
    ASSERT_TRUE(tr::WritePngFile(path, block, error)) << error;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    ASSERT_NE(file, nullptr);
    unsigned char signature[8] = {};
    EXPECT_EQ(std::fread(signature, 1, 8, file), 8u);
    std::fclose(file);
    EXPECT_EQ(png_sig_cmp(signature, 0, 8), 0);
    std::remove(path.c_str());

    EXPECT_FALSE(tr::WritePngFile("/nonexistent-dir/x.png", block, error));
    EXPECT_NE(error.find("/nonexistent-dir/x.png"), std::string::npos);
}

} // namespace
