// Glyph data readers: curve records, quadratic pieces and the qn rule, and
// untrusted input of every format. Each input sits in a heap buffer of its
// exact size, so a read past the end is caught by AddressSanitizer.
#include "outline/glyph_formats.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "glyph_data.h"

namespace tr {
namespace {

using test::CurveGlyph;
using test::XY;

// Exact-size copy of the data.
struct Exact {
    explicit Exact(const std::vector<std::uint8_t>& v) : size(v.size()), bytes(new std::uint8_t[v.size() + (v.empty() ? 1 : 0)]) {
        if (!v.empty()) std::memcpy(bytes.get(), v.data(), v.size());
    }
    std::size_t size;
    std::unique_ptr<std::uint8_t[]> bytes;
};

std::list<Coutline> Curves(const std::vector<std::uint8_t>& v, double z = -8.0) {
    Exact e(v);
    return ReadCurvePolygons(e.bytes.get(), e.size, z);
}

TEST(GlyphFormats, LineAndCubicRecords) {
    auto contours = Curves(CurveGlyph()
                               .Polygon({0, 0})
                               .Record(1, {{0, 10}, {10.5, 10}})
                               .Record(3, {{12, 8}, {12, 2}, {10, 0}})
                               .Data());
    ASSERT_EQ(contours.size(), 1u);
    const auto& pts = contours.front().points;
    ASSERT_EQ(pts.size(), 1u + 2u + 24u);
    EXPECT_EQ(std::next(pts.begin(), 2)->x, 10.5);
    EXPECT_EQ(pts.back().x, 10.0);
    EXPECT_EQ(pts.back().y, 0.0);
    for (const CPoint3D& p : pts) EXPECT_EQ(p.z, -8.0);
}

// Quadratic record q1 q2 q3: piece 1 from the current point with control q1
// to mid(q1, q2), piece 2 from piece 1's last appended point with control q2
// to q3; 24 points each; q3 itself only when a line or cubic follows.
TEST(GlyphFormats, QuadraticPiecesAndTheClosingPointRule) {
    const XY q1{10, 20}, q2{30, 20}, q3{40, 0};
    struct Case {
        const char* name;
        int follow;  // 0 none, 1 line, 2 quadratic, 3 cubic
        bool appendsQn;
    };
    for (const Case& c : {Case{"end of polygon", 0, false}, Case{"line follows", 1, true},
                          Case{"quadratic follows", 2, false}, Case{"cubic follows", 3, true}}) {
        CurveGlyph glyph;
        glyph.Polygon({0, 0}).Record(2, {q1, q2, q3});
        if (c.follow == 1) glyph.Record(1, {{50, -5}});
        if (c.follow == 2) glyph.Record(2, {{50, -5}, {60, 0}});
        if (c.follow == 3) glyph.Record(3, {{50, -5}, {55, -5}, {60, 0}});
        auto contours = Curves(glyph.Data());
        ASSERT_EQ(contours.size(), 1u) << c.name;
        std::vector<CPoint3D> pts(contours.front().points.begin(), contours.front().points.end());
        ASSERT_GE(pts.size(), 1u + 48u) << c.name;
        // Piece 2 starts at piece 1's 24th point, not at mid(q1, q2).
        const CPoint3D s = pts[24];
        for (int k = 1; k <= 24; ++k) {
            const double t = k / 25.0, mt = 1 - t;
            EXPECT_NEAR(pts[24 + k].x, mt * mt * s.x + 2 * mt * t * q2.x + t * t * q3.x, 1e-9) << c.name;
            EXPECT_NEAR(pts[24 + k].y, mt * mt * s.y + 2 * mt * t * q2.y + t * t * q3.y, 1e-9) << c.name;
        }
        const bool hasQn = pts.size() > 49 && pts[49].x == q3.x && pts[49].y == q3.y;
        EXPECT_EQ(hasQn, c.appendsQn) << c.name;
    }
}

TEST(GlyphFormats, PolygonRecordsOfOtherTypesAreSkippedByTheirSize) {
    CurveGlyph glyph;
    glyph.Polygon({0, 0}).Record(1, {{0, 5}, {5, 5}});
    auto data = glyph.Data();
    auto other = data;
    other[4] = 25;  // type 25: not a polygon
    other.insert(other.end(), data.begin(), data.end());
    auto contours = Curves(other);
    ASSERT_EQ(contours.size(), 1u);
    EXPECT_EQ(contours.front().points.size(), 3u);
}

TEST(GlyphFormats, UntrustedCurveRecords) {
    const auto good = CurveGlyph().Polygon({0, 0}).Record(1, {{0, 5}, {5, 5}, {5, 0}}).Data();
    struct Case {
        const char* name;
        std::vector<std::uint8_t> data;
        std::vector<std::size_t> pointsPerContour;
    };
    std::vector<Case> cases;
    auto cbZero = good;
    cbZero[0] = 0;
    cases.push_back({"cb 0", cbZero, {}});
    auto cbPast = good;
    cbPast[0] = static_cast<std::uint8_t>(good.size() + 1);
    cases.push_back({"cb past the end", cbPast, {}});
    auto cbSmall = good;
    cbSmall[0] = 8;
    cases.push_back({"cb below the header", cbSmall, {}});
    auto countPast = good;
    countPast[18] = 200;  // point count of the line record
    cases.push_back({"point count past the end", countPast, {1}});
    auto truncated = good;
    truncated.resize(truncated.size() - 3);
    truncated[0] = static_cast<std::uint8_t>(truncated.size());
    cases.push_back({"truncated record", truncated, {1}});
    auto secondBad = good;
    secondBad.insert(secondBad.end(), good.begin(), good.begin() + 20);
    cases.push_back({"second polygon cut short", secondBad, {4}});
    cases.push_back({"shorter than a header", std::vector<std::uint8_t>(good.begin(), good.begin() + 15), {}});
    cases.push_back({"empty", {}, {}});
    auto hugeCubic = CurveGlyph().Polygon({0, 0}).Record(3, {{1, 1}, {2, 2}, {3, 0}, {4, 4}}).Data();
    cases.push_back({"cubic with a partial triple", hugeCubic, {25}});
    for (const Case& c : cases) {
        auto contours = Curves(c.data);
        std::vector<std::size_t> sizes;
        for (const auto& contour : contours) sizes.push_back(contour.points.size());
        EXPECT_EQ(sizes, c.pointsPerContour) << c.name;
    }
}

std::vector<std::uint8_t> Floats(const std::vector<float>& values) {
    test::Bytes b;
    b.Put<std::int32_t>(-1);
    for (float v : values) b.Put(v);
    return b.data;
}

TEST(GlyphFormats, GroupedFloats) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    struct Case {
        const char* name;
        std::vector<float> values;
        std::vector<std::size_t> holesPerGroup;
    };
    const Case cases[] = {
        {"one group, one hole", {1, 3, 0, 0, 0, 9, 9, 0, 1, 3, 1, 1, 2, 1, 1, 2}, {1}},
        {"count truncated", {1.9f, 3.7f, 0, 0, 0, 9, 9, 0, 0.5f}, {0}},
        {"huge group count", {1e30f, 3, 0, 0, 0, 9, 9, 0, 0}, {0}},
        {"NaN group count", {nan, 3, 0, 0, 0, 9, 9, 0, 0}, {}},
        {"negative point count", {1, -5, 0, 0}, {}},
        {"huge point count", {1, 1e9f, 0, 0, 0, 9}, {}},
        {"NaN coordinate drops the group", {2, 3, 0, nan, 0, 9, 9, 0, 0, 3, 0, 0, 0, 9, 9, 0, 0}, {0}},
        {"infinite coordinate drops the hole", {1, 3, 0, 0, 0, 9, 9, 0, 1, 3, 1, 1, inf, 1, 1, 2}, {0}},
        {"hole count past the end", {1, 3, 0, 0, 0, 9, 9, 0, 7, 3, 1, 1}, {0}},
        {"marker only", {}, {}},
    };
    for (const Case& c : cases) {
        Exact e(Floats(c.values));
        ASSERT_TRUE(IsGroupedFloats(e.bytes.get(), e.size));
        const auto groups = ReadGroupedFloats(e.bytes.get(), e.size);
        std::vector<std::size_t> holes;
        for (const auto& g : groups) {
            holes.push_back(g.holes.size());
            for (const auto& p : g.outer.points) EXPECT_EQ(p.z, 0.0);
        }
        EXPECT_EQ(holes, c.holesPerGroup) << c.name;
    }
}

TEST(GlyphFormats, PolygonsOfDoubles) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<XY> square = {{0, 0}, {0, 5}, {5, 5}, {5, 0}};
    struct Case {
        const char* name;
        std::vector<std::uint8_t> data;
        std::vector<std::size_t> sizes;
    };
    auto countPast = test::PolygonGlyph({square});
    countPast[56 + 4] = 99;
    auto big = test::PolygonGlyph({{{0, 0}, {1e13, 0}, {0, 1}}, square});
    const Case cases[] = {
        {"two contours", test::PolygonGlyph({square, {{1, 1}, {2, 2}}}), {4, 2}},
        {"huge contour count", test::PolygonGlyph({square}, 0xFFFFFFFFu), {4}},
        {"point count past the end", countPast, {}},
        {"NaN drops its contour", test::PolygonGlyph({{{0, nan}, {1, 1}, {2, 0}}, square}), {4}},
        {"coordinate beyond the limit", big, {4}},
        {"header only", test::PolygonGlyph({}), {}},
        {"short header", std::vector<std::uint8_t>(40, 0), {}},
    };
    for (const Case& c : cases) {
        Exact e(c.data);
        std::vector<std::size_t> sizes;
        for (const auto& contour : ReadPolygons(e.bytes.get(), e.size)) sizes.push_back(contour.points.size());
        EXPECT_EQ(sizes, c.sizes) << c.name;
    }
}

TEST(GlyphFormats, SinglePath) {
    struct Case {
        const char* name;
        std::vector<std::uint8_t> data;
        bool ok;
        std::size_t points;
    };
    auto line = CurveGlyph().Polygon({0, 0}).Record(1, {{0, 5}, {5, 5}}).Record(1, {{9, 9}}).Data();
    auto countPast = line;
    countPast[18] = 40;
    auto cbZero = line;
    cbZero[0] = 0;
    const Case cases[] = {
        {"first line record only", line, true, 3},
        {"curve first", CurveGlyph().Polygon({0, 0}).Record(2, {{0, 5}, {5, 5}}).Data(), false, 0},
        {"count past the end", countPast, true, 4},
        {"cb 0", cbZero, false, 0},
        {"too short", std::vector<std::uint8_t>(line.begin(), line.begin() + 18), false, 0},
    };
    for (const Case& c : cases) {
        Exact e(c.data);
        Coutline path;
        EXPECT_EQ(ReadSinglePath(e.bytes.get(), e.size, -3.0, path), c.ok) << c.name;
        EXPECT_EQ(path.points.size(), c.points) << c.name;
    }
}

}  // namespace
}  // namespace tr
