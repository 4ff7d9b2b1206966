// raster/fixed_point.h — private to raster/: the scan converter's number formats.
//
// Screen space is measured in sub-samples (4 x 4 per output pixel). The edge
// walk and the band interpolators use signed fixed point with 11 fraction
// bits ("Fx"); tiles group 4 x 4 sub-samples ("Sub"). Every double-to-integer
// conversion in the rasterizer goes through SaturatingTrunc, so geometry far
// outside the map (or NaN) never reaches an undefined cast.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace tr {

// 11-bit fixed point: 2048 units per sub-sample.
inline constexpr int kFxShift = 11;
inline constexpr int64_t kFxOne = int64_t{1} << kFxShift;
inline constexpr double kFxScale = 2048.0;

// Sub-samples per pixel along one axis and the nibble layout of a tile word.
inline constexpr int kSubShift = 2;
inline constexpr int32_t kSubPerPx = 1 << kSubShift;
inline constexpr int32_t kSubMask = kSubPerPx - 1;
inline constexpr int kNibbleBits = 4;
inline constexpr uint16_t kNibbleMask = 0xF;

// Shift of the nibble that holds sub-sample column x mod 4 (leftmost high).
constexpr int NibbleShift(int32_t xSubInTile) {
    return (kSubMask - xSubInTile) * kNibbleBits;
}

// trunc(v) clamped to [lo, hi]; NaN gives 0. Used wherever a double that
// may come from arbitrary geometry is turned into an integer.
template <class Int>
Int SaturatingTrunc(double v, Int lo = std::numeric_limits<Int>::min(),
                    Int hi = std::numeric_limits<Int>::max()) {
    if (std::isnan(v)) return 0;
    if (v <= static_cast<double>(lo)) return lo;
    if (v >= static_cast<double>(hi)) return hi;
    return static_cast<Int>(v);  // in range: truncates toward zero
}

// Floor and ceiling of a fixed-point value in whole sub-samples. C++20
// defines >> on negative values as arithmetic shift.
constexpr int64_t FxFloor(int64_t vFx) { return vFx >> kFxShift; }
constexpr int64_t FxCeil(int64_t vFx) { return -((-vFx) >> kFxShift); }

}  // namespace tr
