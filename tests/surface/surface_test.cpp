// Tests of the surface and character entry points: their numeric rules and
// calls in the wrong state.
#include "surface/surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "paint/painter.h"
#include "paint/soft_shadow.h"
#include "surface/character_context.h"
#include "titlerender.h"

namespace {

struct SurfaceDeleter {
    void operator()(Surface* s) const { CloseSurface(s); }
};
using SurfacePtr = std::unique_ptr<Surface, SurfaceDeleter>;

SurfacePtr MakeSurface(double ratio = 1.0) {
    SurfaceDescriptor d{{nullptr, 4, 4, 16}, ratio};
    return SurfacePtr(CreateSurface(&d));
}

FaceParameters Face(double size, double x, double y) {
    return FaceParameters{size, 1.0, 1.0, 0.0, 0.0, 0.0, x, y, 0.0, 0.0};
}

TEST(Surface, PixelRatioZeroBecomesTenNinths) {
    for (double ratio : {0.0, -0.0}) EXPECT_EQ(MakeSurface(ratio)->descriptor.pixelRatio, 10.0 / 9.0);
    EXPECT_EQ(SurfacePtr(CreateSurface(nullptr))->descriptor.pixelRatio, 10.0 / 9.0);
    for (double ratio : {0.5, -1.0}) EXPECT_EQ(MakeSurface(ratio)->descriptor.pixelRatio, ratio);
    EXPECT_TRUE(std::isnan(MakeSurface(std::nan(""))->descriptor.pixelRatio));
}

// The face position becomes trunc(16 x + 0.5) / 16, saturated to 32 bits and
// written back to the host's record; the face keeps the fraction in [0, 1).
TEST(Surface, SetFaceSnapsToSixteenthsInPlace) {
    const struct {
        double in, snapped, fraction;
    } cases[] = {{2.534375, 2.5625, 0.5625}, {2.53, 2.5, 0.5},       {-0.03, 0.0, 0.0},
                 {-1.30, -1.25, 0.75},   {-1.1875, -1.125, 0.875}, {7.0, 7.0, 0.0}};
    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    for (const auto& c : cases) {
        FaceParameters f = Face(40.0, c.in, c.in);
        SetFace(s.get(), &f);
        EXPECT_TRUE(f.x == c.snapped && f.y == c.snapped) << c.in;
        EXPECT_TRUE(s->face.x == c.fraction && s->face.y == c.fraction) << c.in;
    }
    EXPECT_EQ(tr::SnapToSixteenth(std::nan("")), 0.0);
    EXPECT_EQ(tr::SnapToSixteenth(1e300), 2147483647.0 / 16.0);
    EXPECT_EQ(tr::SnapToSixteenth(-1e300), -2147483648.0 / 16.0);
}

// blur = softness / 3 * (size^0.25 / 20 / 6 + size^0.5 / 20 / 3), at least 1,
// truncated into the painter; shifts pass through float, then floor.
TEST(Surface, SoftShadowBlurAndShifts) {
    EXPECT_EQ(tr::SoftShadowBlur(0.0, 50.0), 1.0);
    EXPECT_EQ(tr::SoftShadowBlur(-1.0, 50.0), 0.0);
    const double size = 256.0; // size^0.25 = 4, size^0.5 = 16
    EXPECT_DOUBLE_EQ(tr::SoftShadowBlur(30.0, size), 10.0 * (4.0 / 20.0 / 6.0 + 16.0 / 20.0 / 3.0));

    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    FaceParameters f = Face(size, 0.0, 0.0);
    SetFace(s.get(), &f);
    SetSoftShadowColor(s.get(), 0x1203, 45.0, 0x80FF0000u, 2.7, -2.2, 5.5);
    auto* shadow = dynamic_cast<CSoftShadow*>(s->painters->GetSlot(16));
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->knockOut, 0x03); // the low byte only
    EXPECT_EQ(shadow->softness, 4);    // the blur, 4.5, truncated
    EXPECT_TRUE(shadow->shiftX == 2.0 && shadow->shiftY == -3.0);
    EXPECT_FLOAT_EQ(shadow->color.alpha, 128.0f / 255.0f);
}

// A bevel adds an outer outline of its size (1.42 times it on a wide-outline
// character, plus the twin); a bevel without size adds nothing.
TEST(Surface, BevelAddsOuterOutlineFragment) {
    SurfacePtr s = MakeSurface();
    BevelRecord bevel{};
    bevel.size = 4.0;
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    SetBevel(s.get(), 3, &bevel, nullptr, nullptr, nullptr);
    ASSERT_EQ(s->character->fragments.size(), 1u);
    EXPECT_TRUE(s->character->fragments[0].kind == 2 && s->character->fragments[0].width == 4.0);
    NewCharacterCallBack(s.get(), 0, 0x400, 0, nullptr, 'B');
    SetBevel(s.get(), 3, &bevel, nullptr, nullptr, nullptr);
    ASSERT_EQ(s->character->fragments.size(), 2u);
    EXPECT_DOUBLE_EQ(s->character->fragments[0].width, 4.0 * 1.42);
    bevel.size = 0.0;
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'C');
    SetBevel(s.get(), 3, &bevel, nullptr, nullptr, nullptr);
    EXPECT_EQ(s->character->fragments.size(), 0u);
}

// Calls without a surface, character or record do nothing; a finish without
// an outline drops the painters until the next character.
TEST(Surface, CallsInTheWrongStateAreHarmless) {
    const uint8_t map[16] = {};
    FaceParameters f = Face(10.0, 0.0, 0.0);
    const BevelRecord bevel{};
    SurfacePtr s = MakeSurface();
    for (Surface* surface : {static_cast<Surface*>(nullptr), s.get()}) {  // no surface, then no character
        SetFace(surface, surface ? nullptr : &f);
        SetFragment(surface, map, 0, 1.0, 0.0, 0.0);
        SetSoftShadowColor(surface, 0, 1.0, 0, 0, 0, 0);
        SetBevel(surface, 2, &bevel, nullptr, nullptr, nullptr);
        EXPECT_EQ(FinishCharacter(surface, 0, 0, 0, 0), 0);
    }
    NewCharacterCallBack(nullptr, 0, 0, 0, nullptr, 0);
    EXPECT_EQ(AddOutlineFlags(nullptr, 5), 5u);
    CloseSurface(nullptr);
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    SetBevel(s.get(), 3, nullptr, nullptr, nullptr, nullptr);
    AddToStackPainter(s.get(), 2, nullptr);
    SetFace(s.get(), &f);
    SetFragment(s.get(), std::vector<uint8_t>(16, 2).data(), 0, 0.0, 0.0, 0.0);
    SetColor(s.get(), 2, 0xFFFFFFFFu);
    EXPECT_EQ(FinishCharacter(s.get(), 0, 1, 0, 0), 0);
    EXPECT_TRUE(s->plans.GetCount() == 1u && s->painters == nullptr);
    SetColor(s.get(), 2, 0xFF000000u);
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'B');
    ASSERT_NE(s->painters, nullptr);
    EXPECT_EQ(s->character->fragments.size(), 0u);
}

} // namespace
