// cache/cache_worker.h — the work item's worker that runs one greedy
// replacement pass on a cache (folder-private).
//
// The worker keeps a plain pointer to the cache: the cache's Shutdown
// finishes or discards every task before the cache is dismantled, so the
// pointer never outlives its cache while a task can still use it.
//
// A cache that runs background passes satisfies `GreedyPassCache`: it has the
// cache properties (the policy keeps its state in `CRA_Data`) and a
// `RunGreedyPass()` that performs one pass under the cache's own lock.
#pragma once

#include <cassert>
#include <concepts>

#include "cache/properties.h"
#include "cache/work_item.h"

namespace tr {

template <typename Cache>
concept GreedyPassCache = std::derived_from<Cache, CacheProperties> &&
                          requires(Cache& cache) { cache.RunGreedyPass(); };

}  // namespace tr

template <tr::GreedyPassCache CachePrivateInterface, typename Weight>
class CacheWorker : public WorkItem::Worker {
public:
    explicit CacheWorker(CachePrivateInterface* cache) : cache_(cache) {
        assert(cache != nullptr && "Post hands the worker its own cache");
    }

    void Run() override { cache_->RunGreedyPass(); }

private:
    CachePrivateInterface* cache_;  // not owned
};
