// Private header of surface/: the two-colour classic gradient generator.
#pragma once

#include <cstdint>

#include "surface/gradient_frame.h"
#include "surface/image_view.h"
#include "titlerender.h"

namespace tr {

// Repeat counts above this are treated as this: each pixel walks the bands
// one by one (2 * repeats steps at most), and bands this thin are already
// far below a pixel for any realistic box.
inline constexpr uint32_t kMaxClassicRepeats = 1024;

// Renders the linear or radial ramp of `parameters` in the box given by
// `placement` into every pixel of `image`, then the texture of `texture`
// (when it and its callback are non-null) and the shine. Single-precision
// arithmetic; channels are packed truncated and unlimited (gradient_pixel.h).
void RenderClassicGradientImage(const ImageView& image, const GradientPlacement& placement,
                                const ClassicGradientParameters& parameters,
                                const TextureRecord* texture);

} // namespace tr
