// tests/cache/allocation_probe.cpp — the replaced non-throwing array new.
#include "allocation_probe.h"

#include <atomic>
#include <new>

namespace {
std::atomic<std::size_t> largest{0};
}  // namespace

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    std::size_t seen = largest.load();
    while (size > seen && !largest.compare_exchange_weak(seen, size)) {
    }
    try {
        return ::operator new[](size);
    } catch (...) {
        return nullptr;
    }
}

namespace tr::test {

void ResetLargestNothrowArray() { largest = 0; }
std::size_t LargestNothrowArray() { return largest.load(); }

}  // namespace tr::test
