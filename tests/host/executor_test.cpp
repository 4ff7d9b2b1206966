// Tests of the worker pool and the serial sub-executors.
#include "host/executor.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using vantor::threads::AsyncThreadedExecutor;
using vantor::threads::CreateCPUBoundExecutor;
using vantor::threads::CreateSubExecutor;
using Executor = boost::shared_ptr<AsyncThreadedExecutor>;

void Shutdown(const Executor& executor) {
    executor->BeginShutdown();
    executor->WaitForShutdown();
}

// Runs `tasks` short tasks on `executor` and returns the most that were
// inside at once.
int MostAtOnce(const Executor& executor, int tasks) {
    std::atomic<int> inside{0}, most{0};
    std::latch done(tasks);
    for (int i = 0; i < tasks; ++i) {
        executor->Submit(
            [&] {
                const int now = ++inside;
                for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
                }
                std::this_thread::sleep_for(std::chrono::microseconds(50));
                --inside;
                done.count_down();
            },
            0);
    }
    done.wait();
    return most;
}

TEST(ExecutorTest, WidthBoundsTheTasksRunningAtOnce) {
    struct Case {
        int width;
        int allowed;
    };
    for (const Case c : {Case{1, 1}, Case{0, 1}, Case{-3, 1}, Case{2, 2}}) {
        const Executor sub = CreateSubExecutor(CreateCPUBoundExecutor(), c.width);
        EXPECT_LE(MostAtOnce(sub, 200), c.allowed) << "width " << c.width;
        Shutdown(sub);
    }
}

// Several submitters at once: every task runs exactly once, and each
// submitter's tasks run in the order it submitted them.
TEST(ExecutorTest, WidthOneRunsEveryTaskOnceInSubmissionOrder) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    constexpr int kSubmitters = 4;
    constexpr int kEach = 2000;
    std::vector<std::vector<int>> order(kSubmitters);  // written by serial tasks only
    std::latch done(kSubmitters * kEach);
    std::vector<std::thread> submitters;
    for (int s = 0; s < kSubmitters; ++s) {
        submitters.emplace_back([&, s] {
            for (int i = 0; i < kEach; ++i) {
                serial->Submit([&, s, i] { order[s].push_back(i); done.count_down(); }, 0);
            }
        });
    }
    for (std::thread& submitter : submitters) submitter.join();
    done.wait();
    Shutdown(serial);
    for (int s = 0; s < kSubmitters; ++s) {
        ASSERT_EQ(order[s].size(), static_cast<size_t>(kEach)) << "submitter " << s;
        for (int i = 0; i < kEach; ++i) ASSERT_EQ(order[s][i], i) << "submitter " << s;
    }
}

TEST(ExecutorTest, ShutdownDiscardsQueuedTasksAndWaitsForTheRunningOne) {
    const Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
    std::latch started(1), release(1);
    std::atomic<bool> firstFinished{false};
    ASSERT_TRUE(serial->Submit(
        [&] {
            started.count_down();
            release.wait();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            firstFinished = true;
        },
        0));
    started.wait();  // Submit did not wait for the blocked task

    const auto token = boost::make_shared<int>(0);  // held by each queued task
    std::atomic<int> queuedRuns{0};
    for (int i = 0; i < 10; ++i) ASSERT_TRUE(serial->Submit([&queuedRuns, token] { ++queuedRuns; }, 0));
    EXPECT_EQ(token.use_count(), 11);
    serial->BeginShutdown();
    EXPECT_EQ(token.use_count(), 1) << "queued tasks are destroyed unrun";
    EXPECT_FALSE(serial->Submit([&queuedRuns, token] { ++queuedRuns; }, 0));
    EXPECT_EQ(token.use_count(), 1);

    release.count_down();
    serial->WaitForShutdown();
    EXPECT_TRUE(firstFinished);
    EXPECT_EQ(queuedRuns, 0);
}

// Empty tasks and parents are refused, a throwing task ends only itself, and
// a pool that was shut down refuses work (also through its sub-executors)
// until the next request makes a new one.
TEST(ExecutorTest, RefusalsAndReplacementOfAShutDownPool) {
    const Executor pool = CreateCPUBoundExecutor();
    EXPECT_EQ(CreateCPUBoundExecutor(), pool);
    EXPECT_FALSE(CreateSubExecutor(Executor(), 1));
    const Executor sub = CreateSubExecutor(pool, 1);
    EXPECT_FALSE(sub->Submit(boost::function<void()>(), 0));
    EXPECT_FALSE(pool->Submit(boost::function<void()>(), 0));
    std::latch done(1);
    sub->Submit([] { throw std::runtime_error("task failure"); }, 0);
    sub->Submit([&] { done.count_down(); }, 0);
    done.wait();

    const auto token = boost::make_shared<int>(0);
    Shutdown(pool);
    EXPECT_FALSE(pool->Submit([token] {}, 0));
    EXPECT_FALSE(sub->Submit([token] {}, 0)) << "the parent refuses the sub-executor's pump";
    EXPECT_FALSE(sub->Submit([token] {}, 0));
    EXPECT_EQ(token.use_count(), 1);
    Shutdown(sub);
    const Executor fresh = CreateCPUBoundExecutor();
    ASSERT_TRUE(fresh);
    EXPECT_NE(fresh.get(), pool.get());
    std::latch freshDone(1);
    EXPECT_TRUE(fresh->Submit([&] { freshDone.count_down(); }, 0));
    freshDone.wait();
}

// The executor is destroyed on the worker thread when the task lets go.
TEST(ExecutorTest, TaskMayHoldTheLastReferenceToItsExecutor) {
    std::latch ran(1);
    boost::weak_ptr<AsyncThreadedExecutor> watch;
    {
        Executor serial = CreateSubExecutor(CreateCPUBoundExecutor(), 1);
        watch = serial;
        serial->Submit([serial, &ran] { ran.count_down(); }, 0);
    }
    ran.wait();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!watch.expired() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(watch.expired());
}

}  // namespace
