// Test helper of tests/surface/: an image block inside a larger buffer filled
// with a sentinel, so a test can prove that nothing was written outside it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "titlerender.h"

namespace tr_test {

inline constexpr uint32_t kSentinel = 0xA5C3E1F7u;

class GuardedImage {
public:
    // Rows are strideBytes / 4 pixels apart (truncated toward zero).
    GuardedImage(int32_t width, int32_t height, int32_t strideBytes, int32_t guard = 37)
        : width_(width), height_(height), pitch_(strideBytes / 4) {
        const ptrdiff_t span = height > 0 ? std::abs(pitch_) * (height - 1) + width : 0;
        buffer_.assign(static_cast<size_t>(span + 2 * guard), kSentinel);
        origin_ = guard + (pitch_ < 0 && height > 0 ? -pitch_ * (height - 1) : 0);
        block_ = ImageBlock{buffer_.data() + origin_, width, height, strideBytes};
    }

    ImageBlock* Block() { return &block_; }
    uint32_t& At(int32_t x, int32_t y) { return buffer_[Index(x, y)]; }
    const std::vector<uint32_t>& Buffer() const { return buffer_; }

    bool GuardsIntact() const {
        std::vector<uint32_t> copy = buffer_;
        for (int32_t y = 0; y < height_; ++y) {
            for (int32_t x = 0; x < width_; ++x) copy[Index(x, y)] = kSentinel;
        }
        return std::count(copy.begin(), copy.end(), kSentinel) == static_cast<ptrdiff_t>(copy.size());
    }
    bool Untouched() const {
        return std::count(buffer_.begin(), buffer_.end(), kSentinel) == static_cast<ptrdiff_t>(buffer_.size());
    }

    // Every pixel equals expected(x, y) and the guards are intact.
    template <class Expected>
    ::testing::AssertionResult Holds(Expected expected) {
        for (int32_t y = 0; y < height_; ++y) {
            for (int32_t x = 0; x < width_; ++x) {
                if (At(x, y) != expected(x, y)) {
                    return ::testing::AssertionFailure() << std::hex << At(x, y) << " != " << expected(x, y)
                                                         << std::dec << " at " << x << "," << y;
                }
            }
        }
        if (!GuardsIntact()) return ::testing::AssertionFailure() << "written outside the image";
        return ::testing::AssertionSuccess();
    }

private:
    size_t Index(int32_t x, int32_t y) const {
        return static_cast<size_t>(origin_ + static_cast<ptrdiff_t>(y) * pitch_ + x);
    }

    int32_t width_, height_;
    ptrdiff_t pitch_, origin_ = 0;
    std::vector<uint32_t> buffer_;
    ImageBlock block_{};
};

} // namespace tr_test
