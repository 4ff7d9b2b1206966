// Private header of surface/: where the classic gradient box stands in the
// image, shared by RenderClassicGradient and RenderClassicGradientSampled.
//
// The host places a box of half-size (w, h) centred at (x0, y0), rotated by
// an angle, and names an origin whose integer part is the texture's pixel
// (0, 0). Both generators work in single precision: every double the host
// passes is rounded to float once, here or in the generator's setup, and
// every later step is float arithmetic with the float maths functions.
// fx = x0 - trunc(originX) is the one exception: the difference is taken in
// double before rounding, so a large origin does not cost the box its
// fractional position.
#pragma once

#include "paint/numeric.h"

#include <cmath>
#include <cstdint>

namespace tr {

// The host's placement arguments, as passed to the entry points.
struct GradientPlacement {
    double x0 = 0;
    double y0 = 0;
    double halfWidth = 0;
    double halfHeight = 0;
    double angle = 0; // radians
    double originX = 0;
    double originY = 0;
};

struct GradientFrame {
    int32_t ix = 0; // trunc(originX)
    int32_t iy = 0;
    float fx = 0;   // x0 - ix
    float fy = 0;

    static GradientFrame Make(const GradientPlacement& placement) {
        GradientFrame frame;
        frame.ix = TruncateToInt32(placement.originX);
        frame.iy = TruncateToInt32(placement.originY);
        frame.fx = static_cast<float>(placement.x0 - frame.ix);
        frame.fy = static_cast<float>(placement.y0 - frame.iy);
        return frame;
    }

    // Texture coordinate of image pixel x (or row y); wraps like the host's
    // 32-bit integers instead of overflowing.
    static int32_t TextureCoordinate(int32_t pixel, int32_t origin) {
        return static_cast<int32_t>(static_cast<uint32_t>(pixel) + static_cast<uint32_t>(origin));
    }
};

} // namespace tr
