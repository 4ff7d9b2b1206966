// Tests of the painter slot table and the simple applicators.
#include "paint/painter.h"

#include <gtest/gtest.h>

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

}  // namespace
