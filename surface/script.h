// surface/script.h — CScript, a recorded sequence of describing calls.
//
// A host attaches a script to a surface; from then on every describing call
// on that surface is appended as a command before it is carried out (or
// instead, on a record-only surface). A script can be cloned, edited by a few
// numeric adjustments and played back onto a fresh surface. Playback hands
// each image-referencing command's private reference copy to the host's
// acquire callback before rendering and to its release callback afterwards.
// A script is used by one thread at a time; the host owns it.
#pragma once

#include <cstdint>
#include <list>

#include "surface/script_commands.h"
#include "titlerender.h"

class CScript {
public:
    CScript() = default;
    explicit CScript(const ScriptCallbacks& callbacks);
    // Destroys every command.
    virtual ~CScript();
    CScript(const CScript&) = delete;
    CScript& operator=(const CScript&) = delete;

    // A closed copy with a clone of every command and the same callbacks;
    // null when memory cannot be obtained.
    CScript* Clone() const;
    void Close() { closed = 1; }
    bool IsClosed() const { return closed != 0; }

    // Record operations: each does nothing while the script is closed.
    void RecordNewCharacter(uintptr_t sourceA, uint32_t characterFlags, uint32_t sourceC,
                            GlyphOutlineCallback sourceD, uint32_t characterCode);
    void RecordSetFace(const FaceParameters& parameters);
    void RecordSetFragment(const uint8_t* map, int32_t kind, double width, double angle,
                           double distance);
    void RecordFinishCharacter(int32_t mode, uint32_t options, uint32_t userValue1,
                               uint32_t userValue2);
    void RecordSetRectangle(int32_t slot, const double values[5]);
    void RecordSetNullColor(int32_t slot);
    void RecordSetColor(int32_t slot, uint32_t colour);
    void RecordSetSoftShadow(int32_t knockOut, double softness, uint32_t colour, double shiftX,
                             double shiftY, double extra);
    void RecordSetClassicPainter(int32_t slot, const ClassicRecord* classic,
                                 const TextureRecord* texture, const TextureStyle& style);
    void RecordSetRamp(int32_t slot, const RampRecord& ramp, TextureCallback callback,
                       const TextureStyle& style, const ImageReference* reference);
    void RecordSetBevel(int32_t slot, const BevelRecord& bevel, TextureCallback callback,
                        const TextureStyle& style, const ImageReference* reference);

    // Renders the commands onto a fresh surface on the descriptor.
    void Play(const SurfaceDescriptor* descriptor, int32_t userValue);
    // Numeric edits: 0 spread faces by v, 1 scale ramp shine widths, 2 turn
    // ramp shines, 3 turn ramps, 4 move faces in X, 5 in Y; others nothing.
    void Adjust(uint32_t operation, double value);

    const std::list<CFunction*>& GetCommands() const { return commands; }

    uint32_t word = 2;
    std::list<CFunction*> commands;  // owned, in recording order
    uint8_t closed = 0;
    void (*acquire)(void* reference, int32_t faceA, int32_t faceB, int32_t userValue) = nullptr;
    void (*release)(void* reference) = nullptr;
    uint32_t referenceSize = 0;
    int32_t userValue = 0;

private:
    template <class Command>
    Command* Append();
    void SpreadFaces(double value);
    void CallImageCallbacks(bool acquiring);
};
