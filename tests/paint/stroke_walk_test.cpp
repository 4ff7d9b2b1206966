// Contour walks: join thresholds, round joins and mitres on regular
// polygons, straight continuations, extrusions and smears, read back from a
// recording rasterizer as quad strips.
#include "paint/stroke_walk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <string>

#include "fragment_test_support.h"
#if TR_TEST_WITH_GLYPH_SOURCE
#include "outline/outline_builder.h"
#include "tools/glyph_source/glyph_source.h"
#endif

namespace tr {
namespace {

using trtest::Pair;
using trtest::RecordingRasterizer;
using trtest::Strips;

constexpr double kPi = std::numbers::pi;

// A regular polygon of n vertices on the unit circle scaled by radius,
// counter-clockwise (y up) unless reversed.
std::vector<CPoint3D> Polygon(int n, double radius, bool clockwise) {
    std::vector<CPoint3D> pts;
    for (int i = 0; i < n; ++i) {
        const double a = 2 * kPi * i / n * (clockwise ? -1 : 1);
        pts.push_back({radius * std::cos(a), radius * std::sin(a), 0});
    }
    return pts;
}

ContourView View(const std::vector<CPoint3D>& pts) {
    return ContourView{pts.data(), static_cast<uint32_t>(pts.size())};
}

double Dist(double x0, double y0, double x1, double y1) { return std::hypot(x1 - x0, y1 - y0); }

TEST(ClassifyTurn, ThresholdsOfPlainAndWideStrokes) {
    const double up = std::numeric_limits<double>::infinity();
    auto above = [up](double v) { return std::nextafter(v, up); };
    auto below = [up](double v) { return std::nextafter(v, -up); };
    const double r11 = 3.455751918948773, r122 = 3.8327430373795477, r151 = 4.743804906920587;
    const double l09 = 2.827433388230814, l049 = 1.5393804002589986;
    struct Case {
        double turn;
        StrokeSide side;
        bool wide;
        JoinKind expected;
    };
    const Case cases[] = {
        {kPi, StrokeSide::Right, false, JoinKind::None},
        {r11, StrokeSide::Right, false, JoinKind::None},
        {above(r11), StrokeSide::Right, false, JoinKind::Round},
        {above(r11), StrokeSide::Right, true, JoinKind::None},
        {r122, StrokeSide::Right, true, JoinKind::None},
        {above(r122), StrokeSide::Right, true, JoinKind::Mitre},
        {r151, StrokeSide::Right, true, JoinKind::Mitre},
        {above(r151), StrokeSide::Right, true, JoinKind::Round},
        {0.5 * kPi, StrokeSide::Right, true, JoinKind::None},
        {kPi, StrokeSide::Left, false, JoinKind::None},
        {l09, StrokeSide::Left, false, JoinKind::None},
        {below(l09), StrokeSide::Left, false, JoinKind::Round},
        {l09, StrokeSide::Left, true, JoinKind::None},
        {below(l09), StrokeSide::Left, true, JoinKind::Mitre},
        {l049, StrokeSide::Left, true, JoinKind::Mitre},
        {below(l049), StrokeSide::Left, true, JoinKind::Round},
        {1.5 * kPi, StrokeSide::Left, true, JoinKind::None},
        {std::nan(""), StrokeSide::Right, false, JoinKind::None},
        {std::nan(""), StrokeSide::Left, true, JoinKind::None},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ClassifyTurn(c.turn, c.side, c.wide), c.expected)
            << "turn " << c.turn << " left " << (c.side == StrokeSide::Left) << " wide " << c.wide;
    }
}

// Convex regular polygons stroked on their outer side: every vertex turns by
// 2π/n, so the round join takes trunc(16 × 2 ÷ n) steps of π/16, at least 3.
// Wide right-hand strokes skip turns up to 0.22π past straight and mitre
// those up to 0.51π; wide left-hand strokes mitre every turn from 0.1π to
// 0.51π. (Squares, whose corners sit on the 8-step boundary, are checked
// with exact coordinates below.)
TEST(DrawStroke, JoinPairsPerVertexOfRegularPolygons) {
    struct Case {
        int n;
        bool wide;
        int rightPairs, leftPairs;
    };
    const Case cases[] = {
        {3, false, 10, 10}, {5, false, 6, 6}, {6, false, 5, 5}, {7, false, 4, 4},
        {12, false, 3, 3},  {40, false, 0, 0}, {12, true, 0, 1}, {7, true, 1, 1},
        {6, true, 1, 1},    {5, true, 1, 1},  {3, true, 10, 10}, {40, true, 0, 0},
    };
    for (const Case& c : cases) {
        for (const StrokeSide side : {StrokeSide::Right, StrokeSide::Left}) {
            // The right-hand side of a counter-clockwise contour is outside.
            const bool left = side == StrokeSide::Left;
            const auto pts = Polygon(c.n, 50, left);
            RecordingRasterizer r;
            DrawStroke(r, View(pts), 3.0, side, c.wide);
            const auto strips = Strips(r.calls);
            ASSERT_EQ(strips.size(), 1u);
            const int pairs = left ? c.leftPairs : c.rightPairs;
            EXPECT_EQ(strips[0].size(), 1u + c.n * (2u + pairs))
                << "n " << c.n << " wide " << c.wide << " left " << left;
        }
    }
}

// The square's corners: eight join pairs sweep the normal by π/16 each from
// the incoming edge's normal to the outgoing one's, all at distance w.
TEST(DrawStroke, SquareCornersGetEightRoundJoinPairs) {
    const std::vector<CPoint3D> square = {{0, 0, 0}, {0, 10, 0}, {10, 10, 0}, {10, 0, 0}};
    const double w = 2.0;
    RecordingRasterizer r;
    DrawStroke(r, View(square), w, StrokeSide::Left, false);
    const auto strips = Strips(r.calls);
    ASSERT_EQ(strips.size(), 1u);
    const trtest::Strip& s = strips[0];
    ASSERT_EQ(s.size(), 41u);
    // Edge directions, clockwise square: up, right, down, left. The left-hand
    // normal of direction θ points at θ + π/2.
    const double dirs[4] = {kPi / 2, 0.0, 3 * kPi / 2, kPi};
    for (int e = 0; e < 4; ++e) {
        const CPoint3D& a = square[e];
        const double prev = dirs[(e + 3) % 4];
        for (int j = 1; j <= 8; ++j) {
            const Pair& p = s[1 + e * 10 + (j - 1)];
            const double phi = prev + kPi / 2 - j * (kPi / 2) / 8;
            EXPECT_EQ(p.ax, a.x);
            EXPECT_EQ(p.ay, a.y);
            EXPECT_NEAR(p.bx, a.x + w * std::cos(phi), 1e-12) << e << " " << j;
            EXPECT_NEAR(p.by, a.y + w * std::sin(phi), 1e-12) << e << " " << j;
        }
        const Pair& last = s[1 + e * 10 + 7];
        const Pair& edgeStart = s[1 + e * 10 + 8];
        EXPECT_NEAR(last.bx, edgeStart.bx, 1e-12);  // the sweep ends on the edge normal
        EXPECT_NEAR(last.by, edgeStart.by, 1e-12);
    }
}

TEST(DrawStroke, StraightContinuationAddsNoJoin) {
    // (5, 0) lies on the straight edge from (0, 0) to (10, 0).
    const std::vector<CPoint3D> pts = {{0, 0, 0}, {5, 0, 0}, {10, 0, 0}, {5, 8, 0}};
    for (const StrokeSide side : {StrokeSide::Right, StrokeSide::Left}) {
        for (const bool wide : {false, true}) {
            RecordingRasterizer r;
            DrawStroke(r, View(pts), 1.0, side, wide);
            const auto strips = Strips(r.calls);
            ASSERT_EQ(strips.size(), 1u);
            int atMiddle = 0;
            for (const Pair& p : strips[0]) atMiddle += p.ax == 5 && p.ay == 0;
            EXPECT_EQ(atMiddle, 2);  // end of one edge, start of the next
        }
    }
}

TEST(DrawStroke, WideMitreLiesOnTheBisectorAtTheCornerOfTheOffsetEdges) {
    const std::vector<CPoint3D> square = {{0, 0, 0}, {0, 10, 0}, {10, 10, 0}, {10, 0, 0}};
    const double w = 2.0;
    RecordingRasterizer r;
    DrawStroke(r, View(square), w, StrokeSide::Left, true);
    const auto strips = Strips(r.calls);
    ASSERT_EQ(strips.size(), 1u);
    ASSERT_EQ(strips[0].size(), 13u);
    // The offset edges of a square meet at the corner moved outwards by w on
    // both axes.
    for (int e = 0; e < 4; ++e) {
        const Pair& m = strips[0][1 + e * 3];
        const double cx = square[e].x == 0 ? -w : 10 + w;
        const double cy = square[e].y == 0 ? -w : 10 + w;
        EXPECT_NEAR(m.bx, cx, 1e-12) << e;
        EXPECT_NEAR(m.by, cy, 1e-12) << e;
    }
}

TEST(DrawStroke, EveryOffsetVertexIsAtTheStrokeWidth) {
    const auto pts = Polygon(7, 20, false);
    RecordingRasterizer r;
    DrawStroke(r, View(pts), 4.0, StrokeSide::Right, false);
    const auto strips = Strips(r.calls);
    ASSERT_EQ(strips.size(), 1u);
    for (const Pair& p : strips[0]) {
        EXPECT_NEAR(Dist(p.ax, p.ay, p.bx, p.by), 4.0, 1e-12);
        // Outside a counter-clockwise contour: further from the centre.
        EXPECT_GT(std::hypot(p.bx, p.by), std::hypot(p.ax, p.ay));
    }
    EXPECT_EQ(strips[0].front().ax, pts[0].x);
    EXPECT_EQ(strips[0].back().ax, pts[0].x);  // the closing edge ends on the first point
}

TEST(DrawStrokeExtrusion, ExtrudesTheStrokesOuterEdgeWithPlainJoins) {
    const auto pts = Polygon(5, 30, true);
    RecordingRasterizer stroke, shadow;
    DrawStroke(stroke, View(pts), 3.0, StrokeSide::Left, false);
    DrawStrokeExtrusion(shadow, View(pts), 3.0, StrokeSide::Left, 7.0, -2.0);
    const auto s = Strips(stroke.calls), e = Strips(shadow.calls);
    ASSERT_EQ(s.size(), 1u);
    ASSERT_EQ(e.size(), 1u);
    ASSERT_EQ(e[0].size(), s[0].size());
    for (size_t i = 0; i < s[0].size(); ++i) {
        EXPECT_EQ(e[0][i].ax, s[0][i].bx);
        EXPECT_EQ(e[0][i].ay, s[0][i].by);
        EXPECT_EQ(e[0][i].bx, s[0][i].bx + 7.0);
        EXPECT_EQ(e[0][i].by, s[0][i].by - 2.0);
    }
}

TEST(DrawExtrusion, PairsRunOverTheShiftedPointsAndCloseOnTheFirst) {
    const std::vector<CPoint3D> pts = {{1, 2, 0}, {4, 2, 0}, {4, 6, 0}};
    struct Case {
        double shiftX, shiftY;
    };
    for (const Case c : {Case{0, 0}, Case{0, 3}, Case{3, 0}}) {
        RecordingRasterizer r;
        DrawExtrusion(r, View(pts), c.shiftX, c.shiftY, 5, -1);
        const auto strips = Strips(r.calls);
        ASSERT_EQ(strips.size(), 1u);
        ASSERT_EQ(strips[0].size(), 4u);
        for (size_t i = 0; i < 4; ++i) {
            const CPoint3D& p = pts[i % 3];
            const Pair& q = strips[0][i];
            EXPECT_EQ(q.ax, p.x + c.shiftX);
            EXPECT_EQ(q.ay, p.y + c.shiftY);
            EXPECT_EQ(q.bx, p.x + c.shiftX + 5);
            EXPECT_EQ(q.by, p.y + c.shiftY - 1);
        }
    }
}

TEST(DrawSmear, TwoStripsOneEachWay) {
    const std::vector<CPoint3D> pts = {{1, 2, 0}, {4, 2, 0}, {4, 6, 0}};
    RecordingRasterizer r;
    DrawSmear(r, View(pts), 0, 2.5);
    const auto strips = Strips(r.calls);
    ASSERT_EQ(strips.size(), 2u);
    for (int s = 0; s < 2; ++s) {
        ASSERT_EQ(strips[s].size(), 4u);
        for (size_t i = 0; i < 4; ++i) {
            const CPoint3D& p = pts[i % 3];
            EXPECT_EQ(strips[s][i].ax, p.x);
            EXPECT_EQ(strips[s][i].bx, p.x);
            EXPECT_EQ(strips[s][i].by, s == 0 ? p.y + 2.5 : p.y - 2.5);
        }
    }
}

TEST(ContourWalks, EmptyContourEmitsNothing) {
    RecordingRasterizer r;
    const ContourView empty{};
    DrawStroke(r, empty, 1, StrokeSide::Left, true);
    DrawStrokeExtrusion(r, empty, 1, StrokeSide::Right, 1, 1);
    DrawExtrusion(r, empty, 0, 0, 1, 1);
    DrawSmear(r, empty, 1, 0);
    EXPECT_TRUE(r.calls.empty());
}

TEST(ContourWalks, NonFiniteWidthsStillPairEveryVertex) {
    const auto pts = Polygon(4, 10, false);
    for (const double w : {std::nan(""), 1e300, -1e300, std::numeric_limits<double>::infinity()}) {
        RecordingRasterizer r;
        DrawStroke(r, View(pts), w, StrokeSide::Right, true);
        DrawStrokeExtrusion(r, View(pts), w, StrokeSide::Left, w, w);
        const auto strips = Strips(r.calls);
        EXPECT_EQ(strips.size(), 2u) << w;
    }
}

// ---- the default walk against its plain twin --------------------------------

// Bit-for-bit equality of two recordings (NaN arguments included).
::testing::AssertionResult SameCalls(const std::vector<trtest::Call>& a,
                                     const std::vector<trtest::Call>& b) {
    if (a.size() != b.size()) {
        return ::testing::AssertionFailure() << a.size() << " calls against " << b.size();
    }
    for (size_t i = 0; i < a.size(); ++i) {
        // Calls without arguments have no data to compare (memcmp must not
        // see their null pointers).
        const bool same = a[i].name == b[i].name && a[i].args.size() == b[i].args.size() &&
                          (a[i].args.empty() ||
                           std::memcmp(a[i].args.data(), b[i].args.data(),
                                       a[i].args.size() * sizeof(double)) == 0);
        if (!same) return ::testing::AssertionFailure() << "call " << i << " " << a[i].name;
    }
    return ::testing::AssertionSuccess();
}

// Strokes and stroke extrusions of one contour, on both sides, plain and
// wide, through both walks.
::testing::AssertionResult WalksAgree(ContourView c, double w, double ox, double oy) {
    RecordingRasterizer fast, plain;
    for (const StrokeSide side : {StrokeSide::Right, StrokeSide::Left}) {
        for (const bool wide : {false, true}) {
            DrawStroke(fast, c, w, side, wide);
            DrawStrokePlain(plain, c, w, side, wide);
        }
        DrawStrokeExtrusion(fast, c, w, side, ox, oy);
        DrawStrokeExtrusionPlain(plain, c, w, side, ox, oy);
    }
    return SameCalls(fast.calls, plain.calls);
}

// Random contours: jittered polygons of either orientation, with collinear
// runs, repeated points, sharp spikes and closing edges along +x, and a few
// with non-finite widths.
TEST(StrokeWalkTwins, RandomContoursEmitTheSamePairs) {
    std::mt19937 rng(31337);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int n = 0; n < 1500; ++n) {
        const int count = 1 + static_cast<int>(rng() % 40);
        const bool clockwise = rng() % 2 == 0;
        std::vector<CPoint3D> pts;
        for (int i = 0; i < count; ++i) {
            const double a = 2 * kPi * i / count * (clockwise ? -1 : 1);
            const double r = 20 + (rng() % 4 == 0 ? 15 * u(rng) : 2 * u(rng));
            pts.push_back({r * std::cos(a), r * std::sin(a), 0});
            const uint32_t what = rng() % 16;
            if (what == 0 && i > 0) pts.back() = pts[i - 1];                  // repeated point
            if (what == 1 && i > 1) {                                        // collinear run
                pts.back().x = 2 * pts[i - 1].x - pts[i - 2].x;
                pts.back().y = 2 * pts[i - 1].y - pts[i - 2].y;
            }
        }
        if (n % 7 == 0) pts.back().y = pts.front().y, pts.back().x = pts.front().x - 5;
        const double w = n % 50 == 0 ? std::nan("") : 0.5 + 8 * (u(rng) + 1);
        const uint32_t seed = static_cast<uint32_t>(n);
        ASSERT_TRUE(WalksAgree(ContourView{pts.data(), static_cast<uint32_t>(pts.size())}, w,
                               5 * u(rng), 5 * u(rng)))
            << "case " << seed << " points " << count;
    }
}

#if TR_TEST_WITH_GLYPH_SOURCE
// Every contour of the printable ASCII glyphs of DejaVu Sans at 64 px, as
// the outline builder makes them.
TEST(StrokeWalkTwins, GlyphContoursEmitTheSamePairs) {
    auto source = tools::GlyphSource::Open(tools::kDefaultFont, 64,
                                           tools::GlyphFormat::CurveRecords);
    if (!source) GTEST_SKIP() << "font not found";
    int contours = 0;
    for (uint16_t code = 33; code < 127; ++code) {
        const OutlineRequest request = MakeOutlineRequest(
            source->Context(), OUTLINE_NO_CACHE, 64, &tools::GlyphSource::Callback, code, 0, 0);
        const OutlineBuild build = BuildOutline(request);
        for (const CContourGroup& g : build.groups) {
            std::vector<const Coutline*> all = {&g.outer};
            for (const Coutline& h : g.holes) all.push_back(&h);
            for (const Coutline* c : all) {
                const std::vector<CPoint3D> pts(c->points.begin(), c->points.end());
                const ContourView view{pts.data(), static_cast<uint32_t>(pts.size())};
                for (const double w : {3.0 * 4, 1.5 * 4, 7.25 * 4}) {
                    ASSERT_TRUE(WalksAgree(view, w, 6, -4)) << "glyph " << code << " width " << w;
                }
                ++contours;
            }
        }
    }
    EXPECT_GT(contours, 100);
}
#endif

}  // namespace
}  // namespace tr
