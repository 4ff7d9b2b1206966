// Tests of the memory recycler: reuse, the kept-bytes limit and purge.
#include "host/memory_recycler.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

using Talc::MemoryBuffer;
using Talc::MemoryRecycler;

TEST(MemoryRecyclerTest, RequestIsServedByAKeptBufferOfAtLeastItsSizeAndAtMostTwice) {
    struct Case {
        uint32_t kept;
        uint32_t request;
        bool reused;
    };
    const Case cases[] = {
        {3000, 3000, true}, {3000, 1500, true},
        {3000, 1499, false},  // 3000 > 2 x 1499: a small request does not pin a large buffer
        {3000, 3001, false},
    };
    for (const Case& c : cases) {
        MemoryRecycler recycler;
        recycler.SetSize(1 << 20);
        MemoryBuffer kept = recycler.AllocateBuffer(c.kept);
        void* const keptAddress = kept.address;
        recycler.RecycleBuffer(kept);
        EXPECT_EQ(kept.address, nullptr) << "the handle is cleared";
        MemoryBuffer got = recycler.AllocateBuffer(c.request);
        ASSERT_NE(got.address, nullptr);
        EXPECT_EQ(got.address == keptAddress, c.reused) << c.kept << " for " << c.request;
        EXPECT_EQ(got.size, c.reused ? c.kept : c.request) << "the real size";
        std::memset(got.address, 0, got.size);
        EXPECT_EQ(recycler.GetKeptBytes(), c.reused ? 0u : c.kept);
        recycler.RecycleBuffer(got);
    }
}

TEST(MemoryRecyclerTest, KeptBytesStayWithinTheSizeAndPurgeFreesTheLargestFirst) {
    MemoryRecycler recycler;
    MemoryBuffer unkept = recycler.AllocateBuffer(100);
    recycler.RecycleBuffer(unkept);
    EXPECT_EQ(recycler.GetKeptBytes(), 0u) << "nothing is kept before a size is set";

    recycler.SetSize(16000);
    std::vector<MemoryBuffer> buffers;
    for (const uint32_t size : {1000u, 2000u, 4000u, 8000u, 3000u}) buffers.push_back(recycler.AllocateBuffer(size));
    for (MemoryBuffer& buffer : buffers) recycler.RecycleBuffer(buffer);
    EXPECT_EQ(recycler.GetKeptBytes(), 15000u) << "the last 3000 would exceed 16000: freed";
    EXPECT_EQ(recycler.Purge(7000), 8000u);  // 7000 left
    recycler.SetSize(3500);                  // frees 4000, leaves 3000
    EXPECT_EQ(recycler.GetKeptBytes(), 3000u);
    EXPECT_EQ(recycler.Purge(0), 3000u);
    EXPECT_EQ(recycler.Purge(0), 0u);
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

}  // namespace
