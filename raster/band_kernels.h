// raster/band_kernels.h — private to raster/: the depth-band kernels (mark,
// shaded and depth with near or far test, sweep).
//
// The band buffers hold one u16 depth (and, for shaded passes, one u8 light
// intensity) per sub-sample of the band's rows, row stride W, linear rows.
// Triangles use the coverage set-up and edge walk restricted to the band's
// rows; depth and intensity are planes through the three vertex values,
// evaluated at sub-sample centres in 11-bit fixed point:
//
//     value(p, r) = (S + (p - p0) * G) >> 11,
//     S = trunc(2048 * plane(p0 + 0.5, r + 0.5)),  G = trunc(2048 * dplane/dx)
//
// with p0 the span's first column, then clamped to the stored type's range.
// A stored depth of 0 means "never reached"; marking writes kMarkDepth.
#pragma once

#include <cstdint>

#include "raster/triangle_walk.h"

namespace tr {

inline constexpr uint16_t kMarkDepth = 64770;   // also the far end of a strip
inline constexpr uint16_t kNearDepth = 255;     // the contour end of a strip

enum class BandKernel { kMark, kShadedNear, kDepthNear, kShadedFar, kDepthFar, kSweep };

struct BandTarget {
    uint16_t* depth;      // bandRows x width
    uint8_t* intensity;   // bandRows x width, or null (depth-only pass)
    int32_t width;        // sub-samples
    int32_t rowTop;       // first map row held by the buffers
    int32_t rowBottom;    // one past the last
};

// Fills one triangle; tri.attr[0] holds the vertex depths, tri.attr[1] the
// vertex intensities (read by the shaded kernels only).
void FillBandTriangle(const BandTarget& target, BandKernel kernel, const ScreenTriangle& tri);

}  // namespace tr
