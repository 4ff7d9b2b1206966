// outline/block_source.h — where `COutline2` gets blocks from and how it
// gives them back; also the block handle `OMData` that the character caches
// hand out.
//
// This pair is the one seam between the outline holder and the character
// caches. A request with OUTLINE_NO_CACHE is built directly (a private
// allocation the holder frees with delete[]); any other request asks the
// memory cache, and its block goes back there. Without caches such a request
// gets no block: the host creates the caches (CreateCharacterCaches) before
// it renders.
#pragma once

#include <cstdint>

#include "outline/outline_request.h"

// A block handle: pointer to a character outline block and its size.
struct OMData {
    std::uint8_t* pointer = nullptr;
    std::uint32_t size = 0;
};

// The caches' handle index order: size first, then the pointer value.
inline bool operator<(const OMData& a, const OMData& b) {
    if (a.size != b.size) return a.size < b.size;
    return reinterpret_cast<std::uintptr_t>(a.pointer) < reinterpret_cast<std::uintptr_t>(b.pointer);
}

// "No data": a handle without a block, whatever its size says.
inline bool IsNullHandle(const OMData& handle) { return handle.pointer == nullptr; }

namespace tr {

// Fetches the block for a request; sets fromCache to say how it must be
// released. A null handle means the character has no outline.
OMData FetchOutlineBlock(const OutlineRequest& request, bool& fromCache);

// Releases a handle obtained from FetchOutlineBlock; a null handle is fine.
void ReleaseOutlineBlock(OMData handle, bool fromCache);

}  // namespace tr
