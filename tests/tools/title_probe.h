// Private to tests/tools: where a glyph lies on a title canvas, measured
// from the font's design units (not through the CLI's own layout), and
// pixel probes for the rendered canvas.
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
    double CentreX() const { return (left + right) / 2; }
    double CentreY() const { return (top + bottom) / 2; }
    double HalfWidth() const { return (right - left) / 2; }
    double HalfHeight() const { return (bottom - top) / 2; }
};

// The box of `code` set at `size` pixels per em with its pen at (penX,
// baseline): design-unit control box scaled by size / units per em.
inline bool MeasureGlyph(uint32_t code, double size, double penX, double baseline, GlyphBox& box) {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    bool ok = FT_Init_FreeType(&library) == 0 && FT_New_Face(library, kFont, 0, &face) == 0 &&
              FT_Load_Char(face, code, FT_LOAD_NO_SCALE) == 0;
    if (ok) {
        FT_BBox cbox;
        FT_Outline_Get_CBox(&face->glyph->outline, &cbox);
        const double scale = size / face->units_per_EM;
        box = {penX + cbox.xMin * scale, penX + cbox.xMax * scale, baseline - cbox.yMax * scale,
               baseline - cbox.yMin * scale};
    }
    if (face) FT_Done_Face(face);
    if (library) FT_Done_FreeType(library);
    return ok;
}

// A canvas of straight-alpha BGRA words, rows top to bottom.
struct Canvas {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;

    // The pixel containing the point (x, y).
    uint32_t At(double x, double y) const {
        const int px = static_cast<int>(x), py = static_cast<int>(y);
        if (x < 0 || y < 0 || px >= width || py >= height) {
            ADD_FAILURE() << "probe (" << x << ", " << y << ") lies off the canvas";
            return 0;
        }
        return pixels[static_cast<std::size_t>(py) * width + px];
    }
};

inline std::string Hex(uint32_t v) {
    char text[12];
    std::snprintf(text, sizeof text, "%08X", v);
    return text;
}

// Number of pixels farther than `margin` from every box whose word differs
// from `expected`, with the first of them described in `first`.
inline long CountOutside(const Canvas& canvas, const std::vector<GlyphBox>& boxes, double margin,
                         uint32_t expected, std::string& first) {
    long count = 0;
    for (int y = 0; y < canvas.height; ++y) {
        for (int x = 0; x < canvas.width; ++x) {
            bool near = false;
            for (const GlyphBox& b : boxes) {
                near = near || (x + 1 > b.left - margin && x < b.right + margin &&
                                y + 1 > b.top - margin && y < b.bottom + margin);
            }
            const uint32_t p = canvas.pixels[static_cast<std::size_t>(y) * canvas.width + x];
            if (!near && p != expected && count++ == 0) {
                first = "(" + std::to_string(x) + ", " + std::to_string(y) + ") = " + Hex(p);
            }
        }
    }
    return count;
}

}  // namespace titleprobe
