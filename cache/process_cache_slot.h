// cache/process_cache_slot.h — folder-private: the process-wide pointer to
// one cache level and the client calls through it.
//
// The memory and the disk level each keep one such slot. The pointer is
// atomic so that two threads creating a level at once cannot both succeed;
// a level that is absent answers Get with a null handle and Release with 0.
#pragma once

#include <atomic>
#include <cstdint>
#include <new>

namespace tr {

template <typename Cache, typename Key, typename Data>
class ProcessCacheSlot {
public:
    // The data of a key; a null handle without a cache or when Get fails.
    Data Get(const Key& key) const {
        Cache* cache = Peek();
        Data handle{};
        if (cache == nullptr || !cache->Get(key, handle)) return Data{};
        return handle;
    }

    // 0 without a cache, otherwise 1 when the cache recognised the handle.
    int Release(Data& handle) const {
        Cache* cache = Peek();
        if (cache == nullptr) return 0;
        return cache->Release(handle) ? 1 : 0;
    }

    // Makes the cache unless one exists; true only when this call made it.
    bool Create(std::uint32_t budget) {
        if (Peek() != nullptr) return false;
        auto* cache = new (std::nothrow) Cache(budget);
        if (cache == nullptr) return false;
        Cache* expected = nullptr;
        if (!pointer_.compare_exchange_strong(expected, cache, std::memory_order_acq_rel)) {
            delete cache;  // another thread made one meanwhile
            return false;
        }
        return true;
    }

    // Destroys the cache; true when it existed.
    bool Destroy() {
        Cache* cache = pointer_.exchange(nullptr, std::memory_order_acq_rel);
        if (cache == nullptr) return false;
        delete cache;
        return true;
    }

    Cache* Peek() const { return pointer_.load(std::memory_order_acquire); }

private:
    std::atomic<Cache*> pointer_{nullptr};
};

}  // namespace tr
