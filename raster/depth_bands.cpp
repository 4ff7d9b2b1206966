// raster/depth_bands.cpp — band plan and resolve (see depth_bands.h).
#include "raster/depth_bands.h"

#include <cassert>
#include <cstddef>

#include "raster/band_kernels.h"
#include "raster/fixed_point.h"

namespace tr {
namespace {

// Budget divisor: 3 bytes per sub-sample against 20 MiB of band buffers.
constexpr int64_t kBandBudgetBytes = 20971520;
constexpr int64_t kBytesPerSubSample = 3;
// A band must hold at least three tile rows to resolve anything.
constexpr int32_t kMinBandRows = 3;

// One row segment of the footprint: columns [X + from, X + from + count).
struct FootprintRow {
    int32_t dy, from, count;
};
constexpr FootprintRow kFootprint[] = {
    {-2, -4, 4}, {-1, -4, 4}, {0, -2, 8}, {1, -4, 12},
    {2, -4, 12}, {3, -2, 8},  {4, 0, 4},  {5, 0, 4},
};
static_assert(4 + 4 + 8 + 12 + 12 + 8 + 4 + 4 == kResolveSamples,
              "the footprint is the 56-sample neighbourhood of a tile");

inline uint32_t CountedDepth(uint16_t v, bool substituteFull) {
    return substituteFull && v == kFullDepth ? kMarkDepth : v;
}

}  // namespace

BandPlan PlanBands(int32_t width, int32_t height) {
    BandPlan p;
    const int32_t tileRows = height / kSubPerPx;
    // 3 * W * H < 2^63 for any i32 sizes.
    const int64_t bands =
        kBytesPerSubSample * int64_t{width} * int64_t{height} / kBandBudgetBytes + 1;
    const int64_t rowsPerBand = (bands - 1 + tileRows) / bands;
    const int64_t firstEnd = tileRows - (bands - 1) * rowsPerBand + (bands - 1);
    if (rowsPerBand + 1 < kMinBandRows || firstEnd < kMinBandRows) {
        p.left = 1;
        p.end = tileRows;
        p.step = static_cast<int32_t>(rowsPerBand + 1);
        return p;
    }
    p.left = static_cast<int32_t>(bands);
    p.end = static_cast<int32_t>(firstEnd);
    p.step = static_cast<int32_t>(rowsPerBand + 1);
    return p;
}

uint32_t AdvanceBand(BandPlan& plan) {
    plan.first = plan.end - 2;
    plan.end = plan.end - 2 + plan.step;
    if (plan.left > 0) --plan.left;
    return static_cast<uint32_t>(plan.left);
}

void ResolveDepthBand(const uint16_t* depth, int32_t width, int32_t first, int32_t end,
                      bool substituteFull, uint8_t* output) {
    const int32_t tilesPerRow = width / kSubPerPx;
    for (int32_t ty = first + 1; ty <= end - 2; ++ty) {
        const int32_t y = (ty - first) * kSubPerPx;  // top sub-row within the band
        for (int32_t tx = 1; tx <= tilesPerRow - 2; ++tx) {
            const int32_t x = tx * kSubPerPx;
            uint32_t n = 0, sum = 0;  // sum <= 56 * 65535 < 2^22
            for (const FootprintRow& f : kFootprint) {
                const uint16_t* row = depth + static_cast<ptrdiff_t>(y + f.dy) * width + x + f.from;
                for (int32_t i = 0; i < f.count; ++i) {
                    n += row[i] != 0;
                    sum += CountedDepth(row[i], substituteFull);
                }
            }
            output[static_cast<ptrdiff_t>(ty) * tilesPerRow + tx] =
                n == 0 ? kEmptyDepthByte : static_cast<uint8_t>((sum / n) >> 8);
        }
    }
}

void ResolveShadedBand(const uint16_t* depth, const uint8_t* intensity, int32_t width,
                       int32_t first, int32_t end, uint8_t* output) {
    const int32_t tilesPerRow = width / kSubPerPx;
    for (int32_t ty = first + 1; ty <= end - 2; ++ty) {
        const int32_t y = (ty - first) * kSubPerPx;
        for (int32_t tx = 1; tx <= tilesPerRow - 2; ++tx) {
            const int32_t x = tx * kSubPerPx;
            uint32_t n = 0, light = 0, sum = 0;
            for (const FootprintRow& f : kFootprint) {
                const ptrdiff_t at = static_cast<ptrdiff_t>(y + f.dy) * width + x + f.from;
                for (int32_t i = 0; i < f.count; ++i) {
                    if (intensity[at + i] == 0) continue;
                    ++n;
                    light += intensity[at + i];
                    sum += CountedDepth(depth[at + i], true);
                }
            }
            uint8_t* out = output + 2 * (static_cast<ptrdiff_t>(ty) * tilesPerRow + tx);
            out[0] = n == 0 ? kEmptyIntensityByte : static_cast<uint8_t>(light / n);
            out[1] = n == 0 ? kEmptyDepthByte : static_cast<uint8_t>((sum / n) >> 8);
        }
    }
}

}  // namespace tr
