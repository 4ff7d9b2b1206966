// CRasterizer_ as its users drive it: Init, nibble-map selection, vertex
// arrays with indexed triangles, offsets, the quad strip, and geometry that
// leaves the map.
#include "raster/rasterizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <array>
#include <random>
#include <sstream>
#include <vector>

#include "raster_test_util.h"
#include "raster/rasterizer_impl.h"

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

// Init selects the general kernel but keeps the last map: after a constant
// map, Init and a draw still write that constant, on both paths.
TEST(Rasterizer, InitKeepsTheLastMapForTheGeneralKernel) {
    uint8_t shuffle[16], six[16];
    for (int v = 0; v < 16; ++v) shuffle[v] = static_cast<uint8_t>((v * 5 + 1) % 16);
    Fill(six, 6);
    const double v[3][2] = {{2, 2}, {30, 5}, {8, 29}};
    const uint32_t idx[3] = {0, 1, 2};
    for (const bool plain : {false, true}) {
        GuardedMap map(32, 32);
        CRasterizer_ r;
        r.UsePlainKernels(plain);
        r.SetNibbleMap(shuffle);
        r.SetNibbleMap(six);
        r.Init(map.Words(), 0, 32, 32, 0);
        for (int32_t y = 0; y < 32; ++y)
            for (int32_t x = 0; x < 32; ++x) map.Set(x, y, (x * 3 + y) % 16);
        const GuardedMap before = map;
        trtest::UseScreenSpace(r);
        r.VertexPointer(2, 0, 16, v);
        r.DrawIndexed(4, 3, 0, idx);
        const float xs[3] = {2, 30, 8}, ys[3] = {2, 5, 29};
        const FillRuleOracle oracle(xs, ys);
        for (int32_t y = 0; y < 32; ++y) {
            for (int32_t x = 0; x < 32; ++x) {
                ASSERT_EQ(map.At(x, y), oracle.Covers(x, y) ? 6u : before.At(x, y))
                    << x << ", " << y << (plain ? " plain" : "");
            }
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

// The default coverage path (vertices prepared once, word-wise kernels)
// against its plain twin (every triangle transformed and walked by the
// reference, one nibble at a time): two rasterizers configured alike draw
// the same random calls into maps with the same random contents, and the
// whole buffers, guards included, must be equal. Each case is generated
// from its own seed, which a failure prints.
class PreparedPath : public ::testing::Test {
protected:
    struct Pair {
        Pair(int32_t w, int32_t h) : fast(w, h), plain(w, h) {}
        GuardedMap fast, plain;
        CRasterizer_ rf, rp;
        template <class Call>
        void Both(Call call) {
            call(rf);
            call(rp);
        }
    };

    // Map size, contents, transform (rotation, scale, translation and
    // sometimes a taper) and a nibble map, the same for both rasterizers.
    static void Configure(Pair& p, std::mt19937& rng) {
        std::uniform_real_distribution<double> u(0.0, 1.0);
        const int32_t w = p.fast.W(), h = p.fast.H();
        std::mt19937 fill(rng());
        for (size_t i = 0; i < p.fast.Bytes() / 2; ++i) {
            p.fast.Words()[i] = p.plain.Words()[i] = static_cast<uint16_t>(fill());
        }
        const double angle = u(rng) * 6.283185307179586, scale = 0.5 + u(rng) * 1.5;
        const double rotation[16] = {std::cos(angle) * scale, std::sin(angle) * scale, 0, 0,
                                     -std::sin(angle) * scale, std::cos(angle) * scale, 0, 0,
                                     0, 0, 1, 0, 0, 0, 0, 1};
        const double tx = w * (0.2 + 0.6 * u(rng)), ty = h * (0.2 + 0.6 * u(rng));
        const bool taper = rng() % 3 == 0;
        const float taperH = static_cast<float>(u(rng) * 60 - 30);
        const float taperV = static_cast<float>(u(rng) * 60 - 30);
        const uint8_t map[16] = {};
        uint8_t nibbles[16];
        RandomMap(rng, nibbles);
        for (auto [r, m] : {std::pair{&p.rf, &p.fast}, std::pair{&p.rp, &p.plain}}) {
            // Init clears the buffer; the contents go back in after it.
            std::vector<uint16_t> contents(m->Words(), m->Words() + m->Bytes() / 2);
            r->Init(m->Words(), 0, w, h, 0);
            std::copy(contents.begin(), contents.end(), m->Words());
            trtest::UseScreenSpace(*r);
            r->Translate(tx, ty, 0);
            r->MultMatrix(rotation);
            if (taper) r->SetTaper(taperH, taperV);
            r->SetNibbleMap(map);
            r->UsePlainKernels(r == &p.rp);
            r->SetNibbleMap(nibbles);
        }
    }

    // Constant, identity but one, or random.
    static void RandomMap(std::mt19937& rng, uint8_t (&map)[16]) {
        const uint32_t kind = rng() % 3;
        const uint8_t k = static_cast<uint8_t>(rng() % 16);
        for (int v = 0; v < 16; ++v) {
            map[v] = kind == 0 ? k : kind == 1 ? static_cast<uint8_t>(v) : static_cast<uint8_t>(rng() % 16);
        }
        if (kind == 1) map[rng() % 16] = k;
    }

    // Object coordinates mostly around the map, sometimes far outside the
    // walk's range or not finite.
    static double Coordinate(std::mt19937& rng, double spread) {
        std::uniform_real_distribution<double> u(-spread, spread);
        switch (rng() % 64) {
            case 0: return 3e7;
            case 1: return -1e9;
            case 2: return std::numeric_limits<double>::quiet_NaN();
            default: return u(rng);
        }
    }

    static void ExpectSame(const Pair& p, uint32_t seed) {
        ASSERT_TRUE(p.fast.SameAs(p.plain)) << "case seed " << seed;
        ASSERT_TRUE(p.fast.GuardsIntact()) << "case seed " << seed;
    }
};

// Meshes of shared vertices, some larger than the vertex cache, drawn
// plain and offset, again from another array with the same indices, and
// again after the transform changed. Half are jittered grids, whose
// triangles share their edges as a glyph's triangulation does; the others
// pick their vertices at random.
TEST_F(PreparedPath, RandomMeshesMatchPlainPath) {
    std::mt19937 seeds(2718);
    for (int n = 0; n < 1500; ++n) {
        const uint32_t seed = seeds();
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        Pair p(n % 2 ? 64 : 100, n % 3 ? 64 : 36);
        Configure(p, rng);
        const bool grid = n % 2 == 0;
        const uint32_t cols = 1 + rng() % (n % 10 == 0 ? 40 : 12), rows = 1 + rng() % 30;
        const uint32_t vertices =
            grid ? (cols + 1) * (rows + 1) : n % 10 == 1 ? 1100 + rng() % 400 : 3 + rng() % 60;
        const uint32_t stride = rng() % 2 ? 3 : 2;  // doubles per vertex
        std::vector<double> a(vertices * stride), b(vertices * stride);
        const double cell = 0.3 + u(rng) * 6.0;
        for (uint32_t v = 0; v < vertices; ++v) {
            for (auto* array : {&a, &b}) {
                double* xy = array->data() + v * stride;
                if (grid) {
                    xy[0] = -30 + (v % (cols + 1)) * cell + (u(rng) - 0.5) * cell * 0.8;
                    xy[1] = -30 + (v / (cols + 1)) * cell + (u(rng) - 0.5) * cell * 0.8;
                } else {
                    xy[0] = Coordinate(rng, 45);
                    xy[1] = Coordinate(rng, 45);
                }
            }
        }
        std::vector<uint32_t> idx;
        if (grid) {
            for (uint32_t r = 0; r < rows; ++r) {
                for (uint32_t c = 0; c < cols; ++c) {
                    const uint32_t v0 = r * (cols + 1) + c, v1 = v0 + 1;
                    const uint32_t v2 = v0 + cols + 1, v3 = v2 + 1;
                    idx.insert(idx.end(), {v0, v1, v3, v0, v3, v2});
                }
            }
        } else {
            idx.resize(3 * (1 + rng() % 80) + rng() % 3);
            for (uint32_t& i : idx) i = rng() % vertices;
        }
        const auto count = static_cast<uint32_t>(idx.size());
        const double dx = rng() % 2 ? 0.0 : Coordinate(rng, 9), dy = Coordinate(rng, 9);
        p.Both([&](CRasterizer_& r) {
            r.VertexPointer(2, 0, stride * 8, a.data());
            r.DrawIndexed(4, count, 0, idx.data());
            r.DrawIndexedOffset(4, count, 0, idx.data(), dx, dy);
            r.VertexPointer(2, 0, stride * 8, b.data());
            r.DrawIndexed(4, count, 0, idx.data());
            r.Translate(1.25, -0.5, 0);
            r.DrawIndexed(4, count, 0, idx.data());
        });
        ExpectSame(p, seed);
    }
}

// Strips with fans (pairs sharing their first vertex), repeated pairs,
// far and non-finite points, and in the middle a map change, a taper
// change (the kept pair is tapered anew) and band-strip vertices (they
// share the strip's vertex store).
TEST_F(PreparedPath, RandomStripsMatchPlainPath) {
    std::mt19937 seeds(1618);
    for (int n = 0; n < 1500; ++n) {
        const uint32_t seed = seeds();
        std::mt19937 rng(seed);
        Pair p(64, n % 2 ? 64 : 48);
        Configure(p, rng);
        uint8_t second[16];
        RandomMap(rng, second);
        const float taperH = static_cast<float>(rng() % 40) - 20.0f;
        for (int strip = 0; strip < 3; ++strip) {
            const int pairs = 2 + static_cast<int>(rng() % 40);
            std::vector<std::array<double, 4>> pts(pairs);
            std::vector<uint32_t> what(pairs);
            for (int i = 0; i < pairs; ++i) {
                for (double& v : pts[i]) v = Coordinate(rng, 40);
                what[i] = rng() % 16;
                if (i > 0 && what[i] < 4) {  // fan around the previous pair's point
                    pts[i][0] = pts[i - 1][0];
                    pts[i][1] = pts[i - 1][1];
                }
                if (what[i] == 4) pts[i][2] = pts[i][0], pts[i][3] = pts[i][1];  // a == b
            }
            p.Both([&](CRasterizer_& r) {
                r.Begin();
                for (int i = 0; i < pairs; ++i) {
                    if (what[i] == 5) r.SetNibbleMap(second);
                    if (what[i] == 7) r.SetTaper(taperH, -taperH);
                    if (what[i] == 6) {
                        r.BandVertex(pts[i][0], pts[i][1]);
                    } else {
                        r.Vertex2dv(pts[i].data());
                    }
                    r.Vertex2d(pts[i][2], pts[i][3]);
                }
                r.End();
            });
        }
        ExpectSame(p, seed);
    }
}

// A vertex prepared for one call is never reused by the next, even with
// the same indices: another array, another offset, another matrix.
TEST_F(PreparedPath, VertexCacheLivesForOneCall) {
    const double a[3][2] = {{2, 2}, {30, 4}, {6, 28}};
    const double b[3][2] = {{40, 40}, {60, 36}, {50, 60}};
    const uint32_t idx[3] = {0, 1, 2};
    uint8_t five[16];
    Fill(five, 5);
    GuardedMap fast(64, 64), expected(64, 64);
    auto r = ScreenSpaceRasterizer(fast.Words(), 64, 64);
    auto e = ScreenSpaceRasterizer(expected.Words(), 64, 64);
    r->SetNibbleMap(five);
    e->SetNibbleMap(five);
    r->VertexPointer(2, 0, 16, a);
    r->DrawIndexed(4, 3, 0, idx);
    r->VertexPointer(2, 0, 16, b);
    r->DrawIndexed(4, 3, 0, idx);
    r->DrawIndexedOffset(4, 3, 0, idx, -36, 0);
    r->Translate(0, 30, 0);
    r->VertexPointer(2, 0, 16, a);
    r->DrawIndexed(4, 3, 0, idx);
    // The same triangles, each from its own array of screen positions.
    const double moved[4][3][2] = {{{2, 2}, {30, 4}, {6, 28}},
                                   {{40, 40}, {60, 36}, {50, 60}},
                                   {{4, 40}, {24, 36}, {14, 60}},
                                   {{2, 32}, {30, 34}, {6, 58}}};
    for (const auto& tri : moved) {
        e->VertexPointer(2, 0, 16, tri);
        e->DrawIndexed(4, 3, 0, idx);
    }
    EXPECT_TRUE(fast.SameAs(expected));
    int covered = 0;
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x) covered += fast.At(x, y) == 5;
    EXPECT_GT(covered, 600);  // the four triangles, some overlapping
}

}  // namespace
