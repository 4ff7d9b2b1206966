// CRasterizer_ as its users drive it: Init, nibble-map selection, vertex
// arrays with indexed triangles, offsets, the quad strip and geometry that
// leaves the map; and the default coverage path against its plain twin.
#include "raster/rasterizer.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "raster/rasterizer_impl.h"
#include "raster_test_util.h"

namespace {

using trtest::FillRuleOracle;
using trtest::GuardedMap;
using trtest::ScreenSpaceRasterizer;

const uint32_t kIdx[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};

void DrawArray(CRasterizer& r, const void* v, uint32_t count, uint32_t stride = 16) {
    r.VertexPointer(2, 0, stride, v);
    r.DrawIndexed(4, count, 0, kIdx);
}

TEST(Rasterizer, InitClearsExactlyTheMapAndReturnsModelView) {
    ReleaseRasterizer(nullptr);
    GuardedMap map(8, 8);
    std::memset(map.Words(), 0xFF, map.Bytes());
    trtest::RasterizerPtr r(CreateRasterizer());
    double* mv = r->Init(map.Words(), 0, 8, 8, 0);
    EXPECT_TRUE(map.Count(0) == 64 && map.GuardsIntact());
    r->Translate(5, 0, 0);
    EXPECT_EQ(mv[12], 5.0);
}

// One entry off a constant map selects the general kernel: sub-samples
// holding 5 become 7, other covered ones 3. Init selects the general
// kernel and keeps the map: the same after Init, on both paths.
TEST(Rasterizer, OneChangedEntrySelectsGeneralKernelAndInitKeepsIt) {
    uint8_t m[16];
    std::memset(m, 3, sizeof m);
    m[5] = 7;
    const double v[3][2] = {{1, 1}, {30, 4}, {9, 29}};
    const float xs[3] = {1, 30, 9}, ys[3] = {1, 4, 29};
    const FillRuleOracle oracle(xs, ys);
    for (const bool plain : {false, true}) {
        GuardedMap map(32, 32);
        CRasterizer_ r;
        r.UsePlainKernels(plain);
        r.SetNibbleMap(m);
        for (int pass = 0; pass < 2; ++pass) {
            r.Init(map.Words(), 0, 32, 32, 0);
            trtest::UseScreenSpace(r);
            for (int32_t y = 0; y < 32; ++y)
                for (int32_t x = 0; x < 32; ++x) map.Set(x, y, (x * 7 + y * 3 + pass) % 16);
            const GuardedMap before = map;
            DrawArray(r, v, 3);
            for (int32_t y = 0; y < 32; ++y)
                for (int32_t x = 0; x < 32; ++x) {
                    const uint32_t old = before.At(x, y);
                    ASSERT_EQ(map.At(x, y), oracle.Covers(x, y) ? (old == 5 ? 7u : 3u) : old)
                        << x << ", " << y << " pass " << pass << (plain ? " plain" : "");
                }
        }
    }
}

// 24-byte points (x, y, direction): count 7 draws two triangles, count 9
// offset by (dx, dy) equals three triangles of displaced vertices; both paths.
TEST(Rasterizer, IndexedDrawsWithStrideIncompleteTriangleAndOffset) {
    const double pts[9][3] = {{2, 2, 9},   {12, 2, 9},  {2, 12, 9}, {20, 2, 9}, {30, 2.5, 9},
                              {20, 12, 9}, {2, 20, 9}, {12, 20, 9}, {2, 30, 9}};
    double moved[9][2];
    for (int i = 0; i < 9; ++i) moved[i][0] = pts[i][0] + 0.25, moved[i][1] = pts[i][1] - 1.5;
    for (const bool plain : {false, true}) {
        GuardedMap a(32, 32), b(32, 32);
        CRasterizer_ ra, rb;
        for (auto [r, m] : {std::pair{&ra, &a}, std::pair{&rb, &b}}) {
            r->Init(m->Words(), 0, 32, 32, 0);
            trtest::UseScreenSpace(*r);
            r->UsePlainKernels(plain);
            trtest::SetConstantMap(*r, 1);
        }
        DrawArray(ra, pts, 7, 24);
        ra.DrawIndexedOffset(4, 9, 0, kIdx, 0.25, -1.5);
        DrawArray(rb, pts, 6, 24);
        DrawArray(rb, moved, 9);
        EXPECT_TRUE(a.SameAs(b) && a.Count(1) > 160) << plain;
    }
}

// Drawing reads only MV[0, 1, 4, 5, 12, 13] and P[0, 5, 12, 13].
TEST(Rasterizer, DrawingUsesOnlyTheAffineEntries) {
    const double v[3][2] = {{0.1, 0.2}, {0.9, 0.3}, {0.4, 0.8}};
    double mv[16] = {30, 2, 0, 0, -4, 28, 0, 0, 0, 0, 1, 0, 1.5, 0.25, 0, 1};
    double pr[16] = {0.05, 0, 0, 0, 0, 0.06, 0, 0, 0, 0, 1, 0, -0.9, -0.95, 0, 1};
    GuardedMap a(64, 64), b(64, 64);
    for (GuardedMap* m : {&a, &b}) {
        auto r = ScreenSpaceRasterizer(m->Words(), 64, 64);
        r->Viewport(0, 0, 64, 64);
        r->MatrixMode(kGlProjection);
        r->LoadIdentity();
        r->MultMatrix(pr);
        r->MatrixMode(kGlModelView);
        r->MultMatrix(mv);
        trtest::SetConstantMap(*r, 2);
        DrawArray(*r, v, 3);
        for (int i : {2, 3, 6, 7, 8, 9, 10, 11, 14, 15}) mv[i] = 7.0 + i;
        for (int i : {1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 14, 15}) pr[i] = -3.0 - i;
    }
    EXPECT_TRUE(a.SameAs(b) && a.Count(2) > 100);
}

// Quad (a, b, c, d) is triangles (a, b, c) and (d, b, c); c, d start the next.
TEST(Rasterizer, QuadStripFillsBothTrianglesOfEveryQuad) {
    const float xs[6] = {2, 2, 15, 16, 29, 30}, ys[6] = {2, 14, 3, 13, 2, 14};
    GuardedMap map(32, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 32, 16);
    r->SetNibbleMap(trtest::CountingMap().data());
    r->Begin();
    for (int i = 0; i < 6; i += 2) {
        const double p[2] = {xs[i], ys[i]};
        r->Vertex2dv(p);
        r->Vertex2d(xs[i + 1], ys[i + 1]);
    }
    r->End();
    std::vector<FillRuleOracle> tris;
    for (int t = 0; t < 4; ++t) {  // (a, b, c) and (d, b, c) of quads at 0 and 2
        const int q = 2 * (t / 2), k = q + (t % 2 ? 3 : 0);
        const float tx[3] = {xs[k], xs[q + 1], xs[q + 2]}, ty[3] = {ys[k], ys[q + 1], ys[q + 2]};
        tris.emplace_back(tx, ty);
    }
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < 32; ++x) {
            uint32_t want = 0;
            for (const auto& t : tris) want += t.Covers(x, y);
            ASSERT_EQ(map.At(x, y), want) << x << ", " << y;
        }
    EXPECT_GT(map.Count(1), 250);
}

// The default coverage path (prepared vertices, word-wise kernels, union
// scan) against its plain twin (reference walk per triangle, one nibble at
// a time): two rasterizers configured alike draw the same random calls
// into maps of the same random contents; whole buffers, guards included,
// must be equal. A failure prints the case's seed.
struct Pair {
    Pair(int32_t w, int32_t h, std::mt19937& rng) : fast(w, h), plain(w, h) {
        std::uniform_real_distribution<double> u(0.0, 1.0);
        const double angle = u(rng) * 2 * M_PI, scale = 0.5 + u(rng) * 1.5;
        const double c = std::cos(angle) * scale, s = std::sin(angle) * scale;
        const double rotation[16] = {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        const double tx = w * (0.2 + 0.6 * u(rng)), ty = h * (0.2 + 0.6 * u(rng));
        const bool taper = rng() % 3 == 0;
        const float taperH = float(u(rng) * 60 - 30), taperV = float(u(rng) * 60 - 30);
        uint8_t nibbles[16];
        RandomMap(rng, nibbles);
        GuardedMap contents(w, h);
        contents.Randomize(rng);
        for (auto [r, m] : {std::pair{&rf, &fast}, std::pair{&rp, &plain}}) {
            r->Init(m->Words(), 0, w, h, 0);
            *m = contents;
            trtest::UseScreenSpace(*r);
            r->Translate(tx, ty, 0);
            r->MultMatrix(rotation);
            if (taper) r->SetTaper(taperH, taperV);
            trtest::SetConstantMap(*r, 0);  // then a map of any kind
            r->UsePlainKernels(r == &rp);
            r->SetNibbleMap(nibbles);
        }
    }
    // Constant, identity but one, or random.
    static void RandomMap(std::mt19937& rng, uint8_t (&map)[16]) {
        const uint32_t kind = rng() % 3;
        const uint8_t k = static_cast<uint8_t>(rng() % 16);
        for (int v = 0; v < 16; ++v)
            map[v] = kind == 0 ? k : kind == 1 ? static_cast<uint8_t>(v) : static_cast<uint8_t>(rng() % 16);
        if (kind == 1) map[rng() % 16] = k;
    }
    GuardedMap fast, plain;
    CRasterizer_ rf, rp;
};

// Mostly around the map, sometimes far outside the walk's range, beyond
// float or NaN: nothing may land outside the map.
double Coordinate(std::mt19937& rng, double spread) {
    switch (rng() % 64) {
        case 0: return 3e7;
        case 1: return -1e9;
        case 2: return std::numeric_limits<double>::quiet_NaN();
        case 3: return rng() % 2 ? 1e300 : -1e300;
        default: return std::uniform_real_distribution<double>(-spread, spread)(rng);
    }
}

// Meshes of shared vertices, some larger than the vertex cache, drawn
// plain and offset, from another array with the same indices, and after
// the transform changed. Half are jittered grids (shared edges, as in a
// glyph's triangulation), half random.
TEST(PreparedPath, RandomMeshesMatchPlainPath) {
    std::mt19937 seeds(2718);
    for (int n = 0; n < 1500; ++n) {
        const uint32_t seed = seeds();
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        Pair p(n % 2 ? 64 : 100, n % 3 ? 64 : 36, rng);
        const bool grid = n % 2 == 0;
        const uint32_t cols = 1 + rng() % (n % 10 == 0 ? 40 : 12), rows = 1 + rng() % 30;
        const uint32_t vertices =
            grid ? (cols + 1) * (rows + 1) : n % 10 == 1 ? 1100 + rng() % 400 : 3 + rng() % 60;
        const uint32_t stride = rng() % 2 ? 3 : 2;  // doubles per vertex
        std::vector<double> a(vertices * stride), b(vertices * stride);
        const double cell = 0.3 + u(rng) * 6.0;
        for (uint32_t v = 0; v < vertices; ++v)
            for (auto* array : {&a, &b}) {
                double* xy = array->data() + v * stride;
                xy[0] = grid ? -30 + (v % (cols + 1) + (u(rng) - 0.5) * 0.8) * cell : Coordinate(rng, 45);
                xy[1] = grid ? -30 + (v / (cols + 1) + (u(rng) - 0.5) * 0.8) * cell : Coordinate(rng, 45);
            }
        std::vector<uint32_t> idx;
        if (grid) {
            for (uint32_t v0 = 0; v0 + cols + 2 < vertices; ++v0) {
                if (v0 % (cols + 1) == cols) continue;
                const uint32_t v2 = v0 + cols + 1;
                idx.insert(idx.end(), {v0, v0 + 1, v2 + 1, v0, v2 + 1, v2});
            }
        } else {
            idx.resize(3 * (1 + rng() % 80) + rng() % 3);
            for (uint32_t& i : idx) i = rng() % vertices;
        }
        const auto count = static_cast<uint32_t>(idx.size());
        const double dx = rng() % 2 ? 0.0 : Coordinate(rng, 9), dy = Coordinate(rng, 9);
        for (CRasterizer_* r : {&p.rf, &p.rp}) {
            r->VertexPointer(2, 0, stride * 8, a.data());
            r->DrawIndexed(4, count, 0, idx.data());
            r->DrawIndexedOffset(4, count, 0, idx.data(), dx, dy);
            r->VertexPointer(2, 0, stride * 8, b.data());
            r->DrawIndexed(4, count, 0, idx.data());
            r->Translate(1.25, -0.5, 0);
            r->DrawIndexed(4, count, 0, idx.data());
        }
        ASSERT_TRUE(p.fast.SameAs(p.plain) && p.fast.GuardsIntact()) << "case seed " << seed;
    }
}

// Strips with fans, repeated pairs, far and non-finite points, and in the
// middle a map change, a taper change (the kept pair is tapered anew) and
// band-strip vertices (they share the strip's vertex store).
TEST(PreparedPath, RandomStripsMatchPlainPath) {
    std::mt19937 seeds(1618);
    for (int n = 0; n < 1500; ++n) {
        const uint32_t seed = seeds();
        std::mt19937 rng(seed);
        Pair p(64, n % 2 ? 64 : 48, rng);
        uint8_t second[16];
        Pair::RandomMap(rng, second);
        const float taperH = static_cast<float>(rng() % 40) - 20.0f;
        for (int strip = 0; strip < 3; ++strip) {
            const int pairs = 2 + static_cast<int>(rng() % 40);
            std::vector<std::array<double, 4>> pts(pairs);
            std::vector<uint32_t> what(pairs);
            for (int i = 0; i < pairs; ++i) {
                for (double& v : pts[i]) v = Coordinate(rng, 40);
                what[i] = rng() % 16;
                if (i > 0 && what[i] < 4) pts[i][0] = pts[i - 1][0], pts[i][1] = pts[i - 1][1];  // fan
                if (what[i] == 4) pts[i][2] = pts[i][0], pts[i][3] = pts[i][1];  // a == b
            }
            for (CRasterizer_* r : {&p.rf, &p.rp}) {
                r->Begin();
                for (int i = 0; i < pairs; ++i) {
                    if (what[i] == 5) r->SetNibbleMap(second);
                    if (what[i] == 7) r->SetTaper(taperH, -taperH);
                    what[i] == 6 ? r->BandVertex(pts[i][0], pts[i][1]) : r->Vertex2dv(pts[i].data());
                    r->Vertex2d(pts[i][2], pts[i][3]);
                }
            }
        }
        ASSERT_TRUE(p.fast.SameAs(p.plain) && p.fast.GuardsIntact()) << "case seed " << seed;
    }
}

}  // namespace
