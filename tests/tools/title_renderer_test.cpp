// Drawing a title line in process: every character at its own pen, the
// background under translucent ink, the shadow following the outer outline,
// and outline options that ask for nothing drawing nothing.
#include "tools/cli/title_renderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/tools/title_probe.h"

namespace {

using titleprobe::Canvas;
using titleprobe::GlyphBox;
using titleprobe::Hex;
using tr::cli::TitleOptions;

constexpr double kSize = 160, kBaseline = 150;
constexpr uint32_t kFill = 0xFF3060C0u, kOutline = 0xFF10A020u, kShadow = 0xFF802040u;

TitleOptions StemOptions() {
    TitleOptions o;
    o.size = kSize;
    o.y = kBaseline;
    o.width = 260;
    o.height = 211;
    o.fill = kFill;
    o.outlineColour = kOutline;
    o.shadowColour = kShadow;
    return o;
}

Canvas Render(const TitleOptions& o, const std::vector<uint32_t>& codes,
              const std::vector<double>& pens) {
    Canvas canvas;
    auto glyphs = tr::tools::GlyphSource::Open(o.font, static_cast<int32_t>(o.size),
                                               tr::tools::GlyphFormat::CurveRecords);
    if (!glyphs) {
        ADD_FAILURE() << "cannot open " << o.font;
        return canvas;
    }
    canvas.width = o.width;
    canvas.height = o.height;
    canvas.pixels.assign(static_cast<std::size_t>(o.width) * o.height, 0);
    const ImageBlock image{canvas.pixels.data(), o.width, o.height, o.width * 4};
    // As the CLI does: outlines come through the character caches.
    CreateCharacterCaches();
    tr::cli::RenderTitleLine(o, *glyphs, codes, pens, image);
    DestroyCharacterCaches();
    return canvas;
}

GlyphBox StemAt(double penX) {
    GlyphBox box;
    EXPECT_TRUE(titleprobe::MeasureGlyph('I', kSize, penX, kBaseline, box));
    return box;
}

TEST(TitleRenderer, EachCharacterStandsAtItsOwnPen) {
    // Pens out of order and a space between: the i-th code is drawn at the
    // i-th pen, and a character without an outline does not stop the line.
    const std::vector<uint32_t> codes = {'I', ' ', 'I', 'I'};
    const std::vector<double> pens = {190.5, 10, 20.25, 105.75};
    const Canvas canvas = Render(StemOptions(), codes, pens);
    std::vector<GlyphBox> stems;
    for (double pen : {190.5, 20.25, 105.75}) stems.push_back(StemAt(pen));
    for (const GlyphBox& stem : stems) {
        EXPECT_EQ(Hex(canvas.At(stem.CentreX(), stem.CentreY())), Hex(kFill)) << stem.left;
    }
    std::string first;
    EXPECT_EQ(titleprobe::CountOutside(canvas, stems, 3, 0u, first), 0) << "first inked: " << first;
}

TEST(TitleRenderer, TranslucentInkBlendsOverTheBackground) {
    TitleOptions o = StemOptions();
    o.transparent = false;
    o.background = 0xFF0000FFu;  // opaque blue
    o.fill = 0x80FF0000u;        // half-transparent red
    const double kPen = 60;
    const Canvas canvas = Render(o, {'I'}, {kPen});
    const GlyphBox stem = StemAt(kPen);
    // Straight alpha over an opaque target: c = a * ink + (1 - a) * target,
    // result opaque.
    const double a = 0x80 / 255.0;
    const uint32_t p = canvas.At(stem.CentreX(), stem.CentreY());
    EXPECT_EQ(p >> 24, 0xFFu) << Hex(p);
    EXPECT_NEAR((p >> 16) & 0xFF, a * 255, 1.0) << Hex(p);
    EXPECT_NEAR((p >> 8) & 0xFF, 0, 1.0) << Hex(p);
    EXPECT_NEAR(p & 0xFF, (1 - a) * 255, 1.0) << Hex(p);
    EXPECT_EQ(Hex(canvas.At(5, 5)), Hex(o.background));
}

// Past the displaced face's far edge but inside the displaced outer ring:
// shadow only when the shadow follows the outline.
TEST(TitleRenderer, ShadowFollowsTheOuterOutline) {
    constexpr double kDistance = 16, kRing = 5;
    struct Case {
        const char* side;
        bool shadowReachesRing;
    };
    const Case cases[] = {{"out", true}, {"in", false}, {"", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.side);
        TitleOptions o = StemOptions();
        o.outlineSide = c.side;
        o.outlineWidth = kRing;
        o.shadowAngle = 90;
        o.shadowDistance = kDistance;
        const double kPen = 60;
        const Canvas canvas = Render(o, {'I'}, {kPen});
        const GlyphBox stem = StemAt(kPen);
        const uint32_t p = canvas.At(stem.right + kDistance + kRing / 2, stem.CentreY());
        EXPECT_EQ(Hex(p), Hex(c.shadowReachesRing ? kShadow : 0u));
        // Between the face and its displaced copy there is shadow either way.
        EXPECT_EQ(Hex(canvas.At(stem.right + kDistance / 2 + kRing, stem.CentreY())), Hex(kShadow));
    }
}

TEST(TitleRenderer, OutlineNeedsBothASideAndAWidth) {
    struct Case {
        const char* side;
        double width;
    };
    const Case cases[] = {{"", 5}, {"in", 0}, {"out", 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.side) + " " + std::to_string(c.width));
        TitleOptions o = StemOptions();
        o.outlineSide = c.side;
        o.outlineWidth = c.width;
        const double kPen = 60;
        const Canvas canvas = Render(o, {'I'}, {kPen});
        const GlyphBox stem = StemAt(kPen);
        EXPECT_EQ(Hex(canvas.At(stem.left - 2.5, stem.CentreY())), Hex(0u)) << "no outer ring";
        EXPECT_EQ(Hex(canvas.At(stem.left + 2.5, stem.CentreY())), Hex(kFill)) << "no inner rim";
    }
}

}  // namespace
