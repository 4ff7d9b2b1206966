// Character outline block: byte layout of hand-made groups against offsets
// computed here from the layout rules, the bounding box rules, the readers.
#include "outline/character_data.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

#include "block_view.h"

namespace tr {
namespace {

using test::U32;

Coutline Square(double x0, double y0, double side) {
    Coutline c;
    c.points = {{x0, y0, 0.0}, {x0, y0 + side, 0.0}, {x0 + side, y0 + side, 0.0}, {x0 + side, y0, 0.0}};
    return c;
}

std::size_t Even(std::size_t n) { return n + n % 2; }

TEST(CharacterDataBlock, LayoutOfThreeGroups) {
    // Odd group count (a padding slot in the table), holes, extra vertices
    // behind them, an odd index count, a group without triangles.
    std::list<CContourGroup> groups(3);
    auto it = groups.begin();
    it->outer = Square(0, 0, 10);
    it->holes = {Square(1, 1, 2), Square(5, 5, 2)};
    it->extraVertices.points = {{5, 5, 1}, {6, 6, 2}};
    it->triangles = {0, 1, 2, 3, 13};
    (++it)->outer = Square(20, 0, 5);
    (++it)->outer = Square(40, 0, 5);
    it->triangles = {0, 1, 2, 0, 2, 3};
    EXPECT_EQ(BlockSize({}), 64u);
    // Walk the groups as the layout rules place them; check every offset,
    // count and byte of the block, and the readers, against the walk.
    std::uint8_t metrics[20];
    std::iota(metrics, metrics + 20, 1);
    CCharacterData data;
    ASSERT_TRUE(data.BuildBlock(groups, metrics, -77));
    ASSERT_NE(data.data, nullptr);
    const std::uint8_t* b = data.data;
    EXPECT_TRUE(U32(b, 40) == 3 && data.GroupCount() == 3 && std::memcmp(b + 44, metrics, 20) == 0);
    EXPECT_TRUE(static_cast<std::int32_t>(U32(b, 36)) == -77 && data.OutlineSize() == -77.0);
    std::size_t record = 64 + 4 * Even(groups.size());
    std::size_t at = record;
    for (const auto& g : groups) at += 32 + 8 * g.holes.size();
    std::uint32_t i = 0;
    for (const auto& g : groups) {
        const std::uint8_t* rec = b + record;
        EXPECT_EQ(U32(b, 64 + 4 * i), record);
        EXPECT_EQ(data.GroupRecord(i), rec);
        EXPECT_TRUE(U32(rec, 8) == g.outer.points.size() && U32(rec, 12) == at && U32(rec, 16) == g.holes.size());
        EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(data.OuterPoints(i)), b + at);
        std::vector<CPoint3D> all(g.outer.points.begin(), g.outer.points.end());
        std::uint32_t j = 0;
        for (const auto& h : g.holes) {
            EXPECT_EQ(U32(rec, 24 + 8 * j), h.points.size());
            EXPECT_EQ(U32(rec, 28 + 8 * j), at + 24 * all.size());
            EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(data.HolePoints(i, j++)), b + at + 24 * all.size());
            all.insert(all.end(), h.points.begin(), h.points.end());
        }
        // Extra vertices right behind the last hole: index k is at outer + 24 k.
        all.insert(all.end(), g.extraVertices.points.begin(), g.extraVertices.points.end());
        EXPECT_EQ(std::memcmp(b + at, all.data(), 24 * all.size()), 0);
        at += 24 * all.size();
        EXPECT_TRUE(U32(rec, 0) == g.triangles.size() && data.TriangleIndexCount(i) == g.triangles.size());
        EXPECT_EQ(U32(rec, 4), at);
        EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(data.TriangleIndices(i)), b + at);
        if (!g.triangles.empty()) {
            EXPECT_EQ(std::memcmp(b + at, g.triangles.data(), 4 * g.triangles.size()), 0);
        }
        at += 4 * Even(g.triangles.size());
        record += 32 + 8 * g.holes.size();
        ++i;
    }
    EXPECT_TRUE(U32(b, 32) == at && BlockSize(groups) == at && at % 8 == 0);
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
    EXPECT_TRUE(box[0] == 0.0 && box[1] == 0.0 && box[2] == 5.0 && box[3] == 4.0);
    EXPECT_FALSE(std::signbit(box[0]) || std::signbit(box[1])) << "-0.0 is not below the seed 0.0";
    // No groups: no block, and the previous one is freed (ASan sees a leak).
    EXPECT_TRUE(data.BuildBlock({}, std::array<std::uint8_t, 20>{}.data(), 1));
    EXPECT_TRUE(data.data == nullptr && data.owned == nullptr);
}

}  // namespace
}  // namespace tr
