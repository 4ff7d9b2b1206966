// Tests of one-character compositing: the blend arithmetic on worked
// examples, and the fast path against the plain per-sample twin and a
// per-pixel evaluation written here.
#include "paint/compositor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>

#include "compositing_test_support.h"

namespace {

using namespace testing_support;

using CompositeFunction = void (*)(CPainter&, const CompositeRect&);

// Pixel (1, 1) of a 3 × 3-pixel character at (0, 0), the only one it can
// composite, with slot 2 painted in `colour` (0: left to a null colour).
TEST(Compositor, BlendArithmetic) {
    using Samples = std::function<uint32_t(int32_t sx, int32_t sy)>;
    const Samples all0 = [](int32_t, int32_t) { return 0u; };
    const Samples all1 = [](int32_t, int32_t) { return 1u; };
    const Samples all2 = [](int32_t, int32_t) { return 2u; };
    // 24 footprint samples above sub-row 6: 16 of the own column, 4 each of
    // the left and right pixels.
    const Samples upperHalf = [](int32_t, int32_t sy) { return sy < 6 ? 2u : 0u; };
    // 20 of them without the left pixel's; the rest never painted.
    const Samples twenty = [](int32_t sx, int32_t sy) { return sy < 6 && sx >= 4 ? 2u : 1u; };
    // Every footprint sample is 2, but the words are not uniform.
    const Samples strayHalf = [](int32_t sx, int32_t sy) { return sx < 4 && sy == 4 ? 3u : 2u; };
    const struct {
        const char* name;
        Samples sample;
        uint32_t colour;
        int32_t mode;
        uint32_t target, expected;
    } cases[] = {
        {"uncovered, over", all0, 0xFFFFFFFFu, 0, 0x80402010u, 0x80402010u},
        {"never painted, over", all1, 0xFFFFFFFFu, 0, 0x80402010u, 0x80402010u},
        {"never painted, replace", all1, 0xFFFFFFFFu, 3, 0x00402010u, 0x00402010u},
        {"half covered, transparent target", upperHalf, 0xFF3366CCu, 0, 0u, 0x803366CCu},
        {"opaque over transparent", all2, 0xFF102030u, 0, 0x00FFFFFFu, 0xFF102030u},
        {"replace, uniform", all2, 0x7F102030u, 1, 0xFFFFFFFFu, 0x7F102030u},
        {"null colour over alpha 0", all2, 0, 0, 0x00112233u, 0u},
        {"null colour over alpha 128", all2, 0, 0, 0x80112233u, 0x80112233u},
        {"null colour, replace, full", all2, 0, 1, 0x90112233u, 0u},
        // Channels kept, alpha 144 × 28 ÷ 48 = 84.
        {"null colour, replace, 20 of 48", twenty, 0, 1, 0x90112233u, 0x54112233u},
        // Counted: S = 0, the pixel stays.
        {"uniform samples, stray half word", strayHalf, 0, 0, 0x00AABBCCu, 0x00AABBCCu},
    };
    for (const auto& c : cases) {
        for (CompositeFunction composite : {CompositeCharacter, CompositeCharacterReference}) {
            TestCharacter ch(3, 3);
            ch.Fill(c.sample);
            std::vector<uint32_t> pixels(9, c.target);
            ch.Bind(pixels.data(), 3 * 4, 3, 3, 0.0, 0.0, c.mode);
            if (c.colour != 0) ch.painter.SetColor(2, c.colour);
            ch.painter.FillEmptySlotsWithNullColors();
            composite(ch.painter, CompositeRect{0, 0, 3, 3});
            EXPECT_EQ(pixels[4], c.expected)
                << c.name << (composite == CompositeCharacter ? "" : " (plain)");
        }
    }
}

// Records the slot and painter pixel of every ShadeAt call.
class CRecordingShade final : public CColorApplicator {
public:
    using Log = std::vector<std::array<int32_t, 3>>;
    CRecordingShade(Log* log, int32_t slot) : log_(log), slot_(slot) {}
    float ShadeAt(int32_t x, int32_t y) override {
        log_->push_back({slot_, x, y});
        return 255.0f;
    }

private:
    Log* log_;
    int32_t slot_;
};

// Sums of three or more shades depend on their order only in rare roundings.
TEST(Compositor, ShadesEachPresentNumberOnceInIncreasingOrder) {
    for (CompositeFunction composite : {CompositeCharacter, CompositeCharacterReference}) {
        CRecordingShade::Log log;
        TestCharacter ch(4, 4);
        ch.Fill([](int32_t sx, int32_t sy) { return sx < 6 ? 9u : (sy < 7 ? 3u : 5u); });
        for (int32_t slot : {3, 5, 9})
            ch.painter.InstallApplicator(slot, new CRecordingShade(&log, slot));
        std::vector<uint32_t> pixels(20 * 20, 0u);
        ch.Bind(pixels.data(), 20 * 4, 20, 20, 2.5, 3.2, 0);  // target (4, 5) is (2, 2)
        composite(ch.painter, CompositeRect{4, 5, 1, 1});
        EXPECT_EQ(log, (CRecordingShade::Log{{3, 2, 2}, {5, 2, 2}, {9, 2, 2}}));
    }
}

// Random coverage (large uniform areas, ragged edges and noise), slots,
// positions, clips and rectangles. With `flat`, only flat and null colours
// over a target of few distinct pixels, where the compositor reuses earlier
// blends: a reused blend must equal a fresh one. Rows and pitch padding
// beyond the surface are guard areas.
void CompareWithPlainAndDefinition(uint32_t seed, int iterations, bool flat) {
    std::mt19937 rng(seed);
    auto range = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int iteration = 0; iteration < iterations; ++iteration) {
        const int32_t width = range(1, 24), height = range(1, 24);
        const double x = range(-5, 8) + range(0, 3) * 0.25;
        const double y = range(-5, 8) - range(0, 3) * 0.25;
        const int32_t clipW = range(1, 28), clipH = range(1, 28), stride = clipW + range(0, 3);
        const int32_t mode = range(0, 2);
        const CompositeRect rect =
            range(0, 3) ? CompositeRect{range(-2, 1), range(-2, 1), range(20, 30), range(20, 30)}
                        : CompositeRect{range(-4, 20), range(-4, 20), range(-2, 24), range(-2, 24)};
        TestCharacter ch(width, height);
        const uint32_t palette[4] = {0, 1, uint32_t(range(2, 15)), uint32_t(range(2, 15))};
        FillBlobs(ch, rng, palette, std::array{0, 10, 100, 1000}[range(0, 3)]);
        for (int32_t slot = 0; slot < 16; ++slot) {  // kind 2: empty, composited as null
            const uint32_t kind = flat ? (rng() % 4 == 0 ? 1 : 0) : rng() % 5;
            if (kind == 0) ch.painter.SetColor(slot, rng());
            if (kind == 1) ch.painter.SetNullColor(slot);
            if (kind > 2) ch.painter.InstallApplicator(slot, new CPatternShade(rng()));
        }
        std::vector<uint32_t> initial(size_t(stride) * (clipH + 2));
        const uint32_t backgrounds[3] = {0, uint32_t(rng()) | 0xFF000000u, uint32_t(rng())};
        for (uint32_t& p : initial) {
            if (flat) p = backgrounds[rng() % 8 == 0 ? rng() % 3 : 0];
            if (!flat) p = (rng() % 4 == 0) ? (rng() & 0x00FFFFFFu) : rng();
        }
        std::vector<uint32_t> fast = initial, plain = initial, defined = initial;
        ch.Bind(fast.data(), stride * 4, clipW, clipH, x, y, mode);
        CompositeCharacter(ch.painter, rect);
        ch.Bind(plain.data(), stride * 4, clipW, clipH, x, y, mode);
        CompositeCharacterReference(ch.painter, rect);
        CompositeByDefinition({&ch}, rect, mode, defined.data(), stride, clipW, clipH);
        ASSERT_EQ(0, std::memcmp(fast.data(), plain.data(), fast.size() * 4))
            << "fast vs plain twin, seed " << seed << " iteration " << iteration;
        ASSERT_EQ(0, std::memcmp(fast.data(), defined.data(), fast.size() * 4))
            << "fast vs definition, seed " << seed << " iteration " << iteration;
    }
}

TEST(Compositor, FastPathMatchesPerSampleLoops) {
    CompareWithPlainAndDefinition(4101, 3000, false);
    CompareWithPlainAndDefinition(5202, 3000, true);
}

}  // namespace
