// tools/cli/text_layout.cpp — UTF-8 decoding and FreeType pen positions.
//
// Pens follow FreeType's linear (unhinted) advances, exact to 1/65536 pixel,
// and FT_KERNING_UNFITTED kerning, 26.6 pixels without grid fitting: the
// library places each face to 1/16 pixel, so rounding pens to whole pixels
// here would only add error.
#include "tools/cli/text_layout.h"

#include <ft2build.h>
#include FT_FREETYPE_H

namespace tr::cli {
namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool IsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// Length of the sequence a lead byte opens, 0 for a byte that cannot lead.
int SequenceLength(unsigned char c) {
    if (c < 0x80) return 1;
    if ((c & 0xE0) == 0xC0) return 2;
    if ((c & 0xF0) == 0xE0) return 3;
    if ((c & 0xF8) == 0xF0) return 4;
    return 0;
}

// The smallest code each length may encode; shorter forms are overlong.
constexpr uint32_t kMinimumCode[5] = {0, 0, 0x80, 0x800, 0x10000};

}  // namespace

std::vector<uint32_t> DecodeUtf8(const std::string& text) {
    std::vector<uint32_t> codes;
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const int length = SequenceLength(lead);
        if (length == 0) {
            codes.push_back(kReplacement);
            ++i;
            continue;
        }
        // The payload bits of the lead byte: 7, 5, 4 or 3.
        uint32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
        int taken = 1;
        while (taken < length && i + taken < text.size() &&
               IsContinuation(static_cast<unsigned char>(text[i + taken]))) {
            code = (code << 6) | (static_cast<unsigned char>(text[i + taken]) & 0x3Fu);
            ++taken;
        }
        const bool valid = taken == length && code >= kMinimumCode[length] && code <= 0x10FFFF &&
                           (code < 0xD800 || code > 0xDFFF);
        codes.push_back(valid ? code : kReplacement);
        i += taken;
    }
    return codes;
}

bool LayOutLine(const std::string& fontPath, double size, double startX,
                const std::vector<uint32_t>& codes, std::vector<double>& penX) {
    penX.clear();
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library)) return false;
    FT_Face face = nullptr;
    const bool ok = FT_New_Face(library, fontPath.c_str(), 0, &face) == 0 &&
                    FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(size * 64.0), 72, 72) == 0;
    double pen = startX;
    FT_UInt previous = 0;
    for (std::size_t i = 0; ok && i < codes.size(); ++i) {
        const FT_UInt glyph = FT_Get_Char_Index(face, codes[i]);
        if (previous && glyph && FT_HAS_KERNING(face)) {
            FT_Vector kern{};
            if (FT_Get_Kerning(face, previous, glyph, FT_KERNING_UNFITTED, &kern) == 0) {
                pen += kern.x / 64.0;
            }
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

}  // namespace tr::cli
