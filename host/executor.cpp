// host/executor.cpp — the CPU-bound worker pool and serial sub-executors.
//
// Worker pool: a FIFO queue under one mutex and a fixed set of threads that
// take tasks from it. The queue state lives in a shared block that each thread
// also holds, so a pool whose last owner lets go on one of its own threads
// (a task held the last reference) can detach that thread instead of joining
// it, and the thread finishes on state that is still alive.
//
// Sub-executor: a queue of its own plus a count of "pumps" — tasks it has
// placed on the parent, at most `width` at a time. A pump runs one queued
// task. When the pump object is destroyed (the parent has run it and lets go
// of it, or discarded it unrun) its ticket either passes its slot on to a new
// pump, if tasks are waiting, or gives the slot back. Because the next pump of
// a slot is submitted only after the previous one's task has returned, width 1
// gives strict one-after-the-other order. The pumps hold the sub-executor
// alive, and `WaitForShutdown` waits until the pump count is zero.
//
// Task destructors may themselves submit (a task holding the last reference to
// something that posts more work), so no task is ever destroyed while one of
// our mutexes is held.
#include "host/executor.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/make_shared.hpp>

#include <algorithm>
#include <cassert>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vantor::threads {
namespace {

using Task = boost::function<void()>;

// The executor whose task the current thread is running, for the
// self-wait check of WaitForShutdown.
thread_local const AsyncThreadedExecutor* tCurrentExecutor = nullptr;

// Runs `task` on behalf of `owner`. An exception escaping a background task
// has nobody to report to; it ends that task only, never the worker thread.
void RunTask(const AsyncThreadedExecutor* owner, Task& task) noexcept {
    const AsyncThreadedExecutor* outer = std::exchange(tCurrentExecutor, owner);
    try {
        task();
    } catch (...) {
    }
    tCurrentExecutor = outer;
}

// ---------------------------------------------------------------------------
// Worker pool

struct PoolQueue {
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Task> tasks;
    bool stopping = false;
};

class WorkerPool final : public AsyncThreadedExecutor {
public:
    // Starts up to `threadCount` threads; throws only when none starts.
    explicit WorkerPool(unsigned threadCount) : queue_(std::make_shared<PoolQueue>()) {
        try {
            for (unsigned i = 0; i < threadCount; ++i) {
                threads_.emplace_back(WorkLoop, queue_, this);
            }
        } catch (...) {
            if (threads_.empty()) {
                throw;
            }
        }
    }

    ~WorkerPool() override {
        BeginShutdown();
        WaitForShutdown();
    }

    bool Submit(Task task, int /*number*/) override {
        if (task.empty()) {
            return false;
        }
        {
            std::lock_guard<std::mutex> lock(queue_->mutex);
            if (queue_->stopping) {
                return false;
            }
            queue_->tasks.emplace_back();
            queue_->tasks.back().swap(task);
        }
        queue_->wake.notify_one();
        return true;
    }

    void BeginShutdown() override {
        std::deque<Task> discarded;  // destroyed after the lock is released
        {
            std::lock_guard<std::mutex> lock(queue_->mutex);
            queue_->stopping = true;
            discarded.swap(queue_->tasks);
        }
        queue_->wake.notify_all();
    }

    void WaitForShutdown() override {
        assert(tCurrentExecutor != this && "WaitForShutdown called from the pool's own task");
        std::lock_guard<std::mutex> lock(joinMutex_);
        for (std::thread& thread : threads_) {
            if (!thread.joinable()) {
                continue;
            }
            // Only the destructor reaches this on a worker thread, when that
            // thread's finished task dropped the last reference to the pool.
            if (thread.get_id() == std::this_thread::get_id()) {
                thread.detach();
            } else {
                thread.join();
            }
        }
    }

    [[nodiscard]] bool HasShutDown() {
        std::lock_guard<std::mutex> lock(queue_->mutex);
        return queue_->stopping;
    }

private:
    static void WorkLoop(std::shared_ptr<PoolQueue> queue, const WorkerPool* owner) {
        for (;;) {
            Task task;
            {
                std::unique_lock<std::mutex> lock(queue->mutex);
                queue->wake.wait(lock, [&] { return queue->stopping || !queue->tasks.empty(); });
                if (queue->stopping) {
                    return;
                }
                task.swap(queue->tasks.front());
                queue->tasks.pop_front();
            }
            // `owner` is only compared, never dereferenced: the pool object
            // may be gone by the time this task is destroyed.
            RunTask(owner, task);
        }
    }

    std::shared_ptr<PoolQueue> queue_;
    std::mutex joinMutex_;
    std::vector<std::thread> threads_;
};

// ---------------------------------------------------------------------------
// Sub-executor

class SubExecutor final : public AsyncThreadedExecutor,
                          public boost::enable_shared_from_this<SubExecutor> {
public:
    SubExecutor(boost::shared_ptr<AsyncThreadedExecutor> parent, int width)
        : parent_(std::move(parent)), width_(width) {
        assert(parent_ && width_ >= 1);
    }

    bool Submit(Task task, int /*number*/) override {
        if (task.empty()) {
            return false;
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (closed_) {
                return false;
            }
            queue_.emplace_back();
            queue_.back().swap(task);
            if (activePumps_ >= width_) {
                return true;  // a running pump will pass its slot on
            }
            ++activePumps_;
        }
        return StartPump();
    }

    void BeginShutdown() override {
        std::deque<Task> discarded;
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        discarded.swap(queue_);
        // The lock guard is destroyed before `discarded`.
    }

    void WaitForShutdown() override {
        assert(tCurrentExecutor != this && "WaitForShutdown called from the executor's own task");
        std::unique_lock<std::mutex> lock(mutex_);
        idle_.wait(lock, [&] { return activePumps_ == 0; });
    }

private:
    // One pump slot in flight on the parent. Its destructor runs when the
    // parent lets go of the last copy of the pump, whether it ran or not.
    class PumpTicket {
    public:
        explicit PumpTicket(boost::shared_ptr<SubExecutor> owner) : owner_(std::move(owner)) {}
        ~PumpTicket() { owner_->PumpEnded(ran_); }
        PumpTicket(const PumpTicket&) = delete;
        PumpTicket& operator=(const PumpTicket&) = delete;

        void Run() {
            ran_ = true;
            owner_->RunNext();
        }

    private:
        boost::shared_ptr<SubExecutor> owner_;
        bool ran_ = false;
    };

    // What the parent holds and calls; copies share the ticket.
    struct Pump {
        boost::shared_ptr<PumpTicket> ticket;
        void operator()() const { ticket->Run(); }
    };

    // Places a pump on the parent for a slot already counted in
    // activePumps_; from here on the ticket owns that slot.
    bool StartPump() {
        std::deque<Task> discarded;  // declared first: destroyed last, unlocked
        boost::shared_ptr<PumpTicket> ticket;
        try {
            ticket = boost::make_shared<PumpTicket>(shared_from_this());
        } catch (...) {
            // Give the slot back; the tasks stay queued for the next Submit.
            std::lock_guard<std::mutex> lock(mutex_);
            --activePumps_;
            idle_.notify_all();
            return false;
        }
        try {
            if (parent_->Submit(Pump{ticket}, 0)) {
                return true;
            }
        } catch (...) {
            return false;  // the ticket, unrun, gives its slot back
        }
        // The parent is shut down and will never run anything of ours again.
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        discarded.swap(queue_);
        return false;
    }

    void RunNext() {
        Task task;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (closed_ || queue_.empty()) {
                return;
            }
            task.swap(queue_.front());
            queue_.pop_front();
        }
        RunTask(this, task);
    }

    void PumpEnded(bool ran) noexcept {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            // A pump that never ran was refused or discarded by the parent:
            // the slot goes back rather than retrying on a parent that is
            // shutting down or out of memory.
            const bool passOn = ran && !closed_ && !queue_.empty();
            if (!passOn) {
                --activePumps_;
                if (activePumps_ == 0) {
                    idle_.notify_all();
                }
                return;
            }
        }
        StartPump();
    }

    const boost::shared_ptr<AsyncThreadedExecutor> parent_;
    const int width_;
    std::mutex mutex_;
    std::condition_variable idle_;
    std::deque<Task> queue_;
    int activePumps_ = 0;
    bool closed_ = false;
};

}  // namespace

boost::shared_ptr<AsyncThreadedExecutor> CreateCPUBoundExecutor() {
    static std::mutex mutex;
    static boost::shared_ptr<WorkerPool> pool;
    std::lock_guard<std::mutex> lock(mutex);
    if (!pool || pool->HasShutDown()) {
        const unsigned threadCount = std::max(1u, std::thread::hardware_concurrency());
        try {
            pool = boost::make_shared<WorkerPool>(threadCount);
        } catch (...) {
            pool.reset();
        }
    }
    return pool;
}

boost::shared_ptr<AsyncThreadedExecutor> CreateSubExecutor(
    const boost::shared_ptr<AsyncThreadedExecutor>& parent, int width) {
    if (!parent) {
        return {};
    }
    return boost::make_shared<SubExecutor>(parent, std::max(1, width));
}

}  // namespace vantor::threads
