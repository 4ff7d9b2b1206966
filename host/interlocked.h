// host/interlocked.h — interlocked increment and decrement of 32-bit counts.
//
// Reference counts (work items, the recycler handle) are plain 32-bit fields
// that several threads change. These helpers update such a field atomically
// with a full barrier and return the new value, so the thread that brings a
// count to zero knows it is the last holder. Every access to a field shared
// this way must go through an atomic operation; a plain read of a field that
// another thread may be changing is a data race.
#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>

namespace vantor::utility {

template <typename T>
concept InterlockedCount = std::same_as<T, int32_t> || std::same_as<T, uint32_t>;

// Adds 1 and returns the new value (unsigned counts wrap, signed ones must
// not overflow).
template <InterlockedCount T>
T InterlockedIncrement(T& value) {
    return std::atomic_ref<T>(value).fetch_add(1, std::memory_order_seq_cst) + 1;
}

// Subtracts 1 and returns the new value.
template <InterlockedCount T>
T InterlockedDecrement(T& value) {
    return std::atomic_ref<T>(value).fetch_sub(1, std::memory_order_seq_cst) - 1;
}

// Reads a count that other threads change with the helpers above.
template <InterlockedCount T>
[[nodiscard]] T InterlockedRead(T& value) {
    return std::atomic_ref<T>(value).load(std::memory_order_seq_cst);
}

}  // namespace vantor::utility
