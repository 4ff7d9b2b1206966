// Private to tests/tools: the font opened through FreeType, where a glyph
// lies on a title canvas from its design units (not the CLI's layout), and
// probes of the canvas.
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace titleprobe {

inline const char* const kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

// A glyph's control box on the canvas, in pixels, y down.
struct GlyphBox {
    double left = 0, right = 0, top = 0, bottom = 0;
};

// The font, open for the object's lifetime.
struct DesignFace {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    DesignFace() {
        if (FT_Init_FreeType(&library) || FT_New_Face(library, kFont, 0, &face))
            ADD_FAILURE() << "cannot open " << kFont;
    }
    ~DesignFace() {
        if (face) FT_Done_Face(face);
        if (library) FT_Done_FreeType(library);
    }
};

// The design-unit control box of `code` scaled by size / units per em, with
// the pen at (penX, baseline).
inline GlyphBox MeasureGlyph(uint32_t code, double size, double penX, double baseline) {
    DesignFace f;
    if (!f.face || FT_Load_Char(f.face, code, FT_LOAD_NO_SCALE)) return {};
    FT_BBox c;
    FT_Outline_Get_CBox(&f.face->glyph->outline, &c);
    const double scale = size / f.face->units_per_EM;
    return {penX + c.xMin * scale, penX + c.xMax * scale, baseline - c.yMax * scale,
            baseline - c.yMin * scale};
}

inline std::string Hex(uint32_t v) {
    char text[12];
    std::snprintf(text, sizeof text, "%08X", v);
    return text;
}

// Straight-alpha BGRA words, rows top to bottom.
struct Canvas {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;

    // The pixel containing (x, y), as hex for readable failures.
    std::string At(double x, double y) const {
        if (x < 0 || y < 0 || x >= width || y >= height) return "off the canvas";
        return Hex(pixels[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)]);
    }

    // How many pixels farther than `margin` from the box are not `expected`.
    long Stray(const GlyphBox& b, double margin, uint32_t expected) const {
        long count = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                count += pixels[static_cast<std::size_t>(y) * width + x] != expected &&
                         !(x + 1 > b.left - margin && x < b.right + margin &&
                           y + 1 > b.top - margin && y < b.bottom + margin);
        return count;
    }
};

}  // namespace titleprobe
