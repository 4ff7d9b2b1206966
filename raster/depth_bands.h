// raster/depth_bands.h — private to raster/: band planning and the 56-sample
// resolve of the depth, shaded and sweep passes.
//
// Large maps are processed in horizontal bands of tile rows so that the
// band buffers (2 bytes of depth and 1 of intensity per sub-sample) stay
// near 20 MiB. Consecutive bands overlap by two tile rows: the resolve of a
// tile reads two sub-sample rows above and two below it, and skips the first
// and last tile row of its band, so every interior tile row is resolved by
// exactly one band.
//
// Resolve footprint of the tile whose top-left sub-sample is (X, Y), one
// character per sub-sample starting at column X-4:
//
//            X-4 X   X+4 X+7
//   Y-2      ####
//   Y-1      ####
//   Y          ########          X-2 .. X+5
//   Y+1      ############        X-4 .. X+7
//   Y+2      ############
//   Y+3        ########          X-2 .. X+5
//   Y+4          ####            X   .. X+3
//   Y+5          ####
//
// 4 + 4 + 8 + 12 + 12 + 8 + 4 + 4 = 56 samples.
#pragma once

#include <cstdint>

namespace tr {

inline constexpr uint8_t kEmptyDepthByte = 10;      // a pixel with no sample
inline constexpr uint8_t kEmptyIntensityByte = 128;
inline constexpr uint16_t kFullDepth = 0xFFFF;      // read back as kMarkDepth
inline constexpr int kResolveSamples = 56;

// The current band in tile rows and the plan for the following ones.
struct BandPlan {
    int32_t first = 0;  // first tile row of the band
    int32_t end = 0;    // one past its last tile row
    int32_t left = 0;   // bands still to resolve
    int32_t step = 0;   // tile rows added to `end` when advancing
};

// Plans the bands of a map of width x height sub-samples.
BandPlan PlanBands(int32_t width, int32_t height);
// Moves to the next band (overlapping the last by two tile rows); returns
// the number of bands still to resolve, never below 0.
uint32_t AdvanceBand(BandPlan& plan);

// Resolves tile rows first+1 .. end-2 of a band whose buffers start at tile
// row `first` (row stride `width` sub-samples). Output pixel (tx, ty) is at
// ty * width/4 + tx (depth) or twice that (shaded: intensity, depth).
// substituteFull: count a stored 0xFFFF as kMarkDepth (not in the sweep).
void ResolveDepthBand(const uint16_t* depth, int32_t width, int32_t first, int32_t end,
                      bool substituteFull, uint8_t* output);
void ResolveShadedBand(const uint16_t* depth, const uint8_t* intensity, int32_t width,
                       int32_t first, int32_t end, uint8_t* output);

}  // namespace tr
