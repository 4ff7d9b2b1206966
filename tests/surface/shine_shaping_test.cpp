// Shine shaping: the pieces of the blend weight change over at r = 0.1 and
// r = 0.7 (not one value later), in both working precisions. The rest of the
// shine is pinned by the generators' reference pixel tests.
#include "surface/shine_shaping.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

template <class T>
class ShineShaping : public testing::Test {};
using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(ShineShaping, Precisions);

TYPED_TEST(ShineShaping, PiecesChangeAtTheirBreakpoints) {
    using T = TypeParam;
    const T tolerance = std::is_same_v<T, float> ? T(1e-6) : T(1e-12);
    EXPECT_EQ(tr::ShineFactor(T(0)), T(0.05));
    EXPECT_NEAR(tr::ShineFactor(std::nextafter(T(0.1), T(0))), T(0.125), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(0.1)), T(0.125), tolerance);
    // Below 0.7 the middle piece gives 0.875, at 0.7 the last gives 0.8749962.
    EXPECT_NEAR(tr::ShineFactor(std::nextafter(T(0.7), T(0))), T(0.875), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(0.7)), T(0.8749962), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(1)), T(0.999996), tolerance);
    EXPECT_EQ(tr::ShineFactor(T(2)), T(1));
}

} // namespace
