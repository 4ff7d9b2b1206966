// A title line probed where the font's design units put an "I", an
// outline's ring round it and its shadow; nothing farther out.
#include "tools/cli/title_renderer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/title_probe.h"

namespace {

using titleprobe::Hex;

// A point placed from the stem's middle: k half-widths (half-heights) plus d px.
struct Probe {
    double kx, dx, ky, dy;
    uint32_t expected;
};

TEST(TitleRenderer, FaceOutlinesAndShadowsLandAroundTheStem) {
    // The stem (about 15.8 px wide) keeps pure fill between 5-pixel inner
    // rims. A pixel's compositing footprint reaches about a pixel into its
    // neighbours, so probes keep that far from every edge.
    constexpr uint32_t kFill = 0xFF3060C0u, kOutline = 0xFF10A020u, kShadow = 0xFF802040u;
    const struct {
        const char* name;
        const char* side;
        double width, angle, distance;
        std::vector<Probe> probes;
    } cases[] = {
        {"plain", "", 0, 0, 0, {{0, 0, 0, 0, kFill}, {0, 0, -1, 3, kFill}, {-1, -3, 0, 0, 0}}},
        {"outer outline", "out", 5, 0, 0,
         {{0, 0, 0, 0, kFill}, {-1, -2.5, 0, 0, kOutline}, {1, 2.5, 0, 0, kOutline},
          {0, 0, -1, -2.5, kOutline}}},
        {"inner outline", "in", 5, 0, 0,
         {{0, 0, 0, 0, kFill}, {-1, 2.5, 0, 0, kOutline}, {1, -2.5, 0, 0, kOutline},
          {-1, -3, 0, 0, 0}}},
        {"side without width", "in", 0, 0, 0, {{-1, 2.5, 0, 0, kFill}, {-1, -2.5, 0, 0, 0}}},
        {"width without side", "", 5, 0, 0, {{-1, 2.5, 0, 0, kFill}, {-1, -2.5, 0, 0, 0}}},
        // Angle a moves ink by d (sin a, -cos a): 90 right, 180 down.
        {"shadow right", "", 0, 90, 16, {{1, 8, 0, 0, kShadow}, {-1, -8, 0, 0, 0}}},
        {"shadow down", "", 0, 180, 16, {{0, 0, 1, 8, kShadow}, {0, 0, -1, -8, 0}}},
        // Past the displaced face but inside the displaced outer ring.
        {"shadow of the outer outline", "out", 5, 90, 16,
         {{1, 18.5, 0, 0, kShadow}, {1, 13, 0, 0, kShadow}}},
        {"shadow of the face, inner outline", "in", 5, 90, 16,
         {{1, 18.5, 0, 0, 0}, {1, 13, 0, 0, kShadow}}},
    };
    tr::cli::TitleOptions o;
    o.size = 160, o.y = 150, o.width = 260, o.height = 211;
    o.fill = kFill, o.outlineColour = kOutline, o.shadowColour = kShadow;
    auto glyphs = tr::tools::GlyphSource::Open(o.font, 160, tr::tools::GlyphFormat::CurveRecords);
    ASSERT_NE(glyphs, nullptr);
    const titleprobe::GlyphBox b = titleprobe::MeasureGlyph('I', 160, 60, 150);
    CreateCharacterCaches();  // as the CLI does: outlines come through the caches
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        o.outlineSide = c.side;
        o.outlineWidth = c.width;
        o.shadowAngle = c.angle;
        o.shadowDistance = c.distance;
        titleprobe::Canvas canvas{o.width, o.height, std::vector<uint32_t>(260 * 211, 0)};
        const ImageBlock image{canvas.pixels.data(), o.width, o.height, o.width * 4};
        tr::cli::RenderTitleLine(o, *glyphs, {'I'}, {60}, image);
        for (const Probe& p : c.probes) {
            const double x = (b.left + b.right) / 2 + p.kx * (b.right - b.left) / 2 + p.dx;
            const double y = (b.top + b.bottom) / 2 + p.ky * (b.bottom - b.top) / 2 + p.dy;
            EXPECT_EQ(canvas.At(x, y), Hex(p.expected)) << x << "," << y;
        }
        const double ring = std::string(c.side) == "out" ? c.width : 0;
        EXPECT_EQ(canvas.Stray(b, 3 + c.distance + ring, 0u), 0);
    }
    DestroyCharacterCaches();
}

}  // namespace
