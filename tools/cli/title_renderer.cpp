// tools/cli/title_renderer.cpp — one title line through the C entry points.
//
// Each character is described as a title host does: NewCharacterCallBack
// with the glyph source's callback, SetFace at the pen on the baseline, then
// its fragments in drawing order — later fragments overwrite earlier ones
// through their nibble maps — and a flat colour per painter slot:
//
//   shadow (displaced face + extrusion)  slot 4, when a distance is asked
//   outer outline                        slot 3, under the face
//   face                                 slot 2
//   inner outline                        slot 3, over the face's rim
//
// FinishCharacter renders it; CloseSurface composites the line, shadows
// first, into the image.
#include "tools/cli/title_renderer.h"

#include <cassert>

namespace tr::cli {
namespace {

// Painter slots of a title character: face, outline, shadow.
constexpr int32_t kFaceSlot = 2;
constexpr int32_t kOutlineSlot = 3;
constexpr int32_t kShadowSlot = 4;

// Fragment kinds of SetFragment used by the title.
constexpr int32_t kFace = TR_FRAGMENT_FACE;
constexpr int32_t kOutlineIn = TR_FRAGMENT_OUTLINE_IN;
constexpr int32_t kOutlineOut = TR_FRAGMENT_OUTLINE_OUT;
constexpr int32_t kFaceShadow = TR_FRAGMENT_FACE_SHADOW;
constexpr int32_t kOutlineOutShadow = TR_FRAGMENT_OUTLINE_OUT_SHADOW;

// A nibble map that sends every sub-sample it covers to one slot.
struct SlotMap {
    explicit SlotMap(int32_t slot) {
        for (uint8_t& v : map) v = static_cast<uint8_t>(slot);
    }
    uint8_t map[16];
};

void DescribeCharacter(Surface* surface, const TitleOptions& o, tools::GlyphSource& glyphs,
                       uint32_t code, double penX, uint32_t index) {
    NewCharacterCallBack(surface, glyphs.Context(), 0, static_cast<uint32_t>(glyphs.CharSize()),
                         &tools::GlyphSource::Callback, code);
    FaceParameters face{o.size, 1.0, 1.0, 0.0, 0.0, 0.0, penX, o.y, 0.0, 0.0};
    SetFace(surface, &face);
    const bool outlined = !o.outlineSide.empty() && o.outlineWidth > 0.0;
    const bool outer = outlined && o.outlineSide == "out";
    if (o.shadowDistance > 0.0) {
        // The shadow of what stands out most, the outer outline or the face:
        // the displaced face and the extrusion joining it to the character.
        const SlotMap shadow(kShadowSlot);
        SetFragment(surface, shadow.map, kFace, 0.0, o.shadowAngle, o.shadowDistance);
        SetFragment(surface, shadow.map, outer ? kOutlineOutShadow : kFaceShadow,
                    outer ? o.outlineWidth : 0.0, o.shadowAngle, o.shadowDistance);
        SetColor(surface, kShadowSlot, o.shadowColour);
    }
    const SlotMap outline(kOutlineSlot);
    if (outer) SetFragment(surface, outline.map, kOutlineOut, o.outlineWidth, 0.0, 0.0);
    const SlotMap fill(kFaceSlot);
    SetFragment(surface, fill.map, kFace, 0.0, 0.0, 0.0);
    if (outlined && !outer) SetFragment(surface, outline.map, kOutlineIn, o.outlineWidth, 0.0, 0.0);
    SetColor(surface, kFaceSlot, o.fill);
    SetColor(surface, kOutlineSlot, o.outlineColour);
    FinishCharacter(surface, 0, 0, index, 0);
}

}  // namespace

void RenderTitleLine(const TitleOptions& options, tools::GlyphSource& glyphs,
                     const std::vector<uint32_t>& codes, const std::vector<double>& penX,
                     const ImageBlock& image) {
    assert(penX.size() == codes.size() && "LayOutLine gives one pen per code");
    if (!options.transparent) FillSolid(&image, options.background);
    SurfaceDescriptor descriptor{image, 1.0};
    Surface* surface = CreateSurface(&descriptor);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        DescribeCharacter(surface, options, glyphs, codes[i], penX[i], static_cast<uint32_t>(i));
    }
    CloseSurface(surface);
}

}  // namespace tr::cli
