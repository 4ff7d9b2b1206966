// Outline loads of the 95 printable ASCII characters of DejaVu Sans at a
// 64-pixel outline size, as the rendering pass makes them (COutline2::Load),
// from each place a block can come from:
// - built: the no-cache flag, so every load runs the outline builder (the
//   host's glyph callback, flattening, clean-up, nesting, tessellation);
// - from disk: the caches are warm but the memory cache has been emptied, so
//   every load is a memory miss that the disk cache serves by reading the
//   block's file back (one open, two reads; the files were just written, so
//   they come from the operating system's page cache, not from the device);
// - from memory: every load is a memory cache hit.
// The space has no outline: in the cached runs each of its loads asks the
// disk cache, which asks the host again, as it does for every empty glyph.
// Items are character loads; compare the medians of the three.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>

#include "cache/memory_cache.h"
#include "outline/outline2.h"
#include "tools/glyph_source/glyph_source.h"
#include "titlerender.h"

namespace {

constexpr std::int32_t kOutlineSize = 64;
constexpr std::uint32_t kFirst = ' ';
constexpr std::uint32_t kLast = '~';
constexpr std::uint32_t kNoCache = 0x4000;
constexpr std::uint32_t kExtraKey = 8;  // what the rendering pass passes

// Loads every character once through one outline holder; the holder gives
// each block back before it fetches the next, and the last at the end.
void LoadAll(tr::tools::GlyphSource& glyphs, std::uint32_t flags) {
    COutline2 outline;
    for (std::uint32_t code = kFirst; code <= kLast; ++code) {
        benchmark::DoNotOptimize(outline.Load(glyphs.Context(), flags, kOutlineSize,
                                              &tr::tools::GlyphSource::Callback,
                                              static_cast<std::uint16_t>(code), kExtraKey));
    }
}

std::unique_ptr<tr::tools::GlyphSource> OpenFont(benchmark::State& state) {
    auto glyphs = tr::tools::GlyphSource::Open(tr::tools::kDefaultFont, kOutlineSize,
                                               tr::tools::GlyphFormat::CurveRecords);
    if (!glyphs) state.SkipWithError("cannot open DejaVu Sans");
    return glyphs;
}

// Gives every unreferenced memory entry back to the disk cache, which writes
// the block's file (first time) or frees its read-back copy (later times).
void EmptyMemoryCache() {
    CharacterMemoryCache& memory = *tr::GetMemoryCache();
    const std::uint32_t budget = memory.GetCacheSize();
    memory.SetCacheSize(0);
    memory.RunGreedyPass();
    memory.SetCacheSize(budget);
}

void SetItems(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kLast - kFirst + 1));
}

void BM_OutlineLoadBuilt(benchmark::State& state) {
    auto glyphs = OpenFont(state);
    if (!glyphs) return;
    for (auto _ : state) LoadAll(*glyphs, kNoCache);
    SetItems(state);
}

void BM_OutlineLoadFromDisk(benchmark::State& state) {
    auto glyphs = OpenFont(state);
    if (!glyphs) return;
    CreateCharacterCaches();
    LoadAll(*glyphs, 0);
    for (auto _ : state) {
        state.PauseTiming();
        EmptyMemoryCache();
        state.ResumeTiming();
        LoadAll(*glyphs, 0);
    }
    DestroyCharacterCaches();
    SetItems(state);
}

void BM_OutlineLoadFromMemory(benchmark::State& state) {
    auto glyphs = OpenFont(state);
    if (!glyphs) return;
    CreateCharacterCaches();
    LoadAll(*glyphs, 0);
    for (auto _ : state) LoadAll(*glyphs, 0);
    DestroyCharacterCaches();
    SetItems(state);
}

BENCHMARK(BM_OutlineLoadBuilt)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_OutlineLoadFromDisk)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_OutlineLoadFromMemory)->Unit(benchmark::kMicrosecond);

}  // namespace
