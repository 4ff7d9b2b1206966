// Tests of one-character compositing: the footprint's shape, the blend
// arithmetic against values computed from its definition, the shading
// calls, and a differential test of the fast path against the plain
// per-sample twin and a per-pixel evaluation written here.
#include "paint/compositor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <sstream>

#include "compositing_test_support.h"

namespace {

using testing_support::BlendByDefinition;
using testing_support::CPatternShade;
using testing_support::FootprintOffsets;
using testing_support::Pack;
using testing_support::TestCharacter;

using SampleFunction = std::function<uint32_t(int32_t sx, int32_t sy)>;

// A 3 × 3-pixel character at (0, 0) whose only compositable pixel is (1, 1).
struct OnePixel {
    explicit OnePixel(const SampleFunction& sample, int32_t blendMode, uint32_t target)
        : ch(3, 3), pixels(9, target) {
        for (int32_t sy = 0; sy < 12; ++sy) {
            for (int32_t sx = 0; sx < 12; ++sx) ch.SetSample(sx, sy, sample(sx, sy));
        }
        ch.Bind(pixels.data(), 3 * 4, 3, 3, 0.0, 0.0, blendMode);
    }
    uint32_t Run(bool reference) {
        const CompositeRect all{0, 0, 3, 3};
        if (reference) {
            CompositeCharacterReference(ch.painter, all);
        } else {
            CompositeCharacter(ch.painter, all);
        }
        return pixels[4];
    }
    TestCharacter ch;
    std::vector<uint32_t> pixels;
};

bool InFootprint(int32_t sx, int32_t sy) {
    for (const auto& [dx, dy] : FootprintOffsets()) {
        if (sx == 4 + dx && sy == 4 + dy) return true;
    }
    return false;
}

TEST(Compositor, FootprintIsTheFortyEightSamples) {
    EXPECT_EQ(FootprintOffsets().size(), 48u);
    for (bool reference : {false, true}) {
        for (int32_t ty = 0; ty < 12; ++ty) {
            for (int32_t tx = 0; tx < 12; ++tx) {
                OnePixel px([&](int32_t sx, int32_t sy) { return sx == tx && sy == ty ? 2u : 0u; },
                            0, 0u);
                px.ch.painter.SetColor(2, 0xFFFFFFFFu);
                const float c[3] = {255.0f * 255.0f, 255.0f * 255.0f, 255.0f * 255.0f};
                const uint32_t expected =
                    InFootprint(tx, ty) ? BlendByDefinition(0u, 255.0f, c, 1, 0) : 0u;
                EXPECT_EQ(px.Run(reference), expected)
                    << "sub-sample " << tx << "," << ty << (reference ? " (reference)" : "");
                EXPECT_EQ(px.pixels[0], 0u);  // neighbours are outside the safe area
            }
        }
    }
}

// Counted-path expectation: counts over the footprint, S and C in
// increasing number order with the flat colours' fixed alphas.
uint32_t CountedByDefinition(const SampleFunction& sample, const uint32_t colours[16],
                             uint32_t target, int32_t blendMode) {
    int32_t counts[16] = {};
    for (const auto& [dx, dy] : FootprintOffsets()) ++counts[sample(4 + dx, 4 + dy)];
    float s = 0.0f, c[3] = {0.0f, 0.0f, 0.0f};
    int32_t p = 0;
    for (int32_t i = 2; i < 16; ++i) {
        p += counts[i];
        if (counts[i] == 0) continue;
        const float w = float(counts[i]) * float(colours[i] >> 24);
        s = s + w;
        for (int j = 0; j < 3; ++j) c[j] = c[j] + w * float((colours[i] >> (8 * j)) & 0xFF);
    }
    return p == 0 ? target : BlendByDefinition(target, s, c, p, blendMode);
}

TEST(Compositor, BlendArithmetic) {
    const SampleFunction all0 = [](int32_t, int32_t) { return 0u; };
    const SampleFunction all1 = [](int32_t, int32_t) { return 1u; };
    const SampleFunction all2 = [](int32_t, int32_t) { return 2u; };
    // 24 samples: the own column's sub-rows −2..1 and the left pixel's.
    const SampleFunction upperHalf = [](int32_t sx, int32_t sy) {
        return InFootprint(sx, sy) && sy < 6 ? 2u : 0u;
    };
    // 20 painted samples, the rest uncovered.
    const SampleFunction twenty = [](int32_t sx, int32_t sy) {
        return InFootprint(sx, sy) && sy < 6 && sx >= 4 ? 2u : (sy < 4 ? 1u : 0u);
    };
    // Every footprint sample is 2, but so is not sub-row 0 of the left pixel.
    const SampleFunction strayHalf = [](int32_t sx, int32_t sy) {
        return sx < 4 && sy == 4 ? 3u : 2u;
    };
    const SampleFunction twoNumbers = [](int32_t sx, int32_t sy) {
        return sy < 5 ? 2u : (sx > 9 ? 0u : 5u);
    };
    constexpr uint32_t kNull = 0;  // slot left as a null colour
    const struct {
        const char* name;
        SampleFunction sample;
        uint32_t colour2, colour5;
        int32_t mode;
        uint32_t target;
        uint32_t expected;
    } cases[] = {
        {"uncovered, over", all0, 0xFFFFFFFFu, kNull, 0, 0x80402010u, 0x80402010u},
        {"uncovered, replace", all0, 0xFFFFFFFFu, kNull, 1, 0x80402010u, 0x80402010u},
        {"never painted, over", all1, 0xFFFFFFFFu, kNull, 0, 0x80402010u, 0x80402010u},
        {"never painted, replace", all1, 0xFFFFFFFFu, kNull, 3, 0x00402010u, 0x00402010u},
        {"half covered, transparent target", upperHalf, 0xFF3366CCu, kNull, 0, 0u, 0x803366CCu},
        {"opaque over transparent", all2, 0xFF102030u, kNull, 0, 0x00FFFFFFu, 0xFF102030u},
        {"opaque over opaque", all2, 0xFF102030u, kNull, 0, 0xFFFFFFFFu, 0xFF102030u},
        {"replace, uniform", all2, 0x7F102030u, kNull, 1, 0xFFFFFFFFu, 0x7F102030u},
        {"null colour over alpha 0", all2, kNull, kNull, 0, 0x00112233u, 0u},
        {"null colour over alpha 128", all2, kNull, kNull, 0, 0x80112233u, 0x80112233u},
        {"null colour, replace, full", all2, kNull, kNull, 1, 0x90112233u, 0u},
        // Channels kept, alpha 144 × 28 ÷ 48 = 84.
        {"null colour, replace, 20 of 48", twenty, kNull, kNull, 1, 0x90112233u, 0x54112233u},
        // Not uniform as words: counted, S = 0, the pixel stays.
        {"uniform samples, stray half word", strayHalf, kNull, kNull, 0, 0x00AABBCCu, 0x00AABBCCu},
    };
    for (const auto& c : cases) {
        for (bool reference : {false, true}) {
            OnePixel px(c.sample, c.mode, c.target);
            if (c.colour2 != kNull) px.ch.painter.SetColor(2, c.colour2);
            if (c.colour5 != kNull) px.ch.painter.SetColor(5, c.colour5);
            px.ch.painter.FillEmptySlotsWithNullColors();
            EXPECT_EQ(px.Run(reference), c.expected) << c.name << (reference ? " (reference)" : "")
                                                     << std::hex << " got 0x" << px.pixels[4];
        }
    }
    // Two numbers against a semi-transparent target, both modes.
    uint32_t colours[16] = {};
    colours[2] = 0x80C08040u;
    colours[5] = 0xE0102030u;
    for (int32_t mode : {0, 1}) {
        for (uint32_t target : {0x00000000u, 0x60FF7F01u, 0xFFFFFFFFu}) {
            OnePixel px(twoNumbers, mode, target);
            px.ch.painter.SetColor(2, colours[2]);
            px.ch.painter.SetColor(5, colours[5]);
            px.ch.painter.FillEmptySlotsWithNullColors();
            EXPECT_EQ(px.Run(false), CountedByDefinition(twoNumbers, colours, target, mode))
                << "mode " << mode << std::hex << " target 0x" << target;
        }
    }
}

// Records the painter pixel and slot of every ShadeAt call.
class CRecordingShade final : public CColorApplicator {
public:
    CRecordingShade(std::vector<std::string>* log, int slot) : log_(log), slot_(slot) {}
    float ShadeAt(int32_t x, int32_t y) override {
        std::ostringstream s;
        s << slot_ << "@" << x << "," << y;
        log_->push_back(s.str());
        return 255.0f;
    }

private:
    std::vector<std::string>* log_;
    int slot_;
};

TEST(Compositor, ShadesEachPresentNumberOnceInIncreasingOrder) {
    for (bool reference : {false, true}) {
        std::vector<std::string> log;
        TestCharacter ch(4, 4);
        for (int32_t sy = 0; sy < 16; ++sy) {
            for (int32_t sx = 0; sx < 16; ++sx) ch.SetSample(sx, sy, sx < 6 ? 9 : (sy < 7 ? 3 : 5));
        }
        for (int slot : {3, 5, 9})
            ch.painter.InstallApplicator(slot, new CRecordingShade(&log, slot));
        ch.painter.FillEmptySlotsWithNullColors();
        std::vector<uint32_t> pixels(20 * 20, 0u);
        // floor(−2.5) = −3, floor(3.2) = 3: target (−1, 5) is painter (2, 2).
        ch.Bind(pixels.data(), 20 * 4, 20, 20, -2.5, 3.2, 0);
        const CompositeRect pixel{-1, 5, 1, 1};
        // Target column −1 lies left of the surface: nothing is shaded.
        (reference ? CompositeCharacterReference : CompositeCharacter)(ch.painter, pixel);
        EXPECT_TRUE(log.empty());
        ch.Bind(pixels.data(), 20 * 4, 20, 20, 2.5, 3.2, 0);  // target (4, 5) is (2, 2)
        (reference ? CompositeCharacterReference : CompositeCharacter)(ch.painter,
                                                                       CompositeRect{4, 5, 1, 1});
        EXPECT_EQ(log, (std::vector<std::string>{"3@2,2", "5@2,2", "9@2,2"}))
            << (reference ? "reference" : "fast");
    }
}

// ---- differential ---------------------------------------------------------

struct RandomCase {
    int32_t width, height;      // coverage, pixels
    double x, y;                // painter position
    int32_t clipW, clipH, pad;  // surface and pitch padding, pixels
    int32_t mode;
    CompositeRect rect;
};

// Coverage with large uniform areas (fast path), ragged edges and noise.
void FillCoverage(TestCharacter& ch, std::mt19937& rng) {
    auto pick = [&rng](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };
    const uint32_t palette[4] = {0, 1, static_cast<uint32_t>(2 + pick(14)),
                                 static_cast<uint32_t>(2 + pick(14))};
    const int32_t block = 1 + pick(8);
    std::vector<uint32_t> base(size_t(ch.width) * ch.height);
    for (int32_t py = 0; py < ch.height; ++py) {
        for (int32_t px = 0; px < ch.width; ++px) {
            base[size_t(py) * ch.width + px] =
                palette[testing_support::Hash(ch.width, px / block, py / block) & 3];
        }
    }
    const int noise = pick(4);  // per mille of samples replaced: 0, 10, 100, 1000
    const int perMille[4] = {0, 10, 100, 1000};
    for (int32_t sy = 0; sy < 4 * ch.height; ++sy) {
        for (int32_t sx = 0; sx < 4 * ch.width; ++sx) {
            uint32_t n = base[size_t(sy / 4) * ch.width + sx / 4];
            if (pick(1000) < perMille[noise])
                n = pick(3) == 0 ? uint32_t(pick(16)) : palette[pick(4)];
            ch.SetSample(sx, sy, n);
        }
    }
}

void InstallRandomSlots(CPainter& painter, std::mt19937& rng) {
    for (int32_t slot = 0; slot < 16; ++slot) {
        switch (rng() % 5) {
            case 0:
                painter.SetColor(slot, rng());
                break;
            case 1:
                painter.SetNullColor(slot);
                break;
            case 2:
                break;  // empty: composited as a null colour
            default:
                painter.InstallApplicator(slot, new CPatternShade(rng()));
        }
    }
}

// The pixel from the definition: eight whole words uniform → one shade;
// otherwise counts over the footprint offsets.
struct PathCounts {
    int uniformPainted = 0;  // pixels of the fast path that shade
    int counted = 0;
};

uint32_t PixelByDefinition(TestCharacter& ch, CColorApplicator* const* slots, int32_t x, int32_t y,
                           uint32_t target, int32_t mode, PathCounts& paths) {
    auto word = [&ch](int32_t px, int32_t py, int32_t half) {
        const size_t i = (size_t(py) * ch.width + px) * 4 + 2 * half;
        return uint32_t(ch.coverage[i]) | uint32_t(ch.coverage[i + 1]) << 16;
    };
    const uint32_t words[8] = {word(x, y - 1, 1), word(x, y, 0),     word(x, y, 1),
                               word(x, y + 1, 0), word(x - 1, y, 0), word(x - 1, y, 1),
                               word(x + 1, y, 0), word(x + 1, y, 1)};
    bool uniform = true;
    for (uint32_t w : words) uniform = uniform && w == words[1];
    const uint32_t n = words[1] & 0xF;
    if (uniform && words[1] == n * 0x11111111u) {
        if (n < 2) return target;
        ++paths.uniformPainted;
        const float a = slots[n]->ShadeAt(x, y);
        const WorkingColor col = slots[n]->color;
        if (mode != 0) return Pack(col.c0, col.c1, col.c2, a);
        const float d = float(target >> 24);
        const float o = d + a - d * a / 255.0f;
        if (o == 0.0f) return 0;
        const float src[3] = {col.c0, col.c1, col.c2};
        float out[3];
        for (int j = 0; j < 3; ++j) {
            out[j] =
                src[j] * (a / o) + float((target >> (8 * j)) & 0xFF) * ((d - d * a / 255.0f) / o);
        }
        return Pack(out[0], out[1], out[2], o);
    }
    ++paths.counted;
    int32_t counts[16] = {};
    for (const auto& [dx, dy] : FootprintOffsets()) ++counts[ch.Sample(4 * x + dx, 4 * y + dy)];
    float s = 0.0f, c[3] = {0.0f, 0.0f, 0.0f};
    int32_t p = 0;
    for (int32_t i = 2; i < 16; ++i) p += counts[i];
    if (p == 0) return target;
    for (int32_t i = 2; i < 16; ++i) {
        if (counts[i] == 0) continue;
        const float w = float(counts[i]) * slots[i]->ShadeAt(x, y);
        const WorkingColor col = slots[i]->color;
        s = s + w;
        c[0] = c[0] + w * col.c0;
        c[1] = c[1] + w * col.c1;
        c[2] = c[2] + w * col.c2;
    }
    return BlendByDefinition(target, s, c, p, mode);
}

std::string DescribeCase(const RandomCase& rc, const TestCharacter& ch, int iteration) {
    std::ostringstream s;
    s << "iteration " << iteration << ": coverage " << rc.width << "x" << rc.height << " at ("
      << rc.x << ", " << rc.y << "), surface " << rc.clipW << "x" << rc.clipH << " pad " << rc.pad
      << ", mode " << rc.mode << ", rect (" << rc.rect.x << "," << rc.rect.y << "," << rc.rect.width
      << "," << rc.rect.height << ")\ncoverage words:\n"
      << testing_support::Hex(ch.coverage, 4 * rc.width);
    return s.str();
}

// Random coverage, slots and targets; with `flat`, only flat and null
// colours over a target of three distinct pixels, where the compositor
// reuses earlier blends: a reused blend must equal a fresh one.
PathCounts CompareWithPlainAndDefinition(uint32_t seed, int iterations, bool flat) {
    std::mt19937 rng(seed);
    auto range = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    PathCounts paths;
    for (int iteration = 0; iteration < iterations; ++iteration) {
        RandomCase rc;
        rc.width = range(1, 24);
        rc.height = range(1, 24);
        rc.x = range(-5, 8) + range(0, 3) * 0.25;
        rc.y = range(-5, 8) - range(0, 3) * 0.25;
        rc.clipW = range(1, 28);
        rc.clipH = range(1, 28);
        rc.pad = range(0, 3);
        rc.mode = range(0, 2);
        // Mostly the whole surface and a little more; sometimes any rectangle.
        rc.rect = range(0, 3)
                      ? CompositeRect{range(-2, 1), range(-2, 1), range(20, 30), range(20, 30)}
                      : CompositeRect{range(-4, 20), range(-4, 20), range(-2, 24), range(-2, 24)};
        TestCharacter ch(rc.width, rc.height);
        FillCoverage(ch, rng);
        if (flat) {
            for (int32_t slot = 0; slot < 16; ++slot) {
                if (rng() % 4 == 0) {
                    ch.painter.SetNullColor(slot);
                } else {
                    ch.painter.SetColor(slot, rng());
                }
            }
        } else {
            InstallRandomSlots(ch.painter, rng);
        }
        // Rows and pitch padding beyond the surface are guard areas.
        const int32_t stride = rc.clipW + rc.pad;
        std::vector<uint32_t> initial(size_t(stride) * (rc.clipH + 2));
        const uint32_t backgrounds[3] = {0, uint32_t(rng()) | 0xFF000000u, uint32_t(rng())};
        for (uint32_t& p : initial) {
            if (flat) {
                p = backgrounds[rng() % 8 == 0 ? rng() % 3 : 0];
            } else {
                p = (rng() % 4 == 0) ? (rng() & 0x00FFFFFFu) : rng();
            }
        }
        std::vector<uint32_t> fast = initial, plain = initial, defined = initial;
        for (auto* buffer : {&fast, &plain}) {
            ch.Bind(buffer->data(), stride * 4, rc.clipW, rc.clipH, rc.x, rc.y, rc.mode);
            (buffer == &fast ? CompositeCharacter : CompositeCharacterReference)(ch.painter,
                                                                                 rc.rect);
        }
        ch.Bind(defined.data(), stride * 4, rc.clipW, rc.clipH, rc.x, rc.y, rc.mode);
        CColorApplicator* slots[16];
        CNullColor nullColor;
        for (int32_t i = 0; i < 16; ++i)
            slots[i] = ch.painter.GetSlot(i) ? ch.painter.GetSlot(i) : &nullColor;
        const int32_t ox = int32_t(std::floor(rc.x)), oy = int32_t(std::floor(rc.y));
        for (int32_t ty = std::max(rc.rect.y, 0);
             ty < std::min(rc.rect.y + rc.rect.height, rc.clipH); ++ty) {
            for (int32_t tx = std::max(rc.rect.x, 0);
                 tx < std::min(rc.rect.x + rc.rect.width, rc.clipW); ++tx) {
                const int32_t x = tx - ox, y = ty - oy;
                if (x < 1 || y < 1 || x > rc.width - 2 || y > rc.height - 2) continue;
                uint32_t& p = defined[size_t(ty) * stride + tx];
                p = PixelByDefinition(ch, slots, x, y, p, rc.mode, paths);
            }
        }
        const std::string what = DescribeCase(rc, ch, iteration);
        EXPECT_EQ(0, std::memcmp(fast.data(), plain.data(), fast.size() * 4))
            << "fast vs plain twin, " << what;
        EXPECT_EQ(0, std::memcmp(fast.data(), defined.data(), fast.size() * 4))
            << "fast vs definition, " << what;
        if (::testing::Test::HasFailure()) break;
    }
    return paths;
}

TEST(Compositor, FastPathMatchesPerSampleLoops) {
    for (const bool flat : {false, true}) {
        SCOPED_TRACE(flat ? "flat colours, few backgrounds" : "any applicators and targets");
        const PathCounts paths = CompareWithPlainAndDefinition(flat ? 5202 : 4101, 3000, flat);
        // Both paths are exercised thoroughly.
        EXPECT_GT(paths.uniformPainted, 5000);
        EXPECT_GT(paths.counted, 10000);
    }
}

}  // namespace
