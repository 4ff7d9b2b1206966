// Band passes end to end: banded drawing of a large map equals the whole
// map in one buffer; the sweep pass.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "raster/band_kernels.h"
#include "raster/depth_bands.h"
#include "raster_test_util.h"

namespace {

using trtest::ScreenSpaceRasterizer;

// 2704 x 2704 sub-samples: two bands. Far strips of depth 300 round a
// 12-gon; the reference fills their triangles (a, b, c), (d, b, c) into
// one buffer for the whole map.
TEST(BandPasses, BandedDepthPassEqualsWholeMapResolve) {
    constexpr int32_t kW = 2704, kTiles = kW / 4;
    constexpr double kDepth = 300;
    std::vector<double> x, y, theta;
    for (int i = 0; i <= 12; ++i) {
        theta.push_back((i % 12) * 2 * M_PI / 12);
        x.push_back(1352 + 900 * std::cos(theta.back()));
        y.push_back(1352 + 900 * std::sin(theta.back()));
    }
    std::vector<uint16_t> coverage(static_cast<size_t>(kW) * kW / 4);
    auto r = ScreenSpaceRasterizer(coverage.data(), kW, kW);
    std::vector<uint8_t> out(static_cast<size_t>(kTiles) * kTiles, 0xEE);
    int bands = 0;
    for (uint32_t keep = 0;; keep = 1) {
        ASSERT_EQ(r->DepthBandPass(out.data(), kDepth, keep), 0u);
        r->Begin();
        for (size_t i = 0; i < x.size(); ++i) r->DepthVertexFar(x[i], y[i], theta[i]);
        ++bands;
        if (r->DepthBandPass(nullptr, 0, 0) == 0) break;
    }
    EXPECT_EQ(bands, 2);

    std::vector<uint16_t> depth(static_cast<size_t>(kW) * kW, 0);
    auto f = [](double v) { return static_cast<float>(v); };  // screen = object coordinates
    for (size_t i = 0; i + 1 < x.size(); ++i) {
        const float ax = f(x[i]), ay = f(y[i]), cx = f(x[i + 1]), cy = f(y[i + 1]);
        const float bx = f(x[i] + kDepth * std::cos(theta[i]));
        const float by = f(y[i] + kDepth * std::sin(theta[i]));
        const float dx = f(x[i + 1] + kDepth * std::cos(theta[i + 1]));
        const float dy = f(y[i + 1] + kDepth * std::sin(theta[i + 1]));
        const tr::BandTarget target{depth.data(), nullptr, kW, 0, kW};
        tr::FillBandTriangle(target, tr::BandKernel::kDepthFar,
                             {{ax, bx, cx}, {ay, by, cy}, {{64770, 255, 64770}, {}}});
        tr::FillBandTriangle(target, tr::BandKernel::kDepthFar,
                             {{dx, bx, cx}, {dy, by, cy}, {{255, 255, 64770}, {}}});
    }
    std::vector<uint8_t> want(out.size(), 0xEE);
    tr::ResolveDepthBand(depth.data(), kW, 0, kTiles, true, want.data());
    EXPECT_TRUE(out == want);
    EXPECT_GT(std::count_if(want.begin(), want.end(), [](uint8_t v) { return v != 10 && v != 0xEE; }), 10000);
}

// A sweep strip from a horizontal contour at y = 24 down by 40: depth falls
// from 64770 at the contour to 255 at the swept end.
TEST(BandPasses, SweepRampsFromContourToSweptEnd) {
    constexpr int32_t kW = 96, kTx = kW / 4, kMid = kTx / 2;
    std::vector<uint16_t> coverage(kW * kW / 4);
    auto r = ScreenSpaceRasterizer(coverage.data(), kW, kW);
    std::vector<uint8_t> out(kTx * kTx, 0xEE);
    r->SweepPass(out.data(), 0, 40);
    r->Begin();
    r->SweepVertex(8, 24);
    r->SweepVertex(88, 24);
    r->SweepPass(nullptr, 0, 0);
    EXPECT_EQ(out[2 * kTx + kMid], 10);  // above the contour
    for (int ty = 7; ty <= 14; ++ty) EXPECT_LT(out[ty * kTx + kMid], out[(ty - 1) * kTx + kMid]) << ty;
    EXPECT_EQ(out[20 * kTx + kMid], 10);  // below the swept end
}

}  // namespace
