// raster/coverage_kernels.cpp — span writers and the per-triangle coverage
// kernels built from them (see coverage_kernels.h for the layout).
#include "raster/coverage_kernels.h"

#include <cassert>
#include <cstddef>

#include "raster/span_words.h"
#include "raster/triangle_clip.h"

namespace tr {
namespace {

constexpr uint16_t kWordPatternUnit = 0x1111;  // one in every nibble

inline uint16_t* RowBase(const CoverageTarget& t, int32_t row) {
    return t.words + static_cast<ptrdiff_t>(row >> kSubShift) * t.width + (row & kSubMask);
}

// Word operations (span_words.h). Constant k: whole words are stored
// without reading the map.
template <uint32_t K>
struct ConstantWords {
    static constexpr uint16_t kPattern = static_cast<uint16_t>(K * kWordPatternUnit);
    uint16_t Whole(uint16_t) const { return kPattern; }
    uint16_t Part(uint16_t old, uint16_t m) const {
        return static_cast<uint16_t>((old & ~m) | (kPattern & m));
    }
};

// The general map, both nibbles of a byte per lookup.
struct MappedWords {
    const ByteMapTable& table;
    uint16_t Whole(uint16_t v) const {
        constexpr int kByteBits = 8;
        constexpr uint16_t kByteMask = 0xFF;
        return static_cast<uint16_t>(table[v >> kByteBits] << kByteBits | table[v & kByteMask]);
    }
    uint16_t Part(uint16_t old, uint16_t m) const {
        return static_cast<uint16_t>((old & ~m) | (Whole(old) & m));
    }
};

template <uint32_t K>
inline void FillSpanConstantT(uint16_t* rowBase, int32_t x0, int32_t x1) {
    FillSpanWords(rowBase, x0, x1, ConstantWords<K>{});
}

// The definition, step by step: a whole word while more than four
// sub-samples remain at an aligned x, otherwise one nibble.
template <uint32_t K>
void FillSpanConstantPlainT(uint16_t* rowBase, int32_t x0, int32_t x1) {
    constexpr uint16_t pattern = static_cast<uint16_t>(K * kWordPatternUnit);
    for (int32_t x = x0; x < x1;) {
        uint16_t* w = WordOf(rowBase, x);
        if ((x & kSubMask) == 0 && x1 - x > kSubPerPx) {
            *w = pattern;
            x += kSubPerPx;
            continue;
        }
        const int shift = NibbleShift(x & kSubMask);
        const uint16_t clear = static_cast<uint16_t>(~(kNibbleMask << shift));
        *w = static_cast<uint16_t>((*w & clear) | (K << shift));
        ++x;
    }
}

template <class SpanOp>
void FillTriangle(const CoverageTarget& t, const ScreenTriangle& tri, SpanOp op) {
    const WalkWindow window{0, t.height, t.width};
    auto onSetup = [&](const TriangleSetup&, const ScreenTriangle&) {
        return [&](int32_t row, int32_t x0, int32_t x1) { op(RowBase(t, row), x0, x1); };
    };
    RasterizeTriangle(tri, window, onSetup);
}

template <uint32_t K>
void ConstantKernelT(const CoverageTarget& t, const ScreenTriangle& tri) {
    // A lambda (not the function pointer) lets the span writer inline into
    // the row loop.
    FillTriangle(t, tri, [](uint16_t* base, int32_t x0, int32_t x1) {
        FillSpanConstantT<K>(base, x0, x1);
    });
}

template <uint32_t K>
void ConstantKernelPlainT(const CoverageTarget& t, const ScreenTriangle& tri) {
    FillTriangle(t, tri, [](uint16_t* base, int32_t x0, int32_t x1) {
        FillSpanConstantPlainT<K>(base, x0, x1);
    });
}

void GeneralKernel(const CoverageTarget& t, const ScreenTriangle& tri) {
    assert(t.tables != nullptr && "the rasterizer always binds its nibble tables");
    const NibbleTables& tables = *t.tables;
    FillTriangle(t, tri, [&tables](uint16_t* base, int32_t x0, int32_t x1) {
        FillSpanGeneral(base, x0, x1, tables);
    });
}

template <uint32_t K>
void PreparedConstantKernelT(const CoverageTarget& t, const PreparedVertex& a,
                             const PreparedVertex& b, const PreparedVertex& c) {
    const WalkWindow window{0, t.height, t.width};
    RasterizePrepared(a, b, c, t.words, window, ConstantWords<K>{});
}

void PreparedGeneralKernelImpl(const CoverageTarget& t, const PreparedVertex& a,
                               const PreparedVertex& b, const PreparedVertex& c) {
    assert(t.byteMap != nullptr && "the rasterizer always binds its byte table");
    const WalkWindow window{0, t.height, t.width};
    RasterizePrepared(a, b, c, t.words, window, MappedWords{*t.byteMap});
}

template <uint32_t K>
void UnionConstantKernelT(const CoverageTarget& t, CUnionScan& chunk) {
    chunk.Scan(t.words, ConstantWords<K>{});
}

void UnionGeneralKernelImpl(const CoverageTarget& t, CUnionScan& chunk) {
    assert(t.byteMap != nullptr && "the rasterizer always binds its byte table");
    chunk.Scan(t.words, MappedWords{*t.byteMap});
}

template <uint32_t... K>
struct KernelTables {
    static constexpr UnionCoverageKernel kUnion[] = {UnionConstantKernelT<K>...};
    static constexpr CoverageKernel kFast[] = {ConstantKernelT<K>...};
    static constexpr PreparedCoverageKernel kPrepared[] = {PreparedConstantKernelT<K>...};
    static constexpr CoverageKernel kPlain[] = {ConstantKernelPlainT<K>...};
    static constexpr void (*kSpan[])(uint16_t*, int32_t, int32_t) = {FillSpanConstantT<K>...};
    static constexpr void (*kSpanPlain[])(uint16_t*, int32_t, int32_t) = {
        FillSpanConstantPlainT<K>...};
};
using AllKernels = KernelTables<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15>;

}  // namespace

void FillSpanGeneral(uint16_t* rowBase, int32_t x0, int32_t x1, const NibbleTables& tables) {
    for (int32_t x = x0; x < x1; ++x) {
        uint16_t* w = WordOf(rowBase, x);
        const int pos = x & kSubMask;
        const int shift = NibbleShift(pos);
        const uint16_t old = static_cast<uint16_t>((*w >> shift) & kNibbleMask);
        const uint16_t clear = static_cast<uint16_t>(~(kNibbleMask << shift));
        *w = static_cast<uint16_t>((*w & clear) | tables[pos][old]);
    }
}

void FillSpanGeneralWords(uint16_t* rowBase, int32_t x0, int32_t x1,
                          const ByteMapTable& table) {
    FillSpanWords(rowBase, x0, x1, MappedWords{table});
}

void FillSpanConstant(uint16_t* rowBase, int32_t x0, int32_t x1, uint32_t k) {
    assert(k <= kNibbleMask);
    AllKernels::kSpan[k](rowBase, x0, x1);
}

void FillSpanConstantPlain(uint16_t* rowBase, int32_t x0, int32_t x1, uint32_t k) {
    assert(k <= kNibbleMask);
    AllKernels::kSpanPlain[k](rowBase, x0, x1);
}

CoverageKernel ConstantCoverageKernel(uint32_t k) {
    assert(k <= kNibbleMask);
    return AllKernels::kFast[k & kNibbleMask];
}

CoverageKernel ConstantCoverageKernelPlain(uint32_t k) {
    assert(k <= kNibbleMask);
    return AllKernels::kPlain[k & kNibbleMask];
}

CoverageKernel GeneralCoverageKernel() { return GeneralKernel; }

PreparedCoverageKernel PreparedConstantKernel(uint32_t k) {
    assert(k <= kNibbleMask);
    return AllKernels::kPrepared[k & kNibbleMask];
}

PreparedCoverageKernel PreparedGeneralKernel() { return PreparedGeneralKernelImpl; }

UnionCoverageKernel UnionConstantKernel(uint32_t k) {
    assert(k <= kNibbleMask);
    return AllKernels::kUnion[k & kNibbleMask];
}

UnionCoverageKernel UnionGeneralKernel() { return UnionGeneralKernelImpl; }

void BuildNibbleTables(const uint8_t* map, NibbleTables& tables) {
    for (int pos = 0; pos < kSubPerPx; ++pos) {
        for (int v = 0; v < 16; ++v) {
            tables[pos][v] = static_cast<uint16_t>((map[v] & kNibbleMask) << NibbleShift(pos));
        }
    }
}

bool IsIdempotentMap(const uint8_t* map) {
    for (int v = 0; v < 16; ++v) {
        const uint8_t once = map[v] & kNibbleMask;
        if ((map[once] & kNibbleMask) != once) return false;
    }
    return true;
}

void BuildByteMapTable(const uint8_t* map, ByteMapTable& table) {
    for (int b = 0; b < 256; ++b) {
        table[b] = static_cast<uint8_t>((map[b >> kNibbleBits] & kNibbleMask) << kNibbleBits |
                                        (map[b & kNibbleMask] & kNibbleMask));
    }
}

}  // namespace tr
