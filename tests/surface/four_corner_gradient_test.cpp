// Four-corner gradient: pixels against a double-precision reference, and
// bit-identity of the fast path with the plain one.
#include "surface/four_corner_gradient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "gradient_reference.h"
#include "guarded_image.h"
#include "surface/image_view.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

// One pixel straight from the definition, in double precision.
uint32_t ReferencePixel(int32_t width, int32_t height, const FourCornerGradientParameters& p,
                        int32_t xPx, int32_t yPx) {
    const double W = width, H = height, x = xPx, y = yPx;
    const double diag = std::sqrt(static_cast<double>(width * width + height * height));
    double w[4];
    tr_test::CornerWeights(x, y, W, H, diag, w);
    uint32_t c[4];
    for (int ch = 0; ch < 4; ++ch) {
        double num = 0, den = 0;
        for (int i = 0; i < 4; ++i) {
            num += tr_test::Byte(p.corners[i], ch) * w[i];
            den += w[i];
        }
        c[ch] = static_cast<uint32_t>(num / den);
    }
    const double k =
        tr_test::ShineWeight(x, y, W, H, diag, p.shineAngle, p.shinePosition, p.shineWidth, false);
    for (int ch = 0; k >= 0 && ch < 3; ++ch) {
        c[ch] = static_cast<uint32_t>(c[ch] * k + tr_test::Byte(p.shineColour, ch) * (1.0 - k));
    }
    for (uint32_t& v : c) v = std::min(v, 255u);
    return c[3] << 24 | c[2] << 16 | c[1] << 8 | c[0];
}

// The reserved bytes and the rotation angle (123) are never read.
FourCornerGradientParameters Parameters(double shineWidth, double angle, double position) {
    return {{0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}, 123.0,
            {0xFFF01008u, 0x80209F30u, 0x4000FFFFu, 0xFF7F7F7Fu}, shineWidth, 0x10FFF0E0u, 0, angle, position};
}

// Rows: a single pixel, the angle limit, disabled shines (0, negative, NaN),
// a band wider than the image, a bottom-up image.
TEST(FourCornerGradient, MatchesTheFormulaPixelByPixel) {
    const struct {
        int32_t width, height, pitch;
        double shineWidth, angle, position;
    } cases[] = {
        {1, 1, 1, 3.0, 0.4, 0.0},       {7, 5, 9, 0.0, 0.4, 0.0},        {13, 11, 15, 3.0, 0.4, 0.0},
        {13, 11, 15, 2.5, -1.1, 0.3},   {9, 16, 11, 6.0, 2.0, -0.5},     {32, 3, 34, 1.5, 0.0, 0.1},
        {24, 18, 24, 4.0, -0.0005, 0.1}, {20, 10, 20, -5.0, 0.5, 0.0},    {20, 10, 20, std::nan(""), 0.5, 0.0},
        {3, 32, 5, 100.0, 1.5707, 0.0}, {9, 6, -12, 3.0, 0.7, 0.2},
    };
    for (const auto& c : cases) {
        GuardedImage image(c.width, c.height, c.pitch * 4);
        const auto p = Parameters(c.shineWidth, c.angle, c.position);
        EXPECT_EQ(FillFourCornerGradient(image.Block(), &p), static_cast<uint32_t>(c.height));
        EXPECT_TRUE(image.Holds([&](int32_t x, int32_t y) { return ReferencePixel(c.width, c.height, p, x, y); }))
            << c.width << "x" << c.height;
    }
}

// Slopes near 0 and vertical, huge and tiny widths, bands far outside; the
// large images first (odd and even heights pair rows differently).
TEST(FourCornerGradient, FastPathIsBitIdenticalToPlainPath) {
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int32_t> size(1, 40);
    std::uniform_int_distribution<uint32_t> colour;
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double angles[] = {0.0, 1e-4, -0.001, 0.001, 1.5707963, -1.5707963, 3.14159, 0.7};
    const double widths[] = {0.0, 1e-300, 0.5, 3.0, 25.0, 1e120, -2.0};
    for (int trial = 0; trial < 3000; ++trial) {
        const int32_t bigW[] = {257, 257, 257, 257, 257, 320, 181, 1};
        const int32_t bigH[] = {3, 4, 5, 6, 7, 181, 320, 300};
        const int32_t w = trial < 8 ? bigW[trial] : size(random);
        const int32_t h = trial < 8 ? bigH[trial] : size(random);
        FourCornerGradientParameters p{};
        for (uint32_t& c : p.corners) c = colour(random);
        p.shineColour = colour(random);
        p.shineAngle = trial % 3 == 0 ? angles[trial / 3 % 8] : (unit(random) - 0.5) * 7.0;
        p.shineWidth = trial % 2 == 0 ? widths[trial / 2 % 7] : unit(random) * 30.0;
        p.shinePosition = (unit(random) - 0.5) * 3.0;
        std::vector<uint32_t> fast(size_t(w) * h, 1), plain(size_t(w) * h, 2);
        ImageBlock fastBlock{fast.data(), w, h, w * 4}, plainBlock{plain.data(), w, h, w * 4};
        ASSERT_EQ(tr::FillFourCornerGradientImage(*tr::MakeImageView(&fastBlock), p), static_cast<uint32_t>(h));
        ASSERT_EQ(tr::FillFourCornerGradientPlain(*tr::MakeImageView(&plainBlock), p), static_cast<uint32_t>(h));
        ASSERT_TRUE(fast == plain) << "trial " << trial;
    }
}

} // namespace
