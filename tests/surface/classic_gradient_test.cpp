// Classic gradient: pixels against a reference written from the formula in
// single precision, the ramp's special cases, the texture's mask modes and
// tint, and the bounds of the image.
#include "surface/classic_gradient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "guarded_image.h"
#include "titlerender.h"

namespace {

using tr_test::GuardedImage;

struct Box {
    double x0, y0, halfWidth, halfHeight, angle, originX, originY;
};

uint32_t Byte(uint32_t colour, int channel) { return (colour >> (8 * channel)) & 0xFF; }

// A texture whose colour encodes the coordinate, so tests can tell which
// target pixel a sample was asked for.
uint32_t CoordinateTexture(int32_t x, int32_t y, uintptr_t user) {
    return static_cast<uint32_t>(user) ^ (static_cast<uint32_t>(x) * 0x9E3779B1u) ^
           (static_cast<uint32_t>(y) * 0x85EBCA77u);
}

uint32_t ReferencePixel(const Box& box, const ClassicRecord& c, const TextureRecord* tex,
                        int32_t x, int32_t y) {
    const int32_t ix = static_cast<int32_t>(box.originX);
    const int32_t iy = static_cast<int32_t>(box.originY);
    const float fx = static_cast<float>(box.x0 - ix);
    const float fy = static_cast<float>(box.y0 - iy);
    const float angleA = -static_cast<float>(box.angle);
    const float sA = std::sin(angleA), cA = std::cos(angleA);
    const float w = static_cast<float>(box.halfWidth), h = static_cast<float>(box.halfHeight);
    float start = (100.0f - static_cast<float>(c.start)) * 0.01f * h;
    float end = (100.0f - static_cast<float>(c.end)) * 0.01f * h;
    if (c.radial == 0) {
        start = start * 2.0f;
        end = end * 2.0f;
    }
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
    if (c.repeats == 0 && start >= d) {
        wA = 1, wB = 0;
    } else if (d >= end || start >= d) {
        wA = 0, wB = 1;
    } else if (c.repeats > 0) {
        const float band = span / static_cast<float>(2 * c.repeats);
        float r = d - start;
        bool flip = true;
        while (r > band) {
            r -= band;
            flip = !flip;
        }
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
        if (mode != 0 && tex->invert) {
            mode += 5;
        }
        const int red = Byte(s, 2), green = Byte(s, 1), blue = Byte(s, 0), sa = Byte(s, 3);
        const int m[10] = {-1, red, green, blue, sa, -1, 255 - red, 255 - green, 255 - blue, 255 - sa};
        if (mode < 10 && m[mode] >= 0) {
            alpha = ((m[mode] * alpha + 255) >> 8) & 0xFF;
        }
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
    if (c.shineWidth != 0) {
        float a = static_cast<float>(c.shineAngle);
        if (-0.001f < a && a < 0.001f) {
            a = 0.001f;
        }
        const float t = std::tan(a);
        const float b = (2 * h - t * (2 * w)) * 0.5f;
        const float shift = std::sqrt((2 * h) * (2 * h) + (2 * w) * (2 * w)) * 0.5f *
                            static_cast<float>(c.shinePosition);
        const float px = u + std::cos(a + 1.570796325f) * shift;
        const float py = v + std::sin(a + 1.570796325f) * shift;
        const float hd = std::fabs((py - b) / t - px), vd = std::fabs(px * t + b - py);
        const float s = hd + vd == 0 ? 0.0f : hd * vd / std::sqrt(hd * hd + vd * vd);
        if (static_cast<float>(c.shineWidth) > s) {
            const float r = s / static_cast<float>(c.shineWidth);
            const float k = r < 0.1f   ? 0.75f * r + 0.05f
                            : r < 0.7f ? 1.25f * r
                                       : std::min(1.0f, 0.416666f * r + 0.58333f);
            for (int i = 0; i < 4; ++i) {
                ch[i] = k * ch[i] + (1 - k) * static_cast<float>(Byte(c.shineColour, i));
            }
        }
    }
    return static_cast<uint32_t>(ch[3]) << 24 | static_cast<uint32_t>(ch[2]) << 16 |
           static_cast<uint32_t>(ch[1]) << 8 | static_cast<uint32_t>(ch[0]);
}

ClassicRecord Record(uint32_t radial, double start, double end, double skew, uint32_t repeats,
                     double shineWidth) {
    ClassicRecord c{};
    c.radial = radial;
    c.colour1 = 0xFF2040E0u;
    c.colour2 = 0x60E0C010u;
    c.start = start;
    c.end = end;
    c.angle = skew;
    c.repeats = repeats;
    c.shineWidth = shineWidth;
    c.shineColour = 0xC0FFFFF0u;
    c.shineAngle = 0.6;
    c.shinePosition = -0.2;
    return c;
}

void ExpectMatchesReference(const Box& box, const ClassicRecord& c, const TextureRecord* tex,
                            int32_t width, int32_t height, const char* name) {
    GuardedImage image(width, height, (width + 3) * 4);
    RenderClassicGradient(image.Block(), box.x0, box.y0, box.halfWidth, box.halfHeight, box.angle,
                          box.originX, box.originY, &c, tex);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            ASSERT_EQ(image.At(x, y), ReferencePixel(box, c, tex, x, y))
                << name << " at " << x << "," << y;
        }
    }
    EXPECT_TRUE(image.GuardsIntact()) << name;
}

TEST(ClassicGradient, MatchesTheFormulaPixelByPixel) {
    const Box box{12.3, 8.6, 10.0, 7.5, 0.35, 2.9, -1.7};
    const struct {
        const char* name;
        ClassicRecord record;
    } cases[] = {
        {"linear", Record(0, 90, 10, 0.0, 0, 0)},
        {"linear skewed", Record(0, 80, 20, 0.4, 0, 0)},
        {"linear reversed limits", Record(0, 20, 80, 0.0, 0, 0)},
        {"linear repeats", Record(0, 95, 5, 0.2, 3, 0)},
        {"radial", Record(1, 100, 0, 0.0, 0, 0)},
        {"radial shifted centre", Record(7, 70, 10, 0.8, 0, 0)},
        {"radial repeats", Record(1, 100, 0, 0.0, 5, 0)},
        {"linear shine", Record(0, 90, 10, 0.1, 0, 6.0)},
        {"radial repeats shine", Record(1, 90, 0, 0.0, 2, 4.0)},
    };
    for (const auto& c : cases) {
        ExpectMatchesReference(box, c.record, nullptr, 25, 18, c.name);
    }
}

TEST(ClassicGradient, TexturedPixelsMatchTheFormula) {
    const Box box{10.0, 9.0, 9.0, 8.0, -0.2, -3.7, 5.2};
    const ClassicRecord c = Record(0, 90, 10, 0.1, 0, 5.0);
    for (uint8_t tint : {0, 1}) {
        for (uint32_t source : {0u, 1u, 3u, 4u}) {
            for (uint8_t invert : {0, 1}) {
                const TextureRecord tex{CoordinateTexture, 0x5A5A5A5Au, source, tint, invert, {}};
                ExpectMatchesReference(box, c, &tex, 20, 17, "textured");
            }
        }
    }
}

TEST(ClassicGradient, NullParametersWriteNothing) {
    GuardedImage image(6, 4, 24);
    RenderClassicGradient(image.Block(), 3, 2, 3, 2, 0, 0, 0, nullptr, nullptr);
    EXPECT_TRUE(image.Untouched());
}

// start = 2h (0 %) puts every pixel of the box at or below start (with angle
// 0 the linear ramp coordinate is h - (x - x0), 1..8 here).
TEST(ClassicGradient, BelowStartIsColourAWithoutRepeatsAndColourBWithThem) {
    for (uint32_t repeats : {0u, 2u}) {
        GuardedImage image(8, 6, 32);
        ClassicRecord c = Record(0, 0.0, 0.0, 0.0, repeats, 0.0);
        RenderClassicGradient(image.Block(), 4, 3, 4, 4, 0.0, 0, 0, &c, nullptr);
        const uint32_t expected = repeats == 0 ? c.colour1 : c.colour2;
        for (int32_t y = 0; y < 6; ++y) {
            for (int32_t x = 0; x < 8; ++x) {
                ASSERT_EQ(image.At(x, y), expected) << repeats << " at " << x << "," << y;
            }
        }
    }
}

// A flat gradient (A = B) of alpha 200 under sample 0x40806010: the alpha of
// every pixel is 200 scaled by the masking byte of the mode.
TEST(ClassicGradient, MaskModesScaleAlphaByTheChosenSampleChannel) {
    const uint32_t sample = 0x40806010u;
    auto constantTexture = [](int32_t, int32_t, uintptr_t user) { return static_cast<uint32_t>(user); };
    const struct {
        uint32_t source;
        uint8_t invert;
        int mask; // -1: alpha unchanged
    } cases[] = {
        {0, 0, -1},   {0, 1, -1},          {1, 0, 0x80},       {2, 0, 0x60},
        {3, 0, 0x10}, {4, 0, 0x40},        {5, 0, -1},         {1, 1, 255 - 0x80},
        {2, 1, 255 - 0x60}, {3, 1, 255 - 0x10}, {4, 1, 255 - 0x40}, {5, 1, -1},
        {6, 0, 255 - 0x80}, {9, 0, 255 - 0x40}, {12, 0, -1},
    };
    for (const auto& c : cases) {
        ClassicRecord record = Record(0, 90, 10, 0.0, 0, 0.0);
        record.colour1 = record.colour2 = 0xC8305070u;
        const TextureRecord tex{constantTexture, sample, c.source, 0, c.invert, {}};
        GuardedImage image(3, 2, 12);
        RenderClassicGradient(image.Block(), 1.5, 1, 1.5, 1, 0.0, 0, 0, &record, &tex);
        const uint32_t alpha = c.mask < 0 ? 200u : static_cast<uint32_t>((c.mask * 200 + 255) >> 8);
        EXPECT_EQ(image.At(2, 1), alpha << 24 | (sample & 0xFFFFFFu))
            << "source " << c.source << " invert " << int(c.invert);
    }
}

TEST(ClassicGradient, TintMixesByDistanceFromMidGrey) {
    auto constantTexture = [](int32_t, int32_t, uintptr_t user) { return static_cast<uint32_t>(user); };
    // Gradient channels 0, 128, 255 against sample channels 200, 40, 100:
    // wt = |128 - g| * 160 weighs the gradient, 32640 - wt the sample.
    const uint32_t gradient = 0xFF0080FFu; // c0 255, c1 128, c2 0
    const uint32_t sample = 0x00C82864u;   // c0 100, c1 40, c2 200
    ClassicRecord record = Record(0, 90, 10, 0.0, 0, 0.0);
    record.colour1 = record.colour2 = gradient;
    const TextureRecord tex{constantTexture, sample, 0, 1, 0, {}};
    GuardedImage image(2, 2, 8);
    RenderClassicGradient(image.Block(), 1, 1, 1, 1, 0.0, 0, 0, &record, &tex);
    auto tinted = [](int g, int sc) {
        const int wt = std::abs(128 - g) * 160;
        return static_cast<uint32_t>((((32640 - wt) >> 7) * sc + (wt >> 7) * g + 127) >> 8);
    };
    const uint32_t expected = 0xFFu << 24 | tinted(0, 200) << 16 | tinted(128, 40) << 8 | tinted(255, 100);
    EXPECT_EQ(image.At(1, 1), expected);
}

TEST(ClassicGradient, TextureIsAskedForOriginShiftedCoordinates) {
    struct Call {
        int32_t x, y;
        uintptr_t user;
    };
    static std::vector<Call> calls;
    calls.clear();
    auto recording = [](int32_t x, int32_t y, uintptr_t user) {
        calls.push_back({x, y, user});
        return 0xFFFFFFFFu;
    };
    ClassicRecord record = Record(0, 90, 10, 0.0, 0, 0.0);
    const TextureRecord tex{recording, 77, 0, 0, 0, {}};
    GuardedImage image(3, 2, 12);
    // trunc(-3.7) = -3, trunc(5.2) = 5.
    RenderClassicGradient(image.Block(), 1, 1, 2, 2, 0.0, -3.7, 5.2, &record, &tex);
    ASSERT_EQ(calls.size(), 6u);
    for (int32_t y = 0, i = 0; y < 2; ++y) {
        for (int32_t x = 0; x < 3; ++x, ++i) {
            EXPECT_EQ(calls[i].x, x - 3);
            EXPECT_EQ(calls[i].y, y + 5);
            EXPECT_EQ(calls[i].user, 77u);
        }
    }
}

TEST(ClassicGradient, RecordWithoutCallbackMeansNoTexture) {
    const Box box{6, 5, 6, 5, 0.3, 0, 0};
    ClassicRecord record = Record(1, 90, 10, 0.0, 0, 3.0);
    const TextureRecord tex{nullptr, 1, 4, 1, 1, {}};
    GuardedImage with(12, 10, 48), without(12, 10, 48);
    RenderClassicGradient(with.Block(), box.x0, box.y0, box.halfWidth, box.halfHeight, box.angle,
                          0, 0, &record, &tex);
    RenderClassicGradient(without.Block(), box.x0, box.y0, box.halfWidth, box.halfHeight,
                          box.angle, 0, 0, &record, nullptr);
    EXPECT_EQ(with.Buffer(), without.Buffer());
}

TEST(ClassicGradient, NegativeStrideAndHugeRepeatsStayInBounds) {
    const Box box{5, 4, 5, 4, 0.2, 0, 0};
    ClassicRecord record = Record(0, 100, 0, 0.0, 0xFFFFFFFFu, 2.0);
    GuardedImage image(10, 8, -11 * 4);
    RenderClassicGradient(image.Block(), box.x0, box.y0, box.halfWidth, box.halfHeight, box.angle,
                          0, 0, &record, nullptr);
    EXPECT_TRUE(image.GuardsIntact());
    // Huge counts are limited, so they render as the limit does.
    ClassicRecord limited = record;
    limited.repeats = tr::kMaxClassicRepeats;
    for (int32_t y = 0; y < 8; ++y) {
        for (int32_t x = 0; x < 10; ++x) {
            ASSERT_EQ(image.At(x, y), ReferencePixel(box, limited, nullptr, x, y)) << x << "," << y;
        }
    }
}

} // namespace
