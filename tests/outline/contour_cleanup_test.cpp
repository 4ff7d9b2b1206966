// Contour clean-up passes: duplicates, loop removal (against its restarting
// reference) and orientation. Simplification and edge angles are checked
// through whole outlines (outline2_test, outline_builder_test).
#include "outline/contour_cleanup.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tr {
namespace {

struct XY {
    double x, y;
    bool operator==(const XY&) const = default;
};

Coutline Make(const std::vector<XY>& xy) {
    Coutline c;
    for (const XY& p : xy) c.points.push_back(CPoint3D{p.x, p.y, 0.0});
    return c;
}

std::vector<XY> Points(const Coutline& c) {
    std::vector<XY> out;
    for (const CPoint3D& p : c.points) out.push_back({p.x, p.y});
    return out;
}

TEST(ContourCleanup, DuplicatesCompareXYZButTheClosingPairOnlyXY) {
    Coutline c;
    c.points = {{0, 0, 1}, {0, 0, 1}, {0, 0, 2}, {1, 0, 2}, {1, 0, 2}, {1, 0, 2}, {0, 0, 1}};
    RemoveConsecutiveDuplicates(c);
    ASSERT_EQ(c.points.size(), 4u);
    EXPECT_EQ(std::next(c.points.begin())->z, 2.0) << "same x, y but another z stays";
    Coutline closing = Make({{0, 0}, {5, 0}, {5, 5}, {0, 0}});
    closing.points.back().z = 2.0;
    RemoveClosingDuplicate(closing);
    ASSERT_EQ(closing.points.size(), 3u);
    EXPECT_EQ(closing.points.back().z, 2.0) << "the first point goes, the last stays";
    Coutline open = Make({{0, 0}, {5, 0}, {5, 5}, {0, 1}});
    RemoveClosingDuplicate(open);
    EXPECT_EQ(open.points.size(), 4u);
}

TEST(ContourCleanup, LoopRemovalCases) {
    // A comb whose last tooth folds back across the first edge: the edges
    // that cross are 12 apart, beyond the ten-edge window.
    std::vector<XY> comb = {{0, 0}, {1, 0}};
    for (int i = 0; i < 5; ++i) comb.insert(comb.end(), {{1.0 + i, 2}, {1.5 + i, 2}});
    comb.insert(comb.end(), {{0.5, 5}, {0.5, -1}, {-3, -1}});
    const struct { const char* name; std::vector<XY> in, out; } cases[] = {
        // Edge p2p3 crosses p5p6 at (4, 0): loop p3..p5 (3 of 8 points) goes.
        {"small loop", {{0, 0}, {2, 0}, {6, 0}, {6, 3}, {4, 3}, {4, -2}, {10, -2}, {0, -6}},
         {{0, 0}, {2, 0}, {4, -2}, {10, -2}, {0, -6}}},
        // Bow tie: p1p2 crosses p3p4, k = 2 = n div 2, so p2 and p3 go.
        {"bow tie", {{0, 0}, {4, 4}, {4, 0}, {0, 4}}, {{0, 0}, {0, 4}}},
        // Only the closing edge p6p1 crosses an edge (p2p3 at (2, 0));
        // n - k = 4 > 3, so p1..p3 go.
        {"closing edge", {{0, 0}, {2, -2}, {2, 2}, {6, 2}, {6, -4}, {4, 0}}, {{6, 2}, {6, -4}, {4, 0}}},
        // Touching at an end point is not a crossing (parameters strictly inside).
        {"touching", {{0, 0}, {4, 0}, {4, 4}, {2, 0}, {2, -3}}, {{0, 0}, {4, 0}, {4, 4}, {2, 0}, {2, -3}}},
        {"beyond the window", comb, comb},
    };
    for (const auto& c : cases) {
        Coutline contour = Make(c.in);
        RemoveLoops(contour);
        EXPECT_EQ(Points(contour), c.out) << c.name;
    }
}

TEST(ContourCleanup, ResumedLoopRemovalMatchesTheRestartFromTheStart) {
    // Random walks with frequent self-crossings, many loops per contour.
    std::mt19937 rng(1234);
    std::uniform_real_distribution<double> step(-3.0, 3.0);
    std::uniform_int_distribution<int> length(4, 400);
    for (int trial = 0; trial < 3000; ++trial) {
        std::vector<XY> walk;
        double x = 0, y = 0;
        const int n = length(rng);
        for (int i = 0; i < n; ++i) {
            x += step(rng) + 0.3;  // a drift keeps some contours loop-free
            y += step(rng);
            walk.push_back({std::round(x * 8) / 8, std::round(y * 8) / 8});  // ties and touches
        }
        Coutline fast = Make(walk), plain = Make(walk);
        RemoveLoops(fast);
        RemoveLoopsFromStart(plain);
        ASSERT_EQ(Points(fast), Points(plain)) << "trial " << trial << ", " << n << " points";
    }
}

TEST(ContourCleanup, Orientation) {
    const struct { const char* name; std::vector<XY> points; bool clockwise; } cases[] = {
        {"clockwise square", {{0, 0}, {0, 10}, {10, 10}, {10, 0}}, true},
        {"counter-clockwise square", {{0, 0}, {10, 0}, {10, 10}, {0, 10}}, false},
        // The lowest point (10, 0) sits in a notch whose tiny triangle runs
        // the other way; widening to (10, 10) and (0, 0) gives the truth.
        {"collinear neighbourhood", {{0, 0}, {0, 10}, {10, 10}, {9.999, 1e-7}, {10, 0}, {10, 0.001}}, true},
        // Lowest y tie: the largest x wins, (4, 0), between (4, 4) and (0, 0).
        {"tie on lowest y", {{0, 0}, {0, 4}, {4, 4}, {4, 0}}, true},
    };
    for (const auto& c : cases) {
        Coutline contour = Make(c.points);
        contour.clockwise = !c.clockwise;
        Orient(contour);
        EXPECT_EQ(contour.clockwise, c.clockwise) << c.name;
    }
}

}  // namespace
}  // namespace tr
