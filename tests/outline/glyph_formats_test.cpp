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

using test::CurveGlyph;
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

// Quadratic record q1 q2 q3: piece 1 from the current point with control q1
// to mid(q1, q2), piece 2 from piece 1's last appended point with control q2
// to q3; 24 points each; q3 itself only when a line or cubic follows.
TEST(GlyphFormats, QuadraticPiecesAndTheClosingPointRule) {
    const XY q1{10, 20}, q2{30, 20}, q3{40.5, -0.25};  // 16.16 fractions
    const std::pair<int, bool> cases[] = {{0, false}, {1, true}, {2, false}, {3, true}};  // record type that follows
    for (const auto& [follow, appendsQn] : cases) {
        CurveGlyph glyph;
        glyph.Polygon({0, 0}).Record(2, {q1, q2, q3});
        if (follow == 1) glyph.Record(1, {{50, -5}});
        if (follow == 2) glyph.Record(2, {{50, -5}, {60, 0}});
        if (follow == 3) glyph.Record(3, {{50, -5}, {55, -5}, {60, 0}});
        auto contours = Curves(glyph.Data());
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
        EXPECT_EQ(pts.back().z, -8.0) << follow;
    }
}

enum Format { kCurves, kFloats, kDoubles, kSinglePath };

// What a reader keeps, in one list: points per contour (curve records,
// doubles, the single path) or holes per group (grouped floats).
std::vector<std::size_t> Kept(Format format, const Data& data) {
    Exact e(data);
    std::vector<std::size_t> kept;
    if (format == kCurves) return Sizes(ReadCurvePolygons(e.bytes.get(), e.size, 0.0));
    if (format == kDoubles) return Sizes(ReadPolygons(e.bytes.get(), e.size));
    if (format == kFloats) {
        EXPECT_TRUE(IsGroupedFloats(e.bytes.get(), e.size));
        for (const auto& g : ReadGroupedFloats(e.bytes.get(), e.size)) kept.push_back(g.holes.size());
    }
    Coutline path;
    if (format == kSinglePath && ReadSinglePath(e.bytes.get(), e.size, 0.0, path)) kept.push_back(path.points.size());
    return kept;
}

TEST(GlyphFormats, WhatIsKeptOfUntrustedData) {
    const Data good = CurveGlyph().Polygon({0, 0}).Record(1, {{0, 5}, {5, 5}, {5, 0}}).Data();
    const auto with = [](Data d, std::size_t at, std::uint8_t v) {
        d[at] = v;
        return d;
    };
    Data truncated(good.begin(), good.end() - 3), secondCut = good, otherType = with(good, 4, 25);
    truncated[0] = static_cast<std::uint8_t>(truncated.size());
    secondCut.insert(secondCut.end(), good.begin(), good.begin() + 20);
    otherType.insert(otherType.end(), good.begin(), good.end());  // not a polygon record: skipped by its cb
    const auto floats = [](const std::vector<float>& values) {
        Data d;
        test::Put<std::int32_t>(d, -1);
        for (float v : values) test::Put(d, v);
        return d;
    };
    const float fnan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<XY> square = {{0, 0}, {0, 5}, {5, 5}, {5, 0}};
    const Data line = CurveGlyph().Polygon({0, 0}).Record(1, {{0, 5}, {5, 5}}).Record(1, {{9, 9}}).Data();
    const struct {
        const char* name;
        Format format;
        Data data;
        std::vector<std::size_t> kept;
    } cases[] = {
        {"cb 0", kCurves, with(good, 0, 0), {}},
        {"cb past the end", kCurves, with(good, 0, static_cast<std::uint8_t>(good.size() + 1)), {}},
        {"point count past the end", kCurves, with(good, 18, 200), {1}},
        {"truncated record", kCurves, truncated, {1}},
        {"second polygon cut short", kCurves, secondCut, {4}},
        {"other record type first", kCurves, otherType, {4}},
        {"cubic, partial triple", kCurves,
         CurveGlyph().Polygon({0, 0}).Record(3, {{1, 1}, {2, 2}, {3, 0}, {4, 4}}).Data(), {25}},
        {"one group, one hole", kFloats, floats({1, 3, 0, 0, 0, 9, 9, 0, 1, 3, 1, 1, 2, 1, 1, 2}), {1}},
        {"counts truncated", kFloats, floats({1.9f, 3.7f, 0, 0, 0, 9, 9, 0, 0.5f}), {0}},
        {"NaN group count", kFloats, floats({fnan, 3, 0, 0, 0, 9, 9, 0, 0}), {}},
        {"huge point count", kFloats, floats({1, 1e9f, 0, 0, 0, 9}), {}},
        {"NaN drops the group", kFloats, floats({2, 3, 0, fnan, 0, 9, 9, 0, 0, 3, 0, 0, 0, 9, 9, 0, 0}), {0}},
        {"infinity drops the hole", kFloats, floats({1, 3, 0, 0, 0, 9, 9, 0, 1, 3, 1, 1, inf, 1, 1, 2}), {0}},
        {"hole count past the end", kFloats, floats({1, 3, 0, 0, 0, 9, 9, 0, 7, 3, 1, 1}), {0}},
        {"two contours", kDoubles, PolygonGlyph({square, {{1, 1}, {2, 2}}}), {4, 2}},
        {"huge contour count", kDoubles, PolygonGlyph({square}, 0xFFFFFFFFu), {4}},
        {"point count past the end", kDoubles, with(PolygonGlyph({square}), 56 + 4, 99), {}},
        {"NaN drops its contour", kDoubles, PolygonGlyph({{{0, nan}, {1, 1}, {2, 0}}, square}), {4}},
        {"beyond the limit", kDoubles, PolygonGlyph({{{0, 0}, {1e13, 0}, {0, 1}}, square}), {4}},
        {"first line record only", kSinglePath, line, {3}},
        {"curve first", kSinglePath, CurveGlyph().Polygon({0, 0}).Record(2, {{0, 5}, {5, 5}}).Data(), {}},
        {"too short", kSinglePath, Data(line.begin(), line.begin() + 18), {}},
    };
    for (const auto& c : cases) EXPECT_EQ(Kept(c.format, c.data), c.kept) << c.name;
}

}  // namespace
}  // namespace tr
