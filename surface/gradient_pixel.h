// Private header of surface/: channel unpacking and pixel packing shared by
// the gradient generators.
//
// Pixels are 32-bit words, c0 (blue) in bits 0-7, c1 (green) 8-15, c2 (red)
// 16-23, alpha 24-31. The classic generators pack their float channels
// without limiting them: each is truncated toward zero to a 32-bit integer
// and shifted into place. For finite parameters every channel lies in
// 0..255; a value a float cannot convert (NaN, or outside the int32 range,
// only reachable with non-finite or absurd parameters) packs as 0 rather
// than being undefined.
#pragma once

#include <cstdint>

namespace tr {

inline constexpr int kChannels = 4; // c0, c1, c2, alpha
inline constexpr int kAlpha = 3;
inline constexpr int kChannelBits = 8;
inline constexpr uint32_t kChannelMask = 0xFF;

inline uint32_t ChannelOf(uint32_t colour, int channel) {
    return (colour >> (channel * kChannelBits)) & kChannelMask;
}

// Truncation toward zero with a defined result for unrepresentable values.
inline int32_t TruncToInt32(float v) {
    // -2^31 is a float; the next float above the int32 range is 2^31.
    if (!(v >= -2147483648.0f && v < 2147483648.0f)) {
        return 0;
    }
    return static_cast<int32_t>(v);
}

inline int32_t TruncToInt32(double v) {
    if (!(v > -2147483649.0 && v < 2147483648.0)) {
        return 0;
    }
    return static_cast<int32_t>(v);
}

// trunc(a) << 24 | trunc(c2) << 16 | trunc(c1) << 8 | trunc(c0), unlimited.
inline uint32_t PackTruncated(const float (&channel)[kChannels]) {
    uint32_t pixel = 0;
    for (int i = kChannels - 1; i >= 0; --i) {
        pixel = (pixel << kChannelBits) | static_cast<uint32_t>(TruncToInt32(channel[i]));
    }
    return pixel;
}

} // namespace tr
