// CRasterizer_ as its users drive it: Init, nibble-map selection, vertex
// arrays with indexed triangles, offsets, the quad strip, and geometry that
// leaves the map.
#include "raster/rasterizer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "coverage_map_util.h"
#include "raster/rasterizer_impl.h"
#include "rasterizer_test_util.h"

namespace {

using trtest::FillRuleOracle;
using trtest::GuardedMap;
using trtest::ScreenSpaceRasterizer;

struct Point3 {  // the 24-byte outline point: x, y, direction
    double x, y, z;
};

void Fill(uint8_t (&map)[16], uint8_t v) { std::memset(map, v, sizeof map); }

TEST(Rasterizer, FactoryAndReleaseHandleNull) {
    CRasterizer* r = CreateRasterizer();
    ASSERT_NE(r, nullptr);
    ReleaseRasterizer(r);
    ReleaseRasterizer(nullptr);
}

TEST(Rasterizer, InitClearsExactlyTheMapAndReturnsModelView) {
    GuardedMap map(8, 8);
    std::memset(map.Words(), 0xFF, map.Bytes());
    EXPECT_EQ(map.Bytes(), 32u);  // 8 x 8 sub-samples = 2 x 2 pixels of 8 bytes
    trtest::RasterizerPtr r(CreateRasterizer());
    double* mv = r->Init(map.Words(), 0, 8, 8, 0);
    for (size_t i = 0; i < 16; ++i) EXPECT_EQ(map.Words()[i], 0);
    EXPECT_TRUE(map.GuardsIntact());
    r->MatrixMode(kGlModelView);
    r->LoadIdentity();
    r->Translate(5, 0, 0);
    EXPECT_EQ(mv[12], 5.0);
}

TEST(Rasterizer, SubSampleFiveSixLivesInWordFourteenBitsEightToEleven) {
    GuardedMap map(8, 8);
    auto r = ScreenSpaceRasterizer(map.Words(), 8, 8);
    uint8_t nine[16];
    Fill(nine, 9);
    r->SetNibbleMap(nine);
    // A small triangle around the centre (5.5, 6.5) only.
    const double v[3][2] = {{5.25, 6.25}, {5.875, 6.25}, {5.25, 6.875}};
    const uint32_t idx[3] = {0, 1, 2};
    r->VertexPointer(2, 0, 16, v);
    r->DrawIndexed(4, 3, 0, idx);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(map.Words()[i], i == 14 ? 0x0900 : 0) << "word " << i;
}

TEST(Rasterizer, ConstantMapOverwritesAndOneChangedEntrySelectsGeneralKernel) {
    GuardedMap map(32, 32);
    auto r = ScreenSpaceRasterizer(map.Words(), 32, 32);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 0; x < 32; ++x) map.Set(x, y, (x + y) % 7);
    const GuardedMap before = map;
    uint8_t m[16];
    Fill(m, 3);
    m[5] = 7;  // sub-samples holding 5 become 7, all others 3
    r->SetNibbleMap(m);
    const double v[3][2] = {{1, 1}, {30, 4}, {9, 29}};
    const uint32_t idx[3] = {0, 1, 2};
    r->VertexPointer(2, 0, 16, v);
    r->DrawIndexed(4, 3, 0, idx);
    const float xs[3] = {1, 30, 9}, ys[3] = {1, 4, 29};
    const FillRuleOracle oracle(xs, ys);
    for (int32_t y = 0; y < 32; ++y)
        for (int32_t x = 0; x < 32; ++x) {
            const uint32_t old = before.At(x, y);
            ASSERT_EQ(map.At(x, y), oracle.Covers(x, y) ? (old == 5 ? 7u : 3u) : old) << x << "," << y;
        }
    // All entries 3: every covered sub-sample becomes 3 whatever it held.
    Fill(m, 3);
    r->SetNibbleMap(m);
    r->DrawIndexed(4, 3, 0, idx);
    for (int32_t y = 0; y < 32; ++y) {
        for (int32_t x = 0; x < 32; ++x) {
            const uint32_t want = oracle.Covers(x, y) ? 3u : map.At(x, y);
            ASSERT_EQ(map.At(x, y), want);
        }
    }
}

TEST(Rasterizer, DrawIndexedDropsIncompleteTriangle) {
    // Three disjoint triangles in 24-byte points; count 7 draws two.
    const Point3 pts[9] = {{2, 2, 9},  {12, 2, 9},  {2, 12, 9},  {20, 2, 9}, {30, 2, 9},
                           {20, 12, 9}, {2, 20, 9}, {12, 20, 9}, {2, 30, 9}};
    const uint32_t idx[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    GuardedMap map(32, 32);
    auto r = ScreenSpaceRasterizer(map.Words(), 32, 32);
    uint8_t one[16];
    Fill(one, 1);
    r->SetNibbleMap(one);
    r->VertexPointer(2, 0, sizeof(Point3), pts);
    r->DrawIndexed(4, 7, 0, idx);
    int drawn[3] = {0, 0, 0};
    for (int t = 0; t < 3; ++t) {
        const float xs[3] = {float(pts[3 * t].x), float(pts[3 * t + 1].x), float(pts[3 * t + 2].x)};
        const float ys[3] = {float(pts[3 * t].y), float(pts[3 * t + 1].y), float(pts[3 * t + 2].y)};
        const FillRuleOracle o(xs, ys);
        for (int32_t y = 0; y < 32; ++y) {
            for (int32_t x = 0; x < 32; ++x) drawn[t] += o.Covers(x, y) ? map.At(x, y) : 0;
        }
    }
    EXPECT_GT(drawn[0], 0);
    EXPECT_GT(drawn[1], 0);
    EXPECT_EQ(drawn[2], 0);
}

TEST(Rasterizer, OffsetDrawEqualsDisplacedVertices) {
    const double v[3][2] = {{2.25, 3.5}, {20.75, 6}, {7, 25.125}};
    const double moved[3][2] = {{5.25, 1.5}, {23.75, 4}, {10, 23.125}};
    const uint32_t idx[3] = {0, 1, 2};
    uint8_t six[16];
    Fill(six, 6);
    GuardedMap a(32, 32), b(32, 32);
    auto ra = ScreenSpaceRasterizer(a.Words(), 32, 32);
    ra->SetNibbleMap(six);
    ra->VertexPointer(2, 0, 16, v);
    ra->DrawIndexedOffset(4, 3, 0, idx, 3, -2);
    auto rb = ScreenSpaceRasterizer(b.Words(), 32, 32);
    rb->SetNibbleMap(six);
    rb->VertexPointer(2, 0, 16, moved);
    rb->DrawIndexed(4, 3, 0, idx);
    EXPECT_TRUE(a.SameAs(b));
}

// Drawing reads only MV[0, 1, 4, 5, 12, 13] and P[0, 5, 12, 13].
TEST(Rasterizer, DrawingUsesOnlyTheAffineEntries) {
    const double v[3][2] = {{0.1, 0.2}, {0.9, 0.3}, {0.4, 0.8}};
    const uint32_t idx[3] = {0, 1, 2};
    uint8_t two[16];
    Fill(two, 2);
    double mv[16] = {30, 2, 0, 0, -4, 28, 0, 0, 0, 0, 1, 0, 1.5, 0.25, 0, 1};
    double pr[16] = {0.05, 0, 0, 0, 0, 0.06, 0, 0, 0, 0, 1, 0, -0.9, -0.95, 0, 1};
    GuardedMap a(64, 64), b(64, 64);
    auto draw = [&](GuardedMap& m, const double* mvm, const double* prm) {
        trtest::RasterizerPtr r(CreateRasterizer());
        r->Init(m.Words(), 0, 64, 64, 0);
        r->Viewport(0, 0, 64, 64);
        r->MatrixMode(kGlProjection);
        r->LoadIdentity();
        r->MultMatrix(prm);
        r->MatrixMode(kGlModelView);
        r->LoadIdentity();
        r->MultMatrix(mvm);
        r->SetNibbleMap(two);
        r->VertexPointer(2, 0, 16, v);
        r->DrawIndexed(4, 3, 0, idx);
    };
    draw(a, mv, pr);
    double mv2[16], pr2[16];
    std::memcpy(mv2, mv, sizeof mv2);
    std::memcpy(pr2, pr, sizeof pr2);
    for (int i : {2, 3, 6, 7, 8, 9, 10, 11, 14, 15}) mv2[i] = 7.0 + i;
    for (int i : {1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 14, 15}) pr2[i] = -3.0 - i;
    draw(b, mv2, pr2);
    EXPECT_TRUE(a.SameAs(b));
    int covered = 0;
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x) covered += a.At(x, y) == 2;
    EXPECT_GT(covered, 100);
}

// Pairs of vertices form a strip: quad (a, b, c, d) is triangles (a, b, c)
// and (d, b, c), then c, d start the next quad.
TEST(Rasterizer, QuadStripFillsBothTrianglesOfEveryQuad) {
    const double pts[6][2] = {{2, 2}, {2, 14}, {15, 3}, {16, 13}, {29, 2}, {30, 14}};
    GuardedMap map(32, 16);
    auto r = ScreenSpaceRasterizer(map.Words(), 32, 16);
    uint8_t counting[16];
    for (int v = 0; v < 16; ++v) counting[v] = static_cast<uint8_t>(v < 15 ? v + 1 : 15);
    r->SetNibbleMap(counting);
    r->Begin();
    for (int i = 0; i < 6; i += 2) {
        r->Vertex2dv(pts[i]);
        r->Vertex2d(pts[i + 1][0], pts[i + 1][1]);
    }
    r->End();
    std::vector<FillRuleOracle> tris;
    for (int q = 0; q < 2; ++q) {
        const double(&a)[2] = pts[2 * q], (&b)[2] = pts[2 * q + 1];
        const double(&c)[2] = pts[2 * q + 2], (&d)[2] = pts[2 * q + 3];
        const float x1[3] = {float(a[0]), float(b[0]), float(c[0])};
        const float y1[3] = {float(a[1]), float(b[1]), float(c[1])};
        const float x2[3] = {float(d[0]), float(b[0]), float(c[0])};
        const float y2[3] = {float(d[1]), float(b[1]), float(c[1])};
        tris.emplace_back(x1, y1);
        tris.emplace_back(x2, y2);
    }
    int total = 0;
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < 32; ++x) {
            uint32_t want = 0;
            for (const auto& t : tris) want += t.Covers(x, y);
            ASSERT_EQ(map.At(x, y), want) << x << ", " << y;
            total += want;
        }
    EXPECT_GT(total, 250);
}

TEST(Rasterizer, GeometryOutsideTheMapNeverWritesOutside) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const double v[][2] = {{-1e300, 5}, {1e300, 5}, {3, 1e300},      {nan, 1},    {2, 3},
                           {4, 9},      {inf, 2},   {-50, -60},      {-40, -1},   {-45, -20},
                           {10, 10},    {1e9, 12},  {11, 1e9},       {-3e38, -3e38}, {3e38, -3e38},
                           {0, 3e38}};
    const uint32_t idx[] = {0, 1, 2, 3, 4, 5, 6, 4, 5, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    uint8_t seven[16];
    Fill(seven, 7);
    uint8_t general[16];
    for (int i = 0; i < 16; ++i) general[i] = static_cast<uint8_t>(15 - i);
    for (const uint8_t* m : {static_cast<const uint8_t*>(seven), static_cast<const uint8_t*>(general)}) {
        GuardedMap map(40, 24);
        auto r = ScreenSpaceRasterizer(map.Words(), 40, 24);
        r->SetNibbleMap(m);
        r->VertexPointer(2, 0, 16, v);
        r->DrawIndexed(4, sizeof idx / sizeof idx[0], 0, idx);
        r->DrawIndexedOffset(4, sizeof idx / sizeof idx[0], 0, idx, 1e30, -1e30);
        r->DrawIndexedOffset(4, sizeof idx / sizeof idx[0], 0, idx, nan, 0);
        r->Begin();
        for (const auto& p : v) r->Vertex2dv(p);
        EXPECT_TRUE(map.GuardsIntact());
    }
    // A matrix of NaN draws nothing at all.
    GuardedMap map(40, 24);
    auto r = ScreenSpaceRasterizer(map.Words(), 40, 24);
    double bad[16];
    for (double& e : bad) e = nan;
    r->MultMatrix(bad);
    r->SetNibbleMap(seven);
    r->VertexPointer(2, 0, 16, v);
    r->DrawIndexed(4, 6, 0, idx + 3);
    EXPECT_TRUE(map.GuardsIntact());
    for (size_t i = 0; i < map.Bytes() / 2; ++i) ASSERT_EQ(map.Words()[i], 0);
}

// The word-store constant kernels the rasterizer selects against their
// plain twins, through the whole DrawIndexed path, from random contents.
TEST(Rasterizer, FastAndPlainKernelsGiveIdenticalMaps) {
    std::mt19937 rng(424242);
    std::uniform_real_distribution<double> c(-6.0, 70.0);
    for (int n = 0; n < 4000; ++n) {
        double v[6][2];
        for (auto& p : v) p[0] = c(rng), p[1] = c(rng);
        const uint32_t idx[6] = {0, 1, 2, 3, 4, 5};
        uint8_t map[16];
        std::memset(map, static_cast<int>(rng() % 16), sizeof map);
        GuardedMap fast(64, 64), plain(64, 64);
        const uint32_t seed = rng();
        for (GuardedMap* m : {&fast, &plain}) {
            CRasterizer_ r;
            r.Init(m->Words(), 0, 64, 64, 0);
            std::mt19937 fill(seed);
            for (size_t i = 0; i < m->Bytes() / 2; ++i) m->Words()[i] = static_cast<uint16_t>(fill());
            r.Viewport(0, 0, 2, 2);
            r.MatrixMode(kGlProjection);
            r.LoadIdentity();
            r.Translate(-1, -1, 0);
            r.MatrixMode(kGlModelView);
            r.LoadIdentity();
            r.UsePlainKernels(m == &plain);
            r.SetNibbleMap(map);
            r.VertexPointer(2, 0, 16, v);
            r.DrawIndexed(4, 6, 0, idx);
        }
        if (!fast.SameAs(plain)) {
            std::ostringstream in;
            in.precision(17);
            for (const auto& p : v) in << "(" << p[0] << ", " << p[1] << ") ";
            FAIL() << "k " << int(map[0]) << " fill seed " << seed << " vertices " << in.str();
        }
    }
}

}  // namespace
