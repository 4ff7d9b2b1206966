// Private header of surface/: the four-corner gradient fill with a shine band.
#pragma once

#include <cstdint>

#include "surface/image_view.h"
#include "titlerender.h"

namespace tr {

// Fills `image` with the four-corner gradient of `parameters` (bytes 0-15
// are not read) and returns the number of rows written, image.height.
// The corner colours sit at (0, 0), (W, 0), (W, H) and (0, H); each pixel
// (x, y) mixes them with weights (1 - d / diagonal)^4 of its distances d to
// the corners, the power evaluated as the square of the square. All
// arithmetic is double precision. A shine width that is not positive (or
// NaN) disables the shine; a pixel exactly on the shine's centre line
// measures distance 0/0 and so gets no shine.
//
// FillFourCornerGradientImage is the fast path (row tables, row pairs);
// FillFourCornerGradientPlain computes every pixel from the formula and is
// kept as the reference the fast path must match bit for bit.
uint32_t FillFourCornerGradientImage(const ImageView& image,
                                     const FourCornerGradientParameters& parameters);
uint32_t FillFourCornerGradientPlain(const ImageView& image,
                                     const FourCornerGradientParameters& parameters);

} // namespace tr
