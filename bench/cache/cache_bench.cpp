// Benchmarks of the generic cache: a hit on a hot entry, and a cache in
// steady state whose working set is larger than its budget, so that requests
// keep posting background greedy passes that evict down to five eighths.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "cache/cache_implementation.h"
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

// Holds `ticket` bytes of data (the key is its own cost).
class BenchFactory {
public:
    virtual ~BenchFactory() = default;
    void GetData(const uint32_t& ticket, Handle& out) {
        if (data_.empty()) data_.resize(ticket);
        out = {data_.data(), static_cast<uint32_t>(data_.size())};
    }
    void Release(Handle&) {}
    [[nodiscard]] uint32_t GetCost() const { return static_cast<uint32_t>(data_.size()); }

private:
    std::vector<char> data_;
};

struct BenchMetaFactory {
    static bool MakeFactory(BenchFactory*& out) {
        out = new BenchFactory();
        return true;
    }
};

using BenchCache = CacheImplementation<uint32_t, Handle, BenchFactory, BenchMetaFactory, Greedy_CRA>;

void BM_CacheHit(benchmark::State& state) {
    BenchCache cache(1 << 20);
    for (auto _ : state) {
        Handle handle;
        benchmark::DoNotOptimize(cache.Get(512, handle));
        cache.Release(handle);
    }
}
BENCHMARK(BM_CacheHit);

// Keys 64..64+n-1 bytes, drawn with a skew towards small keys; the budget
// holds about a quarter of the working set.
void BM_CacheInSteadyState(benchmark::State& state) {
    const uint32_t keys = static_cast<uint32_t>(state.range(0));
    uint64_t workingSet = 0;
    for (uint32_t k = 0; k < keys; ++k) workingSet += 64 + k;
    BenchCache cache(static_cast<uint32_t>(workingSet / 4));
    std::mt19937 random(7);
    std::geometric_distribution<uint32_t> skew(4.0 / keys);
    for (auto _ : state) {
        const uint32_t key = 64 + skew(random) % keys;
        Handle handle;
        if (cache.Get(key, handle)) cache.Release(handle);
    }
}
BENCHMARK(BM_CacheInSteadyState)->Arg(256)->Arg(4096);

}  // namespace
