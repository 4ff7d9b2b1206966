// Tests of the character rendering pass through the C entry points. Outline
// units are target pixels at face size 100; no cache.
#include "surface/character_pass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <list>
#include <tuple>
#include <vector>

#include "paint/painter.h"
#include "polygon_glyph.h"
#include "surface/character_context.h"
#include "surface/surface.h"
#include "titlerender.h"

namespace {

using tr_test::Contours;
using tr_test::kSquare;
constexpr uint32_t kNoCache = 0x4000;

// (kind, colour slot, width, angle, distance); slot s paints 0xFF00000s.
using Fragment = std::tuple<int32_t, uint8_t, double, double, double>;
const std::vector<Fragment> kFace = {{0, 2, 0.0, 0.0, 0.0}};

// A 200 x 200 transparent target; characters are finished on one surface,
// which Draw() closes to composite them.
class CharacterPassTest : public ::testing::Test {
protected:
    void SetUp() override { surface = CreateSurface(&descriptor); }
    void TearDown() override { CloseSurface(surface); }

    int32_t Character(const Contours& contours, const std::vector<Fragment>& fragments,
                      double size = 100.0, double x = 50.0, double y = 150.0, uint32_t options = 0,
                      uint32_t userValue1 = 0, double slantA = 0.0) {
        const auto& data = glyphs.emplace_back(tr::test::PolygonGlyph(contours));
        NewCharacterCallBack(surface, reinterpret_cast<uintptr_t>(&data),
                             tr_test::kPolygonInput | kNoCache, 100, &tr_test::PolygonCallback, 'X');
        FaceParameters face{size, 1.0, 1.0, slantA, 0.0, 0.0, x, y, 0.0, 0.0};
        SetFace(surface, &face);
        for (const auto& [kind, slot, width, angle, distance] : fragments) {
            uint8_t map[16];
            std::memset(map, slot, sizeof map);
            SetFragment(surface, map, kind, width, angle, distance);
            SetColor(surface, slot, 0xFF000000u | slot);
        }
        return FinishCharacter(surface, 0, options, userValue1, 0);
    }
    void Draw() {
        CloseSurface(surface);
        surface = CreateSurface(&descriptor);
    }
    int Alpha(int x, int y) const { return static_cast<int>(pixels[y * 200 + x] >> 24); }
    int Slot(int x, int y) const { return static_cast<int>(pixels[y * 200 + x] & 0xFF); }

    std::vector<uint32_t> pixels = std::vector<uint32_t>(200 * 200, 0);
    SurfaceDescriptor descriptor{{pixels.data(), 200, 200, 800}, 1.0};
    Surface* surface = nullptr;
    std::list<std::vector<uint8_t>> glyphs;
};

// The box is the outline at the face scale plus a 12-pixel margin; a shadow
// of an outline (width 1, distance 2 at 90 degrees: all along x) widens it
// by width + |offset| on each side.
TEST_F(CharacterPassTest, PlanHasTheMeasuredImageBox) {
    const struct {
        double size;
        std::vector<Fragment> fragments;
        int32_t width, height;
    } cases[] = {{100.0, kFace, 112, 112},
                 {50.0, kFace, 62, 62},
                 {100.0, {{0, 2, 0.0, 0.0, 0.0}, {5, 2, 1.0, 90.0, 2.0}}, 118, 114}};
    for (const auto& c : cases) {
        const int32_t index = Character(kSquare, c.fragments, c.size);
        ASSERT_EQ(index, static_cast<int32_t>(surface->plans.GetCount()) - 1);
        const CPlan& plan = surface->plans.Get(static_cast<uint32_t>(index));
        EXPECT_TRUE(plan.width == c.width && plan.height == c.height) << c.size;
        ASSERT_NE(plan.painters, nullptr);
        EXPECT_EQ(surface->painters, plan.painters); // painter calls still reach it
        EXPECT_EQ(plan.painters->coverageWidth, c.width);
    }
}

TEST_F(CharacterPassTest, DrawFirstOptionReordersPlans) {
    const uint32_t options[] = {0, 1, 1, 0};
    const int32_t indices[] = {1, 1, 1, 4};
    for (uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(Character(kSquare, kFace, 100.0, 0, 0, options[i], 10 * (i + 1)), indices[i]);
    }
    const uint32_t expected[] = {30, 20, 10, 40};
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(surface->plans.Get(i + 1).userValue1, expected[i]);
}

TEST_F(CharacterPassTest, NoPlanWithoutFragmentsOutlineOrSaneSize) {
    EXPECT_EQ(Character(kSquare, {}), 0);
    EXPECT_EQ(surface->painters, nullptr);
    NewCharacterCallBack(surface, 0, 0, 100, nullptr, ' '); // no glyph callback
    SetFragment(surface, std::vector<uint8_t>(16, 2).data(), 0, 0.0, 0.0, 0.0);
    EXPECT_EQ(FinishCharacter(surface, 0, 0, 0, 0), 0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (double size : {0.0, -0.0, nan, inf, 1e6, -100.0}) {
        EXPECT_EQ(Character(kSquare, kFace, size), 0) << size; // no usable scale, or too big
    }
    // A slant next to pi/2, huge or non-finite widths and distances.
    EXPECT_EQ(Character(kSquare, kFace, 100.0, 50.0, 150.0, 0, 0, 1.5707963), 0);
    for (double v : {1e9, -1e9, inf}) {
        EXPECT_EQ(Character(kSquare, {{2, 3, v, 0.0, 0.0}, {5, 4, 1.0, 30.0, v}}), 0) << v;
    }
    // Far outside the target: a plan, but nothing is written.
    EXPECT_EQ(Character(kSquare, kFace, 100.0, -5000.0, 9000.0), 1);
    Draw();
    for (uint32_t p : pixels) ASSERT_EQ(p, 0u);
    for (double x : {nan, inf, -1e300}) Character(kSquare, kFace, 100.0, x, x); // must not crash
}

// The outline's origin sits at the face position with y upward, so the
// square covers x 50..150, y 50..150. An edge pixel sees 8 of the 48
// samples of its neighbour's footprint (255 * 8 / 48 = 42.5, rounded up).
TEST_F(CharacterPassTest, SquareLandsAtTheFacePositionWithFootprintEdges) {
    ASSERT_EQ(Character(kSquare, kFace), 1);
    Draw();
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
            if (x > 50 && x < 149 && y > 50 && y < 149) {
                ASSERT_EQ(pixels[y * 200 + x], 0xFF000002u) << x << "," << y;
            } else if (x < 49 || x > 150 || y < 49 || y > 150) {
                ASSERT_EQ(pixels[y * 200 + x], 0u) << x << "," << y;
            }
        }
    }
    const int expected[] = {0, 43, 213, 255}; // x 48..51, mirrored at 148..151
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(Alpha(48 + i, 100) == expected[i] && Alpha(151 - i, 100) == expected[i]);
    EXPECT_EQ(Alpha(100, 49), 43); // the lower half of the pixel above the top edge
}

// The hole covers x 80..120; an outer outline of width 5 inks 49 - 5 to
// 150 + 5 in its slot, the face on top.
TEST_F(CharacterPassTest, HoleStaysUntouchedAndOuterOutlineWidens) {
    Character({kSquare[0], {{30, 30}, {30, 70}, {70, 70}, {70, 30}}}, kFace);
    Draw();
    for (int x = 82; x < 118; ++x) EXPECT_EQ(Alpha(x, 100), 0) << x;
    EXPECT_TRUE(Alpha(60, 100) == 255 && Alpha(125, 100) == 255);
    std::fill(pixels.begin(), pixels.end(), 0u);
    Character(kSquare, {{2, 3, 5.0, 0.0, 0.0}, {0, 2, 0.0, 0.0, 0.0}});
    Draw();
    EXPECT_TRUE(Alpha(43, 100) == 0 && Alpha(44, 100) > 0 && Alpha(155, 100) > 0 && Alpha(156, 100) == 0);
    EXPECT_TRUE(Slot(47, 100) == 3 && Slot(100, 100) == 2);
}

// A face with a distance is displaced: 90 degrees is +x, 180 down. The face
// shadow (3) extrudes the contour along the offset: only the swept bands.
TEST_F(CharacterPassTest, ShadowIsOffsetByAngleAndDistance) {
    const struct {
        int32_t kind;
        double angle;
        int row, x, alpha;
    } probes[] = {{0, 90.0, 100, 58, 0},    {0, 90.0, 100, 59, 43},   {0, 90.0, 100, 160, 43},
                  {0, 90.0, 100, 161, 0},   {0, 180.0, 55, 100, 0},   {0, 180.0, 155, 100, 255},
                  {3, 180.0, 55, 100, 255}, {3, 180.0, 155, 100, 255}, {3, 180.0, 100, 100, 0}};
    for (const auto& p : probes) {
        std::fill(pixels.begin(), pixels.end(), 0u);
        Character(kSquare, {{p.kind, 4, 0.0, p.angle, 10.0}});
        Draw();
        EXPECT_EQ(Alpha(p.x, p.row), p.alpha) << p.kind << " " << p.angle << " " << p.x << "," << p.row;
    }
}

} // namespace
