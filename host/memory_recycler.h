// host/memory_recycler.h — the foundation library's memory recycler.
//
// Hands out large buffers and takes them back for reuse, so that a steady
// stream of same-sized requests (coverage buffers of similar characters) does
// not go to the system allocator each time.
//
// - Released buffers are kept, up to the recycler's size in bytes (`SetSize`,
//   0 at construction, so nothing is kept until a size is set). A released
//   buffer that would take the kept bytes above the size is freed at once.
// - A request is served from the smallest kept buffer whose size is at least
//   the request and at most twice it — so a small request never pins a much
//   larger buffer — and otherwise from the system allocator.
// - `Purge(keepBytes)` frees kept buffers, largest first, until at most
//   `keepBytes` remain kept, and returns the number of bytes freed.
//   `Purge(0)` frees everything kept. Buffers in use are never touched.
//
// Buffers are aligned to 64 bytes. `MemoryBuffer::size` is the buffer's real
// size, which may exceed the request when a kept buffer was reused; the
// handle must come back unchanged to `RecycleBuffer`. Buffers still in use
// when the recycler is destroyed are not freed by it. All operations are
// thread-safe.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>

namespace Talc {

struct MemoryBuffer {
    void* address = nullptr;
    uint32_t size = 0;  // bytes
};

class MemoryRecycler {
public:
    MemoryRecycler() = default;
    ~MemoryRecycler();
    MemoryRecycler(const MemoryRecycler&) = delete;
    MemoryRecycler& operator=(const MemoryRecycler&) = delete;

    // Sets the most bytes kept for reuse; kept buffers beyond it are freed.
    void SetSize(uint32_t bytes);
    [[nodiscard]] uint32_t GetSize() const;

    // A buffer of at least `bytes` bytes; an empty handle (null address) for
    // a request of 0 bytes or when memory is exhausted.
    [[nodiscard]] MemoryBuffer AllocateBuffer(uint32_t bytes);

    // Takes a buffer back and clears the handle. An empty handle is ignored.
    void RecycleBuffer(MemoryBuffer& buffer);

    // Frees kept buffers down to `keepBytes`; returns the bytes freed.
    uint32_t Purge(uint32_t keepBytes);

    [[nodiscard]] uint32_t GetKeptBytes() const;

private:
    // Frees kept buffers, largest first, until keptBytes_ <= limit.
    uint32_t TrimTo(uint32_t limit);

    mutable std::mutex mutex_;
    std::multimap<uint32_t, void*> kept_;  // by size
    uint32_t sizeLimit_ = 0;
    uint32_t keptBytes_ = 0;  // <= sizeLimit_
};

}  // namespace Talc
