// tools/cli/titlerender_cli.cpp — the titlerender command-line host.
//
// Lays out one line of text with FreeType's advances and kerning, then
// drives the library's C entry points as a title host does: per character
// NewCharacterCallBack (with the FreeType glyph source answering the glyph
// callback), SetFace, SetFragment for the shadow, outline and face, SetColor
// per painter slot and FinishCharacter; finally CloseSurface composites the
// line and the image is written as a PNG. Like a host, it creates the
// character caches before it renders and destroys them before it exits, so
// a letter that occurs several times is outlined once; the cache files go to
// "$TMPDIR/CG Cache/" (or /tmp) and are deleted with the caches.
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "titlerender.h"
#include "tools/cli/title_options.h"
#include "tools/glyph_source/glyph_source.h"
#include "tools/png/png_writer.h"

namespace {

using tr::cli::TitleOptions;

// Painter slots of the title: face, outline, shadow.
constexpr int32_t kFaceSlot = 2;
constexpr int32_t kOutlineSlot = 3;
constexpr int32_t kShadowSlot = 4;

std::vector<uint32_t> DecodeUtf8(const std::string& text) {
    std::vector<uint32_t> codes;
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        int length = c < 0x80 ? 1 : (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 0;
        if (length == 0 || i + length > text.size()) {
            codes.push_back(0xFFFD);
            ++i;
            continue;
        }
        uint32_t code = length == 1 ? c : c & (0x7F >> length);
        for (int k = 1; k < length; ++k) code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        codes.push_back(code);
        i += length;
    }
    return codes;
}

// Pen positions of each character, from FreeType's unhinted advances and
// kerning at the title size.
bool LayOut(const TitleOptions& o, const std::vector<uint32_t>& codes, std::vector<double>& penX) {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library)) return false;
    FT_Face face = nullptr;
    bool ok = FT_New_Face(library, o.font.c_str(), 0, &face) == 0 &&
              FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(o.size * 64.0), 72, 72) == 0;
    double pen = o.x;
    FT_UInt previous = 0;
    for (std::size_t i = 0; ok && i < codes.size(); ++i) {
        const FT_UInt glyph = FT_Get_Char_Index(face, codes[i]);
        if (previous && glyph && FT_HAS_KERNING(face)) {
            FT_Vector kern{};
            FT_Get_Kerning(face, previous, glyph, FT_KERNING_UNFITTED, &kern);
            pen += kern.x / 64.0;
        }
        penX.push_back(pen);
        if (FT_Load_Glyph(face, glyph, FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) == 0) {
            pen += face->glyph->linearHoriAdvance / 65536.0;
        }
        previous = glyph;
    }
    if (face) FT_Done_Face(face);
    FT_Done_FreeType(library);
    return ok;
}

void AllSlots(uint8_t (&map)[16], uint8_t slot) {
    for (uint8_t& v : map) v = slot;
}

void DescribeCharacter(Surface* surface, const TitleOptions& o, tr::tools::GlyphSource& glyphs,
                       uint32_t code, double penX, uint32_t index) {
    NewCharacterCallBack(surface, glyphs.Context(), 0, static_cast<uint32_t>(glyphs.CharSize()),
                         &tr::tools::GlyphSource::Callback, code);
    FaceParameters face{o.size, 1.0, 1.0, 0.0, 0.0, 0.0, penX, o.y, 0.0, 0.0};
    SetFace(surface, &face);
    uint8_t map[16];
    const bool outlined = !o.outlineSide.empty() && o.outlineWidth > 0.0;
    const bool outer = outlined && o.outlineSide == "out";
    if (o.shadowDistance > 0.0) {
        // The shadow of what stands out most: the outer outline, or the face.
        // The displaced face and the extrusion joining it to the character.
        AllSlots(map, kShadowSlot);
        SetFragment(surface, map, 0, 0.0, o.shadowAngle, o.shadowDistance);
        SetFragment(surface, map, outer ? 5 : 3, outer ? o.outlineWidth : 0.0, o.shadowAngle,
                    o.shadowDistance);
        SetColor(surface, kShadowSlot, o.shadowColour);
    }
    if (outer) {
        AllSlots(map, kOutlineSlot);
        SetFragment(surface, map, 2, o.outlineWidth, 0.0, 0.0);
    }
    AllSlots(map, kFaceSlot);
    SetFragment(surface, map, 0, 0.0, 0.0, 0.0);
    if (outlined && !outer) {
        AllSlots(map, kOutlineSlot);
        SetFragment(surface, map, 1, o.outlineWidth, 0.0, 0.0);
    }
    SetColor(surface, kFaceSlot, o.fill);
    SetColor(surface, kOutlineSlot, o.outlineColour);
    FinishCharacter(surface, 0, 0, index, 0);
}

}  // namespace

int main(int argc, char** argv) {
    TitleOptions options;
    bool help = false;
    std::string error;
    if (!tr::cli::ParseTitleOptions(argc, argv, options, help, error)) {
        if (help) {
            std::fputs(tr::cli::TitleOptionsHelp(), stdout);
            return 0;
        }
        std::fprintf(stderr, "titlerender: %s\n%s", error.c_str(), tr::cli::TitleOptionsHelp());
        return 2;
    }
    const std::vector<uint32_t> codes = DecodeUtf8(options.text);
    std::vector<double> penX;
    const int32_t outlineSize = static_cast<int32_t>(options.size + 0.5);
    auto glyphs = tr::tools::GlyphSource::Open(options.font, outlineSize > 0 ? outlineSize : 1,
                                               tr::tools::GlyphFormat::CurveRecords);
    if (!glyphs || !LayOut(options, codes, penX)) {
        std::fprintf(stderr, "titlerender: cannot read font %s\n", options.font.c_str());
        return 1;
    }

    std::vector<uint32_t> pixels(static_cast<std::size_t>(options.width) * options.height, 0);
    SurfaceDescriptor descriptor{{pixels.data(), options.width, options.height, options.width * 4}, 1.0};
    if (!options.transparent) FillSolid(&descriptor.image, options.background);
    CreateCharacterCaches();
    Surface* surface = CreateSurface(&descriptor);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        DescribeCharacter(surface, options, *glyphs, codes[i], penX[i], static_cast<uint32_t>(i));
    }
    CloseSurface(surface);
    DestroyCharacterCaches();

    if (!tr::WritePngFile(options.output, descriptor.image, error)) {
        std::fprintf(stderr, "titlerender: %s\n", error.c_str());
        return 1;
    }
    std::printf("%s\n", options.output.c_str());
    return 0;
}
