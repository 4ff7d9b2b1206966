// Tests of overlapping-character compositing: the tie rules on a single
// pixel, and random overlaps of 2 to 30 characters against a reference
// written here from the rule, one sample at a time.
#include "paint/overlap_compositor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

#include "compositing_test_support.h"

namespace {

using namespace testing_support;

// Flat colour with a fixed layer value.
class CFixedShade final : public CColorApplicator {
public:
    CFixedShade(uint32_t colour, uint32_t layerValue, bool joins) : layerValue_(layerValue) {
        SetPackedColor(colour);
        joinsNeighbours = joins ? 1 : 0;
    }
    uint32_t LayerValueAt(int32_t, int32_t) override { return layerValue_; }

private:
    uint32_t layerValue_;
};

TEST(OverlapCompositor, TieRules) {
    constexpr uint32_t kColours[3] = {0xFF0000FFu, 0xFF00FF00u, 0xFFFF0000u};
    constexpr uint32_t kUnchanged = 0x00123456u;
    // Character c holds numbers[c] in every sample; slot 3 has a joins flag
    // and a layer value, slot 7 is a plain colour.
    const struct {
        int count;
        uint32_t numbers[3];
        bool joins[3];
        uint32_t layer[3];
        uint32_t expected;
    } cases[] = {
        {2, {3, 7}, {true, true}, {9, 0}, kColours[1]},    // higher number wins
        {2, {3, 3}, {true, false}, {0, 9}, kColours[0]},   // not joined: first
        {2, {3, 3}, {true, true}, {5, 9}, kColours[1]},    // joined: higher value
        {2, {3, 3}, {true, true}, {9, 9}, kColours[0]},    // equal values: first
        {2, {3, 3}, {true, true}, {0, 0}, kColours[0]},    // two, all zero: first
        {3, {3, 3, 0}, {true, true, true}, {0, 0, 7}, kUnchanged},   // three, zero: none
        {3, {3, 3, 0}, {true, true, true}, {0, 4, 7}, kColours[1]},
        {3, {3, 3, 0}, {true, true, false}, {0, 4, 7}, kColours[0]}, // one not joining
        {3, {3, 3, 3}, {true, true, true}, {1, 4, 6}, kColours[2]},
    };
    for (size_t k = 0; k < std::size(cases); ++k) {
        const auto& c = cases[k];
        std::vector<std::unique_ptr<TestCharacter>> chars;
        std::vector<CPainter*> painters;
        std::vector<uint32_t> pixels(9, kUnchanged);
        for (int i = 0; i < c.count; ++i) {
            TestCharacter& ch = *chars.emplace_back(std::make_unique<TestCharacter>(3, 3));
            ch.Fill([&](int32_t, int32_t) { return c.numbers[i]; });
            ch.painter.InstallApplicator(3, new CFixedShade(kColours[i], c.layer[i], c.joins[i]));
            ch.painter.SetColor(7, kColours[i]);
            ch.painter.FillEmptySlotsWithNullColors();
            ch.Bind(pixels.data(), 12, 3, 3, 0.0, 0.0, 0);
            painters.push_back(&ch.painter);
        }
        CompositeRegion(painters.data(), c.count, CompositeRect{0, 0, 3, 3}, 0);
        EXPECT_EQ(pixels[4], c.expected) << "case " << k;
        EXPECT_EQ(pixels[0], kUnchanged) << "case " << k;
    }
}

// Characters stacked over a common area with blobby coverage from a small
// palette (so numbers tie often) and joined slots now and then. Every
// fourth overlap is of characters in one flat style drawn from few colour
// sets, and half are on a plain background, as titles are: remembered
// blends carry over between characters and meet the same target again.
TEST(OverlapCompositor, MatchesPerSampleReference) {
    constexpr int32_t kSize = 40;  // surface width and height
    std::mt19937 rng(777);
    auto range = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int iteration = 0; iteration < 1500; ++iteration) {
        const int32_t mode = range(0, 2);
        const int count = range(0, 1) ? range(2, 4) : range(2, 30);
        const CompositeRect common{range(4, 20), range(4, 20), range(1, 10), range(1, 10)};
        const CompositeRect rect{common.x - range(0, 2), common.y - range(0, 2),
                                 common.width + range(0, 4), common.height + range(0, 4)};
        const uint32_t palette[4] = {0, 1, uint32_t(range(2, 15)), uint32_t(range(2, 15))};
        const bool flat = iteration % 4 == 0;
        uint32_t flatColours[16];
        std::mt19937 styleRng(static_cast<uint32_t>(range(0, 2)));
        for (uint32_t& c : flatColours) c = styleRng();
        bool joinSlot[16] = {};
        for (int i = 1; i < 16; ++i) joinSlot[i] = range(0, 2) == 0;
        std::vector<uint32_t> got(size_t(kSize) * kSize);
        for (uint32_t& p : got) p = rng() % 3 == 0 ? (rng() & 0x00FFFFFFu) : rng();
        if (iteration % 2 == 0) std::fill(got.begin(), got.end(), uint32_t{0x40302010u});
        std::vector<uint32_t> expected = got;
        std::vector<std::unique_ptr<TestCharacter>> chars;
        std::vector<TestCharacter*> listed;
        std::vector<CPainter*> painters;
        for (int c = 0; c < count; ++c) {
            const int32_t w = common.width + 2 + range(0, 6), h = common.height + 2 + range(0, 6);
            TestCharacter& ch = *chars.emplace_back(std::make_unique<TestCharacter>(w, h));
            // Coverage pixel range that keeps `common` in the readable interior.
            const int32_t ox = range(common.x + common.width - w + 1, common.x - 1);
            const int32_t oy = range(common.y + common.height - h + 1, common.y - 1);
            FillBlobs(ch, rng, palette, range(0, 1) ? 0 : 50);
            for (int32_t i = 0; i < 16; ++i) {
                if (flat) {
                    ch.painter.SetColor(i, flatColours[i]);
                    continue;
                }
                const int kind = range(0, 9);  // 0: empty slot
                if (kind == 1) ch.painter.SetColor(i, rng());
                if (kind > 1) {
                    const bool joins = joinSlot[i] && range(0, 15) != 0;
                    ch.painter.InstallApplicator(i, new CPatternShade(rng(), joins));
                }
            }
            const double x = ox + range(0, 3) * 0.25, y = oy + range(0, 3) * 0.3;
            ch.Bind(got.data(), kSize * 4, kSize, kSize, x, y, range(0, 1));
            listed.push_back(&ch);
            painters.push_back(&ch.painter);
        }
        CompositeRegion(painters.data(), count, rect, mode);
        CompositeByDefinition(listed, rect, mode, expected.data(), kSize, kSize, kSize);
        ASSERT_EQ(0, std::memcmp(got.data(), expected.data(), got.size() * 4))
            << "iteration " << iteration << ", " << count << " characters";
    }
}

}  // namespace
