// Tests of the painter slot table, the stack painter's ownership of its
// primitives and the per-character preparation.
#include "paint/painter.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "paint/soft_shadow.h"
#include "paint/stack_painter.h"

namespace {

TEST(Painter, SlotSelectionAndColours) {
    const struct {
        int32_t in, painter, stack;
    } cases[] = {{0, 0, 0}, {15, 15, 15}, {16, 1, 16}, {17, 1, 1}, {200, 1, 1}, {-1, 1, 1}};
    for (const auto& c : cases) {
        EXPECT_EQ(CPainter::SelectPainterSlot(c.in), c.painter) << c.in;
        EXPECT_EQ(CPainter::SelectStackSlot(c.in), c.stack) << c.in;
    }
    CPainter painter;
    painter.SetColor(16, 0x80102030u);  // no painter slot: lands in slot 1
    EXPECT_EQ(painter.GetSlot(16), nullptr);
    EXPECT_EQ(painter.GetSlot(1)->ShadeAt(5, 5), 128.0f);
    EXPECT_EQ(painter.GetSlot(1)->color.c0, 48.0f);  // blue first, as in a pixel's bytes
    painter.FillEmptySlotsWithNullColors();
    EXPECT_EQ(painter.GetSlot(2)->ShadeAt(0, 0), 0.0f);
    EXPECT_EQ(painter.GetSlot(16), nullptr);
}

// A primitive that counts its runs and releases.
class CountingMixer final : public CShaderMixer_implementation {
public:
    CountingMixer(int* runs, int* releases, bool onDemand) : runs_(runs), releases_(releases) {
        evaluatedOnDemand = onDemand ? 1 : 0;
    }
    void Mix() override {
        ++*runs_;
        pixel->registers[0].c2 = 100.0f + static_cast<float>(pixel->x);
        pixel->registers[0].alpha = 200.0f;
    }
    void Release() override {
        if (releases_) ++*releases_;
        delete this;
    }
    const ShaderPixel* Bound() const { return pixel; }

private:
    int* runs_;
    int* releases_;
};

TEST(Painter, StackPainterOwnsAndRunsMixers) {
    int runs = 0, releases = 0;
    {
        CPainter painter;
        auto* early = new CountingMixer(&runs, &releases, false);
        EXPECT_FALSE(painter.AddMixerToSlot(3, early));  // no stack painter yet
        delete early;
        painter.SetStackPainter(3, 0);
        auto* perPixel = new CountingMixer(&runs, &releases, false);
        auto* onDemand = new CountingMixer(&runs, &releases, true);
        EXPECT_TRUE(painter.AddMixerToSlot(3, perPixel));
        EXPECT_TRUE(painter.AddMixerToSlot(3, onDemand));
        EXPECT_TRUE(painter.AddMixerToSlot(3, perPixel));  // already owned
        CStackPainter* stack = painter.GetStackPainter(3);
        EXPECT_EQ(stack->GetMixerCount(), 2);
        for (CShaderMixer* m : {perPixel, onDemand}) m->SetPixelRecord(&stack->GetPixelRecord());
        EXPECT_EQ(stack->ShadeAt(7, 2), 200.0f);
        EXPECT_EQ(stack->color.c2, 107.0f);
        EXPECT_EQ(runs, 1);  // the on-demand primitive is not run per pixel
        // A full stack releases what it cannot hold.
        for (int i = 2; i <= CStackPainter::kMaxMixers; ++i)
            stack->AddMixer(new CountingMixer(&runs, &releases, true));
        EXPECT_EQ(releases, 1);
    }
    EXPECT_EQ(releases, 1 + CStackPainter::kMaxMixers);  // the painter released the rest
}

// Softness and shifts truncate toward zero; the alpha is kept as a fraction.
TEST(Painter, SoftShadowParameters) {
    CSoftShadow shadow(3, 2.9, 0x80000000u, -2.7, 1.5f, 7.0);
    EXPECT_EQ(shadow.softness, 2);
    EXPECT_EQ(shadow.GetShiftX(), -2);
    EXPECT_EQ(shadow.GetShiftY(), 1);
    EXPECT_EQ(CSoftShadow(0, 1e30, 0, 0.0, 0.0f, 0.0).softness, INT32_MAX);
}

// Records what preparation handed to it: size and position.
class CPreparedProbe final : public CColorApplicator {
public:
    void PrepareForCharacter(int32_t w, int32_t h, double x, double y) override {
        args.push_back({double(w), double(h), x, y});
    }
    std::vector<std::array<double, 4>> args;
};

TEST(Painter, PrepareApplicators) {
    CPainter painter;
    auto* probe = new CPreparedProbe;
    probe->ownAngle = 0.5;
    painter.InstallApplicator(4, probe);
    painter.SetStackPainter(9, 1);
    auto* mixer = new CountingMixer(nullptr, nullptr, true);
    ASSERT_TRUE(painter.AddMixerToSlot(9, mixer));
    painter.SetSoftShadow(0, 3.0, 0x80000000u, 1.0, 1.0f, 0.0);
    painter.SetOpacity(0.5);
    const ShaderPoint quad[4] = {{1, 2}, {3, 4}, {5, 6}, {7, 8}};
    painter.BindTarget(8, 7, nullptr, nullptr, 12.5, -3.25, 0, 400, nullptr, 0.25, 100, 50, 0.9,
                       quad, quad, ShaderPoint{-1.0, -2.0});
    painter.PrepareApplicators();

    EXPECT_EQ(probe->args, (std::vector<std::array<double, 4>>{{8.0, 7.0, 12.5, -3.25}}));
    EXPECT_EQ(probe->sinAngle, std::sin(-0.25 - 0.5));
    EXPECT_EQ(probe->cosAngle, std::cos(-0.25 - 0.5));
    EXPECT_EQ(probe->originX, 12);
    EXPECT_EQ(probe->originY, -4);  // floor, not truncation

    // Stack painters get the opacity and the pixel record only.
    CStackPainter* stack = painter.GetStackPainter(9);
    EXPECT_EQ(stack->opacity, 0.5);
    EXPECT_EQ(stack->pixelRatio, 0.0);
    EXPECT_EQ(mixer->Bound(), &stack->GetPixelRecord());
    EXPECT_EQ(stack->GetPixelRecord().originY, -4);

    // The shadow in slot 16 is prepared too: its alpha takes the opacity.
    EXPECT_EQ(painter.GetSlot(16)->color.alpha, (128.0f / 255.0f) * 0.5f);
}

}  // namespace
