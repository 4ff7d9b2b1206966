// surface/cache_entry_points.cpp — creation and destruction of the character
// outline caches: the disk cache, then the memory cache in front of it; torn
// down in the opposite order, so that every block the memory cache borrowed
// is back in the disk cache before that goes.
#include "cache/memory_cache.h"
#include "surface/entry_guard.h"
#include "titlerender.h"

extern "C" {

bool CreateCharacterCaches(void) {
    return tr::Guarded(false, [] { return tr::CreateCharacterCacheLevels(); });
}

bool DestroyCharacterCaches(void) {
    return tr::Guarded(false, [] { return tr::DestroyCharacterCacheLevels(); });
}

}  // extern "C"
