// Remembered blends are kept between compositing calls and shared between
// characters: a memo made for one set of flat colours and blend mode must
// never answer for another.
#include "paint/blend_memo.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "paint/compositor.h"
#include "tests/paint/compositing_test_support.h"

namespace {

using testing_support::TestCharacter;

constexpr int32_t kSide = 24;

// Rings of slots 2 and 3 on a ragged edge, so most pixels are counted ones.
void DrawRings(TestCharacter& ch) {
    for (int32_t sy = 0; sy < 4 * kSide; ++sy) {
        for (int32_t sx = 0; sx < 4 * kSide; ++sx) {
            const int32_t d = (sx - 48) * (sx - 48) + (sy - 45) * (sy - 45);
            ch.SetSample(sx, sy, d < 500 ? 2 : d < 1200 ? 3 : 0);
        }
    }
}

// Composites the whole character in two halves (two calls, as regions do)
// and returns the pixels, or the plain twin's pixels.
std::vector<uint32_t> Composite(TestCharacter& ch, uint32_t background, bool plain,
                                int32_t blendMode = 0) {
    std::vector<uint32_t> pixels(kSide * kSide, background);
    ch.Bind(pixels.data(), kSide * 4, kSide, kSide, 0.0, 0.0, blendMode);
    ch.painter.FillEmptySlotsWithNullColors();
    ch.painter.PrepareApplicators();
    for (const CompositeRect& half : {CompositeRect{0, 0, kSide, kSide / 2},
                                      CompositeRect{0, kSide / 2, kSide, kSide / 2}}) {
        (plain ? CompositeCharacterReference : CompositeCharacter)(ch.painter, half);
    }
    return pixels;
}

TEST(BlendMemo, ReusedOnlyWhileSlotsAndColoursAreTheSame) {
    TestCharacter ch(kSide, kSide);
    DrawRings(ch);
    ch.painter.SetColor(2, 0xFF2040C0u);
    ch.painter.SetColor(3, 0x80FF8000u);
    const uint32_t background = 0x60102030u;
    EXPECT_EQ(Composite(ch, background, false), Composite(ch, background, true));

    // A new colour in a slot, a different kind of applicator in a slot and
    // a new opacity (which rescales the colours at preparation) each need
    // fresh blends.
    ch.painter.SetColor(3, 0xFF00FF00u);
    EXPECT_EQ(Composite(ch, background, false), Composite(ch, background, true)) << "new colour";
    ch.painter.InstallApplicator(2, new testing_support::CPatternShade(7));
    EXPECT_EQ(Composite(ch, background, false), Composite(ch, background, true)) << "new kind";
    ch.painter.SetColor(2, 0xFF2040C0u);
    ch.painter.SetOpacity(0.5);
    EXPECT_EQ(Composite(ch, background, false), Composite(ch, background, true)) << "opacity";
}

// Characters composited one after another with their own painters: the
// same colours share the memo; another blend mode, one colour bit, or a
// null colour whose fields equal a flat colour's each need fresh blends.
TEST(BlendMemo, SharedByCharactersOnlyWithTheSameColoursAndMode) {
    const uint32_t background = 0x60102030u;
    struct Style {
        uint32_t colour2;  // 0: a null colour in slot 2
        uint32_t colour3;
        int32_t blendMode;
        const char* what;
    };
    const Style styles[] = {
        {0xFF2040C0u, 0x80FF8000u, 0, "first character"},
        {0xFF2040C0u, 0x80FF8000u, 0, "same style"},
        {0xFF2040C0u, 0x80FF8000u, 1, "replace mode"},
        {0xFF2040C0u, 0x81FF8000u, 1, "one alpha step"},
        {0xFF000000u, 0x81FF8000u, 1, "opaque black"},
        {0, 0x81FF8000u, 1, "null colour with the same fields"},
        {0xFF000000u, 0x81FF8000u, 0, "back to black, over"},
    };
    for (const Style& style : styles) {
        TestCharacter ch(kSide, kSide);
        DrawRings(ch);
        if (style.colour2 != 0) {
            ch.painter.SetColor(2, style.colour2);
        } else {
            ch.painter.SetNullColor(2);
        }
        ch.painter.SetColor(3, style.colour3);
        EXPECT_EQ(Composite(ch, background, false, style.blendMode),
                  Composite(ch, background, true, style.blendMode))
            << style.what;
    }
}

TEST(BlendMemo, KeysSeparateCountsNumbersAndUnmemoisableSlots) {
    CColor flat(0xFF000000u);
    CNullColor none;
    testing_support::CPatternShade varying(3);
    CColorApplicator* slots[16];
    for (auto& s : slots) s = &flat;
    slots[1] = &none;
    slots[5] = &varying;
    tr::BlendMemo memo(slots, 0);

    uint8_t counts[16] = {};
    counts[2] = 20;
    counts[3] = 28;
    const uint64_t key = memo.CountedKey(0b1100, counts);
    counts[2] = 21;
    counts[3] = 27;
    EXPECT_NE(memo.CountedKey(0b1100, counts), key);
    counts[4] = 20;
    EXPECT_NE(memo.CountedKey(0b10100, counts), key) << "same count, other number";
    EXPECT_EQ(memo.CountedKey(0b100100, counts), 0u) << "slot 5 shades per pixel";

    memo.StoreCounted(key, 0x11223344u, 0xAABBCCDDu);
    uint32_t result = 0;
    EXPECT_TRUE(memo.FindCounted(key, 0x11223344u, &result));
    EXPECT_EQ(result, 0xAABBCCDDu);
    EXPECT_FALSE(memo.FindCounted(key, 0x11223345u, &result)) << "other target";
    memo.StoreUniform(5, 0, 1);
    EXPECT_FALSE(memo.FindUniform(5, 0, &result)) << "slot 5 is never remembered";
}

}  // namespace
