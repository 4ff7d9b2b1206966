// Span writers and coverage kernels: word-store writers and kernels against
// their one-nibble twins and the layout definition, constant against
// general kernels, a map that rewrites one applicator number against the
// fill-rule oracle, and the prepared-vertex kernels against the reference
// kernels.
#include "raster/coverage_kernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::GuardedMap;
using trtest::TriangleText;

constexpr int kCols = 24;  // a row of six tiles for the span tests

tr::NibbleTables TablesOf(const uint8_t* map) {
    tr::NibbleTables t;
    tr::BuildNibbleTables(map, t);
    return t;
}

std::vector<uint16_t> RandomWords(std::mt19937& rng, size_t n) {
    std::vector<uint16_t> w(n);
    for (auto& v : w) v = static_cast<uint16_t>(rng());
    return w;
}

void FillRandom(GuardedMap& m, std::mt19937& rng) {
    for (size_t i = 0; i < m.Bytes() / 2; ++i) m.Words()[i] = static_cast<uint16_t>(rng());
}

struct Triangle {
    float xs[3], ys[3];
};

Triangle RandomTriangle(std::mt19937& rng, float lo, float hi) {
    std::uniform_real_distribution<float> c(lo, hi);
    Triangle t;
    for (int i = 0; i < 3; ++i) t.xs[i] = c(rng), t.ys[i] = c(rng);
    return t;
}

void Draw(GuardedMap& m, tr::CoverageKernel k, const Triangle& t,
          const tr::NibbleTables* tables = nullptr) {
    const tr::ScreenTriangle s{{t.xs[0], t.xs[1], t.xs[2]}, {t.ys[0], t.ys[1], t.ys[2]}, {}};
    k(tr::CoverageTarget{m.Words(), m.W(), m.H(), tables, nullptr}, s);
}

// Every span of the row, every value, random previous contents: the
// word-store writer, its plain twin and the general writer with a constant
// map agree, and change exactly the span's nibbles of the row's words
// (every fourth word; the words between belong to other sub-rows).
TEST(CoverageSpans, AllSpansAgreeBetweenWritersAndTheDefinition) {
    std::mt19937 rng(5);
    for (uint32_t k = 0; k < 16; ++k) {
        uint8_t map[16];
        std::memset(map, static_cast<int>(k), sizeof map);
        const tr::NibbleTables tables = TablesOf(map);
        for (int x0 = 0; x0 < kCols; ++x0) {
            for (int x1 = x0; x1 <= kCols; ++x1) {
                const std::vector<uint16_t> original = RandomWords(rng, kCols);
                std::vector<uint16_t> a = original, b = original, c = original;
                tr::FillSpanConstant(a.data(), x0, x1, k);
                tr::FillSpanConstantPlain(b.data(), x0, x1, k);
                tr::FillSpanGeneral(c.data(), x0, x1, tables);
                ASSERT_EQ(a, b) << "k " << k << " span [" << x0 << ", " << x1 << ")";
                ASSERT_EQ(a, c) << "k " << k << " span [" << x0 << ", " << x1 << ")";
                for (int i = 0; i < kCols; ++i)
                    for (int pos = 0; pos < 4; ++pos) {
                        const int x = (i / 4) * 4 + pos, shift = 12 - 4 * pos;
                        const bool in = i % 4 == 0 && x >= x0 && x < x1;
                        ASSERT_EQ((a[i] >> shift) & 0xFu, in ? k : (original[i] >> shift) & 0xFu)
                            << "k " << k << " span [" << x0 << ", " << x1 << ") word " << i;
                    }
            }
        }
    }
}

// The byte-table word writer against the nibble-by-nibble general writer,
// every span under random maps.
TEST(CoverageSpans, ByteTableWordsAgreeWithNibbleWriter) {
    std::mt19937 rng(55);
    for (int n = 0; n < 40; ++n) {
        uint8_t map[16];
        for (uint8_t& v : map) v = static_cast<uint8_t>(rng() % 16);
        const tr::NibbleTables tables = TablesOf(map);
        tr::ByteMapTable bytes;
        tr::BuildByteMapTable(map, bytes);
        for (int x0 = 0; x0 < kCols; ++x0) {
            for (int x1 = x0; x1 <= kCols; ++x1) {
                std::vector<uint16_t> a = RandomWords(rng, kCols), b = a;
                tr::FillSpanGeneralWords(a.data(), x0, x1, bytes);
                tr::FillSpanGeneral(b.data(), x0, x1, tables);
                ASSERT_EQ(a, b) << "map " << n << " span [" << x0 << ", " << x1 << ")";
            }
        }
    }
}

// The prepared kernels against the reference kernels, constant and general
// maps, triangles inside, across and far outside the map.
TEST(CoverageKernels, PreparedKernelsMatchReferenceKernels) {
    std::mt19937 rng(90210);
    for (int n = 0; n < 6000; ++n) {
        uint8_t map[16];
        const bool constant = n % 2 == 0;
        const uint8_t k = static_cast<uint8_t>(rng() % 16);
        for (uint8_t& v : map) v = constant ? k : static_cast<uint8_t>(rng() % 16);
        const tr::NibbleTables tables = TablesOf(map);
        tr::ByteMapTable bytes;
        tr::BuildByteMapTable(map, bytes);
        const float spread = n % 5 == 0 ? 3e7f : 90.0f;
        const Triangle t = RandomTriangle(rng, -spread / 9, spread);
        GuardedMap prepared(80, 72);
        FillRandom(prepared, rng);
        GuardedMap reference = prepared;
        const tr::PreparedCoverageKernel kernel =
            constant ? tr::PreparedConstantKernel(k) : tr::PreparedGeneralKernel();
        kernel(tr::CoverageTarget{prepared.Words(), 80, 72, nullptr, &bytes},
               tr::PrepareVertex(t.xs[0], t.ys[0]), tr::PrepareVertex(t.xs[1], t.ys[1]),
               tr::PrepareVertex(t.xs[2], t.ys[2]));
        Draw(reference, constant ? tr::ConstantCoverageKernelPlain(k) : tr::GeneralCoverageKernel(),
             t, &tables);
        ASSERT_TRUE(prepared.SameAs(reference))
            << (constant ? "constant " : "general ") << TriangleText(t.xs, t.ys);
    }
}

// Whole maps with guard words from random previous contents: the word-store
// constant kernel, its plain twin and the general kernel with the constant
// map give the same buffers.
TEST(CoverageKernels, ConstantKernelsMatchPlainTwinAndGeneralKernel) {
    std::mt19937 rng(31337);
    for (int n = 0; n < 5000; ++n) {
        const uint32_t k = rng() % 16;
        uint8_t map[16];
        std::memset(map, static_cast<int>(k), sizeof map);
        const tr::NibbleTables tables = TablesOf(map);
        const Triangle t = RandomTriangle(rng, -10.0f, 90.0f);
        GuardedMap fast(80, 80);
        FillRandom(fast, rng);
        GuardedMap plain = fast, general = fast;
        Draw(fast, tr::ConstantCoverageKernel(k), t);
        Draw(plain, tr::ConstantCoverageKernelPlain(k), t);
        Draw(general, tr::GeneralCoverageKernel(), t, &tables);
        ASSERT_TRUE(fast.SameAs(plain)) << "k " << k << " " << TriangleText(t.xs, t.ys);
        ASSERT_TRUE(fast.SameAs(general)) << "k " << k << " " << TriangleText(t.xs, t.ys);
    }
}

// A map that is the identity except map[from] = to changes exactly the
// covered sub-samples that held `from`.
TEST(CoverageKernels, IdentityExceptOneChangesOnlyMatchingSubSamples) {
    std::mt19937 rng(12);
    for (int n = 0; n < 500; ++n) {
        const uint8_t from = static_cast<uint8_t>(rng() % 16);
        const uint8_t to = static_cast<uint8_t>((from + 1 + rng() % 15) % 16);
        uint8_t map[16];
        for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>(v);
        map[from] = to;
        const tr::NibbleTables tables = TablesOf(map);
        const Triangle t = RandomTriangle(rng, 0.0f, 64.0f);
        GuardedMap before(64, 64);
        for (int32_t y = 0; y < 64; ++y)  // `from` made common
            for (int32_t x = 0; x < 64; ++x) before.Set(x, y, rng() % 3 == 0 ? from : rng() % 16);
        GuardedMap after = before;
        Draw(after, tr::GeneralCoverageKernel(), t, &tables);
        const trtest::FillRuleOracle oracle(t.xs, t.ys);
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) {
                const uint32_t old = before.At(x, y);
                ASSERT_EQ(after.At(x, y), oracle.Covers(x, y) && old == from ? to : old)
                    << "(" << x << ", " << y << ") map[" << int(from) << "] = " << int(to) << " "
                    << TriangleText(t.xs, t.ys);
            }
        ASSERT_TRUE(after.GuardsIntact());
    }
}

}  // namespace
