// Tests of the character rendering pass through the C entry points, with a
// glyph callback that answers in the polygon format.
#include "surface/character_pass.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <tuple>
#include <vector>

#include "paint/painter.h"
#include "surface/character_context.h"
#include "surface/surface.h"
#include "titlerender.h"

namespace {

constexpr uint32_t kPolygonInput = 0x200;
constexpr uint32_t kNoCache = 0x4000;

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

// Renders as a host does: with the character caches (every character here
// is the same square under the same key).
class CharacterPassTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(CreateCharacterCaches());
        pixels.assign(200 * 200, 0x11223344u);
        SurfaceDescriptor d{{pixels.data(), 200, 200, 200 * 4}, 1.0};
        surface = CreateSurface(&d);
        square = PolygonData({{0, 0, 100, 0, 100, 100, 0, 100}});
    }
    void TearDown() override {
        CloseSurface(surface);
        EXPECT_TRUE(DestroyCharacterCaches());
    }

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

// Renders one square character (0..100 outline units, one unit per pixel)
// with the given fragments onto a transparent 200 × 200 target and returns
// the alpha of row `row`. The cases give different outlines under one
// character code, so the outlines are built afresh (no cache) each time.
class SquareRenderTest : public ::testing::Test {
protected:
    std::vector<int> AlphaRow(const std::vector<std::vector<double>>& contours,
                              const std::vector<std::tuple<int32_t, uint8_t, double, double, double>>& fragments,
                              int row, double x = 50.0, double y = 150.0, double slantA = 0.0) {
        std::vector<uint8_t> data = PolygonData(contours);
        pixels.assign(200 * 200, 0);
        SurfaceDescriptor d{{pixels.data(), 200, 200, 800}, 1.0};
        Surface* surface = CreateSurface(&d);
        NewCharacterCallBack(surface, reinterpret_cast<uintptr_t>(&data), kPolygonInput | kNoCache,
                             100, &PolygonCallback, 'X');
        FaceParameters face{100.0, 1.0, 1.0, slantA, 0.0, 0.0, x, y, 0.0, 0.0};
        SetFace(surface, &face);
        for (const auto& [kind, slot, width, angle, distance] : fragments) {
            uint8_t map[16];
            std::memset(map, slot, sizeof map);
            SetFragment(surface, map, kind, width, angle, distance);
            SetColor(surface, slot, 0xFF000000u | slot);
        }
        planIndex = FinishCharacter(surface, 0, 0, 0, 0);
        CloseSurface(surface);
        std::vector<int> alpha(200);
        for (int x = 0; x < 200; ++x) alpha[x] = static_cast<int>(pixels[row * 200 + x] >> 24);
        return alpha;
    }
    int Blue(int x, int y) const { return static_cast<int>(pixels[y * 200 + x] & 0xFF); }
    static int FirstInk(const std::vector<int>& row) {
        for (int x = 0; x < 200; ++x) {
            if (row[x]) return x;
        }
        return -1;
    }
    static int LastInk(const std::vector<int>& row) {
        for (int x = 199; x >= 0; --x) {
            if (row[x]) return x;
        }
        return -1;
    }

    std::vector<uint32_t> pixels;
    int32_t planIndex = 0;
};

const std::vector<std::vector<double>> kSquare = {{0, 0, 100, 0, 100, 100, 0, 100}};

TEST_F(SquareRenderTest, EdgePixelsCarryTheFootprintAlpha) {
    const auto row = AlphaRow(kSquare, {{0, 2, 0.0, 0.0, 0.0}}, 100);
    // Left edge at x = 50: pixel 49 sees the 8 right-neighbour samples of
    // the footprint, pixel 50 all but the 8 of its left neighbour.
    EXPECT_EQ(row[48], 0);
    EXPECT_EQ(row[49], 43);   // 8/48 × 255 = 42.5, rounded up
    EXPECT_EQ(row[50], 213);  // 40/48 × 255 = 212.5
    EXPECT_EQ(row[51], 255);
    EXPECT_EQ(row[149], 213);
    EXPECT_EQ(row[150], 43);
    EXPECT_EQ(row[151], 0);
    const auto above = AlphaRow(kSquare, {{0, 2, 0.0, 0.0, 0.0}}, 49);
    EXPECT_EQ(above[100], 43);  // the lower half of the pixel above the top edge
}

TEST_F(SquareRenderTest, HoleStaysUntouched) {
    const auto row = AlphaRow({{0, 0, 100, 0, 100, 100, 0, 100}, {30, 30, 30, 70, 70, 70, 70, 30}},
                              {{0, 2, 0.0, 0.0, 0.0}}, 100);
    EXPECT_EQ(row[60], 255);
    for (int x = 82; x < 118; ++x) EXPECT_EQ(row[x], 0) << x;  // hole x 80..120
    EXPECT_EQ(row[125], 255);
}

TEST_F(SquareRenderTest, OuterOutlineWidensByTheStrokeWidth) {
    // A 5-pixel outer outline under the face.
    const auto row = AlphaRow(kSquare, {{2, 3, 5.0, 0.0, 0.0}, {0, 2, 0.0, 0.0, 0.0}}, 100);
    EXPECT_EQ(FirstInk(row), 49 - 5);
    EXPECT_EQ(LastInk(row), 150 + 5);
    EXPECT_EQ(Blue(47, 100), 3);  // outline slot
    EXPECT_EQ(Blue(100, 100), 2);  // face on top
}

TEST_F(SquareRenderTest, ShadowIsOffsetByAngleAndDistance) {
    // A face fragment with a distance is the displaced face: 90 degrees
    // points along +x, so the square moves 10 px right...
    const auto row = AlphaRow(kSquare, {{0, 4, 0.0, 90.0, 10.0}}, 100);
    EXPECT_EQ(FirstInk(row), 59);
    EXPECT_EQ(LastInk(row), 160);
    // ...and 180 degrees moves it down (y grows downward on the target).
    EXPECT_EQ(AlphaRow(kSquare, {{0, 4, 0.0, 180.0, 10.0}}, 55)[100], 0);
    EXPECT_EQ(AlphaRow(kSquare, {{0, 4, 0.0, 180.0, 10.0}}, 155)[100], 255);
    // The face shadow extrudes the contour along the offset: the bands the
    // top and bottom edges sweep, not the interior.
    EXPECT_EQ(AlphaRow(kSquare, {{3, 4, 0.0, 180.0, 10.0}}, 55)[100], 255);
    EXPECT_EQ(AlphaRow(kSquare, {{3, 4, 0.0, 180.0, 10.0}}, 155)[100], 255);
    EXPECT_EQ(AlphaRow(kSquare, {{3, 4, 0.0, 180.0, 10.0}}, 100)[100], 0);
}

TEST_F(SquareRenderTest, HostileFaceValuesAreBounded) {
    // A slant next to π/2 makes the box absurdly wide: no plan.
    AlphaRow(kSquare, {{0, 2, 0.0, 0.0, 0.0}}, 100, 50.0, 150.0, 1.5707963);
    EXPECT_EQ(planIndex, 0);
    // Huge or non-finite widths and distances: no plan, nothing written.
    for (double v : {1e9, -1e9, std::numeric_limits<double>::infinity()}) {
        AlphaRow(kSquare, {{2, 3, v, 0.0, 0.0}, {5, 4, 1.0, 30.0, v}}, 100);
        EXPECT_EQ(planIndex, 0) << v;
    }
    // A character far outside the target draws nothing and writes nothing.
    const auto row = AlphaRow(kSquare, {{0, 2, 0.0, 0.0, 0.0}}, 100, -5000.0, 9000.0);
    EXPECT_EQ(planIndex, 1);
    for (uint32_t p : pixels) ASSERT_EQ(p, 0u);
}

}  // namespace
