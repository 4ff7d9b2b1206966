// paint/painter.h — CPainter, the set of applicators that paints one
// character.
//
// Slots 0-15 hold the applicators named by the coverage buffer's 4-bit
// numbers (0 uncovered, 1 covered but never painted, 2-15 painted); slot 16
// holds the soft shadow, which is composited from its own layer. Setters
// replace whatever a slot holds. Slot numbers outside the accepted range
// select slot 1, so a stray number can never paint anything.
#pragma once

#include <cstdint>

#include "paint/color_applicator.h"
#include "titlerender.h"

class CShaderMixer;
class CStackPainter;

class CPainter {
public:
    static constexpr int32_t kSlotCount = 17;
    static constexpr int32_t kShadowSlot = 16;
    static constexpr int32_t kDiscardSlot = 1;

    CPainter() = default;
    // Deletes every applicator.
    virtual ~CPainter();
    CPainter(const CPainter&) = delete;
    CPainter& operator=(const CPainter&) = delete;

    // Slot of the painter setters (0-15; anything else selects slot 1).
    static int32_t SelectPainterSlot(int32_t slot);
    // Slot of the stack-painter setter (0-16; anything else selects slot 1).
    static int32_t SelectStackSlot(int32_t slot);

    void SetColor(int32_t slot, uint32_t colour);
    void SetNullColor(int32_t slot);
    void SetStackPainter(int32_t slot, uint8_t joinsNeighbours);
    // Slot 16: deletes the previous shadow and installs a new one.
    void SetSoftShadow(uint8_t knockOut, double softness, uint32_t colour, double shiftX,
                       float shiftY, double extra);
    // Forward to the stack painter in the slot; do nothing when the slot is
    // above 16, empty or holds another applicator. Returns whether the stack
    // painter took the call (AddMixerToSlot: took ownership of the mixer).
    bool AddMixerToSlot(int32_t slot, CShaderMixer* mixer);
    bool SetLayerDescriptorOfSlot(int32_t slot, int32_t layer, const LayerDescriptor& descriptor);
    // Host rectangle for slots 0-15 that hold an applicator; else nothing.
    void SetRectangle(int32_t slot, const ExplicitRectangle& rectangle);

    // Fills every empty slot 0-15 with a null colour (slot 16 stays empty).
    void FillEmptySlotsWithNullColors();

    // The applicator in a slot 0-16, or null (also for other numbers).
    CColorApplicator* GetSlot(int32_t slot) const;
    CStackPainter* GetStackPainter(int32_t slot) const;

    double GetOpacity() const { return opacity; }
    void SetOpacity(double value) { opacity = value; }

private:
    void Install(int32_t slot, CColorApplicator* applicator);

    CColorApplicator* slots_[kSlotCount] = {};
    double opacity = 1.0;
};
