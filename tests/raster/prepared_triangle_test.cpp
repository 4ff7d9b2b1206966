// The prepared set-up and walk against the reference walk: random triangles
// of every size class (glyph slivers, map-sized, straddling the borders,
// beyond the safe range, non-finite) on maps of several sizes, with every
// covered sub-sample counted so that a double or missing write shows; and
// the edge positions against exact integer arithmetic across the safe range.
// (Meshes of slivers are in union_scan_test.cpp.)
#include "raster/prepared_triangle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <limits>
#include <random>
#include <string>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::TriangleText;

// Map contents are nibbles 0-7 counted modulo 8; the guard pattern has
// nibbles of 8 and above, so a word operation that meets one has been
// handed a word outside the map (even with an empty mask, which would
// leave the guard intact).
constexpr uint16_t kHighBits = 0x8888;
static_assert((GuardedMap::kGuardPattern & kHighBits) != 0, "guards must be recognisable");

// Adds 1 (mod 8) to every covered nibble; flags words outside the map.
struct CountingWords {
    bool* strayWord;
    uint16_t Whole(uint16_t v) const { return Part(v, 0xFFFF); }
    uint16_t Part(uint16_t v, uint16_t m) const {
        if ((v & kHighBits) != 0) *strayWord = true;
        uint16_t out = static_cast<uint16_t>(v & ~m);
        for (int shift = 0; shift < 16; shift += 4) {
            if (((m >> shift) & 0xF) != 0) out |= static_cast<uint16_t>(((v >> shift) + 1) & 7) << shift;
        }
        return out;
    }
};

// The reference: set-up, clipping and walk of triangle_walk.h, each
// covered sub-sample counted through the layout definition.
void DrawReference(GuardedMap& m, const float* xs, const float* ys) {
    const tr::ScreenTriangle t{{xs[0], xs[1], xs[2]}, {ys[0], ys[1], ys[2]}, {}};
    const tr::WalkWindow window{0, m.H(), m.W()};
    auto span = [&](int32_t row, int32_t x0, int32_t x1) {
        for (int32_t x = x0; x < x1; ++x) m.Set(x, row, (m.At(x, row) + 1) & 7);
    };
    auto onSetup = [&](const tr::TriangleSetup&, const tr::ScreenTriangle&) { return span; };
    tr::RasterizeTriangle(t, window, onSetup);
}

// Returns false when a word outside the map was handed to the operation.
bool DrawPrepared(GuardedMap& m, const float* xs, const float* ys) {
    const tr::WalkWindow window{0, m.H(), m.W()};
    bool stray = false;
    tr::RasterizePrepared(tr::PrepareVertex(xs[0], ys[0]), tr::PrepareVertex(xs[1], ys[1]),
                          tr::PrepareVertex(xs[2], ys[2]), m.Words(), window,
                          CountingWords{&stray});
    return !stray;
}

enum class Shape { kMapSized, kSliver, kTiny, kOnCentres, kStraddling, kHuge, kNonFinite };

void MakeTriangle(std::mt19937& rng, Shape shape, int32_t w, int32_t h, float* xs, float* ys) {
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    const float cx = -8.0f + u(rng) * (w + 16.0f), cy = -8.0f + u(rng) * (h + 16.0f);
    switch (shape) {
        case Shape::kMapSized:
            for (int i = 0; i < 3; ++i) xs[i] = u(rng) * w, ys[i] = u(rng) * h;
            return;
        case Shape::kSliver: {  // a long side and an apex just off it
            const float dx = (u(rng) - 0.5f) * 3.0f, dy = (u(rng) - 0.5f) * 60.0f;
            xs[0] = cx, ys[0] = cy;
            xs[1] = cx + dx, ys[1] = cy + dy;
            xs[2] = cx + dx * u(rng) + (u(rng) - 0.5f) * 1.5f, ys[2] = cy + dy * u(rng);
            return;
        }
        case Shape::kTiny:
            for (int i = 0; i < 3; ++i) xs[i] = cx + u(rng) * 3.0f, ys[i] = cy + u(rng) * 3.0f;
            return;
        case Shape::kOnCentres:  // sub-sample centres and corners, up to the borders
            for (int i = 0; i < 3; ++i) {
                xs[i] = std::floor(u(rng) * (w + 2)) - (rng() % 2 ? 0.5f : 1.0f);
                ys[i] = std::floor(u(rng) * (h + 2)) - (rng() % 2 ? 0.5f : 1.0f);
            }
            return;
        case Shape::kStraddling:
            for (int i = 0; i < 3; ++i) xs[i] = (u(rng) * 3 - 1) * w, ys[i] = (u(rng) * 3 - 1) * h;
            return;
        case Shape::kHuge: {  // around and past the walk's safe range
            const float far = rng() % 2 ? 1.6e7f : 2.0e7f;
            for (int i = 0; i < 3; ++i) xs[i] = u(rng) * w, ys[i] = u(rng) * h;
            const int k = static_cast<int>(rng() % 3);
            xs[k] = (u(rng) - 0.5f) * 2 * far;
            ys[k] = (u(rng) - 0.5f) * 2 * far;
            return;
        }
        case Shape::kNonFinite:
            for (int i = 0; i < 3; ++i) xs[i] = u(rng) * w, ys[i] = u(rng) * h;
            xs[rng() % 3] = rng() % 2 ? std::numeric_limits<float>::quiet_NaN()
                                      : std::numeric_limits<float>::infinity();
            return;
    }
}

TEST(PreparedWalk, RandomTrianglesCountLikeTheReferenceWalk) {
    std::mt19937 rng(77);
    const int32_t sizes[][2] = {{64, 64}, {4, 40}, {100, 8}, {36, 92}};
    const Shape shapes[] = {Shape::kMapSized, Shape::kSliver,     Shape::kTiny, Shape::kOnCentres,
                            Shape::kStraddling, Shape::kHuge, Shape::kNonFinite};
    for (int n = 0; n < 12000; ++n) {
        const int32_t w = sizes[n % 4][0], h = sizes[n % 4][1];
        const Shape shape = shapes[(n / 4) % 7];
        float xs[3], ys[3];
        MakeTriangle(rng, shape, w, h, xs, ys);
        GuardedMap prepared(w, h);
        for (size_t i = 0; i < prepared.Bytes() / 2; ++i) {
            prepared.Words()[i] = static_cast<uint16_t>(rng() & ~kHighBits);
        }
        GuardedMap reference = prepared;
        const bool inside = DrawPrepared(prepared, xs, ys);
        DrawReference(reference, xs, ys);
        const std::string input =
            "map " + std::to_string(w) + "x" + std::to_string(h) + " " + TriangleText(xs, ys);
        ASSERT_TRUE(prepared.SameAs(reference)) << input;
        ASSERT_TRUE(inside) << input;
        ASSERT_TRUE(prepared.GuardsIntact()) << input;
    }
}

// Edge positions: x0 + (off * dx) / dy + k * ((dx * 2048) / dy) in exact
// integers, for edges anywhere in the safe range and rows along them.
TEST(PreparedWalk, EdgePositionsAreExactIntegerQuotients) {
    std::mt19937 rng(4242);
    std::uniform_real_distribution<float> anywhere(-1.6777216e7f, 1.6777216e7f);
    std::uniform_real_distribution<float> near(-300.0f, 300.0f);
    std::cout.precision(9);
    for (int n = 0; n < 200000; ++n) {
        const bool big = n % 2 == 0;
        const float ax = big ? anywhere(rng) : near(rng), ay = big ? anywhere(rng) : near(rng);
        const float bx = big ? anywhere(rng) : near(rng), by = big ? anywhere(rng) : near(rng);
        tr::PreparedVertex a = tr::PrepareVertex(ax, ay), b = tr::PrepareVertex(bx, by);
        ASSERT_TRUE(a.walkable && b.walkable);
        if (a.yFx > b.yFx) std::swap(a, b);
        const int64_t first = tr::FxCeil(a.yFx), end = tr::FxCeil(b.yFx);
        if (first >= end) continue;
        const int64_t rows = end - first;
        const int64_t row = first + static_cast<int64_t>(rng() % static_cast<uint64_t>(rows));
        const tr::PreparedEdge e = tr::SetUpEdge(a, b, row);
        const __int128 dx = b.xFx - a.xFx, dy = b.yFx - a.yFx;
        const __int128 off = first * 2048 - a.yFx;
        const __int128 step = dx * 2048 / dy;
        const __int128 want = a.xFx + off * dx / dy + (row - first) * step;
        ASSERT_EQ(static_cast<int64_t>(want), e.xFx)
            << "(" << ax << ", " << ay << ") -> (" << bx << ", " << by << ") row " << row;
        ASSERT_EQ(static_cast<int64_t>(step), e.stepFx);
    }
}

TEST(PreparedWalk, VerticesBeyondTheSafeRangeOrNotFiniteAreNotWalkable) {
    const float big = 16777216.0f;
    const struct {
        float x, y;
        bool walkable;
    } cases[] = {
        {0.0f, 0.0f, true},
        {big, -big, true},
        {std::nextafter(big, 1e30f), 0.0f, false},
        {0.0f, -std::nextafter(big, 1e30f), false},
        {std::numeric_limits<float>::quiet_NaN(), 1.0f, false},
        {1.0f, -std::numeric_limits<float>::infinity(), false},
    };
    for (const auto& c : cases) {
        const tr::PreparedVertex v = tr::PrepareVertex(c.x, c.y);
        EXPECT_EQ(v.walkable, c.walkable) << c.x << ", " << c.y;
        if (c.walkable) {
            EXPECT_EQ(v.xFx, static_cast<int64_t>(std::trunc((double(c.x) + 0.5) * 2048.0)));
            EXPECT_EQ(v.yFx, static_cast<int64_t>(std::trunc((double(c.y) - 0.5) * 2048.0)));
        }
    }
}

}  // namespace
