// Tests of the coverage buffer recycler: size classes, reuse, the 30 MiB
// limit, unknown addresses and first use from several threads.
#include "memory/coverage_recycler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <latch>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

constexpr uint32_t kMiB = 1048576;

TEST(CoverageRecyclerTest, SizeClasses) {
    struct Case {
        uint32_t bytes;
        uint32_t expected;
    };
    const Case cases[] = {
        {0, 0},
        {1, 1},
        {102400, 102400},  // 100 x 1024: the largest size passed through
        {102401, 1 * kMiB},
        {1 * kMiB, 1 * kMiB},
        {1 * kMiB + 1, 2 * kMiB},
        {2 * kMiB + 1, 3 * kMiB},
        {3 * kMiB + 1, 5 * kMiB},
        {4000000, 5 * kMiB},
        {5 * kMiB + 1, 9 * kMiB},
        {9 * kMiB + 1, 13 * kMiB},
        {13 * kMiB + 1, 15 * kMiB},
        {15 * kMiB, 15 * kMiB},
        {15 * kMiB + 1, 15 * kMiB + 1},  // above the classes: unchanged
        {16000000, 16000000},
        {0xFFFFFFFF, 0xFFFFFFFF},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(tr::RecyclerSizeClass(c.bytes), c.expected) << c.bytes;
    }
}

// Runs `check` in a fresh copy of this test program, where nothing has used
// the recycler yet, and expects it to return true.
template <typename Check>
void ExpectInFreshProcess(Check check) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(check() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

TEST(CoverageRecyclerTest, PurgeBeforeAnyAllocationCreatesTheRecycler) {
    ExpectInFreshProcess([] {
        if (tr::PurgeRecycler() != 0) {
            return false;
        }
        // The recycler now exists with room to keep buffers.
        void* buffer = tr::AllocateBuffer(1 * kMiB);
        tr::RecycleBuffer(buffer);
        return buffer != nullptr && tr::PurgeRecycler() == 1 * kMiB;
    });
}

TEST(CoverageRecyclerTest, ConcurrentFirstUseMakesOneRecycler) {
    ExpectInFreshProcess([] {
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
        for (std::thread& thread : threads) {
            thread.join();
        }
        const std::set<void*> distinct(buffers.begin(), buffers.end());
        if (distinct.size() != kThreads || distinct.count(nullptr) != 0) {
            return false;
        }
        for (void* buffer : buffers) {
            std::memset(buffer, 0x5A, 2 * kMiB);
            tr::RecycleBuffer(buffer);
        }
        // All 16 MiB went back to the one recycler, which keeps them.
        return tr::PurgeRecycler() == kThreads * 2 * kMiB;
    });
}

TEST(CoverageRecyclerTest, BuffersOfOneSizeClassAreReused) {
    tr::PurgeRecycler();
    void* first = tr::AllocateBuffer(4000000);
    ASSERT_NE(first, nullptr);
    std::memset(first, 1, 5 * kMiB);  // the whole class is usable
    tr::RecycleBuffer(first);
    void* second = tr::AllocateBuffer(5000000);  // same class, 5 MiB
    EXPECT_EQ(second, first);
    tr::RecycleBuffer(second);
    EXPECT_EQ(tr::PurgeRecycler(), 5 * kMiB);
    EXPECT_EQ(tr::PurgeRecycler(), 0u);
}

TEST(CoverageRecyclerTest, UnknownAndRepeatedAddressesAreIgnored) {
    tr::PurgeRecycler();
    void* buffer = tr::AllocateBuffer(1 * kMiB);
    ASSERT_NE(buffer, nullptr);
    tr::RecycleBuffer(buffer);
    tr::RecycleBuffer(buffer);  // no longer handed out
    int onTheStack = 0;
    tr::RecycleBuffer(&onTheStack);
    tr::RecycleBuffer(nullptr);
    EXPECT_EQ(tr::PurgeRecycler(), 1 * kMiB);
    EXPECT_EQ(tr::AllocateBuffer(0), nullptr);
}

TEST(CoverageRecyclerTest, KeepsAtMostThirtyMebibytes) {
    struct Case {
        std::vector<uint32_t> recycleOrder;  // request sizes, already classes
        uint32_t expectedKept;
    };
    // Each buffer is kept if the kept total stays within 30 MiB, else freed.
    const Case cases[] = {
        {{15 * kMiB, 15 * kMiB, 1 * kMiB}, 30 * kMiB},
        {{1 * kMiB, 15 * kMiB, 15 * kMiB}, 16 * kMiB},
        {{13 * kMiB, 9 * kMiB, 9 * kMiB}, 22 * kMiB},
    };
    for (const Case& c : cases) {
        tr::PurgeRecycler();
        std::vector<void*> buffers;
        for (const uint32_t size : c.recycleOrder) {
            buffers.push_back(tr::AllocateBuffer(size));
            ASSERT_NE(buffers.back(), nullptr);
        }
        for (void* buffer : buffers) {
            tr::RecycleBuffer(buffer);
        }
        EXPECT_EQ(tr::PurgeRecycler(), c.expectedKept);
    }
}

TEST(CoverageRecyclerTest, ConcurrentAllocationAndRecycling) {
    tr::PurgeRecycler();
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            std::mt19937 random(99 + t);
            std::vector<std::pair<void*, uint32_t>> held;
            for (int i = 0; i < 400; ++i) {
                if (held.size() < 4 && (random() & 1)) {
                    const uint32_t bytes = 1000 + random() % (3 * kMiB);
                    void* buffer = tr::AllocateBuffer(bytes);
                    ASSERT_NE(buffer, nullptr);
                    std::memset(buffer, t, bytes);
                    held.emplace_back(buffer, bytes);
                } else if (!held.empty()) {
                    tr::RecycleBuffer(held.back().first);
                    held.pop_back();
                }
                if (i % 100 == 0) {
                    tr::PurgeRecycler();
                }
            }
            for (const auto& [buffer, bytes] : held) {
                tr::RecycleBuffer(buffer);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_LE(tr::PurgeRecycler(), 30 * kMiB);
    EXPECT_EQ(tr::PurgeRecycler(), 0u);
}

}  // namespace
