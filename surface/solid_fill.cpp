// Solid fill, row by row. A plain element loop is left scalar by the
// compiler at -O2 and runs at a quarter of memset's speed, so rows are
// written with 16-byte SSE2 stores: scalar pixels up to a 16-byte boundary
// (pixel addresses are always 4-byte aligned), four aligned vector stores
// per step, then the scalar tail.
#include "surface/solid_fill.h"

#include <algorithm>
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tr {
namespace {

void FillRow(uint32_t* row, int32_t width, uint32_t colour) {
#if defined(__SSE2__)
    constexpr uintptr_t kVectorBytes = sizeof(__m128i);
    constexpr int32_t kPixelsPerVector = kVectorBytes / sizeof(uint32_t);
    constexpr int32_t kPixelsPerStep = 4 * kPixelsPerVector;
    int32_t x = 0;
    while (x < width && reinterpret_cast<uintptr_t>(row + x) % kVectorBytes != 0) {
        row[x++] = colour;
    }
    const __m128i v = _mm_set1_epi32(static_cast<int>(colour));
    for (; x + kPixelsPerStep <= width; x += kPixelsPerStep) {
        auto* p = reinterpret_cast<__m128i*>(row + x);
        _mm_store_si128(p, v);
        _mm_store_si128(p + 1, v);
        _mm_store_si128(p + 2, v);
        _mm_store_si128(p + 3, v);
    }
    for (; x + kPixelsPerVector <= width; x += kPixelsPerVector) {
        _mm_store_si128(reinterpret_cast<__m128i*>(row + x), v);
    }
    for (; x < width; ++x) {
        row[x] = colour;
    }
#else
    std::fill_n(row, width, colour);
#endif
}

} // namespace

void FillSolidImage(const ImageView& image, uint32_t colour) {
    for (int32_t y = 0; y < image.height; ++y) {
        FillRow(image.Row(y), image.width, colour);
    }
}

} // namespace tr
