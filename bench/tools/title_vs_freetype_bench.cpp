// Time per character of a 40-character DejaVu Sans line at 64 px with a face
// and a 3-px outer outline in flat colours, into a 1920 × 1080 BGRA target:
// through the library (FinishCharacter plus its share of CloseSurface), and
// the same job done with FreeType alone (render each glyph, stroke it with
// FreeType's stroker, blend both into the target). The library runs as a
// host runs it, with the character caches (outlines built once, then served
// from memory), and once more with the no-cache flag, which builds every
// outline at every character.
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_GLYPH_H
#include FT_STROKER_H

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "titlerender.h"
#include "tools/glyph_source/glyph_source.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kSize = 64;
constexpr double kOutline = 3.0;
constexpr int kBaseline = 540;
const char* const kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const std::string kLine = "The quick brown fox jumps over a lazy do";  // 40 characters

struct Layout {
    std::vector<int> pens;
};

Layout LayOut(FT_Face face) {
    Layout layout;
    int pen = 40;
    for (char c : kLine) {
        layout.pens.push_back(pen);
        FT_Load_Char(face, static_cast<unsigned char>(c), FT_LOAD_NO_HINTING);
        pen += static_cast<int>(face->glyph->linearHoriAdvance / 65536);
    }
    return layout;
}

struct FreeTypeFont {
    FreeTypeFont() {
        FT_Init_FreeType(&library);
        FT_New_Face(library, kFont, 0, &face);
        FT_Set_Char_Size(face, 0, kSize * 64, 72, 72);
        FT_Stroker_New(library, &stroker);
        FT_Stroker_Set(stroker, static_cast<FT_Fixed>(kOutline * 64), FT_STROKER_LINECAP_ROUND,
                       FT_STROKER_LINEJOIN_ROUND, 0);
    }
    ~FreeTypeFont() {
        FT_Stroker_Done(stroker);
        FT_Done_Face(face);
        FT_Done_FreeType(library);
    }
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    FT_Stroker stroker = nullptr;
};

// Straight-alpha "over" of a coverage bitmap in one colour.
void Blend(std::vector<uint32_t>& target, const FT_BitmapGlyph glyph, int penX, uint32_t colour) {
    const FT_Bitmap& b = glyph->bitmap;
    for (unsigned row = 0; row < b.rows; ++row) {
        const int y = kBaseline - glyph->top + static_cast<int>(row);
        if (y < 0 || y >= kHeight) continue;
        for (unsigned col = 0; col < b.width; ++col) {
            const int x = penX + glyph->left + static_cast<int>(col);
            const unsigned a = b.buffer[row * b.pitch + col];
            if (x < 0 || x >= kWidth || a == 0) continue;
            uint32_t& p = target[y * kWidth + x];
            const unsigned d = p >> 24;
            const unsigned o = a + d - a * d / 255;
            if (o == 0) continue;
            uint32_t out = o << 24;
            for (int shift = 0; shift < 24; shift += 8) {
                const unsigned s = (colour >> shift) & 0xFF, t = (p >> shift) & 0xFF;
                out |= ((s * a + t * (d - a * d / 255)) / o) << shift;
            }
            p = out;
        }
    }
}

void BM_FreeTypeStrokeAndFill(benchmark::State& state) {
    FreeTypeFont font;
    const Layout layout = LayOut(font.face);
    std::vector<uint32_t> target(kWidth * kHeight, 0);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kLine.size(); ++i) {
            FT_Load_Char(font.face, static_cast<unsigned char>(kLine[i]), FT_LOAD_NO_HINTING);
            FT_Glyph fill = nullptr, border = nullptr;
            FT_Get_Glyph(font.face->glyph, &fill);
            FT_Glyph_Copy(fill, &border);
            FT_Glyph_StrokeBorder(&border, font.stroker, 0, 1);
            FT_Glyph_To_Bitmap(&border, FT_RENDER_MODE_NORMAL, nullptr, 1);
            FT_Glyph_To_Bitmap(&fill, FT_RENDER_MODE_NORMAL, nullptr, 1);
            Blend(target, reinterpret_cast<FT_BitmapGlyph>(border), layout.pens[i], 0xFF202060u);
            Blend(target, reinterpret_cast<FT_BitmapGlyph>(fill), layout.pens[i], 0xFFFFD040u);
            FT_Done_Glyph(border);
            FT_Done_Glyph(fill);
        }
        benchmark::DoNotOptimize(target.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kLine.size()));
}

constexpr uint32_t kNoCache = 0x4000;

void RunTitlerender(benchmark::State& state, uint32_t flags) {
    FreeTypeFont font;
    const Layout layout = LayOut(font.face);
    auto glyphs = tr::tools::GlyphSource::Open(kFont, kSize, tr::tools::GlyphFormat::CurveRecords);
    std::vector<uint32_t> target(kWidth * kHeight, 0);
    uint8_t outlineMap[16], faceMap[16];
    for (int i = 0; i < 16; ++i) {
        outlineMap[i] = 3;
        faceMap[i] = 2;
    }
    for (auto _ : state) {
        SurfaceDescriptor d{{target.data(), kWidth, kHeight, kWidth * 4}, 1.0};
        Surface* surface = CreateSurface(&d);
        for (std::size_t i = 0; i < kLine.size(); ++i) {
            NewCharacterCallBack(surface, glyphs->Context(), flags, kSize,
                                 &tr::tools::GlyphSource::Callback,
                                 static_cast<unsigned char>(kLine[i]));
            FaceParameters face{kSize, 1.0, 1.0, 0.0, 0.0, 0.0, double(layout.pens[i]),
                                double(kBaseline), 0.0, 0.0};
            SetFace(surface, &face);
            SetFragment(surface, outlineMap, 2, kOutline, 0.0, 0.0);
            SetFragment(surface, faceMap, 0, 0.0, 0.0, 0.0);
            SetColor(surface, 2, 0xFFFFD040u);
            SetColor(surface, 3, 0xFF202060u);
            FinishCharacter(surface, 0, 0, 0, 0);
        }
        CloseSurface(surface);
        benchmark::DoNotOptimize(target.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kLine.size()));
}

void BM_TitlerenderFaceAndOutline(benchmark::State& state) {
    CreateCharacterCaches();
    RunTitlerender(state, 0);
    DestroyCharacterCaches();
}

void BM_TitlerenderFaceAndOutlineUncached(benchmark::State& state) { RunTitlerender(state, kNoCache); }

BENCHMARK(BM_FreeTypeStrokeAndFill)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TitlerenderFaceAndOutline)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TitlerenderFaceAndOutlineUncached)->Unit(benchmark::kMicrosecond);

}  // namespace
