// The prepared set-up and walk against the reference walk, every covered
// sub-sample counted.
#include "raster/prepared_triangle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;

// Map contents are nibbles 0-7 counted modulo 8; every guard word has a
// nibble of 8 or above, so a word operation that meets one was handed a
// word outside the map (even with an empty mask).
constexpr uint16_t kHighBits = 0x8888;

// Adds 1 (mod 8) to every covered nibble; flags words outside the map.
struct CountingWords {
    bool* strayWord;
    uint16_t Whole(uint16_t v) const { return Part(v, 0xFFFF); }
    uint16_t Part(uint16_t v, uint16_t m) const {
        if ((v & kHighBits) != 0) *strayWord = true;
        uint16_t out = static_cast<uint16_t>(v & ~m);
        for (int shift = 0; shift < 16; shift += 4)
            if (((m >> shift) & 0xF) != 0) out |= static_cast<uint16_t>(((v >> shift) + 1) & 7) << shift;
        return out;
    }
};

// Returns false when a word outside the map was handed to the operation.
bool DrawPrepared(GuardedMap& m, const float* xs, const float* ys) {
    bool stray = false;
    tr::RasterizePrepared(tr::PrepareVertex(xs[0], ys[0]), tr::PrepareVertex(xs[1], ys[1]),
                          tr::PrepareVertex(xs[2], ys[2]), m.Words(),
                          tr::WalkWindow{0, m.H(), m.W()}, CountingWords{&stray});
    return !stray;
}

// Shape 0 map-sized, 1 sliver, 2 tiny, 3 on sub-sample centres and
// corners, 4 across the borders, 5 a vertex around or past the walk's
// safe range, 6 a vertex not finite.
void MakeTriangle(std::mt19937& rng, int shape, int32_t w, int32_t h, float* xs, float* ys) {
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    const float cx = -8.0f + u(rng) * (w + 16.0f), cy = -8.0f + u(rng) * (h + 16.0f);
    const float dx = (u(rng) - 0.5f) * 3.0f, dy = (u(rng) - 0.5f) * 60.0f;
    for (int i = 0; i < 3; ++i) {
        switch (shape) {
            case 1:
                xs[i] = cx + (i == 0 ? 0 : i == 1 ? dx : dx * u(rng) + (u(rng) - 0.5f) * 1.5f);
                ys[i] = cy + (i == 0 ? 0 : i == 1 ? dy : dy * u(rng));
                break;
            case 2: xs[i] = cx + u(rng) * 3.0f, ys[i] = cy + u(rng) * 3.0f; break;
            case 3:
                xs[i] = std::floor(u(rng) * (w + 2)) - (rng() % 2 ? 0.5f : 1.0f);
                ys[i] = std::floor(u(rng) * (h + 2)) - (rng() % 2 ? 0.5f : 1.0f);
                break;
            case 4: xs[i] = (u(rng) * 3 - 1) * w, ys[i] = (u(rng) * 3 - 1) * h; break;
            default: xs[i] = u(rng) * w, ys[i] = u(rng) * h; break;
        }
    }
    const int k = static_cast<int>(rng() % 3);
    if (shape == 5) {
        const float far = rng() % 2 ? 1.6e7f : 2.0e7f;
        xs[k] = (u(rng) - 0.5f) * 2 * far, ys[k] = (u(rng) - 0.5f) * 2 * far;
    } else if (shape == 6) {
        xs[k] = rng() % 2 ? std::numeric_limits<float>::quiet_NaN()
                          : std::numeric_limits<float>::infinity();
    }
}

TEST(PreparedWalk, RandomTrianglesCountLikeTheReferenceWalk) {
    std::mt19937 rng(77);
    const int32_t sizes[][2] = {{64, 64}, {4, 40}, {100, 8}, {36, 92}};
    for (int n = 0; n < 12000; ++n) {
        const int32_t w = sizes[n % 4][0], h = sizes[n % 4][1];
        float xs[3], ys[3];
        MakeTriangle(rng, (n / 4) % 7, w, h, xs, ys);
        GuardedMap prepared(w, h);
        prepared.Randomize(rng, static_cast<uint16_t>(~kHighBits));
        GuardedMap reference = prepared;
        const bool inside = DrawPrepared(prepared, xs, ys);
        trtest::WalkReference(reference, xs, ys, [&](int32_t row, int32_t x0, int32_t x1) {
            for (int32_t x = x0; x < x1; ++x) reference.Set(x, row, (reference.At(x, row) + 1) & 7);
        });
        ASSERT_TRUE(prepared.SameAs(reference) && inside)
            << w << "x" << h << " " << trtest::TriangleText(xs, ys);
    }
}

}  // namespace
