// Tests of the coverage buffer recycler: size classes, reuse, the 30 MiB
// limit, unknown addresses and first use from several threads.
#include "memory/coverage_recycler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <latch>
#include <set>
#include <thread>
#include <vector>

namespace {

constexpr uint32_t kMiB = 1048576;

TEST(CoverageRecyclerTest, SizeClasses) {
    const std::pair<uint32_t, uint32_t> cases[] = {
        {0, 0}, {102400, 102400},  // 100 x 1024: the largest size passed through
        {102401, 1 * kMiB}, {1 * kMiB, 1 * kMiB}, {1 * kMiB + 1, 2 * kMiB}, {2 * kMiB + 1, 3 * kMiB},
        {3 * kMiB + 1, 5 * kMiB}, {5 * kMiB + 1, 9 * kMiB}, {9 * kMiB + 1, 13 * kMiB},
        {13 * kMiB + 1, 15 * kMiB}, {15 * kMiB, 15 * kMiB},
        {15 * kMiB + 1, 15 * kMiB + 1}, {0xFFFFFFFF, 0xFFFFFFFF},  // above the classes: unchanged
    };
    for (const auto& [bytes, expected] : cases) EXPECT_EQ(tr::RecyclerSizeClass(bytes), expected) << bytes;
}

// The first use runs in a fresh copy of this test program, where nothing has
// made the recycler yet: eight threads arrive at once and all their buffers
// go back to one recycler.
TEST(CoverageRecyclerTest, ConcurrentFirstUseMakesOneRecycler) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto check = [] {
        constexpr int kThreads = 8;
        std::vector<void*> buffers(kThreads);
        std::latch start(kThreads);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                start.arrive_and_wait();
                buffers[t] = tr::AllocateBuffer(2 * kMiB);
            });
        }
        for (std::thread& thread : threads) thread.join();
        const std::set<void*> distinct(buffers.begin(), buffers.end());
        if (distinct.size() != kThreads || distinct.count(nullptr) != 0) return false;
        for (void* buffer : buffers) {
            std::memset(buffer, 0x5A, 2 * kMiB);
            tr::RecycleBuffer(buffer);
        }
        return tr::PurgeRecycler() == kThreads * 2 * kMiB;
    };
    EXPECT_EXIT(std::exit(check() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

// A buffer comes back for any request of its class; each address counts
// once; at most 30 MiB are kept (15 + 15 fit, the next 1 does not).
TEST(CoverageRecyclerTest, ReuseByClassUnknownAddressesAndTheLimit) {
    tr::PurgeRecycler();
    void* first = tr::AllocateBuffer(4000000);
    ASSERT_NE(first, nullptr);
    std::memset(first, 1, 5 * kMiB);  // the whole class is usable
    tr::RecycleBuffer(first);
    tr::RecycleBuffer(first);  // no longer handed out
    int onTheStack = 0;
    tr::RecycleBuffer(&onTheStack);
    tr::RecycleBuffer(nullptr);
    void* second = tr::AllocateBuffer(5000000);
    EXPECT_EQ(second, first);
    tr::RecycleBuffer(second);
    EXPECT_EQ(tr::PurgeRecycler(), 5 * kMiB);
    EXPECT_EQ(tr::AllocateBuffer(0), nullptr);

    std::vector<void*> buffers;
    for (const uint32_t size : {15 * kMiB, 15 * kMiB, 1 * kMiB}) buffers.push_back(tr::AllocateBuffer(size));
    for (void* buffer : buffers) tr::RecycleBuffer(buffer);
    EXPECT_EQ(tr::PurgeRecycler(), 30 * kMiB);
}

}  // namespace
