// host/executor.h — asynchronous executors of the core library.
//
// Two kinds are handed out, both through `boost::shared_ptr`:
// - the CPU-bound worker pool (`CreateCPUBoundExecutor`): one process-wide
//   pool with one thread per hardware thread, created on first request;
// - sub-executors (`CreateSubExecutor`): a queue of their own that runs at
//   most `width` of its tasks at a time on the threads of a parent executor.
//   With width 1 the tasks run one after the other, in submission order,
//   never overlapping; this is what the caches' background passes rely on.
//
// Shutdown is two calls, made in this order by the owner:
// - `BeginShutdown`: new tasks are refused and the tasks still waiting in the
//   executor's queue are discarded — destroyed without being run. Tasks
//   already running go on.
// - `WaitForShutdown`: blocks until no task of this executor is running.
//   When it returns, no task of the executor is queued or running, and none
//   will start later.
// Every accepted task runs at most once; a task that is discarded or refused
// is destroyed (so whatever it holds is released) without being called.
// `WaitForShutdown` must not be called from one of the executor's own tasks
// (it would wait for itself), and a sub-executor should not be waited for on
// a thread of its parent: its remaining pumps may need that very thread.
#pragma once

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

namespace vantor::threads {

class AsyncThreadedExecutor {
public:
    virtual ~AsyncThreadedExecutor() = default;

    // Queues `task` and returns without waiting for it. `number` is accepted
    // for compatibility and not interpreted: tasks start in submission order.
    // Returns false, having destroyed the task unrun, when the task is empty
    // or shutdown has begun (or, for a sub-executor, its parent refused it).
    virtual bool Submit(boost::function<void()> task, int number) = 0;

    virtual void BeginShutdown() = 0;
    virtual void WaitForShutdown() = 0;
};

// The process-wide CPU-bound worker pool; every call returns the same pool.
// Safe to call from several threads at once. If the pool has been shut down
// through BeginShutdown, the next call makes a new one. Returns an empty
// pointer when no worker thread can be started.
boost::shared_ptr<AsyncThreadedExecutor> CreateCPUBoundExecutor();

// A serial executor that runs at most `width` tasks at a time (values below 1
// count as 1) on the threads of `parent`, which it keeps alive. Returns an
// empty pointer when `parent` is empty. Once the parent refuses a task (it has
// been shut down), the sub-executor discards its queue and refuses new tasks.
boost::shared_ptr<AsyncThreadedExecutor> CreateSubExecutor(
    const boost::shared_ptr<AsyncThreadedExecutor>& parent, int width);

}  // namespace vantor::threads
