// paint/painter.cpp — CPainter slot table and setters.
#include "paint/painter.h"

#include <cmath>
#include <new>

#include "paint/numeric.h"
#include "paint/shader_mixer.h"
#include "paint/soft_shadow.h"
#include "paint/stack_painter.h"

CPainter::~CPainter() {
    for (CColorApplicator*& applicator : slots_) {
        delete applicator;
        applicator = nullptr;
    }
}

int32_t CPainter::SelectPainterSlot(int32_t slot) {
    return (slot >= 0 && slot <= 15) ? slot : kDiscardSlot;
}

int32_t CPainter::SelectStackSlot(int32_t slot) {
    return (slot >= 0 && slot <= 16) ? slot : kDiscardSlot;
}

void CPainter::Install(int32_t slot, CColorApplicator* applicator) {
    delete slots_[slot];
    slots_[slot] = applicator;
}

void CPainter::SetColor(int32_t slot, uint32_t colour) {
    Install(SelectPainterSlot(slot), new (std::nothrow) CColor(colour));
}

void CPainter::SetNullColor(int32_t slot) {
    Install(SelectPainterSlot(slot), new (std::nothrow) CNullColor());
}

void CPainter::SetStackPainter(int32_t slot, uint8_t joinsNeighbours) {
    Install(SelectStackSlot(slot), new (std::nothrow) CStackPainter(joinsNeighbours));
}

void CPainter::SetSoftShadow(uint8_t knockOut, double softness, uint32_t colour, double shiftX,
                             float shiftY, double extra) {
    Install(kShadowSlot,
            new (std::nothrow) CSoftShadow(knockOut, softness, colour, shiftX, shiftY, extra));
}

CStackPainter* CPainter::GetStackPainter(int32_t slot) const {
    CColorApplicator* applicator = GetSlot(slot);
    if (!applicator || !applicator->isStackPainter) return nullptr;
    return static_cast<CStackPainter*>(applicator);
}

bool CPainter::AddMixerToSlot(int32_t slot, CShaderMixer* mixer) {
    CStackPainter* stack = GetStackPainter(slot);
    if (!stack || !mixer) return false;
    stack->AddMixer(mixer);
    return true;
}

bool CPainter::SetLayerDescriptorOfSlot(int32_t slot, int32_t layer,
                                        const LayerDescriptor& descriptor) {
    CStackPainter* stack = GetStackPainter(slot);
    if (!stack || layer < 0 || layer >= CStackPainter::kLayerCount) return false;
    stack->SetLayerDescriptor(layer, descriptor);
    return true;
}

void CPainter::SetRectangle(int32_t slot, const ExplicitRectangle& rectangle) {
    if (slot < 0 || slot >= kShadowSlot || !slots_[slot]) return;
    slots_[slot]->SetExplicitRectangle(rectangle);
}

void CPainter::FillEmptySlotsWithNullColors() {
    for (int32_t slot = 0; slot < kShadowSlot; ++slot) {
        if (!slots_[slot]) slots_[slot] = new (std::nothrow) CNullColor();
    }
}

CColorApplicator* CPainter::GetSlot(int32_t slot) const {
    return (slot >= 0 && slot < kSlotCount) ? slots_[slot] : nullptr;
}

void CPainter::BindTarget(int32_t width, int32_t height, uint16_t* coverageBuffer, uint32_t* pixels,
                          double x, double y, int32_t mode, int32_t pitch,
                          const PainterRectangle* rectangle, double angle, int32_t clipW,
                          int32_t clipH, double ratio, const ShaderPoint* faceQuad,
                          const ShaderPoint* quad, const ShaderPoint& originPoint) {
    coverageWidth = width;
    coverageHeight = height;
    coveragePitch16 = 4 * width;
    coveragePitch32 = 2 * width;
    coverage = coverageBuffer;
    targetPixels = pixels;
    positionX = x;
    positionY = y;
    blendMode = mode;
    targetPitch = pitch;
    painterRectangle = rectangle ? *rectangle : PainterRectangle{};
    painterAngle = angle;
    clipWidth = clipW;
    clipHeight = clipH;
    pixelRatio = ratio;
    for (int i = 0; i < 4; ++i) {
        faceExtents[i] = faceQuad ? faceQuad[i] : ShaderPoint{};
        extents[i] = quad ? quad[i] : ShaderPoint{};
    }
    origin = originPoint;
}

int32_t CPainter::GetOriginColumn() const { return tr::FloorToInt32(positionX); }
int32_t CPainter::GetOriginRow() const { return tr::FloorToInt32(positionY); }

void CPainter::PrepareStackPainter(CStackPainter& stack) const {
    ShaderPixel& record = stack.GetPixelRecord();
    record.targetPixels = targetPixels;
    record.originX = GetOriginColumn();
    record.originY = GetOriginRow();
    record.clipWidth = clipWidth;
    record.clipHeight = clipHeight;
    record.targetPitch = targetPitch;
    record.pixelRatio = pixelRatio;
    record.coverage = coverage;
    record.coverageWidth = coverageWidth;
    record.coverageHeight = coverageHeight;
    record.painterAngle = painterAngle;
    for (int i = 0; i < 4; ++i) {
        record.faceExtents[i] = faceExtents[i];
        record.extents[i] = extents[i];
    }
    record.origin = origin;
    for (int32_t i = 0; i < stack.ownedCount; ++i) stack.owned[i]->SetPixelRecord(&record);
}

void CPainter::PrepareApplicators() {
    for (CColorApplicator* applicator : slots_) {
        if (!applicator) continue;
        applicator->opacity = opacity;
        if (applicator->isStackPainter) {
            PrepareStackPainter(*static_cast<CStackPainter*>(applicator));
            continue;
        }
        applicator->pixelRatio = pixelRatio;
        applicator->painterRectangle = painterRectangle;
        const double theta = -painterAngle - applicator->ownAngle;
        applicator->sinAngle = std::sin(theta);
        applicator->cosAngle = std::cos(theta);
        applicator->originX = GetOriginColumn();
        applicator->originY = GetOriginRow();
        applicator->PrepareForCharacter(coverageWidth, coverageHeight, positionX, positionY);
    }
}
