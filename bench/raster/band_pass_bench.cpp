// One shaded band pass over a 64-px glyph's contours: mark the face, stroke
// every contour with inward bevel strips, resolve to (intensity, depth).
//
// The glyph is synthetic: an "O" (outer ring of 96 points, hole of 64) and
// a bar, 64 px tall on a 96 x 96 px map (384 x 384 sub-samples), bevel depth
// 6 px, light at 135 degrees - the shape and strip count of a real bold
// glyph without depending on the outline builder.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "raster/rasterizer.h"

namespace {

constexpr int32_t kMapSide = 384;

struct Contour {
    std::vector<double> xy;  // closed, first point not repeated
};

Contour Circle(double cx, double cy, double radius, int n, bool clockwise) {
    Contour c;
    for (int i = 0; i < n; ++i) {
        const double a = (clockwise ? -1 : 1) * i * 2 * M_PI / n;
        c.xy.push_back(cx + radius * std::cos(a));
        c.xy.push_back(cy + radius * std::sin(a));
    }
    return c;
}

struct Glyph {
    std::vector<Contour> contours;
    std::vector<double> faceXy;       // face triangles as a vertex array
    std::vector<uint32_t> faceIndex;
};

Glyph MakeGlyph() {
    Glyph g;
    const Contour outer = Circle(192, 192, 128, 96, false);
    const Contour hole = Circle(192, 192, 72, 64, true);
    g.contours = {outer, hole};
    // Face: the ring between them as a strip of quads (resampled).
    const int n = 96;
    for (int i = 0; i <= n; ++i) {
        const double a = i * 2 * M_PI / n;
        g.faceXy.insert(g.faceXy.end(), {192 + 128 * std::cos(a), 192 + 128 * std::sin(a),
                                         192 + 72 * std::cos(a), 192 + 72 * std::sin(a)});
    }
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t o0 = 2 * i, i0 = 2 * i + 1, o1 = 2 * i + 2, i1 = 2 * i + 3;
        g.faceIndex.insert(g.faceIndex.end(), {o0, o1, i0, i0, o1, i1});
    }
    return g;
}

void BM_ShadedBandPass64px(benchmark::State& state) {
    const Glyph g = MakeGlyph();
    std::vector<uint16_t> coverage(kMapSide * kMapSide / 4);
    std::vector<uint8_t> out(2 * (kMapSide / 4) * (kMapSide / 4));
    CRasterizer* r = CreateRasterizer();
    r->Init(coverage.data(), 0, kMapSide, kMapSide, 0);
    r->Viewport(0, 0, 2, 2);
    r->MatrixMode(kGlProjection);
    r->LoadIdentity();
    r->Translate(-1, -1, 0);
    r->MatrixMode(kGlModelView);
    r->LoadIdentity();
    const double depth = 24.0;  // 6 px in sub-samples
    int64_t strips = 0;
    for (auto _ : state) {
        r->ShadedBandPass(out.data(), depth, 135.0, 0);
        r->VertexPointer(2, 0, 16, g.faceXy.data());
        r->DrawIndexedToBand(static_cast<uint32_t>(g.faceIndex.size()), g.faceIndex.data());
        for (const Contour& c : g.contours) {
            const size_t n = c.xy.size() / 2;
            r->Begin();
            for (size_t i = 0; i <= n; ++i) {
                const size_t k = i % n, next = (i + 1) % n;
                // Inward normal: left of the direction of travel in y-down space.
                const double dir = std::atan2(c.xy[2 * next + 1] - c.xy[2 * k + 1],
                                              c.xy[2 * next] - c.xy[2 * k]);
                const double normal = dir + M_PI / 2;
                if (i == 0) {
                    r->BevelStart(c.xy[2 * k], c.xy[2 * k + 1], normal);
                } else {
                    r->BevelVertex(c.xy[2 * k], c.xy[2 * k + 1], normal);
                }
                ++strips;
            }
            r->End();
        }
        benchmark::DoNotOptimize(r->ShadedBandPass(nullptr, 0, 0, 0));
        benchmark::DoNotOptimize(out.data());
    }
    ReleaseRasterizer(r);
    state.SetItemsProcessed(state.iterations());  // glyph passes
    state.counters["strip_vertices_per_pass"] =
        static_cast<double>(strips) / static_cast<double>(state.iterations());
}

BENCHMARK(BM_ShadedBandPass64px)->Unit(benchmark::kMicrosecond);

}  // namespace
