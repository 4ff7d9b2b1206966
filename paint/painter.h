// paint/painter.h — CPainter, the set of applicators that paints one
// character.
//
// Slots 0-15 hold the applicators named by the coverage buffer's 4-bit
// numbers (0 uncovered, 1 covered but never painted, 2-15 painted); slot 16
// holds the soft shadow, which is composited from its own layer. Setters
// replace whatever a slot holds. Slot numbers outside the accepted range
// select slot 1, so a stray number can never paint anything.
//
// Once the character is finished, `BindTarget` records where the character
// lands (its coverage buffer, the host's pixels, the painter position and
// the face's geometry) and `PrepareApplicators` hands that to every
// applicator; the compositors (paint/compositor.h) then read the bound
// fields. Binding does not change the slots, and a painter may be bound
// again (the last binding wins).
#pragma once

#include <cstdint>
#include <memory>

#include "paint/color_applicator.h"
#include "paint/shader_mixer.h"
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

    // Installs an applicator the caller made (the painter owns it from now
    // on) in slot 0-16; other numbers select slot 1. The slot's previous
    // applicator is deleted.
    void InstallApplicator(int32_t slot, CColorApplicator* applicator) {
        Install(SelectStackSlot(slot), applicator);
    }

    // Fills every empty slot 0-15 with a null colour (slot 16 stays empty).
    void FillEmptySlotsWithNullColors();

    // The applicator in a slot 0-16, or null (also for other numbers).
    CColorApplicator* GetSlot(int32_t slot) const;
    CStackPainter* GetStackPainter(int32_t slot) const;

    double GetOpacity() const { return opacity; }
    void SetOpacity(double value) { opacity = value; }

    // Records the target of the finished character and sets the coverage
    // pitches; the applicators are left alone. The rectangle and the quads
    // are copied (the quads are four points each). The coverage buffer must
    // hold coverageWidth × coverageHeight × 4 words for as long as the
    // painter is composited.
    void BindTarget(int32_t coverageWidth, int32_t coverageHeight, uint16_t* coverage,
                    uint32_t* targetPixels, double positionX, double positionY, int32_t blendMode,
                    int32_t targetPitch, const PainterRectangle* rectangle, double painterAngle,
                    int32_t clipWidth, int32_t clipHeight, double pixelRatio,
                    const ShaderPoint* faceExtents, const ShaderPoint* extents,
                    const ShaderPoint& origin);

    // Hands the bound target to every applicator of slots 0-16 (run once
    // per character, after BindTarget and before compositing): opacity to
    // all; stack painters get their pixel record filled and bound to their
    // primitives; the others get the pixel ratio, the painter rectangle, the
    // combined angle θ = −painter angle − own angle as sin/cos, the floored
    // position and then their own PrepareForCharacter.
    void PrepareApplicators();

    // floor(position) as integers: where coverage pixel (0, 0) lands.
    int32_t GetOriginColumn() const;
    int32_t GetOriginRow() const;

    // Bound target (BindTarget); all zero until bound.
    int32_t coveragePitch16 = 0;  // 16-bit words per coverage row (4 × W)
    int32_t coveragePitch32 = 0;  // 32-bit words per coverage row (2 × W)
    int32_t coverageHeight = 0;   // H, pixels
    PainterRectangle painterRectangle;
    double painterAngle = 0.0;  // radians
    double positionX = 0.0;     // target position of painter pixel (0, 0)
    double positionY = 0.0;
    int32_t targetPitch = 0;           // bytes, a multiple of 4
    int32_t blendMode = 0;             // 0 over, anything else replace
    int32_t coverageWidth = 0;         // W, pixels
    uint16_t* coverage = nullptr;      // borrowed (the plan owns it)
    uint32_t* targetPixels = nullptr;  // borrowed (the host's buffer)
    double pixelRatio = 0.0;
    int32_t clipWidth = 0;  // the surface's size
    int32_t clipHeight = 0;
    ShaderPoint faceExtents[4];
    ShaderPoint extents[4];
    ShaderPoint origin;

private:
    void PrepareStackPainter(CStackPainter& stack) const;

    void Install(int32_t slot, CColorApplicator* applicator);

    CColorApplicator* slots_[kSlotCount] = {};
    double opacity = 1.0;
};
