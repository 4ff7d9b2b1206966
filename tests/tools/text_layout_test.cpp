// Text layout: UTF-8 decoding against the encoding's definition; pens
// against advances and kerning from the font's design units.
#include "tools/cli/text_layout.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/title_probe.h"

namespace {

using tr::cli::DecodeUtf8;
using titleprobe::kFont;

constexpr uint32_t kBad = 0xFFFD;

TEST(DecodeUtf8, FollowsTheEncodingAndReplacesEachBrokenSequence) {
    const std::pair<std::string, std::vector<uint32_t>> cases[] = {
        {"AV 1", {0x41, 0x56, 0x20, 0x31}},
        {"\xC2\x80\xC3\xA9", {0x80, 0xE9}},
        {"\xE2\x82\xAC", {0x20AC}},
        {"\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF", {0x1F600, 0x10FFFF}},
        {"a\x80\xFF" "b", {0x61, kBad, kBad, 0x62}},   // stray continuation, never a lead
        {"\xE2\x82", {kBad}},                           // truncated at the end
        {"\xC3" "A\xE2\x82Z", {kBad, 0x41, kBad, 0x5A}},  // a letter where a continuation belongs
        {"\xC0\xAF\xE0\x80\xAF", {kBad, kBad}},         // overlong forms
        {"\xED\xA0\x80", {kBad}},                       // surrogate
        {"\xF4\x90\x80\x80", {kBad}},                   // above U+10FFFF
        {"\xE2\x82\xE2\x82\xAC", {kBad, 0x20AC}},       // good after bad
    };
    for (const auto& [bytes, codes] : cases) EXPECT_EQ(DecodeUtf8(bytes), codes) << bytes;
}

// Pens from advance and kerning in font units times size per em,
// independent of the scaled values the layout reads.
std::vector<double> DesignPens(const std::vector<uint32_t>& codes, double size, double x) {
    titleprobe::DesignFace f;
    std::vector<double> pens;
    if (!f.face) return pens;
    const double scale = size / f.face->units_per_EM;
    FT_UInt previous = 0;
    for (uint32_t code : codes) {
        const FT_UInt glyph = FT_Get_Char_Index(f.face, code);
        FT_Vector kern{};
        if (previous && glyph) FT_Get_Kerning(f.face, previous, glyph, FT_KERNING_UNSCALED, &kern);
        pens.push_back(x += kern.x * scale);
        FT_Load_Glyph(f.face, glyph, FT_LOAD_NO_SCALE);
        x += f.face->glyph->metrics.horiAdvance * scale;
        previous = glyph;
    }
    return pens;
}

// "AV", "To" and "Yo" kern in DejaVu Sans; U+10FFFF has no glyph: the
// missing-glyph advance and no kerning. Advances come in 1/65536 pixel and
// kerning in 1/64, each rounded once per character.
TEST(LayOutLine, PensAddUpAdvancesAndKerning) {
    const struct {
        std::string text;
        double size, x;
    } cases[] = {
        {"WAVE To, Yo!", 96, -10}, {"Title", 48.5, 0}, {"A\xF4\x8F\xBF\xBFV", 64, 5}, {"", 64, 5}};
    for (const auto& c : cases) {
        const std::vector<uint32_t> codes = DecodeUtf8(c.text);
        std::vector<double> pens;
        ASSERT_TRUE(tr::cli::LayOutLine(kFont, c.size, c.x, codes, pens)) << c.text;
        const std::vector<double> expected = DesignPens(codes, c.size, c.x);
        ASSERT_EQ(pens.size(), expected.size()) << c.text;
        for (std::size_t i = 0; i < pens.size(); ++i)
            EXPECT_NEAR(pens[i], expected[i], i / 64.0) << c.text;
    }
    std::vector<double> pens;
    EXPECT_FALSE(tr::cli::LayOutLine("/nonexistent/font.ttf", 64, 0, {'A'}, pens));
}

}  // namespace
