// raster/coverage_kernels.h — private to raster/: the seventeen coverage
// kernels (one per constant value k = 0..15, one general) and their spans.
//
// A kernel fills one screen-space triangle into the coverage map through the
// shared set-up and edge walk (triangle_walk.h); kernels differ only in how
// a row span [x0, x1) is written. Within a row, the four sub-samples of one
// tile share a 16-bit word and consecutive tiles are four words apart:
//
//     row r base = (r / 4) * W + r % 4       (in words)
//     column x   = base + 4 * (x / 4), nibble x % 4 (0 = bits 12-15)
//
// Constant kernels never read the map for whole words: the value k goes into
// all four nibbles at once (pattern k * 0x1111). The general kernel reads
// each nibble v and writes table[x % 4][v], the nibble map pre-shifted.
// Every constant kernel has a plain twin that follows the one-sub-sample-at-
// a-time definition; both give identical maps.
#pragma once

#include <array>
#include <cstdint>

#include "raster/triangle_walk.h"

namespace tr {

// Nibble map pre-shifted into each of the four nibble positions.
using NibbleTables = std::array<std::array<uint16_t, 16>, 4>;

struct CoverageTarget {
    uint16_t* words;
    int32_t width;   // sub-samples, multiple of 4
    int32_t height;  // sub-samples, multiple of 4
    const NibbleTables* tables;  // general kernel only
};

using CoverageKernel = void (*)(const CoverageTarget& target, const ScreenTriangle& tri);

// Word-store kernels (the ones the rasterizer uses).
CoverageKernel ConstantCoverageKernel(uint32_t k);
// One-nibble-at-a-time twins, for differential tests and benchmarks.
CoverageKernel ConstantCoverageKernelPlain(uint32_t k);
CoverageKernel GeneralCoverageKernel();

// Span writers, exposed for tests; rowBase points at the row's first word.
void FillSpanConstant(uint16_t* rowBase, int32_t x0, int32_t x1, uint32_t k);
void FillSpanConstantPlain(uint16_t* rowBase, int32_t x0, int32_t x1, uint32_t k);
void FillSpanGeneral(uint16_t* rowBase, int32_t x0, int32_t x1, const NibbleTables& tables);

// Builds the four pre-shifted tables from a 16-entry map (entries 0-15).
void BuildNibbleTables(const uint8_t* map, NibbleTables& tables);

}  // namespace tr
