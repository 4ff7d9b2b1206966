// Tests of the memory cache in front of the disk cache: borrowing from the
// disk level, when a block goes back there, eviction to disk and read-back,
// the client contract shared with the disk cache, and many threads getting
// and releasing against small budgets while replacement passes run.
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

class MemoryCacheTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(CreateCharacterCacheLevels()); }
    void TearDown() override { DestroyCharacterCacheLevels(); }

    static CharacterMemoryCache& Memory() { return *GetMemoryCache(); }
    static CharacterDiskCache& Disk() { return *GetDiskCache(); }
};

TEST_F(MemoryCacheTest, AHitIsServedWithoutAskingTheDiskCacheAgain) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'A');
    OMData a = MemoryCacheGet(ticket);
    OMData b = MemoryCacheGet(ticket);
    ASSERT_NE(a.pointer, nullptr);
    EXPECT_EQ(b.pointer, a.pointer);
    auto* disk = LiveBox(Disk(), ticket);
    ASSERT_NE(disk, nullptr);
    EXPECT_EQ(disk->refCount, 1) << "borrowed once, for the entry";
    EXPECT_EQ(disk->hitCount + disk->missCount, 1);
    auto* memory = LiveBox(Memory(), ticket);
    EXPECT_EQ(memory->cost, static_cast<std::int32_t>(a.size));
    EXPECT_EQ(memory->factory->useCount, 2);

    EXPECT_EQ(MemoryCacheRelease(a), 1);
    EXPECT_EQ(MemoryCacheRelease(b), 1);
    EXPECT_EQ(memory->refCount, 0);
    EXPECT_EQ(memory->factory->held.pointer, a.pointer) << "the block stays in memory";
    EXPECT_EQ(disk->refCount, 1);
    EXPECT_FALSE(disk->factory->onDisk) << "nor is it written yet";
    ExpectBudgetInvariants(Memory(), "memory");
    ExpectBudgetInvariants(Disk(), "disk");
}

// The last release keeps the block borrowed unless the entry was invalidated
// or the memory cache has no flexible budget left once the handle is back (a
// budget of 0). Each case runs on fresh caches holding nothing else, so that
// no background pass is due.
TEST_F(MemoryCacheTest, TheLastReleaseGivesTheBlockBackOnlyWhenInvalidatedOrInPanic) {
    struct Case {
        const char* name;
        std::uint32_t budget;
        bool flushWhileHeld;
        bool givenBack;
    };
    const Case cases[] = {
        {"plain", kMemoryCacheBudget, false, false},
        {"flushed", kMemoryCacheBudget, true, true},
        {"no budget", 0, false, true},
    };
    for (const Case& c : cases) {
        DestroyCharacterCacheLevels();
        ASSERT_TRUE(CreateCharacterCacheLevels());
        Memory().SetCacheSize(c.budget);
        SquareHost host;
        const OutlineRequest ticket = Ticket(host, 'a');
        OMData handle = MemoryCacheGet(ticket);
        ASSERT_NE(handle.pointer, nullptr) << c.name;
        auto* memory = LiveBox(Memory(), ticket);
        if (c.flushWhileHeld) Memory().Flush();
        EXPECT_EQ(MemoryCacheRelease(handle), 1) << c.name;
        auto* disk = LiveBox(Disk(), ticket);
        EXPECT_EQ(memory->factory == nullptr, c.givenBack) << c.name;
        EXPECT_EQ(disk->refCount, c.givenBack ? 0 : 1) << c.name;
        EXPECT_EQ(disk->factory->onDisk, c.givenBack) << c.name << ": written when given back";
        ExpectBudgetInvariants(Memory(), c.name);
        ExpectBudgetInvariants(Disk(), c.name);
    }
}

TEST_F(MemoryCacheTest, EvictedBlocksAreWrittenAndReadBackFromDisk) {
    SquareHost host;
    std::vector<OutlineRequest> tickets;
    std::vector<std::vector<std::uint8_t>> blocks;
    for (std::uint16_t code = '0'; code <= '9'; ++code) {
        tickets.push_back(Ticket(host, code));
        OMData handle = MemoryCacheGet(tickets.back());
        blocks.push_back(BytesOf(handle));
        EXPECT_EQ(MemoryCacheRelease(handle), 1);
    }
    EvictUnreferenced(Memory());
    for (const OutlineRequest& ticket : tickets) {
        EXPECT_EQ(LiveBox(Memory(), ticket)->factory, nullptr);
        const OMFactory& disk = *LiveBox(Disk(), ticket)->factory;
        EXPECT_TRUE(disk.onDisk);
        EXPECT_TRUE(fs::exists(FileOf(disk)));
    }
    for (std::size_t i = 0; i < tickets.size(); ++i) {
        OMData handle = MemoryCacheGet(tickets[i]);
        EXPECT_EQ(BytesOf(handle), blocks[i]);
        EXPECT_NE(LiveBox(Disk(), tickets[i])->factory->block.pointer, nullptr) << "read back";
        EXPECT_EQ(MemoryCacheRelease(handle), 1);
    }
    EXPECT_EQ(host.Builds(), static_cast<int>(tickets.size())) << "each built once";
    ExpectBudgetInvariants(Memory(), "memory");
    ExpectBudgetInvariants(Disk(), "disk");
}

TEST_F(MemoryCacheTest, ANullBlockFromTheDiskCacheIsRetriedAtTheNextRequest) {
    SquareHost host;
    OutlineRequest ticket = Ticket(host, 'Z');
    ticket.glyphCallback = 0;  // nothing can be built
    EXPECT_EQ(MemoryCacheGet(ticket).pointer, nullptr);
    auto* memory = LiveBox(Memory(), ticket);
    ASSERT_NE(memory, nullptr) << "the entry stays, without data";
    EXPECT_EQ(memory->cost, 0);
    EXPECT_EQ(MemoryCacheGet(ticket).pointer, nullptr);
    EXPECT_EQ(memory->hitCount, 1);
    EXPECT_EQ(LiveBox(Disk(), ticket)->hitCount, 1) << "the disk cache was asked again";
    ExpectBudgetInvariants(Memory(), "memory");
}

// Several threads get and release blocks of a few dozen keys at random,
// holding up to a few each, against budgets of a few blocks, so that both
// caches evict all the time on their background executors while one thread
// also runs passes of its own. Every block handed out must be the right
// one; afterwards the budget invariants hold, no handle is left, and
// destroying the caches leaves no file behind.
TEST(CacheLevelsConcurrency, RandomTrafficAgainstSmallBudgets) {
    constexpr int kThreads = 4;
    constexpr int kSteps = 1500;
    constexpr int kKeys = 48;
    constexpr std::size_t kMaxHeld = 3;
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
        for (int step = 0; step < kSteps; ++step) {
            if (held.size() < kMaxHeld && (held.empty() || random() % 2 == 0)) {
                const int key = static_cast<int>(random() % kKeys);
                const OMData handle = MemoryCacheGet(tickets[key]);
                if (handle.pointer == nullptr) {
                    ++failedGets;
                    continue;
                }
                if (BytesOf(handle) != blocks[key]) ++wrongBlocks;
                held.emplace_back(handle, key);
            } else {
                const std::size_t which = random() % held.size();
                OMData handle = held[which].first;
                if (MemoryCacheRelease(handle) != 1) ++failedReleases;
                held.erase(held.begin() + static_cast<std::ptrdiff_t>(which));
            }
        }
        for (auto& [handle, key] : held) {
            if (MemoryCacheRelease(handle) != 1) ++failedReleases;
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) threads.emplace_back(traffic, 1000u + t);
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
        // Lock order as the caches take it: memory, then disk.
        vantor::threads::ScopedLock memoryLock(memory.GetMutex());
        vantor::threads::ScopedLock diskLock(disk.GetMutex());
        int borrowed = 0;
        for (auto* box : BoxesOf(memory)) {
            EXPECT_EQ(box->refCount, 0) << "a client handle was lost";
            if (box->factory != nullptr && box->factory->held.pointer != nullptr) ++borrowed;
        }
        int lent = 0;
        for (auto* box : BoxesOf(disk)) {
            lent += box->refCount;
            if (box->factory != nullptr && box->factory->onDisk) files.push_back(FileOf(*box->factory));
        }
        EXPECT_EQ(lent, borrowed) << "every disk handle is held by a memory entry";
    }
    EXPECT_TRUE(DestroyCharacterCacheLevels());
    for (const std::string& file : files) EXPECT_FALSE(fs::exists(file)) << file;
}

}  // namespace
}  // namespace tr::test
