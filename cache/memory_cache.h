// cache/memory_cache.h — the memory cache of character outline blocks: the
// first place a block is looked for, in front of the disk cache
// (disk_cache.h).
//
// It is the generic cache over `OMemFactory`, one factory per entry, with a
// budget of 4,194,304 bytes of blocks. A factory builds nothing: on its first
// GetData it borrows the block from the disk cache and keeps it for as long
// as the entry stays cached, handing the same pointer to every holder. The
// memory cache thus decides which blocks stay in the process's memory, the
// disk cache which stay in files. When an entry is evicted (or the memory
// cache destroyed) its factory gives the block back to the disk cache, which
// writes it to its file when no other holder remains.
//
// Threads: Get, Release and the replacement pass hold the memory cache's
// lock and call the disk cache inside it; the order is always memory cache
// lock, then disk cache lock.
#pragma once

#include <cstdint>

#include "cache/cache_implementation.h"
#include "cache/greedy_cra.h"
#include "outline/block_source.h"
#include "outline/outline_request.h"

class OMemFactory {
public:
    OMemFactory() = default;
    virtual ~OMemFactory();  // gives the held block back to the disk cache
    OMemFactory(const OMemFactory&) = delete;
    OMemFactory& operator=(const OMemFactory&) = delete;

    // Borrows the block from the disk cache on first use; counts the use.
    void GetData(const OMTicket& ticket, OMData& out);
    // Counts a use of the held block back (the block stays held); any other
    // handle goes on to the disk cache. True.
    bool Release(OMData& handle);
    [[nodiscard]] std::uint32_t GetCost() const { return held.size; }

    OMData held{};              // borrowed from the disk cache; (null, 0) before
    std::int32_t useCount = 0;  // GetData calls not yet matched by a Release
};

struct OMemMetaFactory {
    // A new factory with every field zero; false when it could not be
    // allocated.
    static bool MakeFactory(OMemFactory*& out);
};

using CharacterMemoryCache =
    CacheImplementation<OMTicket, OMData, OMemFactory, OMemMetaFactory, Greedy_CRA>;

namespace tr {

inline constexpr std::uint32_t kMemoryCacheBudget = 4194304;

// The block of a ticket; (null, 0) without a memory cache or when its Get
// fails. Every holder of one entry receives the same pointer; the block is
// read-only and stays valid until it is given back.
OMData MemoryCacheGet(const OMTicket& ticket);
// Gives a handle from MemoryCacheGet back; 0 without a memory cache,
// otherwise 1 when the handle was recognised, 0 when not (nothing changes).
int MemoryCacheRelease(OMData& handle);

// Makes the disk cache unless it exists, then the memory cache unless it
// exists; true only when this call made the memory cache.
bool CreateCharacterCacheLevels();
// Destroys the memory cache (its blocks go back to the disk cache), then the
// disk cache; true when the disk cache existed.
bool DestroyCharacterCacheLevels();

// The cache, or null; for statistics and tests.
CharacterMemoryCache* GetMemoryCache();

}  // namespace tr
