// Tests of the greedy policy's background side, over a fake cache that
// counts passes: one pass at a time, and shutdown.
#include "cache/greedy_cra.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

using namespace std::chrono_literals;

struct NoWeight {};

// Counts passes and whether two overlapped; a pass waits at a gate while the
// gate is closed.
class FakeCache : public CacheProperties, public CachePropertiesImpl {
public:
    void RunGreedyPass() {
        if (inPass_.fetch_add(1) != 0) overlapped = true;
        std::unique_lock lock(mutex_);
        ++started_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return gateOpen_; });
        --inPass_;
        ++passes;
        changed_.notify_all();
    }
    void SetGate(bool open) {
        std::lock_guard lock(mutex_);
        gateOpen_ = open;
        changed_.notify_all();
    }
    // Waits up to 10 s for `count` passes started (or finished).
    bool WaitFor(int count, bool finished) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(
            lock, 10s, [&] { return (finished ? passes.load() : started_) >= count; });
    }
    std::atomic<int> passes{0};
    std::atomic<bool> overlapped{false};

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool gateOpen_ = true;
    int started_ = 0;
    std::atomic<int> inPass_{0};
};

using Policy = Greedy_CRA<FakeCache, NoWeight>;

// Every post runs one pass, never two at once. Shutdown with one pass
// running and several queued waits for the running pass; the queued ones
// never run, and without a state nothing more is posted.
TEST(GreedyCra, PostsRunOneAtATimeAndShutdownDiscardsTheQueuedOnes) {
    FakeCache cache;
    ASSERT_TRUE(Policy::Initialize(cache));
    for (int i = 0; i < 10; ++i) Policy::Post(cache);
    EXPECT_TRUE(cache.WaitFor(10, true));
    EXPECT_FALSE(cache.overlapped);
    cache.SetGate(false);
    for (int i = 0; i < 6; ++i) Policy::Post(cache);
    ASSERT_TRUE(cache.WaitFor(11, false));
    std::thread opener([&cache] {
        std::this_thread::sleep_for(50ms);
        cache.SetGate(true);
    });
    Policy::Shutdown(cache);
    EXPECT_EQ(cache.passes, 11);
    opener.join();
    EXPECT_EQ(tr::PropertyOf<CRA_Data>(cache).Get(), nullptr);
    Policy::Post(cache);
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(cache.passes, 11);
}

}  // namespace
