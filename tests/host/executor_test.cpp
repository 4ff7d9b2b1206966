// Tests of the worker pool and the serial sub-executors.
#include "host/executor.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <atomic>
#include <condition_variable>
#include <latch>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using vantor::threads::AsyncThreadedExecutor;
using vantor::threads::CreateCPUBoundExecutor;
using vantor::threads::CreateSubExecutor;
using Executor = boost::shared_ptr<AsyncThreadedExecutor>;

// A one-shot gate a task can wait on.
class Gate {
public:
    void Open() {
        std::lock_guard<std::mutex> lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    void Wait() {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return open_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = false;
};

// Records how many tasks are inside at once.
struct OverlapProbe {
    std::atomic<int> inside{0};
    std::atomic<int> most{0};

    void Enter() {
        const int now = inside.fetch_add(1) + 1;
        int seen = most.load();
        while (now > seen && !most.compare_exchange_weak(seen, now)) {
        }
    }
    void Leave() { inside.fetch_sub(1); }
};

void Shutdown(const Executor& executor) {
    executor->BeginShutdown();
    executor->WaitForShutdown();
}

TEST(ExecutorTest, CpuBoundExecutorIsOneProcessWidePoolEvenForConcurrentFirstCalls) {
    constexpr int kCallers = 8;
    std::vector<Executor> got(kCallers);
    std::latch start(kCallers);
    std::vector<std::thread> callers;
    for (int i = 0; i < kCallers; ++i) {
        callers.emplace_back([&, i] {
            start.arrive_and_wait();
            got[i] = CreateCPUBoundExecutor();
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    ASSERT_TRUE(got[0]);
    for (const Executor& executor : got) {
        EXPECT_EQ(executor.get(), got[0].get());
    }
}

TEST(ExecutorTest, WidthOneRunsTasksOneAtATimeInSubmissionOrder) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    ASSERT_TRUE(serial);
    constexpr int kTasks = 300;
    OverlapProbe probe;
    std::vector<int> order;  // touched by the tasks only; serial, so unlocked
    std::latch done(kTasks);
    for (int i = 0; i < kTasks; ++i) {
        ASSERT_TRUE(serial->Submit(
            [&, i] {
                probe.Enter();
                order.push_back(i);
                std::this_thread::yield();
                probe.Leave();
                done.count_down();
            },
            0));
    }
    done.wait();
    Shutdown(serial);
    EXPECT_EQ(probe.most.load(), 1);
    ASSERT_EQ(order.size(), static_cast<size_t>(kTasks));
    for (int i = 0; i < kTasks; ++i) {
        EXPECT_EQ(order[i], i);
    }
}

TEST(ExecutorTest, WidthBoundsConcurrencyAndBelowOneCountsAsOne) {
    struct Case {
        int width;
        int allowed;
    };
    for (const Case c : {Case{0, 1}, Case{-3, 1}, Case{2, 2}}) {
        const Executor sub = CreateSubExecutor(CreateCPUBoundExecutor(), c.width);
        constexpr int kTasks = 200;
        OverlapProbe probe;
        std::latch done(kTasks);
        for (int i = 0; i < kTasks; ++i) {
            sub->Submit(
                [&] {
                    probe.Enter();
                    std::this_thread::sleep_for(std::chrono::microseconds(50));
                    probe.Leave();
                    done.count_down();
                },
                0);
        }
        done.wait();
        Shutdown(sub);
        EXPECT_LE(probe.most.load(), c.allowed) << "width " << c.width;
    }
}

TEST(ExecutorTest, ManySubmittersEveryTaskRunsExactlyOnce) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    constexpr int kSubmitters = 4;
    constexpr int kPerSubmitter = 2000;
    std::vector<std::atomic<int>> runs(kSubmitters * kPerSubmitter);
    OverlapProbe probe;
    std::latch done(kSubmitters * kPerSubmitter);
    std::vector<std::thread> submitters;
    for (int s = 0; s < kSubmitters; ++s) {
        submitters.emplace_back([&, s] {
            for (int i = 0; i < kPerSubmitter; ++i) {
                const int slot = s * kPerSubmitter + i;
                serial->Submit(
                    [&, slot] {
                        probe.Enter();
                        runs[slot].fetch_add(1);
                        probe.Leave();
                        done.count_down();
                    },
                    0);
            }
        });
    }
    for (std::thread& submitter : submitters) {
        submitter.join();
    }
    done.wait();
    Shutdown(serial);
    EXPECT_EQ(probe.most.load(), 1);
    for (size_t slot = 0; slot < runs.size(); ++slot) {
        ASSERT_EQ(runs[slot].load(), 1) << "task " << slot;
    }
}

TEST(ExecutorTest, ShutdownDiscardsQueuedTasksAndWaitsForTheRunningOne) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    Gate started;
    Gate release;
    std::atomic<bool> firstFinished{false};
    // Submit must not wait for the task: this one blocks until released below.
    ASSERT_TRUE(serial->Submit(
        [&] {
            started.Open();
            release.Wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            firstFinished = true;
        },
        0));
    started.Wait();

    const auto token = boost::make_shared<int>(0);  // held by each queued task
    std::atomic<int> queuedRuns{0};
    constexpr int kQueued = 10;
    for (int i = 0; i < kQueued; ++i) {
        ASSERT_TRUE(serial->Submit([&queuedRuns, token] { queuedRuns.fetch_add(1); }, 0));
    }
    EXPECT_EQ(token.use_count(), 1 + kQueued);

    serial->BeginShutdown();
    // The queued tasks are destroyed unrun; later submissions are refused.
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_FALSE(serial->Submit([&queuedRuns, token] { queuedRuns.fetch_add(1); }, 0));
    EXPECT_EQ(token.use_count(), 1);

    release.Open();
    serial->WaitForShutdown();
    EXPECT_TRUE(firstFinished.load());
    EXPECT_EQ(queuedRuns.load(), 0);
}

TEST(ExecutorTest, ShutdownRacingSubmittersRunsEachTaskAtMostOnceAndLeavesNoneBehind) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    constexpr int kSubmitters = 3;
    constexpr int kPerSubmitter = 3000;
    std::vector<std::atomic<int>> runs(kSubmitters * kPerSubmitter);
    const auto token = boost::make_shared<int>(0);
    std::latch start(kSubmitters + 1);
    std::vector<std::thread> submitters;
    for (int s = 0; s < kSubmitters; ++s) {
        submitters.emplace_back([&, s] {
            start.arrive_and_wait();
            for (int i = 0; i < kPerSubmitter; ++i) {
                const int slot = s * kPerSubmitter + i;
                serial->Submit([&runs, slot, token] { runs[slot].fetch_add(1); }, 0);
            }
        });
    }
    start.arrive_and_wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    serial->BeginShutdown();
    serial->WaitForShutdown();
    for (std::thread& submitter : submitters) {
        submitter.join();
    }
    // Every task has been run or destroyed, and none runs afterwards.
    EXPECT_EQ(token.use_count(), 1);
    int ran = 0;
    for (const std::atomic<int>& count : runs) {
        ASSERT_LE(count.load(), 1);
        ran += count.load();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    int ranLater = 0;
    for (const std::atomic<int>& count : runs) {
        ranLater += count.load();
    }
    EXPECT_EQ(ranLater, ran);
}

TEST(ExecutorTest, EmptyTaskAndEmptyParentAreRefused) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    EXPECT_FALSE(serial->Submit(boost::function<void()>(), 0));
    EXPECT_FALSE(CreateCPUBoundExecutor()->Submit(boost::function<void()>(), 0));
    EXPECT_FALSE(CreateSubExecutor(Executor(), 1));
    Shutdown(serial);
}

TEST(ExecutorTest, ThrowingTaskDoesNotStopLaterTasks) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    std::latch done(1);
    serial->Submit([] { throw std::runtime_error("task failure"); }, 0);
    serial->Submit([&] { done.count_down(); }, 0);
    done.wait();
    Shutdown(serial);
}

// A work item that holds the last reference to its own executor: the
// executor is destroyed on the worker thread when the task lets go.
TEST(ExecutorTest, TaskMayHoldTheLastReferenceToItsExecutor) {
    std::latch ran(1);
    boost::weak_ptr<AsyncThreadedExecutor> watch;
    {
        Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
        watch = serial;
        struct Holder {
            Executor executor;
            std::latch* ran;
            void operator()() const { ran->count_down(); }
        };
        serial->Submit(Holder{serial, &ran}, 0);
    }
    ran.wait();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!watch.expired() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(watch.expired());
}

TEST(ExecutorTest, ShutDownPoolRefusesWorkAndIsReplacedOnTheNextRequest) {
    const Executor pool = CreateCPUBoundExecutor();
    const Executor sub = CreateSubExecutor(pool, 1);
    const auto token = boost::make_shared<int>(0);
    Shutdown(pool);

    EXPECT_FALSE(pool->Submit([token] {}, 0));
    // The sub-executor's pump is refused by its parent: it closes itself.
    EXPECT_FALSE(sub->Submit([token] {}, 0));
    EXPECT_FALSE(sub->Submit([token] {}, 0));
    EXPECT_EQ(token.use_count(), 1);
    Shutdown(sub);

    const Executor fresh = CreateCPUBoundExecutor();
    ASSERT_TRUE(fresh);
    EXPECT_NE(fresh.get(), pool.get());
    std::latch done(1);
    EXPECT_TRUE(fresh->Submit([&] { done.count_down(); }, 0));
    done.wait();
}

TEST(ExecutorTest, SubExecutorOfSubExecutorStaysSerial) {
    const Executor middle = CreateSubExecutor(CreateCPUBoundExecutor(), 3);
    const Executor inner = CreateSubExecutor(middle, 1);
    constexpr int kTasks = 200;
    OverlapProbe probe;
    std::latch done(kTasks);
    for (int i = 0; i < kTasks; ++i) {
        inner->Submit(
            [&] {
                probe.Enter();
                std::this_thread::yield();
                probe.Leave();
                done.count_down();
            },
            0);
    }
    done.wait();
    Shutdown(inner);
    Shutdown(middle);
    EXPECT_EQ(probe.most.load(), 1);
}

}  // namespace
