// surface/character_pass.h — the rendering pass behind FinishCharacter and
// the close-time composite of a surface's plans.
#pragma once

#include <cstdint>

struct Surface;

namespace tr {

// The pass of the current character (the render lock is held by the
// caller). Returns the plan index, 0 when no plan was made.
int32_t RenderCharacter(Surface& surface, int32_t mode, uint32_t options, uint32_t userValue1,
                        uint32_t userValue2);
// Composites every plan of an executing surface into its pixels.
void CompositePlans(Surface& surface);
// Releases the outline fetched by the last FinishCharacter, if any.
void ReleaseCharacterOutline(Surface& surface);

}  // namespace tr
