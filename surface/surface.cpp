// surface/surface.cpp — surface lifetime and the describing operations.
#include "surface/surface.h"

#include <cmath>
#include <new>

#include "memory/pool_registry.h"
#include "paint/face.h"
#include "paint/numeric.h"
#include "paint/painter.h"
#include "surface/character_context.h"
#include "surface/character_pass.h"
#include "surface/script.h"
#include "surface/trace.h"

namespace tr {

double SnapToSixteenth(double value) {
    return TruncateToInt32(value * 16.0 + 0.5) / 16.0;
}

double SoftShadowBlur(double softness, double size) {
    if (softness < 0.0) return 0.0;
    const double blur =
        (softness / 3.0) * (std::pow(size, 0.25) / 20.0 / 6.0 + std::pow(size, 0.5) / 20.0 / 3.0);
    return blur < 1.0 ? 1.0 : blur;
}

Surface* CreateSurfaceRecord(const SurfaceDescriptor* descriptor) {
    auto* surface = new (std::nothrow) Surface();
    if (!surface) return nullptr;
    if (descriptor) surface->descriptor = *descriptor;
    if (surface->descriptor.pixelRatio == 0.0) surface->descriptor.pixelRatio = kDefaultPixelRatio;
    Trace("\n%p Create Surface      (data* %p W %4d H %4d   Pixel Ratio %6.2f)\n",
          static_cast<void*>(surface), static_cast<void*>(surface->descriptor.image.pixels),
          surface->descriptor.image.width, surface->descriptor.image.height,
          surface->descriptor.pixelRatio);
    return surface;
}

namespace {

void DestroyCharacter(Surface& surface) {
    CharacterContext::Destroy(surface.character);
    surface.character = nullptr;
    surface.painters = nullptr;
}

}  // namespace

void CloseSurfaceRecord(Surface* surface) {
    if (surface->script) surface->script->Close();
    if (!surface->execute) {
        // Nothing is composited on a record-only surface; anything made
        // before the script was attached is still freed.
        ReleaseCharacterOutline(*surface);
        DestroyCharacter(*surface);
        delete surface;
        return;
    }
    CompositePlans(*surface);
    surface->plans.Release();
    ReleaseCharacterOutline(*surface);
    // A finished character's painter set belongs to its plan (already
    // released); the face destroys only a painter set it still owns.
    DestroyCharacter(*surface);
    ReleasePoolReferences(PoolKind::Shape, surface->shapeRefs);
    ReleasePoolReferences(PoolKind::Shadow, surface->shadowRefs);
    ReleasePoolReferences(PoolKind::Painter, surface->painterRefs);
    Trace("%p Close Surface  \n", static_cast<void*>(surface));
    delete surface;
}

void StartNewCharacter(Surface& surface, uintptr_t sourceA, uint32_t characterFlags,
                       uint32_t sourceC, GlyphOutlineCallback sourceD, uint32_t characterCode) {
    ReleaseCharacterOutline(surface);
    DestroyCharacter(surface);
    surface.character = CharacterContext::Create();
    surface.shearX = 0.0;
    surface.shearY = 0.0;
    if (surface.character) {
        surface.character->ApplyCharacterOptions(characterFlags);
        surface.painters = surface.character->face->GetPainter();
    }
    surface.sourceC = sourceC;
    surface.sourceA = sourceA;
    surface.characterCode = characterCode;
    surface.sourceD = sourceD;
    surface.characterFlags = characterFlags;
    Trace("  %p NewChCbk %3d '%c' \n", static_cast<void*>(&surface),
          static_cast<int>(characterCode), static_cast<int>(characterCode));
}

void StoreFace(Surface& surface, const FaceParameters& snapped) {
    surface.face = snapped;
    surface.faceX = snapped.x;
    surface.faceY = snapped.y;
    surface.face.x = snapped.x - std::floor(snapped.x);
    surface.face.y = snapped.y - std::floor(snapped.y);
    Trace("  %p SetFace  Sz %6.2f  H %6.3f  W %6.3f\n", static_cast<void*>(&surface),
          snapped.size, snapped.heightScale, snapped.widthScale);
}

bool AddFragmentToCharacter(Surface& surface, const uint8_t* map, int32_t kind, double width,
                            double angle, double distance) {
    if (!surface.character) return false;
    const std::optional<int32_t> finalKind = ApplyFragmentRules(kind, width, distance);
    if (!finalKind) return false;
    surface.character->AddFragment(map, *finalKind, width, angle, distance);
    Trace(map ? ".    %p (--) SetFragment %s %6.2f %6.2f %6.2f\n"
              : ".    %p (00) SetFragment %s %6.2f %6.2f %6.2f\n",
          static_cast<void*>(&surface), FragmentKindName(*finalKind), width, angle, distance);
    return true;
}

void InstallSoftShadow(Surface& surface, int32_t knockOut, double softness, uint32_t colour,
                       double shiftX, double shiftY, double extra) {
    if (surface.painters) {
        const double blur = SoftShadowBlur(softness, surface.face.size);
        // Shifts pass through single precision before their floor.
        const double floorX = std::floor(static_cast<double>(static_cast<float>(shiftX)));
        const float floorY = std::floor(static_cast<float>(shiftY));
        surface.painters->SetSoftShadow(static_cast<uint8_t>(knockOut & 0xFF), blur, colour,
                                        floorX, floorY, extra);
    }
    Trace("     %p  %2X SetSoftShadowColor  \n", static_cast<void*>(&surface),
          static_cast<unsigned>(knockOut));
}

}  // namespace tr
