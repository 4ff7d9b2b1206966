// surface/cache_entry_points.cpp — creation and destruction of the character
// outline caches.
//
// The two-level cache is not part of the library yet: outlines are built on
// every request, creation reports that no cache could be made and
// destruction that none existed.
#include "titlerender.h"

extern "C" {

bool CreateCharacterCaches(void) { return false; }

bool DestroyCharacterCaches(void) { return false; }

}  // extern "C"
