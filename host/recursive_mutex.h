// host/recursive_mutex.h — the recursive mutex of the host's core library.
//
// Every process-wide lock of the library (the render lock, the tessellation
// lock, the record pools, the recycler's buffer map, the caches) is one of
// these. `Lock` takes an optional name for diagnostics only.
#pragma once

#include <mutex>

namespace vantor::threads {

class RecursiveMutex {
public:
    RecursiveMutex() = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void Lock(const char* name = nullptr) {
        (void)name;
        mutex_.lock();
    }
    void Unlock() { mutex_.unlock(); }
    [[nodiscard]] bool TryLock() { return mutex_.try_lock(); }

    // BasicLockable, so std::lock_guard and std::unique_lock work too.
    void lock() { Lock(); }
    void unlock() { Unlock(); }

private:
    std::recursive_mutex mutex_;
};

// Holds a RecursiveMutex for the lifetime of the scope.
class ScopedLock {
public:
    explicit ScopedLock(RecursiveMutex& mutex, const char* name = nullptr) : mutex_(mutex) {
        mutex_.Lock(name);
    }
    ~ScopedLock() { mutex_.Unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    RecursiveMutex& mutex_;
};

}  // namespace vantor::threads
