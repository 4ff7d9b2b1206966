// cache/memory_cache.cpp — `OMemFactory`, the process-wide memory cache, its
// client functions, and the creation and destruction of both levels.
#include "cache/memory_cache.h"

#include <new>

#include "cache/disk_cache.h"
#include "cache/process_cache_slot.h"

namespace {

tr::ProcessCacheSlot<CharacterMemoryCache, OMTicket, OMData> MemoryCache;

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

OMData MemoryCacheGet(const OMTicket& ticket) { return MemoryCache.Get(ticket); }

int MemoryCacheRelease(OMData& handle) { return MemoryCache.Release(handle); }

bool CreateCharacterCacheLevels() {
    (void)CreateDiskCache();
    return MemoryCache.Create(kMemoryCacheBudget);
}

bool DestroyCharacterCacheLevels() {
    (void)MemoryCache.Destroy();  // its blocks go back to the disk cache first
    return DestroyDiskCache();
}

CharacterMemoryCache* GetMemoryCache() { return MemoryCache.Peek(); }

}  // namespace tr
