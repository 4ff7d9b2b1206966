// Test helper of tests/surface/: an image block inside a larger buffer filled
// with a sentinel, so a test can prove that a generator wrote nothing
// outside the pixels the block describes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "titlerender.h"

namespace tr_test {

inline constexpr uint32_t kSentinel = 0xA5C3E1F7u;

class GuardedImage {
public:
    // strideBytes may be negative or not a multiple of 4; rows are
    // strideBytes / 4 pixels apart (truncated toward zero).
    GuardedImage(int32_t width, int32_t height, int32_t strideBytes, int32_t guard = 37)
        : width_(width), height_(height), pitch_(strideBytes / 4) {
        const ptrdiff_t w = width > 0 ? width : 0;
        const ptrdiff_t h = height > 0 ? height : 0;
        const ptrdiff_t span = h > 0 ? std::abs(pitch_) * (h - 1) + w : 0;
        buffer_.assign(static_cast<size_t>(span + 2 * guard), kSentinel);
        origin_ = guard + (pitch_ < 0 && h > 0 ? -pitch_ * (h - 1) : 0);
        block_ = ImageBlock{buffer_.data() + origin_, width, height, strideBytes};
    }

    ImageBlock* Block() { return &block_; }
    int32_t Width() const { return width_; }
    int32_t Height() const { return height_; }

    uint32_t& At(int32_t x, int32_t y) { return buffer_[Index(x, y)]; }

    // True when every element that is not a pixel of the image still holds
    // the sentinel.
    bool GuardsIntact() const {
        std::vector<bool> inside(buffer_.size(), false);
        for (int32_t y = 0; y < height_; ++y) {
            for (int32_t x = 0; x < width_; ++x) {
                inside[Index(x, y)] = true;
            }
        }
        for (size_t i = 0; i < buffer_.size(); ++i) {
            if (!inside[i] && buffer_[i] != kSentinel) {
                return false;
            }
        }
        return true;
    }

    // True when no element at all has changed.
    bool Untouched() const {
        for (uint32_t v : buffer_) {
            if (v != kSentinel) {
                return false;
            }
        }
        return true;
    }

    const std::vector<uint32_t>& Buffer() const { return buffer_; }

private:
    size_t Index(int32_t x, int32_t y) const {
        return static_cast<size_t>(origin_ + static_cast<ptrdiff_t>(y) * pitch_ + x);
    }

    int32_t width_;
    int32_t height_;
    ptrdiff_t pitch_;
    ptrdiff_t origin_ = 0;
    std::vector<uint32_t> buffer_;
    ImageBlock block_{};
};

} // namespace tr_test
