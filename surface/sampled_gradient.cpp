// Four-corner gradient in a rotated box, with texture and shine.
//
// Terminology (float unless noted): (u, v) box coordinates of a pixel, the
// box being 2w x 2h with corner colours C_i at (0, 0), (2w, 0), (2w, 2h),
// (0, 2h); weights w_i = (1 - d_i / diag)^4 (square of the square) of the
// distances d_i from (u, v) to the corners. Outside the box a distance can
// exceed the diagonal; the fourth power keeps such weights positive, so
// the colours simply extrapolate.
//
// Texture mixing (double): ta, ga are the texture's and the gradient's
// alpha on 0..1. Each alpha exponent splits its alpha into a factor that
// scales the result's alpha (tf, gf) and a factor that weighs the colour
// mix (ta, ge): exponent >= 1 puts all of it in the alpha factor, <= 0 all
// in the mix factor, and in between alpha^e goes to the alpha factor and
// alpha^(1-e) to the mix. The colour is the mix-weighted average of texture
// and gradient colours, normalised by the mixed weight A.
#include "surface/sampled_gradient.h"

#include <cmath>

#include "surface/gradient_pixel.h"
#include "surface/shine_shaping.h"

namespace tr {
namespace {

constexpr int kCorners = 4;
constexpr double kMinMixedAlpha = 0.0001; // below this the pixel is transparent black

struct SampledSetup {
    GradientFrame frame;
    float cosR = 0; // R = -angle - rotation
    float sinR = 0;
    float w = 0;
    float h = 0;
    float w2 = 0; // box size 2w x 2h
    float h2 = 0;
    float diagonal = 0;
    float corner[kCorners][kChannels] = {};
    TextureCallback callback = nullptr;
    uintptr_t userValue = 0;
    double mix = 0;
    double textureExponent = 0;
    double gradientExponent = 0;
    bool shine = false;
    float shineWidth = 0;
    float shineChannel[kChannels] = {};
    ShineLine<float> line;
};

SampledSetup MakeSetup(const GradientPlacement& placement, const SampledGradientParameters& p,
                       TextureCallback callback, const TextureStyle& style, uintptr_t userValue) {
    SampledSetup s;
    s.frame = GradientFrame::Make(placement);
    const float rotation = static_cast<float>(p.angle);
    const float r = -static_cast<float>(placement.angle) - rotation;
    s.cosR = std::cos(r);
    s.sinR = std::sin(r);
    s.w = static_cast<float>(placement.halfWidth);
    s.h = static_cast<float>(placement.halfHeight);
    s.w2 = 2.0f * s.w;
    s.h2 = 2.0f * s.h;
    s.diagonal = std::sqrt(s.w2 * s.w2 + s.h2 * s.h2);
    for (int i = 0; i < kCorners; ++i) {
        for (int c = 0; c < kChannels; ++c) {
            s.corner[i][c] = static_cast<float>(ChannelOf(p.corners[i], c));
        }
    }
    s.callback = callback;
    s.userValue = userValue;
    s.mix = style.mix;
    s.textureExponent = style.textureAlphaExponent;
    s.gradientExponent = style.gradientAlphaExponent;

    // The distance s is >= 0, so only a positive width can put a pixel inside.
    s.shineWidth = static_cast<float>(p.shineWidth);
    s.shine = s.shineWidth > 0.0f;
    for (int c = 0; c < kChannels; ++c) {
        s.shineChannel[c] = static_cast<float>(ChannelOf(p.shineColour, c));
    }
    const float shineDiagonal = std::sqrt(s.h2 * s.h2 + s.w2 * s.w2);
    const float shineAngle = LimitShineAngle(-static_cast<float>(p.shineAngle) - rotation);
    s.line = ShineLine<float>::Make(shineAngle, s.w2, s.h2, shineDiagonal,
                                    static_cast<float>(p.shinePosition));
    return s;
}

float CornerWeight(float a, float b, float diagonal) {
    const float v = 1.0f - std::sqrt(a * a + b * b) / diagonal;
    const float v2 = v * v;
    return v2 * v2;
}

void MixCorners(const SampledSetup& s, float u, float v, float (&channel)[kChannels]) {
    const float fromRight = s.w2 - u;
    const float fromBottom = s.h2 - v;
    const float weight[kCorners] = {CornerWeight(u, v, s.diagonal),
                                    CornerWeight(fromRight, v, s.diagonal),
                                    CornerWeight(fromRight, fromBottom, s.diagonal),
                                    CornerWeight(u, fromBottom, s.diagonal)};
    const float sum = weight[0] + weight[1] + weight[2] + weight[3];
    for (int c = 0; c < kChannels; ++c) {
        channel[c] = (s.corner[0][c] * weight[0] + s.corner[1][c] * weight[1] +
                      s.corner[2][c] * weight[2] + s.corner[3][c] * weight[3]) /
                     sum;
    }
}

void ApplyTexture(const SampledSetup& s, uint32_t sample, float (&channel)[kChannels]) {
    double ta = ChannelOf(sample, kAlpha) / 255.0;
    const double ga = channel[kAlpha] / 255.0;
    const double e1 = s.textureExponent;
    const double e2 = s.gradientExponent;

    double tf = 1.0;
    if (e1 >= 1.0) {
        tf = ta;
        ta = 1.0;
    } else if (e1 <= 0.0) {
        tf = 1.0;
    } else if (ta == 0.0) {
        tf = 0.0;
    } else {
        tf = std::pow(ta, e1);
        ta = ta / tf;
    }

    double ge = ga;
    double gf = 1.0;
    if (e2 >= 1.0) {
        ge = 1.0;
        gf = ga;
    } else if (e2 > 0.0) {
        if (ga == 0.0) {
            ge = 0.0;
            gf = 0.0;
        } else {
            gf = std::pow(ga, e2);
            ge = ga / gf;
        }
    }

    const double mixed = (ta - ge) * s.mix + ge;
    if (mixed < kMinMixedAlpha) {
        for (float& c : channel) {
            c = 0.0f;
        }
        return;
    }
    for (int c = 0; c < kAlpha; ++c) {
        const double textureTerm = ChannelOf(sample, c) / 255.0 * ta;
        const double gradientTerm = ge * channel[c] / 255.0;
        channel[c] = static_cast<float>(((textureTerm - gradientTerm) * s.mix + gradientTerm) *
                                        255.0 / mixed);
    }
    channel[kAlpha] = static_cast<float>(mixed * 255.0 * tf * gf);
}

// Shine over a straight-alpha colour: alpha and the alpha-weighted colours
// are blended, then the colours are divided by the new alpha again.
void ApplyShine(const SampledSetup& s, float u, float v, float (&channel)[kChannels]) {
    const float dist = s.line.DistanceFrom(u, v);
    if (!(s.shineWidth > dist)) {
        return;
    }
    const float k = ShineFactor(dist / s.shineWidth);
    const float alpha = channel[kAlpha];
    const float shineAlpha = s.shineChannel[kAlpha];
    const float newAlpha = k * alpha + (1.0f - k) * shineAlpha;
    for (int c = 0; c < kAlpha; ++c) {
        channel[c] = (k * channel[c] * alpha + shineAlpha * s.shineChannel[c] * (1.0f - k)) /
                     newAlpha;
    }
    channel[kAlpha] = newAlpha;
}

uint32_t SampledPixel(const SampledSetup& s, int32_t xPx, int32_t yPx) {
    const float p = static_cast<float>(xPx) - s.frame.fx;
    const float q = static_cast<float>(yPx) - s.frame.fy;
    const float u = p * s.cosR + q * s.sinR + s.w;
    const float v = q * s.cosR - p * s.sinR + s.h;

    float channel[kChannels];
    MixCorners(s, u, v, channel);
    if (s.callback != nullptr) {
        const uint32_t sample = s.callback(GradientFrame::TextureCoordinate(xPx, s.frame.ix),
                                           GradientFrame::TextureCoordinate(yPx, s.frame.iy),
                                           s.userValue);
        ApplyTexture(s, sample, channel);
    }
    if (s.shine) {
        ApplyShine(s, u, v, channel);
    }
    return PackTruncated(channel);
}

} // namespace

void RenderSampledGradientImage(const ImageView& image, const GradientPlacement& placement,
                                const SampledGradientParameters& parameters,
                                TextureCallback callback, const TextureStyle& style,
                                uintptr_t userValue) {
    const SampledSetup setup = MakeSetup(placement, parameters, callback, style, userValue);
    for (int32_t y = 0; y < image.height; ++y) {
        uint32_t* row = image.Row(y);
        for (int32_t x = 0; x < image.width; ++x) {
            row[x] = SampledPixel(setup, x, y);
        }
    }
}

} // namespace tr
