// tools/glyph_source/glyph_source.h — a glyph callback backed by a real font.
//
// A GlyphSource opens a font with FreeType at one character size (the
// outline size of the requests it answers: FreeType char size S at 72 dpi,
// so one unit of the glyph data is one pixel of an S-pixel em) and answers
// the library's glyph callback for character codes in one of the four glyph
// data formats:
//
//  - CurveRecords: polygon records (type 24) with line, quadratic-spline and
//    cubic-spline records in FIXED 16.16, converted from the font's outline
//    (runs of conic points become one quadratic-spline record ending on the
//    next on-curve point; cubic arcs become cubic records; the closing line
//    back to the start point is left implicit);
//  - GroupedFloats: flattened contours grouped by the source itself (outer
//    contours by the font's fill orientation, each hole in the smallest outer
//    contour around it);
//  - PolygonsOfDoubles: flattened contours, nesting left to the library;
//  - SinglePath: the first flattened contour as one line record.
//
// Flattening uses kFlattenSteps uniform steps per curve. Pass Context() as
// the callback's context.
//
// Metrics record (20 bytes), whole pixels at the char size, y up:
//   0 u32 black box width, 4 u32 black box height (control box rounded
//   outward), 8 i32 box left, 12 i32 box top, 16 i16 horizontal advance,
//   18 i16 vertical advance (0).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "titlerender.h"

namespace tr::tools {

enum class GlyphFormat { CurveRecords, GroupedFloats, PolygonsOfDoubles, SinglePath };

constexpr const char* kDefaultFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr int kFlattenSteps = 8;

struct GlyphMetricsRecord {
    std::uint32_t blackBoxX;
    std::uint32_t blackBoxY;
    std::int32_t originX;
    std::int32_t originY;
    std::int16_t advanceX;
    std::int16_t advanceY;
};
static_assert(sizeof(GlyphMetricsRecord) == 20, "the metrics record is 20 bytes");

class GlyphSource {
public:
    // Null when the font cannot be opened or the size is not usable
    // (FIXED coordinates need glyphs below 32768 pixels).
    static std::unique_ptr<GlyphSource> Open(const std::string& fontPath, std::int32_t charSize,
                                             GlyphFormat format);
    ~GlyphSource();
    GlyphSource(const GlyphSource&) = delete;
    GlyphSource& operator=(const GlyphSource&) = delete;

    uintptr_t Context() const { return reinterpret_cast<uintptr_t>(this); }
    std::int32_t CharSize() const { return charSize_; }
    GlyphFormat Format() const { return format_; }
    void SetFormat(GlyphFormat format) { format_ = format; }

    // The glyph data of a character in the current format (empty when the
    // character has no outline), and its metrics record.
    bool Encode(std::uint32_t code, std::vector<std::uint8_t>& data, GlyphMetricsRecord& metrics);

    // Flattened contours of a character in pixels, as the font gives them.
    struct Contour {
        std::vector<double> xy;  // x0, y0, x1, y1, ...
    };
    bool Flatten(std::uint32_t code, std::vector<Contour>& contours);

    // The glyph callback: size query with a null buffer, else fills the buffer.
    static std::int32_t Callback(uintptr_t context, std::uint32_t characterCode, void* metrics,
                                 std::uint32_t bufferSize, void* buffer, const std::int32_t* matrix);

private:
    struct Impl;
    GlyphSource(std::unique_ptr<Impl> impl, std::int32_t charSize, GlyphFormat format);

    std::unique_ptr<Impl> impl_;
    std::int32_t charSize_;
    GlyphFormat format_;
};

}  // namespace tr::tools
