// outline/block_source.cpp — block fetch and release: the no-cache flag
// builds a private block, everything else goes through the memory cache.
#include "outline/block_source.h"

#include "cache/memory_cache.h"
#include "outline/outline_builder.h"

namespace tr {

OMData FetchOutlineBlock(const OutlineRequest& request, bool& fromCache) {
    if ((request.flags & OUTLINE_NO_CACHE) != 0) {
        fromCache = false;
        return BuildOutlineBlock(request);
    }
    fromCache = true;
    return MemoryCacheGet(request);
}

void ReleaseOutlineBlock(OMData handle, bool fromCache) {
    if (!fromCache) {
        delete[] handle.pointer;
        return;
    }
    // A null handle (nothing was fetched) is nobody's: skip the cache's lock.
    if (handle.pointer != nullptr) {
        (void)MemoryCacheRelease(handle);
    }
}

}  // namespace tr
