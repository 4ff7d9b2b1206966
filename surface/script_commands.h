// surface/script_commands.h — the recorded commands of a command script.
//
// Every describing call on a surface with a script is stored as one command
// holding the call's arguments. `Execute` repeats the call on another
// surface through the same entry point. Commands that refer to a host image
// keep a private 512-byte reference area: the host's ImageReference block in
// the first half, its name (terminator included) from byte 256.
#pragma once

#include <cstdint>
#include <new>

#include "titlerender.h"

class CFunction {
public:
    CFunction() = default;
    virtual ~CFunction() = default;
    virtual void Execute(Surface* surface);
    virtual int32_t GetKind() const;
    virtual CFunction* Clone() const;
};

enum class CommandKind : int32_t {
    NewCharacterCallBack = 2,
    SetFace = 3,
    SetFragment = 4,
    FinishCharacter = 5,
    SetRectangleForPainter = 6,
    SetNullColor = 7,
    SetClassicPainter = 8,
    SetColor = 9,
    SetSoftShadowColor = 10,
    SetRamp = 11,
    SetBevel = 12,
};

// The private copy of a host image reference.
struct ReferenceArea {
    static constexpr uint32_t kSize = 512;
    static constexpr uint32_t kNameOffset = 256;

    // Copies min(referenceSize, 256) bytes of the host block and up to 255
    // bytes of its name (then a terminator). A null block leaves it zero.
    void CopyFrom(const ImageReference* reference, uint32_t referenceSize);
    // Points the copy's name field at the name copy; returns the area.
    void* PointNameAtCopy();

    alignas(8) uint8_t bytes[kSize] = {};
};

// Base of the commands that a host image reference can travel with: the
// script's playback acquires and releases their reference areas.
class CReferenceCommand : public CFunction {
public:
    // Whether playback hands the reference area to the host callbacks.
    virtual bool UsesReference() const = 0;
    ReferenceArea reference;
};

template <CommandKind K, class Derived, class Base = CFunction>
class CCommand : public Base {
public:
    int32_t GetKind() const override { return static_cast<int32_t>(K); }
    CFunction* Clone() const override;
};

class CNewCharacterCallBack final : public CCommand<CommandKind::NewCharacterCallBack, CNewCharacterCallBack> {
public:
    void Execute(Surface* surface) override;
    uintptr_t sourceA = 0;
    uint32_t characterFlags = 0;
    uint32_t sourceC = 0;
    GlyphOutlineCallback sourceD = nullptr;
    uint32_t characterCode = 0;
};

class CSetFace final : public CCommand<CommandKind::SetFace, CSetFace> {
public:
    void Execute(Surface* surface) override;
    FaceParameters parameters{};
    int32_t faceA = 0;
    int32_t faceB = 0;
};

class CSetFragment final : public CCommand<CommandKind::SetFragment, CSetFragment> {
public:
    void Execute(Surface* surface) override;
    uint8_t noMap = 1;
    uint8_t map[16] = {};
    int32_t kind = 0;
    double width = 0.0;
    double angle = 0.0;
    double distance = 0.0;
};

class CFinishCharacter final : public CCommand<CommandKind::FinishCharacter, CFinishCharacter> {
public:
    void Execute(Surface* surface) override;
    int32_t mode = 0;
    uint32_t options = 0;
    uint32_t userValue1 = 0;
    uint32_t userValue2 = 0;
};

class CSetRectangleForPainter final
    : public CCommand<CommandKind::SetRectangleForPainter, CSetRectangleForPainter> {
public:
    void Execute(Surface* surface) override;
    int32_t slot = 0;
    double values[5] = {};
};

class CSetNullColor final : public CCommand<CommandKind::SetNullColor, CSetNullColor> {
public:
    void Execute(Surface* surface) override;
    int32_t slot = 0;
};

class CSetClassicPainter final
    : public CCommand<CommandKind::SetClassicPainter, CSetClassicPainter, CReferenceCommand> {
public:
    void Execute(Surface* surface) override;
    bool UsesReference() const override { return noTexture == 0; }
    int32_t slot = 0;
    ClassicRecord classic{};
    TextureRecord texture{};
    TextureStyle style{};
    uint8_t noParameters = 0;
    uint8_t noTexture = 0;
};

class CSetColor final : public CCommand<CommandKind::SetColor, CSetColor> {
public:
    void Execute(Surface* surface) override;
    int32_t slot = 0;
    uint32_t colour = 0;
};

class CSetSoftShadowColor final
    : public CCommand<CommandKind::SetSoftShadowColor, CSetSoftShadowColor> {
public:
    void Execute(Surface* surface) override;
    int32_t knockOut = 0;
    double softness = 0.0;
    uint32_t colour = 0;
    double shiftX = 0.0;
    double shiftY = 0.0;
    double extra = 0.0;
};

// Ramp and bevel commands: a painter record, the texture callback, the
// style block and the host reference, if any (kept only as a marker).
template <CommandKind K, class Derived, class Record>
class CSetTexturedPainter : public CCommand<K, Derived, CReferenceCommand> {
public:
    bool UsesReference() const override { return hasReference != 0; }
    // The reference area as the painter's user value, or null.
    const ImageReference* GetReference() const {
        return hasReference ? reinterpret_cast<const ImageReference*>(this->reference.bytes)
                            : nullptr;
    }
    void Store(int32_t slotValue, const Record& recordValue, TextureCallback callbackValue,
               const TextureStyle& styleValue, const ImageReference* host, uint32_t size) {
        slot = slotValue;
        record = recordValue;
        callback = callbackValue;
        style = styleValue;
        hasReference = reinterpret_cast<uintptr_t>(host);
        this->reference.CopyFrom(host, size);
    }

    int32_t slot = 0;
    Record record{};
    TextureCallback callback = nullptr;
    TextureStyle style{};
    uintptr_t hasReference = 0;
};

class CSetRamp final : public CSetTexturedPainter<CommandKind::SetRamp, CSetRamp, RampRecord> {
public:
    void Execute(Surface* surface) override;
};

class CSetBevel final
    : public CSetTexturedPainter<CommandKind::SetBevel, CSetBevel, BevelRecord> {
public:
    void Execute(Surface* surface) override;
};

template <CommandKind K, class Derived, class Base>
CFunction* CCommand<K, Derived, Base>::Clone() const {
    return new (std::nothrow) Derived(static_cast<const Derived&>(*this));
}
