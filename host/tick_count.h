// host/tick_count.h — the millisecond tick count used for cache timing.
//
// An unsigned 32-bit count of milliseconds from the monotonic clock, so it
// never runs backwards when the wall clock is set. Like the system tick count
// it wraps after 2^32 ms (about 49.7 days); callers measure intervals as the
// unsigned difference `now - then`, which stays correct across one wrap.
#pragma once

#include <chrono>
#include <cstdint>

namespace vantor::utility {

// Milliseconds of the steady clock, reduced modulo 2^32.
[[nodiscard]] inline uint32_t GetTickCount() {
    const auto sinceEpoch = std::chrono::steady_clock::now().time_since_epoch();
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
    // The conversion to unsigned is modular, which is exactly the wrap wanted.
    return static_cast<uint32_t>(static_cast<uint64_t>(ms));
}

}  // namespace vantor::utility
