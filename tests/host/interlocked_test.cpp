// Tests of the interlocked count helpers.
#include "host/interlocked.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <latch>
#include <thread>
#include <vector>

namespace {

using vantor::utility::InterlockedDecrement;
using vantor::utility::InterlockedIncrement;
using vantor::utility::InterlockedRead;

TEST(InterlockedTest, ReturnTheNewValue) {
    int32_t count = 0;
    EXPECT_EQ(InterlockedIncrement(count), 1);
    EXPECT_EQ(InterlockedIncrement(count), 2);
    EXPECT_EQ(InterlockedDecrement(count), 1);
    EXPECT_EQ(InterlockedDecrement(count), 0);
    EXPECT_EQ(InterlockedDecrement(count), -1);
    EXPECT_EQ(count, -1);

    uint32_t unsignedCount = 0;
    EXPECT_EQ(InterlockedDecrement(unsignedCount), 0xFFFFFFFFu);
    EXPECT_EQ(InterlockedIncrement(unsignedCount), 0u);
}

TEST(InterlockedTest, ConcurrentUpdatesAreNotLost) {
    constexpr int kThreads = 4;
    constexpr int kPerThread = 50000;
    int32_t count = 0;
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            for (int i = 0; i < kPerThread; ++i) {
                // Half the threads count up twice per step, half down once.
                if (t % 2 == 0) {
                    InterlockedIncrement(count);
                    InterlockedIncrement(count);
                } else {
                    InterlockedDecrement(count);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(InterlockedRead(count), (kThreads / 2) * kPerThread * (2 - 1));
}

// The release pattern: n holders let go at once, exactly one is the last.
TEST(InterlockedTest, ExactlyOneReleaseIsTheLast) {
    for (int round = 0; round < 200; ++round) {
        constexpr int kHolders = 4;
        uint32_t references = kHolders;
        std::atomic<int> last{0};
        std::latch start(kHolders);
        std::vector<std::thread> holders;
        for (int h = 0; h < kHolders; ++h) {
            holders.emplace_back([&] {
                start.arrive_and_wait();
                if (InterlockedDecrement(references) == 0) {
                    last.fetch_add(1);
                }
            });
        }
        for (std::thread& holder : holders) {
            holder.join();
        }
        ASSERT_EQ(last.load(), 1) << "round " << round;
    }
}

}  // namespace
