// surface/script.cpp — recording, cloning, playback and adjustment.
#include "surface/script.h"

#include <cstring>
#include <new>
#include <vector>

#include "paint/numeric.h"

namespace {

// Face offsets are host integers; adding to them wraps instead of
// overflowing.
int32_t AddWrapping(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

}  // namespace

CScript::CScript(const ScriptCallbacks& callbacks)
    : acquire(callbacks.acquire), release(callbacks.release),
      referenceSize(callbacks.referenceSize) {}

CScript::~CScript() {
    for (CFunction* command : commands) delete command;
    commands.clear();
}

CScript* CScript::Clone() const {
    auto* copy = new (std::nothrow) CScript();
    if (!copy) return nullptr;
    copy->closed = 1;
    copy->acquire = acquire;
    copy->release = release;
    copy->referenceSize = referenceSize;
    for (const CFunction* command : commands) {
        CFunction* clone = command->Clone();
        if (!clone) {
            delete copy;
            return nullptr;
        }
        copy->commands.push_back(clone);
    }
    return copy;
}

template <class Command>
Command* CScript::Append() {
    if (closed) return nullptr;
    auto* command = new (std::nothrow) Command();
    if (command) commands.push_back(command);
    return command;
}

void CScript::RecordNewCharacter(uintptr_t sourceA, uint32_t characterFlags, uint32_t sourceC,
                                 GlyphOutlineCallback sourceD, uint32_t characterCode) {
    if (auto* c = Append<CNewCharacterCallBack>()) {
        c->sourceA = sourceA;
        c->characterFlags = characterFlags;
        c->sourceC = sourceC;
        c->sourceD = sourceD;
        c->characterCode = characterCode;
    }
}

void CScript::RecordSetFace(const FaceParameters& parameters) {
    if (auto* c = Append<CSetFace>()) c->parameters = parameters;
}

void CScript::RecordSetFragment(const uint8_t* map, int32_t kind, double width, double angle,
                                double distance) {
    if (auto* c = Append<CSetFragment>()) {
        c->noMap = map ? 0 : 1;
        if (map) std::memcpy(c->map, map, sizeof c->map);
        c->kind = kind;
        c->width = width;
        c->angle = angle;
        c->distance = distance;
    }
}

void CScript::RecordFinishCharacter(int32_t mode, uint32_t options, uint32_t userValue1,
                                    uint32_t userValue2) {
    if (auto* c = Append<CFinishCharacter>()) {
        c->mode = mode;
        c->options = options;
        c->userValue1 = userValue1;
        c->userValue2 = userValue2;
    }
}

void CScript::RecordSetRectangle(int32_t slot, const double values[5]) {
    if (auto* c = Append<CSetRectangleForPainter>()) {
        c->slot = slot;
        std::memcpy(c->values, values, sizeof c->values);
    }
}

void CScript::RecordSetNullColor(int32_t slot) {
    if (auto* c = Append<CSetNullColor>()) c->slot = slot;
}

void CScript::RecordSetColor(int32_t slot, uint32_t colour) {
    if (auto* c = Append<CSetColor>()) {
        c->slot = slot;
        c->colour = colour;
    }
}

void CScript::RecordSetSoftShadow(int32_t knockOut, double softness, uint32_t colour,
                                  double shiftX, double shiftY, double extra) {
    if (auto* c = Append<CSetSoftShadowColor>()) {
        c->knockOut = knockOut;
        c->softness = softness;
        c->colour = colour;
        c->shiftX = shiftX;
        c->shiftY = shiftY;
        c->extra = extra;
    }
}

void CScript::RecordSetClassicPainter(int32_t slot, const ClassicRecord* classic,
                                      const TextureRecord* texture, const TextureStyle& style) {
    auto* c = Append<CSetClassicPainter>();
    if (!c) return;
    c->slot = slot;
    c->noParameters = classic ? 0 : 1;
    if (classic) c->classic = *classic;
    c->noTexture = texture ? 0 : 1;
    if (texture) {
        c->texture = *texture;
        c->reference.CopyFrom(reinterpret_cast<const ImageReference*>(texture->userValue),
                              referenceSize);
    }
    c->style = style;
}

void CScript::RecordSetRamp(int32_t slot, const RampRecord& ramp, TextureCallback callback,
                            const TextureStyle& style, const ImageReference* reference) {
    if (auto* c = Append<CSetRamp>()) c->Store(slot, ramp, callback, style, reference, referenceSize);
}

void CScript::RecordSetBevel(int32_t slot, const BevelRecord& bevel, TextureCallback callback,
                             const TextureStyle& style, const ImageReference* reference) {
    if (auto* c = Append<CSetBevel>()) c->Store(slot, bevel, callback, style, reference, referenceSize);
}

// Walks the commands in order, tracking the face offsets of the latest face
// command, and hands the reference area of every image command to the
// host's acquire (before rendering) or release (after).
void CScript::CallImageCallbacks(bool acquiring) {
    int32_t faceA = 0;
    int32_t faceB = 0;
    for (CFunction* command : commands) {
        const auto kind = static_cast<CommandKind>(command->GetKind());
        if (kind == CommandKind::SetFace) {
            const auto* face = static_cast<const CSetFace*>(command);
            faceA = face->faceA;
            faceB = face->faceB;
            continue;
        }
        if (kind != CommandKind::SetClassicPainter && kind != CommandKind::SetRamp &&
            kind != CommandKind::SetBevel) {
            continue;
        }
        auto* image = static_cast<CReferenceCommand*>(command);
        if (!image->UsesReference()) continue;
        if (acquiring) {
            void* area = image->reference.PointNameAtCopy();
            if (acquire) acquire(area, faceA, faceB, userValue);
        } else if (release) {
            release(image->reference.bytes);
        }
    }
}

void CScript::Play(const SurfaceDescriptor* descriptor, int32_t value) {
    userValue = value;
    CallImageCallbacks(true);
    if (Surface* surface = CreateSurface(descriptor)) {
        for (CFunction* command : commands) command->Execute(surface);
        CloseSurface(surface);
    }
    CallImageCallbacks(false);
}

// Sorts the face commands by X (adjacent exchanges of strictly greater
// pairs, so equal X keep their order) and moves the i-th by i × v / (n − 1).
void CScript::SpreadFaces(double value) {
    std::vector<CSetFace*> faces;
    for (CFunction* command : commands) {
        if (command->GetKind() == static_cast<int32_t>(CommandKind::SetFace)) {
            faces.push_back(static_cast<CSetFace*>(command));
        }
    }
    const std::size_t n = faces.size();
    if (n < 2) return;
    for (std::size_t pass = 0; pass + 1 < n; ++pass) {
        for (std::size_t i = 0; i + 1 < n - pass; ++i) {
            if (faces[i]->parameters.x > faces[i + 1]->parameters.x) {
                std::swap(faces[i], faces[i + 1]);
            }
        }
    }
    const double step = value / static_cast<double>(n - 1);
    for (std::size_t i = 0; i < n; ++i) {
        const double shift = static_cast<double>(i) * step;
        faces[i]->parameters.x += shift;
        faces[i]->faceA = AddWrapping(faces[i]->faceA, tr::TruncateToInt32(shift));
    }
}

void CScript::Adjust(uint32_t operation, double value) {
    if (operation == 0) {
        SpreadFaces(value);
        return;
    }
    for (CFunction* command : commands) {
        const auto kind = static_cast<CommandKind>(command->GetKind());
        if (kind == CommandKind::SetRamp) {
            RampRecord& ramp = static_cast<CSetRamp*>(command)->record;
            if (operation == 1) ramp.shineWidth *= value;
            if (operation == 2) ramp.shineAngle += value;
            if (operation == 3) ramp.angle += value;
        } else if (kind == CommandKind::SetFace) {
            auto* face = static_cast<CSetFace*>(command);
            if (operation == 4) {
                face->parameters.x += value;
                face->faceA = AddWrapping(face->faceA, tr::TruncateToInt32(value));
            }
            if (operation == 5) {
                face->parameters.y += value;
                face->faceB = AddWrapping(face->faceB, tr::TruncateToInt32(value));
            }
        }
    }
}
