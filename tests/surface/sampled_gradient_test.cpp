// Sampled gradient: pixels against a reference (gradient and shine in float,
// texture mixing in double), for the exponent split's branches and cut-off.
#include "surface/sampled_gradient.h"

#include <gtest/gtest.h>

#include <cmath>

#include "gradient_reference.h"
#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::Box;
using tr_test::Byte;
using tr_test::GuardedImage;

constexpr uintptr_t kUserValue = 0x00A55A;

// Alphas 0-240; the colour encodes coordinate and user value.
uint32_t PatternTexture(int32_t x, int32_t y, uintptr_t user) {
    const uint32_t alpha = ((x * 7 + y * 3) % 5) * 60u; // 0, 60, ..., 240
    return (alpha << 24 | (static_cast<uint32_t>(x * 37) & 0xFF) << 16 |
            (static_cast<uint32_t>(y * 53) & 0xFF) << 8 | static_cast<uint32_t>(x * y) % 256) ^
           static_cast<uint32_t>(user);
}

uint32_t ReferencePixel(const Box& box, const SampledGradientParameters& p, TextureCallback cb,
                        const TextureStyle& style, int32_t x, int32_t y) {
    const int32_t ix = static_cast<int32_t>(box.originX), iy = static_cast<int32_t>(box.originY);
    const float fx = static_cast<float>(box.x0 - ix), fy = static_cast<float>(box.y0 - iy);
    const float rotation = static_cast<float>(p.angle);
    const float R = -static_cast<float>(box.angle) - rotation;
    const float w = static_cast<float>(box.halfWidth), h = static_cast<float>(box.halfHeight);
    const float px0 = static_cast<float>(x) - fx, qy0 = static_cast<float>(y) - fy;
    const float u = px0 * std::cos(R) + qy0 * std::sin(R) + w;
    const float v = qy0 * std::cos(R) - px0 * std::sin(R) + h;
    const float W2 = 2 * w, H2 = 2 * h;
    const float diag = std::sqrt(W2 * W2 + H2 * H2);
    float wt[4];
    tr_test::CornerWeights(u, v, W2, H2, diag, wt);
    float ch[4];
    for (int c = 0; c < 4; ++c) {
        float num = 0, den = 0;
        for (int i = 0; i < 4; ++i) {
            num += static_cast<float>(Byte(p.corners[i], c)) * wt[i];
            den += wt[i];
        }
        ch[c] = num / den;
    }
    if (cb != nullptr) {
        const uint32_t s = cb(x + ix, y + iy, kUserValue);
        double ta = Byte(s, 3) / 255.0, tf;
        const double ga = ch[3] / 255.0;
        const double e1 = style.textureAlphaExponent, e2 = style.gradientAlphaExponent;
        // Each alpha splits into a part that mixes and a part that multiplies.
        if (e1 >= 1) tf = ta, ta = 1;
        else if (e1 <= 0) tf = 1;
        else if (ta == 0) ta = tf = 0;
        else tf = std::pow(ta, e1), ta = ta / tf;
        double ge, gf;
        if (e2 >= 1) ge = 1, gf = ga;
        else if (!(e2 > 0)) ge = ga, gf = 1;
        else if (ga == 0) ge = gf = 0;
        else gf = std::pow(ga, e2), ge = ga / gf;
        const double A = (ta - ge) * style.mix + ge;
        if (A < 0.0001) {
            ch[0] = ch[1] = ch[2] = ch[3] = 0; // the shine still applies
        } else {
            for (int c = 0; c < 3; ++c) {
                const double gk = ch[c];
                ch[c] = static_cast<float>(((Byte(s, c) / 255.0 * ta - ge * gk / 255.0) * style.mix +
                                            ge * gk / 255.0) * 255.0 / A);
            }
            ch[3] = static_cast<float>(A * 255.0 * tf * gf);
        }
    }
    const float k = tr_test::ShineWeight(u, v, W2, H2, diag, -static_cast<float>(p.shineAngle) - rotation,
                                         static_cast<float>(p.shinePosition),
                                         static_cast<float>(p.shineWidth), true);
    if (k >= 0) {
        const float sa = static_cast<float>(Byte(p.shineColour, 3));
        const float alpha = k * ch[3] + (1 - k) * sa;
        for (int c = 0; c < 3; ++c) {
            ch[c] = (k * ch[c] * ch[3] + sa * static_cast<float>(Byte(p.shineColour, c)) * (1 - k)) / alpha;
        }
        ch[3] = alpha;
    }
    uint32_t pixel = 0;
    for (int c = 3; c >= 0; --c) pixel = pixel << 8 | static_cast<uint32_t>(static_cast<int32_t>(ch[c]));
    return pixel;
}

SampledGradientParameters Parameters(double rotation, double shineWidth) {
    return {{}, rotation, {0xFFF01008u, 0x80209F30u, 0xC000FFFFu, 0xFF7F7F7Fu}, shineWidth, 0x90FFF0E0u, 0, 0.5, 0.15};
}

void ExpectMatchesReference(const Box& box, const SampledGradientParameters& p, TextureCallback cb,
                            const TextureStyle& style, int32_t pitch, const char* name) {
    constexpr int32_t kWidth = 22, kHeight = 15;
    GuardedImage image(kWidth, kHeight, pitch * 4);
    RenderClassicGradientSampled(image.Block(), box.x0, box.y0, box.halfWidth, box.halfHeight,
                                 box.angle, box.originX, box.originY, &p, cb, &style, kUserValue);
    EXPECT_TRUE(image.Holds([&](int32_t x, int32_t y) { return ReferencePixel(box, p, cb, style, x, y); })) << name;
}

TEST(SampledGradient, WithoutCallbackIsTheRotatedFourCornerGradient) {
    const TextureStyle style{0, 0, 0.7, 0.5, 0.5}; // ignored without a callback
    const struct { const char* name; Box box; double rotation; int32_t pitch; } cases[] = {
        {"upright", {11, 7.5, 11, 7.5, 0.0, 0, 0}, 0.0, 23},
        {"rotated", {10.2, 6.9, 9, 6, 0.4, 1.5, 2.5}, 0.3, 23},
        {"shine angle limited", {10.2, 6.9, 9, 6, 0.4, 1.5, 2.5}, -0.5, 22},
        {"box beyond the image, bottom-up", {3, 2, 6, 20, -1.2, 0, 0}, 2.0, -23},
    };
    for (const auto& c : cases) {
        ExpectMatchesReference(c.box, Parameters(c.rotation, 0.0), nullptr, style, c.pitch, c.name);
        ExpectMatchesReference(c.box, Parameters(c.rotation, 5.0), nullptr, style, c.pitch, c.name);
    }
}

// Includes the cut-off: full mix of a transparent texel with its alpha kept
// in the mix factor (exponent 0) gives A = 0, and then every channel is 0.
TEST(SampledGradient, TextureMixFollowsTheExponentSplit) {
    const Box box{11, 7, 10, 7, 0.25, -2.3, 4.9};
    for (double e1 : {1.0, 2.0, 0.0, -1.0, 0.5}) {
        for (double e2 : {1.0, 0.3, 0.0}) {
            for (double mix : {0.0, 0.4, 1.0}) {
                const TextureStyle style{0, 0, mix, e1, e2};
                ExpectMatchesReference(box, Parameters(0.2, 4.0), PatternTexture, style, 23, "mix");
            }
        }
    }
    // A null style reads as all zero.
    const auto p = Parameters(0.3, 3.0);
    const TextureStyle zero{};
    GuardedImage withNull(16, 12, 64), withZero(16, 12, 64);
    RenderClassicGradientSampled(withNull.Block(), 8, 6, 8, 6, 0.1, 0, 0, &p, PatternTexture, nullptr, 0);
    RenderClassicGradientSampled(withZero.Block(), 8, 6, 8, 6, 0.1, 0, 0, &p, PatternTexture, &zero, 0);
    EXPECT_TRUE(withNull.Buffer() == withZero.Buffer());
}

} // namespace
