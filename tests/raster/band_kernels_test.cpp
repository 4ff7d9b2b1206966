// Band kernels: interpolation at sub-sample centres, depth tests, marking,
// the band's rows and geometry beyond the buffers.
#include "raster/band_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::FillRuleOracle;

constexpr int32_t kW = 48, kRows = 40;
constexpr size_t kPad = 64;  // guard samples before and after each buffer

struct Buffers {
    std::vector<uint16_t> depth = std::vector<uint16_t>(kW * kRows + 2 * kPad, 0xBEEF);
    std::vector<uint8_t> light = std::vector<uint8_t>(kW * kRows + 2 * kPad, 0xBE);
    explicit Buffers(uint16_t stored = 0) {
        std::fill_n(depth.begin() + kPad, kW * kRows, stored);
        std::fill_n(light.begin() + kPad, kW * kRows, 0);
    }
    void Fill(int32_t rowTop, tr::BandKernel k, const float (&x)[3], const float (&y)[3],
              const double (&d)[3], const double (&l)[3]) {
        const tr::ScreenTriangle t{
            {x[0], x[1], x[2]}, {y[0], y[1], y[2]}, {{d[0], d[1], d[2]}, {l[0], l[1], l[2]}}};
        tr::FillBandTriangle({&depth[kPad], &light[kPad], kW, rowTop, rowTop + kRows}, k, t);
    }
    uint16_t D(int32_t x, int32_t row) const { return depth[kPad + row * kW + x]; }
    uint8_t L(int32_t x, int32_t row) const { return light[kPad + row * kW + x]; }
    bool GuardsIntact() const {
        const auto pads = [](const auto& v, int guard) {
            return std::count(v.begin(), v.begin() + kPad, guard) +
                   std::count(v.end() - kPad, v.end(), guard);
        };
        return pads(depth, 0xBEEF) + pads(light, 0xBE) == 4 * kPad;
    }
};

// Plane through three values, evaluated in doubles at (px, py).
double PlaneAt(const float (&x)[3], const float (&y)[3], const double (&v)[3], double px,
               double py) {
    const double x1 = double(x[1]) - x[0], y1 = double(y[1]) - y[0];
    const double x2 = double(x[2]) - x[0], y2 = double(y[2]) - y[0];
    const double det = x1 * y2 - x2 * y1;
    const double l1 = ((px - x[0]) * y2 - x2 * (py - y[0])) / det;
    const double l2 = (x1 * (py - y[0]) - (px - x[0]) * y1) / det;
    return v[0] + l1 * (v[1] - v[0]) + l2 * (v[2] - v[0]);
}

// Planes at sub-sample centres in fixed point with 11 fraction bits: the
// truncated step adds at most one unit per column, plus start and store.
// Half the bands hold map rows [100, 140); triangles cross the band edges.
TEST(BandKernels, InterpolatedDepthAndLightFollowThePlaneAtCentres) {
    std::mt19937 rng(2);
    std::uniform_real_distribution<float> c(0.0f, 47.0f);
    std::uniform_real_distribution<double> dv(255.0, 64770.0), lv(1.0, 251.0);
    for (int n = 0; n < 1000; ++n) {
        const int32_t top = n % 2 ? 100 : 0;
        const float x[3] = {c(rng), c(rng), c(rng)};
        const float y[3] = {top - 6 + c(rng) * 1.1f, top - 6 + c(rng) * 1.1f, top - 6 + c(rng) * 1.1f};
        const double d[3] = {dv(rng), dv(rng), dv(rng)}, l[3] = {lv(rng), lv(rng), lv(rng)};
        Buffers b;
        b.Fill(top, tr::BandKernel::kShadedFar, x, y, d, l);
        const FillRuleOracle oracle(x, y);
        for (int32_t r = 0; r < kRows; ++r)
            for (int32_t p = 0; p < kW; ++p) {
                if (!oracle.Covers(p, r + top)) {
                    ASSERT_EQ(b.D(p, r), 0);
                    continue;
                }
                const double wantD = PlaneAt(x, y, d, p + 0.5, r + top + 0.5);
                const double tol = 2.0 + kW / 2048.0 + 1e-6 * std::fabs(wantD);
                const double wantL = PlaneAt(x, y, l, p + 0.5, r + top + 0.5);
                ASSERT_TRUE(std::fabs(b.D(p, r) - std::clamp(wantD, 0.0, 65535.0)) <= tol &&
                            std::fabs(b.L(p, r) - std::clamp(wantL, 0.0, 255.0)) <= tol)
                    << p << ", " << r;
            }
        ASSERT_TRUE(b.GuardsIntact());
    }
}

// A flat triangle of depth 30000 and light 100 over stored depths; the
// sweep clamps negative depths at 0.
TEST(BandKernels, DepthTestsMarkingAndClamps) {
    const float x[3] = {4, 40, 4}, y[3] = {4, 4, 36};
    const double flat[3] = {30000, 30000, 30000}, light[3] = {100, 100, 100};
    using K = tr::BandKernel;
    const struct {
        K kernel;
        uint16_t stored, want;
        uint8_t wantLight;
    } cases[] = {
        {K::kDepthNear, 0, 0, 0},          {K::kDepthNear, 64770, 30000, 0},
        {K::kDepthNear, 20000, 20000, 0},  {K::kShadedNear, 64770, 30000, 100},
        {K::kDepthFar, 0, 30000, 0},       {K::kDepthFar, 40000, 40000, 0},
        {K::kShadedFar, 0, 30000, 100},    {K::kSweep, 0, 30000, 0},
        {K::kMark, 0, 64770, 0},           {K::kMark, 12, 64770, 0},
        {K::kShadedNear, 30000, 30000, 0}, {K::kShadedFar, 30000, 30000, 0},  // ties keep
    };
    for (const auto& c : cases) {
        Buffers b(c.stored);
        b.Fill(0, c.kernel, x, y, flat, light);
        EXPECT_TRUE(b.D(10, 10) == c.want && b.L(10, 10) == c.wantLight && b.D(45, 38) == c.stored)
            << int(c.kernel) << " stored " << c.stored;
    }
    const double ramp[3] = {-50000, -50000, 60000};
    Buffers b;
    b.Fill(0, K::kSweep, x, y, ramp, light);
    EXPECT_EQ(b.D(5, 5), 0);
    EXPECT_GT(b.D(5, 30), 40000);  // near the positive vertex
}

TEST(BandKernels, HugeAndNonFiniteGeometryStaysInBuffers) {
    const float inf = std::numeric_limits<float>::infinity(), big = 3e38f;
    const double d[3] = {255, 64770, 255}, l[3] = {1, 2, 3};
    const float xs[][3] = {{-big, big, 0}, {inf, 1, 2}, {-1e7f, 1e7f, 5}, {-100, -50, -75}};
    const float ys[][3] = {{-big, -big, big}, {1, 2, 30}, {-1e7f, -1e7f, 1e7f}, {1, 1, 30}};
    for (int i = 0; i < 4; ++i)
        for (auto k : {tr::BandKernel::kMark, tr::BandKernel::kShadedFar, tr::BandKernel::kSweep}) {
            Buffers b;
            b.Fill(17, k, xs[i], ys[i], d, l);
            EXPECT_TRUE(b.GuardsIntact()) << i;
        }
}

}  // namespace
