// Band kernels: depth tests, marking, interpolation at sub-sample centres
// and the restriction to the band's rows.
#include "raster/band_kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::FillRuleOracle;

constexpr int32_t kW = 48, kRows = 40;
constexpr uint16_t kGuard = 0xBEEF;

// Band buffers with guard samples before and after.
struct Buffers {
    static constexpr size_t kPad = 64;
    std::vector<uint16_t> depth = std::vector<uint16_t>(kW * kRows + 2 * kPad, 0);
    std::vector<uint8_t> light = std::vector<uint8_t>(kW * kRows + 2 * kPad, 0);
    Buffers() {
        for (size_t i = 0; i < kPad; ++i) {
            depth[i] = depth[depth.size() - 1 - i] = kGuard;
            light[i] = light[light.size() - 1 - i] = 0xBE;
        }
    }
    tr::BandTarget Target(int32_t rowTop, bool shaded) {
        return {depth.data() + kPad, shaded ? light.data() + kPad : nullptr, kW, rowTop,
                rowTop + kRows};
    }
    uint16_t& D(int32_t x, int32_t row) { return depth[kPad + row * kW + x]; }
    uint8_t& L(int32_t x, int32_t row) { return light[kPad + row * kW + x]; }
    bool GuardsIntact() const {
        for (size_t i = 0; i < kPad; ++i)
            if (depth[i] != kGuard || depth[depth.size() - 1 - i] != kGuard || light[i] != 0xBE ||
                light[light.size() - 1 - i] != 0xBE)
                return false;
        return true;
    }
};

tr::ScreenTriangle Tri(const float (&x)[3], const float (&y)[3], const double (&d)[3],
                       const double (&l)[3]) {
    tr::ScreenTriangle t{};
    for (int i = 0; i < 3; ++i) {
        t.x[i] = x[i];
        t.y[i] = y[i];
        t.attr[0][i] = d[i];
        t.attr[1][i] = l[i];
    }
    return t;
}

// Plane through three values, evaluated in doubles at (px, py).
double PlaneAt(const float (&x)[3], const float (&y)[3], const double (&v)[3], double px, double py) {
    const double det = (double(x[1]) - x[0]) * (double(y[2]) - y[0]) - (double(x[2]) - x[0]) * (double(y[1]) - y[0]);
    const double l1 = ((px - x[0]) * (double(y[2]) - y[0]) - (double(x[2]) - x[0]) * (py - y[0])) / det;
    const double l2 = ((double(x[1]) - x[0]) * (py - y[0]) - (px - x[0]) * (double(y[1]) - y[0])) / det;
    return v[0] + l1 * (v[1] - v[0]) + l2 * (v[2] - v[0]);
}

TEST(BandKernels, InterpolatedDepthAndLightFollowThePlaneAtCentres) {
    std::mt19937 rng(2);
    std::uniform_real_distribution<float> c(0.0f, 47.0f);
    std::uniform_real_distribution<double> dv(255.0, 64770.0), lv(1.0, 251.0);
    for (int n = 0; n < 1000; ++n) {
        const float x[3] = {c(rng), c(rng), c(rng)}, y[3] = {c(rng) * 0.8f, c(rng) * 0.8f, c(rng) * 0.8f};
        const double d[3] = {dv(rng), dv(rng), dv(rng)}, l[3] = {lv(rng), lv(rng), lv(rng)};
        Buffers b;
        tr::FillBandTriangle(b.Target(0, true), tr::BandKernel::kShadedFar, Tri(x, y, d, l));
        const FillRuleOracle oracle(x, y);
        for (int32_t r = 0; r < kRows; ++r) {
            for (int32_t p = 0; p < kW; ++p) {
                if (!oracle.Covers(p, r)) {
                    ASSERT_EQ(b.D(p, r), 0);
                    continue;
                }
                const double wantD = PlaneAt(x, y, d, p + 0.5, r + 0.5);
                const double wantL = PlaneAt(x, y, l, p + 0.5, r + 0.5);
                // Fixed point with 11 fraction bits: the step truncation
                // adds at most one unit per column.
                const double tol = 1.0 + kW / 2048.0 + 1e-6 * std::fabs(wantD);
                ASSERT_NEAR(b.D(p, r), std::clamp(wantD, 0.0, 65535.0), tol + 1) << p << ", " << r;
                ASSERT_NEAR(b.L(p, r), std::clamp(wantL, 0.0, 255.0), tol + 1) << p << ", " << r;
            }
        }
        ASSERT_TRUE(b.GuardsIntact());
    }
}

TEST(BandKernels, DepthTestsAndMarking) {
    const float x[3] = {4, 40, 4}, y[3] = {4, 4, 36};
    const double flat[3] = {30000, 30000, 30000}, light[3] = {100, 100, 100};
    struct Case {
        tr::BandKernel kernel;
        uint16_t stored;
        uint16_t want;
        uint8_t wantLight;
    } cases[] = {
        {tr::BandKernel::kDepthNear, 0, 0, 0},           // unreached: near never writes
        {tr::BandKernel::kDepthNear, 64770, 30000, 0},   // marked: nearer wins
        {tr::BandKernel::kDepthNear, 20000, 20000, 0},   // already nearer
        {tr::BandKernel::kShadedNear, 64770, 30000, 100},
        {tr::BandKernel::kDepthFar, 0, 30000, 0},
        {tr::BandKernel::kDepthFar, 40000, 40000, 0},
        {tr::BandKernel::kShadedFar, 0, 30000, 100},
        {tr::BandKernel::kSweep, 0, 30000, 0},
        {tr::BandKernel::kMark, 0, 64770, 0},
        {tr::BandKernel::kMark, 12, 64770, 0},
    };
    for (const Case& c : cases) {
        Buffers b;
        for (int32_t r = 0; r < kRows; ++r)
            for (int32_t p = 0; p < kW; ++p) b.D(p, r) = c.stored;
        tr::FillBandTriangle(b.Target(0, true), c.kernel, Tri(x, y, flat, light));
        EXPECT_EQ(b.D(10, 10), c.want) << int(c.kernel) << " stored " << c.stored;
        EXPECT_EQ(b.L(10, 10), c.wantLight) << int(c.kernel) << " stored " << c.stored;
        EXPECT_EQ(b.D(45, 38), c.stored);  // outside the triangle
    }
}

TEST(BandKernels, SweepClampsNegativeDepthsAtZero) {
    const float x[3] = {4, 40, 4}, y[3] = {4, 4, 36};
    const double d[3] = {-50000, -50000, 60000}, l[3] = {0, 0, 0};
    Buffers b;
    tr::FillBandTriangle(b.Target(0, false), tr::BandKernel::kSweep, Tri(x, y, d, l));
    EXPECT_EQ(b.D(5, 5), 0);       // negative: clamped to 0, not stored
    EXPECT_GT(b.D(5, 30), 40000);  // near the positive vertex
}

// A band holding map rows [100, 140): geometry is drawn in map rows and
// only the band's part lands, at band-relative rows.
TEST(BandKernels, OnlyTheBandsRowsAreWritten) {
    const float x[3] = {2, 46, 2}, y[3] = {60, 60, 200};
    const double d[3] = {1000, 1000, 1000}, l[3] = {9, 9, 9};
    Buffers b;
    tr::FillBandTriangle(b.Target(100, true), tr::BandKernel::kShadedFar, Tri(x, y, d, l));
    const FillRuleOracle oracle(x, y);
    for (int32_t r = 0; r < kRows; ++r)
        for (int32_t p = 0; p < kW; ++p)
            ASSERT_EQ(b.D(p, r), oracle.Covers(p, r + 100) ? 1000 : 0) << p << ", " << r;
    EXPECT_TRUE(b.GuardsIntact());
}

TEST(BandKernels, HugeAndNonFiniteGeometryStaysInBuffers) {
    const float inf = std::numeric_limits<float>::infinity();
    const float big = 3e38f;
    const double d[3] = {255, 64770, 255}, l[3] = {1, 2, 3};
    const float xs[][3] = {{-big, big, 0}, {inf, 1, 2}, {-1e7f, 1e7f, 5}, {-100, -50, -75}};
    const float ys[][3] = {{-big, -big, big}, {1, 2, 30}, {-1e7f, -1e7f, 1e7f}, {1, 1, 30}};
    for (int i = 0; i < 4; ++i) {
        for (tr::BandKernel k : {tr::BandKernel::kMark, tr::BandKernel::kShadedFar, tr::BandKernel::kSweep}) {
            Buffers b;
            tr::FillBandTriangle(b.Target(17, true), k, Tri(xs[i], ys[i], d, l));
            EXPECT_TRUE(b.GuardsIntact()) << i;
        }
    }
}

}  // namespace
