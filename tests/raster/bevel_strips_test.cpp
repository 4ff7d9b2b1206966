// Strip vertices of the band passes as the bevel painter drives them:
// light intensities, near and far depth tests, and the depth ramp a square
// contour produces.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::ScreenSpaceRasterizer;

constexpr double kLightDeg = 30.0;
constexpr double kTurn = 6.2831852;  // the turn constant of the light angle

// The intensity formula, written from its definition.
int ExpectedIntensity(double theta, double lightRad) {
    double phi = theta - lightRad;
    while (phi < 0) phi += kTurn;
    while (phi > kTurn) phi -= kTurn;
    return static_cast<int>((std::sin(phi) + 1) * 125 + 1);
}

struct Pass {
    static constexpr int32_t kW = 96, kH = 96, kTiles = kW / 4;
    GuardedMap map{kW, kH};
    trtest::RasterizerPtr r = ScreenSpaceRasterizer(map.Words(), kW, kH);
    std::vector<uint8_t> out = std::vector<uint8_t>(2 * kTiles * kTiles, 0xEE);
    uint8_t Light(int tx, int ty) const { return out[2 * (ty * kTiles + tx)]; }
    uint8_t ShadedDepth(int tx, int ty) const { return out[2 * (ty * kTiles + tx) + 1]; }
    uint8_t Depth(int tx, int ty) const { return out[ty * kTiles + tx]; }
};

// A horizontal contour stroked with strips leaving at theta: every pixel
// the strip reaches carries the strip's intensity.
TEST(BevelStrips, IntensityIsExtremeAtLightAnglePlusMinusQuarterTurn) {
    const double light = kLightDeg / 360.0 * kTurn;
    struct Case {
        double theta;
        int want;
    } cases[] = {{light + M_PI / 2, 251}, {light - M_PI / 2, 1}, {light, 126}};
    for (const Case& c : cases) {
        ASSERT_EQ(ExpectedIntensity(c.theta, light), c.want);
        Pass p;
        ASSERT_EQ(p.r->ShadedBandPass(p.out.data(), 20.0, kLightDeg, 0), 0u);
        p.r->Begin();
        p.r->BevelStartFar(16, 48, c.theta);
        p.r->BevelVertexFar(80, 48, c.theta);
        p.r->End();
        EXPECT_EQ(p.r->ShadedBandPass(nullptr, 0, 0, 0), 0u);
        int lit = 0;
        for (int ty = 1; ty < Pass::kTiles - 1; ++ty) {
            for (int tx = 1; tx < Pass::kTiles - 1; ++tx) {
                if (p.Light(tx, ty) == 128 && p.ShadedDepth(tx, ty) == 10) continue;  // no sample
                ++lit;
                ASSERT_EQ(p.Light(tx, ty), c.want) << "theta " << c.theta << " pixel " << tx << ", " << ty;
            }
        }
        EXPECT_GT(lit, 20);
    }
}

// Light angles outside [0, 360] wrap to the same light.
TEST(BevelStrips, LightAngleWrapsByWholeTurns) {
    std::vector<uint8_t> results[3];
    const double angles[3] = {kLightDeg, kLightDeg + 720.0, kLightDeg - 360.0};
    for (int i = 0; i < 3; ++i) {
        Pass p;
        p.r->ShadedBandPass(p.out.data(), 20.0, angles[i], 0);
        p.r->Begin();
        p.r->BevelStartFar(16, 48, 2.0);
        p.r->BevelVertexFar(48, 40, 2.5);
        p.r->BevelVertexFar(80, 48, 3.0);
        p.r->ShadedBandPass(nullptr, 0, 0, 0);
        results[i] = p.out;
    }
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(results[0], results[2]);
}

TEST(BevelStrips, NearStripsNeedMarkedSamplesFarStripsDoNot) {
    for (const bool far : {false, true}) {
        Pass p;
        p.r->DepthBandPass(p.out.data(), 16.0, 0);
        p.r->Begin();
        if (far) {
            p.r->DepthVertexFar(16, 48, M_PI / 2);
            p.r->DepthVertexFar(80, 48, M_PI / 2);
        } else {
            p.r->DepthVertex(16, 48, M_PI / 2);
            p.r->DepthVertex(80, 48, M_PI / 2);
        }
        p.r->DepthBandPass(nullptr, 0, 0);
        int written = 0;
        for (int ty = 1; ty < Pass::kTiles - 1; ++ty)
            for (int tx = 1; tx < Pass::kTiles - 1; ++tx) written += p.Depth(tx, ty) != 10;
        if (far) {
            EXPECT_GT(written, 40);
        } else {
            EXPECT_EQ(written, 0);
        }
    }
}

// A marked square [16, 80]^2 with near strips of depth 24 along its edges,
// leaving inward: depth rises with the distance from the nearest edge and
// reaches the marked value in the middle; outside stays empty.
TEST(BevelStrips, SquareContourDepthFallsOffTowardsTheEdge) {
    Pass p;
    p.r->DepthBandPass(p.out.data(), 24.0, 0);
    const double pts[4][2] = {{16, 16}, {80, 16}, {80, 80}, {16, 80}};
    const uint32_t idx[6] = {0, 1, 2, 0, 2, 3};
    p.r->VertexPointer(2, 0, 16, pts);
    p.r->DrawIndexedToBand(6, idx);
    // Inward directions of the edges (y down): down, left, up, right.
    const double inward[4] = {M_PI / 2, M_PI, 3 * M_PI / 2, 0};
    for (int e = 0; e < 4; ++e) {
        const double* a = pts[e];
        const double* b = pts[(e + 1) % 4];
        p.r->Begin();
        p.r->DepthVertex(a[0], a[1], inward[e]);
        p.r->DepthVertex(b[0], b[1], inward[e]);
        p.r->End();
    }
    p.r->DepthBandPass(nullptr, 0, 0);
    const int mid = Pass::kTiles / 2;  // pixel row 12: sub-samples 48..51
    // Along the middle row: empty outside, rising from the left edge
    // (pixel 4 = sub-samples 16..19) to the marked value at 16 + 24 = 40.
    EXPECT_EQ(p.Depth(2, mid), 10);
    for (int tx = 5; tx <= 10; ++tx) {
        EXPECT_GT(p.Depth(tx, mid), p.Depth(tx - 1, mid)) << tx;
    }
    EXPECT_EQ(p.Depth(mid, mid), 64770 >> 8);
    // Symmetric on the right: falling towards the right edge.
    for (int tx = 14; tx <= 19; ++tx) {
        EXPECT_LT(p.Depth(tx + 1, mid), p.Depth(tx, mid)) << tx;
    }
    // Near the edge the depth is the contour's end of the ramp.
    EXPECT_LT(p.Depth(4, mid), 64770 >> 10);
}

// BevelVertexAt shades its quad flat with the intensity in effect before it;
// the next BevelVertex blends from the At vertex's intensity.
TEST(BevelStrips, VertexAtShadesFlatWithPreviousIntensity) {
    const double light = kLightDeg / 360.0 * kTurn;
    const double t1 = light + M_PI / 2;  // 120 degrees: down-left, intensity 251
    const double t2 = light + M_PI / 6;  // 60 degrees: down-right, intensity 188
    ASSERT_NE(ExpectedIntensity(t1, light), ExpectedIntensity(t2, light));
    Pass p;
    p.r->ShadedBandPass(p.out.data(), 20.0, kLightDeg, 0);
    p.r->Begin();
    p.r->BevelStartFar(8, 40, t1);
    p.r->BevelVertexAtFar(40, 40, t1, 20.0);  // flat with t1's intensity
    p.r->BevelVertexAtFar(72, 40, t2, 20.0);  // still flat with t1's
    p.r->ShadedBandPass(nullptr, 0, 0, 0);
    const int ty = 48 / 4;
    for (int tx = 4; tx <= 17; ++tx) {
        ASSERT_EQ(p.Light(tx, ty), ExpectedIntensity(t1, light)) << tx;
    }
    // Without "At" the last quad blends towards t2's intensity.
    Pass q;
    q.r->ShadedBandPass(q.out.data(), 20.0, kLightDeg, 0);
    q.r->Begin();
    q.r->BevelStartFar(8, 40, t1);
    q.r->BevelVertexFar(40, 40, t1);
    q.r->BevelVertexFar(72, 40, t2);
    q.r->ShadedBandPass(nullptr, 0, 0, 0);
    EXPECT_EQ(q.Light(5, ty), ExpectedIntensity(t1, light));
    EXPECT_LT(q.Light(16, ty), 240);
    EXPECT_GT(q.Light(16, ty), ExpectedIntensity(t2, light) - 1);
}

// Marking with an immediate quad of BandVertex calls equals marking the
// same two triangles through DrawIndexedToBand.
TEST(BevelStrips, BandVertexQuadMarksLikeIndexedTriangles) {
    const double pts[4][2] = {{20, 20}, {20, 76}, {76, 20}, {76, 76}};  // strip order
    const uint32_t idx[6] = {0, 1, 2, 3, 1, 2};                         // (a, b, c), (d, b, c)
    std::vector<uint8_t> results[2];
    for (int variant = 0; variant < 2; ++variant) {
        Pass p;
        p.r->DepthBandPass(p.out.data(), 16.0, 0);
        if (variant == 0) {
            p.r->Begin();
            for (const auto& v : pts) p.r->BandVertex(v[0], v[1]);
        } else {
            p.r->VertexPointer(2, 0, 16, pts);
            p.r->DrawIndexedToBand(6, idx);
        }
        p.r->Begin();  // a near strip along the top edge, inward
        p.r->DepthVertex(20, 20, M_PI / 2);
        p.r->DepthVertex(76, 20, M_PI / 2);
        p.r->DepthBandPass(nullptr, 0, 0);
        results[variant] = p.out;
    }
    EXPECT_EQ(results[0], results[1]);
    int ramp = 0;  // pixels between the strip's two ends
    for (uint8_t v : results[0]) ramp += v > 10 && v < (64770 >> 8) && v != 0xEE;
    EXPECT_GT(ramp, 10);
}

}  // namespace
