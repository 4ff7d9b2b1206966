// Private header of surface/: fills an image with one colour.
#pragma once

#include <cstdint>

#include "surface/image_view.h"

namespace tr {

// Every pixel of every row of `image` becomes `colour`.
void FillSolidImage(const ImageView& image, uint32_t colour);

} // namespace tr
