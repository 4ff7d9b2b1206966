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
    if (clockwise) {
        c.points = {{x0, y0, 0}, {x0, y1, 0}, {x1, y1, 0}, {x1, y0, 0}};
    } else {
        c.points = {{x0, y0, 0}, {x1, y0, 0}, {x1, y1, 0}, {x0, y1, 0}};
    }
    c.clockwise = clockwise;
    return c;
}

TEST(CoverageTest, PointInsideIsHalfOpen) {
    const Coutline square = Rect(0, 0, 10, 10, true);
    struct Case {
        double x, y;
        bool inside;
    };
    // Edges count for cur.y <= y < prev.y (or the reverse), and only
    // crossings strictly right of x toggle: the bottom and left borders are
    // in, the top and right borders out.
    const Case cases[] = {{5, 5, true}, {5, 0, true}, {0, 5, true}, {5, 10, false}, {10, 5, false},
                          {-1, 5, false}, {5, -1, false}, {11, 5, false}};
    for (const Case& c : cases) EXPECT_EQ(PointInside(square, c.x, c.y), c.inside) << c.x << "," << c.y;
    EXPECT_FALSE(PointInside(Coutline{}, 0, 0));
}

TEST(CoverageTest, RelationCodes) {
    const Coutline big = Rect(0, 0, 10, 10, true);
    const Coutline small = Rect(2, 2, 4, 4, false);
    const Coutline across = Rect(8, 2, 12, 4, true);
    const Coutline away = Rect(20, 20, 30, 30, true);
    EXPECT_EQ(Relation(small, big), kRelationInside);
    EXPECT_EQ(Relation(big, small), kRelationContains);
    EXPECT_EQ(Relation(across, big), kRelationOverlap);
    EXPECT_EQ(Relation(away, big), kRelationDisjoint);
    EXPECT_EQ(Relation(Coutline{}, big), kRelationDisjoint);
    EXPECT_EQ(Relation(big, Coutline{}), kRelationDisjoint);
    EXPECT_EQ(MirrorRelation(kRelationInside), kRelationContains);
    EXPECT_EQ(MirrorRelation(kRelationOverlap), kRelationOverlap);
}

// Relation matrix from a nesting description: parent[i] = index of the
// contour directly around i, or -1.
std::vector<std::uint32_t> NestedMatrix(const std::vector<int>& parent) {
    const std::size_t n = parent.size();
    std::vector<std::uint32_t> m(n * n, 0);
    for (std::size_t i = 0; i < n; ++i) {
        for (int p = parent[i]; p >= 0; p = parent[p]) {
            m[i * n + p] = 1;
            m[p * n + i] = 2;
        }
    }
    return m;
}

TEST(CoverageTest, GroupingByDepth) {
    struct Case {
        const char* name;
        std::vector<int> parent;
        std::vector<std::vector<std::uint32_t>> groups;
    };
    const Case cases[] = {
        {"O", {-1, 0}, {{0, 1}}},
        {"O with a dot", {-1, 0, 1}, {{0, 1}, {2}}},
        {"dot listed first", {2, -1, 1}, {{1, 2}, {0}}},
        {"B", {-1, 0, 0}, {{0, 1, 2}}},
        {"i", {-1, -1}, {{0}, {1}}},
        {"four deep", {-1, 0, 1, 2}, {{0, 1}, {2, 3}}},
        {"two O side by side", {-1, 0, -1, 2}, {{0, 1}, {2, 3}}},
        {"two dots in one counter", {-1, 0, 1, 1}, {{0, 1}, {2}, {3}}},
    };
    for (const Case& c : cases) {
        const auto m = NestedMatrix(c.parent);
        CCoverageTest test(m.data(), static_cast<std::uint32_t>(c.parent.size()));
        ASSERT_EQ(test.groupCount, c.groups.size()) << c.name;
        for (std::size_t g = 0; g < c.groups.size(); ++g) EXPECT_EQ(test.groups[g], c.groups[g]) << c.name;
    }
}

TEST(CoverageTest, OverlappingContoursEachStartAGroup) {
    const std::uint32_t m[] = {0, 3, 3, 0};
    CCoverageTest test(m, 2);
    ASSERT_EQ(test.groupCount, 2u);
    EXPECT_EQ(test.groups[0], std::vector<std::uint32_t>{0});
    EXPECT_EQ(test.groups[1], std::vector<std::uint32_t>{1});
}

TEST(ContourNesting, NestOrientsOuterClockwiseAndHolesCounterClockwise) {
    std::list<Coutline> contours;
    contours.push_back(Rect(2, 2, 4, 4, true));     // hole, wrong way round
    contours.push_back(Rect(0, 0, 10, 10, false));  // outer, wrong way round
    contours.push_back(Rect(2.5, 2.5, 3, 3, true)); // dot in the counter
    contours.push_back(Coutline{});                 // empty: no group
    const auto groups = Nest(contours);
    ASSERT_EQ(groups.size(), 2u);
    const CContourGroup& o = groups.front();
    EXPECT_TRUE(o.outer.clockwise);
    EXPECT_EQ(o.outer.points.front().x, 0.0);
    ASSERT_EQ(o.holes.size(), 1u);
    EXPECT_FALSE(o.holes.front().clockwise);
    // Reversal turns (2,2) (2,4) (4,4) (4,2) into (4,2) (4,4) (2,4) (2,2).
    EXPECT_EQ(o.holes.front().points.front().x, 4.0);
    EXPECT_EQ(o.holes.front().points.front().y, 2.0);
    EXPECT_EQ(o.holes.front().points.back().y, 2.0);
    EXPECT_EQ(o.holes.front().points.back().x, 2.0);
    EXPECT_EQ(groups.back().outer.points.front().x, 2.5);
    EXPECT_TRUE(groups.back().outer.clockwise);
}

TEST(ContourNesting, SinglePathGroupsCounterClockwiseOutersAndClockwiseHoles) {
    std::list<Coutline> contours;
    contours.push_back(Rect(2, 2, 4, 4, true));
    contours.push_back(Rect(0, 0, 10, 10, false));
    contours.push_back(Rect(20, 0, 30, 10, false));
    contours.push_back(Rect(22, 2, 24, 4, true));
    auto groups = NestSinglePath(contours);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups.front().outer.points.front().x, 0.0);
    EXPECT_FALSE(groups.front().outer.clockwise) << "nothing is reversed";
    EXPECT_EQ(groups.front().holes.size(), 2u) << "every hole goes to the first group";
    EXPECT_TRUE(groups.back().holes.empty());

    std::list<Coutline> onlyHoles;
    onlyHoles.push_back(Rect(2, 2, 4, 4, true));
    EXPECT_TRUE(NestSinglePath(onlyHoles).empty());
}

}  // namespace
}  // namespace tr
