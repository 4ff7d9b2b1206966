// Band planning and the 56-sample resolve.
#include "raster/depth_bands.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

struct Band {
    int32_t first, end;
    bool operator==(const Band&) const = default;
};

std::vector<Band> AllBands(int32_t w, int32_t h, std::vector<uint32_t>* returned = nullptr) {
    tr::BandPlan p = tr::PlanBands(w, h);
    std::vector<Band> bands;
    for (int32_t i = 0, planned = p.left; i < planned; ++i) {
        bands.push_back({p.first, p.end});
        const uint32_t left = tr::AdvanceBand(p);
        if (returned) returned->push_back(left);
    }
    return bands;
}

// 400 x 400 is one band; 4000 x 4000 needs 3 * 4000^2 bytes > 2 x 20 MiB,
// so three bands overlapping by two tile rows. 1165088 x 12 plans three
// bands of one row (R + 1 < 3), 2^20 x 20 four whose first would end at
// row 2: both fall back to one band. Advancing past the last band stays at 0.
TEST(BandPlan, WorkedExamples) {
    std::vector<uint32_t> left;
    EXPECT_EQ(AllBands(400, 400), (std::vector<Band>{{0, 100}}));
    EXPECT_EQ(AllBands(4000, 4000, &left), (std::vector<Band>{{0, 334}, {332, 667}, {665, 1000}}));
    EXPECT_EQ(left, (std::vector<uint32_t>{2, 1, 0}));
    EXPECT_EQ(AllBands(1165088, 12), (std::vector<Band>{{0, 3}}));
    EXPECT_EQ(AllBands(1 << 20, 20), (std::vector<Band>{{0, 5}}));
    tr::BandPlan p = tr::PlanBands(400, 400);
    EXPECT_EQ(tr::AdvanceBand(p), 0u);
    EXPECT_EQ(tr::AdvanceBand(p), 0u);
}

// The footprint: rows relative to the tile's top-left sub-sample and the
// columns each takes.
bool InFootprint(int dx, int dy) {
    switch (dy) {
    case -2: case -1: return dx >= -4 && dx <= -1;
    case 0: case 3: return dx >= -2 && dx <= 5;
    case 1: case 2: return dx >= -4 && dx <= 7;
    case 4: case 5: return dx >= 0 && dx <= 3;
    default: return false;
    }
}

// Random buffers with zeros (no sample) and 0xFFFF (the mark depth except
// in the sweep), averaged here sample by sample; the band's first and last
// tile rows and the outer columns are left alone.
TEST(BandResolve, AveragesOverNonZeroSamplesOfTheFootprint) {
    constexpr int32_t kW = 48, kTiles = kW / 4, kFirst = 5, kEnd = 14, kRows = (kEnd - kFirst) * 4;
    std::mt19937 rng(9);
    for (int n = 0; n < 50; ++n) {
        std::vector<uint16_t> depth(kW * kRows);
        std::vector<uint8_t> light(kW * kRows);
        for (size_t i = 0; i < depth.size(); ++i) {
            const uint32_t pick = rng() % 8;
            depth[i] = pick == 0 ? 0 : pick == 1 ? 0xFFFF : static_cast<uint16_t>(rng());
            light[i] = rng() % 3 == 0 ? 0 : static_cast<uint8_t>(rng());
        }
        std::vector<uint8_t> outDepth(kTiles * kEnd, 0xEE), outSweep(kTiles * kEnd, 0xEE),
            outShaded(2 * kTiles * kEnd, 0xEE);
        tr::ResolveDepthBand(depth.data(), kW, kFirst, kEnd, true, outDepth.data());
        tr::ResolveDepthBand(depth.data(), kW, kFirst, kEnd, false, outSweep.data());
        tr::ResolveShadedBand(depth.data(), light.data(), kW, kFirst, kEnd, outShaded.data());
        for (int32_t ty = 0; ty < kEnd; ++ty)
            for (int32_t tx = 0; tx < kTiles; ++tx) {
                const size_t o = ty * kTiles + tx;
                if (ty < kFirst + 1 || ty > kEnd - 2 || tx == 0 || tx == kTiles - 1) {
                    ASSERT_TRUE(outDepth[o] == 0xEE && outSweep[o] == 0xEE && outShaded[2 * o] == 0xEE);
                    continue;
                }
                uint64_t n0 = 0, sumSub = 0, sumRaw = 0, nLit = 0, lit = 0, litDepth = 0;
                for (int dy = -2; dy <= 5; ++dy)
                    for (int dx = -4; dx <= 7; ++dx) {
                        if (!InFootprint(dx, dy)) continue;
                        const size_t at = (4 * (ty - kFirst) + dy) * kW + 4 * tx + dx;
                        const uint64_t raw = depth[at], sub = raw == 0xFFFF ? 64770 : raw;
                        n0 += raw != 0;
                        sumSub += sub;
                        sumRaw += raw;
                        if (light[at] != 0) ++nLit, lit += light[at], litDepth += sub;
                    }
                ASSERT_TRUE(outDepth[o] == (n0 ? (sumSub / n0) >> 8 : 10u) &&
                            outSweep[o] == (n0 ? (sumRaw / n0) >> 8 : 10u) &&
                            outShaded[2 * o] == (nLit ? lit / nLit : 128u) &&
                            outShaded[2 * o + 1] == (nLit ? (litDepth / nLit) >> 8 : 10u))
                    << tx << ", " << ty;
            }
    }
}

}  // namespace
