// cache/greedy_cra.h — the background side of the greedy replacement policy
// (folder-private): making the cache's serial executor, posting passes to
// it, and shutting it down.
//
// Each cache has a sub-executor of width 1 over the process-wide CPU-bound
// pool, so its passes run one at a time, never overlapping, on a pool thread;
// two caches can run a pass each at the same time. The executor lives in the
// policy state (`Greedy_CRA_Data`) stored in the cache's `CRA_Data` property
// from the end of the cache's constructor (`Initialize`) to the first step of
// its destructor (`Shutdown`).
//
// `Post` runs on the requesting thread with the cache lock held and never
// waits for the pass: it wraps a `CacheWorker` in a `WorkItem` and submits a
// task that holds one reference to the item. The item, and with it the
// worker, dies when the executor destroys the task, run or discarded.
// `Shutdown` discards the queued tasks and waits for the running one, so
// that afterwards no task of this cache is queued or running.
#pragma once

#include <memory>

#include <boost/bind/bind.hpp>

#include "cache/cache_worker.h"
#include "cache/greedy_cra_data.h"
#include "cache/properties.h"
#include "cache/work_item.h"
#include "host/executor.h"

template <tr::GreedyPassCache CachePrivateInterface, typename Weight>
struct Greedy_CRA {
    using Data = Greedy_CRA_Data<CachePrivateInterface, Weight>;
    using Worker = CacheWorker<CachePrivateInterface, Weight>;

    // Makes the policy state and the cache's serial executor. The state is
    // stored before the executor is made, so a cache without worker threads
    // still has a state (with an empty executor) and simply never posts.
    static bool Initialize(CachePrivateInterface& cache) {
        auto* data = new Data();
        tr::PropertyOf<CRA_Data>(cache).Set(static_cast<CRA_Data_Delete*>(data));
        boost::shared_ptr<vantor::threads::AsyncThreadedExecutor> parent =
            vantor::threads::CreateCPUBoundExecutor();
        data->executor = vantor::threads::CreateSubExecutor(parent, 1);
        return true;
    }

    // Asks for one pass on the cache's executor; does nothing without a
    // policy state or an executor. Throws Talc::NullInterfaceException when
    // no work item can be made.
    static void Post(CachePrivateInterface& cache) {
        Data* data = GetData(cache);
        if (data == nullptr || !data->executor) {
            return;
        }
        WorkItemRef item = CreateWorkItem();
        item->SetWorker(std::make_unique<Worker>(&cache));

        void* request = nullptr;
        item->QueryInterfaceNoAddRef(kWorkItemRequestId, &request);
        WorkItemRef taskReference(
            static_cast<WorkItem*>(static_cast<Talc::TalcUnknown*>(request)));
        // A refused task is destroyed unrun, releasing its reference.
        (void)data->executor->Submit(boost::bind(&WorkItem::Run, taskReference), 0);
        // `item` releases the local reference on leaving.
    }

    // One greedy pass, on the executor's thread.
    static void Run(CachePrivateInterface& cache) { cache.RunGreedyPass(); }

    // Stops the executor (queued passes are discarded, a running one is
    // waited for) and destroys the policy state. Must not be called from one
    // of the cache's own passes.
    static void Shutdown(CachePrivateInterface& cache) {
        Data* data = GetData(cache);
        if (data == nullptr) {
            return;
        }
        if (data->executor) {
            data->executor->BeginShutdown();
            data->executor->WaitForShutdown();
            data->executor.reset();
        }
        delete static_cast<CRA_Data_Delete*>(data);
        tr::PropertyOf<CRA_Data>(cache).Set(nullptr);
    }

private:
    static Data* GetData(CachePrivateInterface& cache) {
        auto* base = static_cast<CRA_Data_Delete*>(tr::PropertyOf<CRA_Data>(cache).Get());
        return static_cast<Data*>(base);
    }
};
