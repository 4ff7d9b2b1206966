// Tests of the background side of the greedy policy: the policy state and
// its executor, posting passes, and shutting down with passes queued. A fake
// cache counts the passes that reach it.
#include "cache/greedy_cra.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

struct NoWeight {};

// A cache with properties and a pass hook that counts passes and checks that
// no two overlap. A pass may be held at a gate until the test opens it.
class FakeCache : public CacheProperties, public CachePropertiesImpl {
public:
    void RunGreedyPass() {
        if (inPass_.fetch_add(1) != 0) {
            overlapped_ = true;
        }
        {
            std::unique_lock lock(mutex_);
            ++started_;
            changed_.notify_all();
            changed_.wait(lock, [this] { return gateOpen_; });
        }
        inPass_.fetch_sub(1);
        ++passes_;
    }

    void CloseGate() {
        std::lock_guard lock(mutex_);
        gateOpen_ = false;
    }
    void OpenGate() {
        std::lock_guard lock(mutex_);
        gateOpen_ = true;
        changed_.notify_all();
    }
    bool WaitStarted(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, [&] { return started_ >= count; });
    }
    bool WaitPasses(int count) {
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        while (passes_.load() < count && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(1ms);
        }
        return passes_.load() >= count;
    }

    [[nodiscard]] int Passes() const { return passes_.load(); }
    [[nodiscard]] bool Overlapped() const { return overlapped_.load(); }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool gateOpen_ = true;
    int started_ = 0;
    std::atomic<int> passes_{0};
    std::atomic<int> inPass_{0};
    std::atomic<bool> overlapped_{false};
};

using Policy = Greedy_CRA<FakeCache, NoWeight>;
using Data = Greedy_CRA_Data<FakeCache, NoWeight>;

Data* StateOf(FakeCache& cache) {
    return static_cast<Data*>(
        static_cast<CRA_Data_Delete*>(tr::PropertyOf<CRA_Data>(cache).Get()));
}

TEST(GreedyCra, InitializeMakesStateAndExecutor) {
    FakeCache cache;
    ASSERT_TRUE(Policy::Initialize(cache));
    ASSERT_NE(StateOf(cache), nullptr);
    EXPECT_TRUE(StateOf(cache)->executor);
    Policy::Shutdown(cache);
    EXPECT_EQ(tr::PropertyOf<CRA_Data>(cache).Get(), nullptr);
    Policy::Shutdown(cache);  // a second shutdown finds no state
    EXPECT_EQ(cache.Passes(), 0);
}

TEST(GreedyCra, TenPostsRunTenPassesOneAtATime) {
    FakeCache cache;
    ASSERT_TRUE(Policy::Initialize(cache));
    for (int i = 0; i < 10; ++i) {
        Policy::Post(cache);
    }
    EXPECT_TRUE(cache.WaitPasses(10));
    Policy::Shutdown(cache);
    EXPECT_EQ(cache.Passes(), 10);
    EXPECT_FALSE(cache.Overlapped());
}

// Two caches have executors of their own: a pass held in one does not keep
// the other from running its passes.
TEST(GreedyCra, CachesRunIndependently) {
    FakeCache held;
    FakeCache free;
    ASSERT_TRUE(Policy::Initialize(held));
    ASSERT_TRUE(Policy::Initialize(free));
    held.CloseGate();
    Policy::Post(held);
    ASSERT_TRUE(held.WaitStarted(1));
    Policy::Post(free);
    Policy::Post(free);
    EXPECT_TRUE(free.WaitPasses(2));
    held.OpenGate();
    Policy::Shutdown(held);
    Policy::Shutdown(free);
    EXPECT_EQ(held.Passes(), 1);
}

// Shutdown with one pass running and several queued: the running pass ends,
// the queued ones never run, neither during nor after Shutdown.
TEST(GreedyCra, ShutdownDiscardsQueuedPasses) {
    FakeCache cache;
    ASSERT_TRUE(Policy::Initialize(cache));
    cache.CloseGate();
    for (int i = 0; i < 6; ++i) {
        Policy::Post(cache);
    }
    ASSERT_TRUE(cache.WaitStarted(1));
    std::thread opener([&cache] {
        std::this_thread::sleep_for(50ms);
        cache.OpenGate();
    });
    Policy::Shutdown(cache);
    // Shutdown waited for the running pass.
    EXPECT_EQ(cache.Passes(), 1);
    opener.join();
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(cache.Passes(), 1);
    EXPECT_EQ(tr::PropertyOf<CRA_Data>(cache).Get(), nullptr);
    Policy::Post(cache);  // no state any more: nothing is posted
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(cache.Passes(), 1);
}

// An executor that keeps its tasks for the test to run, and records calls.
class RecordingExecutor : public vantor::threads::AsyncThreadedExecutor {
public:
    bool Submit(boost::function<void()> task, int number) override {
        calls.push_back("Submit " + std::to_string(number));
        tasks.push_back(std::move(task));
        return true;
    }
    void BeginShutdown() override { calls.emplace_back("BeginShutdown"); }
    void WaitForShutdown() override { calls.emplace_back("WaitForShutdown"); }

    std::vector<std::string> calls;
    std::vector<boost::function<void()>> tasks;
};

TEST(GreedyCra, PostSubmitsOneTaskWithNumberZero) {
    FakeCache cache;
    auto* data = new Data();
    auto executor = boost::shared_ptr<RecordingExecutor>(new RecordingExecutor());
    data->executor = executor;
    tr::PropertyOf<CRA_Data>(cache).Set(static_cast<CRA_Data_Delete*>(data));

    Policy::Post(cache);
    Policy::Post(cache);
    ASSERT_EQ(executor->tasks.size(), 2u);
    EXPECT_EQ(cache.Passes(), 0) << "Post must not run the pass itself";
    executor->tasks[0]();
    EXPECT_EQ(cache.Passes(), 1);
    // A task copied by the executor shares the item; running both copies runs
    // the pass twice, and dropping every copy is safe.
    boost::function<void()> copy = executor->tasks[1];
    executor->tasks.clear();
    copy();
    EXPECT_EQ(cache.Passes(), 2);

    Policy::Shutdown(cache);
    const std::vector<std::string> expected = {"Submit 0", "Submit 0", "BeginShutdown",
                                               "WaitForShutdown"};
    EXPECT_EQ(executor->calls, expected);
    EXPECT_EQ(executor.use_count(), 1) << "Shutdown drops the state's reference";
}

TEST(GreedyCra, PostWithoutStateOrExecutorDoesNothing) {
    FakeCache cache;
    Policy::Post(cache);  // no state

    tr::PropertyOf<CRA_Data>(cache).Set(static_cast<CRA_Data_Delete*>(new Data()));
    Policy::Post(cache);  // state with an empty executor
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(cache.Passes(), 0);
    Policy::Shutdown(cache);
    EXPECT_EQ(tr::PropertyOf<CRA_Data>(cache).Get(), nullptr);
}

// The worker runs the pass of the cache it was made for.
TEST(CacheWorker, RunsThePassOfItsCache) {
    FakeCache first;
    FakeCache second;
    CacheWorker<FakeCache, NoWeight> worker(&second);
    worker.Run();
    EXPECT_EQ(first.Passes(), 0);
    EXPECT_EQ(second.Passes(), 1);
}

}  // namespace
