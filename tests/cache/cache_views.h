// tests/cache/cache_views.h — test-private: views into any instance of the
// generic cache: its boxes, its budget invariants summed from them, and a
// forced eviction of everything unreferenced.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "cache/properties.h"
#include "host/recursive_mutex.h"

namespace tr::test {

template <typename Cache>
std::vector<typename Cache::Box*> BoxesOf(Cache& cache) {
    std::vector<typename Cache::Box*> boxes;
    cache.ForEachBox(
        [](typename Cache::Box* box, void* context) {
            static_cast<std::vector<typename Cache::Box*>*>(context)->push_back(box);
            return 0;
        },
        &boxes);
    return boxes;
}

// The entry a lookup of `ticket` would find: equal key, not invalidated.
template <typename Cache, typename Ticket>
typename Cache::Box* LiveBox(Cache& cache, const Ticket& ticket) {
    for (auto* box : BoxesOf(cache)) {
        if (!box->invalidated && !(box->ticket < ticket) && !(ticket < box->ticket)) return box;
    }
    return nullptr;
}

template <typename P, typename Cache>
auto Property(Cache& cache) {
    return PropertyOf<P>(static_cast<CacheProperties&>(cache)).Get();
}

// TotalCacheContents, FlexCacheContents and FlexCacheSize as sums over the
// boxes, taken under the cache's lock.
template <typename Cache>
void ExpectBudgetInvariants(Cache& cache, const std::string& where) {
    vantor::threads::ScopedLock lock(cache.GetMutex());
    std::uint32_t total = 0, unreferenced = 0, referenced = 0;
    for (auto* box : BoxesOf(cache)) {
        const auto cost = static_cast<std::uint32_t>(box->cost);
        total += cost;
        (box->refCount > 0 ? referenced : unreferenced) += cost;
        EXPECT_GE(box->refCount, 0) << where;
        EXPECT_TRUE(box->factory != nullptr || box->cost == 0) << where;
    }
    EXPECT_EQ(Property<TotalCacheContents>(cache), total) << where;
    EXPECT_EQ(Property<FlexCacheContents>(cache), unreferenced) << where;
    EXPECT_EQ(Property<FlexCacheSize>(cache), Property<TotalCacheSize>(cache) - referenced) << where;
}

// Swaps out every unreferenced entry, as a pass under a budget of nothing
// does, then restores the budget (which takes no account of referenced
// entries: for a cache of which no handle is held).
template <typename Cache>
void EvictUnreferenced(Cache& cache) {
    const std::uint32_t budget = cache.GetCacheSize();
    cache.SetCacheSize(0);
    cache.RunGreedyPass();
    cache.SetCacheSize(budget);
}

}  // namespace tr::test
