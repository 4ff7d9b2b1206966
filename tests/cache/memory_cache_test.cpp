// Tests of the memory cache in front of the disk cache: borrowing blocks and
// giving them back, the shared contract, and threads against small budgets.
#include "cache/memory_cache.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "cache_level_contract.h"

namespace tr::test {
namespace {

namespace fs = std::filesystem;

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, CacheLevelContract, MemoryLevel);

// An entry borrows its block from the disk cache once. The last release keeps
// it unless the entry was invalidated or no flexible budget is left once the
// handle is back; a block given back is written to its file.
TEST(MemoryCache, BorrowsOnceAndGivesBackOnlyWhenInvalidatedOrInPanic) {
    const struct {
        const char* name;
        std::uint32_t budget;
        bool flushWhileHeld;
        bool givenBack;
    } cases[] = {{"plain", kMemoryCacheBudget, false, false},
                 {"flushed", kMemoryCacheBudget, true, true},
                 {"no budget", 0, false, true}};
    for (const auto& c : cases) {
        ASSERT_TRUE(CreateCharacterCacheLevels()) << c.name;  // fresh: no pass is due
        GetMemoryCache()->SetCacheSize(c.budget);
        SquareHost host;
        const OutlineRequest ticket = Ticket(host, 'a');
        OMData first = MemoryCacheGet(ticket);
        OMData second = MemoryCacheGet(ticket);
        auto* memory = LiveBox(*GetMemoryCache(), ticket);
        auto* disk = LiveBox(*GetDiskCache(), ticket);
        EXPECT_EQ(disk->refCount, 1) << c.name;
        EXPECT_EQ(disk->hitCount + disk->missCount, 1) << c.name;
        EXPECT_EQ(memory->cost, static_cast<std::int32_t>(first.size)) << c.name;
        if (c.flushWhileHeld) GetMemoryCache()->Flush();
        EXPECT_EQ(MemoryCacheRelease(first), 1) << c.name;
        EXPECT_EQ(MemoryCacheRelease(second), 1) << c.name;
        EXPECT_EQ(memory->factory == nullptr, c.givenBack) << c.name;
        EXPECT_EQ(disk->refCount, c.givenBack ? 0 : 1) << c.name;
        EXPECT_EQ(disk->factory->onDisk, c.givenBack) << c.name;
        ExpectBudgetInvariants(*GetMemoryCache(), c.name);
        ExpectBudgetInvariants(*GetDiskCache(), c.name);
        EXPECT_TRUE(DestroyCharacterCacheLevels());
    }
}

// Threads get and release blocks of 48 keys at random, holding up to three,
// against budgets of a few blocks, while another thread runs passes: every
// block is right, the invariants hold, no handle or file outlives the caches.
TEST(CacheLevelsConcurrency, RandomTrafficAgainstSmallBudgets) {
    constexpr int kKeys = 48;
    ASSERT_TRUE(CreateCharacterCacheLevels());
    SquareHost host;
    std::vector<OutlineRequest> tickets;
    std::vector<std::vector<std::uint8_t>> blocks;
    std::uint32_t largest = 0;
    for (int k = 0; k < kKeys; ++k) {
        tickets.push_back(Ticket(host, static_cast<std::uint16_t>('!' + k / 2), k % 2));
        blocks.push_back(ReferenceBlock(tickets.back()));
        largest = std::max(largest, static_cast<std::uint32_t>(blocks.back().size()));
    }
    GetMemoryCache()->SetCacheSize(3 * largest);
    GetDiskCache()->SetCacheSize(8 * largest);

    std::atomic<int> wrongBlocks{0}, failedGets{0}, failedReleases{0};
    auto traffic = [&](unsigned seed) {
        std::mt19937 random(seed);
        std::vector<std::pair<OMData, int>> held;
        for (int step = 0; step < 1500; ++step) {
            if (held.size() < 3 && (held.empty() || random() % 2 == 0)) {
                const int key = static_cast<int>(random() % kKeys);
                const OMData handle = MemoryCacheGet(tickets[key]);
                if (handle.pointer == nullptr) {
                    ++failedGets;
                    continue;
                }
                wrongBlocks += BytesOf(handle) != blocks[key];
                held.emplace_back(handle, key);
            } else {
                const std::size_t which = random() % held.size();
                failedReleases += MemoryCacheRelease(held[which].first) != 1;
                held.erase(held.begin() + static_cast<std::ptrdiff_t>(which));
            }
        }
        for (auto& [handle, key] : held) failedReleases += MemoryCacheRelease(handle) != 1;
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) threads.emplace_back(traffic, 1000u + t);
    std::thread passes([&] {
        for (int i = 0; i < 200; ++i) {
            GetMemoryCache()->RunGreedyPass();
            GetDiskCache()->RunGreedyPass();
            std::this_thread::yield();
        }
    });
    for (std::thread& thread : threads) thread.join();
    passes.join();

    EXPECT_EQ(wrongBlocks.load(), 0);
    EXPECT_EQ(failedGets.load(), 0);
    EXPECT_EQ(failedReleases.load(), 0);
    CharacterMemoryCache& memory = *GetMemoryCache();
    CharacterDiskCache& disk = *GetDiskCache();
    ExpectBudgetInvariants(memory, "memory");
    ExpectBudgetInvariants(disk, "disk");
    std::vector<std::string> files;
    {
        vantor::threads::ScopedLock memoryLock(memory.GetMutex());  // the lock order
        vantor::threads::ScopedLock diskLock(disk.GetMutex());
        int borrowed = 0, lent = 0;
        for (auto* box : BoxesOf(memory)) {
            EXPECT_EQ(box->refCount, 0) << "a client handle was lost";
            borrowed += box->factory != nullptr && box->factory->held.pointer != nullptr;
        }
        for (auto* box : BoxesOf(disk)) {
            lent += box->refCount;
            if (box->factory != nullptr && box->factory->onDisk) {
                files.push_back(FileOf(*box->factory));
            }
        }
        EXPECT_EQ(lent, borrowed) << "every disk handle is held by a memory entry";
    }
    EXPECT_TRUE(DestroyCharacterCacheLevels());
    for (const std::string& file : files) EXPECT_FALSE(fs::exists(file)) << file;
}

}  // namespace
}  // namespace tr::test
