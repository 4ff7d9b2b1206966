// Private header of surface/: the four-corner gradient in a rotated box with
// texture sampling and shine.
#pragma once

#include <cstdint>

#include "surface/gradient_frame.h"
#include "surface/image_view.h"
#include "titlerender.h"

namespace tr {

// Renders the four-corner gradient of `parameters` (corners at (0, 0),
// (2w, 0), (2w, 2h), (0, 2h) of the box, rotated by placement.angle plus
// parameters.angle) into every pixel of `image`; with a non-null callback
// the texture is mixed in under `style` (double precision), then the shine
// is applied. The gradient and shine run in single precision; the weighted
// corner sums stay unrounded floats until the final truncating pack, and
// the texture step's double results are rounded to float on the way out.
void RenderSampledGradientImage(const ImageView& image, const GradientPlacement& placement,
                                const SampledGradientParameters& parameters,
                                TextureCallback callback, const TextureStyle& style,
                                uintptr_t userValue);

} // namespace tr
