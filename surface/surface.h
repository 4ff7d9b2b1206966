// surface/surface.h — Surface, the per-surface record behind the entry
// points, and the operations that carry out the describing calls.
//
// The entry points (surface/entry_points.cpp) validate, record into an
// attached script, and then call these operations when the surface executes.
// A surface belongs to one thread at a time and carries no lock.
#pragma once

#include <cstdint>
#include <vector>

#include "surface/plans.h"
#include "titlerender.h"

class CPainter;
class COutline2;
struct CharacterContext;

struct Surface {
    std::vector<uint32_t> shapeRefs;    // shape-pool records referenced
    std::vector<uint32_t> shadowRefs;   // shadow-pool records referenced
    std::vector<uint32_t> painterRefs;  // painter-pool records referenced
    FaceParameters face{};  // X and Y hold only their fractional parts
    double faceX = 0.0;     // full X and Y after the 1/16 snap
    double faceY = 0.0;
    double shearX = 0.0;  // radians
    double shearY = 0.0;
    uint32_t characterCode = 0;
    uint32_t characterFlags = 0;
    uint32_t sourceC = 0;  // outline size
    uintptr_t sourceA = 0;  // glyph context
    GlyphOutlineCallback sourceD = nullptr;  // null: no outline is fetched
    COutline2* outline = nullptr;            // owned
    CharacterContext* character = nullptr;   // owned
    CPlans plans;
    CPainter* painters = nullptr;  // borrowed: the current character's painter set
    SurfaceDescriptor descriptor{};
    CScript* script = nullptr;  // borrowed
    uint8_t execute = 1;        // 0: calls are only recorded
    uint8_t hostBytes[3] = {};
};

namespace tr {

// Pixel ratio stored for a descriptor ratio of exactly 0.0 (either sign).
inline constexpr double kDefaultPixelRatio = 1.1111111111111112;

// Snaps a face coordinate to n / 16 with n = trunc(v × 16 + 0.5) (NaN and
// values beyond the int32 range saturate).
double SnapToSixteenth(double value);
// Blur of a soft shadow for a softness and the face size.
double SoftShadowBlur(double softness, double size);

[[nodiscard]] Surface* CreateSurfaceRecord(const SurfaceDescriptor* descriptor);
// Closes a surface: composite (executing surfaces), release, free.
void CloseSurfaceRecord(Surface* surface);
void StartNewCharacter(Surface& surface, uintptr_t sourceA, uint32_t characterFlags,
                       uint32_t sourceC, GlyphOutlineCallback sourceD, uint32_t characterCode);
void StoreFace(Surface& surface, const FaceParameters& snapped);
// Applies the fragment rules and adds the fragment; false when dropped (or
// when there is no current character).
bool AddFragmentToCharacter(Surface& surface, const uint8_t* map, int32_t kind, double width,
                            double angle, double distance);
void InstallSoftShadow(Surface& surface, int32_t knockOut, double softness, uint32_t colour,
                       double shiftX, double shiftY, double extra);
// The rendering pass of the current character; returns the plan index.
int32_t RenderCharacter(Surface& surface, int32_t mode, uint32_t options, uint32_t userValue1,
                        uint32_t userValue2);

}  // namespace tr
