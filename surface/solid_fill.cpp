// Solid fill: one std::fill_n per row, which the compiler turns into wide
// stores, so the fill runs at memory speed like memset.
#include "surface/solid_fill.h"

#include <algorithm>

namespace tr {

void FillSolidImage(const ImageView& image, uint32_t colour) {
    for (int32_t y = 0; y < image.height; ++y) {
        std::fill_n(image.Row(y), image.width, colour);
    }
}

} // namespace tr
