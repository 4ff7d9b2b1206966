// Remembered blends are kept between compositing calls and shared between
// characters: a memo made for one set of flat colours and blend mode must
// never answer for another. Each step composites through the memo and
// through the plain twin and compares.
#include "paint/blend_memo.h"

#include <gtest/gtest.h>

#include <vector>

#include "paint/compositor.h"
#include "tests/paint/compositing_test_support.h"

namespace {

using testing_support::TestCharacter;

constexpr int32_t kSide = 24;

// Rings of slots 2 and 3 on a ragged edge, so most pixels are counted ones.
void DrawRings(TestCharacter& ch) {
    ch.Fill([](int32_t sx, int32_t sy) {
        const int32_t d = (sx - 48) * (sx - 48) + (sy - 45) * (sy - 45);
        return d < 500 ? 2u : d < 1200 ? 3u : 0u;
    });
}

// The whole character in two halves (two calls, as regions do).
std::vector<uint32_t> Composite(TestCharacter& ch, bool plain, int32_t blendMode) {
    std::vector<uint32_t> pixels(kSide * kSide, 0x60102030u);
    ch.Bind(pixels.data(), kSide * 4, kSide, kSide, 0.0, 0.0, blendMode);
    ch.painter.FillEmptySlotsWithNullColors();
    ch.painter.PrepareApplicators();
    for (const CompositeRect& half : {CompositeRect{0, 0, kSide, kSide / 2},
                                      CompositeRect{0, kSide / 2, kSide, kSide / 2}}) {
        (plain ? CompositeCharacterReference : CompositeCharacter)(ch.painter, half);
    }
    return pixels;
}

// Characters one after another with their own painters: the same colours
// share the memo; another blend mode, one colour bit, or a null colour
// whose fields equal a flat colour's each need fresh blends.
TEST(BlendMemo, SharedOnlyWithTheSameColoursAndMode) {
    const struct {
        uint32_t colour2;  // 0: a null colour in slot 2
        uint32_t colour3;
        int32_t blendMode;
    } styles[] = {
        {0xFF2040C0u, 0x80FF8000u, 0}, {0xFF2040C0u, 0x80FF8000u, 0},
        {0xFF2040C0u, 0x80FF8000u, 1}, {0xFF2040C0u, 0x81FF8000u, 1},
        {0xFF000000u, 0x81FF8000u, 1}, {0, 0x81FF8000u, 1},
        {0xFF000000u, 0x81FF8000u, 0},
    };
    for (size_t k = 0; k < std::size(styles); ++k) {
        TestCharacter ch(kSide, kSide);
        DrawRings(ch);
        if (styles[k].colour2 != 0) ch.painter.SetColor(2, styles[k].colour2);
        if (styles[k].colour2 == 0) ch.painter.SetNullColor(2);
        ch.painter.SetColor(3, styles[k].colour3);
        EXPECT_EQ(Composite(ch, false, styles[k].blendMode),
                  Composite(ch, true, styles[k].blendMode))
            << "style " << k;
    }
}

}  // namespace
