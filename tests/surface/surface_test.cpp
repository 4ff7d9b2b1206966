// Tests of the surface and character entry points, driven as a host would.
#include "surface/surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "memory/coverage_recycler.h"
#include "memory/pool_registry.h"
#include "paint/face.h"
#include "paint/painter.h"
#include "paint/soft_shadow.h"
#include "paint/stack_painter.h"
#include "surface/character_context.h"
#include "titlerender.h"

namespace {

struct SurfaceDeleter {
    void operator()(Surface* s) const { CloseSurface(s); }
};
using SurfacePtr = std::unique_ptr<Surface, SurfaceDeleter>;

SurfacePtr MakeSurface(double ratio = 1.0, uint32_t* pixels = nullptr) {
    SurfaceDescriptor d{};
    d.image.pixels = pixels;
    d.image.width = 4;
    d.image.height = 4;
    d.image.stride = 16;
    d.pixelRatio = ratio;
    return SurfacePtr(CreateSurface(&d));
}

FaceParameters Face(double size, double x, double y) {
    FaceParameters f{};
    f.size = size;
    f.heightScale = 1.0;
    f.widthScale = 1.0;
    f.x = x;
    f.y = y;
    return f;
}

TEST(Surface, PixelRatioZeroBecomesTenNinths) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(MakeSurface(0.0)->descriptor.pixelRatio, 1.1111111111111112);
    EXPECT_EQ(MakeSurface(-0.0)->descriptor.pixelRatio, 1.1111111111111112);
    EXPECT_EQ(MakeSurface(0.5)->descriptor.pixelRatio, 0.5);
    EXPECT_EQ(MakeSurface(-1.0)->descriptor.pixelRatio, -1.0);
    EXPECT_TRUE(std::isnan(MakeSurface(nan)->descriptor.pixelRatio));
}

TEST(Surface, DescriptorCopiedAndDefaults) {
    uint32_t pixels[16] = {};
    SurfacePtr s = MakeSurface(1.0, pixels);
    EXPECT_EQ(s->descriptor.image.pixels, pixels);
    EXPECT_EQ(s->descriptor.image.stride, 16);
    EXPECT_EQ(s->execute, 1);
    EXPECT_EQ(s->script, nullptr);
    EXPECT_EQ(s->character, nullptr);
    EXPECT_EQ(s->plans.GetCount(), 1u);  // the placeholder
    SurfacePtr empty(CreateSurface(nullptr));
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(empty->descriptor.image.pixels, nullptr);
    EXPECT_EQ(empty->descriptor.pixelRatio, 1.1111111111111112);
}

TEST(Surface, SetFaceSnapsToSixteenthsInPlace) {
    struct Case {
        double in, snapped, fraction;
    };
    const Case cases[] = {
        {2.54, 2.5625, 0.5625}, {2.53, 2.5, 0.5},        {-0.03, 0.0, 0.0},
        {-1.30, -1.25, 0.75},   {-1.1875, -1.125, 0.875}, {7.0, 7.0, 0.0},
    };
    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    for (const Case& c : cases) {
        FaceParameters f = Face(40.0, c.in, c.in);
        SetFace(s.get(), &f);
        EXPECT_EQ(f.x, c.snapped) << c.in;
        EXPECT_EQ(f.y, c.snapped) << c.in;
        EXPECT_EQ(s->faceX, c.snapped) << c.in;
        EXPECT_EQ(s->face.x, c.fraction) << c.in;
        EXPECT_EQ(s->face.y, c.fraction) << c.in;
        EXPECT_EQ(s->face.size, 40.0);
    }
}

TEST(Surface, SnapSaturatesOnHostGarbage) {
    EXPECT_EQ(tr::SnapToSixteenth(std::numeric_limits<double>::quiet_NaN()), 0.0);
    EXPECT_EQ(tr::SnapToSixteenth(1e300), 2147483647.0 / 16.0);
    EXPECT_EQ(tr::SnapToSixteenth(-1e300), -2147483648.0 / 16.0);
}

TEST(Surface, NewCharacterResetsShearAndStoresSource) {
    SurfacePtr s = MakeSurface();
    SetCharacterShear(s.get(), 0.2, -0.1);
    EXPECT_EQ(s->shearX, 0.2);
    auto callback = [](uintptr_t, uint32_t, void*, uint32_t, void*, const int32_t*) -> int32_t {
        return 0;
    };
    NewCharacterCallBack(s.get(), 77, 0x400 | 0x8000, 2048, callback, 'g');
    EXPECT_EQ(s->shearX, 0.0);
    EXPECT_EQ(s->shearY, 0.0);
    EXPECT_EQ(s->sourceA, 77u);
    EXPECT_EQ(s->sourceC, 2048u);
    EXPECT_EQ(s->sourceD, +callback);
    EXPECT_EQ(s->characterCode, static_cast<uint32_t>('g'));
    ASSERT_NE(s->character, nullptr);
    EXPECT_EQ(s->character->compositor.wideOutlines, 1);
    EXPECT_EQ(s->character->compositor.optionA, 0);
    EXPECT_EQ(s->painters, s->character->face->GetPainter());
    EXPECT_EQ(AddOutlineFlags(s.get(), 0x4000), 0x4000u);
    EXPECT_EQ(s->character->outlineFlags, 0x4002u);
}

TEST(Surface, SoftShadowBlurAndShifts) {
    EXPECT_EQ(tr::SoftShadowBlur(0.0, 50.0), 1.0);
    EXPECT_EQ(tr::SoftShadowBlur(-1.0, 50.0), 0.0);
    const double size = 256.0;  // size^0.25 = 4, size^0.5 = 16
    EXPECT_DOUBLE_EQ(tr::SoftShadowBlur(30.0, size), 10.0 * (4.0 / 20.0 / 6.0 + 16.0 / 20.0 / 3.0));

    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    FaceParameters f = Face(size, 0.0, 0.0);
    SetFace(s.get(), &f);
    SetSoftShadowColor(s.get(), 0x1203, 45.0, 0x80FF0000u, 2.7, -2.2, 5.5);
    auto* shadow = dynamic_cast<CSoftShadow*>(s->painters->GetSlot(16));
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->knockOut, 0x03);  // the low byte only
    EXPECT_EQ(shadow->softness, 4);     // the blur, 4.5, truncated
    EXPECT_EQ(shadow->shiftX, 2.0);
    EXPECT_EQ(shadow->shiftY, -3.0);
    EXPECT_EQ(shadow->extra, 5.5);
    EXPECT_EQ(shadow->hasOwnLayer, 1);
    EXPECT_FLOAT_EQ(shadow->color.alpha, 128.0f / 255.0f);
    EXPECT_EQ(shadow->color.c2, 255.0f);
}

TEST(Surface, PainterCallsOnStackAndRectangleSlots) {
    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    CPainter* painter = s->painters;
    SetRectangleForPainter(s.get(), 3, 1, 2, 3, 4, 0.5);  // empty slot: nothing
    EXPECT_EQ(painter->GetSlot(3), nullptr);
    SetColor(s.get(), 3, 0xFF112233u);
    SetRectangleForPainter(s.get(), 3, 1, 2, 3, 4, 0.5);
    EXPECT_EQ(painter->GetSlot(3)->hasExplicitRectangle, 1);
    EXPECT_EQ(painter->GetSlot(3)->explicitRectangle.halfHeight, 4.0);
    SetSoftShadowColor(s.get(), 0, 1.0, 0, 0, 0, 0);
    SetRectangleForPainter(s.get(), 16, 1, 2, 3, 4, 0.5);
    EXPECT_EQ(painter->GetSlot(16)->hasExplicitRectangle, 0);

    const LayerDescriptor layer{5, 0, 2.0, 3.0, 4, 0};
    SetStackLayer(s.get(), 3, 0, &layer);  // a flat colour: ignored
    SetStackPainter(s.get(), 16, 1);       // the shadow slot accepts a stack painter
    SetStackLayer(s.get(), 16, 2, &layer);
    SetStackLayer(s.get(), 16, 4, &layer);  // no layer 4
    CStackPainter* stack = painter->GetStackPainter(16);
    ASSERT_NE(stack, nullptr);
    EXPECT_EQ(stack->joinsNeighbours, 1);
    EXPECT_EQ(stack->GetLayerDescriptor(2).kind, 5u);
    EXPECT_EQ(stack->GetLayerDescriptor(2).n, 4);
    EXPECT_EQ(stack->GetLayerDescriptor(0).kind, 0u);
    SetStackPainter(s.get(), 99, 0);  // out of range: slot 1
    EXPECT_NE(painter->GetStackPainter(1), nullptr);
}

TEST(Surface, FinishWithoutOutlineMakesNoPlanAndDropsPainters) {
    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    FaceParameters f = Face(40.0, 1.0, 1.0);
    SetFace(s.get(), &f);
    const uint8_t map[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    SetFragment(s.get(), map, 0, 0.0, 0.0, 0.0);
    SetColor(s.get(), 2, 0xFFFFFFFFu);
    EXPECT_EQ(FinishCharacter(s.get(), 0, 1, 0, 0), 0);
    EXPECT_EQ(s->plans.GetCount(), 1u);
    EXPECT_EQ(s->painters, nullptr);
    // Painter calls after a planless finish reach nothing and do not crash.
    SetColor(s.get(), 2, 0xFF000000u);
    SetPainterOpacity(s.get(), 0.5);
    SetSoftShadowColor(s.get(), 0, 2.0, 0, 0, 0, 0);
    // The next character starts afresh.
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'B');
    ASSERT_NE(s->painters, nullptr);
    EXPECT_EQ(s->character->fragments.size(), 0u);
}

TEST(Surface, CallsWithoutCharacterOrSurfaceAreHarmless) {
    const uint8_t map[16] = {};
    FaceParameters f = Face(10.0, 0.0, 0.0);
    LayerDescriptor layer{};
    const RampRecord ramp{};
    const BevelRecord bevel{};
    const ClassicRecord classic{};
    // Null surface.
    SetFace(nullptr, &f);
    SetFragment(nullptr, map, 0, 1.0, 0.0, 0.0);
    EXPECT_EQ(FinishCharacter(nullptr, 0, 0, 0, 0), 0);
    NewCharacterCallBack(nullptr, 0, 0, 0, nullptr, 0);
    SetColor(nullptr, 2, 0);
    SetNullColor(nullptr, 2);
    SetRamp(nullptr, 2, &ramp, nullptr, nullptr, nullptr);
    SetBevel(nullptr, 2, &bevel, nullptr, nullptr, nullptr);
    SetClassicPainter(nullptr, 2, &classic, nullptr, nullptr);
    SetStackLayer(nullptr, 2, 0, &layer);
    EXPECT_EQ(GetSurfaceHostBytes(nullptr), nullptr);
    EXPECT_EQ(AddOutlineFlags(nullptr, 5), 5u);
    CloseSurface(nullptr);
    // A surface without a current character, and null records.
    SurfacePtr s = MakeSurface();
    SetFace(s.get(), nullptr);
    SetFragment(s.get(), map, 0, 1.0, 0.0, 0.0);
    SetColor(s.get(), 2, 0);
    SetSoftShadowColor(s.get(), 0, 1.0, 0, 0, 0, 0);
    SetBevel(s.get(), 2, nullptr, nullptr, nullptr, nullptr);
    SetBevel(s.get(), 2, &bevel, nullptr, nullptr, nullptr);
    AddToStackPainter(s.get(), 2, nullptr);
    EXPECT_EQ(FinishCharacter(s.get(), 0, 0, 0, 0), 0);
    uint8_t* bytes = GetSurfaceHostBytes(s.get());
    ASSERT_EQ(bytes, s->hostBytes);
    bytes[0] = 1;
    bytes[2] = 3;
}

TEST(Surface, BevelAddsOuterOutlineFragment) {
    SurfacePtr s = MakeSurface();
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'A');
    BevelRecord bevel{};
    bevel.size = 4.0;
    SetBevel(s.get(), 3, &bevel, nullptr, nullptr, nullptr);
    ASSERT_EQ(s->character->fragments.size(), 1u);
    EXPECT_EQ(s->character->fragments[0].kind, 2);
    EXPECT_EQ(s->character->fragments[0].noMap, 1);
    EXPECT_EQ(s->character->fragments[0].width, 4.0);

    NewCharacterCallBack(s.get(), 0, 0x400, 0, nullptr, 'B');
    SetBevel(s.get(), 3, &bevel, nullptr, nullptr, nullptr);
    ASSERT_EQ(s->character->fragments.size(), 2u);  // widened, plus its twin
    EXPECT_DOUBLE_EQ(s->character->fragments[0].width, 4.0 * 1.42);
    EXPECT_DOUBLE_EQ(s->character->fragments[1].width, 4.0 * 1.42 * 1.42);

    bevel.size = 0.0;  // a stroke without width is dropped
    NewCharacterCallBack(s.get(), 0, 0, 0, nullptr, 'C');
    SetBevel(s.get(), 3, &bevel, nullptr, nullptr, nullptr);
    EXPECT_EQ(s->character->fragments.size(), 0u);
}

TEST(Surface, PoolAndRecyclerEntryPoints) {
    SetPoolBudgets(0, -5, 3);
    EXPECT_EQ(tr::GetPoolBudget(tr::PoolKind::Shape), 1048576u);
    EXPECT_EQ(tr::GetPoolBudget(tr::PoolKind::Shadow), 1048576u);
    EXPECT_EQ(tr::GetPoolBudget(tr::PoolKind::Painter), 3u * 1048576u);
    InvalidatePooledCharacters(1, 2);  // nothing pooled: nothing changes
    // A released buffer is kept by the recycler until the flush frees it.
    void* buffer = tr::AllocateBuffer(200000);
    ASSERT_NE(buffer, nullptr);
    tr::RecycleBuffer(buffer);
    EXPECT_GE(FlushRazterizerRecyclerMemory(), tr::RecyclerSizeClass(200000));
    EXPECT_EQ(FlushRazterizerRecyclerMemory(), 0u);
}

TEST(Surface, ManySurfacesFromSeveralThreads) {
    auto worker = [](int seed) {
        uint32_t pixels[64] = {};
        for (int i = 0; i < 200; ++i) {
            SurfaceDescriptor d{{pixels, 8, 8, 32}, 1.0};
            Surface* s = CreateSurface(&d);
            for (int c = 0; c < 3; ++c) {
                NewCharacterCallBack(s, 0, 0, 0, nullptr, static_cast<uint32_t>('a' + c));
                FaceParameters f = Face(20.0 + seed, c, c);
                SetFace(s, &f);
                SetColor(s, 2, 0xFF000000u | static_cast<uint32_t>(seed));
                SetSoftShadowColor(s, 1, 3.0, 0x80000000u, 1.0, 1.0, 0.0);
                EXPECT_EQ(FinishCharacter(s, 0, 0, static_cast<uint32_t>(c), 0), 0);
            }
            CloseSurface(s);
        }
        for (uint32_t p : pixels) EXPECT_EQ(p, 0u);  // nothing rendered, nothing written
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) threads.emplace_back(worker, t);
    for (std::thread& t : threads) t.join();
}

}  // namespace
