// Tests of the character face's measuring.
#include "paint/face.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

namespace {

// Measures a face with a 100 × 50 outline box and unit scales, after `adjust`.
void MeasureBox(CFace& face, const std::function<void(CFace&)>& adjust) {
    face.hasOutline = 1;
    face.halfWidth = 50.0;
    face.halfHeight = 25.0;
    face.widthScale = face.heightScale = face.pixelRatio = face.scale = 1.0;
    adjust(face);
    face.Measure();
}

// Sizes are truncated, get a margin of 48 sub-samples and are rounded up to
// a multiple of 4.
TEST(FaceMeasure, SubSampleSizes) {
    const struct {
        const char* name;
        std::function<void(CFace&)> adjust;
        int32_t subWidth, subHeight;
    } cases[] = {
        {"plain: 100 + 48, 50 + 48 = 98 → 100", [](CFace&) {}, 148, 100},
        // Margins widen the box first: half 52 × 2 = 104 → 208 ÷ 0.5 × 1.5 =
        // 624; half 26 × 0.5 = 13 → 26 ÷ 0.5 = 52.
        {"margins, scales and ratio",
         [](CFace& f) {
             f.marginX = 2.0, f.marginY = 1.0, f.widthScale = 2.0, f.heightScale = 0.5;
             f.pixelRatio = 1.5, f.scale = 0.5;
         },
         672, 100},
        // Half width |0.5 × 25| + 50 = 62.5: 125 + 48 = 173 → 176.
        {"slant widens by the slanted height", [](CFace& f) { f.slantA = std::atan(0.5); }, 176,
         100},
        {"quarter turn swaps the roles", [](CFace& f) { f.rotation = std::numbers::pi / 2.0; },
         100, 148},
    };
    for (const auto& c : cases) {
        CFace face(nullptr);
        MeasureBox(face, c.adjust);
        EXPECT_EQ(face.subWidth, c.subWidth) << c.name;
        EXPECT_EQ(face.subHeight, c.subHeight) << c.name;
        EXPECT_EQ(face.imageHeight, c.subHeight / 4) << c.name;
    }
}

TEST(FaceMeasure, AnglesATurnApartOrMirroredMeasureTheSame) {
    // Half width of the box turned by 0.3: its corner at radius ρ, angle α.
    const double hw = std::sin(std::atan2(50.0, 25.0) + 0.3) * std::hypot(50.0, 25.0);
    for (double r : {0.3, 0.3 + 2.0 * std::numbers::pi, -0.3, std::numbers::pi - 0.3}) {
        CFace face(nullptr);
        MeasureBox(face, [r](CFace& f) { f.rotation = r; });
        EXPECT_EQ(face.subWidth, (static_cast<int>(hw * 2.0) + 48 + 3) / 4 * 4) << r;
    }
}

TEST(FaceMeasure, BoxGrowsByTheMarginOnce) {
    CFace face(nullptr);
    MeasureBox(face, [](CFace& f) {
        f.marginX = 2.0, f.slantA = std::atan(0.5), f.centreY = 10.0;
    });
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

TEST(FaceMeasure, EmptyOrBrokenInputStaysBounded) {
    CFace empty(nullptr), nan(nullptr), huge(nullptr);
    empty.Measure();
    EXPECT_EQ(empty.imageWidth, 0);
    MeasureBox(nan, [](CFace& f) { f.halfWidth = std::numeric_limits<double>::quiet_NaN(); });
    EXPECT_EQ(nan.subWidth, 48);  // NaN sizes count as 0
    MeasureBox(huge, [](CFace& f) { f.halfWidth = f.halfHeight = f.rotation = 1e300; });
    EXPECT_GE(huge.subWidth, 0);
}

}  // namespace
