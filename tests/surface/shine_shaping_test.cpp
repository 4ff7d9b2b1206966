// Shine shaping: the pieces change over at r = 0.1 and r = 0.7, not one
// value later, in both precisions (the generators' reference tests pin the
// pieces themselves).
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
    EXPECT_NEAR(tr::ShineFactor(std::nextafter(T(0.1), T(0))), T(0.125), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(0.1)), T(0.125), tolerance);
    EXPECT_NEAR(tr::ShineFactor(std::nextafter(T(0.7), T(0))), T(0.875), tolerance);
    EXPECT_NEAR(tr::ShineFactor(T(0.7)), T(0.8749962), tolerance); // the last piece
    EXPECT_EQ(tr::ShineFactor(T(2)), T(1));
}

} // namespace
