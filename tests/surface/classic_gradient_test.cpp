// Classic gradient: pixels against a single-precision reference, for the
// ramp's special cases, the texture's mask modes and tint.
#include "surface/classic_gradient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "gradient_reference.h"
#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::Box;
using tr_test::Byte;
using tr_test::GuardedImage;

// The colour encodes the coordinate and user value: a wrong lookup shows.
uint32_t CoordinateTexture(int32_t x, int32_t y, uintptr_t user) {
    return static_cast<uint32_t>(user) ^ (static_cast<uint32_t>(x) * 0x9E3779B1u) ^
           (static_cast<uint32_t>(y) * 0x85EBCA77u);
}

uint32_t ReferencePixel(const Box& box, const ClassicRecord& c, const TextureRecord* tex,
                        int32_t x, int32_t y) {
    const int32_t ix = static_cast<int32_t>(box.originX), iy = static_cast<int32_t>(box.originY);
    const float fx = static_cast<float>(box.x0 - ix), fy = static_cast<float>(box.y0 - iy);
    const float angleA = -static_cast<float>(box.angle);
    const float sA = std::sin(angleA), cA = std::cos(angleA);
    const float w = static_cast<float>(box.halfWidth), h = static_cast<float>(box.halfHeight);
    float start = (100.0f - static_cast<float>(c.start)) * 0.01f * h;
    float end = (100.0f - static_cast<float>(c.end)) * 0.01f * h;
    if (c.radial == 0) start = start * 2.0f, end = end * 2.0f;
    const float span = end - start;
    const float p = static_cast<float>(x) - fx, q = static_cast<float>(y) - fy;
    const float u = p * sA + q * cA + w;
    const float v = q * sA - p * cA + h;
    const float skew = static_cast<float>(c.angle);
    float d;
    if (c.radial != 0) {
        const float e = skew / 3.1415927f * (2.0f * w) + u - w;
        d = std::sqrt((v - h) * (v - h) + e * e);
    } else {
        d = h - (std::cos(-skew) * -(v - h) + std::sin(-skew) * (u - w));
    }
    float wA, wB;
    const uint32_t repeats = std::min(c.repeats, tr::kMaxClassicRepeats);
    if (repeats == 0 && start >= d) {
        wA = 1, wB = 0;
    } else if (d >= end || start >= d) {
        wA = 0, wB = 1;
    } else if (repeats > 0) {
        const float band = span / static_cast<float>(2 * repeats);
        float r = d - start;
        bool flip = true;
        for (; r > band; flip = !flip) r -= band;
        const float f = r / band;
        const float m = (1 - f) * (1 - f) / (f * f + (1 - f) * (1 - f));
        wA = flip ? 1 - m : m;
        wB = flip ? m : 1 - m;
    } else {
        const float f = (d - start) / span, g = (end - d) / span;
        wA = g * g / (f * f + g * g);
        wB = 1 - wA;
    }
    float ch[4];
    for (int i = 0; i < 4; ++i) {
        ch[i] = wB * static_cast<float>(Byte(c.colour2, i)) + wA * static_cast<float>(Byte(c.colour1, i));
    }
    if (tex != nullptr && tex->callback != nullptr) {
        const uint32_t s = tex->callback(x + ix, y + iy, tex->userValue);
        int alpha = static_cast<int>(ch[3]);
        uint32_t mode = tex->alphaSource;
        if (mode != 0 && tex->invert) mode += 5;
        const int red = Byte(s, 2), green = Byte(s, 1), blue = Byte(s, 0), sa = Byte(s, 3);
        const int m[10] = {-1, red, green, blue, sa, -1, 255 - red, 255 - green, 255 - blue, 255 - sa};
        if (mode < 10 && m[mode] >= 0) alpha = ((m[mode] * alpha + 255) >> 8) & 0xFF;
        for (int i = 0; i < 3; ++i) {
            const int sc = Byte(s, i);
            if (tex->tint) {
                const int g = static_cast<int>(ch[i]);
                const int wt = std::abs(128 - g) * 160;
                ch[i] = static_cast<float>((((32640 - wt) >> 7) * sc + (wt >> 7) * g + 127) >> 8);
            } else {
                ch[i] = static_cast<float>(sc);
            }
        }
        ch[3] = static_cast<float>(alpha);
    }
    const float k = tr_test::ShineWeight(
        u, v, 2 * w, 2 * h, std::sqrt((2 * h) * (2 * h) + (2 * w) * (2 * w)),
        static_cast<float>(c.shineAngle), static_cast<float>(c.shinePosition),
        static_cast<float>(c.shineWidth), true);
    for (int i = 0; k >= 0 && i < 4; ++i) {
        ch[i] = k * ch[i] + (1 - k) * static_cast<float>(Byte(c.shineColour, i));
    }
    return static_cast<uint32_t>(ch[3]) << 24 | static_cast<uint32_t>(ch[2]) << 16 |
           static_cast<uint32_t>(ch[1]) << 8 | static_cast<uint32_t>(ch[0]);
}

ClassicRecord Record(uint32_t radial, double start, double end, double skew, uint32_t repeats,
                     double shineWidth, double shineAngle = 0.6) {
    return ClassicRecord{radial,  0xFF2040E0u, 0x60E0C010u, 0, start, end, skew, repeats, 0,
                         shineWidth, 0xC0FFFFF0u, 0, shineAngle, -0.2};
}

void ExpectMatchesReference(const Box& box, const ClassicRecord& c, const TextureRecord* tex,
                            int32_t width, int32_t height, int32_t pitch, const char* name) {
    GuardedImage image(width, height, pitch * 4);
    RenderClassicGradient(image.Block(), box.x0, box.y0, box.halfWidth, box.halfHeight, box.angle,
                          box.originX, box.originY, &c, tex);
    EXPECT_TRUE(image.Holds([&](int32_t x, int32_t y) { return ReferencePixel(box, c, tex, x, y); })) << name;
}

TEST(ClassicGradient, MatchesTheFormulaPixelByPixel) {
    const Box box{12.3, 8.6, 10.0, 7.5, 0.35, 2.9, -1.7};
    const struct { const char* name; ClassicRecord record; } cases[] = {
        {"linear", Record(0, 90, 10, 0.0, 0, 0)},
        {"linear skewed", Record(0, 80, 20, 0.4, 0, 0)},
        {"linear reversed limits", Record(0, 20, 80, 0.0, 0, 0)},
        {"below start is colour 1", Record(0, 0, 0, 0.0, 0, 0)},
        {"below start with repeats is colour 2", Record(0, 0, 0, 0.0, 2, 0)},
        {"linear repeats", Record(0, 95, 5, 0.2, 3, 0)},
        {"radial", Record(1, 100, 0, 0.0, 0, 0)},
        {"radial shifted centre", Record(7, 70, 10, 0.8, 0, 0)},
        {"radial repeats", Record(1, 100, 0, 0.0, 5, 0)},
        {"linear shine", Record(0, 90, 10, 0.1, 0, 6.0)},
        {"shine angle limited", Record(0, 90, 10, 0.1, 0, 6.0, -0.0004)},
        {"radial repeats shine", Record(1, 90, 0, 0.0, 2, 4.0)},
        {"huge repeats are limited", Record(0, 100, 0, 0.0, 0xFFFFFFFFu, 2.0)},
    };
    for (const auto& c : cases) {
        for (int32_t pitch : {28, -27}) ExpectMatchesReference(box, c.record, nullptr, 25, 18, pitch, c.name);
    }
}

// Every mask mode (1-4 red, green, blue, alpha; 6-9 inverses; others none).
TEST(ClassicGradient, TexturedPixelsMatchTheFormula) {
    const Box box{10.0, 9.0, 9.0, 8.0, -0.2, -3.7, 5.2};
    const ClassicRecord c = Record(0, 90, 10, 0.1, 0, 5.0);
    for (uint8_t tint : {0, 1}) {
        for (uint32_t source : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 9u, 12u}) {
            for (uint8_t invert : {0, 1}) {
                const TextureRecord tex{CoordinateTexture, 0x5A5A5A5Au, source, tint, invert, {}};
                ExpectMatchesReference(box, c, &tex, 20, 17, 21, "textured");
            }
        }
    }
    const TextureRecord noCallback{nullptr, 1, 4, 1, 1, {}};
    ExpectMatchesReference(box, c, &noCallback, 20, 17, 20, "no callback");
}

} // namespace
