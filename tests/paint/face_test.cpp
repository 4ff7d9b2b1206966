// Tests of the character face's measuring.
#include "paint/face.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace {

struct BoxSetup {
    double marginX = 0.0, marginY = 0.0;
    double widthScale = 1.0, heightScale = 1.0, pixelRatio = 1.0, scale = 1.0;
    double slantA = 0.0, centreY = 0.0, rotation = 0.0;
};

// A measured-to-be face with a 2·halfWidth × 2·halfHeight outline box.
void SetUpBox(CFace& face, double halfWidth, double halfHeight, const BoxSetup& s = {}) {
    face.hasOutline = 1;
    face.halfWidth = halfWidth;
    face.halfHeight = halfHeight;
    face.marginX = s.marginX;
    face.marginY = s.marginY;
    face.widthScale = s.widthScale;
    face.heightScale = s.heightScale;
    face.pixelRatio = s.pixelRatio;
    face.scale = s.scale;
    face.slantA = s.slantA;
    face.centreY = s.centreY;
    face.rotation = s.rotation;
}

// A 100 × 50 box; sizes are truncated, get a margin of 48 sub-samples and
// are rounded up to a multiple of 4.
TEST(FaceMeasure, SubSampleSizes) {
    const struct {
        const char* name;
        BoxSetup setup;
        int32_t subWidth, subHeight;
    } cases[] = {
        {"plain: 100 + 48, 50 + 48 = 98 → 100", {}, 148, 100},
        // Margins widen the box first: half 52 × 2 = 104 → 208 ÷ 0.5 × 1.5 =
        // 624; half 26 × 0.5 = 13 → 26 ÷ 0.5 = 52.
        {"margins, scales and ratio",
         {.marginX = 2.0, .marginY = 1.0, .widthScale = 2.0, .heightScale = 0.5,
          .pixelRatio = 1.5, .scale = 0.5},
         672, 100},
        // Half width |0.5 × 25| + 50 = 62.5: 125 + 48 = 173 → 176.
        {"slant widens by the slanted height", {.slantA = std::atan(0.5)}, 176, 100},
        {"quarter turn swaps the roles", {.rotation = std::numbers::pi / 2.0}, 100, 148},
    };
    for (const auto& c : cases) {
        CFace face(nullptr);
        SetUpBox(face, 50.0, 25.0, c.setup);
        face.Measure();
        EXPECT_EQ(face.subWidth, c.subWidth) << c.name;
        EXPECT_EQ(face.subHeight, c.subHeight) << c.name;
        EXPECT_EQ(face.imageWidth, c.subWidth / 4) << c.name;
        EXPECT_EQ(face.imageHeight, c.subHeight / 4) << c.name;
    }
}

TEST(FaceMeasure, BoxGrowsByTheMarginOnce) {
    CFace face(nullptr);
    SetUpBox(face, 50.0, 25.0, {.marginX = 2.0, .slantA = std::atan(0.5), .centreY = 10.0});
    face.Measure();
    EXPECT_EQ(face.painterHalfWidth, 52.0);  // before slant and margin
    EXPECT_NEAR(face.centreX, 5.0, 1e-12);   // the centre slants too
    const double widthSub = 2.0 * (0.5 * 25.0 + 52.0);
    EXPECT_DOUBLE_EQ(face.halfWidth, (0.5 * 25.0 + 52.0) * (48.0 / widthSub + 1.0));
    EXPECT_DOUBLE_EQ(face.halfHeight, 25.0 * (48.0 / 50.0 + 1.0));
    EXPECT_EQ(face.subWidthExact, float(widthSub + 48.0));
    // Measuring again changes nothing until the face is set up again.
    face.halfWidth = 1000.0;
    face.Measure();
    EXPECT_EQ(face.subWidth, 180);  // 129 + 48 = 177 → 180
}

TEST(FaceMeasure, RotationBoundsTheRotatedBox) {
    // Angles a whole turn apart, or mirrored, measure the same.
    const double hw = std::sin(std::atan2(50.0, 25.0) + 0.3) * std::hypot(50.0, 25.0);
    for (double r : {0.3, 0.3 + 2.0 * std::numbers::pi, -0.3, std::numbers::pi - 0.3}) {
        CFace face(nullptr);
        SetUpBox(face, 50.0, 25.0, {.rotation = r});
        face.Measure();
        EXPECT_EQ(face.subWidth, (static_cast<int>(hw * 2.0) + 48 + 3) / 4 * 4) << r;
    }
}

TEST(FaceMeasure, EmptyOrBrokenInputStaysBounded) {
    CFace empty(nullptr);
    empty.Measure();
    EXPECT_EQ(empty.imageWidth, 0);
    EXPECT_EQ(empty.dirty, 0);

    CFace nan(nullptr);
    SetUpBox(nan, std::numeric_limits<double>::quiet_NaN(), 10.0);
    nan.Measure();
    EXPECT_EQ(nan.subWidth, 48);  // NaN sizes count as 0
    CFace huge(nullptr);
    SetUpBox(huge, 1e300, 1e300, {.rotation = 1e300});
    huge.Measure();
    EXPECT_GE(huge.subWidth, 0);
    EXPECT_EQ(huge.subWidth % 4, 0);
}

}  // namespace
