// Point-in-contour, relations and the even-odd grouping of CCoverageTest,
// and Nest / NestSinglePath built on them.
#include "outline/coverage_test.h"

#include <gtest/gtest.h>

#include <vector>

#include "outline/contour_nesting.h"

namespace tr {
namespace {

Coutline Rect(double x0, double y0, double x1, double y1, bool clockwise) {
    Coutline c;
    c.points = {{x0, y0, 0}, {x0, y1, 0}, {x1, y1, 0}, {x1, y0, 0}};
    if (!clockwise) c.points.reverse();
    c.clockwise = clockwise;
    return c;
}

TEST(CoverageTest, PointInsideIsHalfOpenAndRelationsFollow) {
    const Coutline square = Rect(0, 0, 10, 10, true);
    // Edges count for cur.y <= y < prev.y (or the reverse), and only
    // crossings strictly right of x toggle: bottom and left borders are in,
    // top and right borders out.
    const struct { double x, y; bool inside; } points[] = {
        {5, 5, true}, {5, 0, true}, {0, 5, true}, {5, 10, false}, {10, 5, false}, {-1, 5, false}, {5, -1, false}};
    for (const auto& p : points) EXPECT_EQ(PointInside(square, p.x, p.y), p.inside) << p.x << "," << p.y;
    EXPECT_FALSE(PointInside(Coutline{}, 0, 0));
    const Coutline small = Rect(2, 2, 4, 4, false);
    EXPECT_EQ(Relation(small, square), kRelationInside);
    EXPECT_EQ(Relation(square, small), kRelationContains);
    EXPECT_EQ(Relation(Rect(8, 2, 12, 4, true), square), kRelationOverlap);
    EXPECT_EQ(Relation(Rect(20, 20, 30, 30, true), square), kRelationDisjoint);
    EXPECT_EQ(Relation(square, Coutline{}), kRelationDisjoint);
}

TEST(CoverageTest, GroupingByDepth) {
    // parent: index of the contour directly around each, or -1.
    const struct {
        const char* name;
        std::vector<int> parent;
        std::vector<std::vector<std::uint32_t>> groups;
    } cases[] = {
        {"O with a dot", {-1, 0, 1}, {{0, 1}, {2}}},
        {"dot listed first", {2, -1, 1}, {{1, 2}, {0}}},
        {"B", {-1, 0, 0}, {{0, 1, 2}}},
        {"i", {-1, -1}, {{0}, {1}}},
        {"four deep", {-1, 0, 1, 2}, {{0, 1}, {2, 3}}},
        {"two dots in one counter", {-1, 0, 1, 1}, {{0, 1}, {2}, {3}}},
    };
    for (const auto& c : cases) {
        const std::size_t n = c.parent.size();
        std::vector<std::uint32_t> m(n * n, kRelationDisjoint);
        for (std::size_t i = 0; i < n; ++i) {
            for (int p = c.parent[i]; p >= 0; p = c.parent[p]) {
                m[i * n + p] = kRelationInside;
                m[p * n + i] = kRelationContains;
            }
        }
        CCoverageTest test(m.data(), static_cast<std::uint32_t>(n));
        ASSERT_EQ(test.groupCount, c.groups.size()) << c.name;
        for (std::size_t g = 0; g < c.groups.size(); ++g) EXPECT_EQ(test.groups[g], c.groups[g]) << c.name;
    }
    const std::uint32_t overlap[] = {0, kRelationOverlap, kRelationOverlap, 0};  // neither encloses the other
    CCoverageTest test(overlap, 2);
    ASSERT_EQ(test.groupCount, 2u);
    EXPECT_EQ(test.groups[1], std::vector<std::uint32_t>{1});
}

TEST(ContourNesting, NestMakesOutersClockwiseAndHolesCounterClockwise) {
    std::list<Coutline> contours;
    contours.push_back(Rect(2, 2, 4, 4, true));      // hole, wrong way round
    contours.push_back(Rect(0, 0, 10, 10, false));   // outer, wrong way round
    contours.push_back(Rect(2.5, 2.5, 3, 3, true));  // dot in the counter, right way round
    contours.push_back(Coutline{});                  // empty: no group
    const auto groups = Nest(contours);
    ASSERT_EQ(groups.size(), 2u);
    const CContourGroup& o = groups.front();
    ASSERT_EQ(o.holes.size(), 1u);
    EXPECT_TRUE(o.outer.clockwise && !o.holes.front().clockwise && groups.back().outer.clockwise);
    // Reversed: (10,0) (10,10) (0,10) (0,0) and (2,2) (2,4) (4,4) (4,2); the dot is kept as it is.
    EXPECT_EQ(o.outer.points.front().x, 0.0);
    EXPECT_TRUE(o.holes.front().points.front().x == 4.0 && o.holes.front().points.front().y == 2.0);
    EXPECT_EQ(groups.back().outer.points.front().x, 2.5);
}

TEST(ContourNesting, SinglePathGroupsCounterClockwiseOutersAndClockwiseHoles) {
    std::list<Coutline> contours;
    contours.push_back(Rect(2, 2, 4, 4, true));
    contours.push_back(Rect(0, 0, 10, 10, false));
    contours.push_back(Rect(20, 0, 30, 10, false));
    contours.push_back(Rect(22, 2, 24, 4, true));
    auto groups = NestSinglePath(contours);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_FALSE(groups.front().outer.clockwise) << "nothing is reversed";
    EXPECT_EQ(groups.front().outer.points.front().x, 10.0);
    EXPECT_EQ(groups.front().holes.size(), 2u) << "every hole goes to the first group";
    EXPECT_TRUE(groups.back().holes.empty());
    std::list<Coutline> onlyHoles{Rect(2, 2, 4, 4, true)};
    EXPECT_TRUE(NestSinglePath(onlyHoles).empty());
}

}  // namespace
}  // namespace tr
