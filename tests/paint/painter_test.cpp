// Tests of the painter slot table and the simple applicators.
#include "paint/painter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "paint/soft_shadow.h"
#include "paint/stack_painter.h"

namespace {

// A primitive that counts its runs and releases, for the stack painter.
class CountingMixer final : public CShaderMixer_implementation {
public:
    CountingMixer(int* runs, int* releases, bool onDemand, float red)
        : runs_(runs), releases_(releases), red_(red) {
        evaluatedOnDemand = onDemand ? 1 : 0;
    }
    void Mix() override {
        ++*runs_;
        pixel->registers[0].c2 = red_ + static_cast<float>(pixel->x);
        pixel->registers[0].alpha = 200.0f;
    }
    void Release() override {
        ++*releases_;
        delete this;
    }

private:
    int* runs_;
    int* releases_;
    float red_;
};

TEST(Painter, SlotSelection) {
    const struct {
        int32_t in, painter, stack;
    } cases[] = {{0, 0, 0}, {15, 15, 15}, {16, 1, 16}, {17, 1, 1}, {200, 1, 1}, {-1, 1, 1}};
    for (const auto& c : cases) {
        EXPECT_EQ(CPainter::SelectPainterSlot(c.in), c.painter) << c.in;
        EXPECT_EQ(CPainter::SelectStackSlot(c.in), c.stack) << c.in;
    }
    CPainter painter;
    painter.SetColor(200, 0xFF0000FFu);
    painter.SetColor(16, 0xFF0000FFu);
    EXPECT_EQ(painter.GetSlot(16), nullptr);
    ASSERT_NE(painter.GetSlot(1), nullptr);
    EXPECT_EQ(painter.GetSlot(1)->color.c0, 255.0f);  // blue is channel 0
    EXPECT_EQ(painter.GetSlot(1)->color.c2, 0.0f);
    EXPECT_EQ(painter.GetSlot(-4), nullptr);
    EXPECT_EQ(painter.GetSlot(17), nullptr);
}

TEST(Painter, ColorsAndNullColors) {
    CPainter painter;
    painter.SetColor(2, 0x80102030u);
    CColorApplicator* color = painter.GetSlot(2);
    EXPECT_EQ(color->color.c0, 48.0f);
    EXPECT_EQ(color->color.c1, 32.0f);
    EXPECT_EQ(color->color.c2, 16.0f);
    EXPECT_EQ(color->color.alpha, 128.0f);
    EXPECT_EQ(color->ShadeAt(5, 5), 128.0f);
    painter.SetNullColor(2);  // replaces the colour
    CColorApplicator* nullColor = painter.GetSlot(2);
    EXPECT_EQ(nullColor->ShadeAt(0, 0), 0.0f);
    EXPECT_EQ(nullColor->color.alpha, 255.0f);
    EXPECT_EQ(nullColor->color.c2, 0.0f);
    painter.FillEmptySlotsWithNullColors();
    for (int32_t slot = 0; slot < 16; ++slot) {
        ASSERT_NE(painter.GetSlot(slot), nullptr) << slot;
        EXPECT_EQ(painter.GetSlot(slot)->ShadeAt(0, 0), 0.0f) << slot;
    }
    EXPECT_EQ(painter.GetSlot(16), nullptr);
    EXPECT_EQ(painter.GetOpacity(), 1.0);
}

TEST(Painter, StackPainterOwnsAndRunsMixers) {
    int runs = 0, releases = 0;
    {
        CPainter painter;
        auto* early = new CountingMixer(&runs, &releases, false, 1.0f);
        EXPECT_FALSE(painter.AddMixerToSlot(3, early));  // no stack painter yet
        delete early;
        painter.SetStackPainter(3, 0);
        auto* perPixel = new CountingMixer(&runs, &releases, false, 100.0f);
        auto* onDemand = new CountingMixer(&runs, &releases, true, 0.0f);
        EXPECT_TRUE(painter.AddMixerToSlot(3, perPixel));
        EXPECT_TRUE(painter.AddMixerToSlot(3, onDemand));
        EXPECT_TRUE(painter.AddMixerToSlot(3, perPixel));  // already owned
        CStackPainter* stack = painter.GetStackPainter(3);
        EXPECT_EQ(stack->GetMixerCount(), 2);
        EXPECT_EQ(stack->GetPerPixelCount(), 1);
        for (CShaderMixer* m : {perPixel, onDemand}) m->SetPixelRecord(&stack->GetPixelRecord());
        EXPECT_EQ(stack->ShadeAt(7, 2), 200.0f);
        EXPECT_EQ(stack->color.c2, 107.0f);
        EXPECT_EQ(runs, 1);
        // A full stack releases what it cannot hold.
        for (int i = 2; i < CStackPainter::kMaxMixers; ++i) {
            stack->AddMixer(new CountingMixer(&runs, &releases, true, 0.0f));
        }
        EXPECT_EQ(releases, 0);
        stack->AddMixer(new CountingMixer(&runs, &releases, true, 0.0f));
        EXPECT_EQ(releases, 1);
        EXPECT_EQ(stack->GetMixerCount(), CStackPainter::kMaxMixers);
    }
    EXPECT_EQ(releases, 1 + CStackPainter::kMaxMixers);  // the painter released the rest
}

TEST(Painter, SoftShadowFields) {
    CPainter painter;
    painter.SetSoftShadow(3, 2.9, 0xFF0000FFu, -2.0, 1.5f, 7.0);
    auto* shadow = dynamic_cast<CSoftShadow*>(painter.GetSlot(16));
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->softness, 2);
    EXPECT_EQ(shadow->GetShiftX(), -2);
    EXPECT_EQ(shadow->GetShiftY(), 1);
    EXPECT_EQ(shadow->color.alpha, 1.0f);
    shadow->opacity = 0.5;
    shadow->PrepareForCharacter(10, 10, 0.0, 0.0);
    EXPECT_EQ(shadow->ShadeAt(0, 0), 0.5f);
    shadow->SetLayerOriginX(4);
    shadow->SetLayerWidth(30);
    EXPECT_EQ(shadow->GetLayerOriginX(), 4);
    EXPECT_EQ(shadow->GetLayerWidth(), 30);
    EXPECT_EQ(shadow->LayerValueAt(0, 0), 0u);  // no mask yet
    CSoftShadow huge(0, 1e30, 0, 0.0, 0.0f, 0.0);
    EXPECT_EQ(huge.softness, INT32_MAX);
}

// Records what preparation handed to it.
class CPreparedProbe final : public CColorApplicator {
public:
    void PrepareForCharacter(int32_t w, int32_t h, double x, double y) override {
        ++calls;
        args[0] = w, args[1] = h;
        origin[0] = x, origin[1] = y;
    }
    int calls = 0;
    int32_t args[2] = {};
    double origin[2] = {};
};

// A primitive that remembers the pixel record it was bound to.
class CRecordMixer final : public CShaderMixer_implementation {
public:
    const ShaderPixel* Bound() const { return pixel; }
};

TEST(Painter, BindTargetStoresEverything) {
    CPainter painter;
    uint16_t coverage[4 * 6 * 5] = {};
    uint32_t pixels[4] = {};
    const PainterRectangle rect{1.5, 2.5, 3.5, 4.5};
    ShaderPoint faceQuad[4], quad[4];
    for (int i = 0; i < 4; ++i) {
        faceQuad[i] = {i + 0.25, -i - 0.5};
        quad[i] = {10.0 * i, 20.0 * i};
    }
    painter.BindTarget(6, 5, coverage, pixels, -1.25, 7.75, 2, 64, &rect, 0.3, 720, 576, 1.0925,
                       faceQuad, quad, ShaderPoint{8.0, 9.0});
    EXPECT_EQ(painter.coverageWidth, 6);
    EXPECT_EQ(painter.coverageHeight, 5);
    EXPECT_EQ(painter.coveragePitch16, 24);
    EXPECT_EQ(painter.coveragePitch32, 12);
    EXPECT_EQ(painter.coverage, coverage);
    EXPECT_EQ(painter.targetPixels, pixels);
    EXPECT_EQ(painter.positionX, -1.25);
    EXPECT_EQ(painter.positionY, 7.75);
    EXPECT_EQ(painter.blendMode, 2);
    EXPECT_EQ(painter.targetPitch, 64);
    EXPECT_EQ(painter.painterRectangle.centreX, 3.5);
    EXPECT_EQ(painter.painterRectangle.halfHeight, 2.5);
    EXPECT_EQ(painter.painterAngle, 0.3);
    EXPECT_EQ(painter.clipWidth, 720);
    EXPECT_EQ(painter.clipHeight, 576);
    EXPECT_EQ(painter.pixelRatio, 1.0925);
    EXPECT_EQ(painter.faceExtents[3].y, -3.5);
    EXPECT_EQ(painter.extents[2].x, 20.0);
    EXPECT_EQ(painter.origin.y, 9.0);
    EXPECT_EQ(painter.GetOriginColumn(), -2);  // floor, not truncation
    EXPECT_EQ(painter.GetOriginRow(), 7);
    EXPECT_EQ(painter.GetSlot(0), nullptr);  // slots untouched
}

TEST(Painter, PrepareApplicators) {
    CPainter painter;
    auto* probe = new CPreparedProbe;
    probe->ownAngle = 0.5;
    painter.InstallApplicator(4, probe);
    painter.SetStackPainter(9, 1);
    auto* mixer = new CRecordMixer;
    ASSERT_TRUE(painter.AddMixerToSlot(9, mixer));
    painter.SetSoftShadow(0, 3.0, 0x80000000u, 1.0, 1.0f, 0.0);
    painter.SetOpacity(0.5);
    uint16_t coverage[4 * 8 * 7] = {};
    uint32_t pixels[4] = {};
    const PainterRectangle rect{10.0, 20.0, 30.0, 40.0};
    const ShaderPoint quad[4] = {{1, 2}, {3, 4}, {5, 6}, {7, 8}};
    painter.BindTarget(8, 7, coverage, pixels, 12.5, -3.25, 0, 400, &rect, 0.25, 100, 50, 0.9, quad,
                       quad, ShaderPoint{-1.0, -2.0});
    painter.PrepareApplicators();

    EXPECT_EQ(probe->calls, 1);
    EXPECT_EQ(probe->args[0], 8);
    EXPECT_EQ(probe->args[1], 7);
    EXPECT_EQ(probe->origin[0], 12.5);  // the unfloored position
    EXPECT_EQ(probe->origin[1], -3.25);
    EXPECT_EQ(probe->opacity, 0.5);
    EXPECT_EQ(probe->pixelRatio, 0.9);
    EXPECT_EQ(probe->painterRectangle.halfHeight, 20.0);
    const double theta = -0.25 - 0.5;
    EXPECT_EQ(probe->sinAngle, std::sin(theta));
    EXPECT_EQ(probe->cosAngle, std::cos(theta));
    EXPECT_EQ(probe->originX, 12);
    EXPECT_EQ(probe->originY, -4);

    CStackPainter* stack = painter.GetStackPainter(9);
    EXPECT_EQ(stack->opacity, 0.5);
    EXPECT_EQ(stack->pixelRatio, 0.0);  // stack painters get the pixel record only
    EXPECT_EQ(stack->originX, 0);
    const ShaderPixel& record = stack->GetPixelRecord();
    EXPECT_EQ(mixer->Bound(), &record);
    EXPECT_EQ(record.targetPixels, pixels);
    EXPECT_EQ(record.originX, 12);
    EXPECT_EQ(record.originY, -4);
    EXPECT_EQ(record.clipWidth, 100);
    EXPECT_EQ(record.clipHeight, 50);
    EXPECT_EQ(record.targetPitch, 400);
    EXPECT_EQ(record.pixelRatio, 0.9);
    EXPECT_EQ(record.coverage, coverage);
    EXPECT_EQ(record.coverageWidth, 8);
    EXPECT_EQ(record.coverageHeight, 7);
    EXPECT_EQ(record.painterAngle, 0.25);
    EXPECT_EQ(record.faceExtents[2].y, 6.0);
    EXPECT_EQ(record.extents[3].x, 7.0);
    EXPECT_EQ(record.origin.y, -2.0);

    // The shadow in slot 16 is prepared too: its alpha takes the opacity.
    EXPECT_EQ(painter.GetSlot(16)->opacity, 0.5);
    EXPECT_EQ(painter.GetSlot(16)->color.alpha, (128.0f / 255.0f) * 0.5f);
}

}  // namespace
