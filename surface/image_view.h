// Private header of surface/: a validated view of a host image block.
//
// The gradient generators take the host's 16-byte image block (pixels,
// width, height, stride in bytes). The entry points turn it into an
// `ImageView` once, at the boundary, so the kernels can assume a usable
// image: a non-null pixel address, width and height of at least 1, and
// rows that do not overlap. Rows are `pitch` pixels apart, where pitch is
// the byte stride divided by 4 with truncation toward zero; a negative
// stride walks upward from the first row.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "titlerender.h"

namespace tr {

inline constexpr int32_t kBytesPerPixel = 4;

struct ImageView {
    uint32_t* pixels = nullptr; // first pixel of row 0
    int32_t width = 0;          // >= 1
    int32_t height = 0;         // >= 1
    ptrdiff_t pitch = 0;        // pixels from one row to the next

    uint32_t* Row(int32_t y) const {
        assert(y >= 0 && y < height);
        return pixels + static_cast<ptrdiff_t>(y) * pitch;
    }
};

// Why an image block cannot be drawn. Every value but kDrawable means the
// generators write nothing.
enum class ImageStatus {
    kDrawable,
    kNoBlock,       // null block
    kEmpty,         // width < 1 or height < 1: nothing to draw
    kNoPixels,      // null pixel address with something to draw
    kOverlappingRows // more than one row and |stride| < 4 * width
};

[[nodiscard]] ImageStatus CheckImage(const ImageBlock* block);

// The view of a block, or nothing when CheckImage does not find it drawable.
[[nodiscard]] std::optional<ImageView> MakeImageView(const ImageBlock* block);

} // namespace tr
