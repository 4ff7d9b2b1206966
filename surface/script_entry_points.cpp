// surface/script_entry_points.cpp — the exported command-script calls.
#include <new>

#include "surface/entry_guard.h"
#include "surface/script.h"
#include "surface/surface.h"
#include "titlerender.h"

namespace {

CScript* Attach(Surface* surface, const ScriptCallbacks* callbacks, bool recordOnly) {
    if (!surface || !callbacks) return nullptr;
    auto* script = new (std::nothrow) CScript(*callbacks);
    if (!script) return nullptr;
    surface->script = script;
    if (recordOnly) surface->execute = 0;
    return script;
}

}  // namespace

extern "C" {

CScript* AttachScript(Surface* surface, const ScriptCallbacks* callbacks) {
    return Attach(surface, callbacks, false);
}

CScript* AttachRecordingScript(Surface* surface, const ScriptCallbacks* callbacks) {
    return Attach(surface, callbacks, true);
}

void PlayScript(const SurfaceDescriptor* descriptor, CScript* script, int32_t userValue) {
    if (!script) return;
    tr::Guarded([&] { script->Play(descriptor, userValue == -1 ? 0 : userValue); });
}

void DeleteScript(CScript* script) { delete script; }

CScript* CloneScript(const CScript* script) {
    if (!script) return nullptr;
    return tr::Guarded<CScript*>(nullptr, [&] { return script->Clone(); });
}

void AdjustScript(CScript* script, uint32_t operation, const double* value) {
    if (!script || !value) return;
    tr::Guarded([&] { script->Adjust(operation, *value); });
}

}  // extern "C"
