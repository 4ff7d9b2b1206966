// surface/character_pass.cpp — the character rendering pass.
//
// Order of the pass: default null colours in empty slots 0-15, mode bit 31
// from options bit 0, wide outlines from the character flags, then the
// outline load, face set-up and measuring, fragment drawing into a coverage
// buffer and the plan. The outline builder and the coverage renderer are not
// part of the library yet, so today every character ends without a plan:
// its painter set is discarded exactly as for a character without outline.
#include "surface/character_pass.h"

#include "paint/face.h"
#include "paint/painter.h"
#include "surface/character_context.h"
#include "surface/surface.h"

namespace tr {

namespace {

constexpr uint32_t kDrawFirstBit = 0x80000000u;
constexpr uint32_t kWideOutlineFlag = 0x400u;

// A character that produced no plan: its painter set is destroyed, and
// painter calls must not reach it before the next character.
void DiscardPainters(Surface& surface, CharacterContext& context) {
    delete context.face->DetachPainter();
    surface.painters = nullptr;
}

}  // namespace

int32_t RenderCharacter(Surface& surface, int32_t mode, uint32_t options, uint32_t, uint32_t) {
    CharacterContext* context = surface.character;
    if (!context) return 0;
    if (CPainter* painter = context->face->GetPainter()) painter->FillEmptySlotsWithNullColors();
    uint32_t modeBits = static_cast<uint32_t>(mode);
    if (options & 1u) modeBits |= kDrawFirstBit;
    (void)modeBits;
    if (surface.characterFlags & kWideOutlineFlag) context->compositor.wideOutlines = 1;
    DiscardPainters(surface, *context);
    return 0;
}

void CompositePlans(Surface&) {
    // No plan carries coverage until characters are rendered.
}

void ReleaseCharacterOutline(Surface& surface) { surface.outline = nullptr; }

}  // namespace tr
