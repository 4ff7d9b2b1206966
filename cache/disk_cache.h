// cache/disk_cache.h — the disk cache of character outline blocks: the
// second level, behind the memory cache (memory_cache.h).
//
// It is the generic cache over `OMFactory`, one factory per entry, with a
// budget of 268,435,456 file bytes. A factory builds its block on first
// demand, keeps it in memory while anyone holds it, writes it to a file of
// its own in the cache directory when the last holder gives it back, reads
// it from there when it is asked for again, and deletes the file when the
// entry is evicted or the cache destroyed.
//
// Factory states (block in memory / file written):
//
//     new              none    no    swap-in
//     in use, unstored loaded  no    first GetData (built)
//     stored           none    yes   last Release, the file opened
//     in use, stored   loaded  yes   GetData while stored (read back)
//     lost             none    no    last Release, the file did not open;
//                                    a file that could no longer be read
//
// From "lost" the next GetData builds the block again under a new name. The
// budget is charged with `diskSize`: the block size from the moment it is
// written or read back, 0 while a block is built and used before its first
// write, and 0 again after the last release of a read-back block (its file
// stays).
//
// Threads: the factory operations run under the disk cache's lock (taken by
// its Get and Release, and by its replacement pass, which deletes files from
// the cache's background executor). The sequence counter of file names and
// the shared scratch of the block builder are used only under that lock.
// The memory cache calls in holding its own lock first; the disk cache never
// calls the memory cache.
#pragma once

#include <cstdint>
#include <string>

#include "cache/cache_implementation.h"
#include "cache/greedy_cra.h"
#include "outline/block_source.h"
#include "outline/outline_request.h"

class OMFactory {
public:
    // The first factory of the process reserves the shared glyph scratch.
    OMFactory();
    virtual ~OMFactory();  // frees the block; deletes the file when stored
    OMFactory(const OMFactory&) = delete;
    OMFactory& operator=(const OMFactory&) = delete;

    // The block: from memory, read back from the file, or built.
    void GetData(const OMTicket& ticket, OMData& out);
    // One use of the block given back; the last one stores and frees it. A
    // factory without a name (OUTLINE_NO_CACHE) frees the caller's block.
    void Release(OMData& handle);
    [[nodiscard]] std::uint32_t GetCost() const { return diskSize; }

    std::string name;            // file name; empty when the block is not stored
    std::uint32_t diskSize = 0;  // bytes charged to the disk budget
    bool onDisk = false;         // the file holds the block
    OMData block{};              // the block in memory, (null, 0) when not loaded
    std::int32_t useCount = 0;   // holders of the in-memory block
    // What the file was written with: a block read back must match both.
    std::uint32_t storedSize = 0;
    std::uint64_t storedDigest = 0;

private:
    [[nodiscard]] bool ReadBack(OMData& out);
    void Build(const OMTicket& ticket, OMData& out);
    void Store();
};

struct OMMetaFactory {
    // A new factory with an empty name and every field zero; false when it
    // could not be allocated.
    static bool MakeFactory(OMFactory*& out);
};

using CharacterDiskCache =
    CacheImplementation<OMTicket, OMData, OMFactory, OMMetaFactory, Greedy_CRA>;

namespace tr {

inline constexpr std::uint32_t kDiskCacheBudget = 268435456;
// Eight-byte items the shared glyph scratch reserves (262,144 bytes).
inline constexpr std::size_t kDiskScratchItems = 32768;

// The block of a ticket through the disk cache; (null, 0) without a disk
// cache or when the cache's Get fails.
OMData DiskCacheGet(const OMTicket& ticket);
// Gives a handle from DiskCacheGet back; 0 without a disk cache, otherwise
// the cache's Release (1 when the handle was recognised).
int DiskCacheRelease(OMData& handle);

// Makes the disk cache unless it exists; true only when this call made it.
bool CreateDiskCache();
// Destroys the disk cache (deleting the files of its entries); true when it
// existed.
bool DestroyDiskCache();

// The cache, or null; for statistics and tests.
CharacterDiskCache* GetDiskCache();

// "<temporary directory>/CG Cache/", built once when the library is loaded.
const std::string& DiskCacheDirectory();

}  // namespace tr
