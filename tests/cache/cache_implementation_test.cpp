// Tests of the generic cache over a fake factory: lookups and handles, the
// budget invariants, invalidation, panic release, the greedy pass and the
// statistics of a real cache.
#include "cache/cache_implementation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>
#include <random>
#include <string>
#include <vector>

#include "cache/greedy_cra.h"

namespace {

struct Handle {
    const void* pointer = nullptr;
    uint32_t size = 0;
    friend bool operator<(const Handle& a, const Handle& b) {
        return a.size != b.size ? a.size < b.size : a.pointer < b.pointer;
    }
};
bool IsNullHandle(const Handle& handle) { return handle.pointer == nullptr; }

// Key k costs k bytes; key 0 yields no data.
int gLiveFactories = 0;
bool gRefuseFactories = false;

class FakeFactory {
public:
    FakeFactory() { ++gLiveFactories; }
    virtual ~FakeFactory() { --gLiveFactories; }
    void GetData(const int& ticket, Handle& out) {
        if (ticket == 0) return;
        cost_ = static_cast<uint32_t>(ticket);
        out = {&storage_, cost_};
        ++held_;
    }
    void Release(Handle&) { --held_; }
    [[nodiscard]] uint32_t GetCost() const { return cost_; }
    [[nodiscard]] int Held() const { return held_; }

private:
    char storage_ = 0;
    uint32_t cost_ = 0;
    int held_ = 0;
};

// When set, the next factory made first looks up this key in this cache, as
// a factory that needs other entries of its own cache would.
struct Reentry;
Reentry* gReentry = nullptr;
void RunReentry();

struct FakeMetaFactory {
    static bool MakeFactory(FakeFactory*& out) {
        RunReentry();
        out = gRefuseFactories ? nullptr : new FakeFactory();
        return out != nullptr;
    }
};

// A policy that only counts posts, so that tests run the pass themselves.
int gPosts = 0;
template <typename Private, typename Weight>
struct CountingPolicy {
    static bool Initialize(Private&) { return true; }
    static void Post(Private&) { ++gPosts; }
    static void Shutdown(Private&) {}
};

using TestCache = CacheImplementation<int, Handle, FakeFactory, FakeMetaFactory, CountingPolicy>;
using Box = TestCache::Box;

struct Reentry {
    TestCache* cache;
    int key;
    bool got = false;
};
void RunReentry() {
    if (gReentry == nullptr) return;
    Reentry& reentry = *gReentry;
    gReentry = nullptr;
    Handle handle;
    reentry.got = reentry.cache->Get(reentry.key, handle);
    if (reentry.got) {
        EXPECT_TRUE(reentry.cache->Release(handle));
    }
}

uint32_t PropertyValue(TestCache& cache, int which) {
    CacheProperties& properties = cache;
    switch (which) {
        case 0: return tr::PropertyOf<FlexCacheSize>(properties).Get();
        case 1: return tr::PropertyOf<FlexCacheContents>(properties).Get();
        case 2: return tr::PropertyOf<TotalCacheSize>(properties).Get();
        default: return tr::PropertyOf<TotalCacheContents>(properties).Get();
    }
}
uint32_t FlexSize(TestCache& c) { return PropertyValue(c, 0); }
uint32_t FlexContents(TestCache& c) { return PropertyValue(c, 1); }
uint32_t TotalContents(TestCache& c) { return PropertyValue(c, 3); }
bool InPanic(TestCache& c) { return tr::PropertyOf<Panic>(static_cast<CacheProperties&>(c)).Get(); }

std::vector<Box*> Boxes(TestCache& cache) {
    std::vector<Box*> boxes;
    cache.ForEachBox([](Box* box, void* context) {
        static_cast<std::vector<Box*>*>(context)->push_back(box);
        return 0;
    }, &boxes);
    return boxes;
}

// The invariants, summed from the boxes.
void ExpectInvariants(TestCache& cache, uint32_t budget, const std::string& where) {
    uint32_t total = 0, unreferenced = 0, referenced = 0;
    for (Box* box : Boxes(cache)) {
        total += static_cast<uint32_t>(box->cost);
        (box->refCount > 0 ? referenced : unreferenced) += static_cast<uint32_t>(box->cost);
    }
    EXPECT_EQ(TotalContents(cache), total) << where;
    EXPECT_EQ(FlexContents(cache), unreferenced) << where;
    EXPECT_EQ(FlexSize(cache), budget - referenced) << where;
    EXPECT_EQ(InPanic(cache), FlexSize(cache) == 0) << where;
}

class CacheTest : public ::testing::Test {
protected:
    void SetUp() override {
        gLiveFactories = 0;
        gPosts = 0;
        gRefuseFactories = false;
    }
    void TearDown() override { EXPECT_EQ(gLiveFactories, 0) << "factories leaked"; }
};

TEST_F(CacheTest, TwoGetsShareOneEntry) {
    TestCache cache(1000);
    Handle first, second;
    ASSERT_TRUE(cache.Get(100, first));
    ASSERT_TRUE(cache.Get(100, second));
    EXPECT_EQ(first.pointer, second.pointer);
    ASSERT_EQ(Boxes(cache).size(), 1u);
    Box* box = Boxes(cache)[0];
    EXPECT_EQ(box->refCount, 2);
    EXPECT_EQ(box->hitCount, 1);
    EXPECT_EQ(box->missCount, 1);
    EXPECT_EQ(box->swapInCount, 1);
    EXPECT_EQ(FlexSize(cache), 900u);
    EXPECT_TRUE(cache.Release(first));
    EXPECT_TRUE(cache.Release(second));
    EXPECT_EQ(box->refCount, 0);
    EXPECT_EQ(FlexContents(cache), 100u);
    EXPECT_EQ(FlexSize(cache), 1000u);
    EXPECT_FALSE(cache.Release(second)) << "already given back";
    ExpectInvariants(cache, 1000, "after release");
    EXPECT_EQ(gPosts, 0);
}

TEST_F(CacheTest, UnknownHandleChangesNothing) {
    TestCache cache(1000);
    Handle held;
    ASSERT_TRUE(cache.Get(7, held));
    char other = 0;
    const Handle unknown[] = {{&other, 7}, {held.pointer, 8}, {nullptr, 0}};
    for (const Handle& handle : unknown) {
        EXPECT_FALSE(cache.Release(handle));
    }
    EXPECT_EQ(Boxes(cache)[0]->refCount, 1);
    ExpectInvariants(cache, 1000, "after unknown releases");
    EXPECT_TRUE(cache.Release(held));
}

TEST_F(CacheTest, FailuresLeaveNoEntry) {
    TestCache cache(1000);
    Handle out{&out, 99};
    gRefuseFactories = true;
    EXPECT_FALSE(cache.Get(5, out));
    EXPECT_EQ(cache.BoxCount(), 0u);
    gRefuseFactories = false;
    EXPECT_FALSE(cache.Get(0, out)) << "the factory gave no data";
    EXPECT_EQ(out.size, 99u) << "out untouched on failure";
    ASSERT_EQ(cache.BoxCount(), 1u);
    EXPECT_EQ(Boxes(cache)[0]->refCount, 0);
    EXPECT_NE(Boxes(cache)[0]->factory, nullptr);
}

TEST_F(CacheTest, InvalidateMakesANewEntry) {
    TestCache cache(1000);
    Handle old;
    ASSERT_TRUE(cache.Get(50, old));
    EXPECT_TRUE(cache.Invalidate(50));
    EXPECT_FALSE(cache.Invalidate(50));
    EXPECT_FALSE(cache.Invalidate(51));
    Handle fresh;
    ASSERT_TRUE(cache.Get(50, fresh));
    EXPECT_NE(fresh.pointer, old.pointer);
    ASSERT_EQ(cache.BoxCount(), 2u);
    EXPECT_EQ(gLiveFactories, 2);
    EXPECT_TRUE(cache.Release(old));  // last handle of the invalidated box drops its data
    EXPECT_EQ(gLiveFactories, 1);
    EXPECT_TRUE(cache.Release(fresh));
    EXPECT_EQ(gLiveFactories, 1);
    EXPECT_TRUE(cache.Flush());
    for (Box* box : Boxes(cache)) EXPECT_TRUE(box->invalidated);
    ExpectInvariants(cache, 1000, "after flush");
}

// Panic is judged after the release has given the entry's cost back to the
// flexible budget: data are dropped at once only when no budget is left even
// then (here: referenced data beyond the budget, or no budget at all).
TEST_F(CacheTest, PanicDropsDataOnLastRelease) {
    TestCache cache(300);
    Handle big, small;
    ASSERT_TRUE(cache.Get(300, big));
    EXPECT_TRUE(InPanic(cache));
    ASSERT_TRUE(cache.Get(100, small));  // flexible budget wraps below zero
    EXPECT_TRUE(cache.Release(small));   // back to exactly 0: panic, dropped
    EXPECT_TRUE(InPanic(cache));
    EXPECT_EQ(gLiveFactories, 1) << "released in panic: dropped at once";
    EXPECT_TRUE(cache.Release(big));
    EXPECT_FALSE(InPanic(cache));
    EXPECT_EQ(gLiveFactories, 1) << "budget left after the release: kept";
    ExpectInvariants(cache, 300, "after panic");

    TestCache noBudget(0);
    Handle handle;
    ASSERT_TRUE(noBudget.Get(50, handle));
    EXPECT_TRUE(noBudget.Release(handle));
    EXPECT_EQ(gLiveFactories, 1) << "a cache without budget keeps nothing unreferenced";
}

// Random gets and releases over a few keys keep the invariants; the budget
// is generous so that no eviction interferes.
TEST_F(CacheTest, RandomTrafficKeepsInvariants) {
    const uint32_t budget = 100000;
    TestCache cache(budget);
    std::mt19937 random(12345);
    std::vector<Handle> held;
    for (int i = 0; i < 3000; ++i) {
        if (held.empty() || random() % 3 != 0) {
            Handle handle;
            if (cache.Get(static_cast<int>(1 + random() % 40), handle)) held.push_back(handle);
        } else {
            const size_t index = random() % held.size();
            ASSERT_TRUE(cache.Release(held[index])) << i;
            held.erase(held.begin() + static_cast<long>(index));
        }
        if (i % 7 == 0) cache.Invalidate(static_cast<int>(1 + random() % 40));
        ExpectInvariants(cache, budget, "step " + std::to_string(i));
        if (HasFailure()) return;
    }
    for (const Handle& handle : held) EXPECT_TRUE(cache.Release(handle));
}

// Unreferenced data over budget: every request posts a pass; the pass evicts
// until the next candidate would take the data below five eighths of the
// budget, and recalibrates the budget properties.
TEST_F(CacheTest, GreedyPassEvictsToFiveEighths) {
    const uint32_t budget = 1000;
    TestCache cache(budget);
    for (int key = 1; key <= 20; ++key) {
        Handle handle;
        ASSERT_TRUE(cache.Get(key * 10, handle));  // 10 + 20 + ... + 200 = 2100 bytes
        ASSERT_TRUE(cache.Release(handle));
    }
    EXPECT_GT(gPosts, 0);
    ASSERT_GT(FlexContents(cache), budget);
    // Equal weights (no time cost): candidates are evicted in address order.
    for (Box* box : Boxes(cache)) box->timeCost = 0;
    std::vector<Box*> byAddress = Boxes(cache);
    std::sort(byAddress.begin(), byAddress.end(), std::less<Box*>());
    std::vector<uint32_t> costs;
    for (Box* box : byAddress) costs.push_back(static_cast<uint32_t>(box->cost));
    cache.RunGreedyPass();

    // Replay the stopping rule: evict while the data stay at or above 5/8.
    const uint32_t floor = budget * 5 / 8;
    uint32_t expected = 2100;
    size_t evicted = 0;
    while (evicted < byAddress.size() && expected - costs[evicted] >= floor) {
        expected -= costs[evicted];
        ++evicted;
    }
    ASSERT_GT(evicted, 0u);
    EXPECT_EQ(FlexContents(cache), expected);
    for (size_t i = 0; i < byAddress.size(); ++i) {
        EXPECT_EQ(byAddress[i]->factory == nullptr, i < evicted) << "box " << i;
        EXPECT_EQ(byAddress[i]->swapOutCount, i < evicted ? 1 : 0) << "box " << i;
    }
    EXPECT_GE(FlexContents(cache), floor);
    ExpectInvariants(cache, budget, "after the pass");
    EXPECT_FALSE(InPanic(cache));
    EXPECT_EQ(cache.BoxCount(), 20u) << "boxes with data are never dropped by the scan";
}

TEST_F(CacheTest, PassBelowBudgetChangesNothing) {
    TestCache cache(1000);
    Handle handle;
    ASSERT_TRUE(cache.Get(100, handle));
    ASSERT_TRUE(cache.Release(handle));
    cache.RunGreedyPass();
    EXPECT_EQ(gLiveFactories, 1);
    EXPECT_EQ(FlexContents(cache), 100u);
    TestCache empty(0);
    empty.RunGreedyPass();  // empty and no budget: returns at the count of boxes
    EXPECT_EQ(empty.BoxCount(), 0u);
}

TEST_F(CacheTest, StatisticsOfEntries) {
    TestCache cache(1000);
    Handle a, b;
    ASSERT_TRUE(cache.Get(30, a));
    ASSERT_TRUE(cache.Get(30, b));
    char buffer[2048] = "";
    const uint32_t capacity = sizeof buffer - 1;
    EXPECT_TRUE(cache.DumpStatistics(buffer, &capacity));
    const std::string expected =
        "Factory_Box:\n Cost in Memory: 30\n Reference Count: 2\n Hit Count: 1"
        "\n Miss Count: 1\n Hit Ratio: 0.500000\n Num Times Swapped In: 1"
        "\n Num Times Swapped Out: 0\n Is currently cached.\n"
        "Hit Count: 1\nMiss Count: 1\nHit Ratio: 0.500000\nRef Count: 2\n"
        " Total Currently Cached: 1\n Total FBs: 1\n";
    EXPECT_EQ(std::string(buffer), expected);
    EXPECT_TRUE(cache.Release(a));
    EXPECT_TRUE(cache.Release(b));
}

// The real policy: requests over budget post passes to the background
// executor, which brings the data back down; destruction shuts it down first.
using GreedyCache = CacheImplementation<int, Handle, FakeFactory, FakeMetaFactory, Greedy_CRA>;

TEST_F(CacheTest, BackgroundPassesWithTheGreedyPolicy) {
    {
        GreedyCache cache(1000);
        for (int key = 1; key <= 40; ++key) {
            Handle handle;
            ASSERT_TRUE(cache.Get(key * 10, handle));
            ASSERT_TRUE(cache.Release(handle));
        }
        bool settled = false;
        for (int i = 0; i < 2000 && !settled; ++i) {
            {
                vantor::threads::ScopedLock lock(cache.GetMutex());
                CacheProperties& properties = cache;
                settled = tr::PropertyOf<FlexCacheContents>(properties).Get() <=
                          tr::PropertyOf<FlexCacheSize>(properties).Get();
            }
            if (!settled) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(settled);
    }
    EXPECT_EQ(gLiveFactories, 0);
}

}  // namespace

namespace {

// ForEachBox: the four callback actions, on four boxes in key order.
TEST_F(CacheTest, ForEachBoxActions) {
    struct Case {
        int actionAtSecond;
        bool result;
        int visited;
        uint32_t boxesLeft;
    };
    const Case cases[] = {
        {0, true, 4, 4},   // continue
        {1, false, 2, 4},  // stop
        {2, true, 4, 3},   // remove and continue
        {3, false, 2, 3},  // remove and stop
    };
    for (const Case& c : cases) {
        TestCache cache(1000);
        for (int key : {4, 1, 3, 2}) {
            Handle handle;
            ASSERT_TRUE(cache.Get(key, handle));
            ASSERT_TRUE(cache.Release(handle));
        }
        struct Walk {
            int action;
            std::vector<int> keys;
            Box* removed = nullptr;
        } walk{c.actionAtSecond, {}};
        const bool result = cache.ForEachBox([](Box* box, void* context) {
            auto& w = *static_cast<Walk*>(context);
            w.keys.push_back(box->ticket);
            if (w.keys.size() != 2) return 0;
            if (w.action >= 2) w.removed = box;
            return w.action;
        }, &walk);
        EXPECT_EQ(result, c.result) << "action " << c.actionAtSecond;
        EXPECT_EQ(static_cast<int>(walk.keys.size()), c.visited);
        for (size_t i = 0; i < walk.keys.size(); ++i) EXPECT_EQ(walk.keys[i], static_cast<int>(i + 1));
        EXPECT_EQ(cache.BoxCount(), c.boxesLeft);
        if (walk.removed != nullptr) {  // the callback owns a removed box
            cache.SwapOut(walk.removed, true);
            delete walk.removed;
        }
    }
}

// Makes n boxes that keep statistics but no data: with no budget at all,
// every release drops the data at once.
void MakeBoxesWithoutData(TestCache& cache, int n) {
    for (int key = 1; key <= n; ++key) {
        Handle handle;
        ASSERT_TRUE(cache.Get(key, handle));
        ASSERT_TRUE(cache.Release(handle));
    }
}

// Over 2048 boxes without data the step is 1024 = n / 2: every other box is
// dropped, whatever the random start.
TEST_F(CacheTest, PassThinsLargeIndexToHalf) {
    TestCache cache(0);
    MakeBoxesWithoutData(cache, 2048);
    ASSERT_EQ(gLiveFactories, 0);
    cache.RunGreedyPass();
    EXPECT_GE(cache.BoxCount(), 1023u);
    EXPECT_LE(cache.BoxCount(), 1025u);
}

// Over n ≤ 1024 boxes the position falls by 1024 − n per box from a start
// below n: only a run of boxes at the start of the index survives, no more
// than start / (1024 − n) + 1 of them.
TEST_F(CacheTest, PassThinsSmallIndexAfterTheWrap) {
    const int n = 1000;
    TestCache cache(0);
    MakeBoxesWithoutData(cache, n);
    cache.RunGreedyPass();
    const std::vector<Box*> left = Boxes(cache);
    EXPECT_LE(left.size(), static_cast<size_t>(n / (1024 - n) + 1));
    for (size_t i = 0; i < left.size(); ++i) {
        EXPECT_EQ(left[i]->ticket, static_cast<int>(i + 1)) << "survivors are the first boxes";
    }
    // Invalidated boxes without data are always dropped.
    TestCache invalidated(0);
    MakeBoxesWithoutData(invalidated, 3000);
    invalidated.Flush();
    invalidated.RunGreedyPass();
    EXPECT_EQ(invalidated.BoxCount(), 0u);
}

}  // namespace

namespace {

// A lookup made while the entry's own factory is being made (re-entry on the
// same thread) skips that entry and makes one of its own, seeded with the
// statistics of the entry under production.
TEST_F(CacheTest, ReentrantLookupSkipsTheEntryUnderProduction) {
    TestCache cache(0);  // no budget: every release drops the data
    Handle handle;
    ASSERT_TRUE(cache.Get(5, handle));
    ASSERT_TRUE(cache.Get(5, handle));
    ASSERT_TRUE(cache.Release(handle));
    ASSERT_TRUE(cache.Release(handle));
    ASSERT_EQ(cache.BoxCount(), 1u);
    Box* original = Boxes(cache)[0];
    ASSERT_EQ(original->factory, nullptr);
    ASSERT_NE(original->lastAccess, 0u) << "the tick count is the seed's tie-breaker";
    const Box before = *original;

    Reentry reentry{&cache, 5};
    gReentry = &reentry;
    ASSERT_TRUE(cache.Get(5, handle));
    EXPECT_TRUE(reentry.got);
    ASSERT_EQ(cache.BoxCount(), 2u);
    Box* inner = Boxes(cache)[0] == original ? Boxes(cache)[1] : Boxes(cache)[0];
    EXPECT_EQ(inner->hitCount, before.hitCount);
    EXPECT_EQ(inner->missCount, before.missCount + 1);
    EXPECT_EQ(inner->swapInCount, before.swapInCount + 1);
    EXPECT_EQ(inner->refCount, 0);
    EXPECT_EQ(original->missCount, before.missCount + 1);
    EXPECT_EQ(original->refCount, 1);
    EXPECT_TRUE(cache.Release(handle));
}

}  // namespace
