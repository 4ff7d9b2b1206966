// Character outline block: byte layout of hand-made groups against offsets
// computed here from the layout rules, bounding box rules, and the readers.
#include "outline/character_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <array>
#include <cstring>
#include <string>

#include "block_view.h"

namespace tr {
namespace {

using test::U32;

Coutline Square(double x0, double y0, double side) {
    Coutline c;
    c.points = {{x0, y0, 0.0}, {x0, y0 + side, 0.0}, {x0 + side, y0 + side, 0.0}, {x0 + side, y0, 0.0}};
    return c;
}

std::size_t Even(std::size_t n) { return n % 2 == 0 ? n : n + 1; }

// The layout rules, restated independently for a list of groups: where
// each record and each section must start.
struct ExpectedLayout {
    std::vector<std::size_t> record, outer, index, end;
    std::vector<std::vector<std::size_t>> hole;
    std::size_t total;
};

ExpectedLayout Layout(const std::list<CContourGroup>& groups) {
    ExpectedLayout e;
    std::size_t at = 64 + 4 * Even(groups.size());
    for (const auto& g : groups) {
        e.record.push_back(at);
        at += 32 + 8 * g.holes.size();
    }
    for (const auto& g : groups) {
        e.outer.push_back(at);
        at += 24 * g.outer.points.size();
        e.hole.emplace_back();
        for (const auto& h : g.holes) {
            e.hole.back().push_back(at);
            at += 24 * h.points.size();
        }
        at += 24 * g.extraVertices.points.size();
        e.index.push_back(at);
        at += 4 * Even(g.triangles.size());
        e.end.push_back(at);
    }
    e.total = at;
    return e;
}

void CheckLayout(const std::list<CContourGroup>& groups, const std::string& what) {
    const std::uint8_t metrics[20] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
    CCharacterData data;
    ASSERT_TRUE(data.BuildBlock(groups, metrics, -77)) << what;
    ASSERT_NE(data.data, nullptr) << what;
    EXPECT_EQ(data.owned, data.data) << what;
    const std::uint8_t* b = data.data;
    const ExpectedLayout e = Layout(groups);
    EXPECT_EQ(U32(b, 32), e.total) << what;
    EXPECT_EQ(e.total % 8, 0u) << what;
    EXPECT_EQ(U32(b, 40), groups.size()) << what;
    EXPECT_EQ(std::memcmp(b + 44, metrics, 20), 0) << what;
    std::int32_t size;
    std::memcpy(&size, b + 36, 4);
    EXPECT_EQ(size, -77) << what;
    EXPECT_EQ(data.OutlineSize(), -77.0) << what;
    std::size_t g = 0;
    for (const auto& group : groups) {
        const std::uint8_t* rec = b + e.record[g];
        EXPECT_EQ(U32(b, 64 + 4 * g), e.record[g]) << what << " group " << g;
        EXPECT_EQ(U32(rec, 0), group.triangles.size()) << what;
        EXPECT_EQ(U32(rec, 4), e.index[g]) << what;
        EXPECT_EQ(U32(rec, 8), group.outer.points.size()) << what;
        EXPECT_EQ(U32(rec, 12), e.outer[g]) << what;
        EXPECT_EQ(U32(rec, 16), group.holes.size()) << what;
        std::size_t j = 0;
        for (const auto& hole : group.holes) {
            EXPECT_EQ(U32(rec, 24 + 8 * j), hole.points.size()) << what;
            EXPECT_EQ(U32(rec, 28 + 8 * j), e.hole[g][j]) << what;
            ++j;
        }
        // Points in order, the extra vertices right behind the last hole, so
        // index i addresses outer offset + 24 i.
        std::vector<CPoint3D> all(group.outer.points.begin(), group.outer.points.end());
        for (const auto& hole : group.holes) all.insert(all.end(), hole.points.begin(), hole.points.end());
        all.insert(all.end(), group.extraVertices.points.begin(), group.extraVertices.points.end());
        EXPECT_EQ(std::memcmp(b + e.outer[g], all.data(), 24 * all.size()), 0) << what;
        if (!group.triangles.empty()) {
            EXPECT_EQ(std::memcmp(b + e.index[g], group.triangles.data(), 4 * group.triangles.size()), 0);
        }
        // Readers agree with the raw offsets.
        EXPECT_EQ(data.GroupRecord(static_cast<std::uint32_t>(g)), rec);
        EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(data.OuterPoints(static_cast<std::uint32_t>(g))),
                  b + e.outer[g]);
        EXPECT_EQ(data.TriangleIndexCount(static_cast<std::uint32_t>(g)), group.triangles.size());
        EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(data.TriangleIndices(static_cast<std::uint32_t>(g))),
                  b + e.index[g]);
        for (std::size_t h = 0; h < group.holes.size(); ++h) {
            EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(
                          data.HolePoints(static_cast<std::uint32_t>(g), static_cast<std::uint32_t>(h))),
                      b + e.hole[g][h]);
        }
        ++g;
    }
    EXPECT_EQ(data.GroupCount(), groups.size());
}

TEST(CharacterDataBlock, OneSquareHasItsRecordAtOffset72) {
    std::list<CContourGroup> groups(1);
    groups.front().outer = Square(0, 0, 10);
    groups.front().triangles = {0, 1, 2, 0, 2, 3};
    CheckLayout(groups, "square");
    CCharacterData data;
    ASSERT_TRUE(data.BuildBlock(groups, std::array<std::uint8_t, 20>{}.data(), 1));
    EXPECT_EQ(U32(data.data, 64), 72u);  // one entry plus the padding slot
}

TEST(CharacterDataBlock, LayoutTable) {
    struct Case {
        const char* name;
        std::list<CContourGroup> groups;
    };
    std::vector<Case> cases;
    {  // square with a square hole, odd index count and extra vertices
        std::list<CContourGroup> g(1);
        g.front().outer = Square(0, 0, 10);
        g.front().holes.push_back(Square(3, 3, 4));
        g.front().extraVertices.points = {{5, 5, 1}, {6, 6, 2}};
        g.front().triangles = {0, 1, 9};
        cases.push_back({"square with hole, K odd", std::move(g)});
    }
    {  // three groups (odd count), holes of different sizes
        std::list<CContourGroup> g(3);
        auto it = g.begin();
        it->outer = Square(0, 0, 10);
        it->holes.push_back(Square(1, 1, 2));
        it->holes.push_back(Square(5, 5, 2));
        it->triangles = {0, 1, 2, 3, 4};
        (++it)->outer = Square(20, 0, 5);
        (++it)->outer = Square(40, 0, 5);
        it->triangles = {0, 1, 2, 0, 2, 3};
        cases.push_back({"three groups", std::move(g)});
    }
    {  // two groups (even count), one without triangles
        std::list<CContourGroup> g(2);
        g.front().outer = Square(0, 0, 1);
        g.back().outer = Square(2, 2, 1);
        g.back().triangles = {0, 1, 2};
        cases.push_back({"two groups", std::move(g)});
    }
    for (const Case& c : cases) CheckLayout(c.groups, c.name);
}

TEST(CharacterDataBlock, BoundingBoxIgnoresExtraVerticesAndWidensStrictly) {
    std::list<CContourGroup> groups(2);
    groups.front().outer.points = {{0.0, 0.0, 0}, {-0.0, 4.0, 0}, {3.0, 2.0, 0}};
    groups.front().extraVertices.points = {{-100.0, -100.0, 0}, {100.0, 100.0, 0}};
    groups.back().outer.points = {{1.0, -0.0, 0}, {2.0, 1.0, 0}, {1.5, 0.5, 0}};
    groups.back().holes.push_back(Coutline{});
    groups.back().holes.back().points = {{5.0, 3.0, 0}};
    CCharacterData data;
    ASSERT_TRUE(data.BuildBlock(groups, std::array<std::uint8_t, 20>{}.data(), 1));
    double box[4];
    std::memcpy(box, data.data, sizeof box);
    EXPECT_EQ(box[0], 0.0);
    EXPECT_FALSE(std::signbit(box[0])) << "-0.0 is not strictly smaller than the seed 0.0";
    EXPECT_FALSE(std::signbit(box[1]));
    EXPECT_EQ(box[1], 0.0);
    EXPECT_EQ(box[2], 5.0);
    EXPECT_EQ(box[3], 4.0);
}

TEST(CharacterDataBlock, NoGroupsGiveNoBlockAndFreeThePreviousOne) {
    std::list<CContourGroup> groups(1);
    groups.front().outer = Square(0, 0, 1);
    CCharacterData data;
    ASSERT_TRUE(data.BuildBlock(groups, std::array<std::uint8_t, 20>{}.data(), 1));
    ASSERT_NE(data.owned, nullptr);
    EXPECT_TRUE(data.BuildBlock({}, std::array<std::uint8_t, 20>{}.data(), 1));
    EXPECT_EQ(data.data, nullptr);
    EXPECT_EQ(data.owned, nullptr);
}

TEST(CharacterDataBlock, BlockSizeMatchesTheSumRule) {
    std::list<CContourGroup> groups(1);
    groups.front().outer = Square(0, 0, 1);
    groups.front().triangles = {0, 1, 2};
    // 64 + 4*2 + (32 + 24*4 + 4*4)
    EXPECT_EQ(BlockSize(groups), 64u + 8u + 32u + 96u + 16u);
    EXPECT_EQ(BlockSize({}), 64u);
}

}  // namespace
}  // namespace tr
