// Outline builder on real glyphs (DejaVu Sans and Serif through the
// FreeType glyph source), and the single-path nudges.
#include "outline/outline_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>
#include <numbers>
#include <string>

#include "block_view.h"
#include "tools/glyph_source/glyph_source.h"

namespace tr {
namespace {

using tools::GlyphFormat;
using tools::GlyphSource;

const char* const kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const char* const kSerif = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";

struct Block {
    OMData data;
    Block(GlyphSource& source, std::uint32_t code) {
        const std::uint32_t flags = source.Format() == GlyphFormat::PolygonsOfDoubles ? OUTLINE_POLYGON_INPUT : 0u;
        data = BuildOutlineBlock(MakeOutlineRequest(source.Context(), flags, source.CharSize(), &GlyphSource::Callback,
                                                    static_cast<std::uint16_t>(code), 8, 0));
    }
    ~Block() { delete[] data.pointer; }
};

// Hole counts per group straight from the font, sorted: contours whose
// orientation is the fill orientation (clockwise for these fonts) are outer
// contours and each other contour sits in one of them; a degenerate contour
// (DejaVu Sans 'u' has a one-point contour) stays a group of its own.
std::multiset<std::size_t> FontHoles(GlyphSource& source, std::uint32_t code) {
    std::vector<GlyphSource::Contour> contours;
    EXPECT_TRUE(source.Flatten(code, contours));
    std::vector<std::vector<CPoint3D>> outers, holes;
    for (const auto& c : contours) {
        std::vector<CPoint3D> p;
        for (std::size_t i = 0; i + 1 < c.xy.size(); i += 2) p.push_back({c.xy[i], c.xy[i + 1], 0});
        (test::SignedArea(p) <= 0 ? outers : holes).push_back(p);
    }
    std::multiset<std::size_t> counts;
    for (const auto& o : outers) {
        std::size_t n = 0;
        for (const auto& h : holes) n += test::Inside(o, h[0].x, h[0].y);
        counts.insert(n);
    }
    return counts;
}

std::multiset<std::size_t> BlockHoles(const std::uint8_t* block) {
    std::multiset<std::size_t> counts;
    for (const auto& g : test::ReadGroups(block)) counts.insert(g.holes.size());
    return counts;
}

// Indices in range, triangles tile outer minus holes and stay inside the
// region, outer clockwise and holes counter-clockwise.
void CheckTiling(const std::uint8_t* block, const std::string& what) {
    for (const test::GroupView& g : test::ReadGroups(block)) {
        ASSERT_EQ(g.triangles.size() % 3, 0u) << what;
        if (g.outer.size() < 3) {
            EXPECT_TRUE(g.triangles.empty()) << what << ": degenerate group with triangles";
            continue;
        }
        double region = -test::SignedArea(g.outer);
        EXPECT_GT(region, 0.0) << what << ": outer contour not clockwise";
        for (const auto& hole : g.holes) {
            EXPECT_GT(test::SignedArea(hole), 0.0) << what << ": hole not counter-clockwise";
            region -= test::SignedArea(hole);
        }
        for (std::uint32_t i : g.triangles) ASSERT_LT(i, g.all.size()) << what;
        for (std::size_t t = 0; t < g.triangles.size(); t += 3) {
            const CPoint3D &a = g.all[g.triangles[t]], &b = g.all[g.triangles[t + 1]], &c = g.all[g.triangles[t + 2]];
            if (test::TriangleArea(a, b, c) < 1e-9 * region) continue;  // a needle's centroid says nothing
            const double cx = (a.x + b.x + c.x) / 3.0, cy = (a.y + b.y + c.y) / 3.0;
            EXPECT_TRUE(test::Inside(g.outer, cx, cy)) << what << ": triangle outside the outer contour";
            for (const auto& hole : g.holes) EXPECT_FALSE(test::Inside(hole, cx, cy)) << what << ": triangle in a hole";
        }
        EXPECT_NEAR(test::TiledArea({g}), region, 1e-6 * region) << what;
    }
}

struct FontCase {
    const char* path;
    std::int32_t size;
};

class RealGlyphs : public ::testing::TestWithParam<FontCase> {};

// The flat formats come from the same font through the glyph source.
TEST_P(RealGlyphs, EveryPrintableGlyphTilesItsRegionInEveryFormat) {
    auto curves = GlyphSource::Open(GetParam().path, GetParam().size, GlyphFormat::CurveRecords);
    auto flat = GlyphSource::Open(GetParam().path, GetParam().size, GlyphFormat::GroupedFloats);
    ASSERT_TRUE(curves && flat);
    for (std::uint32_t code = 0x21; code < 0x7F; ++code) {
        const auto holes = FontHoles(*curves, code);
        for (GlyphFormat format :
             {GlyphFormat::CurveRecords, GlyphFormat::GroupedFloats, GlyphFormat::PolygonsOfDoubles}) {
            flat->SetFormat(format);
            Block block(format == GlyphFormat::CurveRecords ? *curves : *flat, code);
            const std::string what = std::string("'") + static_cast<char>(code) + "' format " +
                                     std::to_string(static_cast<int>(format));
            ASSERT_NE(block.data.pointer, nullptr) << what;
            EXPECT_EQ(test::U32(block.data.pointer, 32), block.data.size);
            CheckTiling(block.data.pointer, what);
            EXPECT_EQ(BlockHoles(block.data.pointer), holes) << what;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(DejaVu, RealGlyphs, ::testing::Values(FontCase{kSans, 64}, FontCase{kSans, 2048},
                                                             FontCase{kSerif, 64}, FontCase{kSerif, 2048}));

TEST(RealGlyphShapes, EdgeAnglesAreSetOnTheFinalPoints) {
    // After nesting has reversed what it reverses: z is the direction of the
    // edge arriving at each point, in [0, 2 pi).
    auto source = GlyphSource::Open(kSans, 300, GlyphFormat::CurveRecords);
    ASSERT_NE(source, nullptr);
    for (std::uint32_t code : {'H', 'O', '%'}) {
        Block block(*source, code);
        ASSERT_NE(block.data.pointer, nullptr);
        for (test::GroupView& g : test::ReadGroups(block.data.pointer)) {
            g.holes.push_back(g.outer);
            for (const auto& contour : g.holes) {
                for (std::size_t i = 0; i < contour.size(); ++i) {
                    const CPoint3D& prev = contour[(i + contour.size() - 1) % contour.size()];
                    const double a = std::atan2(contour[i].y - prev.y, contour[i].x - prev.x);
                    EXPECT_EQ(contour[i].z, a < 0 ? a + 2 * std::numbers::pi : a) << code;
                }
            }
        }
    }
}

TEST(OutlineBuilder, SinglePathNudges) {
    const struct {
        const char* name;
        std::vector<std::pair<double, double>> in;
        std::vector<double> x;
    } cases[] = {
        {"vertical step right", {{0, 0}, {0, 10}, {5, 10}}, {0, 0.01313, 5}},
        {"small step left", {{1, 0}, {0.995, 10}, {5, 10}}, {1, 0.995 - 0.01111, 5}},
        {"closing pair, first slightly left", {{4.995, 0}, {0, 10}, {5, 10}}, {4.995 - 0.02222, 0, 5}},
        {"closing pair, first slightly right", {{5.005, 0}, {0, 10}, {5, 10}}, {5.005 + 0.02626, 0, 5}},
    };
    for (const auto& c : cases) {
        Coutline path;
        for (auto [x, y] : c.in) path.points.push_back(CPoint3D{x, y, 0});
        NudgeNearVertical(path);
        std::size_t i = 0;
        for (const CPoint3D& p : path.points) EXPECT_DOUBLE_EQ(p.x, c.x[i++]) << c.name;
    }
}

}  // namespace
}  // namespace tr
