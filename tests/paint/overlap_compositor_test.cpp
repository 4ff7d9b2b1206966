// Tests of overlapping-character compositing: the tie rules on a single
// pixel, and random overlaps of 2 to 30 characters against a reference
// written here from the rule, one sample at a time.
#include "paint/overlap_compositor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <sstream>

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
        const char* name;
        int count;
        uint32_t numbers[3];
        bool joins[3];
        uint32_t layer[3];
        uint32_t expected;
    } cases[] = {
        {"higher number wins", 2, {3, 7}, {true, true}, {9, 0}, kColours[1]},
        {"equal, not joined: first", 2, {3, 3}, {true, false}, {0, 9}, kColours[0]},
        {"joined: higher layer value", 2, {3, 3}, {true, true}, {5, 9}, kColours[1]},
        {"joined, equal values: first", 2, {3, 3}, {true, true}, {9, 9}, kColours[0]},
        {"two, joined, all zero: first", 2, {3, 3}, {true, true}, {0, 0}, kColours[0]},
        {"three, joined, all zero: none", 3, {3, 3, 0}, {true, true, true}, {0, 0, 7}, kUnchanged},
        {"three, joined: layer value", 3, {3, 3, 0}, {true, true, true}, {0, 4, 7}, kColours[1]},
        {"three, one not joining", 3, {3, 3, 0}, {true, true, false}, {0, 4, 7}, kColours[0]},
        {"three, all tied", 3, {3, 3, 3}, {true, true, true}, {1, 4, 6}, kColours[2]},
    };
    for (const auto& c : cases) {
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
        EXPECT_EQ(pixels[4], c.expected) << c.name << std::hex << " got 0x" << pixels[4];
        EXPECT_EQ(pixels[0], kUnchanged) << c.name;
    }
}

// ---- random overlaps against a per-sample reference ------------------------

struct Scene {
    std::vector<std::unique_ptr<TestCharacter>> chars;
    CompositeRect rect;
    int32_t mode = 0;
    int32_t clipW = 40, clipH = 40;
    std::string description;
};

// Owner of one sample: the highest number; ties go to the first listed, or
// on a joined slot to the highest layer value (first on equal values), none
// when no value exceeds 0 unless exactly two are listed.
int SampleOwner(const Scene& scene, const std::vector<uint32_t>& v, uint32_t best,
                const bool joined[16], const std::vector<int32_t>& xs,
                const std::vector<int32_t>& ys) {
    std::vector<size_t> tied;
    for (size_t c = 0; c < v.size(); ++c) {
        if (v[c] == best) tied.push_back(c);
    }
    if (tied.size() == 1 || !joined[best]) return int(tied[0]);
    auto value = [&](size_t c) {
        return scene.chars[c]->painter.GetSlot(int32_t(best))->LayerValueAt(xs[c], ys[c]);
    };
    int owner = scene.chars.size() == 2 ? int(tied[0]) : -1;
    uint32_t top = owner >= 0 ? value(tied[0]) : 0;
    for (size_t c : tied) {
        if (value(c) > top) top = value(c), owner = int(c);
    }
    return owner;
}

void ReferenceComposite(const Scene& scene, uint32_t* pixels) {
    const size_t n = std::min<size_t>(scene.chars.size(), 24);
    static CNullColor emptySlot;
    auto slot = [&](size_t c, uint32_t i) -> CColorApplicator* {
        CColorApplicator* a = scene.chars[c]->painter.GetSlot(int32_t(i));
        return a ? a : &emptySlot;
    };
    bool joined[16] = {};
    for (uint32_t i = 1; i < 16; ++i) {
        joined[i] = true;
        for (size_t c = 0; c < n; ++c) {
            const CColorApplicator* a = scene.chars[c]->painter.GetSlot(int32_t(i));
            joined[i] = joined[i] && a && a->joinsNeighbours;
        }
    }
    for (int32_t ty = std::max(scene.rect.y, 0);
         ty < std::min(scene.rect.y + scene.rect.height, scene.clipH); ++ty) {
        for (int32_t tx = std::max(scene.rect.x, 0);
             tx < std::min(scene.rect.x + scene.rect.width, scene.clipW); ++tx) {
            std::vector<int32_t> xs(n), ys(n);
            bool inside = true;
            for (size_t c = 0; c < n; ++c) {
                const TestCharacter& ch = *scene.chars[c];
                xs[c] = tx - int32_t(std::floor(ch.painter.positionX));
                ys[c] = ty - int32_t(std::floor(ch.painter.positionY));
                inside = inside && xs[c] >= 1 && ys[c] >= 1 && xs[c] <= ch.width - 2 &&
                         ys[c] <= ch.height - 2;
            }
            if (!inside) continue;
            std::vector<std::array<int32_t, 16>> counts(n, std::array<int32_t, 16>{});
            Sums sums;
            for (const auto& [dx, dy] : FootprintOffsets()) {
                std::vector<uint32_t> v(n);
                for (size_t c = 0; c < n; ++c)
                    v[c] = scene.chars[c]->Sample(4 * xs[c] + dx, 4 * ys[c] + dy);
                const uint32_t best = *std::max_element(v.begin(), v.end());
                const int owner = SampleOwner(scene, v, best, joined, xs, ys);
                if (owner < 0) continue;
                ++counts[size_t(owner)][best];
                sums.p += best >= 2 ? 1 : 0;
            }
            if (sums.p == 0) continue;
            for (uint32_t i = 2; i < 16; ++i) {
                for (size_t c = 0; c < n; ++c) {
                    if (counts[c][i] != 0) sums.Add(counts[c][i], slot(c, i), xs[c], ys[c]);
                }
            }
            uint32_t& target = pixels[size_t(ty) * size_t(scene.clipW) + size_t(tx)];
            target = BlendByDefinition(target, sums, scene.mode);
        }
    }
}

// Characters stacked over a common area with blobby coverage from a small
// palette (so numbers tie often) and joined slots now and then.
Scene MakeScene(std::mt19937& rng, int iteration) {
    auto range = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    Scene scene;
    scene.mode = range(0, 2);
    const int count = range(0, 1) ? range(2, 4) : range(2, 30);  // few: more uniform pixels
    const CompositeRect common{range(4, 20), range(4, 20), range(1, 10), range(1, 10)};
    scene.rect = {common.x - range(0, 2), common.y - range(0, 2), common.width + range(0, 4),
                  common.height + range(0, 4)};
    const uint32_t palette[4] = {0, 1, uint32_t(range(2, 15)), uint32_t(range(2, 15))};
    bool joinSlot[16] = {};
    for (int i = 1; i < 16; ++i) joinSlot[i] = range(0, 2) == 0;
    std::ostringstream d;
    d << "iteration " << iteration << ": " << count << " characters, mode " << scene.mode
      << ", rect (" << scene.rect.x << "," << scene.rect.y << "," << scene.rect.width << ","
      << scene.rect.height << ")";
    for (int c = 0; c < count; ++c) {
        const int32_t w = common.width + 2 + range(0, 6), h = common.height + 2 + range(0, 6);
        TestCharacter& ch = *scene.chars.emplace_back(std::make_unique<TestCharacter>(w, h));
        // Coverage pixel range that keeps `common` in the readable interior.
        const int32_t ox = range(common.x + common.width - w + 1, common.x - 1);
        const int32_t oy = range(common.y + common.height - h + 1, common.y - 1);
        FillBlobs(ch, rng, palette, range(0, 1) ? 0 : 50);
        for (int32_t i = 0; i < 16; ++i) {
            const int kind = range(0, 9);  // 0: empty slot
            if (kind == 1) ch.painter.SetColor(i, rng());
            if (kind > 1) {
                const bool joins = joinSlot[i] && range(0, 15) != 0;
                ch.painter.InstallApplicator(i, new CPatternShade(rng(), joins));
            }
        }
        const double x = ox + range(0, 3) * 0.25, y = oy + range(0, 3) * 0.3;
        ch.Bind(nullptr, scene.clipW * 4, scene.clipW, scene.clipH, x, y, range(0, 1));
        d << "; " << w << "x" << h << " at (" << x << "," << y << ")";
    }
    scene.description = d.str();
    return scene;
}

TEST(OverlapCompositor, MatchesPerSampleReference) {
    std::mt19937 rng(777);
    for (int iteration = 0; iteration < 1500; ++iteration) {
        Scene scene = MakeScene(rng, iteration);
        std::vector<uint32_t> initial(size_t(scene.clipW) * scene.clipH);
        for (uint32_t& p : initial) p = rng() % 3 == 0 ? (rng() & 0x00FFFFFFu) : rng();
        std::vector<uint32_t> got = initial, expected = initial;
        std::vector<CPainter*> painters;
        for (auto& ch : scene.chars) {
            ch->painter.targetPixels = got.data();
            painters.push_back(&ch->painter);
        }
        CompositeRegion(painters.data(), int32_t(painters.size()), scene.rect, scene.mode);
        ReferenceComposite(scene, expected.data());
        ASSERT_EQ(0, std::memcmp(got.data(), expected.data(), got.size() * 4)) << scene.description;
    }
}

}  // namespace
