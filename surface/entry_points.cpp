// surface/entry_points.cpp — the exported surface, character, painter, pool,
// message and script entry points.
//
// Each is a thin shim: check the arguments, record the call into an attached
// script, stop on a record-only surface, carry the call out. A null surface
// makes every call do nothing. FinishCharacter holds the render lock from
// before recording to its return.
#include <cstring>

#include "memory/coverage_recycler.h"
#include "memory/pool_registry.h"
#include "paint/painter.h"
#include "surface/character_context.h"
#include "surface/character_pass.h"
#include "surface/entry_guard.h"
#include "surface/message_slot.h"
#include "surface/render_lock.h"
#include "surface/script.h"
#include "surface/surface.h"
#include "surface/trace.h"
#include "titlerender.h"

namespace {

const char* BevelKindName(uint32_t kind) {
    switch (kind > 8 ? 8 : kind) {
        case 0: return "eFlatOut";
        case 2: return "eGlow   ";
        case 3: return "eFlatIn ";
        case 5: return "ePipe   ";
        default: return "error **";
    }
}

const TextureStyle kZeroStyle{};

}  // namespace

extern "C" {

Surface* CreateSurface(const SurfaceDescriptor* descriptor) {
    return tr::Guarded<Surface*>(nullptr, [&] { return tr::CreateSurfaceRecord(descriptor); });
}

void CloseSurface(Surface* surface) {
    if (!surface) return;
    tr::Guarded([&] { tr::CloseSurfaceRecord(surface); });
}

uint32_t AddOutlineFlags(Surface* surface, uint32_t bits) {
    if (surface && surface->character) surface->character->outlineFlags |= bits;
    return bits;
}

void SetFace(Surface* surface, FaceParameters* face) {
    if (!surface || !face) return;
    face->x = tr::SnapToSixteenth(face->x);
    face->y = tr::SnapToSixteenth(face->y);
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetFace(*face);
        if (surface->execute) tr::StoreFace(*surface, *face);
    });
}

void SetFragment(Surface* surface, const uint8_t* nibbleMap, int32_t kind, double width,
                 double angle, double distance) {
    if (!surface) return;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetFragment(nibbleMap, kind, width, angle, distance);
        if (surface->execute) tr::AddFragmentToCharacter(*surface, nibbleMap, kind, width, angle, distance);
    });
}

int32_t FinishCharacter(Surface* surface, int32_t mode, uint32_t options, uint32_t userValue1,
                        uint32_t userValue2) {
    if (!surface) return 0;
    vantor::threads::ScopedLock lock(tr::RenderLock(), "RenderLock");
    return tr::Guarded<int32_t>(0, [&] {
        if (surface->script) surface->script->RecordFinishCharacter(mode, options, userValue1, userValue2);
        if (!surface->execute) return 0;
        tr::Trace("  %p FinishCharacter  mode %08X options %X\n", static_cast<void*>(surface),
                  static_cast<unsigned>(mode), options);
        return tr::RenderCharacter(*surface, mode, options, userValue1, userValue2);
    });
}

void NewCharacterCallBack(Surface* surface, uintptr_t sourceA, uint32_t characterFlags,
                          uint32_t sourceC, GlyphOutlineCallback sourceD, uint32_t characterCode) {
    if (!surface) return;
    tr::Guarded([&] {
        if (surface->script) {
            surface->script->RecordNewCharacter(sourceA, characterFlags, sourceC, sourceD, characterCode);
        }
        if (surface->execute) {
            tr::StartNewCharacter(*surface, sourceA, characterFlags, sourceC, sourceD, characterCode);
        }
    });
}

void SetPainterOpacity(Surface* surface, double opacity) {
    if (surface && surface->painters) surface->painters->SetOpacity(opacity);
}

void SetCharacterShear(Surface* surface, double shearX, double shearY) {
    if (!surface) return;
    surface->shearX = shearX;
    surface->shearY = shearY;
}

void SetNullColor(Surface* surface, int32_t slot) {
    if (!surface) return;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetNullColor(slot);
        if (!surface->execute) return;
        if (surface->painters) surface->painters->SetNullColor(slot);
        tr::Trace("     %p  %2X SetNullColor \n", static_cast<void*>(surface), static_cast<unsigned>(slot));
    });
}

void SetColor(Surface* surface, int32_t slot, uint32_t colour) {
    if (!surface) return;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetColor(slot, colour);
        if (!surface->execute) return;
        if (surface->painters) surface->painters->SetColor(slot, colour);
        tr::Trace("     %p  %2X SetColor  \n", static_cast<void*>(surface), static_cast<unsigned>(slot));
    });
}

uint32_t FlushRazterizerRecyclerMemory(void) {
    return tr::Guarded<uint32_t>(0, [] { return tr::PurgeRecycler(); });
}

void SetSoftShadowColor(Surface* surface, int32_t knockOut, double softness, uint32_t colour,
                        double shiftX, double shiftY, double extra) {
    if (!surface) return;
    tr::Guarded([&] {
        if (surface->script) {
            surface->script->RecordSetSoftShadow(knockOut, softness, colour, shiftX, shiftY, extra);
        }
        if (surface->execute) {
            tr::InstallSoftShadow(*surface, knockOut, softness, colour, shiftX, shiftY, extra);
        }
    });
}

void SetRectangleForPainter(Surface* surface, int32_t slot, double centreX, double centreY,
                            double halfWidth, double halfHeight, double angle) {
    if (!surface) return;
    const double values[5] = {centreX, centreY, halfWidth, halfHeight, angle};
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetRectangle(slot, values);
        if (surface->execute && surface->painters) {
            surface->painters->SetRectangle(slot, {centreX, centreY, halfWidth, halfHeight, angle});
        }
    });
}

void SetClassicPainter(Surface* surface, int32_t slot, const ClassicRecord* classic,
                       const TextureRecord* texture, const TextureStyle* style) {
    if (!surface) return;
    const TextureStyle& styleBlock = style ? *style : kZeroStyle;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetClassicPainter(slot, classic, texture, styleBlock);
        // The classic painter is not part of the library yet: the slot keeps
        // what it holds.
    });
}

void SetRamp(Surface* surface, int32_t slot, const RampRecord* ramp, TextureCallback callback,
             const TextureStyle* style, const ImageReference* userValue) {
    if (!surface || !ramp) return;
    const TextureStyle& styleBlock = style ? *style : kZeroStyle;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetRamp(slot, *ramp, callback, styleBlock, userValue);
        // The ramp painter is not part of the library yet: the slot keeps
        // what it holds.
    });
}

void SetBevel(Surface* surface, int32_t slot, const BevelRecord* bevel, TextureCallback callback,
              const TextureStyle* style, const ImageReference* userValue) {
    if (!surface || !bevel) return;
    const TextureStyle& styleBlock = style ? *style : kZeroStyle;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetBevel(slot, *bevel, callback, styleBlock, userValue);
        if (!surface->execute) return;
        const bool wide = surface->character && surface->character->compositor.wideOutlines;
        const double width = wide ? bevel->size * CharacterContext::kWideOutlineFactor : bevel->size;
        SetFragment(surface, nullptr, 2, width, 0.0, 0.0);
        // The bevel painter is not part of the library yet: the slot keeps
        // what it holds.
        tr::Trace("     %p  %2X SetBevel \n", static_cast<void*>(surface), static_cast<unsigned>(slot));
        tr::Trace("          %s  %08X %08X  Balance %6.2f Size %6.2f\n", BevelKindName(bevel->kind),
                  bevel->lightColour, bevel->darkColour, bevel->balance, bevel->size);
    });
}

void SetStackPainter(Surface* surface, int32_t slot, uint8_t joinsNeighbours) {
    if (!surface) return;
    tr::Guarded([&] {
        if (surface->script) surface->script->RecordSetNullColor(slot);
        if (!surface->execute) return;
        if (surface->painters) surface->painters->SetStackPainter(slot, joinsNeighbours);
        tr::Trace("     %p  %2X SetNullColor \n", static_cast<void*>(surface), static_cast<unsigned>(slot));
    });
}

void AddToStackPainter(Surface* surface, int32_t slot, CShaderMixer* mixer) {
    if (!surface || !surface->painters || !mixer) return;
    surface->painters->AddMixerToSlot(slot, mixer);
}

void SetStackLayer(Surface* surface, int32_t slot, int32_t layer, const LayerDescriptor* descriptor) {
    if (!surface || !surface->painters || !descriptor) return;
    surface->painters->SetLayerDescriptorOfSlot(slot, layer, *descriptor);
}

void InvalidatePooledCharacters(uint32_t keyA, uint32_t keyB) {
    tr::Guarded([&] { tr::InvalidatePooledRecords(keyA, keyB); });
}

void SetPoolBudgets(int32_t shapeMiB, int32_t shadowMiB, int32_t painterMiB) {
    tr::SetPoolBudgetsMiB(shapeMiB, shadowMiB, painterMiB);
}

uint8_t* GetSurfaceHostBytes(Surface* surface) { return surface ? surface->hostBytes : nullptr; }

const char* TakeLastMessage(void) { return tr::TakeLastMessage(); }

}  // extern "C"
