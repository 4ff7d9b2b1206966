// surface/character_context.cpp — creation, options and fragment list.
#include "surface/character_context.h"

#include <new>

#include "paint/face.h"

CharacterContext* CharacterContext::Create() {
    auto* context = new (std::nothrow) CharacterContext();
    if (!context) return nullptr;
    context->face = new (std::nothrow) CFace(&context->compositor);
    if (!context->face || !context->face->GetPainter()) {
        Destroy(context);
        return nullptr;
    }
    return context;
}

void CharacterContext::Destroy(CharacterContext* context) {
    if (!context) return;
    delete context->face;
    context->face = nullptr;
    delete context;
}

void CharacterContext::ApplyCharacterOptions(uint32_t characterFlags) {
    if (characterFlags & 0x400u) compositor.wideOutlines = 1;
    if (characterFlags & 0x8000u) compositor.optionA = 0;
    if (characterFlags & 0x200u) compositor.optionB = 1;
}

void CharacterContext::AddFragment(const uint8_t* map, int32_t kind, double width, double angle,
                                   double distance) {
    fragments.emplace_back(map, kind, width, angle, distance);
    const bool outline = kind == 1 || kind == 4 || kind == 2 || kind == 5;
    if (compositor.wideOutlines && outline) {
        fragments.emplace_back(nullptr, kind, width * kWideOutlineFactor, angle, distance);
    }
}
