// raster/band_kernels.cpp — per-sub-sample depth tests of the band kernels
// and the fixed-point plane interpolation that feeds them.
#include "raster/band_kernels.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

#include "raster/triangle_clip.h"

namespace tr {
namespace {

// Bounds that keep S + k * G inside 64 bits for k < 2^22 columns: a step
// beyond 2^40 (2^29 units per sub-sample) saturates the stored value after
// one sample anyway.
constexpr int64_t kMaxStartFx = int64_t{1} << 52;
constexpr int64_t kMaxStepFx = int64_t{1} << 40;

// A linear function of screen position through three vertex values.
struct Plane {
    double x0, y0, v0, gx, gy;

    Plane(const TriangleSetup& s, const ScreenTriangle& t, int attr) {
        const int i0 = s.order[0], i1 = s.order[1], i2 = s.order[2];
        x0 = t.x[i0];
        y0 = t.y[i0];
        v0 = t.attr[attr][i0];
        const double dx1 = t.x[i1] - x0, dy1 = t.y[i1] - y0;
        const double dx2 = t.x[i2] - x0, dy2 = t.y[i2] - y0;
        const double dv1 = t.attr[attr][i1] - v0, dv2 = t.attr[attr][i2] - v0;
        // Cramer's rule on v - v0 = gx (x - x0) + gy (y - y0); the set-up
        // guarantees |area2| >= 0.05.
        gx = (dv1 * dy2 - dv2 * dy1) / s.area2;
        gy = (dx1 * dv2 - dx2 * dv1) / s.area2;
    }
    int64_t StartFx(int32_t p, int32_t r) const {
        const double v = v0 + gx * (p + 0.5 - x0) + gy * (r + 0.5 - y0);
        return SaturatingTrunc<int64_t>(v * kFxScale, -kMaxStartFx, kMaxStartFx);
    }
    int64_t StepFx() const {
        return SaturatingTrunc<int64_t>(gx * kFxScale, -kMaxStepFx, kMaxStepFx);
    }
};

inline uint16_t DepthAt(int64_t vFx) {
    return static_cast<uint16_t>(std::clamp<int64_t>(vFx >> kFxShift, 0, 0xFFFF));
}
inline uint8_t IntensityAt(int64_t vFx) {
    return static_cast<uint8_t>(std::clamp<int64_t>(vFx >> kFxShift, 0, 0xFF));
}

// Per-sub-sample test and store of each kernel.
template <BandKernel K>
inline void Store(uint16_t& depth, uint8_t* intensity, uint16_t newDepth, uint8_t newIntensity) {
    if constexpr (K == BandKernel::kMark) {
        depth = kMarkDepth;
    } else {
        constexpr bool near = K == BandKernel::kShadedNear || K == BandKernel::kDepthNear;
        constexpr bool shaded = K == BandKernel::kShadedNear || K == BandKernel::kShadedFar;
        // The sweep's clamp at 0 is DepthAt's lower bound.
        if (near ? depth > newDepth : depth < newDepth) {
            depth = newDepth;
            if (shaded && intensity != nullptr) *intensity = newIntensity;
        }
    }
}

template <BandKernel K>
void FillBand(const BandTarget& b, const ScreenTriangle& tri) {
    const WalkWindow window{b.rowTop, b.rowBottom, b.width};
    auto onSetup = [&b](const TriangleSetup& s, const ScreenTriangle& t) {
        const Plane depth(s, t, 0), light(s, t, 1);
        return [&b, depth, light](int32_t row, int32_t x0, int32_t x1) {
            assert(row >= b.rowTop && row < b.rowBottom && "the walk window is the band");
            const ptrdiff_t at = static_cast<ptrdiff_t>(row - b.rowTop) * b.width;
            uint16_t* d = b.depth + at;
            uint8_t* in = b.intensity != nullptr ? b.intensity + at : nullptr;
            int64_t dFx = depth.StartFx(x0, row), iFx = light.StartFx(x0, row);
            const int64_t dStep = depth.StepFx(), iStep = light.StepFx();
            for (int32_t x = x0; x < x1; ++x, dFx += dStep, iFx += iStep) {
                Store<K>(d[x], in != nullptr ? in + x : nullptr, DepthAt(dFx), IntensityAt(iFx));
            }
        };
    };
    RasterizeTriangle(tri, window, onSetup);
}

}  // namespace

void FillBandTriangle(const BandTarget& target, BandKernel kernel, const ScreenTriangle& tri) {
    if (target.depth == nullptr || target.rowTop >= target.rowBottom) return;
    switch (kernel) {
    case BandKernel::kMark: return FillBand<BandKernel::kMark>(target, tri);
    case BandKernel::kShadedNear: return FillBand<BandKernel::kShadedNear>(target, tri);
    case BandKernel::kDepthNear: return FillBand<BandKernel::kDepthNear>(target, tri);
    case BandKernel::kShadedFar: return FillBand<BandKernel::kShadedFar>(target, tri);
    case BandKernel::kDepthFar: return FillBand<BandKernel::kDepthFar>(target, tri);
    case BandKernel::kSweep: return FillBand<BandKernel::kSweep>(target, tri);
    }
}

}  // namespace tr
