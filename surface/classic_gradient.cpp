// Two-colour classic gradient: a linear or radial ramp from colour A to
// colour B, optional repeats, texture sampling and a shine band.
//
// Terminology (all float): (p, q) = pixel minus the box centre; (u, v) the
// point in box coordinates, (0, 0) at the top-left of the 2w x 2h box;
// d the ramp coordinate: the distance from the box's top edge along the
// skewed ramp direction (linear), or from the (shifted) box centre (radial).
// start and end are where the ramp leaves colour A and reaches colour B:
// percentages of h (radial) or 2h (linear) counted from the far end, so
// 100 % is at d = 0. Between them the blend is the smooth step
// g^2 / (f^2 + g^2) of the fractions f, g of the way from start and to end;
// with repeats the span is cut into 2 * repeats bands, each blending the
// other way round from its predecessor.
#include "surface/classic_gradient.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "surface/gradient_pixel.h"
#include "surface/shine_shaping.h"

namespace tr {
namespace {

constexpr float kPi = 3.1415927f;

struct ClassicSetup {
    GradientFrame frame;
    float sinA = 0; // A = -angle
    float cosA = 0;
    float w = 0;
    float h = 0;
    bool radial = false;
    float centreShift = 0; // radial: skew / pi * 2w
    float cosSkew = 0;     // linear: cos(-skew), sin(-skew)
    float sinSkew = 0;
    float start = 0;
    float end = 0;
    float span = 0;
    uint32_t repeats = 0;
    float band = 0;
    float colourA[kChannels] = {};
    float colourB[kChannels] = {};
    const TextureRecord* texture = nullptr; // null unless a callback is present
    bool shine = false;
    float shineWidth = 0;
    float shineChannel[kChannels] = {};
    ShineLine<float> line;
};

ClassicSetup MakeSetup(const GradientPlacement& placement, const ClassicGradientParameters& p,
                       const TextureRecord* texture) {
    ClassicSetup s;
    s.frame = GradientFrame::Make(placement);
    const float a = -static_cast<float>(placement.angle);
    s.sinA = std::sin(a);
    s.cosA = std::cos(a);
    s.w = static_cast<float>(placement.halfWidth);
    s.h = static_cast<float>(placement.halfHeight);

    s.radial = p.radial != 0;
    const float skew = static_cast<float>(p.angle);
    s.centreShift = skew / kPi * (2.0f * s.w);
    s.cosSkew = std::cos(-skew);
    s.sinSkew = std::sin(-skew);

    // A linear ramp runs over the full height 2h, a radial one over the
    // radius h; the doubling comes last.
    s.start = (100.0f - static_cast<float>(p.start)) * 0.01f * s.h;
    s.end = (100.0f - static_cast<float>(p.end)) * 0.01f * s.h;
    if (!s.radial) {
        s.start *= 2.0f;
        s.end *= 2.0f;
    }
    s.span = s.end - s.start;
    s.repeats = std::min(p.repeats, kMaxClassicRepeats);
    s.band = s.repeats > 0 ? s.span / (2.0f * static_cast<float>(s.repeats)) : 0.0f;

    for (int c = 0; c < kChannels; ++c) {
        s.colourA[c] = static_cast<float>(ChannelOf(p.colour1, c));
        s.colourB[c] = static_cast<float>(ChannelOf(p.colour2, c));
        s.shineChannel[c] = static_cast<float>(ChannelOf(p.shineColour, c));
    }
    s.texture = (texture != nullptr && texture->callback != nullptr) ? texture : nullptr;

    // The distance s is >= 0, so only a positive width can put a pixel inside.
    s.shineWidth = static_cast<float>(p.shineWidth);
    s.shine = s.shineWidth > 0.0f;
    const float w2 = 2.0f * s.w;
    const float h2 = 2.0f * s.h;
    const float diagonal = std::sqrt(h2 * h2 + w2 * w2);
    s.line = ShineLine<float>::Make(LimitShineAngle(static_cast<float>(p.shineAngle)), w2, h2,
                                    diagonal, static_cast<float>(p.shinePosition));
    return s;
}

float RampCoordinate(const ClassicSetup& s, float u, float v) {
    if (s.radial) {
        const float dv = v - s.h;
        const float du = s.centreShift + u - s.w;
        return std::sqrt(dv * dv + du * du);
    }
    return s.h - (s.cosSkew * -(v - s.h) + s.sinSkew * (u - s.w));
}

// Weights of colour A and colour B at ramp coordinate d.
void RampWeights(const ClassicSetup& s, float d, float& weightA, float& weightB) {
    if (s.repeats == 0 && s.start >= d) {
        weightA = 1.0f;
        weightB = 0.0f;
    } else if (d >= s.end || s.start >= d) {
        weightA = 0.0f;
        weightB = 1.0f;
    } else if (s.repeats > 0) {
        // Here start < d < end, so 0 < r < span and at most 2 * repeats + 1
        // steps; the progress test only guards against a band too thin to
        // change r.
        float r = d - s.start;
        bool flip = true;
        while (r > s.band) {
            const float next = r - s.band;
            if (next == r) {
                break;
            }
            r = next;
            flip = !flip;
        }
        const float f = r / s.band;
        const float m = (1.0f - f) * (1.0f - f) / (f * f + (1.0f - f) * (1.0f - f));
        weightA = flip ? 1.0f - m : m;
        weightB = flip ? m : 1.0f - m;
    } else {
        const float f = (d - s.start) / s.span;
        const float g = (s.end - d) / s.span;
        weightA = g * g / (f * f + g * g);
        weightB = 1.0f - weightA;
    }
}

// The sample's byte that scales alpha in mask `mode` (already shifted by 5
// when inverted), or -1 for modes that leave alpha alone.
int MaskByte(uint32_t sample, uint32_t mode) {
    constexpr int kRed = 2;
    constexpr int kGreen = 1;
    constexpr int kBlue = 0;
    constexpr int kMaskAlpha = 3;
    constexpr int kChannelOfMode[] = {-1, kRed, kGreen, kBlue, kMaskAlpha,
                                      -1, kRed, kGreen, kBlue, kMaskAlpha};
    if (mode >= std::size(kChannelOfMode) || kChannelOfMode[mode] < 0) {
        return -1;
    }
    const int byte = static_cast<int>(ChannelOf(sample, kChannelOfMode[mode]));
    return mode > 5 ? 255 - byte : byte;
}

// Replaces the channels by the texture sample (or tints them with it) and
// masks alpha with one of the sample's channels.
void ApplyTexture(const TextureRecord& texture, int32_t xTex, int32_t yTex,
                  float (&channel)[kChannels]) {
    const uint32_t sample = texture.callback(xTex, yTex, texture.userValue);
    // For finite parameters the channels are within 0..255; the clamp only
    // keeps the integer arithmetic defined for anything else.
    auto truncated = [&](int c) { return std::clamp(TruncToInt32(channel[c]), 0, 255); };
    int alpha = truncated(kAlpha);
    uint32_t mode = texture.alphaSource;
    if (mode != 0 && texture.invert != 0) {
        mode += 5;
    }
    if (const int m = MaskByte(sample, mode); m >= 0) {
        alpha = ((m * alpha + 255) >> 8) & 0xFF;
    }
    for (int c = 0; c < kAlpha; ++c) {
        const int sc = static_cast<int>(ChannelOf(sample, c));
        if (texture.tint != 0) {
            // Mid-grey gradient values take the texture, extremes keep more
            // of the gradient: 32640 = 255 * 128, wt <= 128 * 160.
            const int g = truncated(c);
            const int wt = std::abs(128 - g) * 160;
            channel[c] = static_cast<float>((((32640 - wt) >> 7) * sc + (wt >> 7) * g + 127) >> 8);
        } else {
            channel[c] = static_cast<float>(sc);
        }
    }
    channel[kAlpha] = static_cast<float>(alpha);
}

void ApplyShine(const ClassicSetup& s, float u, float v, float (&channel)[kChannels]) {
    const float dist = s.line.DistanceFrom(u, v);
    if (!(s.shineWidth > dist)) {
        return;
    }
    const float k = ShineFactor(dist / s.shineWidth);
    for (int c = 0; c < kChannels; ++c) {
        channel[c] = k * channel[c] + (1.0f - k) * s.shineChannel[c];
    }
}

uint32_t ClassicPixel(const ClassicSetup& s, int32_t xPx, int32_t yPx) {
    const float p = static_cast<float>(xPx) - s.frame.fx;
    const float q = static_cast<float>(yPx) - s.frame.fy;
    const float u = p * s.sinA + q * s.cosA + s.w;
    const float v = q * s.sinA - p * s.cosA + s.h;

    float weightA = 0;
    float weightB = 0;
    RampWeights(s, RampCoordinate(s, u, v), weightA, weightB);
    float channel[kChannels];
    for (int c = 0; c < kChannels; ++c) {
        channel[c] = weightB * s.colourB[c] + weightA * s.colourA[c];
    }
    if (s.texture != nullptr) {
        ApplyTexture(*s.texture, GradientFrame::TextureCoordinate(xPx, s.frame.ix),
                     GradientFrame::TextureCoordinate(yPx, s.frame.iy), channel);
    }
    if (s.shine) {
        ApplyShine(s, u, v, channel);
    }
    return PackTruncated(channel);
}

} // namespace

void RenderClassicGradientImage(const ImageView& image, const GradientPlacement& placement,
                                const ClassicGradientParameters& parameters,
                                const TextureRecord* texture) {
    const ClassicSetup setup = MakeSetup(placement, parameters, texture);
    for (int32_t y = 0; y < image.height; ++y) {
        uint32_t* row = image.Row(y);
        for (int32_t x = 0; x < image.width; ++x) {
            row[x] = ClassicPixel(setup, x, y);
        }
    }
}

} // namespace tr
