// Tests of the character face's measuring.
#include "paint/face.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

void MeasuredBox(CFace& face, double halfWidth, double halfHeight) {
    face.hasOutline = 1;
    face.halfWidth = halfWidth;
    face.halfHeight = halfHeight;
    face.heightScale = 1.0;
    face.widthScale = 1.0;
    face.pixelRatio = 1.0;
    face.scale = 1.0;
}

TEST(FaceMeasure, PlainBoxGetsMarginAndRounding) {
    CFace face(nullptr);
    MeasuredBox(face, 50.0, 25.0);  // 100 × 50 outline units
    face.Measure();
    EXPECT_EQ(face.subWidth, 148);   // 100 + 48
    EXPECT_EQ(face.subHeight, 100);  // 50 + 48 = 98, rounded up to 100
    EXPECT_EQ(face.imageWidth, 37);
    EXPECT_EQ(face.imageHeight, 25);
    EXPECT_EQ(face.painterHalfWidth, 50.0);
    EXPECT_DOUBLE_EQ(face.halfWidth, 50.0 * (48.0 / 100.0 + 1.0));
    EXPECT_DOUBLE_EQ(face.halfHeight, 25.0 * (48.0 / 50.0 + 1.0));
    EXPECT_EQ(face.subWidthExact, 148.0f);
    EXPECT_EQ(face.dirty, 0);
    // Measuring again changes nothing until the face is set up again.
    face.halfWidth = 1000.0;
    face.Measure();
    EXPECT_EQ(face.imageWidth, 37);
}

TEST(FaceMeasure, MarginsScalesAndRatio) {
    CFace face(nullptr);
    MeasuredBox(face, 50.0, 25.0);
    face.marginX = 2.0;  // fragment extents widen the box before the margin
    face.marginY = 1.0;
    face.widthScale = 2.0;
    face.heightScale = 0.5;
    face.pixelRatio = 1.5;
    face.scale = 0.5;
    face.Measure();
    EXPECT_EQ(face.painterHalfWidth, 52.0);
    EXPECT_EQ(face.painterHalfHeight, 26.0);
    // width: 52 × 2 = 104 half → 208 / 0.5 × 1.5 = 624 + 48 = 672
    EXPECT_EQ(face.subWidth, 672);
    // height: 26 × 0.5 = 13 half → 26 / 0.5 = 52 + 48 = 100
    EXPECT_EQ(face.subHeight, 100);
    EXPECT_EQ(face.imageWidth, 168);
    EXPECT_EQ(face.imageHeight, 25);
}

TEST(FaceMeasure, SlantWidensByTheSlantedHeight) {
    CFace face(nullptr);
    MeasuredBox(face, 50.0, 25.0);
    face.slantA = std::atan(0.5);
    face.centreY = 10.0;
    face.Measure();
    // hw = |0.5 × 25| + 50 = 62.5, so Ws = 125; cx = 10 × 0.5.
    EXPECT_EQ(face.subWidth, 176);  // 125 + 48 = 173 → 176
    EXPECT_NEAR(face.centreX, 5.0, 1e-12);
}

TEST(FaceMeasure, RotationBoundsTheRotatedBox) {
    CFace quarter(nullptr);
    MeasuredBox(quarter, 50.0, 25.0);
    quarter.rotation = 3.141592653589793 / 2.0;
    quarter.Measure();
    EXPECT_EQ(quarter.subWidth, 100);   // the roles swap: 50 + 48 → 100
    EXPECT_EQ(quarter.subHeight, 148);  // 100 + 48

    // Angles a whole turn apart, or mirrored, measure the same.
    for (double r : {0.3, 0.3 + 2.0 * 3.141592653589793, -0.3, 3.141592653589793 - 0.3}) {
        CFace face(nullptr);
    MeasuredBox(face, 50.0, 25.0);
        face.rotation = r;
        face.Measure();
        const double rho = std::hypot(50.0, 25.0);
        const double alpha = std::atan2(50.0, 25.0);
        const double hw = std::sin(alpha + 0.3) * rho;
        EXPECT_EQ(face.subWidth, (static_cast<int>(hw * 2.0) + 48 + 3) / 4 * 4) << r;
    }
}

TEST(FaceMeasure, EmptyOrBrokenInputStaysBounded) {
    CFace empty(nullptr);
    empty.Measure();
    EXPECT_EQ(empty.imageWidth, 0);
    EXPECT_EQ(empty.dirty, 0);

    CFace nan(nullptr);
    MeasuredBox(nan, std::numeric_limits<double>::quiet_NaN(), 10.0);
    nan.Measure();
    EXPECT_EQ(nan.subWidth, 48);  // NaN sizes count as 0
    CFace huge(nullptr);
    MeasuredBox(huge, 1e300, 1e300);
    huge.rotation = 1e300;
    huge.Measure();
    EXPECT_GE(huge.subWidth, 0);
    EXPECT_EQ(huge.subWidth % 4, 0);
}

}  // namespace
