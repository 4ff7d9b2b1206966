// cache/disk_cache.cpp — `OMFactory`, the process-wide disk cache and its
// client functions.
//
// File names are "17Character_<n>" with n from a process-wide counter that
// starts at 0 when the library is loaded, grows at every name assigned (also
// when the build then fails) and is never stored: each process starts again
// at 0 and overwrites the files of an earlier one as it reuses their names.
// Files left by an earlier process are neither read nor deleted.
#include "cache/disk_cache.h"

#include <atomic>
#include <new>
#include <vector>

#include "cache/block_file.h"
#include "cache/process_cache_slot.h"
#include "host/file.h"
#include "outline/outline_builder.h"

namespace {

constexpr char kCacheFolder[] = "CG Cache/";
constexpr char kNamePrefix[] = "17Character_";

// Built when the library is loaded, from the temporary directory of that
// moment; later changes of the environment do not move the cache.
const std::string cacheDirectory =
    Talc::PathUtils::AddTrailingSlash(Talc::PathUtils::GetTempDirectory()) + kCacheFolder;

tr::ProcessCacheSlot<CharacterDiskCache, OMTicket, OMData> DiskCache;
std::atomic<std::uint32_t> nextFileNumber{0};

// The host's glyph data of every build the disk cache makes; one build at a
// time, under the disk cache's lock.
std::vector<std::uint64_t>& GlyphScratch() {
    static std::vector<std::uint64_t> scratch;
    return scratch;
}

// An unusually large glyph grows the scratch; give that back rather than
// keep it for the life of the process.
void TrimGlyphScratch() {
    std::vector<std::uint64_t>& scratch = GlyphScratch();
    if (scratch.capacity() > tr::kDiskScratchItems) {
        std::vector<std::uint64_t>().swap(scratch);
        try {
            scratch.reserve(tr::kDiskScratchItems);
        } catch (const std::bad_alloc&) {
            // The next build grows it as far as it needs.
        }
    }
}

std::string PathOf(const std::string& name) { return cacheDirectory + name; }

}  // namespace

OMFactory::OMFactory() {
    std::vector<std::uint64_t>& scratch = GlyphScratch();
    if (scratch.capacity() < tr::kDiskScratchItems) {
        try {
            scratch.reserve(tr::kDiskScratchItems);
        } catch (const std::bad_alloc&) {
            // Builds grow the scratch as far as they need.
        }
    }
}

OMFactory::~OMFactory() {
    delete[] block.pointer;
    if (onDisk) {
        (void)Talc::File::Delete(PathOf(name));  // a failure leaves a stray file, nothing worse
    }
}

void OMFactory::GetData(const OMTicket& ticket, OMData& out) {
    if (block.pointer != nullptr) {
        useCount += 1;
        out = block;
        return;
    }
    if (onDisk) {
        if (ReadBack(out)) {
            return;
        }
        onDisk = false;  // unreadable: build again, under a new name
    }
    Build(ticket, out);
}

bool OMFactory::ReadBack(OMData& out) {
    OMData loaded = tr::ReadBlockFile(PathOf(name));
    if (loaded.pointer != nullptr &&
        (loaded.size != storedSize || tr::BlockDigest(loaded.pointer, loaded.size) != storedDigest)) {
        delete[] loaded.pointer;  // the file changed since it was written
        loaded = OMData{};
    }
    useCount = 0;
    block = loaded;
    diskSize = loaded.size;
    if (loaded.pointer == nullptr) {
        return false;
    }
    useCount = 1;
    out = block;
    return true;
}

void OMFactory::Build(const OMTicket& ticket, OMData& out) {
    if ((ticket.flags & OUTLINE_NO_CACHE) != 0) {
        name.clear();
    } else {
        name = kNamePrefix + std::to_string(nextFileNumber.fetch_add(1, std::memory_order_relaxed));
    }
    const OMData built = tr::BuildOutlineBlock(ticket, GlyphScratch());
    TrimGlyphScratch();
    useCount = 0;
    if (built.pointer != nullptr && !name.empty()) {
        useCount = 1;
        block = built;
    }
    out = built;
}

void OMFactory::Release(OMData& handle) {
    if (name.empty()) {
        // Built for one caller and not kept: the handle owns the block.
        delete[] handle.pointer;
        handle = OMData{};
        return;
    }
    if (useCount < 1 || handle.pointer != block.pointer) {
        return;
    }
    useCount -= 1;
    if (useCount > 0) {
        return;
    }
    Store();
    delete[] block.pointer;
    block = OMData{};
}

// The last use ended: write the block unless its file already holds it.
void OMFactory::Store() {
    if (onDisk) {
        diskSize = 0;  // read back: the file stays, the budget no longer pays
        return;
    }
    if (!tr::WriteBlockFile(PathOf(name), block)) {
        diskSize = 0;
        return;
    }
    diskSize = block.size;
    storedSize = block.size;
    storedDigest = block.pointer != nullptr ? tr::BlockDigest(block.pointer, block.size) : 0;
    onDisk = true;
}

bool OMMetaFactory::MakeFactory(OMFactory*& out) {
    out = new (std::nothrow) OMFactory();
    return out != nullptr;
}

namespace tr {

OMData DiskCacheGet(const OMTicket& ticket) { return DiskCache.Get(ticket); }

int DiskCacheRelease(OMData& handle) { return DiskCache.Release(handle); }

bool CreateDiskCache() { return DiskCache.Create(kDiskCacheBudget); }

bool DestroyDiskCache() { return DiskCache.Destroy(); }

CharacterDiskCache* GetDiskCache() { return DiskCache.Peek(); }

const std::string& DiskCacheDirectory() { return cacheDirectory; }

}  // namespace tr
