// Fill rule of the shared triangle set-up and edge walk, checked through the
// coverage kernels against a per-sub-sample oracle, against exact geometry,
// and on meshes that must cover every sub-sample exactly once.
#include "raster/triangle_walk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "raster_test_util.h"
#include "raster/coverage_kernels.h"

namespace {

using trtest::FillRuleOracle;
using trtest::GuardedMap;
using trtest::TriangleText;

constexpr int32_t kW = 64, kH = 64;

tr::ScreenTriangle Tri(const float* xs, const float* ys) {
    tr::ScreenTriangle t{};
    for (int i = 0; i < 3; ++i) {
        t.x[i] = xs[i];
        t.y[i] = ys[i];
    }
    return t;
}

void Draw(GuardedMap& m, tr::CoverageKernel kernel, const float* xs, const float* ys,
          const tr::NibbleTables* tables = nullptr) {
    const tr::CoverageTarget target{m.Words(), m.W(), m.H(), tables, nullptr};
    kernel(target, Tri(xs, ys));
}

TEST(FillRule, RandomTrianglesMatchOracleSubSampleBySubSample) {
    std::mt19937 rng(20240607);
    std::uniform_real_distribution<float> coord(-12.0f, 76.0f);
    std::uniform_real_distribution<float> small(-3.0f, 3.0f);
    for (int n = 0; n < 6000; ++n) {
        float xs[3], ys[3];
        // Mix map-sized triangles with glyph-detail-sized ones.
        const bool tiny = n % 3 == 0;
        const float cx = coord(rng), cy = coord(rng);
        for (int i = 0; i < 3; ++i) {
            xs[i] = tiny ? cx + small(rng) : coord(rng);
            ys[i] = tiny ? cy + small(rng) : coord(rng);
        }
        GuardedMap m(kW, kH);
        Draw(m, tr::ConstantCoverageKernel(1), xs, ys);
        const FillRuleOracle oracle(xs, ys);
        for (int32_t r = 0; r < kH; ++r) {
            for (int32_t p = 0; p < kW; ++p) {
                ASSERT_EQ(m.At(p, r), oracle.Covers(p, r) ? 1u : 0u)
                    << "sub-sample (" << p << ", " << r << ") of " << TriangleText(xs, ys);
            }
        }
        ASSERT_TRUE(m.GuardsIntact()) << TriangleText(xs, ys);
    }
}

// Exact test in the fixed-point frame: the walk may differ from the true
// triangle only within its accumulated step truncation of an edge.
TEST(FillRule, WalkStaysWithinStepErrorOfExactTriangle) {
    std::mt19937 rng(77);
    std::uniform_real_distribution<float> coord(0.0f, 64.0f);
    for (int n = 0; n < 2000; ++n) {
        float xs[3], ys[3];
        for (int i = 0; i < 3; ++i) xs[i] = coord(rng), ys[i] = coord(rng);
        GuardedMap m(kW, kH);
        Draw(m, tr::ConstantCoverageKernel(1), xs, ys);
        if (std::fabs((double(xs[1]) - xs[0]) * (double(ys[2]) - ys[0]) -
                      (double(xs[2]) - xs[0]) * (double(ys[1]) - ys[0])) < 0.05)
            continue;
        int64_t fx[3], fy[3];
        for (int i = 0; i < 3; ++i) {
            fx[i] = static_cast<int64_t>((double(xs[i]) + 0.5) * 2048);
            fy[i] = static_cast<int64_t>((double(ys[i]) - 0.5) * 2048);
        }
        const int64_t orient = (fx[1] - fx[0]) * (fy[2] - fy[0]) - (fx[2] - fx[0]) * (fy[1] - fy[0]);
        if (orient == 0) continue;
        const int64_t tolerance = (kH + 2);  // one unit per row plus the start truncation
        for (int32_t r = 0; r < kH; ++r) {
            for (int32_t p = 0; p < kW; ++p) {
                const int64_t cx = (p + 1) * 2048LL, cy = r * 2048LL;
                bool inside = true, nearEdge = false;
                for (int e = 0; e < 3; ++e) {
                    const int a = e, b = (e + 1) % 3;
                    int64_t s = (fx[b] - fx[a]) * (cy - fy[a]) - (fy[b] - fy[a]) * (cx - fx[a]);
                    if (orient < 0) s = -s;
                    if (s < 0) inside = false;  // interior: same sign as the orientation
                    const int64_t dy = std::llabs(fy[b] - fy[a]);
                    if (s == 0 || (dy != 0 && std::llabs(s) <= tolerance * dy)) nearEdge = true;
                }
                if (nearEdge) continue;
                ASSERT_EQ(m.At(p, r), inside ? 1u : 0u)
                    << "(" << p << ", " << r << ") of " << TriangleText(xs, ys);
            }
        }
    }
}

// The general kernel with map[v] = v + 1 counts how often each sub-sample
// is covered.
tr::NibbleTables CountingTables() {
    uint8_t map[16];
    for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>(v < 15 ? v + 1 : 15);
    tr::NibbleTables t;
    tr::BuildNibbleTables(map, t);
    return t;
}

TEST(FillRule, JitteredMeshCoversEverySubSampleOnce) {
    const tr::NibbleTables counting = CountingTables();
    std::mt19937 rng(4242);
    for (int mesh = 0; mesh < 40; ++mesh) {
        // A grid reaching past the map on every side, jittered, each cell cut
        // along a random diagonal.
        constexpr int kCells = 9;
        const float cell = (kW + 20.0f) / kCells;
        // 0.15 of a cell keeps every quad convex, so both diagonals are valid.
        std::uniform_real_distribution<float> jitter(-0.15f * cell, 0.15f * cell);
        float gx[kCells + 1][kCells + 1], gy[kCells + 1][kCells + 1];
        for (int i = 0; i <= kCells; ++i) {
            for (int j = 0; j <= kCells; ++j) {
                const bool border = i == 0 || j == 0 || i == kCells || j == kCells;
                gx[i][j] = -10.0f + i * cell + (border ? 0.0f : jitter(rng));
                gy[i][j] = -10.0f + j * cell + (border ? 0.0f : jitter(rng));
            }
        }
        GuardedMap m(kW, kH);
        for (int i = 0; i < kCells; ++i) {
            for (int j = 0; j < kCells; ++j) {
                const float qx[4] = {gx[i][j], gx[i + 1][j], gx[i + 1][j + 1], gx[i][j + 1]};
                const float qy[4] = {gy[i][j], gy[i + 1][j], gy[i + 1][j + 1], gy[i][j + 1]};
                const bool diag = rng() & 1;
                const int t1[3] = {0, 1, diag ? 2 : 3}, t2[3] = {diag ? 0 : 1, 2, 3};
                for (const int* t : {t1, t2}) {
                    const float xs[3] = {qx[t[0]], qx[t[1]], qx[t[2]]};
                    const float ys[3] = {qy[t[0]], qy[t[1]], qy[t[2]]};
                    Draw(m, tr::GeneralCoverageKernel(), xs, ys, &counting);
                }
            }
        }
        for (int32_t r = 0; r < kH; ++r)
            for (int32_t p = 0; p < kW; ++p)
                ASSERT_EQ(m.At(p, r), 1u) << "mesh " << mesh << " sub-sample (" << p << ", " << r << ")";
        ASSERT_TRUE(m.GuardsIntact());
    }
}

TEST(FillRule, FansOfConvexPolygonCoverInteriorOnceAndNothingOutside) {
    const tr::NibbleTables counting = CountingTables();
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
        for (int i = 1; i + 1 < n; ++i) {  // fan from the first vertex
            const float xs[3] = {px[0], px[i], px[i + 1]}, ys[3] = {py[0], py[i], py[i + 1]};
            Draw(m, tr::GeneralCoverageKernel(), xs, ys, &counting);
        }
        for (int32_t r = 0; r < kH; ++r) {
            for (int32_t p = 0; p < kW; ++p) {
                // Signed distance of the centre to the polygon's edges (counter-
                // clockwise in y-down screen space means positive inside here).
                double minDist = 1e9;
                for (int i = 0; i < n; ++i) {
                    const int j = (i + 1) % n;
                    const double ex = px[j] - px[i], ey = py[j] - py[i];
                    const double d = (ex * (r + 0.5 - py[i]) - ey * (p + 0.5 - px[i])) /
                                     std::hypot(ex, ey);
                    minDist = std::min(minDist, d);
                }
                const uint32_t v = m.At(p, r);
                ASSERT_LE(v, 1u) << "fan " << fan << " (" << p << ", " << r << ")";
                if (minDist > 0.05) {
                    ASSERT_EQ(v, 1u) << "fan " << fan << " (" << p << ", " << r << ")";
                } else if (minDist < -0.05) {
                    ASSERT_EQ(v, 0u) << "fan " << fan << " (" << p << ", " << r << ")";
                }
            }
        }
    }
}

TEST(FillRule, CentresOnEdgesFollowTopLeftRule) {
    // Right triangle with vertices on sub-sample centres: (2.5, 2.5),
    // (10.5, 2.5), (2.5, 10.5). Top edge y = 2.5 and left edge x = 2.5 are
    // in; the hypotenuse x + y = 13 is a right edge and is out.
    const float xs[3] = {2.5f, 10.5f, 2.5f}, ys[3] = {2.5f, 2.5f, 10.5f};
    GuardedMap m(16, 16);
    Draw(m, tr::ConstantCoverageKernel(1), xs, ys);
    for (int32_t r = 0; r < 16; ++r) {
        for (int32_t p = 0; p < 16; ++p) {
            const double cx = p + 0.5, cy = r + 0.5;
            const bool in = cx >= 2.5 && cy >= 2.5 && cx + cy < 13.0;
            EXPECT_EQ(m.At(p, r), in ? 1u : 0u) << p << ", " << r;
        }
    }
    // The other half of the square shares the hypotenuse: together they
    // cover the square [2.5, 10.5)^2 once.
    const float xs2[3] = {10.5f, 10.5f, 2.5f}, ys2[3] = {2.5f, 10.5f, 10.5f};
    const tr::NibbleTables counting = CountingTables();
    Draw(m, tr::GeneralCoverageKernel(), xs2, ys2, &counting);
    for (int32_t r = 0; r < 16; ++r)
        for (int32_t p = 0; p < 16; ++p)
            EXPECT_EQ(m.At(p, r), (p >= 2 && p < 10 && r >= 2 && r < 10) ? 1u : 0u) << p << ", " << r;
}

// A sliver with its base on the row-centre line y = 4.5 (so it meets
// centres) and twice-area 0.04 or 0.06: the first is dropped.
TEST(FillRule, AreaThreshold) {
    for (const double a2 : {0.04, 0.06}) {
        const float h = static_cast<float>(a2 / 40.0);
        const float xs[3] = {1.0f, 41.0f, 1.0f}, ys[3] = {4.5f, 4.5f, 4.5f + h};
        GuardedMap m(kW, kH);
        Draw(m, tr::ConstantCoverageKernel(1), xs, ys);
        int count = 0;
        for (int32_t p = 0; p < kW; ++p) count += m.At(p, 4);
        EXPECT_EQ(count > 0, a2 > 0.05) << a2;
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
        for (uint32_t k : {0u, 7u, 15u}) {
            GuardedMap m(kW, kH);
            for (int32_t r = 0; r < kH; ++r)
                for (int32_t p = 0; p < kW; ++p) m.Set(p, r, 5);
            Draw(m, tr::ConstantCoverageKernel(k), c.xs, c.ys);
            EXPECT_TRUE(m.GuardsIntact()) << TriangleText(c.xs, c.ys);
            for (int32_t r = 0; r < kH; ++r)
                for (int32_t p = 0; p < kW; ++p)
                    ASSERT_EQ(m.At(p, r), c.coversMap ? k : 5u) << TriangleText(c.xs, c.ys);
        }
    }
}

}  // namespace
