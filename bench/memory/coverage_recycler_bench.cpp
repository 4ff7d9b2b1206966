// Coverage buffers in steady state: each iteration takes a buffer, writes all
// of it (as the fragment drawing does) and gives it back. The recycler keeps
// the pages mapped; the system allocator hands large blocks back to the
// kernel, so every reuse pays page faults again.
#include "memory/coverage_recycler.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

// Character-sized coverage: W x H pixels of 8 bytes.
uint32_t CoverageBytes(const benchmark::State& state) {
    const auto side = static_cast<uint32_t>(state.range(0));
    return side * side * 8;
}

void BM_RecyclerSteadyState(benchmark::State& state) {
    const uint32_t bytes = CoverageBytes(state);
    tr::PurgeRecycler();
    for (auto _ : state) {
        void* buffer = tr::AllocateBuffer(bytes);
        std::memset(buffer, 0, bytes);
        benchmark::DoNotOptimize(buffer);
        tr::RecycleBuffer(buffer);
    }
    tr::PurgeRecycler();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes);
}

void BM_SystemAllocatorSteadyState(benchmark::State& state) {
    const uint32_t bytes = CoverageBytes(state);
    for (auto _ : state) {
        void* buffer = std::aligned_alloc(64, (bytes + 63) / 64 * 64);
        std::memset(buffer, 0, bytes);
        benchmark::DoNotOptimize(buffer);
        std::free(buffer);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes);
}

// One surface of 16 characters of assorted sizes (120-400 px square): all
// buffers are taken while the characters are finished, all given back when
// the surface closes.
constexpr int kCharacters = 16;

std::vector<uint32_t> SurfaceSizes() {
    std::mt19937 random(2024);
    std::vector<uint32_t> sizes(kCharacters);
    for (uint32_t& bytes : sizes) {
        const uint32_t side = 120 + random() % 281;
        bytes = side * side * 8;
    }
    return sizes;
}

template <typename Allocate, typename Free>
void RunSurfaces(benchmark::State& state, Allocate allocate, Free release) {
    const std::vector<uint32_t> sizes = SurfaceSizes();
    void* buffers[kCharacters];
    int64_t bytesPerSurface = 0;
    for (const uint32_t bytes : sizes) {
        bytesPerSurface += bytes;
    }
    for (auto _ : state) {
        for (int i = 0; i < kCharacters; ++i) {
            buffers[i] = allocate(sizes[i]);
            std::memset(buffers[i], 0, sizes[i]);
        }
        benchmark::ClobberMemory();
        for (void* buffer : buffers) {
            release(buffer);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytesPerSurface);
}

void BM_RecyclerSurface(benchmark::State& state) {
    tr::PurgeRecycler();
    RunSurfaces(state, tr::AllocateBuffer, tr::RecycleBuffer);
    tr::PurgeRecycler();
}

void BM_SystemAllocatorSurface(benchmark::State& state) {
    RunSurfaces(
        state, [](uint32_t bytes) { return std::aligned_alloc(64, (bytes + 63) / 64 * 64); },
        [](void* buffer) { std::free(buffer); });
}

BENCHMARK(BM_RecyclerSurface);
BENCHMARK(BM_SystemAllocatorSurface);

// 100 px (80,000 bytes, below the classes), 400 px (1.28 MB -> 2 MiB class),
// 800 px (5.12 MB -> 5 MiB class).
BENCHMARK(BM_RecyclerSteadyState)->Arg(100)->Arg(400)->Arg(800);
BENCHMARK(BM_SystemAllocatorSteadyState)->Arg(100)->Arg(400)->Arg(800);

}  // namespace
