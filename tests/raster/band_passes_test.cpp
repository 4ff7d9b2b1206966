// Depth, shaded and sweep passes end to end: banded drawing of a large map
// equals drawing the whole map into one buffer; empty pixels and the outer
// ring; the sweep pass.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "raster/band_kernels.h"
#include "raster/depth_bands.h"
#include "raster_test_util.h"

namespace {

using trtest::ScreenSpaceRasterizer;

// Screen position of an object coordinate under ScreenSpaceRasterizer:
// clip = v - 1, window = clip * 1 + 1, stored as a float.
float Screen(double v) { return static_cast<float>((v - 1.0) + 1.0); }

struct StripPoint {
    double x, y, theta;
};

// A closed 12-gon around (cx, cy) with strips leaving outward.
std::vector<StripPoint> Polygon(double cx, double cy, double radius) {
    std::vector<StripPoint> pts;
    for (int i = 0; i <= 12; ++i) {
        const double a = (i % 12) * 2 * M_PI / 12;
        pts.push_back({cx + radius * std::cos(a), cy + radius * std::sin(a), a});
    }
    return pts;
}

// Reference: the far strips as triangles into one buffer for the whole map.
std::vector<uint8_t> WholeMapReference(int32_t w, int32_t h, const std::vector<StripPoint>& pts,
                                       double d) {
    std::vector<uint16_t> depth(static_cast<size_t>(w) * h, 0);
    const tr::BandTarget target{depth.data(), nullptr, w, 0, h};
    for (size_t i = 0; i + 1 < pts.size(); ++i) {
        const StripPoint& p = pts[i];
        const StripPoint& q = pts[i + 1];
        const float ax = Screen(p.x), ay = Screen(p.y);
        const float bx = Screen(p.x + d * std::cos(p.theta)), by = Screen(p.y + d * std::sin(p.theta));
        const float cx = Screen(q.x), cy = Screen(q.y);
        const float dx = Screen(q.x + d * std::cos(q.theta)), dy = Screen(q.y + d * std::sin(q.theta));
        tr::ScreenTriangle t1{{ax, bx, cx}, {ay, by, cy}, {{64770, 255, 64770}, {0, 0, 0}}};
        tr::ScreenTriangle t2{{dx, bx, cx}, {dy, by, cy}, {{255, 255, 64770}, {0, 0, 0}}};
        tr::FillBandTriangle(target, tr::BandKernel::kDepthFar, t1);
        tr::FillBandTriangle(target, tr::BandKernel::kDepthFar, t2);
    }
    std::vector<uint8_t> out(static_cast<size_t>(w / 4) * (h / 4), 0xEE);
    tr::ResolveDepthBand(depth.data(), w, 0, h / 4, true, out.data());
    return out;
}

TEST(BandPasses, BandedDepthPassEqualsWholeMapResolve) {
    // 2704 x 2704 sub-samples: 3 * W * H > 20 MiB, so two bands.
    constexpr int32_t kW = 2704, kH = 2704;
    std::vector<uint16_t> coverage(static_cast<size_t>(kW) * kH / 4);
    auto r = ScreenSpaceRasterizer(coverage.data(), kW, kH);
    const auto pts = Polygon(1352, 1352, 900);
    const double d = 300;
    std::vector<uint8_t> out(static_cast<size_t>(kW / 4) * (kH / 4), 0xEE);
    int bands = 0;
    uint32_t keep = 0;
    for (;;) {
        ASSERT_EQ(r->DepthBandPass(out.data(), d, keep), 0u);
        r->Begin();
        for (const StripPoint& p : pts) r->DepthVertexFar(p.x, p.y, p.theta);
        r->End();
        ++bands;
        if (r->DepthBandPass(nullptr, 0, 0) == 0) break;
        keep = 1;
    }
    EXPECT_EQ(bands, 2);
    const auto want = WholeMapReference(kW, kH, pts, d);
    ASSERT_EQ(out.size(), want.size());
    size_t differing = 0, strip = 0;
    for (size_t i = 0; i < out.size(); ++i) {
        differing += out[i] != want[i];
        strip += want[i] != 10 && want[i] != 0xEE;
    }
    EXPECT_EQ(differing, 0u);
    EXPECT_GT(strip, 10000u);
}

TEST(BandPasses, EmptyPassWritesDefaultsInsideTheRingOnly) {
    constexpr int32_t kW = 64, kH = 48, kTx = kW / 4, kTy = kH / 4;
    std::vector<uint16_t> coverage(kW * kH / 4);
    auto r = ScreenSpaceRasterizer(coverage.data(), kW, kH);
    std::vector<uint8_t> shaded(2 * kTx * kTy, 0xEE), depth(kTx * kTy, 0xEE), sweep(kTx * kTy, 0xEE);
    r->ShadedBandPass(shaded.data(), 4, 0, 0);
    EXPECT_EQ(r->ShadedBandPass2(nullptr, 0, 0, 0), 0u);
    r->DepthBandPass2(depth.data(), 4, 0);
    EXPECT_EQ(r->DepthBandPass(nullptr, 0, 0), 0u);
    r->SweepPass(sweep.data(), 3, 4);
    r->SweepPass(nullptr, 0, 0);
    for (int ty = 0; ty < kTy; ++ty) {
        for (int tx = 0; tx < kTx; ++tx) {
            const bool ring = tx == 0 || ty == 0 || tx == kTx - 1 || ty == kTy - 1;
            const size_t o = ty * kTx + tx;
            EXPECT_EQ(depth[o], ring ? 0xEE : 10);
            EXPECT_EQ(sweep[o], ring ? 0xEE : 10);
            EXPECT_EQ(shaded[2 * o], ring ? 0xEE : 128);
            EXPECT_EQ(shaded[2 * o + 1], ring ? 0xEE : 10);
        }
    }
}

// A sweep strip from a horizontal contour down by (0, 24): depth falls from
// 64770 at the contour to 255 at the swept end.
TEST(BandPasses, SweepRampsFromContourToSweptEnd) {
    constexpr int32_t kW = 96, kH = 96, kTx = kW / 4;
    std::vector<uint16_t> coverage(kW * kH / 4);
    auto r = ScreenSpaceRasterizer(coverage.data(), kW, kH);
    std::vector<uint8_t> out(kTx * kTx, 0xEE);
    r->SweepPass(out.data(), 0, 40);
    r->Begin();
    r->SweepVertex(8, 24);
    r->SweepVertex(88, 24);
    r->End();
    r->SweepPass(nullptr, 0, 0);
    const int tx = kTx / 2;
    EXPECT_EQ(out[2 * kTx + tx], 10);  // above the contour
    for (int ty = 7; ty <= 14; ++ty) EXPECT_LT(out[ty * kTx + tx], out[(ty - 1) * kTx + tx]) << ty;
    EXPECT_EQ(out[20 * kTx + tx], 10);  // below the swept end (24 + 40 = 64)
}

}  // namespace
