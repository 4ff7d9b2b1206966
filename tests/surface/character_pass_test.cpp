// Tests of the character rendering pass through the C entry points, with a
// glyph callback that answers in the polygon format.
#include "surface/character_pass.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

#include "paint/painter.h"
#include "surface/character_context.h"
#include "surface/surface.h"
#include "titlerender.h"

namespace {

constexpr uint32_t kPolygonInput = 0x200;

// Polygons of doubles: a 56-byte header with the contour count at offset 8,
// then per contour an 8-byte header with the point count at offset 4 and the
// (x, y) pairs.
std::vector<uint8_t> PolygonData(const std::vector<std::vector<double>>& contours) {
    std::vector<uint8_t> data(56, 0);
    const uint32_t count = static_cast<uint32_t>(contours.size());
    std::memcpy(data.data() + 8, &count, 4);
    for (const auto& xy : contours) {
        uint8_t header[8] = {};
        const uint32_t points = static_cast<uint32_t>(xy.size() / 2);
        std::memcpy(header + 4, &points, 4);
        data.insert(data.end(), header, header + 8);
        const auto* bytes = reinterpret_cast<const uint8_t*>(xy.data());
        data.insert(data.end(), bytes, bytes + xy.size() * sizeof(double));
    }
    return data;
}

int32_t PolygonCallback(uintptr_t context, uint32_t, void*, uint32_t size, void* buffer,
                        const int32_t*) {
    const auto& data = *reinterpret_cast<const std::vector<uint8_t>*>(context);
    if (size == 0 || !buffer) return static_cast<int32_t>(data.size());
    if (size < data.size()) return 0;
    std::memcpy(buffer, data.data(), data.size());
    return static_cast<int32_t>(data.size());
}

const uint8_t kPaintSlot2[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};

class CharacterPassTest : public ::testing::Test {
protected:
    void SetUp() override {
        pixels.assign(200 * 200, 0x11223344u);
        SurfaceDescriptor d{{pixels.data(), 200, 200, 200 * 4}, 1.0};
        surface = CreateSurface(&d);
        square = PolygonData({{0, 0, 100, 0, 100, 100, 0, 100}});
    }
    void TearDown() override { CloseSurface(surface); }

    int32_t Character(double size, double x, double y, bool withFragment, uint32_t options = 0,
                      uint32_t userValue1 = 0) {
        NewCharacterCallBack(surface, reinterpret_cast<uintptr_t>(&square), kPolygonInput, 100,
                             &PolygonCallback, 'X');
        FaceParameters face{size, 1.0, 1.0, 0.0, 0.0, 0.0, x, y, 0.0, 0.0};
        SetFace(surface, &face);
        if (withFragment) SetFragment(surface, kPaintSlot2, 0, 0.0, 0.0, 0.0);
        SetColor(surface, 2, 0xFF0000FFu);
        return FinishCharacter(surface, 0, options, userValue1, 0);
    }

    std::vector<uint32_t> pixels;
    Surface* surface = nullptr;
    std::vector<uint8_t> square;
};

TEST_F(CharacterPassTest, PlanHasTheMeasuredImageBox) {
    EXPECT_EQ(Character(100.0, 50.0, 150.0, true), 1);
    ASSERT_EQ(surface->plans.GetCount(), 2u);
    const CPlan& plan = surface->plans.Get(1);
    // 100 × 100 outline units at one unit per pixel, plus the 12-pixel margin.
    EXPECT_EQ(plan.width, 112);
    EXPECT_EQ(plan.height, 112);
    ASSERT_NE(plan.coverage, nullptr);
    ASSERT_NE(plan.painters, nullptr);
    EXPECT_EQ(plan.surfaceWidth, 200);
    EXPECT_EQ(plan.clipHeight, 200);
    EXPECT_EQ(plan.pixels, pixels.data());
    EXPECT_EQ(surface->painters, plan.painters);  // painter calls still reach it
    EXPECT_EQ(plan.painters->coverageWidth, 112);
    EXPECT_EQ(plan.painters->targetPitch, 800);
}

TEST_F(CharacterPassTest, HalfSizeFaceHalvesTheBox) {
    EXPECT_EQ(Character(50.0, 10.0, 10.0, true), 1);
    EXPECT_EQ(surface->plans.Get(1).width, (200 + 48) / 4);
}

TEST_F(CharacterPassTest, FragmentsWidenTheBoxAndOffsetShadows) {
    NewCharacterCallBack(surface, reinterpret_cast<uintptr_t>(&square), kPolygonInput, 100,
                         &PolygonCallback, 'X');
    FaceParameters face{100.0, 1.0, 1.0, 0.0, 0.0, 0.0, 50.0, 50.0, 0.0, 0.0};
    SetFace(surface, &face);
    SetFragment(surface, kPaintSlot2, 0, 0.0, 0.0, 0.0);
    SetFragment(surface, kPaintSlot2, 5, 1.0, 90.0, 2.0);  // outer outline shadow
    ASSERT_EQ(FinishCharacter(surface, 0, 0, 0, 0), 1);
    const CFragment& shadow = surface->character->fragments[1];
    // scale 0.25: width 1 → 1 unit, distance 2 → 2 units, at 90° all along x.
    EXPECT_DOUBLE_EQ(shadow.widthPx, 1.0);
    EXPECT_DOUBLE_EQ(shadow.shadowOffsetA, 2.0);
    EXPECT_NEAR(shadow.shadowOffsetB, 0.0, 1e-15);
    // The box grows by 3 units each side in x and 1 in y before the margin.
    EXPECT_EQ(surface->plans.Get(1).width, (400 + 24 + 48) / 4);
    EXPECT_EQ(surface->plans.Get(1).height, (400 + 8 + 48 + 3) / 4 * 4 / 4);
}

TEST_F(CharacterPassTest, DrawFirstOptionReordersPlans) {
    EXPECT_EQ(Character(100.0, 0, 0, true, 0, 10), 1);
    EXPECT_EQ(Character(100.0, 0, 0, true, 1, 20), 1);
    EXPECT_EQ(Character(100.0, 0, 0, true, 1, 30), 1);
    EXPECT_EQ(Character(100.0, 0, 0, true, 0, 40), 4);
    const uint32_t expected[] = {30, 20, 10, 40};
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(surface->plans.Get(i + 1).userValue1, expected[i]);
}

TEST_F(CharacterPassTest, NoPlanWithoutFragmentsOutlineOrSaneSize) {
    EXPECT_EQ(Character(100.0, 0, 0, false), 0);
    EXPECT_EQ(surface->painters, nullptr);
    NewCharacterCallBack(surface, 0, 0, 100, nullptr, ' ');  // no glyph callback
    SetFragment(surface, kPaintSlot2, 0, 0.0, 0.0, 0.0);
    EXPECT_EQ(FinishCharacter(surface, 0, 0, 0, 0), 0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (double size : {0.0, -0.0, nan, inf, 1e6, -100.0}) {
        EXPECT_EQ(Character(size, 0, 0, true), 0) << size;  // no usable scale, or too big
    }
    for (double x : {nan, inf, -1e300}) Character(100.0, x, x, true);  // must not crash
    EXPECT_EQ(surface->plans.GetCount(), 4u);
}

TEST_F(CharacterPassTest, SquareLandsAtTheFacePosition) {
    // Outline units are pixels here; the outline's origin sits at the face
    // position with y upward, so the square covers x 50..150, y 50..150.
    ASSERT_EQ(Character(100.0, 50.0, 150.0, true), 1);
    CloseSurface(surface);
    surface = CreateSurface(nullptr);
    auto at = [&](int x, int y) { return pixels[static_cast<size_t>(y) * 200 + x]; };
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
            const bool inside = x >= 50 && x < 150 && y >= 50 && y < 150;
            const bool edge = x == 49 || x == 150 || y == 49 || y == 150;
            if (inside && !(x == 50 || x == 149 || y == 50 || y == 149)) {
                ASSERT_EQ(at(x, y), 0xFF0000FFu) << x << "," << y;
            } else if (!inside && !edge) {
                ASSERT_EQ(at(x, y), 0x11223344u) << x << "," << y;
            }
        }
    }
}

}  // namespace
