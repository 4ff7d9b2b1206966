// outline/block_source.cpp — block fetch and release. Until the character
// caches exist every request is served by the direct build, whatever its
// flags say; cached handles are therefore never handed out yet.
#include "outline/block_source.h"

#include "outline/outline_builder.h"

namespace tr {

OMData FetchOutlineBlock(const OutlineRequest& request, bool& fromCache) {
    fromCache = false;
    return BuildOutlineBlock(request);
}

void ReleaseOutlineBlock(OMData handle, bool fromCache) {
    if (fromCache) return;  // no cache hands out blocks yet
    delete[] handle.pointer;
}

}  // namespace tr
