// surface/script_commands.cpp — playback of each recorded command.
#include "surface/script_commands.h"

#include <algorithm>
#include <cstring>
#include <new>

void CFunction::Execute(Surface*) {}
int32_t CFunction::GetKind() const { return 0; }
CFunction* CFunction::Clone() const { return new (std::nothrow) CFunction(); }

void ReferenceArea::CopyFrom(const ImageReference* source, uint32_t referenceSize) {
    if (!source) return;
    std::memcpy(bytes, source, std::min(referenceSize, kNameOffset));
    if (!source->name) return;
    const std::size_t length = strnlen(source->name, kSize - kNameOffset - 1);
    std::memcpy(bytes + kNameOffset, source->name, length);
    bytes[kNameOffset + length] = '\0';
}

void* ReferenceArea::PointNameAtCopy() {
    const char* name = reinterpret_cast<const char*>(bytes + kNameOffset);
    std::memcpy(bytes, &name, sizeof name);
    return bytes;
}

void CNewCharacterCallBack::Execute(Surface* surface) {
    NewCharacterCallBack(surface, sourceA, characterFlags, sourceC, sourceD, characterCode);
}

void CSetFace::Execute(Surface* surface) { SetFace(surface, &parameters); }

void CSetFragment::Execute(Surface* surface) {
    SetFragment(surface, noMap ? nullptr : map, kind, width, angle, distance);
}

void CFinishCharacter::Execute(Surface* surface) {
    FinishCharacter(surface, mode, options, userValue1, userValue2);
}

void CSetRectangleForPainter::Execute(Surface* surface) {
    SetRectangleForPainter(surface, slot, values[0], values[1], values[2], values[3], values[4]);
}

void CSetNullColor::Execute(Surface* surface) { SetNullColor(surface, slot); }

void CSetClassicPainter::Execute(Surface* surface) {
    if (!noTexture) texture.userValue = reinterpret_cast<uintptr_t>(reference.bytes);
    SetClassicPainter(surface, slot, noParameters ? nullptr : &classic,
                      noTexture ? nullptr : &texture, &style);
}

void CSetColor::Execute(Surface* surface) { SetColor(surface, slot, colour); }

void CSetSoftShadowColor::Execute(Surface* surface) {
    SetSoftShadowColor(surface, knockOut, softness, colour, shiftX, shiftY, extra);
}

void CSetRamp::Execute(Surface* surface) {
    SetRamp(surface, slot, &record, callback, &style, GetReference());
}

void CSetBevel::Execute(Surface* surface) {
    SetBevel(surface, slot, &record, callback, &style, GetReference());
}
