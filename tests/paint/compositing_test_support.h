// tests/paint/compositing_test_support.h — test-only: characters with a
// coverage buffer of their own, a position-dependent applicator, and the
// compositing of one or several characters written straight from the rules,
// one sample at a time.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "paint/color_applicator.h"
#include "paint/compositor.h"
#include "paint/painter.h"

namespace testing_support {

inline uint32_t Hash(uint32_t seed, int32_t x, int32_t y) {
    uint32_t h = seed * 0x9E3779B1u ^ static_cast<uint32_t>(x) * 0x85EBCA77u ^
                 static_cast<uint32_t>(y) * 0xC2B2AE3Du;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    return h ^ h >> 12;
}

// Colour and alpha vary with the pixel (fractions, alpha exactly 0 or 255
// now and then); layer values are often 0 and often equal.
class CPatternShade final : public CColorApplicator {
public:
    explicit CPatternShade(uint32_t seed, bool joins = false) : seed_(seed) {
        joinsNeighbours = joins ? 1 : 0;
    }
    float ShadeAt(int32_t x, int32_t y) override {
        const uint32_t h = Hash(seed_, x, y), kind = (h >> 16) & 7;
        color.c0 = static_cast<float>(h & 0xFF) * 0.75f + 0.3f;
        color.c1 = static_cast<float>((h >> 8) & 0xFF);
        color.c2 = static_cast<float>((h >> 4) & 0xFF) * 0.999f;
        color.alpha = kind == 0   ? 0.0f
                      : kind == 1 ? 255.0f
                                  : static_cast<float>((h >> 20) & 0xFF) * 0.997f + 0.1f;
        return color.alpha;
    }
    uint32_t LayerValueAt(int32_t x, int32_t y) override {
        return std::array<uint32_t, 4>{0, 0, 3, 200}[Hash(seed_ ^ 0xABCDu, x, y) & 3];
    }

private:
    uint32_t seed_;
};

// A character: its own coverage buffer and a painter bound to a target.
struct TestCharacter {
    TestCharacter(int32_t w, int32_t h) : width(w), height(h), coverage(size_t(w) * h * 4, 0) {}

    // Sub-sample (sx, sy) by the buffer's addressing rule.
    uint16_t& Word(int32_t sx, int32_t sy) {
        return coverage[size_t(sy / 4) * 4 * width + size_t(sx / 4) * 4 + sy % 4];
    }
    void SetSample(int32_t sx, int32_t sy, uint32_t n) {
        const int shift = 12 - 4 * (sx % 4);
        Word(sx, sy) = static_cast<uint16_t>((Word(sx, sy) & ~(0xFu << shift)) | (n << shift));
    }
    uint32_t Sample(int32_t sx, int32_t sy) { return (Word(sx, sy) >> (12 - 4 * (sx % 4))) & 0xFu; }
    template <class F>
    void Fill(F sample) {
        for (int32_t sy = 0; sy < 4 * height; ++sy)
            for (int32_t sx = 0; sx < 4 * width; ++sx) SetSample(sx, sy, sample(sx, sy));
    }
    void Bind(uint32_t* pixels, int32_t pitchBytes, int32_t clipWidth, int32_t clipHeight, double x,
              double y, int32_t blendMode) {
        painter.BindTarget(width, height, coverage.data(), pixels, x, y, blendMode, pitchBytes,
                           nullptr, 0.0, clipWidth, clipHeight, 1.0, nullptr, nullptr, {});
    }

    int32_t width;
    int32_t height;
    std::vector<uint16_t> coverage;
    CPainter painter;
};

// Blobs of squares of 1 to 8 pixels from a four-number palette; perMille of
// the samples are replaced by a palette entry or, one time in three, by any
// number.
inline void FillBlobs(TestCharacter& ch, std::mt19937& rng, const uint32_t palette[4],
                      int perMille) {
    auto pick = [&rng](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };
    const int32_t blockSub = 4 * (1 + pick(8));
    const uint32_t seed = rng();
    ch.Fill([&](int32_t sx, int32_t sy) {
        if (pick(1000) < perMille) return pick(3) == 0 ? uint32_t(pick(16)) : palette[pick(4)];
        return palette[Hash(seed, sx / blockSub, sy / blockSub) & 3];
    });
}

inline uint32_t Pack(const float v[4]) {
    uint32_t pixel = 0;
    for (int j = 0; j < 4; ++j) {
        const double r = std::trunc(static_cast<double>(v[j]) + 0.5);
        pixel |= (r < 0.0 ? 0u : r > 255.0 ? 255u : static_cast<uint32_t>(r)) << (8 * j);
    }
    return pixel;
}

// The blend of S, C0-C2 and P onto target; `uniform`: s is the shade A of a
// uniform footprint and c its colour.
inline uint32_t BlendByDefinition(uint32_t target, float s, const float c[3], int32_t p,
                                  int32_t mode, bool uniform) {
    float t[4], out[4];
    for (int j = 0; j < 4; ++j) t[j] = float((target >> (8 * j)) & 0xFF);
    if (uniform && mode != 0) {
        out[0] = c[0], out[1] = c[1], out[2] = c[2], out[3] = s;
    } else if (mode == 0) {
        if (!uniform && s == 0.0f) return target;
        const float a = uniform ? s : s / 48.0f, d = t[3], o = d + a - d * a / 255.0f;
        if (o == 0.0f) return 0;
        for (int j = 0; j < 3; ++j)
            out[j] = (uniform ? c[j] : c[j] / s) * (a / o) + t[j] * ((d - d * a / 255.0f) / o);
        out[3] = o;
    } else {
        const float u = float(48 - p) * t[3], total = s + u;
        if (total == 0.0f) return 0;
        for (int j = 0; j < 3; ++j) out[j] = (t[j] * u + c[j]) / total;
        out[3] = total / 48.0f;
    }
    return Pack(out);
}

// The number n when the eight coverage words holding the footprint of pixel
// (x, y) are n in every sub-sample, else −1: the own column from sub-row −2
// to 5 and the left and right pixels' sub-rows 0 to 3.
inline int32_t UniformNumber(TestCharacter& ch, int32_t x, int32_t y) {
    const uint32_t n = ch.Sample(4 * x, 4 * y);
    for (int32_t dy = -2; dy < 6; ++dy) {
        for (int32_t dx = -4; dx < 8; ++dx) {
            const bool inWords = (dx >= 0 && dx < 4) || (dy >= 0 && dy < 4);
            if (inWords && ch.Sample(4 * x + dx, 4 * y + dy) != n) return -1;
        }
    }
    return int32_t(n);
}

// Composites the characters (the first 24 of them) over rect, clipped to
// the surface and to every character's readable interior. A lone character
// whose footprint words are all one number takes that slot's shade alone.
// Otherwise each sample goes to the character with the highest number; on a
// tie to the first listed or, on a joined slot, to the highest layer value
// (first on equal values) and to nobody when none exceeds 0, unless exactly
// two are listed. The owners' counts are shaded in number order, characters
// in list order within a number.
inline void CompositeByDefinition(const std::vector<TestCharacter*>& listed,
                                  const CompositeRect& rect, int32_t mode, uint32_t* pixels,
                                  int32_t stride, int32_t clipW, int32_t clipH) {
    // The footprint relative to sub-sample (4x, 4y): the own column from
    // sub-row −2 to 5, sub-rows 1 and 3 on the left, 0 and 2 on the right.
    std::vector<std::array<int32_t, 2>> footprint;
    for (int32_t dy = -2; dy <= 5; ++dy)
        for (int32_t dx = 0; dx < 4; ++dx) footprint.push_back({dx, dy});
    for (int32_t dx = 0; dx < 4; ++dx)
        footprint.insert(footprint.end(), {{dx - 4, 1}, {dx - 4, 3}, {dx + 4, 0}, {dx + 4, 2}});
    const size_t n = std::min<size_t>(listed.size(), 24);
    static CNullColor emptySlot;
    auto slot = [&](size_t c, uint32_t i) -> CColorApplicator* {
        CColorApplicator* a = listed[c]->painter.GetSlot(int32_t(i));
        return a ? a : &emptySlot;
    };
    bool joined[16] = {};
    for (uint32_t i = 1; i < 16; ++i) {
        joined[i] = true;
        for (size_t c = 0; c < n; ++c) joined[i] = joined[i] && slot(c, i)->joinsNeighbours;
    }
    for (int32_t ty = std::max(rect.y, 0); ty < std::min(rect.y + rect.height, clipH); ++ty) {
        for (int32_t tx = std::max(rect.x, 0); tx < std::min(rect.x + rect.width, clipW); ++tx) {
            std::vector<int32_t> xs(n), ys(n);
            bool inside = true;
            for (size_t c = 0; c < n; ++c) {
                xs[c] = tx - int32_t(std::floor(listed[c]->painter.positionX));
                ys[c] = ty - int32_t(std::floor(listed[c]->painter.positionY));
                inside = inside && xs[c] >= 1 && ys[c] >= 1 && xs[c] <= listed[c]->width - 2 &&
                         ys[c] <= listed[c]->height - 2;
            }
            if (!inside) continue;
            uint32_t& target = pixels[size_t(ty) * size_t(stride) + size_t(tx)];
            const int32_t uniform = n == 1 ? UniformNumber(*listed[0], xs[0], ys[0]) : -1;
            if (uniform == 0 || uniform == 1) continue;
            if (uniform >= 2) {
                CColorApplicator* a = slot(0, uint32_t(uniform));
                const float alpha = a->ShadeAt(xs[0], ys[0]);
                const float src[3] = {a->color.c0, a->color.c1, a->color.c2};
                target = BlendByDefinition(target, alpha, src, 0, mode, true);
                continue;
            }
            std::vector<std::array<int32_t, 16>> counts(n, std::array<int32_t, 16>{});
            std::vector<uint32_t> v(n);
            int32_t p = 0;
            for (const auto& [dx, dy] : footprint) {
                for (size_t c = 0; c < n; ++c)
                    v[c] = listed[c]->Sample(4 * xs[c] + dx, 4 * ys[c] + dy);
                const uint32_t best = *std::max_element(v.begin(), v.end());
                std::vector<size_t> tied;
                for (size_t c = 0; c < n; ++c)
                    if (v[c] == best) tied.push_back(c);
                int owner = int(tied[0]);
                if (tied.size() > 1 && joined[best]) {
                    auto value = [&](size_t c) {
                        return slot(c, best)->LayerValueAt(xs[c], ys[c]);
                    };
                    owner = listed.size() == 2 ? owner : -1;
                    uint32_t top = owner >= 0 ? value(tied[0]) : 0;
                    for (size_t c : tied)
                        if (value(c) > top) top = value(c), owner = int(c);
                }
                if (owner < 0) continue;
                ++counts[size_t(owner)][best];
                p += best >= 2 ? 1 : 0;
            }
            if (p == 0) continue;
            float s = 0.0f, sum[3] = {0.0f, 0.0f, 0.0f};
            for (uint32_t i = 2; i < 16; ++i) {
                for (size_t c = 0; c < n; ++c) {
                    if (counts[c][i] == 0) continue;
                    CColorApplicator* a = slot(c, i);
                    const float w = float(counts[c][i]) * a->ShadeAt(xs[c], ys[c]);
                    s = s + w;
                    sum[0] = sum[0] + w * a->color.c0;
                    sum[1] = sum[1] + w * a->color.c1;
                    sum[2] = sum[2] + w * a->color.c2;
                }
            }
            target = BlendByDefinition(target, s, sum, p, mode, false);
        }
    }
}

}  // namespace testing_support
