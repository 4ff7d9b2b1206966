// surface/render_lock.cpp — the render lock, constructed at library load.
#include "surface/render_lock.h"

namespace tr {
namespace {
vantor::threads::RecursiveMutex renderLock;
}  // namespace

vantor::threads::RecursiveMutex& RenderLock() { return renderLock; }

}  // namespace tr
