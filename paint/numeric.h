// paint/numeric.h — saturating conversions of host doubles to integers.
//
// Doubles become integers by truncation toward zero. Host values can be
// NaN or far outside the integer range, where a plain cast is undefined;
// these helpers saturate instead (NaN gives 0).
#pragma once

#include <cmath>
#include <cstdint>

namespace tr {

inline int32_t TruncateToInt32(double v) {
    if (!(v == v)) return 0;
    if (v >= 2147483647.0) return INT32_MAX;
    if (v <= -2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(v);
}

}  // namespace tr
