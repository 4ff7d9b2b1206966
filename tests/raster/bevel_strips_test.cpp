// Strip vertices of the band passes as the bevel painter drives them: light
// intensities, near and far tests, the depth ramp of a square contour.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "raster_test_util.h"

namespace {

constexpr double kLightDeg = 30.0;
constexpr double kTurn = 6.2831852;  // the turn constant of the light angle
const double kLight = kLightDeg / 360.0 * kTurn;

// The intensity formula, written from its definition.
int ExpectedIntensity(double theta) {
    double phi = theta - kLight;
    while (phi < 0) phi += kTurn;
    while (phi > kTurn) phi -= kTurn;
    return static_cast<int>((std::sin(phi) + 1) * 125 + 1);
}

// A 96 x 96 map and its 24 x 24 output, one pass begun.
struct Pass {
    static constexpr int kTiles = 24;
    explicit Pass(bool shaded, double lightDeg = kLightDeg) {
        if (shaded) {
            EXPECT_EQ(r->ShadedBandPass(out.data(), 20.0, lightDeg, 0), 0u);
        } else {
            EXPECT_EQ(r->DepthBandPass(out.data(), 16.0, 0), 0u);
        }
    }
    void Resolve(bool shaded) {  // through the duplicate slots
        EXPECT_EQ(shaded ? r->ShadedBandPass2(nullptr, 0, 0, 0) : r->DepthBandPass2(nullptr, 0, 0), 0u);
    }
    uint8_t Light(int tx, int ty) const { return out[2 * (ty * kTiles + tx)]; }
    uint8_t Depth(int tx, int ty) const { return out[ty * kTiles + tx]; }
    trtest::GuardedMap map{96, 96};
    trtest::RasterizerPtr r = trtest::ScreenSpaceRasterizer(map.Words(), 96, 96);
    std::vector<uint8_t> out = std::vector<uint8_t>(2 * kTiles * kTiles, 0xEE);
};

// A horizontal strip leaving at theta: every pixel it reaches carries its
// intensity. Light angles outside [0, 360] wrap by whole turns.
TEST(BevelStrips, IntensityIsExtremeAtLightAnglePlusMinusQuarterTurn) {
    const struct {
        double theta, lightDeg;
        int want;
    } cases[] = {{kLight + M_PI / 2, kLightDeg, 251},
                 {kLight - M_PI / 2, kLightDeg + 720, 1},
                 {kLight, kLightDeg - 360, 126}};
    for (const auto& c : cases) {
        ASSERT_EQ(ExpectedIntensity(c.theta), c.want);
        Pass p(true, c.lightDeg);
        p.r->Begin();
        p.r->BevelStartFar(16, 48, c.theta);
        p.r->BevelVertexFar(80, 48, c.theta);
        p.Resolve(true);
        int lit = 0;
        for (int ty = 1; ty < Pass::kTiles - 1; ++ty)
            for (int tx = 1; tx < Pass::kTiles - 1; ++tx) {
                if (p.out[2 * (ty * Pass::kTiles + tx) + 1] == 10) continue;  // no sample
                ++lit;
                ASSERT_EQ(p.Light(tx, ty), c.want) << c.theta << " at " << tx << ", " << ty;
            }
        EXPECT_GT(lit, 20);
    }
}

// A marked square [16, 80]^2 with inward near strips of depth 16: along
// the middle row depth rises from the left edge (pixel 4) to the marked
// value at pixel 8, stays, and falls towards the right edge. Marked by
// indexed triangles, by a BandVertex quad, or not at all: then the near
// strips write nothing (far strips write anywhere, see above).
TEST(BevelStrips, SquareContourDepthFallsOffTowardsTheEdge) {
    const double pts[4][2] = {{16, 16}, {80, 16}, {80, 80}, {16, 80}};
    const double inward[4] = {M_PI / 2, M_PI, 3 * M_PI / 2, 0};  // y down
    const uint32_t idx[6] = {0, 1, 2, 0, 2, 3};
    std::vector<uint8_t> results[2];
    for (int variant = 0; variant < 3; ++variant) {
        Pass p(false);
        if (variant == 0) {
            p.r->VertexPointer(2, 0, 16, pts);
            p.r->DrawIndexedToBand(6, idx);
        } else if (variant == 1) {
            p.r->Begin();
            for (int k : {0, 3, 1, 2}) p.r->BandVertex(pts[k][0], pts[k][1]);  // strip order
        }
        for (int e = 0; e < 4; ++e) {
            p.r->Begin();
            p.r->DepthVertex(pts[e][0], pts[e][1], inward[e]);
            p.r->DepthVertex(pts[(e + 1) % 4][0], pts[(e + 1) % 4][1], inward[e]);
        }
        p.Resolve(false);
        if (variant == 2) {
            for (int ty = 1; ty < Pass::kTiles - 1; ++ty)
                for (int tx = 1; tx < Pass::kTiles - 1; ++tx) ASSERT_EQ(p.Depth(tx, ty), 10);
            break;
        }
        results[variant] = p.out;
        const int mid = 12;
        EXPECT_EQ(p.Depth(2, mid), 10);
        EXPECT_LT(p.Depth(4, mid), 64770 >> 10);  // near the contour's end of the ramp
        for (int tx = 5; tx <= 7; ++tx) EXPECT_GT(p.Depth(tx, mid), p.Depth(tx - 1, mid)) << tx;
        for (int tx = 9; tx <= 14; ++tx) EXPECT_EQ(p.Depth(tx, mid), 64770 >> 8) << tx;
        for (int tx = 16; tx <= 19; ++tx) EXPECT_LT(p.Depth(tx + 1, mid), p.Depth(tx, mid)) << tx;
    }
    EXPECT_EQ(results[0], results[1]);
}

// BevelVertexAt shades its quad flat with the intensity before it (t2's,
// after a quad blended from t1 to t2); without "At" it blends back to t1.
TEST(BevelStrips, VertexAtShadesFlatWithPreviousIntensity) {
    const double t1 = kLight + M_PI / 2, t2 = kLight + M_PI / 6;  // 251 and 188
    for (const bool at : {true, false}) {
        Pass p(true);
        p.r->Begin();
        p.r->BevelStartFar(8, 40, t1);
        p.r->BevelVertexFar(40, 40, t2);
        at ? p.r->BevelVertexAtFar(72, 40, t1, 20.0) : p.r->BevelVertexFar(72, 40, t1);
        p.Resolve(true);
        for (int tx = 13; tx <= 15 && at; ++tx) EXPECT_EQ(p.Light(tx, 12), ExpectedIntensity(t2)) << tx;
        EXPECT_EQ(p.Light(15, 12) > ExpectedIntensity(t2), !at);
        EXPECT_LT(p.Light(15, 12), ExpectedIntensity(t1));
    }
}

}  // namespace
