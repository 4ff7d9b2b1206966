// A line of DejaVu Sans through the library against FreeType's anti-aliased
// bitmaps of the same glyphs at the same origins: scale, y direction and
// placement against code no one here wrote.
#include <ft2build.h>
#include FT_FREETYPE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/tools/title_probe.h"
#include "titlerender.h"
#include "tools/glyph_source/glyph_source.h"

namespace {

constexpr int kWidth = 3400, kHeight = 90, kSize = 48, kBaseline = 64;
using titleprobe::kFont;

// Every printable ASCII glyph, so no choice of line flatters the figures.
const std::string kText = [] {
    std::string text;
    for (char c = '!'; c <= '~'; ++c) text += c;
    return text;
}();

struct FreeTypeLine {
    std::vector<int> penX;
    std::vector<uint8_t> alpha;  // kWidth × kHeight
};

// Whole-pixel pens from FreeType's unhinted advances, and FreeType's own
// rendering of each glyph at its pen on the baseline.
bool RenderWithFreeType(FreeTypeLine& line) {
    titleprobe::DesignFace f;
    FT_Face face = f.face;
    if (!face || FT_Set_Char_Size(face, 0, kSize * 64, 72, 72)) return false;
    line.alpha.assign(kWidth * kHeight, 0);
    int pen = 8;
    for (char c : kText) {
        line.penX.push_back(pen);
        const FT_ULong code = static_cast<unsigned char>(c);
        if (FT_Load_Char(face, code, FT_LOAD_RENDER | FT_LOAD_NO_HINTING)) return false;
        const FT_Bitmap& bitmap = face->glyph->bitmap;
        for (unsigned row = 0; row < bitmap.rows; ++row)
            for (unsigned col = 0; col < bitmap.width; ++col) {
                const int x = pen + face->glyph->bitmap_left + static_cast<int>(col);
                const int y = kBaseline - face->glyph->bitmap_top + static_cast<int>(row);
                if (x < 0 || y < 0 || x >= kWidth || y >= kHeight) continue;
                uint8_t& a = line.alpha[y * kWidth + x];
                a = std::max(a, bitmap.buffer[row * bitmap.pitch + col]);
            }
        pen += static_cast<int>(std::lround(face->glyph->linearHoriAdvance / 65536.0));
    }
    return true;
}

TEST(TitlesVsFreeType, FaceMasksAgreeWithFreeTypeBitmaps) {
    FreeTypeLine reference;
    ASSERT_TRUE(RenderWithFreeType(reference));
    auto glyphs = tr::tools::GlyphSource::Open(kFont, kSize, tr::tools::GlyphFormat::CurveRecords);
    ASSERT_NE(glyphs, nullptr);

    // As a host does: outlines come through the character caches.
    ASSERT_TRUE(CreateCharacterCaches());
    std::vector<uint32_t> pixels(kWidth * kHeight, 0);
    SurfaceDescriptor d{{pixels.data(), kWidth, kHeight, kWidth * 4}, 1.0};
    Surface* surface = CreateSurface(&d);
    const uint8_t map[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    for (std::size_t i = 0; i < kText.size(); ++i) {
        NewCharacterCallBack(surface, glyphs->Context(), 0, kSize,
                             &tr::tools::GlyphSource::Callback, static_cast<uint8_t>(kText[i]));
        FaceParameters face{kSize, 1.0, 1.0, 0.0, 0.0, 0.0, double(reference.penX[i]),
                            double(kBaseline), 0.0, 0.0};
        SetFace(surface, &face);
        SetFragment(surface, map, 0, 0.0, 0.0, 0.0);
        SetColor(surface, 2, 0xFFFFFFFFu);
        FinishCharacter(surface, 0, 0, 0, 0);
    }
    CloseSurface(surface);
    EXPECT_TRUE(DestroyCharacterCaches());

    // Mask agreement, once over every pixel and once leaving out our pixels
    // of exactly half coverage (alpha 128: four sub-samples across a pixel
    // put any vertical edge in its middle quarter at half coverage, where
    // FreeType's exact area gives 96-159 and half of them land below 128).
    long both = 0, either = 0, bothNoTie = 0, eitherNoTie = 0, inspected = 0;
    double differenceSum = 0.0;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const int ours = static_cast<int>(pixels[i] >> 24), theirs = reference.alpha[i];
        const bool a = ours > 127, b = theirs > 127;
        both += a && b;
        either += a || b;
        bothNoTie += ours != 128 && a && b;
        eitherNoTie += ours != 128 && (a || b);
        differenceSum += std::abs(ours - theirs);
        inspected += ours || theirs;
    }
    ASSERT_GT(either, 2000);
    // Measured on all printable ASCII: 0.9635 raw, 0.9924 without ties,
    // mean difference 18.8.
    EXPECT_GE(static_cast<double>(both) / either, 0.96);
    EXPECT_GE(static_cast<double>(bothNoTie) / eitherNoTie, 0.99);
    EXPECT_LT(differenceSum / inspected, 24.0);
}

}  // namespace
