// Fill rate of the coverage kernels on glyph-sized triangles, in covered
// sub-samples per second, through the rasterizer's DrawIndexed path (vertex
// transform, set-up, edge walk and span writes included).
//
// Two triangle sets stand in for glyph triangulations on a 64-px glyph
// (256 x 256 sub-samples): "Large" triangles span the glyph box, "Small"
// ones are 8-40 sub-samples across like the fan of a curved stroke.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "raster/rasterizer_impl.h"

namespace {

constexpr int32_t kMapSide = 256;  // sub-samples: a 64-px glyph

struct TriangleSet {
    std::vector<double> xy;  // vertex pairs
    std::vector<uint32_t> indices;
    int64_t coveredSubSamples = 0;
};

enum class Size { kLarge, kSmall };

TriangleSet MakeTriangles(Size size) {
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
    return s;
}

// Object coordinates are sub-samples: viewport (0, 0, 2, 2) and a
// projection translated by -1.
void SetUp(CRasterizer_& r, uint16_t* map) {
    r.Init(map, 0, kMapSide, kMapSide, 0);
    r.Viewport(0, 0, 2, 2);
    r.MatrixMode(kGlProjection);
    r.LoadIdentity();
    r.Translate(-1, -1, 0);
    r.MatrixMode(kGlModelView);
    r.LoadIdentity();
}

int64_t CountCovered(const TriangleSet& s) {
    std::vector<uint16_t> map(kMapSide * kMapSide / 4);
    CRasterizer_ r;
    SetUp(r, map.data());
    uint8_t one[16];
    std::memset(one, 1, sizeof one);
    r.SetNibbleMap(one);
    r.VertexPointer(2, 0, 16, s.xy.data());
    int64_t covered = 0;
    for (size_t t = 0; t < s.indices.size(); t += 3) {
        std::memset(map.data(), 0, map.size() * 2);
        r.DrawIndexed(4, 3, 0, s.indices.data() + t);
        for (uint16_t w : map)
            for (int n = 0; n < 4; ++n) covered += ((w >> (4 * n)) & 0xF) != 0;
    }
    return covered;
}

enum class Kernel { kConstant, kConstantPlain, kGeneral };

void BM_Fill(benchmark::State& state, Size size, Kernel kernel) {
    TriangleSet s = MakeTriangles(size);
    s.coveredSubSamples = CountCovered(s);
    std::vector<uint16_t> map(kMapSide * kMapSide / 4);
    CRasterizer_ r;
    SetUp(r, map.data());
    uint8_t nibbleMap[16];
    if (kernel == Kernel::kGeneral) {
        // Replace one applicator number, keep the others: a typical
        // read-modify-write map.
        for (int v = 0; v < 16; ++v) nibbleMap[v] = static_cast<uint8_t>(v);
        nibbleMap[0] = 2;
    } else {
        std::memset(nibbleMap, 2, sizeof nibbleMap);
    }
    r.SetNibbleMap(nibbleMap);
    r.UsePlainKernels(kernel == Kernel::kConstantPlain);
    r.VertexPointer(2, 0, 16, s.xy.data());
    for (auto _ : state) {
        r.DrawIndexed(4, static_cast<uint32_t>(s.indices.size()), 0, s.indices.data());
        benchmark::DoNotOptimize(map.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * s.coveredSubSamples);
    state.counters["subsamples_per_triangle"] =
        static_cast<double>(s.coveredSubSamples) / (s.indices.size() / 3);
}

BENCHMARK_CAPTURE(BM_Fill, Large_Constant, Size::kLarge, Kernel::kConstant);
BENCHMARK_CAPTURE(BM_Fill, Large_ConstantPlain, Size::kLarge, Kernel::kConstantPlain);
BENCHMARK_CAPTURE(BM_Fill, Large_General, Size::kLarge, Kernel::kGeneral);
BENCHMARK_CAPTURE(BM_Fill, Small_Constant, Size::kSmall, Kernel::kConstant);
BENCHMARK_CAPTURE(BM_Fill, Small_ConstantPlain, Size::kSmall, Kernel::kConstantPlain);
BENCHMARK_CAPTURE(BM_Fill, Small_General, Size::kSmall, Kernel::kGeneral);

}  // namespace
