// Span writers and coverage kernels: the word-store constant kernels against
// their one-nibble twins, constant against general kernels, maps that
// rewrite a single applicator number, and the prepared-vertex kernels
// (word stores, byte-table words) against the reference kernels.
#include "raster/coverage_kernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::FillRuleOracle;
using trtest::GuardedMap;
using trtest::TriangleText;

tr::NibbleTables TablesOf(const uint8_t* map) {
    tr::NibbleTables t;
    tr::BuildNibbleTables(map, t);
    return t;
}

void FillRandom(GuardedMap& m, std::mt19937& rng) {
    for (size_t i = 0; i < m.Bytes() / 2; ++i) m.Words()[i] = static_cast<uint16_t>(rng());
}

struct RandomTriangle {
    float xs[3], ys[3];
};

RandomTriangle MakeTriangle(std::mt19937& rng, float lo, float hi) {
    std::uniform_real_distribution<float> c(lo, hi);
    RandomTriangle t;
    for (int i = 0; i < 3; ++i) t.xs[i] = c(rng), t.ys[i] = c(rng);
    return t;
}

void Draw(GuardedMap& m, tr::CoverageKernel k, const RandomTriangle& t,
          const tr::NibbleTables* tables = nullptr) {
    tr::ScreenTriangle s{};
    for (int i = 0; i < 3; ++i) s.x[i] = t.xs[i], s.y[i] = t.ys[i];
    k(tr::CoverageTarget{m.Words(), m.W(), m.H(), tables, nullptr}, s);
}

TEST(CoverageSpans, NineSubSamplesFromFourWithValueTen) {
    // Row 0 of a map 16 wide: words 0, 4, 8, 12 hold columns 0-3 ... 12-15.
    std::vector<uint16_t> row(16, 0x7777);
    tr::FillSpanConstant(row.data(), 4, 13, 10);
    EXPECT_EQ(row[0], 0x7777);
    EXPECT_EQ(row[4], 0xAAAA);  // x = 4..7
    EXPECT_EQ(row[8], 0xAAAA);  // x = 8..11
    EXPECT_EQ(row[12], 0xA777); // x = 12 only; 13 untouched
}

TEST(CoverageSpans, ZeroClearsOnlyCoveredNibbles) {
    std::vector<uint16_t> row(8, 0xFFFF);
    tr::FillSpanConstant(row.data(), 1, 3, 0);
    EXPECT_EQ(row[0], 0xF00F);
    EXPECT_EQ(row[4], 0xFFFF);
}

// Every span of a 6-tile row, every value, random previous contents: the
// word-store writer, its plain twin and the general writer with a constant
// map agree word for word.
TEST(CoverageSpans, AllSpansAgreeBetweenWriters) {
    std::mt19937 rng(5);
    constexpr int kCols = 24;
    for (uint32_t k = 0; k < 16; ++k) {
        uint8_t map[16];
        std::memset(map, static_cast<int>(k), sizeof map);
        const tr::NibbleTables tables = TablesOf(map);
        for (int x0 = 0; x0 < kCols; ++x0) {
            for (int x1 = x0; x1 <= kCols; ++x1) {
                std::vector<uint16_t> a(kCols), b, c, original;
                for (auto& w : a) w = static_cast<uint16_t>(rng());
                original = b = c = a;
                tr::FillSpanConstant(a.data(), x0, x1, k);
                tr::FillSpanConstantPlain(b.data(), x0, x1, k);
                tr::FillSpanGeneral(c.data(), x0, x1, tables);
                ASSERT_EQ(a, b) << "k " << k << " span [" << x0 << ", " << x1 << ")";
                ASSERT_EQ(a, c) << "k " << k << " span [" << x0 << ", " << x1 << ")";
                // Row words are 4 apart; the three words between belong to
                // other sub-rows and must not change.
                for (int i = 0; i < kCols; ++i) {
                    for (int pos = 0; pos < 4; ++pos) {
                        const int x = (i / 4) * 4 + pos, shift = 12 - 4 * pos;
                        const bool in = i % 4 == 0 && x >= x0 && x < x1;
                        const uint32_t want = in ? k : (original[i] >> shift) & 0xF;
                        ASSERT_EQ((a[i] >> shift) & 0xFu, want) << "word " << i << " nibble " << pos;
                    }
                }
            }
        }
    }
}

// The byte-table word writer against the nibble-by-nibble general writer:
// every span of a 6-tile row under random maps, from random contents.
TEST(CoverageSpans, ByteTableWordsAgreeWithNibbleWriter) {
    std::mt19937 rng(55);
    constexpr int kCols = 24;
    for (int n = 0; n < 40; ++n) {
        uint8_t map[16];
        for (uint8_t& v : map) v = static_cast<uint8_t>(rng() % 16);
        const tr::NibbleTables tables = TablesOf(map);
        tr::ByteMapTable bytes;
        tr::BuildByteMapTable(map, bytes);
        for (int x0 = 0; x0 < kCols; ++x0) {
            for (int x1 = x0; x1 <= kCols; ++x1) {
                std::vector<uint16_t> a(kCols), b;
                for (auto& w : a) w = static_cast<uint16_t>(rng());
                b = a;
                tr::FillSpanGeneralWords(a.data(), x0, x1, bytes);
                tr::FillSpanGeneral(b.data(), x0, x1, tables);
                ASSERT_EQ(a, b) << "map " << n << " span [" << x0 << ", " << x1 << ")";
            }
        }
    }
}

TEST(CoverageSpans, ByteTableMapsBothNibblesOfEveryByte) {
    uint8_t map[16];
    for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>((v * 11 + 5) % 16);
    tr::ByteMapTable bytes;
    tr::BuildByteMapTable(map, bytes);
    for (int hi = 0; hi < 16; ++hi) {
        for (int lo = 0; lo < 16; ++lo) {
            ASSERT_EQ(bytes[hi * 16 + lo], map[hi] * 16 + map[lo]) << hi << ", " << lo;
        }
    }
}

// The prepared kernels against the reference kernels, constant and
// general maps, triangles inside, across and far outside the map.
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
        const RandomTriangle t = MakeTriangle(rng, -spread / 9, spread);
        GuardedMap prepared(80, 72);
        FillRandom(prepared, rng);
        GuardedMap reference = prepared;
        const tr::CoverageTarget target{prepared.Words(), 80, 72, nullptr, &bytes};
        const tr::PreparedCoverageKernel kernel =
            constant ? tr::PreparedConstantKernel(k) : tr::PreparedGeneralKernel();
        kernel(target, tr::PrepareVertex(t.xs[0], t.ys[0]), tr::PrepareVertex(t.xs[1], t.ys[1]),
               tr::PrepareVertex(t.xs[2], t.ys[2]));
        Draw(reference, constant ? tr::ConstantCoverageKernelPlain(k) : tr::GeneralCoverageKernel(),
             t, &tables);
        ASSERT_TRUE(prepared.SameAs(reference))
            << (constant ? "constant " : "general ") << TriangleText(t.xs, t.ys);
    }
}

// The fast path the rasterizer uses against the plain definition, over
// whole maps with guard words, from random previous contents.
TEST(CoverageKernels, WordStoreKernelsMatchPlainTwinsOnRandomTriangles) {
    std::mt19937 rng(31337);
    for (int n = 0; n < 5000; ++n) {
        const uint32_t k = rng() % 16;
        const RandomTriangle t = MakeTriangle(rng, -10.0f, 90.0f);
        GuardedMap fast(80, 80);
        FillRandom(fast, rng);
        GuardedMap plain = fast;
        Draw(fast, tr::ConstantCoverageKernel(k), t);
        Draw(plain, tr::ConstantCoverageKernelPlain(k), t);
        ASSERT_TRUE(fast.SameAs(plain)) << "k " << k << " triangle " << TriangleText(t.xs, t.ys);
    }
}

TEST(CoverageKernels, ConstantKernelEqualsGeneralKernelWithConstantMap) {
    std::mt19937 rng(8);
    for (int n = 0; n < 3000; ++n) {
        const uint32_t k = rng() % 16;
        uint8_t map[16];
        std::memset(map, static_cast<int>(k), sizeof map);
        const tr::NibbleTables tables = TablesOf(map);
        const RandomTriangle t = MakeTriangle(rng, -4.0f, 68.0f);
        GuardedMap a(64, 64);
        FillRandom(a, rng);
        GuardedMap b = a;
        Draw(a, tr::ConstantCoverageKernel(k), t);
        Draw(b, tr::GeneralCoverageKernel(), t, &tables);
        ASSERT_TRUE(a.SameAs(b)) << "k " << k << " triangle " << TriangleText(t.xs, t.ys);
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
        const RandomTriangle t = MakeTriangle(rng, 0.0f, 64.0f);
        GuardedMap before(64, 64);
        // Few distinct values so that `from` is common.
        for (int32_t y = 0; y < 64; ++y)
            for (int32_t x = 0; x < 64; ++x) before.Set(x, y, rng() % 3 == 0 ? from : rng() % 16);
        GuardedMap after = before;
        Draw(after, tr::GeneralCoverageKernel(), t, &tables);
        const FillRuleOracle oracle(t.xs, t.ys);
        for (int32_t y = 0; y < 64; ++y) {
            for (int32_t x = 0; x < 64; ++x) {
                const uint32_t want =
                    oracle.Covers(x, y) && before.At(x, y) == from ? to : before.At(x, y);
                ASSERT_EQ(after.At(x, y), want) << "(" << x << ", " << y << ") map[" << int(from)
                                                << "] = " << int(to) << " " << TriangleText(t.xs, t.ys);
            }
        }
        ASSERT_TRUE(after.GuardsIntact());
    }
}

TEST(CoverageKernels, NibbleTablesHoldEntriesShiftedPerPosition) {
    uint8_t map[16];
    for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>((v * 7 + 3) % 16);
    const tr::NibbleTables t = TablesOf(map);
    for (int v = 0; v < 16; ++v) {
        EXPECT_EQ(t[0][v], map[v] * 0x1000);
        EXPECT_EQ(t[1][v], map[v] * 0x0100);
        EXPECT_EQ(t[2][v], map[v] * 0x0010);
        EXPECT_EQ(t[3][v], map[v] * 0x0001);
    }
}

}  // namespace
