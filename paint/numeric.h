// paint/numeric.h — saturating conversions of host doubles to integers.
//
// Doubles become integers by truncation toward zero (or by floor where a
// caller asks for it). Host values can be NaN or far outside the integer
// range, where a plain cast is undefined; these helpers saturate instead
// (NaN gives 0).
#pragma once

#include <cmath>
#include <cstdint>

#include "raster/fixed_point.h"

namespace tr {

inline int32_t TruncateToInt32(double v) { return SaturatingTrunc<int32_t>(v); }

// floor(v) as an integer, saturating like TruncateToInt32.
inline int32_t FloorToInt32(double v) { return TruncateToInt32(std::floor(v)); }

}  // namespace tr
