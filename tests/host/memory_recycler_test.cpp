// Tests of the memory recycler: reuse, the kept-bytes limit and purge.
#include "host/memory_recycler.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace {

using Talc::MemoryBuffer;
using Talc::MemoryRecycler;

TEST(MemoryRecyclerTest, RecycledBufferComesBackForTheSameSize) {
    MemoryRecycler recycler;
    recycler.SetSize(10 << 20);
    MemoryBuffer first = recycler.AllocateBuffer(1 << 20);
    ASSERT_NE(first.address, nullptr);
    EXPECT_EQ(first.size, 1u << 20);
    std::memset(first.address, 0xAB, first.size);
    void* const address = first.address;

    recycler.RecycleBuffer(first);
    EXPECT_EQ(first.address, nullptr);  // the handle is cleared
    EXPECT_EQ(first.size, 0u);
    EXPECT_EQ(recycler.GetKeptBytes(), 1u << 20);

    MemoryBuffer second = recycler.AllocateBuffer(1 << 20);
    EXPECT_EQ(second.address, address);
    EXPECT_EQ(recycler.GetKeptBytes(), 0u);
    recycler.RecycleBuffer(second);
}

TEST(MemoryRecyclerTest, RequestIsServedByAKeptBufferOfAtLeastItsSizeAndAtMostTwice) {
    struct Case {
        uint32_t kept;
        uint32_t request;
        bool reused;
    };
    const Case cases[] = {
        {3000, 3000, true}, {3000, 2000, true}, {3000, 1500, true},
        {3000, 1499, false},  // 3000 > 2 x 1499: a small request does not pin a large buffer
        {3000, 3001, false},  // too small
    };
    for (const Case& c : cases) {
        MemoryRecycler recycler;
        recycler.SetSize(1 << 20);
        MemoryBuffer kept = recycler.AllocateBuffer(c.kept);
        void* const keptAddress = kept.address;
        recycler.RecycleBuffer(kept);
        MemoryBuffer got = recycler.AllocateBuffer(c.request);
        ASSERT_NE(got.address, nullptr);
        EXPECT_EQ(got.address == keptAddress, c.reused) << c.kept << " for " << c.request;
        // The handle tells the real size, which is what the caller may use.
        EXPECT_EQ(got.size, c.reused ? c.kept : c.request);
        std::memset(got.address, 0, got.size);
        EXPECT_EQ(recycler.GetKeptBytes(), c.reused ? 0u : c.kept);
        recycler.RecycleBuffer(got);
    }
}

TEST(MemoryRecyclerTest, KeptBytesNeverExceedTheSizeAndPurgeReturnsBytesFreed) {
    MemoryRecycler recycler;
    recycler.SetSize(5000);
    MemoryBuffer a = recycler.AllocateBuffer(3000);
    MemoryBuffer b = recycler.AllocateBuffer(3000);
    MemoryBuffer c = recycler.AllocateBuffer(2000);
    recycler.RecycleBuffer(a);  // kept 3000
    recycler.RecycleBuffer(b);  // 6000 > 5000: freed
    EXPECT_EQ(recycler.GetKeptBytes(), 3000u);
    recycler.RecycleBuffer(c);  // exactly 5000: kept
    EXPECT_EQ(recycler.GetKeptBytes(), 5000u);

    EXPECT_EQ(recycler.Purge(0), 5000u);
    EXPECT_EQ(recycler.GetKeptBytes(), 0u);
    EXPECT_EQ(recycler.Purge(0), 0u);
}

TEST(MemoryRecyclerTest, NothingIsKeptBeforeASizeIsSet) {
    MemoryRecycler recycler;
    EXPECT_EQ(recycler.GetSize(), 0u);
    MemoryBuffer buffer = recycler.AllocateBuffer(100);
    recycler.RecycleBuffer(buffer);
    EXPECT_EQ(recycler.GetKeptBytes(), 0u);
}

TEST(MemoryRecyclerTest, PurgeAndShrinkingFreeTheLargestFirst) {
    MemoryRecycler recycler;
    recycler.SetSize(100000);
    std::vector<MemoryBuffer> buffers;
    for (const uint32_t size : {1000u, 2000u, 4000u, 8000u}) {
        buffers.push_back(recycler.AllocateBuffer(size));
    }
    for (MemoryBuffer& buffer : buffers) {
        recycler.RecycleBuffer(buffer);
    }
    EXPECT_EQ(recycler.GetKeptBytes(), 15000u);
    EXPECT_EQ(recycler.Purge(7000), 8000u);  // 7000 left
    recycler.SetSize(3500);                  // frees 4000, leaves 3000
    EXPECT_EQ(recycler.GetSize(), 3500u);
    EXPECT_EQ(recycler.GetKeptBytes(), 3000u);
    EXPECT_EQ(recycler.Purge(0), 3000u);
}

TEST(MemoryRecyclerTest, EmptyRequestsAndHandlesAndAlignment) {
    MemoryRecycler recycler;
    recycler.SetSize(1 << 20);
    MemoryBuffer none = recycler.AllocateBuffer(0);
    EXPECT_EQ(none.address, nullptr);
    recycler.RecycleBuffer(none);
    EXPECT_EQ(recycler.GetKeptBytes(), 0u);
    for (const uint32_t size : {1u, 63u, 65u, 1000u}) {
        MemoryBuffer buffer = recycler.AllocateBuffer(size);
        ASSERT_NE(buffer.address, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.address) % 64, 0u) << size;
        std::memset(buffer.address, 1, buffer.size);
        recycler.RecycleBuffer(buffer);
    }
}

TEST(MemoryRecyclerTest, ConcurrentUseKeepsTheAccounts) {
    MemoryRecycler recycler;
    constexpr uint32_t kLimit = 64 * 1024;
    recycler.SetSize(kLimit);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&recycler, t] {
            std::mt19937 random(1234 + t);
            std::vector<MemoryBuffer> held;
            for (int i = 0; i < 3000; ++i) {
                if (held.size() < 8 && (random() & 1)) {
                    MemoryBuffer buffer = recycler.AllocateBuffer(1024 * (1 + random() % 16));
                    ASSERT_NE(buffer.address, nullptr);
                    std::memset(buffer.address, t, buffer.size);  // nobody else owns it
                    held.push_back(buffer);
                } else if (!held.empty()) {
                    recycler.RecycleBuffer(held.back());
                    held.pop_back();
                }
                if (i % 500 == 0) {
                    recycler.Purge(kLimit / 2);
                }
            }
            for (MemoryBuffer& buffer : held) {
                recycler.RecycleBuffer(buffer);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const uint32_t kept = recycler.GetKeptBytes();
    EXPECT_LE(kept, kLimit);
    EXPECT_EQ(recycler.Purge(0), kept);
}

}  // namespace
