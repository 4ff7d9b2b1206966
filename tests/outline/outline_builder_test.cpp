// Outline builder on real glyphs (DejaVu Sans and Serif through the
// FreeType glyph source) and on hand-made glyph data.
#include "outline/outline_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <algorithm>
#include <set>
#include <numbers>
#include <string>

#include "block_view.h"
#include "outline/character_data.h"
#include "outline/contour_cleanup.h"
#include "tools/glyph_source/glyph_source.h"

namespace tr {
namespace {

using tools::GlyphFormat;
using tools::GlyphSource;

const char* const kSans = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const char* const kSerif = "/usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf";

std::uint32_t FlagsFor(GlyphFormat format) {
    if (format == GlyphFormat::PolygonsOfDoubles) return OUTLINE_POLYGON_INPUT;
    if (format == GlyphFormat::SinglePath) return OUTLINE_SINGLE_PATH_NONZERO;
    return 0;
}

struct Block {
    OMData data;
    Block(GlyphSource& source, std::uint32_t code)
        : data(BuildOutlineBlock(MakeOutlineRequest(source.Context(), FlagsFor(source.Format()),
                                                    source.CharSize(), &GlyphSource::Callback,
                                                    static_cast<std::uint16_t>(code), 8, 0))) {}
    ~Block() { delete[] data.pointer; }
};

// Outer and hole counts straight from the font: contours whose orientation
// is the fill orientation (clockwise for these fonts) are outer contours; a
// degenerate contour (DejaVu Sans 'u' has a one-point contour) stays a group
// of its own.
void CountFromFont(GlyphSource& source, std::uint32_t code, std::size_t& outers, std::size_t& holes) {
    std::vector<GlyphSource::Contour> contours;
    ASSERT_TRUE(source.Flatten(code, contours));
    outers = holes = 0;
    for (const auto& c : contours) {
        double a = 0;
        const std::size_t n = c.xy.size() / 2;
        for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
            a += c.xy[2 * j] * c.xy[2 * i + 1] - c.xy[2 * i] * c.xy[2 * j + 1];
        }
        (a <= 0 ? outers : holes) += 1;
    }
}

// Checks one block: indices in range, triangles tile outer minus holes and
// stay inside the region, outer clockwise and holes counter-clockwise.
void CheckTiling(const std::uint8_t* block, const std::string& what) {
    for (const test::GroupView& g : test::ReadGroups(block)) {
        ASSERT_EQ(g.triangles.size() % 3, 0u) << what;
        if (g.outer.size() < 3) {
            EXPECT_TRUE(g.triangles.empty()) << what << ": degenerate group with triangles";
            continue;
        }
        double region = -test::SignedArea(g.outer);  // clockwise outer: negative area
        EXPECT_GT(region, 0.0) << what << ": outer contour not clockwise";
        for (const auto& hole : g.holes) {
            const double a = test::SignedArea(hole);
            EXPECT_GT(a, 0.0) << what << ": hole not counter-clockwise";
            region -= a;
        }
        double tiled = 0.0;
        for (std::size_t t = 0; t < g.triangles.size(); t += 3) {
            for (int k = 0; k < 3; ++k) ASSERT_LT(g.triangles[t + k], g.all.size()) << what;
            const CPoint3D& a = g.all[g.triangles[t]];
            const CPoint3D& b = g.all[g.triangles[t + 1]];
            const CPoint3D& c = g.all[g.triangles[t + 2]];
            const double area = test::TriangleArea(a, b, c);
            tiled += area;
            if (area < 1e-9 * region) continue;  // centroid of a needle is meaningless
            const double cx = (a.x + b.x + c.x) / 3.0, cy = (a.y + b.y + c.y) / 3.0;
            EXPECT_TRUE(test::Inside(g.outer, cx, cy)) << what << ": triangle outside the outer contour";
            for (const auto& hole : g.holes) {
                EXPECT_FALSE(test::Inside(hole, cx, cy)) << what << ": triangle inside a hole";
            }
        }
        EXPECT_NEAR(tiled, region, 1e-6 * region) << what;
    }
}

struct FontCase {
    const char* path;
    std::int32_t size;
};

class RealGlyphs : public ::testing::TestWithParam<FontCase> {};

TEST_P(RealGlyphs, EveryPrintableGlyphTilesItsRegion) {
    auto source = GlyphSource::Open(GetParam().path, GetParam().size, GlyphFormat::CurveRecords);
    ASSERT_NE(source, nullptr);
    for (std::uint32_t code = 0x21; code < 0x7F; ++code) {
        Block block(*source, code);
        const std::string what = std::string("'") + static_cast<char>(code) + "'";
        ASSERT_NE(block.data.pointer, nullptr) << what;
        EXPECT_EQ(test::U32(block.data.pointer, 32), block.data.size);
        CheckTiling(block.data.pointer, what);
        std::size_t outers = 0, holes = 0;
        CountFromFont(*source, code, outers, holes);
        const auto groups = test::ReadGroups(block.data.pointer);
        std::size_t holeCount = 0;
        for (const auto& g : groups) holeCount += g.holes.size();
        EXPECT_EQ(groups.size(), outers) << what;
        EXPECT_EQ(holeCount, holes) << what;
    }
}

TEST_P(RealGlyphs, FlatFormatsGiveTheSameGroupsAsCurveRecords) {
    auto curves = GlyphSource::Open(GetParam().path, GetParam().size, GlyphFormat::CurveRecords);
    auto flat = GlyphSource::Open(GetParam().path, GetParam().size, GlyphFormat::GroupedFloats);
    ASSERT_NE(curves, nullptr);
    ASSERT_NE(flat, nullptr);
    for (GlyphFormat format : {GlyphFormat::GroupedFloats, GlyphFormat::PolygonsOfDoubles}) {
        flat->SetFormat(format);
        for (std::uint32_t code = 0x21; code < 0x7F; ++code) {
            Block a(*curves, code);
            Block b(*flat, code);
            const std::string what = std::string("'") + static_cast<char>(code) + "' format " +
                                     std::to_string(static_cast<int>(format));
            ASSERT_NE(b.data.pointer, nullptr) << what;
            const auto ga = test::ReadGroups(a.data.pointer);
            const auto gb = test::ReadGroups(b.data.pointer);
            ASSERT_EQ(ga.size(), gb.size()) << what;
            std::multiset<std::size_t> ha, hb;
            for (const auto& g : ga) ha.insert(g.holes.size());
            for (const auto& g : gb) hb.insert(g.holes.size());
            EXPECT_EQ(ha, hb) << what;
            CheckTiling(b.data.pointer, what);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(DejaVu, RealGlyphs,
                         ::testing::Values(FontCase{kSans, 64}, FontCase{kSans, 2048},
                                           FontCase{kSerif, 64}, FontCase{kSerif, 2048}));

TEST(RealGlyphShapes, KnownGroupAndHoleCounts) {
    auto source = GlyphSource::Open(kSans, 256, GlyphFormat::CurveRecords);
    ASSERT_NE(source, nullptr);
    struct Case {
        char code;
        std::vector<std::size_t> holesPerGroup;  // sorted
    };
    const Case cases[] = {{'O', {1}}, {'B', {2}}, {'i', {0, 0}}, {'%', {0, 1, 1}}, {'l', {0}}};
    for (const Case& c : cases) {
        Block block(*source, static_cast<std::uint8_t>(c.code));
        ASSERT_NE(block.data.pointer, nullptr) << c.code;
        std::vector<std::size_t> holes;
        for (const auto& g : test::ReadGroups(block.data.pointer)) holes.push_back(g.holes.size());
        std::sort(holes.begin(), holes.end());
        EXPECT_EQ(holes, c.holesPerGroup) << c.code;
    }
}

TEST(RealGlyphShapes, SpaceGivesNoBlock) {
    auto source = GlyphSource::Open(kSans, 256, GlyphFormat::CurveRecords);
    ASSERT_NE(source, nullptr);
    Block block(*source, ' ');
    EXPECT_EQ(block.data.pointer, nullptr);
    EXPECT_EQ(block.data.size, 0u);
}

TEST(RealGlyphShapes, MetricsAndOutlineSizeReachTheHeader) {
    auto source = GlyphSource::Open(kSans, 300, GlyphFormat::CurveRecords);
    ASSERT_NE(source, nullptr);
    Block block(*source, 'H');
    ASSERT_NE(block.data.pointer, nullptr);
    std::vector<std::uint8_t> data;
    tools::GlyphMetricsRecord metrics;
    ASSERT_TRUE(source->Encode('H', data, metrics));
    EXPECT_EQ(std::memcmp(block.data.pointer + 44, &metrics, 20), 0);
    std::int32_t size;
    std::memcpy(&size, block.data.pointer + 36, 4);
    EXPECT_EQ(size, 300);
    // Every finished point carries the direction of its arriving edge.
    for (const auto& g : test::ReadGroups(block.data.pointer)) {
        for (std::size_t i = 0; i < g.outer.size(); ++i) {
            const CPoint3D& prev = g.outer[(i + g.outer.size() - 1) % g.outer.size()];
            double expected = std::atan2(g.outer[i].y - prev.y, g.outer[i].x - prev.x);
            if (expected < 0) expected += 2 * std::numbers::pi;
            EXPECT_EQ(g.outer[i].z, expected);
            EXPECT_GE(g.outer[i].z, 0.0);
            EXPECT_LT(g.outer[i].z, 2 * std::numbers::pi);
        }
    }
}

}  // namespace
}  // namespace tr
