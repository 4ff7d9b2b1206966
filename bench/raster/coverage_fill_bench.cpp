// Fill rate of the coverage kernels on glyph-sized triangles, in covered
// sub-samples per second, through the rasterizer's DrawIndexed path (vertex
// transform, set-up, edge walk and span writes included).
//
// Each kernel runs twice: as the rasterizer draws (prepared vertices, word
// writes, the general map two nibbles per lookup, the union scan for maps
// where drawing twice equals drawing once) and as the "Plain" twin, the
// reference walk with the kernels written one sub-sample at a time (the
// general one reading and writing every sub-sample on its own).
//
// Three triangle sets. "Glyphs" is the real thing: the triangulations of the
// 94 printable ASCII glyphs of DejaVu Sans built by the outline builder at
// 64 px (one outline unit = 4 sub-samples), indexed with shared vertices as
// the fragment drawing feeds them. Two synthetic sets bracket it on a
// 256 x 256 map: "Large" triangles span the glyph box, "Small" ones are
// 8-40 sub-samples across like the fan of a curved stroke.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "outline/character_data.h"
#include "outline/outline_builder.h"
#include "raster/coverage_kernels.h"
#include "raster/rasterizer_impl.h"
#include "tests/raster/raster_test_util.h"
#include "tools/glyph_source/glyph_source.h"

namespace {

constexpr int32_t kMapSide = 256;       // sub-samples: a 64-px glyph
constexpr int32_t kGlyphPx = 64;        // em size of the glyph set
constexpr int32_t kGlyphMapSide = 320;  // room for ascender and descender

// Triangles drawn as the fragment drawing does: one DrawIndexed per
// contour group, its indices numbering the group's own vertices.
struct TriangleSet {
    struct Draw {
        uint32_t firstVertex = 0;
        uint32_t firstIndex = 0;
        uint32_t count = 0;
    };
    std::vector<double> xy;  // vertex pairs
    std::vector<uint32_t> indices;
    std::vector<Draw> draws;
    int32_t mapSide = kMapSide;
    int64_t coveredSubSamples = 0;

    void Run(CRasterizer_& r) const {
        for (const Draw& d : draws) {
            r.VertexPointer(2, 0, 16, xy.data() + 2 * d.firstVertex);
            r.DrawIndexed(4, d.count, 0, indices.data() + d.firstIndex);
        }
    }
};

enum class Size { kLarge, kSmall, kGlyphs };

// Appends the triangles of one glyph block, centred in the map, in
// sub-samples with y down.
void AppendGlyph(const CCharacterData& block, TriangleSet& s) {
    const auto readDouble = [&](uint32_t offset) {
        double v;
        std::memcpy(&v, block.data + offset, sizeof v);
        return v;
    };
    const double minX = readDouble(tr::block::kMinXOffset), minY = readDouble(tr::block::kMinYOffset);
    const double maxX = readDouble(tr::block::kMaxXOffset), maxY = readDouble(tr::block::kMaxYOffset);
    constexpr double kSubPerUnit = 4.0;
    const double offsetX = std::floor((kGlyphMapSide - (maxX - minX) * kSubPerUnit) / 2) - minX * kSubPerUnit;
    const double offsetY = std::floor((kGlyphMapSide - (maxY - minY) * kSubPerUnit) / 2) + maxY * kSubPerUnit;
    for (uint32_t g = 0; g < block.GroupCount(); ++g) {
        const uint32_t count = block.TriangleIndexCount(g) / 3 * 3;
        const uint32_t* idx = block.TriangleIndices(g);
        const uint32_t base = static_cast<uint32_t>(s.xy.size() / 2);
        s.draws.push_back({base, static_cast<uint32_t>(s.indices.size()), count});
        const uint32_t vertices = count == 0 ? 0 : *std::max_element(idx, idx + count) + 1;
        const CPoint3D* p = block.OuterPoints(g);
        for (uint32_t i = 0; i < vertices; ++i) {
            s.xy.push_back(offsetX + p[i].x * kSubPerUnit);
            s.xy.push_back(offsetY - p[i].y * kSubPerUnit);
        }
        s.indices.insert(s.indices.end(), idx, idx + count);
    }
}

TriangleSet MakeGlyphTriangles() {
    TriangleSet s;
    s.mapSide = kGlyphMapSide;
    auto source = tr::tools::GlyphSource::Open(tr::tools::kDefaultFont, kGlyphPx,
                                               tr::tools::GlyphFormat::CurveRecords);
    if (!source) return s;
    for (uint32_t code = 0x21; code < 0x7F; ++code) {
        const OutlineRequest request = tr::MakeOutlineRequest(
            source->Context(), OUTLINE_NO_CACHE, kGlyphPx, &tr::tools::GlyphSource::Callback,
            static_cast<uint16_t>(code), 0, 0);
        const OMData handle = tr::BuildOutlineBlock(request);
        if (handle.pointer == nullptr) continue;
        CCharacterData block;
        block.data = handle.pointer;
        AppendGlyph(block, s);
        delete[] handle.pointer;
    }
    return s;
}

TriangleSet MakeTriangles(Size size) {
    if (size == Size::kGlyphs) return MakeGlyphTriangles();
    TriangleSet s;
    std::mt19937 rng(2024);
    std::uniform_real_distribution<double> anywhere(1.0, kMapSide - 1.0);
    std::uniform_real_distribution<double> local(-20.0, 20.0);
    std::uniform_real_distribution<double> centre(24.0, kMapSide - 24.0);
    for (uint32_t t = 0; t < 512; ++t) {
        const double cx = centre(rng), cy = centre(rng);
        for (int k = 0; k < 3; ++k) {
            s.xy.push_back(size == Size::kLarge ? anywhere(rng) : cx + local(rng));
            s.xy.push_back(size == Size::kLarge ? anywhere(rng) : cy + local(rng));
            s.indices.push_back(3 * t + k);
        }
    }
    s.draws.push_back({0, 0, static_cast<uint32_t>(s.indices.size())});
    return s;
}

// Object coordinates are sub-samples.
void SetUp(CRasterizer_& r, uint16_t* map, int32_t side) {
    r.Init(map, 0, side, side, 0);
    trtest::UseScreenSpace(r);
}

// Sub-samples covered, triangle by triangle (overlaps count each time),
// read back and cleared within each triangle's bounding box.
int64_t CountCovered(const TriangleSet& s) {
    const int32_t side = s.mapSide;
    std::vector<uint16_t> map(static_cast<size_t>(side) * side / 4);
    CRasterizer_ r;
    SetUp(r, map.data(), side);
    uint8_t one[16];
    std::memset(one, 1, sizeof one);
    r.SetNibbleMap(one);
    int64_t covered = 0;
    auto countAndClear = [&](const double* xy, const uint32_t* tri) {
        double lo[2] = {1e9, 1e9}, hi[2] = {-1e9, -1e9};
        for (int k = 0; k < 3; ++k) {
            for (int a = 0; a < 2; ++a) {
                lo[a] = std::min(lo[a], xy[2 * tri[k] + a]);
                hi[a] = std::max(hi[a], xy[2 * tri[k] + a]);
            }
        }
        const int32_t x0 = std::max(0, static_cast<int32_t>(lo[0]) - 2) / 4 * 4;
        const int32_t x1 = std::min(side, static_cast<int32_t>(hi[0]) + 6);
        const int32_t y0 = std::max(0, static_cast<int32_t>(lo[1]) - 2);
        const int32_t y1 = std::min(side, static_cast<int32_t>(hi[1]) + 2);
        for (int32_t y = y0; y < y1; ++y) {
            for (int32_t x = x0; x < x1; x += 4) {
                uint16_t& w = map[static_cast<size_t>(y / 4) * side + x + y % 4];
                for (int n = 0; n < 4; ++n) covered += ((w >> (4 * n)) & 0xF) != 0;
                w = 0;
            }
        }
    };
    for (const TriangleSet::Draw& d : s.draws) {
        const double* xy = s.xy.data() + 2 * d.firstVertex;
        r.VertexPointer(2, 0, 16, xy);
        for (uint32_t t = d.firstIndex; t < d.firstIndex + d.count; t += 3) {
            r.DrawIndexed(4, 3, 0, s.indices.data() + t);
            countAndClear(xy, s.indices.data() + t);
        }
    }
    return covered;
}

// The set and its covered sub-samples; false (the benchmark skipped) when
// there are no triangles.
bool LoadSet(benchmark::State& state, Size size, TriangleSet& s) {
    s = MakeTriangles(size);
    if (s.indices.empty()) {
        state.SkipWithError("no triangles (font missing?)");
        return false;
    }
    s.coveredSubSamples = CountCovered(s);
    return true;
}

enum class Kernel { kConstant, kConstantPlain, kGeneral, kGeneralPlain };

void BM_Fill(benchmark::State& state, Size size, Kernel kernel) {
    TriangleSet s;
    if (!LoadSet(state, size, s)) return;
    std::vector<uint16_t> map(static_cast<size_t>(s.mapSide) * s.mapSide / 4);
    CRasterizer_ r;
    SetUp(r, map.data(), s.mapSide);
    uint8_t nibbleMap[16];
    if (kernel == Kernel::kGeneral || kernel == Kernel::kGeneralPlain) {
        // Replace one applicator number, keep the others: a typical
        // read-modify-write map.
        for (int v = 0; v < 16; ++v) nibbleMap[v] = static_cast<uint8_t>(v);
        nibbleMap[0] = 2;
    } else {
        std::memset(nibbleMap, 2, sizeof nibbleMap);
    }
    r.SetNibbleMap(nibbleMap);
    r.UsePlainKernels(kernel == Kernel::kConstantPlain || kernel == Kernel::kGeneralPlain);
    for (auto _ : state) {
        s.Run(r);
        benchmark::DoNotOptimize(map.data());
        benchmark::ClobberMemory();
    }
    const double triangles = static_cast<double>(s.indices.size() / 3);
    state.SetItemsProcessed(state.iterations() * s.coveredSubSamples);
    state.counters["subsamples_per_triangle"] = static_cast<double>(s.coveredSubSamples) / triangles;
    // Seconds per triangle (printed with an SI prefix, n for nanoseconds).
    state.counters["time_per_triangle"] = benchmark::Counter(
        triangles, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The kernels alone on the same prepared walk, vertices prepared once: the
// constant kernel's word stores, the general map as the rasterizer applies
// it (two nibbles per lookup), and the general map as defined, one
// sub-sample at a time (read the nibble, look it up, clear it, OR the
// entry in). This separates what the kernels cost from what the walk does.
enum class WalkKernel { kConstant, kGeneralWords, kGeneralPerSample };

// fn(first vertex of the draw, the triangle's three indices) for every
// triangle of the set, draw by draw.
template <class Fn>
void ForEachTriangle(const TriangleSet& s, Fn fn) {
    for (const TriangleSet::Draw& d : s.draws) {
        for (uint32_t i = 0; i + 3 <= d.count; i += 3) {
            fn(d.firstVertex, s.indices.data() + d.firstIndex + i);
        }
    }
}

// The general kernel's definition as a word operation: each covered
// sub-sample of the word is mapped on its own, in column order.
struct PerSampleWords {
    const tr::NibbleTables& tables;
    uint16_t Part(uint16_t w, uint16_t m) const {
        for (int pos = 0; pos < tr::kSubPerPx; ++pos) {
            const int shift = tr::NibbleShift(pos);
            if (((m >> shift) & tr::kNibbleMask) == 0) continue;
            const uint16_t old = static_cast<uint16_t>((w >> shift) & tr::kNibbleMask);
            w = static_cast<uint16_t>((w & ~(tr::kNibbleMask << shift)) | tables[pos][old]);
        }
        return w;
    }
    uint16_t Whole(uint16_t w) const { return Part(w, 0xFFFF); }
};

void BM_Walk(benchmark::State& state, Size size, WalkKernel kernel) {
    TriangleSet s;
    if (!LoadSet(state, size, s)) return;
    std::vector<tr::PreparedVertex> vertices;
    for (size_t i = 0; i + 1 < s.xy.size(); i += 2) {
        vertices.push_back(
            tr::PrepareVertex(static_cast<float>(s.xy[i]), static_cast<float>(s.xy[i + 1])));
    }
    uint8_t nibbleMap[16];
    for (int v = 0; v < 16; ++v) nibbleMap[v] = static_cast<uint8_t>(v);
    nibbleMap[0] = 2;
    tr::NibbleTables tables;
    tr::ByteMapTable byteMap;
    tr::BuildNibbleTables(nibbleMap, tables);
    tr::BuildByteMapTable(nibbleMap, byteMap);
    std::vector<uint16_t> map(static_cast<size_t>(s.mapSide) * s.mapSide / 4);
    const tr::CoverageTarget target{map.data(), s.mapSide, s.mapSide, &tables, &byteMap};
    const tr::WalkWindow window{0, s.mapSide, s.mapSide};
    const tr::PreparedCoverageKernel constant = tr::PreparedConstantKernel(2);
    const tr::PreparedCoverageKernel general = tr::PreparedGeneralKernel();
    const PerSampleWords perSample{tables};
    auto run = [&] {
        ForEachTriangle(s, [&](uint32_t firstVertex, const uint32_t* tri) {
            const tr::PreparedVertex* v = vertices.data() + firstVertex;
            const tr::PreparedVertex &a = v[tri[0]], &b = v[tri[1]], &c = v[tri[2]];
            switch (kernel) {
                case WalkKernel::kConstant: constant(target, a, b, c); break;
                case WalkKernel::kGeneralWords: general(target, a, b, c); break;
                case WalkKernel::kGeneralPerSample:
                    tr::RasterizePrepared(a, b, c, map.data(), window, perSample);
                    break;
            }
        });
    };
    // The word operation must be the definition: one pass over a cleared map
    // equals the reference general kernel's.
    if (kernel == WalkKernel::kGeneralPerSample) {
        run();
        std::vector<uint16_t> reference(map.size());
        const tr::CoverageTarget referenceTarget{reference.data(), s.mapSide, s.mapSide, &tables,
                                                 nullptr};
        ForEachTriangle(s, [&](uint32_t firstVertex, const uint32_t* tri) {
            const double* xy = s.xy.data() + 2 * firstVertex;
            tr::ScreenTriangle t{};
            for (int k = 0; k < 3; ++k) {
                t.x[k] = static_cast<float>(xy[2 * tri[k]]);
                t.y[k] = static_cast<float>(xy[2 * tri[k] + 1]);
            }
            tr::GeneralCoverageKernel()(referenceTarget, t);
        });
        if (reference != map) {
            state.SkipWithError("per-sample words differ from the general kernel");
            return;
        }
    }
    for (auto _ : state) {
        run();
        benchmark::DoNotOptimize(map.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * s.coveredSubSamples);
}

BENCHMARK_CAPTURE(BM_Walk, Glyphs_Constant, Size::kGlyphs, WalkKernel::kConstant);
BENCHMARK_CAPTURE(BM_Walk, Glyphs_GeneralWords, Size::kGlyphs, WalkKernel::kGeneralWords);
BENCHMARK_CAPTURE(BM_Walk, Glyphs_GeneralPerSample, Size::kGlyphs, WalkKernel::kGeneralPerSample);
BENCHMARK_CAPTURE(BM_Walk, Large_Constant, Size::kLarge, WalkKernel::kConstant);
BENCHMARK_CAPTURE(BM_Walk, Large_GeneralWords, Size::kLarge, WalkKernel::kGeneralWords);
BENCHMARK_CAPTURE(BM_Walk, Large_GeneralPerSample, Size::kLarge, WalkKernel::kGeneralPerSample);
BENCHMARK_CAPTURE(BM_Walk, Small_Constant, Size::kSmall, WalkKernel::kConstant);
BENCHMARK_CAPTURE(BM_Walk, Small_GeneralWords, Size::kSmall, WalkKernel::kGeneralWords);
BENCHMARK_CAPTURE(BM_Walk, Small_GeneralPerSample, Size::kSmall, WalkKernel::kGeneralPerSample);

BENCHMARK_CAPTURE(BM_Fill, Glyphs_Constant, Size::kGlyphs, Kernel::kConstant);
BENCHMARK_CAPTURE(BM_Fill, Glyphs_ConstantPlain, Size::kGlyphs, Kernel::kConstantPlain);
BENCHMARK_CAPTURE(BM_Fill, Glyphs_General, Size::kGlyphs, Kernel::kGeneral);
BENCHMARK_CAPTURE(BM_Fill, Glyphs_GeneralPlain, Size::kGlyphs, Kernel::kGeneralPlain);
BENCHMARK_CAPTURE(BM_Fill, Large_Constant, Size::kLarge, Kernel::kConstant);
BENCHMARK_CAPTURE(BM_Fill, Large_ConstantPlain, Size::kLarge, Kernel::kConstantPlain);
BENCHMARK_CAPTURE(BM_Fill, Large_General, Size::kLarge, Kernel::kGeneral);
BENCHMARK_CAPTURE(BM_Fill, Large_GeneralPlain, Size::kLarge, Kernel::kGeneralPlain);
BENCHMARK_CAPTURE(BM_Fill, Small_Constant, Size::kSmall, Kernel::kConstant);
BENCHMARK_CAPTURE(BM_Fill, Small_ConstantPlain, Size::kSmall, Kernel::kConstantPlain);
BENCHMARK_CAPTURE(BM_Fill, Small_General, Size::kSmall, Kernel::kGeneral);
BENCHMARK_CAPTURE(BM_Fill, Small_GeneralPlain, Size::kSmall, Kernel::kGeneralPlain);

}  // namespace
