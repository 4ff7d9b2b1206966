// Shine shaping: the three pieces of the blend weight meet where they
// should, in both working precisions, and the angle limit keeps the slope
// away from 0.
#include "surface/shine_shaping.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

template <class T>
class ShineShaping : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(ShineShaping, Precisions);

TYPED_TEST(ShineShaping, PiecesMeetAtTheirBreakpoints) {
    using T = TypeParam;
    const T tolerance = std::is_same_v<T, float> ? T(1e-6) : T(1e-12);
    // Just below and at 0.1: 0.75 r + 0.05 and 1.25 r both give 0.125.
    EXPECT_NEAR(tr::ShineFactor(std::nextafter(T(0.1), T(0))), T(0.125), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(0.1)), T(0.125), tolerance);
    // At 0.7 the middle piece gives 0.875 and the last 0.8749962.
    EXPECT_NEAR(tr::ShineFactor(std::nextafter(T(0.7), T(0))), T(0.875), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(0.7)), T(0.8749962), tolerance);
    // Inside the band (r < 1) the weight stays below 1; at r = 1 it is 0.999996.
    EXPECT_LT(tr::ShineFactor(std::nextafter(T(1), T(0))), T(1));
    EXPECT_NEAR(tr::ShineFactor(T(1)), T(0.999996), tolerance);
    EXPECT_EQ(tr::ShineFactor(T(2)), T(1));
    EXPECT_EQ(tr::ShineFactor(T(0)), T(0.05));
}

TYPED_TEST(ShineShaping, IsIncreasingAcrossTheBand) {
    using T = TypeParam;
    T previous = tr::ShineFactor(T(0));
    for (int i = 1; i <= 1000; ++i) {
        const T k = tr::ShineFactor(T(i) / T(1000));
        EXPECT_GE(k, previous) << i;
        previous = k;
    }
}

TYPED_TEST(ShineShaping, SmallAnglesMoveToTheFloatOfOneThousandth) {
    using T = TypeParam;
    const T limited = T(0.0010000000474974513);
    for (T a : {T(0), T(-0), T(0.0005), T(-0.0009), std::nextafter(T(0.001), T(0))}) {
        EXPECT_EQ(tr::LimitShineAngle(a), limited) << a;
    }
    for (T a : {T(0.001), T(-0.001), T(0.002), T(-1.5)}) {
        EXPECT_EQ(tr::LimitShineAngle(a), a) << a;
    }
}

TEST(ShineLine, CentreLineMeetsTheBoxCentreWithoutShift) {
    // 40 x 20 box, 30 degrees, position 0: the centre (20, 10) is on the line.
    const double angle = 0.5235987755982988;
    const auto line = tr::ShineLine<double>::Make(angle, 40.0, 20.0, std::sqrt(2000.0), 0.0);
    EXPECT_NEAR(line.VerticalDistance(20.0, 10.0), 0.0, 1e-12);
    EXPECT_NEAR(line.HorizontalDistance(20.0, 10.0), 0.0, 1e-12);
    // A point one unit off along the normal measures 1.
    const double nx = -std::sin(angle);
    const double ny = std::cos(angle);
    const double hd = line.HorizontalDistance(20.0 + nx, 10.0 + ny);
    const double vd = line.VerticalDistance(20.0 + nx, 10.0 + ny);
    EXPECT_NEAR(tr::PerpendicularDistance(hd, vd), 1.0, 1e-12);
}

TEST(ShineLine, PositionShiftsAlongTheNormalByHalfDiagonals) {
    const double angle = 0.3;
    const double diagonal = 50.0;
    const auto line = tr::ShineLine<double>::Make(angle, 40.0, 30.0, diagonal, 0.4);
    EXPECT_NEAR(std::hypot(line.dx, line.dy), diagonal * 0.5 * 0.4, 1e-12);
    EXPECT_NEAR(line.dx * std::cos(angle) + line.dy * std::sin(angle), 0.0, 1e-7);
}

} // namespace
