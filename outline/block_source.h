// outline/block_source.h — folder-private: where `COutline2` gets blocks
// from and how it gives them back.
//
// This pair is the one seam between the outline holder and the character
// caches. Today every block is built directly (a private allocation the
// holder frees with delete[]); when the caches exist, FetchOutlineBlock asks
// the memory cache unless the request has OUTLINE_NO_CACHE, and
// ReleaseOutlineBlock hands cached blocks back to it.
#pragma once

#include <cstdint>

#include "outline/outline_request.h"

// A block handle: pointer to a character outline block and its size.
struct OMData {
    std::uint8_t* pointer = nullptr;
    std::uint32_t size = 0;
};

namespace tr {

// Fetches the block for a request; sets fromCache to say how it must be
// released. A null handle means the character has no outline.
OMData FetchOutlineBlock(const OutlineRequest& request, bool& fromCache);

// Releases a handle obtained from FetchOutlineBlock; a null handle is fine.
void ReleaseOutlineBlock(OMData handle, bool fromCache);

}  // namespace tr
