// Validation of host image blocks for the gradient generators.
//
// A block whose rows overlap (|stride| smaller than a row, with more than
// one row) does not describe a width x height image, so nothing is written
// to it: clamping the width instead would silently draw a different image.
// A single row needs no stride, so any stride is accepted for height 1.
#include "surface/image_view.h"

namespace tr {

ImageStatus CheckImage(const ImageBlock* block) {
    if (block == nullptr) {
        return ImageStatus::kNoBlock;
    }
    if (block->width < 1 || block->height < 1) {
        return ImageStatus::kEmpty;
    }
    if (block->pixels == nullptr) {
        return ImageStatus::kNoPixels;
    }
    // int64 keeps |INT32_MIN| and 4 * INT32_MAX exact.
    const int64_t rowBytes = int64_t{kBytesPerPixel} * block->width;
    const int64_t strideBytes = block->stride < 0 ? -int64_t{block->stride} : block->stride;
    if (block->height > 1 && strideBytes < rowBytes) {
        return ImageStatus::kOverlappingRows;
    }
    return ImageStatus::kDrawable;
}

std::optional<ImageView> MakeImageView(const ImageBlock* block) {
    if (CheckImage(block) != ImageStatus::kDrawable) {
        return std::nullopt;
    }
    ImageView view;
    view.pixels = block->pixels;
    view.width = block->width;
    view.height = block->height;
    view.pitch = block->stride / kBytesPerPixel; // C++ division truncates toward zero
    return view;
}

} // namespace tr
