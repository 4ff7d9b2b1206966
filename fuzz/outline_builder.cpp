// fuzz/outline_builder.cpp — the glyph outline builder on untrusted glyph
// data, all four formats.
//
// Input: byte 0 selects the format (bits 0-1: curve records / grouped
// floats, polygons of doubles, single path non-zero, single path odd), bit
// 2 sets option bit 0 (slivers), bits 3-4 how the callback lies about the
// data length (honest, larger than the buffer, shorter); byte 1 is the
// outline size; the rest is what the glyph callback hands back. Grouped
// floats get their FF FF FF FF marker from the data itself.
//
// Invariants checked on every block: the header's size and group count fit
// the block, every record and section lies inside it, and every triangle
// index addresses a point inside the group's point run.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "outline/outline2.h"
#include "outline/outline_request.h"

namespace {

constexpr std::size_t kMaxInput = 4096;  // nesting is quadratic in the points

struct FuzzHost {
    const std::uint8_t* data;
    std::uint32_t size;
    int lie;
};

std::int32_t Callback(uintptr_t context, std::uint32_t, void* metrics, std::uint32_t bufferSize, void* buffer,
                      const std::int32_t*) {
    const auto* host = reinterpret_cast<const FuzzHost*>(context);
    std::memset(metrics, 0xA5, 20);
    if (buffer == nullptr) return static_cast<std::int32_t>(host->size);
    std::memcpy(buffer, host->data, host->size < bufferSize ? host->size : bufferSize);
    switch (host->lie) {
        case 1: return static_cast<std::int32_t>(host->size) * 4 + 100;
        case 2: return static_cast<std::int32_t>(host->size / 2);
        default: return static_cast<std::int32_t>(host->size);
    }
}

std::uint32_t U32(const std::uint8_t* p, std::uint64_t offset) {
    std::uint32_t v;
    std::memcpy(&v, p + offset, 4);
    return v;
}

void Check(bool condition) {
    if (!condition) std::abort();
}

void CheckBlock(const std::uint8_t* block, std::uint32_t size) {
    Check(size > 64 && size % 8 == 0 && U32(block, 32) == size);
    const std::uint32_t groups = U32(block, 40);
    Check(groups >= 1 && 64 + 4ull * groups <= size);
    for (std::uint32_t g = 0; g < groups; ++g) {
        const std::uint64_t rec = U32(block, 64 + 4ull * g);
        Check(rec + 32 <= size);
        const std::uint64_t holes = U32(block, rec + 16);
        Check(rec + 32 + 8 * holes <= size);
        const std::uint64_t outer = U32(block, rec + 12);
        const std::uint64_t indices = U32(block, rec + 4);
        const std::uint64_t k = U32(block, rec);
        Check(outer <= indices && indices + 4 * k <= size && (indices - outer) % 24 == 0);
        Check(k % 3 == 0);
        const std::uint64_t vertices = (indices - outer) / 24;
        for (std::uint64_t i = 0; i < k; ++i) Check(U32(block, indices + 4 * i) < vertices);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > kMaxInput) return 0;
    static const std::uint32_t kFormatFlags[4] = {0, OUTLINE_POLYGON_INPUT, OUTLINE_SINGLE_PATH_NONZERO,
                                                  OUTLINE_SINGLE_PATH_ODD};
    const std::uint8_t mode = data[0];
    FuzzHost host{data + 2, static_cast<std::uint32_t>(size - 2), (mode >> 3) & 3};
    COutline2 outline;
    if ((mode & 4) != 0) outline.AddOptions(1);
    const std::int32_t outlineSize = data[1] * 16;
    if (outline.Load(reinterpret_cast<uintptr_t>(&host), kFormatFlags[mode & 3] | OUTLINE_NO_CACHE, outlineSize,
                     &Callback, 'x', 0) != nullptr) {
        CheckBlock(outline.GetBlock(), outline.holder.blockSize);
    }
    return 0;
}
