// Tests of the millisecond tick count.
#include "host/tick_count.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

// The ticks counted across a sleep lie between the whole milliseconds inside
// and around the interval, as measured by the monotonic clock.
TEST(TickCountTest, CountsMillisecondsOfTheMonotonicClock) {
    using Clock = std::chrono::steady_clock;
    const auto Ms = [](Clock::duration d) { return std::chrono::duration_cast<std::chrono::milliseconds>(d).count(); };
    const Clock::time_point outerStart = Clock::now();
    const uint32_t first = vantor::utility::GetTickCount();
    const Clock::time_point innerStart = Clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const Clock::time_point innerEnd = Clock::now();
    const uint32_t second = vantor::utility::GetTickCount();
    const Clock::time_point outerEnd = Clock::now();
    const int64_t ticks = static_cast<uint32_t>(second - first);  // as callers measure intervals
    EXPECT_GE(ticks, Ms(innerEnd - innerStart));
    EXPECT_LE(ticks, Ms(outerEnd - outerStart) + 1);
}

}  // namespace
