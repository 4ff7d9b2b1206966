// Drawing a title line in process, probed at places measured from the
// font's design units: the stem of an "I", the ring an outline draws round
// it, the side a shadow falls on; every character at its own pen.
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

// A stem (about 15.8 px wide) wide enough for pure fill between 5-pixel
// inner rims. A pixel's compositing footprint reaches about a pixel into its
// neighbours, so probes keep that far from every edge.
constexpr double kSize = 160, kBaseline = 150, kPen = 60;
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

Canvas Render(const TitleOptions& o, const std::vector<uint32_t>& codes, const std::vector<double>& pens) {
    Canvas canvas{o.width, o.height, std::vector<uint32_t>(static_cast<std::size_t>(o.width) * o.height, 0)};
    auto glyphs = tr::tools::GlyphSource::Open(o.font, int32_t(o.size), tr::tools::GlyphFormat::CurveRecords);
    EXPECT_NE(glyphs, nullptr);
    if (!glyphs) return canvas;
    const ImageBlock image{canvas.pixels.data(), o.width, o.height, o.width * 4};
    CreateCharacterCaches();  // as the CLI does: outlines come through the caches
    tr::cli::RenderTitleLine(o, *glyphs, codes, pens, image);
    DestroyCharacterCaches();
    return canvas;
}

GlyphBox Stem(double pen) { return titleprobe::MeasureGlyph('I', kSize, pen, kBaseline); }

// A point placed from the stem's middle: k half-widths (or half-heights) plus d pixels.
struct Probe {
    double kx, dx, ky, dy;
    uint32_t expected;
};

TEST(TitleRenderer, FaceOutlinesAndShadowsLandAroundTheStem) {
    const struct {
        const char* name;
        const char* side;
        double width, angle, distance;
        std::vector<Probe> probes;
    } cases[] = {
        {"plain", "", 0, 0, 0, {{0, 0, 0, 0, kFill}, {0, 0, -1, 3, kFill}, {-1, -3, 0, 0, 0}}},
        {"outer outline", "out", 5, 0, 0,
         {{0, 0, 0, 0, kFill}, {-1, -2.5, 0, 0, kOutline}, {1, 2.5, 0, 0, kOutline}, {0, 0, -1, -2.5, kOutline}}},
        {"inner outline", "in", 5, 0, 0,
         {{0, 0, 0, 0, kFill}, {-1, 2.5, 0, 0, kOutline}, {1, -2.5, 0, 0, kOutline}, {-1, -3, 0, 0, 0}}},
        {"side without width", "in", 0, 0, 0, {{-1, 2.5, 0, 0, kFill}, {-1, -2.5, 0, 0, 0}}},
        {"width without side", "", 5, 0, 0, {{-1, 2.5, 0, 0, kFill}, {-1, -2.5, 0, 0, 0}}},
        // Angle a moves ink by d (sin a, -cos a): 0 up, 90 right, 180 down.
        {"shadow right", "", 0, 90, 16, {{1, 8, 0, 0, kShadow}, {-1, -8, 0, 0, 0}}},
        {"shadow down", "", 0, 180, 16, {{0, 0, 1, 8, kShadow}, {0, 0, -1, -8, 0}}},
        // Past the displaced face but inside the displaced outer ring.
        {"shadow of the outer outline", "out", 5, 90, 16, {{1, 18.5, 0, 0, kShadow}, {1, 13, 0, 0, kShadow}}},
        {"shadow of the face, inner outline", "in", 5, 90, 16, {{1, 18.5, 0, 0, 0}, {1, 13, 0, 0, kShadow}}},
    };
    const GlyphBox b = Stem(kPen);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TitleOptions o = StemOptions();
        o.outlineSide = c.side;
        o.outlineWidth = c.width;
        o.shadowAngle = c.angle;
        o.shadowDistance = c.distance;
        const Canvas canvas = Render(o, {'I'}, {kPen});
        for (const Probe& p : c.probes) {
            const double x = (b.left + b.right) / 2 + p.kx * (b.right - b.left) / 2 + p.dx;
            const double y = (b.top + b.bottom) / 2 + p.ky * (b.bottom - b.top) / 2 + p.dy;
            EXPECT_EQ(canvas.At(x, y), Hex(p.expected)) << x << "," << y;
        }
        std::string first;
        const double margin = 3 + c.distance + (std::string(c.side) == "out" ? c.width : 0);
        EXPECT_EQ(canvas.CountOutside({b}, margin, 0u, first), 0) << "first inked: " << first;
    }
}

TEST(TitleRenderer, EachCharacterStandsAtItsOwnPen) {
    // Pens out of order and a space between: the i-th code at the i-th pen,
    // and a character without an outline does not stop the line.
    const Canvas canvas = Render(StemOptions(), {'I', ' ', 'I', 'I'}, {190.5, 10, 20.25, 105.75});
    std::vector<GlyphBox> stems;
    for (double pen : {190.5, 20.25, 105.75}) {
        stems.push_back(Stem(pen));
        EXPECT_EQ(canvas.At((stems.back().left + stems.back().right) / 2, kBaseline - 50), Hex(kFill)) << pen;
    }
    std::string first;
    EXPECT_EQ(canvas.CountOutside(stems, 3, 0u, first), 0) << "first inked: " << first;
}

}  // namespace
