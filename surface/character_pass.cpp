// surface/character_pass.cpp — the character rendering pass.
//
// Order of the pass (the render lock is held by FinishCharacter):
//   1. default null colours in empty slots 0-15; mode bit 31 from options
//      bit 0; wide outlines from the character flags;
//   2. the outline: a COutline2 loaded through the glyph callback;
//   3. the face: set up with the outline and the face values, the fragments
//      prepared (stroke widths and shadow offsets in outline units, which
//      also widen the face's margins), then measured;
//   4. a coverage buffer of W × H × 8 bytes from the recycler, the fragments
//      drawn into it by the context's fragment compositor;
//   5. the plan: placement, coverage, the painter set bound to the target.
// A character without outline, fragments or contours, or whose image box is
// beyond the limits below, makes no plan and loses its painter set.
#include "surface/character_pass.h"

#include <cmath>

#include "memory/coverage_recycler.h"
#include "outline/outline2.h"
#include "paint/face.h"
#include "paint/numeric.h"
#include "paint/painter.h"
#include "paint/xyr.h"
#include "surface/character_context.h"
#include "surface/plans_composite.h"
#include "surface/surface.h"

namespace tr {

namespace {

constexpr uint32_t kDrawFirstBit = 0x80000000u;
constexpr uint32_t kWideOutlineFlag = 0x400u;
constexpr uint32_t kOutlineExtraKey = 8;
constexpr double kPi = 3.141592653589793;
constexpr int32_t kCoverageBytesPerPixel = 8;  // four 16-bit sub-rows

// A character image may be at most this many pixels on a side, and its
// coverage at most this many bytes; larger characters (absurd face sizes)
// make no plan instead of exhausting memory.
constexpr int32_t kMaxImageSide = 16384;
constexpr uint64_t kMaxCoverageBytes = 256u * 1024u * 1024u;

// A character that produced no plan: its painter set is destroyed, and
// painter calls must not reach it before the next character.
void DiscardPainters(Surface& surface, CharacterContext& context) {
    delete context.face->DetachPainter();
    surface.painters = nullptr;
}

void LoadOutline(Surface& surface, const CharacterContext& context) {
    ReleaseCharacterOutline(surface);
    if (!surface.sourceD) return;
    COutline2* outline = CreateOutline2();
    if (!outline) return;
    surface.outline = outline;
    outline->AddOptions(context.outlineFlags);
    outline->Load(surface.sourceA, surface.characterFlags, static_cast<int32_t>(surface.sourceC),
                  surface.sourceD, static_cast<uint16_t>(surface.characterCode),
                  kOutlineExtraKey);
}

// Stroke widths and shadow offsets in outline units; the largest extents
// become the face's margins.
void PrepareFragments(CharacterContext& context) {
    CFace& face = *context.face;
    for (CFragment& fragment : context.fragments) {
        fragment.face = &face;
        fragment.widthPx = face.scale * 4.0 * fragment.width;
        const double distancePx = face.scale * 4.0 * fragment.distance;
        const double theta = fragment.angle * kPi / 180.0;
        fragment.shadowOffsetA = std::sin(theta) * distancePx;
        fragment.shadowOffsetB = std::cos(theta) * distancePx;
        face.marginX = std::fmax(face.marginX, std::fabs(fragment.shadowOffsetA) + fragment.widthPx);
        face.marginY = std::fmax(face.marginY, std::fabs(fragment.shadowOffsetB) + fragment.widthPx);
    }
}

bool WithinLimits(const CFace& face) {
    if (!std::isfinite(face.scale) || !(face.scale > 0.0)) return false;
    // Infinite widths or distances end up as non-finite box sizes.
    if (!std::isfinite(face.halfWidth) || !std::isfinite(face.halfHeight)) return false;
    if (face.imageWidth <= 0 || face.imageHeight <= 0) return false;
    if (face.imageWidth > kMaxImageSide || face.imageHeight > kMaxImageSide) return false;
    const uint64_t bytes = static_cast<uint64_t>(face.imageWidth) *
                           static_cast<uint64_t>(face.imageHeight) * kCoverageBytesPerPixel;
    return bytes <= kMaxCoverageBytes;
}

// Writes the fragments' applicator numbers into the coverage buffer; the
// first drawing also fixes the face's origin pixel, painter rectangle and
// quads.
void DrawFragments(CharacterContext& context, uint16_t* coverage, const CFace& face,
                   const COutline2& outline) {
    // The block comes from the outline builder (directly or through the
    // caches), which stores every edge's direction in its end point.
    const FragmentOutlineSource source{coverage, face.subWidth, face.subHeight, &outline, true};
    context.compositor.DrawFragments(source, context.fragments);
}

ShaderPoint ToShaderPoint(const FacePoint& p) { return {p.x, p.y}; }

void BindPainter(Surface& surface, CPlan& plan, CPainter& painter, const CFace& face,
                 int32_t blendMode) {
    const PainterRectangle rectangle{face.painterHalfWidth, face.painterHalfHeight,
                                     face.painterCentreX, face.painterCentreY};
    ShaderPoint faceExtents[4];
    ShaderPoint extents[4];
    for (int i = 0; i < 4; ++i) {
        faceExtents[i] = ToShaderPoint(face.faceExtents[i]);
        extents[i] = ToShaderPoint(face.extents[i]);
    }
    const SurfaceDescriptor& d = surface.descriptor;
    painter.BindTarget(plan.width, plan.height, plan.coverage, d.image.pixels,
                       surface.faceX - plan.left, surface.faceY - plan.top, blendMode,
                       d.image.stride, &rectangle, face.rotation, d.image.width, d.image.height,
                       d.pixelRatio, faceExtents, extents, ToShaderPoint(face.origin));
}

}  // namespace

int32_t RenderCharacter(Surface& surface, int32_t mode, uint32_t options, uint32_t userValue1,
                        uint32_t userValue2) {
    CharacterContext* context = surface.character;
    if (!context || !context->face->GetPainter()) return 0;
    CFace& face = *context->face;
    CPainter& painter = *face.GetPainter();
    painter.FillEmptySlotsWithNullColors();
    uint32_t modeBits = static_cast<uint32_t>(mode);
    if (options & 1u) modeBits |= kDrawFirstBit;
    if (surface.characterFlags & kWideOutlineFlag) context->compositor.wideOutlines = 1;

    LoadOutline(surface, *context);
    const FaceParameters& f = surface.face;
    face.pixelRatio = surface.descriptor.pixelRatio;
    face.SetUp(surface.outline, f.size, std::fabs(f.heightScale), std::fabs(f.widthScale),
               f.slantA, f.slantB, f.rotation, surface.faceX, surface.faceY, f.taperH, f.taperV,
               surface.shearX, surface.shearY);

    const bool hasContours = surface.outline && !surface.outline->IsEmpty() &&
                             surface.outline->GetGroupCount() > 0;
    if (!hasContours || context->fragments.empty()) {
        DiscardPainters(surface, *context);
        face.outline = nullptr;
        return 0;
    }
    PrepareFragments(*context);
    face.Measure();
    void* buffer = WithinLimits(face)
                       ? AllocateBuffer(static_cast<uint32_t>(face.imageWidth) *
                                        static_cast<uint32_t>(face.imageHeight) *
                                        kCoverageBytesPerPixel)
                       : nullptr;
    if (!buffer) {
        DiscardPainters(surface, *context);
        face.outline = nullptr;
        return 0;
    }
    auto* coverage = static_cast<uint16_t*>(buffer);
    const int32_t blendMode = static_cast<int32_t>(modeBits & ~kDrawFirstBit);
    DrawFragments(*context, coverage, face, *surface.outline);

    const uint32_t index =
        (modeBits & kDrawFirstBit) ? surface.plans.InsertFirst() : surface.plans.Append();
    CPlan& plan = surface.plans.Get(index);
    plan.pixels = surface.descriptor.image.pixels;
    plan.surfaceWidth = plan.clipWidth = surface.descriptor.image.width;
    plan.surfaceHeight = plan.clipHeight = surface.descriptor.image.height;
    plan.coverage = coverage;
    plan.width = face.imageWidth;
    plan.height = face.imageHeight;
    plan.left = face.originColumn;
    plan.top = face.originRow;
    plan.painters = face.DetachPainter();
    BindPainter(surface, plan, *plan.painters, face, blendMode);
    plan.userValue1 = userValue1;
    plan.userValue2 = userValue2;
    face.outline = nullptr;
    return static_cast<int32_t>(index);
}

void CompositePlans(Surface& surface) { CompositePlanList(surface.plans); }

void ReleaseCharacterOutline(Surface& surface) {
    ReleaseOutline2(surface.outline);
    surface.outline = nullptr;
}

}  // namespace tr
