// Fill rule of the shared triangle set-up and edge walk, checked through the
// coverage kernels against a per-sub-sample oracle, against exact geometry,
// and on meshes that must cover every sub-sample exactly once.
#include "raster/triangle_walk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "raster/coverage_kernels.h"
#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::TriangleText;

constexpr int32_t kW = 64, kH = 64;

void Draw(GuardedMap& m, tr::CoverageKernel kernel, const float* xs, const float* ys,
          const tr::NibbleTables* tables = nullptr) {
    const tr::ScreenTriangle t{{xs[0], xs[1], xs[2]}, {ys[0], ys[1], ys[2]}, {}};
    kernel(tr::CoverageTarget{m.Words(), m.W(), m.H(), tables, nullptr}, t);
}

// The general kernel with map[v] = v + 1 counts how often each sub-sample
// is covered.
void DrawCounting(GuardedMap& m, const float* xs, const float* ys) {
    static const tr::NibbleTables counting = [] {
        uint8_t map[16];
        for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>(v < 15 ? v + 1 : 15);
        tr::NibbleTables t;
        tr::BuildNibbleTables(map, t);
        return t;
    }();
    Draw(m, tr::GeneralCoverageKernel(), xs, ys, &counting);
}

TEST(FillRule, RandomTrianglesMatchOracleSubSampleBySubSample) {
    std::mt19937 rng(20240607);
    std::uniform_real_distribution<float> coord(-12.0f, 76.0f), small(-3.0f, 3.0f);
    for (int n = 0; n < 6000; ++n) {
        float xs[3], ys[3];
        const bool tiny = n % 3 == 0;  // glyph-detail-sized
        const float cx = coord(rng), cy = coord(rng);
        for (int i = 0; i < 3; ++i) {
            xs[i] = tiny ? cx + small(rng) : coord(rng);
            ys[i] = tiny ? cy + small(rng) : coord(rng);
        }
        GuardedMap m(kW, kH);
        Draw(m, tr::ConstantCoverageKernel(1), xs, ys);
        const trtest::FillRuleOracle oracle(xs, ys);
        for (int32_t r = 0; r < kH; ++r)
            for (int32_t p = 0; p < kW; ++p)
                ASSERT_EQ(m.At(p, r), oracle.Covers(p, r) ? 1u : 0u)
                    << "(" << p << ", " << r << ") of " << TriangleText(xs, ys);
        ASSERT_TRUE(m.GuardsIntact()) << TriangleText(xs, ys);
    }
}

// A grid reaching past the map on every side, jittered (0.15 of a cell
// keeps every quad convex), each cell cut along a random diagonal.
TEST(FillRule, JitteredMeshCoversEverySubSampleOnce) {
    std::mt19937 rng(4242);
    constexpr int kCells = 9;
    const float cell = (kW + 20.0f) / kCells;
    std::uniform_real_distribution<float> jitter(-0.15f * cell, 0.15f * cell);
    for (int mesh = 0; mesh < 40; ++mesh) {
        float gx[kCells + 1][kCells + 1], gy[kCells + 1][kCells + 1];
        for (int i = 0; i <= kCells; ++i)
            for (int j = 0; j <= kCells; ++j) {
                const bool border = i == 0 || j == 0 || i == kCells || j == kCells;
                gx[i][j] = -10.0f + i * cell + (border ? 0.0f : jitter(rng));
                gy[i][j] = -10.0f + j * cell + (border ? 0.0f : jitter(rng));
            }
        GuardedMap m(kW, kH);
        for (int i = 0; i < kCells; ++i)
            for (int j = 0; j < kCells; ++j) {
                const float qx[4] = {gx[i][j], gx[i + 1][j], gx[i + 1][j + 1], gx[i][j + 1]};
                const float qy[4] = {gy[i][j], gy[i + 1][j], gy[i + 1][j + 1], gy[i][j + 1]};
                const bool diag = rng() & 1;
                const int t1[3] = {0, 1, diag ? 2 : 3}, t2[3] = {diag ? 0 : 1, 2, 3};
                for (const int* t : {t1, t2}) {
                    const float xs[3] = {qx[t[0]], qx[t[1]], qx[t[2]]};
                    const float ys[3] = {qy[t[0]], qy[t[1]], qy[t[2]]};
                    DrawCounting(m, xs, ys);
                }
            }
        ASSERT_EQ(m.Count(1), kW * kH) << "mesh " << mesh;
        ASSERT_TRUE(m.GuardsIntact());
    }
}

// Fans of convex polygons against exact geometry: centres more than 0.05
// inside are covered once, more than 0.05 outside not at all.
TEST(FillRule, FansOfConvexPolygonCoverInteriorOnceAndNothingOutside) {
    std::mt19937 rng(99);
    std::uniform_real_distribution<float> centre(20.0f, 44.0f), radius(6.0f, 20.0f);
    for (int fan = 0; fan < 200; ++fan) {
        const int n = 3 + fan % 10;
        const float cx = centre(rng), cy = centre(rng), rad = radius(rng);
        const float phase = static_cast<float>(rng() % 1000) / 1000.0f;
        std::vector<float> px(n), py(n);
        for (int i = 0; i < n; ++i) {
            const double a = (i + phase) * 2 * M_PI / n;
            px[i] = cx + rad * static_cast<float>(std::cos(a));
            py[i] = cy + rad * static_cast<float>(std::sin(a));
        }
        GuardedMap m(kW, kH);
        for (int i = 1; i + 1 < n; ++i) {
            const float xs[3] = {px[0], px[i], px[i + 1]}, ys[3] = {py[0], py[i], py[i + 1]};
            DrawCounting(m, xs, ys);
        }
        for (int32_t r = 0; r < kH; ++r)
            for (int32_t p = 0; p < kW; ++p) {
                double minDist = 1e9;  // signed, positive inside
                for (int i = 0; i < n; ++i) {
                    const int j = (i + 1) % n;
                    const double ex = px[j] - px[i], ey = py[j] - py[i];
                    minDist = std::min(minDist, (ex * (r + 0.5 - py[i]) - ey * (p + 0.5 - px[i])) /
                                                    std::hypot(ex, ey));
                }
                const uint32_t v = m.At(p, r);
                ASSERT_TRUE(minDist > 0.05 ? v == 1 : minDist < -0.05 ? v == 0 : v <= 1)
                    << "fan " << fan << " (" << p << ", " << r << ") holds " << v;
            }
    }
}

// Vertices on sub-sample centres: the top edge y = 2.5 and left edge
// x = 2.5 are in, the hypotenuse x + y = 13 (a right edge) is out; the
// other half of the square then covers [2.5, 10.5)^2 exactly once.
TEST(FillRule, CentresOnEdgesFollowTopLeftRule) {
    const float xs[3] = {2.5f, 10.5f, 2.5f}, ys[3] = {2.5f, 2.5f, 10.5f};
    const float xs2[3] = {10.5f, 10.5f, 2.5f}, ys2[3] = {2.5f, 10.5f, 10.5f};
    GuardedMap m(16, 16);
    DrawCounting(m, xs, ys);
    for (int32_t r = 0; r < 16; ++r)
        for (int32_t p = 0; p < 16; ++p)
            EXPECT_EQ(m.At(p, r), p >= 2 && r >= 2 && p + r + 1 < 13 ? 1u : 0u) << p << ", " << r;
    DrawCounting(m, xs2, ys2);
    for (int32_t r = 0; r < 16; ++r)
        for (int32_t p = 0; p < 16; ++p)
            EXPECT_EQ(m.At(p, r), (p >= 2 && p < 10 && r >= 2 && r < 10) ? 1u : 0u) << p << ", " << r;
}

// A sliver with its base on the row-centre line y = 4.5 and twice-area
// 0.04 (dropped) or 0.06 (drawn).
TEST(FillRule, AreaThreshold) {
    for (const double a2 : {0.04, 0.06}) {
        const float h = static_cast<float>(a2 / 40.0);
        const float xs[3] = {1.0f, 41.0f, 1.0f}, ys[3] = {4.5f, 4.5f, 4.5f + h};
        GuardedMap m(kW, kH);
        Draw(m, tr::ConstantCoverageKernel(1), xs, ys);
        EXPECT_EQ(m.Count(1) > 0, a2 > 0.05) << a2;
    }
}

TEST(FillRule, OutOfMapAndNonFiniteGeometryStaysInside) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float big = 3.0e38f;
    struct Case {
        float xs[3], ys[3];
        bool coversMap;  // the triangle contains the whole map
    } cases[] = {
        {{-1e6f, 1e6f, 0.0f}, {-1e6f, -1e6f, 1e6f}, true},
        {{-big, big, 0.0f}, {-big, -big, big}, true},
        {{-5e7f, 5e7f, 32.0f}, {-5e7f, -5e7f, 5e7f}, true},
        {{nan, 10.0f, 20.0f}, {0.0f, 30.0f, 5.0f}, false},
        {{inf, -inf, 20.0f}, {0.0f, 30.0f, 5.0f}, false},
        {{-200.0f, -100.0f, -150.0f}, {10.0f, 10.0f, 50.0f}, false},
        {{10.0f, 50.0f, 30.0f}, {-300.0f, -300.0f, -1.0f}, false},
        {{70.0f, 900.0f, 900.0f}, {10.0f, 10.0f, 40.0f}, false},
    };
    for (const Case& c : cases) {
        for (uint32_t k : {0u, 15u}) {
            GuardedMap m(kW, kH);
            for (int32_t r = 0; r < kH; ++r)
                for (int32_t p = 0; p < kW; ++p) m.Set(p, r, 5);
            Draw(m, tr::ConstantCoverageKernel(k), c.xs, c.ys);
            EXPECT_TRUE(m.GuardsIntact()) << TriangleText(c.xs, c.ys);
            EXPECT_EQ(m.Count(c.coversMap ? k : 5u), kW * kH) << TriangleText(c.xs, c.ys);
        }
    }
}

}  // namespace
