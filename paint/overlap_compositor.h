// paint/overlap_compositor.h — compositing of a rectangle covered by several
// characters of one layer.
//
// Every one of the 48 footprint samples (paint/compositor.h) is owned by one
// character: the one with the highest applicator number there, the first
// listed on equal numbers. A slot is joined when every listed character has
// a joins-neighbours applicator in it (bevels and stack painters that run
// across touching characters); a tie on a joined number goes to the tied
// character whose applicator reports the highest LayerValueAt at the pixel
// (the earlier listed one on equal values). If no tied character's value
// exceeds 0 the sample goes to no character — except in the two-character
// routine, which then gives it to the first listed one. Each owner's
// present numbers are shaded once per pixel (numbers 2-15 in increasing
// order, characters in list order within a number) and the sums are blended
// as for one character, with the layer's blend mode and no fast path.
//
// Routines exist per count class: 2, 3, 4, 5, 6-7, 8-12, 13-18 and 19+ (at
// most 24 characters; later ones are ignored). They share one core sized for
// the class. Characters are bound and prepared painters; the rectangle is in
// target pixels and is narrowed to the pixels every listed character can
// read a footprint for, and to the first character's clip area. The target
// pixels are those bound to the first listed character.
#pragma once

#include <cstdint>

#include "paint/compositor.h"

class CPainter;

constexpr int32_t kMaxOverlapCharacters = 24;

void CompositeTwoCharacters(CPainter* const* painters, const CompositeRect& rect,
                            int32_t blendMode);
void CompositeThreeCharacters(CPainter* const* painters, const CompositeRect& rect,
                              int32_t blendMode);
void CompositeFourCharacters(CPainter* const* painters, const CompositeRect& rect,
                             int32_t blendMode);
void CompositeFiveCharacters(CPainter* const* painters, const CompositeRect& rect,
                             int32_t blendMode);
// count 6 or 7
void CompositeUpToSevenCharacters(CPainter* const* painters, int32_t count,
                                  const CompositeRect& rect, int32_t blendMode);
// count 8 to 12
void CompositeUpToTwelveCharacters(CPainter* const* painters, int32_t count,
                                   const CompositeRect& rect, int32_t blendMode);
// count 13 to 18
void CompositeUpToEighteenCharacters(CPainter* const* painters, int32_t count,
                                     const CompositeRect& rect, int32_t blendMode);
// count 19 or more; only the first 24 are composited
void CompositeManyCharacters(CPainter* const* painters, int32_t count, const CompositeRect& rect,
                             int32_t blendMode);

// Selects the routine by count: 0 does nothing, 1 is CompositeCharacter
// with that character's own blend mode, 2 and more use layerBlendMode (the
// blend mode of the layer's last character).
void CompositeRegion(CPainter* const* painters, int32_t count, const CompositeRect& rect,
                     int32_t layerBlendMode);
