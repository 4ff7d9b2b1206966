// cache/greedy_pass.h — one greedy replacement pass over a cache
// (folder-private), run on the cache's background executor.
//
// The pass works only through the cache's private interface, under the cache
// lock:
// 1. nothing to do unless the unreferenced data (FlexCacheContents) reach
//    their budget (FlexCacheSize);
// 2. one walk over the ticket index lists every cached, unreferenced box as
//    a candidate and thins out boxes without data (below), while summing the
//    costs to recalibrate the budget properties;
// 3. the candidates are sorted by ascending eviction weight and swapped out
//    until the unreferenced data would fall below five eighths of their
//    budget, so that the next pass is not due at the very next request.
//
// Thinning: with n boxes, `position` starts at rand() mod n and grows by
// n − 1024 (unsigned, wrapping) at every box; a box without data is kept
// while position < n and dropped otherwise, which takes n from position.
// Over n > 1024 boxes about n − 1024 of every n boxes without data are
// dropped, spread from a random start, and about 1024 keep their statistics;
// over n ≤ 1024 the step wraps to a decrease and every box without data after
// the wrap is dropped. Invalidated boxes without data are always dropped.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "cache/factory_box.h"
#include "cache/properties.h"
#include "host/recursive_mutex.h"
#include "host/tick_count.h"

namespace tr {

// Boxes without data that a pass keeps, about, when it thins them out.
inline constexpr uint32_t kKeptStatisticsBoxes = 1024;

template <typename Box>
struct GreedyScan {
    std::vector<WeightedBox<Box>> candidates;
    uint32_t unreferencedCost = 0;
    uint32_t cachedCost = 0;
    uint32_t n = 0;
    uint32_t step = 0;
    uint32_t position = 0;
};

template <typename Box>
int GreedyScanBox(Box* box, void* context) {
    auto& scan = *static_cast<GreedyScan<Box>*>(context);
    scan.position += scan.step;
    if (box->refCount < 1) {
        if (box->factory != nullptr) {
            scan.candidates.push_back({box, 0, box->lastAccess});
            scan.unreferencedCost += static_cast<uint32_t>(box->cost);
            scan.cachedCost += static_cast<uint32_t>(box->cost);
            return 0;
        }
        if (scan.position < scan.n && !box->invalidated) {
            return 0;
        }
        scan.position -= scan.n;
        delete box;  // its index node is removed on return
        return 2;
    }
    if (box->factory != nullptr) {
        scan.cachedCost += static_cast<uint32_t>(box->cost);
    }
    return 0;
}

// One pass over `cache`, a CachePrivateInterface; Weight orders candidates.
template <typename Weight, typename Cache>
void RunGreedyPass(Cache& cache) {
    using Box = typename Cache::Box;
    vantor::threads::ScopedLock lock(cache.GetMutex());
    auto& flexSize = PropertyOf<FlexCacheSize>(cache);
    auto& flexContents = PropertyOf<FlexCacheContents>(cache);
    if (flexContents.Get() < flexSize.Get()) {
        return;
    }
    GreedyScan<Box> scan;
    scan.n = cache.BoxCount();
    if (scan.n == 0) {
        return;
    }
    scan.step = scan.n - kKeptStatisticsBoxes;
    scan.position = static_cast<uint32_t>(std::rand()) % scan.n;
    cache.ForEachBox(&GreedyScanBox<Box>, &scan);

    flexContents.Set(scan.unreferencedCost);
    PropertyOf<TotalCacheContents>(cache).Set(scan.cachedCost);
    flexSize.Set(flexContents.Get() - PropertyOf<TotalCacheContents>(cache).Get() +
                 PropertyOf<TotalCacheSize>(cache).Get());

    const uint32_t now = vantor::utility::GetTickCount();
    for (WeightedBox<Box>& candidate : scan.candidates) {
        candidate.now = now;
    }
    std::sort(scan.candidates.begin(), scan.candidates.end(), &Weight::Before);

    for (const WeightedBox<Box>& candidate : scan.candidates) {
        Box* box = candidate.box;
        if (box->refCount > 0 || box->factory == nullptr) {
            continue;
        }
        // Both sides unsigned: a candidate larger than all unreferenced data
        // wraps to a large value and does not stop the eviction.
        const uint32_t after = flexContents.Get() - static_cast<uint32_t>(box->cost);
        if (after < ((flexSize.Get() * 5u) >> 3)) {
            break;
        }
        cache.SwapOut(box, false);
    }
    PropertyOf<Panic>(cache).Set(false);
}

}  // namespace tr
