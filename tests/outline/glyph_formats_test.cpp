// Glyph data readers: curve records, quadratic pieces and the qn rule, and
// what is kept of untrusted input in every format. Each input sits in a heap
// buffer of its exact size, so a read past the end is caught by
// AddressSanitizer; the outline builder fuzzer covers the rest of the space.
#include "outline/glyph_formats.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "glyph_data.h"

namespace tr {
namespace {

using test::CurvePolygon;
using test::PolygonGlyph;
using test::XY;
using Data = std::vector<std::uint8_t>;

struct Exact {
    explicit Exact(const Data& v) : size(v.size()), bytes(new std::uint8_t[v.empty() ? 1 : v.size()]) {
        if (!v.empty()) std::memcpy(bytes.get(), v.data(), v.size());
    }
    std::size_t size;
    std::unique_ptr<std::uint8_t[]> bytes;
};

template <typename Contours>
std::vector<std::size_t> Sizes(const Contours& contours) {
    std::vector<std::size_t> sizes;
    for (const auto& c : contours) sizes.push_back(c.points.size());
    return sizes;
}

std::list<Coutline> Curves(const Data& v) {
    Exact e(v);
    return ReadCurvePolygons(e.bytes.get(), e.size, -8.0);
}

TEST(GlyphFormats, LineAndCubicRecords) {
    auto contours = Curves(CurvePolygon({0, 0}, {{1, {{0, 10}, {10.5, 10}}}, {3, {{12, 8}, {12, 2}, {10, 0}}}}));
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
    const std::pair<int, bool> cases[] = {{0, false}, {1, true}, {2, false}, {3, true}};  // record type that follows
    for (const auto& [follow, appendsQn] : cases) {
        std::vector<test::CurveRecord> records = {{2, {q1, q2, q3}}};
        if (follow == 1) records.push_back({1, {{50, -5}}});
        if (follow == 2) records.push_back({2, {{50, -5}, {60, 0}}});
        if (follow == 3) records.push_back({3, {{50, -5}, {55, -5}, {60, 0}}});
        auto contours = Curves(CurvePolygon({0, 0}, records));
        ASSERT_EQ(contours.size(), 1u) << follow;
        std::vector<CPoint3D> pts(contours.front().points.begin(), contours.front().points.end());
        ASSERT_GE(pts.size(), 1u + 48u) << follow;
        const CPoint3D s = pts[24];  // not mid(q1, q2)
        for (int k = 1; k <= 24; ++k) {
            const double t = k / 25.0, mt = 1 - t;
            EXPECT_NEAR(pts[24 + k].x, mt * mt * s.x + 2 * mt * t * q2.x + t * t * q3.x, 1e-9) << follow;
            EXPECT_NEAR(pts[24 + k].y, mt * mt * s.y + 2 * mt * t * q2.y + t * t * q3.y, 1e-9) << follow;
        }
        EXPECT_EQ(pts.size() > 49 && pts[49].x == q3.x && pts[49].y == q3.y, appendsQn) << follow;
    }
}

TEST(GlyphFormats, UntrustedCurveRecords) {
    const Data good = CurvePolygon({0, 0}, {{1, {{0, 5}, {5, 5}, {5, 0}}}});
    const auto with = [&good](std::size_t at, std::uint8_t v) {
        Data d = good;
        d[at] = v;
        return d;
    };
    Data truncated(good.begin(), good.end() - 3);
    truncated[0] = static_cast<std::uint8_t>(truncated.size());
    Data secondBad = good;
    secondBad.insert(secondBad.end(), good.begin(), good.begin() + 20);
    Data otherType = with(4, 25);  // not a polygon record: skipped by its cb
    otherType.insert(otherType.end(), good.begin(), good.end());
    const struct {
        const char* name;
        Data data;
        std::vector<std::size_t> sizes;
    } cases[] = {
        {"cb 0", with(0, 0), {}},
        {"cb past the end", with(0, static_cast<std::uint8_t>(good.size() + 1)), {}},
        {"point count past the end", with(18, 200), {1}},
        {"truncated record", truncated, {1}},
        {"second polygon cut short", secondBad, {4}},
        {"other record type first", otherType, {4}},
        {"cubic with a partial triple", CurvePolygon({0, 0}, {{3, {{1, 1}, {2, 2}, {3, 0}, {4, 4}}}}), {25}},
    };
    for (const auto& c : cases) EXPECT_EQ(Sizes(Curves(c.data)), c.sizes) << c.name;
}

TEST(GlyphFormats, GroupedFloats) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const struct {
        const char* name;
        std::vector<float> values;
        std::vector<std::size_t> holesPerGroup;
    } cases[] = {
        {"one group, one hole", {1, 3, 0, 0, 0, 9, 9, 0, 1, 3, 1, 1, 2, 1, 1, 2}, {1}},
        {"count truncated", {1.9f, 3.7f, 0, 0, 0, 9, 9, 0, 0.5f}, {0}},
        {"NaN group count", {nan, 3, 0, 0, 0, 9, 9, 0, 0}, {}},
        {"huge point count", {1, 1e9f, 0, 0, 0, 9}, {}},
        {"NaN coordinate drops the group", {2, 3, 0, nan, 0, 9, 9, 0, 0, 3, 0, 0, 0, 9, 9, 0, 0}, {0}},
        {"infinite coordinate drops the hole", {1, 3, 0, 0, 0, 9, 9, 0, 1, 3, 1, 1, inf, 1, 1, 2}, {0}},
        {"hole count past the end", {1, 3, 0, 0, 0, 9, 9, 0, 7, 3, 1, 1}, {0}},
    };
    for (const auto& c : cases) {
        Data d;
        test::Put<std::int32_t>(d, -1);
        for (float v : c.values) test::Put(d, v);
        Exact e(d);
        ASSERT_TRUE(IsGroupedFloats(e.bytes.get(), e.size));
        std::vector<std::size_t> holes;
        for (const auto& g : ReadGroupedFloats(e.bytes.get(), e.size)) holes.push_back(g.holes.size());
        EXPECT_EQ(holes, c.holesPerGroup) << c.name;
    }
}

TEST(GlyphFormats, PolygonsOfDoubles) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<XY> square = {{0, 0}, {0, 5}, {5, 5}, {5, 0}};
    Data countPast = PolygonGlyph({square});
    countPast[56 + 4] = 99;
    const struct {
        const char* name;
        Data data;
        std::vector<std::size_t> sizes;
    } cases[] = {
        {"two contours", PolygonGlyph({square, {{1, 1}, {2, 2}}}), {4, 2}},
        {"huge contour count", PolygonGlyph({square}, 0xFFFFFFFFu), {4}},
        {"point count past the end", countPast, {}},
        {"NaN drops its contour", PolygonGlyph({{{0, nan}, {1, 1}, {2, 0}}, square}), {4}},
        {"coordinate beyond the limit", PolygonGlyph({{{0, 0}, {1e13, 0}, {0, 1}}, square}), {4}},
    };
    for (const auto& c : cases) {
        Exact e(c.data);
        EXPECT_EQ(Sizes(ReadPolygons(e.bytes.get(), e.size)), c.sizes) << c.name;
    }
}

TEST(GlyphFormats, SinglePath) {
    const Data line = CurvePolygon({0, 0}, {{1, {{0, 5}, {5, 5}}}, {1, {{9, 9}}}});
    const struct {
        const char* name;
        Data data;
        bool ok;
        std::size_t points;
    } cases[] = {
        {"first line record only", line, true, 3},
        {"curve first", CurvePolygon({0, 0}, {{2, {{0, 5}, {5, 5}}}}), false, 0},
        {"too short", Data(line.begin(), line.begin() + 18), false, 0},
    };
    for (const auto& c : cases) {
        Exact e(c.data);
        Coutline path;
        EXPECT_EQ(ReadSinglePath(e.bytes.get(), e.size, -3.0, path), c.ok) << c.name;
        EXPECT_EQ(path.points.size(), c.points) << c.name;
    }
}

}  // namespace
}  // namespace tr
