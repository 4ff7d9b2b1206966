// Tests of the recursive mutex: re-entry by the owner, exclusion of others.
#include "host/recursive_mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using vantor::threads::RecursiveMutex;
using vantor::threads::ScopedLock;

bool TryLockFromAnotherThread(RecursiveMutex& mutex) {
    bool locked = false;
    std::thread other([&] {
        locked = mutex.TryLock();
        if (locked) {
            mutex.Unlock();
        }
    });
    other.join();
    return locked;
}

TEST(RecursiveMutexTest, OwnerReentersAndOthersWaitUntilTheLastUnlock) {
    RecursiveMutex mutex;
    {
        ScopedLock outer(mutex, "outer");
        {
            ScopedLock inner(mutex, "inner");
            EXPECT_FALSE(TryLockFromAnotherThread(mutex));
        }
        EXPECT_FALSE(TryLockFromAnotherThread(mutex));
    }
    EXPECT_TRUE(TryLockFromAnotherThread(mutex));
}

TEST(RecursiveMutexTest, ExcludesConcurrentWriters) {
    RecursiveMutex mutex;
    int64_t total = 0;  // guarded by mutex
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([&] {
            for (int i = 0; i < 20000; ++i) {
                ScopedLock lock(mutex);
                total += 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(total, 4 * 20000);
}

}  // namespace
