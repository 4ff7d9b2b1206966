// Text layout: UTF-8 decoding against the encoding's definition, and pens
// against advances and kerning taken from the font's design units.
#include "tools/cli/text_layout.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/tools/title_probe.h"

namespace {

using tr::cli::DecodeUtf8;
using tr::cli::LayOutLine;
using titleprobe::kFont;

constexpr uint32_t kBad = 0xFFFD;

struct Utf8Case {
    const char* name;
    std::string bytes;
    std::vector<uint32_t> codes;
};

TEST(DecodeUtf8, FollowsTheEncodingAndReplacesEachBrokenSequence) {
    const Utf8Case cases[] = {
        {"empty", "", {}},
        {"ascii", "AV 1", {0x41, 0x56, 0x20, 0x31}},
        {"two bytes", "\xC3\xA9", {0xE9}},
        {"three bytes", "\xE2\x82\xAC", {0x20AC}},
        {"four bytes", "\xF0\x9F\x98\x80", {0x1F600}},
        {"largest code", "\xF4\x8F\xBF\xBF", {0x10FFFF}},
        {"smallest two-byte", "\xC2\x80", {0x80}},
        {"stray continuation", "\x80", {kBad}},
        {"byte that never leads", "a\xFF" "b", {0x61, kBad, 0x62}},
        {"truncated at the end", "\xC3", {kBad}},
        {"truncated three-byte", "\xE2\x82", {kBad}},
        {"letter after a lead byte", "\xC3" "A", {kBad, 0x41}},
        {"letter inside a three-byte", "\xE2\x82Z", {kBad, 0x5A}},
        {"overlong slash", "\xC0\xAF", {kBad}},
        {"overlong three-byte", "\xE0\x80\xAF", {kBad}},
        {"surrogate", "\xED\xA0\x80", {kBad}},
        {"above U+10FFFF", "\xF4\x90\x80\x80", {kBad}},
        {"good after bad", "\xE2\x82\xE2\x82\xAC", {kBad, 0x20AC}},
    };
    for (const Utf8Case& c : cases) {
        EXPECT_EQ(DecodeUtf8(c.bytes), c.codes) << c.name;
    }
}

// Pens from design units: advance and kerning in font units times size per
// em, independent of FreeType's scaled values the layout reads.
std::vector<double> DesignPens(const std::vector<uint32_t>& codes, double size, double x) {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    std::vector<double> pens;
    if (FT_Init_FreeType(&library) || FT_New_Face(library, kFont, 0, &face)) {
        ADD_FAILURE() << "cannot open " << kFont;
        return pens;
    }
    const double scale = size / face->units_per_EM;
    FT_UInt previous = 0;
    for (uint32_t code : codes) {
        const FT_UInt glyph = FT_Get_Char_Index(face, code);
        FT_Vector kern{};
        if (previous && glyph) FT_Get_Kerning(face, previous, glyph, FT_KERNING_UNSCALED, &kern);
        x += kern.x * scale;
        pens.push_back(x);
        FT_Load_Glyph(face, glyph, FT_LOAD_NO_SCALE);
        x += face->glyph->metrics.horiAdvance * scale;
        previous = glyph;
    }
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    return pens;
}

struct LineCase {
    std::string text;
    double size;
    double x;
};

TEST(LayOutLine, PensAddUpAdvancesAndKerning) {
    const LineCase cases[] = {
        {"AV", 64, 20},
        {"Title", 48.5, 0},
        {"WAVE To, Yo!", 96, -10},
        {"I", 64, 33.25},
        // A code without a glyph: the missing-glyph advance, no kerning.
        {"A\xF4\x8F\xBF\xBFV", 64, 5},
        {"", 64, 5},
    };
    for (const LineCase& c : cases) {
        SCOPED_TRACE(c.text);
        const std::vector<uint32_t> codes = DecodeUtf8(c.text);
        std::vector<double> pens;
        ASSERT_TRUE(LayOutLine(kFont, c.size, c.x, codes, pens));
        const std::vector<double> expected = DesignPens(codes, c.size, c.x);
        ASSERT_EQ(pens.size(), codes.size());
        ASSERT_EQ(expected.size(), codes.size());
        if (!pens.empty()) {
            EXPECT_EQ(pens[0], c.x) << "the first pen stands where it is asked";
        }
        // Advances come in 1/65536 pixel and kerning in 1/64 pixel, each
        // rounded once per character.
        const double tolerance = codes.size() / 64.0;
        for (std::size_t i = 0; i < pens.size(); ++i) {
            EXPECT_NEAR(pens[i], expected[i], tolerance) << "pen " << i;
        }
    }
}

TEST(LayOutLine, KernedPairsSitCloserThanTheirAdvances) {
    // "AV" and "To" kern tighter in DejaVu Sans; "AH" and "II" do not kern.
    struct Pair {
        const char* text;
        bool kerned;
    };
    const Pair pairs[] = {{"AV", true}, {"To", true}, {"AH", false}, {"II", false}};
    const double size = 64;
    for (const Pair& pair : pairs) {
        SCOPED_TRACE(pair.text);
        const std::vector<uint32_t> codes = DecodeUtf8(pair.text);
        std::vector<double> pens;
        ASSERT_TRUE(LayOutLine(kFont, size, 0, codes, pens));
        ASSERT_EQ(pens.size(), 2u);
        // The first letter's advance alone: the second pen of the design
        // layout of that letter followed by one that never kerns (space).
        const std::vector<double> alone = DesignPens({codes[0], ' '}, size, 0);
        ASSERT_EQ(alone.size(), 2u);
        const double gap = pens[1] - pens[0];
        if (pair.kerned) {
            EXPECT_LT(gap, alone[1] - 1.0);
        } else {
            EXPECT_NEAR(gap, alone[1], 1.0 / 64);
        }
    }
}

TEST(LayOutLine, AFontThatCannotBeReadFails) {
    std::vector<double> pens;
    EXPECT_FALSE(LayOutLine("/nonexistent/font.ttf", 64, 0, {'A'}, pens));
    // A file that is not a font.
    const std::string path = testing::TempDir() + "text_layout_test_not_a_font.ttf";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("not a font\n", file);
    std::fclose(file);
    EXPECT_FALSE(LayOutLine(path, 64, 0, {'A'}, pens));
    std::remove(path.c_str());
}

}  // namespace
