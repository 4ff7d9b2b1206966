// paint/painter.cpp — CPainter slot table and setters.
#include "paint/painter.h"

#include <new>

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
