// memory/coverage_recycler.h — the recycler of the rendering pass's coverage
// buffers.
//
// Buffers come from one process-wide `Talc::MemoryRecycler` that keeps up to
// 30 MiB of released buffers for reuse. Request sizes are rounded up into a
// few classes (`RecyclerSizeClass`) so that characters of similar size share
// buffers. Every buffer handed out is recorded by address, so that it can be
// given back by address alone; unknown addresses are ignored.
//
// The recycler and its address map are created on the first allocation or
// purge, safely when several threads arrive at once, and destroyed when the
// library is unloaded; no thread may be inside these functions then. After
// unload, AllocateBuffer returns null and PurgeRecycler 0.
#pragma once

#include <cstdint>

namespace tr {

// The recycler keeps at most this many bytes of released buffers (30 MiB).
inline constexpr uint32_t kRecyclerBytes = 31457280;

// A buffer of RecyclerSizeClass(bytes) bytes, or null (0 bytes, or memory
// exhausted).
[[nodiscard]] void* AllocateBuffer(uint32_t bytes);

// Gives back a buffer from AllocateBuffer; null and unknown addresses are
// ignored.
void RecycleBuffer(void* address);

// Frees every buffer the recycler keeps; returns the bytes freed.
uint32_t PurgeRecycler();

// Sizes up to 102,400 bytes are unchanged; larger ones go up to the first of
// 1, 2, 3, 5, 9, 13 and 15 MiB that is not smaller; above 15 MiB they are
// unchanged.
[[nodiscard]] uint32_t RecyclerSizeClass(uint32_t bytes);

}  // namespace tr
