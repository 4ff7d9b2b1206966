// Span writers and coverage kernels: word-store writers against their
// one-nibble twins and the layout definition, constant against general
// kernels, prepared against reference kernels.
#include "raster/coverage_kernels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "raster_test_util.h"

namespace {

using trtest::DrawKernel;
using trtest::GuardedMap;
using trtest::TablesOf;
using trtest::TriangleText;

constexpr int kCols = 24;  // a row of six tiles for the span tests

std::vector<uint16_t> RandomWords(std::mt19937& rng) {
    std::vector<uint16_t> w(kCols);
    for (auto& v : w) v = static_cast<uint16_t>(rng());
    return w;
}

// Every span of the row, every value, random previous contents: the
// word-store writer, its plain twin and the general writer with a constant
// map agree and change exactly the span's nibbles of the row's words
// (every fourth word; the words between belong to other sub-rows).
TEST(CoverageSpans, AllSpansAgreeBetweenWritersAndTheDefinition) {
    std::mt19937 rng(5);
    for (uint32_t k = 0; k < 16; ++k) {
        uint8_t map[16];
        std::memset(map, static_cast<int>(k), sizeof map);
        const tr::NibbleTables tables = TablesOf(map);
        for (int x0 = 0; x0 < kCols; ++x0)
            for (int x1 = x0; x1 <= kCols; ++x1) {
                const std::vector<uint16_t> original = RandomWords(rng);
                std::vector<uint16_t> a = original, b = original, c = original;
                tr::FillSpanConstant(a.data(), x0, x1, k);
                tr::FillSpanConstantPlain(b.data(), x0, x1, k);
                tr::FillSpanGeneral(c.data(), x0, x1, tables);
                ASSERT_TRUE(a == b && a == c) << "k " << k << " [" << x0 << ", " << x1 << ")";
                for (int i = 0; i < kCols; ++i)
                    for (int pos = 0; pos < 4; ++pos) {
                        const int x = (i / 4) * 4 + pos, shift = 12 - 4 * pos;
                        const bool in = i % 4 == 0 && x >= x0 && x < x1;
                        ASSERT_EQ((a[i] >> shift) & 0xFu, in ? k : (original[i] >> shift) & 0xFu)
                            << "k " << k << " [" << x0 << ", " << x1 << ") word " << i;
                    }
            }
    }
}

// Whole maps with guards and random contents, triangles inside, across and
// far outside the map: the prepared kernel equals the reference kernel;
// for a constant map k the word-store and plain constant kernels and the
// general kernel with every entry k all give that same buffer.
TEST(CoverageKernels, PreparedConstantPlainAndGeneralKernelsAgree) {
    std::mt19937 rng(90210);
    for (int n = 0; n < 8000; ++n) {
        uint8_t map[16];
        const bool constant = n % 2 == 0;
        const uint8_t k = static_cast<uint8_t>(rng() % 16);
        for (uint8_t& v : map) v = constant ? k : static_cast<uint8_t>(rng() % 16);
        const tr::NibbleTables tables = TablesOf(map);
        tr::ByteMapTable bytes;
        tr::BuildByteMapTable(map, bytes);
        const float spread = n % 5 == 0 ? 3e7f : 90.0f;
        std::uniform_real_distribution<float> c(-spread / 9, spread);
        const float xs[3] = {c(rng), c(rng), c(rng)}, ys[3] = {c(rng), c(rng), c(rng)};
        GuardedMap prepared(80, 72);
        prepared.Randomize(rng);
        GuardedMap general = prepared, plain = prepared, words = prepared;
        const tr::PreparedCoverageKernel kernel =
            constant ? tr::PreparedConstantKernel(k) : tr::PreparedGeneralKernel();
        kernel(tr::CoverageTarget{prepared.Words(), 80, 72, nullptr, &bytes},
               tr::PrepareVertex(xs[0], ys[0]), tr::PrepareVertex(xs[1], ys[1]),
               tr::PrepareVertex(xs[2], ys[2]));
        DrawKernel(general, tr::GeneralCoverageKernel(), xs, ys, &tables);
        ASSERT_TRUE(prepared.SameAs(general)) << "k " << int(k) << " " << TriangleText(xs, ys);
        if (!constant) continue;
        DrawKernel(plain, tr::ConstantCoverageKernelPlain(k), xs, ys);
        DrawKernel(words, tr::ConstantCoverageKernel(k), xs, ys);
        ASSERT_TRUE(plain.SameAs(general) && words.SameAs(general))
            << "k " << int(k) << " " << TriangleText(xs, ys);
    }
}

}  // namespace
