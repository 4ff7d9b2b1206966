// outline/outline_builder.h — the glyph outline builder (used here and by
// the disk cache, which builds blocks on a miss).
//
// A build asks the host's glyph callback for one character's outline
// (first its size, then the data, always with the identity matrix), reads
// the data in the format the request flags select, flattens curves, cleans
// and orients the contours, nests and triangulates them and stores in every
// point the direction of its arriving edge. The direct build packs the
// result into a character outline block. A build keeps no state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <vector>

#include "outline/block_source.h"
#include "outline/contour_group.h"
#include "outline/outline_request.h"

namespace tr {

constexpr std::size_t kMetricsSize = 20;

// Glyph data larger than this are refused (no outline): real glyphs need a
// few kilobytes, and the size comes from host code.
constexpr std::int32_t kMaxGlyphBytes = 16 << 20;

struct OutlineBuild {
    std::list<CContourGroup> groups;
    std::uint8_t metrics[kMetricsSize] = {};
};

// Eight-byte units reserved for the host's glyph data before a build: room
// for the outlines of ordinary glyphs, so that they need no further growth.
constexpr std::size_t kGlyphScratchUnits = 32768;

// The whole build; no groups when the callback fails. The host's glyph data
// go into `scratch`, whose contents are replaced and whose capacity is kept,
// so a caller that builds often can keep one scratch for all its builds (one
// build at a time). Without it, a fresh scratch reserved at
// kGlyphScratchUnits is used.
OutlineBuild BuildOutline(const OutlineRequest& request, std::vector<std::uint64_t>& scratch);
OutlineBuild BuildOutline(const OutlineRequest& request);

// Routes glyph data to the builder of its format: flags & 0x3000 single
// path, else flags & 0x200 polygons, else curve records or grouped floats.
void Dispatch(std::list<CContourGroup>& groups, std::int32_t outlineSize, const std::uint8_t* data,
              std::size_t length, std::uint32_t flags, std::uint32_t options);

// Single-path nudge: pushes near-vertical edges (|dx| <= 0.01) apart,
// then the closing pair, so the boundary pass sees no vertical edges.
void NudgeNearVertical(Coutline& path);

// BuildOutline packed into a block: (block, size) with ownership passed to
// the caller (free with delete[]), or (null, 0) when nothing came out.
OMData BuildOutlineBlock(const OutlineRequest& request, std::vector<std::uint64_t>& scratch);
OMData BuildOutlineBlock(const OutlineRequest& request);

}  // namespace tr
