// Fill rule of the shared triangle set-up and edge walk, through the
// coverage kernels: against a per-sub-sample oracle and exact geometry, on
// a mesh that must cover every sub-sample once, and on geometry that
// leaves the map.
#include "raster/triangle_walk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "raster_test_util.h"

namespace {

using trtest::DrawKernel;
using trtest::GuardedMap;
using trtest::TriangleText;

constexpr int32_t kW = 64, kH = 64;

void DrawCounting(GuardedMap& m, const float* xs, const float* ys) {
    static const tr::NibbleTables counting = trtest::TablesOf(trtest::CountingMap().data());
    DrawKernel(m, tr::GeneralCoverageKernel(), xs, ys, &counting);
}

// Signed distance of (px, py) from the nearest edge line, positive inside.
double InsideBy(const float* xs, const float* ys, double px, double py) {
    const double s = (double(xs[1]) - xs[0]) * (double(ys[2]) - ys[0]) -
                     (double(xs[2]) - xs[0]) * (double(ys[1]) - ys[0]);
    double d = 1e9;
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3;
        const double ex = double(xs[j]) - xs[i], ey = double(ys[j]) - ys[i];
        d = std::min(d, (s > 0 ? 1 : -1) * (ex * (py - ys[i]) - ey * (px - xs[i])) / std::hypot(ex, ey));
    }
    return d;
}

// Every third triangle glyph-detail-sized, every fifth with vertices on
// sub-sample centres or corners (edges through centres: the top-left
// rule). Besides the oracle, exact geometry: centres 0.1 inside are
// covered, 0.1 outside are not.
TEST(FillRule, RandomTrianglesMatchOracleSubSampleBySubSample) {
    std::mt19937 rng(20240607);
    std::uniform_real_distribution<float> coord(-12.0f, 76.0f), small(-3.0f, 3.0f);
    for (int n = 0; n < 6000; ++n) {
        float xs[3], ys[3];
        const bool tiny = n % 3 == 0;
        const float cx = coord(rng), cy = coord(rng);
        for (int i = 0; i < 3; ++i) {
            xs[i] = tiny ? cx + small(rng) : coord(rng);
            ys[i] = tiny ? cy + small(rng) : coord(rng);
            if (n % 5 == 1) xs[i] = std::round(xs[i] * 2) / 2, ys[i] = std::round(ys[i] * 2) / 2;
        }
        GuardedMap m(kW, kH);
        DrawKernel(m, tr::ConstantCoverageKernel(1), xs, ys);
        const trtest::FillRuleOracle oracle(xs, ys);
        for (int32_t r = 0; r < kH; ++r)
            for (int32_t p = 0; p < kW; ++p) {
                const uint32_t v = m.At(p, r);
                ASSERT_EQ(v, oracle.Covers(p, r) ? 1u : 0u)
                    << p << ", " << r << " " << TriangleText(xs, ys);
                const double in = InsideBy(xs, ys, p + 0.5, r + 0.5);
                ASSERT_TRUE(in > 0.1 ? v == 1 : in < -0.1 ? v == 0 : true) << p << ", " << r;
            }
        ASSERT_TRUE(m.GuardsIntact()) << TriangleText(xs, ys);
    }
}

// Grids reaching past the map on every side.
TEST(FillRule, JitteredMeshCoversEverySubSampleOnce) {
    std::mt19937 rng(4242);
    for (int mesh = 0; mesh < 40; ++mesh) {
        const float cell = (kW + 20.0f) / 9;
        const trtest::Mesh g = trtest::JitteredGrid(rng, 9, 9, -10.0f, -10.0f, cell, 0.15f * cell);
        GuardedMap m(kW, kH);
        for (size_t t = 0; t < g.triangles.size() / 3; ++t) {
            float xs[3], ys[3];
            g.Triangle(t, xs, ys);
            DrawCounting(m, xs, ys);
        }
        ASSERT_EQ(m.Count(1), kW * kH) << "mesh " << mesh;
        ASSERT_TRUE(m.GuardsIntact());
    }
}

// A sliver on the row-centre line y = 4.5, twice-area 0.04 or 0.06.
TEST(FillRule, AreaThreshold) {
    for (const double a2 : {0.04, 0.06}) {
        const float xs[3] = {1.0f, 41.0f, 1.0f}, ys[3] = {4.5f, 4.5f, 4.5f + float(a2 / 40.0)};
        GuardedMap m(kW, kH);
        DrawKernel(m, tr::ConstantCoverageKernel(1), xs, ys);
        EXPECT_EQ(m.Count(1) > 0, a2 > 0.05) << a2;
    }
}

TEST(FillRule, OutOfMapAndNonFiniteGeometryStaysInside) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN(), big = 3.0e38f;
    const struct {
        float xs[3], ys[3];
        bool coversMap;
    } cases[] = {
        {{-1e6f, 1e6f, 0.0f}, {-1e6f, -1e6f, 1e6f}, true},
        {{-big, big, 0.0f}, {-big, -big, big}, true},
        {{-5e7f, 5e7f, 32.0f}, {-5e7f, -5e7f, 5e7f}, true},
        {{nan, 10.0f, 20.0f}, {0.0f, 30.0f, 5.0f}, false},
        {{inf, -inf, 20.0f}, {0.0f, 30.0f, 5.0f}, false},
        {{-200.0f, -100.0f, -150.0f}, {10.0f, 10.0f, 50.0f}, false},
        {{70.0f, 900.0f, 900.0f}, {10.0f, 10.0f, 40.0f}, false},
    };
    for (const auto& c : cases)
        for (uint32_t k : {0u, 15u}) {
            GuardedMap m(kW, kH);
            std::memset(m.Words(), 0x55, m.Bytes());
            DrawKernel(m, tr::ConstantCoverageKernel(k), c.xs, c.ys);
            EXPECT_TRUE(m.GuardsIntact()) << TriangleText(c.xs, c.ys);
            EXPECT_EQ(m.Count(c.coversMap ? k : 5u), kW * kH) << TriangleText(c.xs, c.ys);
        }
}

}  // namespace
