// paint/compositor.h — compositing of one character's coverage into the
// host's pixels.
//
// Each target pixel is decided by a footprint of 48 coverage sub-samples
// around it: the pixel's own four sub-columns from the lower half of the
// pixel above to the upper half of the pixel below (32 samples), plus
// sub-rows 1 and 3 of the pixel to the left and sub-rows 0 and 2 of the
// pixel to the right (8 each):
//
//              sub-col  0 1 2 3 | 0 1 2 3 | 0 1 2 3
//   pixel above, rows 2-3       | x x x x |
//                                | x x x x |
//   row 0                . . . . | x x x x | x x x x
//   row 1                x x x x | x x x x | . . . .
//   row 2                . . . . | x x x x | x x x x
//   row 3                x x x x | x x x x | . . . .
//   pixel below, rows 0-1       | x x x x |
//                                | x x x x |
//
// The footprint lies in eight 32-bit coverage words. When all eight are the
// uniform word of one applicator number the pixel takes the fast path (one
// ShadeAt, no counting); otherwise the samples are counted per number and
// every present slot is shaded once, in increasing number order. The blend
// (over or replace) is in paint/pixel_blend.h.
//
// Rectangles are in target pixels. The character's coverage pixel (0, 0)
// lies at floor(position) of its painter. Pixels whose footprint would leave
// the coverage buffer, or that lie outside the painter's clip size, are not
// touched: the plans composite never asks for them (its regions are the image
// boxes inset by 3 pixels and clipped to the surface), so this only guards
// against misuse.
#pragma once

#include <cstdint>

class CPainter;

struct CompositeRect {
    int32_t x = 0;  // half-open: x <= px < x + width
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
};

// Composites one character (bound and prepared, slots 0-15 filled) over the
// rectangle with the painter's own blend mode.
void CompositeCharacter(CPainter& painter, const CompositeRect& rect);

// The plain twin of CompositeCharacter: per-sample addressing, no shortcuts
// besides the ones the rule defines. Gives bit-identical pixels.
void CompositeCharacterReference(CPainter& painter, const CompositeRect& rect);
