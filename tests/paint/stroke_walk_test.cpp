// Contour walks: join thresholds and steps, round joins and mitres on
// squares, extrusions and smears, read back from a recording rasterizer as
// quad strips; and the default stroke walk against its plain twin on random
// contours.
#include "paint/stroke_walk.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>

#include "fragment_test_support.h"
#include "outline/contour_cleanup.h"

namespace tr {
namespace {

using trtest::Pair;
using trtest::RecordingRasterizer;
using trtest::Strips;

constexpr double kPi = std::numbers::pi;
constexpr StrokeSide kRight = StrokeSide::Right, kLeft = StrokeSide::Left;

// A regular polygon of n vertices of the given radius, counter-clockwise
// (y up) unless reversed.
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

TEST(ClassifyTurn, ThresholdsOfPlainAndWideStrokes) {
    const double up = std::numeric_limits<double>::infinity(), nan = std::nan("");
    auto above = [up](double v) { return std::nextafter(v, up); };
    auto below = [up](double v) { return std::nextafter(v, -up); };
    const double r11 = 3.455751918948773, r122 = 3.8327430373795477, r151 = 4.743804906920587;
    const double l09 = 2.827433388230814, l049 = 1.5393804002589986;
    using enum JoinKind;
    const struct {
        double turn;
        StrokeSide side;
        bool wide;
        JoinKind expected;
    } cases[] = {
        {kPi, kRight, false, None},         {r11, kRight, false, None},
        {above(r11), kRight, false, Round}, {above(r11), kRight, true, None},
        {r122, kRight, true, None},         {above(r122), kRight, true, Mitre},
        {r151, kRight, true, Mitre},        {above(r151), kRight, true, Round},
        {0.5 * kPi, kRight, true, None},    {kPi, kLeft, false, None},
        {l09, kLeft, false, None},          {below(l09), kLeft, false, Round},
        {l09, kLeft, true, None},           {below(l09), kLeft, true, Mitre},
        {l049, kLeft, true, Mitre},         {below(l049), kLeft, true, Round},
        {1.5 * kPi, kLeft, true, None},     {nan, kRight, false, None},
        {nan, kLeft, true, None},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ClassifyTurn(c.turn, c.side, c.wide), c.expected)
            << c.turn << (c.side == kLeft ? " left" : " right") << (c.wide ? " wide" : "");
    }
}

// Round joins take steps of at most π/16 over the turn's deviation from π,
// at least 3: the turns of regular n-gons (2π/n past straight).
TEST(RoundJoinSteps, StepsOfASixteenthOfPi) {
    const std::pair<int, int> cases[] = {{3, 10}, {5, 6}, {7, 4}, {12, 3}};  // n, steps
    for (const auto& [n, steps] : cases) {
        EXPECT_EQ(RoundJoinSteps(kPi + 2 * kPi / n, kRight), steps) << n;
        EXPECT_EQ(RoundJoinSteps(kPi - 2 * kPi / n, kLeft), steps) << n;
    }
}

// A square stroked on its outer side: at each corner eight join pairs
// sweep the normal by π/16 each from the incoming edge's normal towards
// the outgoing one's, at distance w; the wide stroke puts one mitre pair
// at the corner of the offset edges, moved outwards by w on both axes.
TEST(DrawStroke, SquareCornersGetEightRoundJoinPairsOrOneMitre) {
    const double w = 2.0;
    for (const StrokeSide side : {kRight, kLeft}) {
        const bool left = side == kLeft;
        // Left: clockwise (up, right, down, left); right: counter-clockwise.
        const std::vector<CPoint3D> square =
            left ? std::vector<CPoint3D>{{0, 0, 0}, {0, 10, 0}, {10, 10, 0}, {10, 0, 0}}
                 : std::vector<CPoint3D>{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}};
        const double dirs[4] = {left ? kPi / 2 : 0.0, left ? 0.0 : kPi / 2, left ? 1.5 * kPi : kPi,
                                left ? kPi : 1.5 * kPi};
        RecordingRasterizer round, mitre;
        DrawStroke(round, View(square), w, side, false);
        DrawStroke(mitre, View(square), w, side, true);
        const auto s = Strips(round.calls), m = Strips(mitre.calls);
        ASSERT_EQ(s.size(), 1u);
        ASSERT_EQ(s[0].size(), 41u);
        ASSERT_EQ(m.size(), 1u);
        ASSERT_EQ(m[0].size(), 13u);
        for (int e = 0; e < 4; ++e) {
            const CPoint3D& a = square[e];
            for (int j = 1; j <= 8; ++j) {
                const Pair& p = s[0][1 + e * 10 + (j - 1)];
                const double phi = dirs[(e + 3) % 4] + (left ? 1 : -1) * (kPi / 2 - j * kPi / 16);
                EXPECT_EQ(p.ax, a.x);
                EXPECT_EQ(p.ay, a.y);
                EXPECT_NEAR(p.bx, a.x + w * std::cos(phi), 1e-12) << e << " " << j;
                EXPECT_NEAR(p.by, a.y + w * std::sin(phi), 1e-12) << e << " " << j;
            }
            const Pair& corner = m[0][1 + e * 3];
            EXPECT_NEAR(corner.bx, a.x == 0 ? -w : 10 + w, 1e-12) << e;
            EXPECT_NEAR(corner.by, a.y == 0 ? -w : 10 + w, 1e-12) << e;
        }
    }
}

TEST(DrawStrokeExtrusion, ExtrudesTheStrokesOuterEdgeWithPlainJoins) {
    const auto pts = Polygon(5, 30, true);
    RecordingRasterizer stroke, shadow;
    DrawStroke(stroke, View(pts), 3.0, kLeft, false);
    DrawStrokeExtrusion(shadow, View(pts), 3.0, kLeft, 7.0, -2.0);
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

// Extrusions run over the shifted points, smears make one strip each way;
// every strip closes on the first point again. An empty contour emits
// nothing.
TEST(DrawExtrusionAndSmear, PairsOverEveryPointClosingOnTheFirst) {
    const std::vector<CPoint3D> pts = {{1, 2, 0}, {4, 2, 0}, {4, 6, 0}};
    RecordingRasterizer r;
    DrawExtrusion(r, View(pts), 3, 6, 5, -1);
    DrawSmear(r, View(pts), 3, 2.5);
    DrawStroke(r, ContourView{}, 1, kLeft, true);
    DrawExtrusion(r, ContourView{}, 0, 0, 1, 1);
    DrawSmear(r, ContourView{}, 1, 0);
    const auto strips = Strips(r.calls);
    ASSERT_EQ(strips.size(), 3u);
    for (const auto& strip : strips) ASSERT_EQ(strip.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        const double x = pts[i % 3].x, y = pts[i % 3].y;
        const Pair expected[3] = {
            {x + 3, y + 6, x + 8, y + 5}, {x, y, x + 3, y + 2.5}, {x, y, x - 3, y - 2.5}};
        for (int k = 0; k < 3; ++k) {
            const Pair& got = strips[k][i];
            EXPECT_TRUE(got.ax == expected[k].ax && got.ay == expected[k].ay &&
                        got.bx == expected[k].bx && got.by == expected[k].by)
                << "strip " << k << " pair " << i;
        }
    }
}

// ---- the default walk against its plain twin --------------------------------

// Strokes and stroke extrusions of one contour, on both sides, plain and
// wide, through both walks: the same calls with the same bits (NaN too).
bool WalksAgree(ContourView c, double w, double ox, double oy) {
    RecordingRasterizer fast, plain;
    for (const StrokeSide side : {kRight, kLeft}) {
        for (const bool wide : {false, true}) {
            DrawStroke(fast, c, w, side, wide);
            DrawStrokePlain(plain, c, w, side, wide);
        }
        DrawStrokeExtrusion(fast, c, w, side, ox, oy);
        DrawStrokeExtrusionPlain(plain, c, w, side, ox, oy);
    }
    bool same = fast.calls.size() == plain.calls.size();
    for (size_t i = 0; same && i < fast.calls.size(); ++i) {
        const auto &a = fast.calls[i].args, &b = plain.calls[i].args;
        same = fast.calls[i].name == plain.calls[i].name && a.size() == b.size() &&
               (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
    }
    return same;
}

// Jittered polygons of either orientation, with collinear runs, repeated
// points, sharp spikes, closing edges along +x and edges just below it
// (their stored direction rounds up to 2π), and a few NaN widths; each
// with hand-made z (the walk must recompute) and with the directions the
// outline builder stores.
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
            if (what == 0 && i > 0) pts.back() = pts[i - 1];
            if (what == 1 && i > 1) {
                pts.back().x = 2 * pts[i - 1].x - pts[i - 2].x;
                pts.back().y = 2 * pts[i - 1].y - pts[i - 2].y;
            }
            if (what == 2 && i > 0) pts.back() = {pts[i - 1].x + 3, pts[i - 1].y - 1e-300, 0};
        }
        if (n % 7 == 0) pts.back().y = pts.front().y, pts.back().x = pts.front().x - 5;
        if (n % 11 == 0) pts.back().y = pts.front().y + 1e-18, pts.back().x = pts.front().x - 5;
        const double w = n % 50 == 0 ? std::nan("") : 0.5 + 8 * (u(rng) + 1);
        const double ox = 5 * u(rng), oy = 5 * u(rng);
        ASSERT_TRUE(WalksAgree(View(pts), w, ox, oy)) << "case " << n;
        Coutline contour;
        contour.points.assign(pts.begin(), pts.end());
        SetEdgeAngles(contour);
        const std::vector<CPoint3D> stored(contour.points.begin(), contour.points.end());
        ContourView view = View(stored);
        view.directionsStored = true;
        ASSERT_TRUE(WalksAgree(view, w, ox, oy)) << "case " << n << ", stored directions";
    }
}

}  // namespace
}  // namespace tr
