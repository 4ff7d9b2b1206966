// Outline builder benchmarks.
//
// BM_BuildPrintableAscii: the blocks of the 95 printable ASCII characters of
// DejaVu Sans at outline size 2048 from curve records, the glyph data
// encoded beforehand so the callback only copies bytes (the font engine is
// host cost, not ours). Counters: us_per_glyph, and tess_share, the part of
// the same run's time spent inside the GLU tessellator (our callbacks
// included); the rest is our own parsing, flattening, cleaning, nesting and
// packing.
//
// BM_LoopsAndSimplify: loop removal and simplification of one closed
// contour of n points shaped like a flattened glyph (a wavy ring with a few
// small loops), n from 2,000 up, with the fitted complexity.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "outline/contour_cleanup.h"
#include "outline/outline_builder.h"
#include "outline/tessellator.h"
#include "tools/glyph_source/glyph_source.h"

namespace {

struct Prepared {
    std::vector<std::vector<std::uint8_t>> data;  // by code - 0x20
};

std::int32_t CopyCallback(uintptr_t context, std::uint32_t code, void* metrics, std::uint32_t bufferSize,
                          void* buffer, const std::int32_t*) {
    const auto* prepared = reinterpret_cast<const Prepared*>(context);
    std::memset(metrics, 0, 20);
    const auto& bytes = prepared->data.at(code - 0x20);
    if (buffer == nullptr) return static_cast<std::int32_t>(bytes.size());
    if (bytes.size() > bufferSize || bytes.empty()) return 0;
    std::memcpy(buffer, bytes.data(), bytes.size());
    return static_cast<std::int32_t>(bytes.size());
}

const Prepared& Glyphs() {
    static const Prepared prepared = [] {
        Prepared p;
        auto source = tr::tools::GlyphSource::Open(tr::tools::kDefaultFont, 2048,
                                                   tr::tools::GlyphFormat::CurveRecords);
        for (std::uint32_t code = 0x20; code < 0x7F; ++code) {
            std::vector<std::uint8_t> bytes;
            tr::tools::GlyphMetricsRecord metrics;
            if (source) source->Encode(code, bytes, metrics);
            p.data.push_back(std::move(bytes));
        }
        return p;
    }();
    return prepared;
}

void BM_BuildPrintableAscii(benchmark::State& state) {
    const Prepared& glyphs = Glyphs();
    const auto context = reinterpret_cast<uintptr_t>(&glyphs);
    tr::EnableTessellationTiming(true);
    tr::TakeTessellationStats();
    const auto start = std::chrono::steady_clock::now();
    std::size_t built = 0;
    for (auto _ : state) {
        for (std::uint32_t code = 0x20; code < 0x7F; ++code) {
            const OutlineRequest request =
                tr::MakeOutlineRequest(context, OUTLINE_NO_CACHE, 2048, &CopyCallback,
                                       static_cast<std::uint16_t>(code), 8, 0);
            const OMData block = tr::BuildOutlineBlock(request);
            built += block.pointer != nullptr;
            delete[] block.pointer;
        }
    }
    const double total = std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
    const tr::TessellationStats tess = tr::TakeTessellationStats();
    tr::EnableTessellationTiming(false);
    const double glyphCount = static_cast<double>(state.iterations()) * 95.0;
    state.counters["us_per_glyph"] = total / glyphCount / 1000.0;
    state.counters["tess_share"] = static_cast<double>(tess.nanoseconds) / total;
    state.counters["blocks"] = static_cast<double>(built) / static_cast<double>(state.iterations());
    state.SetItemsProcessed(static_cast<std::int64_t>(glyphCount));
}
BENCHMARK(BM_BuildPrintableAscii)->Unit(benchmark::kMillisecond);

// A glyph-like closed contour of n points: a ring whose perimeter grows
// with n at a fixed point spacing (about 2 units, as 24-point curve pieces
// at outline size 2048), with a wave of 48 points per period, z constant as
// the parser leaves it, and every 500th point swapped with its neighbour so
// that a small loop forms there.
Coutline WavyRing(std::size_t n) {
    Coutline c;
    const double radius = 2.0 * static_cast<double>(n) / (2 * std::numbers::pi);
    for (std::size_t i = 0; i < n; ++i) {
        const double a = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(n);
        const double r = radius + 20.0 * std::sin(2 * std::numbers::pi * static_cast<double>(i) / 48.0);
        c.points.push_back(CPoint3D{r * std::cos(a), r * std::sin(a), -2048.0});
    }
    std::size_t i = 0;
    for (auto it = c.points.begin(); it != c.points.end(); ++it, ++i) {
        if (i % 500 == 250) {
            auto next = std::next(it);
            if (next != c.points.end()) std::swap(*it, *next);
        }
    }
    return c;
}

void BM_LoopsAndSimplify(benchmark::State& state) {
    const Coutline ring = WavyRing(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Coutline c = ring;
        tr::RemoveLoops(c);
        tr::Simplify(c, 2048 / 16000.0);
        benchmark::DoNotOptimize(c.points.size());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LoopsAndSimplify)->RangeMultiplier(2)->Range(2000, 16000)->Complexity(benchmark::oN)->Unit(benchmark::kMicrosecond);

// The literal restart-from-the-first-edge loop removal, for comparison.
void BM_LoopsFromStart(benchmark::State& state) {
    const Coutline ring = WavyRing(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        Coutline c = ring;
        tr::RemoveLoopsFromStart(c);
        benchmark::DoNotOptimize(c.points.size());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LoopsFromStart)->RangeMultiplier(2)->Range(2000, 16000)->Complexity()->Unit(benchmark::kMicrosecond);

}  // namespace
