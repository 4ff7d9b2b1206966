// surface/render_lock.h — the process-wide lock held for the whole of every
// FinishCharacter, so characters are rendered one at a time in the process.
// Lock order: render lock, then the memory cache's lock, then the disk
// cache's lock.
#pragma once

#include "host/recursive_mutex.h"

namespace tr {

vantor::threads::RecursiveMutex& RenderLock();

}  // namespace tr
