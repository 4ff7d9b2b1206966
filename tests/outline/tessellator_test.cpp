// GLU tessellation of groups, boundary extraction and the sliver test.
#include "outline/tessellator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include "block_view.h"

namespace tr {
namespace {

Coutline Make(const std::vector<std::pair<double, double>>& xy) {
    Coutline c;
    for (auto [x, y] : xy) c.points.push_back(CPoint3D{x, y, -1.0});
    return c;
}

// Sum of the triangle areas; indices address outer, hole and extra points in turn.
double TiledArea(const CContourGroup& g) {
    test::GroupView view{{}, {}, g.triangles, {g.outer.points.begin(), g.outer.points.end()}};
    for (const auto& h : g.holes) view.all.insert(view.all.end(), h.points.begin(), h.points.end());
    view.all.insert(view.all.end(), g.extraVertices.points.begin(), g.extraVertices.points.end());
    return test::TiledArea({view});
}

TEST(Tessellator, CrossingEdgesAddAnExtraVertexNumberedAfterTheInput) {
    CContourGroup g;
    g.outer = Make({{0, 0}, {4, 4}, {4, 0}, {0, 4}});  // bow tie crossing at (2, 2)
    Tessellate(g);
    ASSERT_EQ(g.extraVertices.points.size(), 1u);
    EXPECT_TRUE(g.extraVertices.points.front().x == 2.0 && g.extraVertices.points.front().y == 2.0);
    EXPECT_NE(std::find(g.triangles.begin(), g.triangles.end(), 4u), g.triangles.end());
    EXPECT_DOUBLE_EQ(TiledArea(g), 8.0);  // two triangles of area 4
}

TEST(Tessellator, ConcurrentTessellationsGiveIdenticalResults) {
    const auto star = [] {
        CContourGroup g;
        for (int i = 0; i < 10; ++i) {
            const double r = i % 2 == 0 ? 10.0 : 4.0, a = i * 3.14159265358979 / 5;
            g.outer.points.push_back(CPoint3D{r * std::cos(a), r * std::sin(a), 0.0});
        }
        Tessellate(g);
        return g.triangles;
    };
    const auto reference = star();
    std::vector<std::vector<std::uint32_t>> results(4);
    std::vector<std::thread> threads;
    for (auto& r : results) threads.emplace_back([&r, &star] { for (int k = 0; k < 50; ++k) r = star(); });
    for (auto& t : threads) t.join();
    for (const auto& r : results) EXPECT_EQ(r, reference);
}

TEST(Tessellator, BoundaryOfASelfOverlappingPath) {
    // A figure eight traced as one path: two boundary loops.
    const auto contours = Boundary(Make({{0, 0}, {10, 10}, {10, 0}, {0, 10}}), 0, 0);
    ASSERT_EQ(contours.size(), 2u);
    for (const auto& c : contours) EXPECT_TRUE(c.points.size() == 3u && c.points.front().z == 0.0);
    // Odd and non-zero rules differ on a doubly wound square.
    const Coutline twice = Make({{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {0, 10}, {10, 10}, {10, 0}});
    EXPECT_EQ(Boundary(twice, 0x1000, 0).size(), 1u);
    EXPECT_EQ(Boundary(twice, 0, 0).size(), 0u);
    // Option bit 0 empties sliver contours (sides 10, 3, 10, 3).
    const Coutline thin = Make({{0, 0}, {0, 10}, {3, 10}, {3, 0}});
    for (std::uint32_t option : {0u, 1u}) {
        const auto kept = Boundary(thin, 0, option);
        ASSERT_EQ(kept.size(), 1u);
        EXPECT_EQ(kept.front().points.size(), option ? 0u : 4u);
    }
}

TEST(Tessellator, SliverTable) {
    const struct { const char* name; std::vector<std::pair<double, double>> points; bool sliver; } cases[] = {
        {"two points", {{0, 0}, {100, 0}}, true},
        {"triangle, one short side", {{0, 0}, {100, 0}, {100, 3.9}}, true},
        {"triangle, sides of 4", {{0, 0}, {4, 0}, {4, 4}}, false},
        {"quad s1 s3 short", {{0, 0}, {3, 0}, {3, 50}, {0, 50}}, true},
        {"quad s2 s4 short", {{0, 0}, {50, 0}, {50, 3}, {0, 3}}, true},
        {"quad s1 s2 short", {{0, 0}, {3, 0}, {3, 3}, {0, 50}}, false},
        {"pentagon s1 s3 s5", {{0, 0}, {1, 0}, {1, 50}, {2, 50}, {2, 1}}, true},
        {"pentagon s2 s4 s5", {{0, 0}, {0, 50}, {1, 50}, {1, 1}, {1, 0}}, true},
        {"pentagon s1 s3 only", {{0, 0}, {1, 0}, {1, 50}, {2, 50}, {20, 1}}, false},
        {"hexagon of short sides", {{0, 0}, {1, 0}, {2, 0}, {2, 1}, {1, 1}, {0, 1}}, false},
    };
    for (const auto& c : cases) EXPECT_EQ(IsSliver(Make(c.points)), c.sliver) << c.name;
}

}  // namespace
}  // namespace tr
