// PNG writer on libpng's simplified API. PNG_FORMAT_BGRA takes our pixel
// words as they lie in memory (blue, green, red, alpha bytes) and stores
// RGBA; 8-bit sRGB data in that API is straight, not premultiplied, which
// is what the library produces. The row stride is handed over in
// components, so a padded or bottom-up block needs no copy.
#include "tools/png/png_writer.h"

#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <cstddef>
#include <cstring>

namespace tr {
namespace {

constexpr int64_t kComponents = 4; // bytes per pixel, one per component

const char* CheckBlock(const ImageBlock& image) {
    if (image.pixels == nullptr) {
        return "image has no pixels";
    }
    if (image.width < 1 || image.height < 1) {
        return "image is empty";
    }
    const int64_t stride = image.stride / kComponents * kComponents;
    if (image.height > 1 && std::llabs(stride) < kComponents * image.width) {
        return "image rows overlap (stride smaller than a row)";
    }
    return nullptr;
}

} // namespace

bool EncodePng(const ImageBlock& image, std::vector<uint8_t>& png, std::string& error) {
    png.clear();
    if (const char* problem = CheckBlock(image)) {
        error = problem;
        return false;
    }
    png_image info;
    std::memset(&info, 0, sizeof info);
    info.version = PNG_IMAGE_VERSION;
    info.width = static_cast<png_uint_32>(image.width);
    info.height = static_cast<png_uint_32>(image.height);
    info.format = PNG_FORMAT_BGRA;
    const png_int_32 rowStride = image.height > 1 ? image.stride / kComponents * kComponents
                                                  : static_cast<png_int_32>(kComponents * image.width);

    // With a negative stride libpng wants the lowest address, the last row.
    const uint32_t* lowest =
        rowStride < 0 ? image.pixels + ptrdiff_t{image.height - 1} * (rowStride / kComponents)
                      : image.pixels;

    // The first call measures, the second writes.
    png_alloc_size_t size = 0;
    if (!png_image_write_to_memory(&info, nullptr, &size, 0, lowest, rowStride, nullptr)) {
        error = info.message;
        png_image_free(&info);
        return false;
    }
    png.resize(size);
    if (!png_image_write_to_memory(&info, png.data(), &size, 0, lowest, rowStride, nullptr)) {
        error = info.message;
        png_image_free(&info);
        png.clear();
        return false;
    }
    png.resize(size);
    return true;
}

bool WritePngFile(const std::string& path, const ImageBlock& image, std::string& error) {
    std::vector<uint8_t> png;
    if (!EncodePng(image, png, error)) {
        return false;
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        error = "cannot open " + path + " for writing";
        return false;
    }
    const bool written = std::fwrite(png.data(), 1, png.size(), file) == png.size();
    // fclose flushes, so its failure is a write failure too.
    if (std::fclose(file) != 0 || !written) {
        error = "cannot write " + path;
        return false;
    }
    return true;
}

} // namespace tr
