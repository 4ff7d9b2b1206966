// cache/memory_cache.cpp — `OMemFactory`, the process-wide memory cache, its
// client functions, and the creation and destruction of both levels.
#include "cache/memory_cache.h"

#include <atomic>
#include <new>

#include "cache/disk_cache.h"

namespace {

std::atomic<CharacterMemoryCache*> MemoryCache{nullptr};

}  // namespace

OMemFactory::~OMemFactory() {
    // A factory that never obtained a block has nothing to give back; the
    // disk cache would not recognise a null handle anyway.
    if (held.pointer != nullptr) {
        (void)tr::DiskCacheRelease(held);
    }
    held = OMData{};
}

void OMemFactory::GetData(const OMTicket& ticket, OMData& out) {
    if (held.pointer == nullptr) {
        held = tr::DiskCacheGet(ticket);
    }
    useCount += 1;
    out = held;
}

bool OMemFactory::Release(OMData& handle) {
    if (useCount > 0 && held.pointer != nullptr && handle.pointer == held.pointer) {
        useCount -= 1;
        return true;
    }
    (void)tr::DiskCacheRelease(handle);
    handle = OMData{};
    return true;
}

bool OMemMetaFactory::MakeFactory(OMemFactory*& out) {
    out = new (std::nothrow) OMemFactory();
    return out != nullptr;
}

namespace tr {

OMData MemoryCacheGet(const OMTicket& ticket) {
    CharacterMemoryCache* cache = MemoryCache.load(std::memory_order_acquire);
    OMData handle{};
    if (cache == nullptr || !cache->Get(ticket, handle)) {
        return OMData{};
    }
    return handle;
}

int MemoryCacheRelease(OMData& handle) {
    CharacterMemoryCache* cache = MemoryCache.load(std::memory_order_acquire);
    if (cache == nullptr) {
        return 0;
    }
    return cache->Release(handle) ? 1 : 0;
}

bool CreateCharacterCacheLevels() {
    (void)CreateDiskCache();
    if (MemoryCache.load(std::memory_order_acquire) != nullptr) {
        return false;
    }
    auto* cache = new CharacterMemoryCache(kMemoryCacheBudget);
    CharacterMemoryCache* expected = nullptr;
    if (!MemoryCache.compare_exchange_strong(expected, cache, std::memory_order_acq_rel)) {
        delete cache;  // another thread made one meanwhile
        return false;
    }
    return true;
}

bool DestroyCharacterCacheLevels() {
    if (CharacterMemoryCache* cache = MemoryCache.exchange(nullptr, std::memory_order_acq_rel)) {
        delete cache;
    }
    return DestroyDiskCache();
}

CharacterMemoryCache* GetMemoryCache() { return MemoryCache.load(std::memory_order_acquire); }

}  // namespace tr
