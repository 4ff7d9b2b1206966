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
//
// Three families share the span writers. The reference kernels take a
// ScreenTriangle through the reference set-up and walk (triangle_walk.h).
// The prepared kernels take vertices prepared once (prepared_triangle.h)
// and write whole tile words where they can: constant k as the pattern
// k * 0x1111, the general map through a byte table that maps both nibbles
// of a byte at once (two lookups per word instead of four read-modify-
// writes). Masking a mapped word to the covered nibbles is the same as
// mapping those nibbles one at a time, so both families give identical
// maps. The union kernels write what a chunk of triangles covers
// (union_scan.h) with the same word operations, for idempotent maps.
#pragma once

#include <array>
#include <cstdint>

#include "raster/prepared_triangle.h"
#include "raster/triangle_walk.h"
#include "raster/union_scan.h"

namespace tr {

// Nibble map pre-shifted into each of the four nibble positions.
using NibbleTables = std::array<std::array<uint16_t, 16>, 4>;
// Nibble map applied to both nibbles of a byte: entry b is
// map[b >> 4] << 4 | map[b & 15].
using ByteMapTable = std::array<uint8_t, 256>;

struct CoverageTarget {
    uint16_t* words;
    int32_t width;   // sub-samples, multiple of 4
    int32_t height;  // sub-samples, multiple of 4
    const NibbleTables* tables;    // reference general kernel only
    const ByteMapTable* byteMap;   // prepared general kernel only
};

using CoverageKernel = void (*)(const CoverageTarget& target, const ScreenTriangle& tri);
using PreparedCoverageKernel = void (*)(const CoverageTarget& target, const PreparedVertex& a,
                                        const PreparedVertex& b, const PreparedVertex& c);
// Writes the union of a chunk of triangles (union_scan.h); only for
// idempotent maps.
using UnionCoverageKernel = void (*)(const CoverageTarget& target, CUnionScan& chunk);

// Word-store kernels (the ones the rasterizer uses).
CoverageKernel ConstantCoverageKernel(uint32_t k);
// One-nibble-at-a-time twins, for differential tests and benchmarks.
CoverageKernel ConstantCoverageKernelPlain(uint32_t k);
CoverageKernel GeneralCoverageKernel();
// Prepared-vertex kernels: word stores for constant k, byte-table words for
// the general map.
PreparedCoverageKernel PreparedConstantKernel(uint32_t k);
PreparedCoverageKernel PreparedGeneralKernel();
UnionCoverageKernel UnionConstantKernel(uint32_t k);
UnionCoverageKernel UnionGeneralKernel();

// Span writers, exposed for tests; rowBase points at the row's first word.
void FillSpanConstant(uint16_t* rowBase, int32_t x0, int32_t x1, uint32_t k);
void FillSpanConstantPlain(uint16_t* rowBase, int32_t x0, int32_t x1, uint32_t k);
void FillSpanGeneral(uint16_t* rowBase, int32_t x0, int32_t x1, const NibbleTables& tables);
void FillSpanGeneralWords(uint16_t* rowBase, int32_t x0, int32_t x1, const ByteMapTable& table);

// Builds the four pre-shifted tables from a 16-entry map (entries 0-15).
void BuildNibbleTables(const uint8_t* map, NibbleTables& tables);
void BuildByteMapTable(const uint8_t* map, ByteMapTable& table);
// Whether map[map[v]] = map[v] for every v: drawing twice is drawing once.
bool IsIdempotentMap(const uint8_t* map);

}  // namespace tr
