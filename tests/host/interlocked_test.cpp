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

// Threads count a shared field up, then down again: no update is lost, and
// exactly one decrement sees the count reach zero, as a last release must.
TEST(InterlockedTest, UpdatesAreNotLostAndOneReleaseIsTheLast) {
    constexpr int kThreads = 4;
    constexpr int kEach = 50000;
    uint32_t count = 0;
    std::atomic<int> sawZero{0};
    std::latch up(kThreads + 1);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kEach; ++i) InterlockedIncrement(count);
            up.arrive_and_wait();
            for (int i = 0; i < kEach; ++i) sawZero += InterlockedDecrement(count) == 0;
        });
    }
    up.arrive_and_wait();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(sawZero.load(), 1);
    EXPECT_EQ(InterlockedRead(count), 0u);
    EXPECT_EQ(InterlockedDecrement(count), 0xFFFFFFFFu) << "unsigned counts wrap";
    int32_t signedCount = 0;
    EXPECT_EQ(InterlockedIncrement(signedCount), 1);
}

}  // namespace
