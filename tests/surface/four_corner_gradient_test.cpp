// Four-corner gradient: pixels against a reference written from the
// formula (double precision, w = (1 - d / diag)^4 as the square of the
// square), the shine's special cases, and bit-identity of the fast path
// with the plain one.
#include "surface/four_corner_gradient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "guarded_image.h"
#include "surface/image_view.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

uint32_t Byte(uint32_t colour, int channel) { return (colour >> (8 * channel)) & 0xFF; }

// One pixel straight from the definition.
uint32_t ReferencePixel(int32_t width, int32_t height, const FourCornerGradientParameters& p,
                        int32_t xPx, int32_t yPx) {
    const double W = width, H = height, x = xPx, y = yPx;
    const double diag = std::sqrt(static_cast<double>(width * width + height * height));
    auto weight = [&](double dx, double dy) {
        const double v = 1.0 - std::sqrt(dx * dx + dy * dy) / diag;
        return (v * v) * (v * v);
    };
    const double w[4] = {weight(x, y), weight(W - x, y), weight(W - x, H - y), weight(x, H - y)};
    uint32_t c[4];
    for (int ch = 0; ch < 4; ++ch) {
        double num = 0, den = 0;
        for (int i = 0; i < 4; ++i) {
            num += Byte(p.corners[i], ch) * w[i];
            den += w[i];
        }
        c[ch] = static_cast<uint32_t>(num / den);
    }
    double a = p.shineAngle;
    if (-0.001 < a && a < 0.001) {
        a = 0.0010000000474974513;
    }
    const double t = std::tan(a);
    const double b = (H - W * t) * 0.5;
    const double shift = diag * 0.5 * p.shinePosition;
    const double px = x + std::cos(a + 1.570796325) * shift;
    const double py = y + std::sin(a + 1.570796325) * shift;
    const double hd = std::fabs((py - b) / t - px);
    const double vd = std::fabs(px * t + b - py);
    const double s = hd * vd / std::sqrt(hd * hd + vd * vd);
    if (p.shineWidth > s) {
        const double r = s / p.shineWidth;
        const double k = r < 0.1   ? 0.75 * r + 0.05
                         : r < 0.7 ? 1.25 * r
                                   : std::min(1.0, 0.416666 * r + 0.58333);
        for (int ch = 0; ch < 3; ++ch) {
            c[ch] = static_cast<uint32_t>(c[ch] * k + Byte(p.shineColour, ch) * (1.0 - k));
        }
    }
    for (uint32_t& v : c) {
        v = std::min(v, 255u);
    }
    return c[3] << 24 | c[2] << 16 | c[1] << 8 | c[0];
}

FourCornerGradientParameters Parameters(double shineWidth, double angle, double position) {
    FourCornerGradientParameters p{};
    std::memset(p.reserved0, 0xEE, sizeof p.reserved0); // never read
    p.angle = 123.0;                                     // never read
    p.corners[0] = 0xFFF01008u;
    p.corners[1] = 0x80209F30u;
    p.corners[2] = 0x4000FFFFu;
    p.corners[3] = 0xFF7F7F7Fu;
    p.shineWidth = shineWidth;
    p.shineColour = 0x10FFF0E0u;
    p.shineAngle = angle;
    p.shinePosition = position;
    return p;
}

TEST(FourCornerGradient, MatchesTheFormulaPixelByPixel) {
    const struct {
        int32_t width, height;
        double shineWidth, angle, position;
    } cases[] = {
        {7, 5, 0.0, 0.4, 0.0},  {13, 11, 3.0, 0.4, 0.0},  {13, 11, 2.5, -1.1, 0.3},
        {9, 16, 6.0, 2.0, -0.5}, {32, 3, 1.5, 0.0, 0.1},   {3, 32, 100.0, 1.5707, 0.0},
    };
    for (const auto& c : cases) {
        GuardedImage image(c.width, c.height, (c.width + 2) * 4);
        const auto p = Parameters(c.shineWidth, c.angle, c.position);
        EXPECT_EQ(FillFourCornerGradient(image.Block(), &p), static_cast<uint32_t>(c.height));
        for (int32_t y = 0; y < c.height; ++y) {
            for (int32_t x = 0; x < c.width; ++x) {
                ASSERT_EQ(image.At(x, y), ReferencePixel(c.width, c.height, p, x, y))
                    << c.width << "x" << c.height << " shine " << c.shineWidth << " at " << x
                    << "," << y;
            }
        }
        EXPECT_TRUE(image.GuardsIntact());
    }
}

TEST(FourCornerGradient, SinglePixelLeansTowardsTheFirstCorner) {
    GuardedImage image(1, 1, 4);
    FourCornerGradientParameters p{};
    p.corners[0] = 0xC8C8C8C8u; // 200 in every channel, the others 0
    EXPECT_EQ(FillFourCornerGradient(image.Block(), &p), 1u);
    // w0 = 1, w1 = w3 = (1 - 1/sqrt 2)^4, w2 = 0: 200 / (1 + 2 w1) = 197.08.
    const double w1 = std::pow(1.0 - 1.0 / std::sqrt(2.0), 4.0);
    const uint32_t expected = static_cast<uint32_t>(200.0 / (1.0 + 2.0 * w1));
    EXPECT_EQ(expected, 197u);
    EXPECT_EQ(image.At(0, 0), expected * 0x01010101u);
    EXPECT_TRUE(image.GuardsIntact());
}

TEST(FourCornerGradient, AngleNearZeroBehavesAsOneThousandth) {
    auto render = [](double angle) {
        GuardedImage image(24, 18, 24 * 4);
        const auto p = Parameters(4.0, angle, 0.1);
        FillFourCornerGradient(image.Block(), &p);
        return image.Buffer();
    };
    const auto limited = render(0.0010000000474974513);
    EXPECT_EQ(render(0.0), limited);
    EXPECT_EQ(render(-0.0005), limited);
    EXPECT_EQ(render(0.0009), limited);
    // The band is actually drawn: without it the pixels differ.
    GuardedImage plain(24, 18, 24 * 4);
    const auto noShine = Parameters(0.0, 0.0, 0.1);
    FillFourCornerGradient(plain.Block(), &noShine);
    EXPECT_NE(plain.Buffer(), limited);
}

TEST(FourCornerGradient, ShineWidthZeroOrNegativeDisablesTheShine) {
    GuardedImage reference(20, 10, 80);
    const auto noShine = Parameters(0.0, 0.5, 0.0);
    FillFourCornerGradient(reference.Block(), &noShine);
    for (double width : {-5.0, std::nan("")}) {
        GuardedImage image(20, 10, 80);
        const auto p = Parameters(width, 0.5, 0.0);
        FillFourCornerGradient(image.Block(), &p);
        EXPECT_EQ(image.Buffer(), reference.Buffer()) << width;
    }
    // Corner colours only: no channel of any pixel came from the shine colour.
    for (int32_t x = 0; x < 20; ++x) {
        EXPECT_EQ(reference.At(x, 4), ReferencePixel(20, 10, noShine, x, 4));
    }
}

TEST(FourCornerGradient, NegativeStrideWritesRowsUpward) {
    const auto p = Parameters(3.0, 0.7, 0.2);
    GuardedImage image(9, 6, -12 * 4);
    EXPECT_EQ(FillFourCornerGradient(image.Block(), &p), 6u);
    for (int32_t y = 0; y < 6; ++y) {
        for (int32_t x = 0; x < 9; ++x) {
            ASSERT_EQ(image.At(x, y), ReferencePixel(9, 6, p, x, y)) << x << "," << y;
        }
    }
    EXPECT_TRUE(image.GuardsIntact());
}

TEST(FourCornerGradient, RowCountForDegenerateBlocks) {
    const auto p = Parameters(3.0, 0.7, 0.2);
    GuardedImage image(4, 3, 16);
    ImageBlock block = *image.Block();
    block.width = 0;
    EXPECT_EQ(FillFourCornerGradient(&block, &p), 3u); // rows stepped, nothing written
    block.width = 4;
    block.height = 0;
    EXPECT_EQ(FillFourCornerGradient(&block, &p), 0u);
    block.height = 3;
    block.stride = 15;
    EXPECT_EQ(FillFourCornerGradient(&block, &p), 0u);
    EXPECT_EQ(FillFourCornerGradient(image.Block(), nullptr), 0u);
    EXPECT_EQ(FillFourCornerGradient(nullptr, &p), 0u);
    EXPECT_TRUE(image.Untouched());
}

// The fast path must give the plain path's bits for any size and
// parameters, including slopes near 0 and near vertical, huge and tiny
// shine widths, and bands far outside the image.
TEST(FourCornerGradient, FastPathIsBitIdenticalToPlainPath) {
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int32_t> size(1, 40);
    std::uniform_int_distribution<uint32_t> colour;
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double angles[] = {0.0, 1e-4, -0.001, 0.001, 1.5707963, -1.5707963, 3.14159, 0.7};
    const double widths[] = {0.0, 1e-300, 0.5, 3.0, 25.0, 1e120, -2.0};
    for (int trial = 0; trial < 3000; ++trial) {
        // A few large images first: odd and even heights pair rows
        // differently, and wide bands cross many rows.
        const int32_t bigW[] = {257, 257, 257, 257, 257, 320, 181, 1};
        const int32_t bigH[] = {3, 4, 5, 6, 7, 181, 320, 300};
        const int32_t w = trial < 8 ? bigW[trial] : size(random);
        const int32_t h = trial < 8 ? bigH[trial] : size(random);
        FourCornerGradientParameters p{};
        for (uint32_t& c : p.corners) {
            c = colour(random);
        }
        p.shineColour = colour(random);
        p.shineAngle = trial % 3 == 0 ? angles[trial / 3 % 8] : (unit(random) - 0.5) * 7.0;
        p.shineWidth = trial % 2 == 0 ? widths[trial / 2 % 7] : unit(random) * 30.0;
        p.shinePosition = (unit(random) - 0.5) * 3.0;
        std::vector<uint32_t> fast(size_t(w) * h, 1), plain(size_t(w) * h, 2);
        ImageBlock fastBlock{fast.data(), w, h, w * 4};
        ImageBlock plainBlock{plain.data(), w, h, w * 4};
        ASSERT_EQ(tr::FillFourCornerGradientImage(*tr::MakeImageView(&fastBlock), p),
                  static_cast<uint32_t>(h));
        ASSERT_EQ(tr::FillFourCornerGradientPlain(*tr::MakeImageView(&plainBlock), p),
                  static_cast<uint32_t>(h));
        ASSERT_EQ(std::memcmp(fast.data(), plain.data(), fast.size() * 4), 0)
            << "trial " << trial << ": " << w << "x" << h << " width " << p.shineWidth
            << " angle " << p.shineAngle << " position " << p.shinePosition;
    }
}

} // namespace
