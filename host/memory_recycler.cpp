// host/memory_recycler.cpp — keeps released buffers for reuse, by size.
#include "host/memory_recycler.h"

#include <cstdlib>
#include <iterator>
#include <new>

namespace Talc {
namespace {

constexpr size_t kAlignment = 64;  // a cache line; enough for any vector load

void* AllocateAligned(uint32_t bytes) {
    // aligned_alloc wants a multiple of the alignment; widen first so the
    // rounding of a size near 2^32 cannot wrap.
    const size_t rounded = (static_cast<size_t>(bytes) + kAlignment - 1) / kAlignment * kAlignment;
    return std::aligned_alloc(kAlignment, rounded);
}

}  // namespace

MemoryRecycler::~MemoryRecycler() {
    for (const auto& [size, address] : kept_) {
        std::free(address);
    }
}

void MemoryRecycler::SetSize(uint32_t bytes) {
    std::lock_guard<std::mutex> lock(mutex_);
    sizeLimit_ = bytes;
    TrimTo(sizeLimit_);
}

uint32_t MemoryRecycler::GetSize() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return sizeLimit_;
}

MemoryBuffer MemoryRecycler::AllocateBuffer(uint32_t bytes) {
    if (bytes == 0) {
        return {};
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto found = kept_.lower_bound(bytes);
        if (found != kept_.end() && static_cast<uint64_t>(found->first) <= 2 * static_cast<uint64_t>(bytes)) {
            const MemoryBuffer buffer{found->second, found->first};
            keptBytes_ -= found->first;
            kept_.erase(found);
            return buffer;
        }
    }
    void* address = AllocateAligned(bytes);
    if (address == nullptr) {
        return {};
    }
    return {address, bytes};
}

void MemoryRecycler::RecycleBuffer(MemoryBuffer& buffer) {
    if (buffer.address == nullptr) {
        return;
    }
    void* address = buffer.address;
    const uint32_t size = buffer.size;
    buffer = {};
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (size <= sizeLimit_ - keptBytes_) {  // keptBytes_ <= sizeLimit_
            try {
                kept_.emplace(size, address);
                keptBytes_ += size;
                return;
            } catch (const std::bad_alloc&) {
                // No room for the bookkeeping: free the buffer instead.
            }
        }
    }
    std::free(address);
}

uint32_t MemoryRecycler::Purge(uint32_t keepBytes) {
    std::lock_guard<std::mutex> lock(mutex_);
    return TrimTo(keepBytes);
}

uint32_t MemoryRecycler::GetKeptBytes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return keptBytes_;
}

uint32_t MemoryRecycler::TrimTo(uint32_t limit) {
    uint32_t freed = 0;  // <= keptBytes_, which fits in 32 bits
    while (keptBytes_ > limit) {
        const auto largest = std::prev(kept_.end());
        std::free(largest->second);
        keptBytes_ -= largest->first;
        freed += largest->first;
        kept_.erase(largest);
    }
    return freed;
}

}  // namespace Talc
