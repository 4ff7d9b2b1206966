// Tests of the generic cache over a fake factory: failed lookups, invalidation,
// panic, budget invariants under random traffic, the greedy pass, re-entry.
#include "cache/cache_implementation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "cache_level_support.h"

namespace tr::test {
namespace {

struct Handle {
    const void* pointer = nullptr;
    uint32_t size = 0;
    friend bool operator<(const Handle& a, const Handle& b) {
        return a.size != b.size ? a.size < b.size : a.pointer < b.pointer;
    }
};
bool IsNullHandle(const Handle& handle) { return handle.pointer == nullptr; }

int gLiveFactories = 0, gPosts = 0;
bool gRefuseFactories = false;
std::function<void()> gOnMakeFactory;  // run once by the next MakeFactory

// Key k costs k bytes; key 0 yields no data.
struct FakeFactory {
    FakeFactory() { ++gLiveFactories; }
    virtual ~FakeFactory() { --gLiveFactories; }
    void GetData(const int& ticket, Handle& out) {
        if (ticket != 0) out = {&storage, cost = static_cast<uint32_t>(ticket)};
    }
    void Release(Handle&) {}
    [[nodiscard]] uint32_t GetCost() const { return cost; }
    char storage = 0;
    uint32_t cost = 0;
};

struct FakeMetaFactory {
    static bool MakeFactory(FakeFactory*& out) {
        if (auto hook = std::exchange(gOnMakeFactory, nullptr)) hook();
        out = gRefuseFactories ? nullptr : new FakeFactory();
        return out != nullptr;
    }
};

// Only counts posts: tests run the pass themselves.
template <typename Private, typename Weight>
struct CountingPolicy {
    static bool Initialize(Private&) { return true; }
    static void Post(Private&) { ++gPosts; }
    static void Shutdown(Private&) {}
};

using TestCache = CacheImplementation<int, Handle, FakeFactory, FakeMetaFactory, CountingPolicy>;
using Box = TestCache::Box;

// Gets and releases each key once.
void Touch(TestCache& cache, std::initializer_list<int> keys) {
    for (const int key : keys) {
        Handle handle;
        ASSERT_TRUE(cache.Get(key, handle));
        ASSERT_TRUE(cache.Release(handle));
    }
}

class CacheTest : public ::testing::Test {
protected:
    void SetUp() override { gLiveFactories = gPosts = 0; }
    void TearDown() override { EXPECT_EQ(gLiveFactories, 0) << "factories leaked"; }
};

// A failed lookup leaves `out` alone and at most a factory behind. An
// invalidated entry is never found again; its data go with its last handle.
TEST_F(CacheTest, FailedLookupsAndInvalidation) {
    TestCache cache(1000);
    Handle out{&out, 99};
    gRefuseFactories = true;
    EXPECT_FALSE(cache.Get(5, out));
    gRefuseFactories = false;
    EXPECT_EQ(cache.BoxCount(), 0u) << "no factory, no entry";
    EXPECT_FALSE(cache.Get(0, out)) << "the factory gave no data";
    EXPECT_EQ(out.size, 99u);
    ASSERT_EQ(cache.BoxCount(), 1u);
    EXPECT_EQ(BoxesOf(cache)[0]->refCount, 0);
    EXPECT_NE(BoxesOf(cache)[0]->factory, nullptr);

    Handle old, fresh;
    ASSERT_TRUE(cache.Get(50, old));
    EXPECT_TRUE(cache.Invalidate(50));
    EXPECT_FALSE(cache.Invalidate(50));
    EXPECT_FALSE(cache.Invalidate(51));
    ASSERT_TRUE(cache.Get(50, fresh));
    EXPECT_NE(fresh.pointer, old.pointer);
    EXPECT_EQ(gLiveFactories, 3);
    EXPECT_TRUE(cache.Release(old));
    EXPECT_EQ(gLiveFactories, 2);
    EXPECT_TRUE(cache.Release(fresh));
    EXPECT_TRUE(cache.Flush());
    for (Box* box : BoxesOf(cache)) EXPECT_TRUE(box->invalidated);
    ExpectBudgetInvariants(cache, "after flush");
}

// Panic is judged after the release gave the cost back to the flexible
// budget: data are dropped at once only when none is left even then.
TEST_F(CacheTest, PanicDropsDataOnLastRelease) {
    TestCache cache(300);
    Handle big, small;
    ASSERT_TRUE(cache.Get(300, big));
    EXPECT_TRUE(Property<Panic>(cache));
    ASSERT_TRUE(cache.Get(100, small));  // flexible budget wraps below zero
    EXPECT_TRUE(cache.Release(small));   // back to exactly 0: dropped
    EXPECT_EQ(gLiveFactories, 1);
    EXPECT_TRUE(cache.Release(big));
    EXPECT_FALSE(Property<Panic>(cache));
    EXPECT_EQ(gLiveFactories, 1) << "budget left after the release: kept";
    ExpectBudgetInvariants(cache, "after panic");
    TestCache noBudget(0);
    Touch(noBudget, {50});
    EXPECT_EQ(gLiveFactories, 1) << "a cache without budget keeps nothing unreferenced";
    TestCache oneLeft(300);
    ASSERT_TRUE(oneLeft.Get(299, big));
    EXPECT_FALSE(Property<Panic>(oneLeft)) << "one byte of budget left is no panic";
    EXPECT_TRUE(oneLeft.Release(big));
    EXPECT_EQ(gLiveFactories, 2) << "released with budget left: kept";
}

// Random gets, releases and invalidations keep the invariants (no eviction).
TEST_F(CacheTest, RandomTrafficKeepsInvariants) {
    TestCache cache(100000);
    std::mt19937 random(12345);
    std::vector<Handle> held;
    for (int i = 0; i < 3000 && !HasFailure(); ++i) {
        Handle handle;
        if (held.empty() || random() % 3 != 0) {
            if (cache.Get(static_cast<int>(1 + random() % 40), handle)) held.push_back(handle);
        } else {
            const size_t index = random() % held.size();
            ASSERT_TRUE(cache.Release(held[index])) << i;
            held.erase(held.begin() + static_cast<long>(index));
        }
        if (i % 7 == 0) cache.Invalidate(static_cast<int>(1 + random() % 40));
        ExpectBudgetInvariants(cache, "step " + std::to_string(i));
        EXPECT_EQ(Property<Panic>(cache), Property<FlexCacheSize>(cache) == 0u);
    }
    for (const Handle& handle : held) EXPECT_TRUE(cache.Release(handle));
}

// Over budget, requests post passes; a pass evicts in ascending weight (ties
// by address) until the next would take the data below 5/8 of the budget.
TEST_F(CacheTest, GreedyPassEvictsToFiveEighths) {
    TestCache cache(1000);
    // Near-equal costs: any other stopping fraction stops elsewhere.
    for (int key = 100; key < 120; ++key) Touch(cache, {key});  // 2190 bytes
    EXPECT_GT(gPosts, 0);
    std::vector<Box*> byAddress = BoxesOf(cache);
    for (Box* box : byAddress) box->timeCost = 0;
    std::sort(byAddress.begin(), byAddress.end(), std::less<Box*>());
    uint32_t expected = 2190;
    size_t evicted = 0;
    while (evicted < byAddress.size() && expected - byAddress[evicted]->cost >= 1000u * 5 / 8) {
        expected -= byAddress[evicted++]->cost;
    }
    ASSERT_GT(evicted, 0u);
    cache.RunGreedyPass();
    EXPECT_EQ(Property<FlexCacheContents>(cache), expected);
    for (size_t i = 0; i < byAddress.size(); ++i) {
        EXPECT_EQ(byAddress[i]->swapOutCount, i < evicted ? 1 : 0) << "box " << i;
    }
    ExpectBudgetInvariants(cache, "after the pass");
    EXPECT_EQ(cache.BoxCount(), 20u) << "boxes with data are never dropped";
    cache.RunGreedyPass();
    EXPECT_EQ(Property<FlexCacheContents>(cache), expected) << "below budget: nothing to do";
}

// Boxes without data are thinned: at n = 2048 the step is n / 2, so every
// other box goes; at n ≤ 1024 the position falls by 1024 − n per box from a
// start below n, so at most start / (1024 − n) + 1 leading boxes survive;
// invalidated ones always go.
TEST_F(CacheTest, PassThinsBoxesWithoutData) {
    const auto Filled = [](TestCache& cache, int n) {
        for (int key = 1; key <= n; ++key) Touch(cache, {key});  // no budget: data dropped at once
    };
    TestCache large(0), small(0), invalidated(0);
    Filled(large, 2048);
    large.RunGreedyPass();
    EXPECT_NEAR(large.BoxCount(), 1024, 1);
    Filled(small, 1000);
    small.RunGreedyPass();
    const std::vector<Box*> left = BoxesOf(small);
    EXPECT_LE(left.size(), 1000u / 24 + 1);
    for (size_t i = 0; i < left.size(); ++i) EXPECT_EQ(left[i]->ticket, static_cast<int>(i + 1));
    Filled(invalidated, 3000);
    invalidated.Flush();
    invalidated.RunGreedyPass();
    EXPECT_EQ(invalidated.BoxCount(), 0u);
}

// A lookup made while the entry's own factory is being made skips that
// entry and makes its own, seeded with the statistics of the one in production.
TEST_F(CacheTest, ReentrantLookupSkipsTheEntryUnderProduction) {
    TestCache cache(0);
    Touch(cache, {5, 5});
    Box* original = BoxesOf(cache)[0];
    ASSERT_EQ(original->factory, nullptr);
    ASSERT_NE(original->lastAccess, 0u) << "the seed's tie-breaker";
    const Box before = *original;
    bool innerGot = false;
    gOnMakeFactory = [&] {
        Handle inner;
        innerGot = cache.Get(5, inner) && cache.Release(inner);
    };
    Handle handle;
    ASSERT_TRUE(cache.Get(5, handle));
    EXPECT_TRUE(innerGot);
    ASSERT_EQ(cache.BoxCount(), 2u);
    Box* inner = BoxesOf(cache)[0] == original ? BoxesOf(cache)[1] : BoxesOf(cache)[0];
    EXPECT_EQ(inner->hitCount, before.hitCount);
    EXPECT_EQ(inner->missCount, before.missCount + 1);
    EXPECT_EQ(inner->swapInCount, before.swapInCount + 1);
    EXPECT_EQ(inner->refCount, 0);
    EXPECT_EQ(original->missCount, before.missCount + 1);
    EXPECT_EQ(original->refCount, 1);
    EXPECT_TRUE(cache.Release(handle));
}

}  // namespace
}  // namespace tr::test
