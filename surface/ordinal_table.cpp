// surface/ordinal_table.cpp — exported entry points by ordinal number.
//
// ELF has no ordinals; hosts that look entry points up by number call
// titlerender_entry_point. titlerender.def lists the same table for a
// Windows build (ordinal 12 is exported by name as well).
#include "surface/ordinal_table.h"

#include <algorithm>

#include "titlerender.h"

namespace tr {
namespace {

// Function addresses as data pointers: the host casts them back.
template <class F>
const void* Address(F* function) {
    return reinterpret_cast<const void*>(function);
}

const OrdinalEntry kOrdinals[] = {
    {1, "CreateSurface", Address(&CreateSurface)},
    {2, "CloseSurface", Address(&CloseSurface)},
    {3, "AddOutlineFlags", Address(&AddOutlineFlags)},
    {4, "SetFace", Address(&SetFace)},
    {5, "SetFragment", Address(&SetFragment)},
    {6, "FinishCharacter", Address(&FinishCharacter)},
    {7, "NewCharacterCallBack", Address(&NewCharacterCallBack)},
    {8, "SetPainterOpacity", Address(&SetPainterOpacity)},
    {9, "SetCharacterShear", Address(&SetCharacterShear)},
    {10, "SetNullColor", Address(&SetNullColor)},
    {11, "SetColor", Address(&SetColor)},
    {12, "FlushRazterizerRecyclerMemory", Address(&FlushRazterizerRecyclerMemory)},
    {14, "SetSoftShadowColor", Address(&SetSoftShadowColor)},
    {15, "SetRectangleForPainter", Address(&SetRectangleForPainter)},
    {16, "SetClassicPainter", Address(&SetClassicPainter)},
    {17, "SetRamp", Address(&SetRamp)},
    {18, "SetBevel", Address(&SetBevel)},
    {19, "SetStackPainter", Address(&SetStackPainter)},
    {20, "AddToStackPainter", Address(&AddToStackPainter)},
    {21, "SetStackLayer", Address(&SetStackLayer)},
    {90, "InvalidatePooledCharacters", Address(&InvalidatePooledCharacters)},
    {91, "SetPoolBudgets", Address(&SetPoolBudgets)},
    {99, "GetSurfaceHostBytes", Address(&GetSurfaceHostBytes)},
    {100, "FillFourCornerGradient", Address(&FillFourCornerGradient)},
    {101, "TakeLastMessage", Address(&TakeLastMessage)},
    {107, "AttachScript", Address(&AttachScript)},
    {108, "PlayScript", Address(&PlayScript)},
    {109, "DeleteScript", Address(&DeleteScript)},
    {110, "CloneScript", Address(&CloneScript)},
    {111, "AdjustScript", Address(&AdjustScript)},
    {112, "AttachRecordingScript", Address(&AttachRecordingScript)},
    {130, "FillSolid", Address(&FillSolid)},
    {131, "RenderClassicGradient", Address(&RenderClassicGradient)},
    {133, "RenderClassicGradientSampled", Address(&RenderClassicGradientSampled)},
    {150, "CreateCharacterCaches", Address(&CreateCharacterCaches)},
    {151, "DestroyCharacterCaches", Address(&DestroyCharacterCaches)},
    {221, "CreateNullMixer", Address(&CreateNullMixer)},
    {230, "CreateTestShader", Address(&CreateTestShader)},
    {250, "CreateSetRGBA", Address(&CreateSetRGBA)},
    {251, "CreatePaintOryginPoint", Address(&CreatePaintOryginPoint)},
    {252, "CreatePaintFaceExtendsPoints", Address(&CreatePaintFaceExtendsPoints)},
    {253, "CreatePaintExtendsPoints", Address(&CreatePaintExtendsPoints)},
    {255, "CreatePaintPoint", Address(&CreatePaintPoint)},
    {256, "CreatePaintLine", Address(&CreatePaintLine)},
    {262, "CreatePaintFaceExtendsLines", Address(&CreatePaintFaceExtendsLines)},
    {263, "CreatePaintExtendsLines", Address(&CreatePaintExtendsLines)},
    {270, "CreateFourCornerRamp", Address(&CreateFourCornerRamp)},
    {271, "CreateClassicShine", Address(&CreateClassicShine)},
    {272, "CreateTwoColorLinearRamp", Address(&CreateTwoColorLinearRamp)},
    {273, "CreateTwoColorRadialRamp", Address(&CreateTwoColorRadialRamp)},
    {274, "CreateClassicTexture", Address(&CreateClassicTexture)},
    {281, "CreateMixTint", Address(&CreateMixTint)},
    {282, "CreateMixKeyKey", Address(&CreateMixKeyKey)},
    {283, "CreateMixAlphaKey", Address(&CreateMixAlphaKey)},
    {284, "CreateMixAlphaAlpha", Address(&CreateMixAlphaAlpha)},
    {290, "CreateBevelSimple", Address(&CreateBevelSimple)},
    {291, "CreateTranslateShadow", Address(&CreateTranslateShadow)},
    {292, "CreateDepthBevel", Address(&CreateDepthBevel)},
    {293, "CreateDepthLightBevel", Address(&CreateDepthLightBevel)},
    {300, "CreateScaleAlpha", Address(&CreateScaleAlpha)},
};

}  // namespace

std::span<const OrdinalEntry> GetOrdinalTable() { return kOrdinals; }

}  // namespace tr

extern "C" const void* titlerender_entry_point(uint32_t ordinal) {
    const auto table = tr::GetOrdinalTable();
    const auto it = std::lower_bound(
        table.begin(), table.end(), ordinal,
        [](const tr::OrdinalEntry& entry, uint32_t value) { return entry.ordinal < value; });
    return (it != table.end() && it->ordinal == ordinal) ? it->function : nullptr;
}
