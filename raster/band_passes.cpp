// raster/band_passes.cpp — set-up and resolve of the shaded, depth and sweep
// passes of CRasterizer_.
//
// A pass call with an output sets up: it records the output and the strip
// parameters, plans the bands when keepBands is 0, and allocates zeroed
// buffers for the current band. The same call with a null output resolves
// the band into the output, frees the buffers and moves on, returning the
// number of bands still to draw. A buffer that cannot be allocated leaves
// the band's drawing and resolve as no-ops (its output pixels unwritten).
#include <algorithm>
#include <new>

#include "raster/rasterizer_impl.h"

tr::BandTarget CRasterizer_::BandTargetOf() const {
    return {depthBuffer_.get(), shadedPass_ ? intensityBuffer_.get() : nullptr, width_, bandTop_,
            bandBottom_};
}

void CRasterizer_::FreeBandBuffers() {
    depthBuffer_.reset();
    intensityBuffer_.reset();
}

bool CRasterizer_::AllocateBandBuffers(int32_t rowTop, int32_t rowBottom, bool shaded) {
    FreeBandBuffers();
    bandTop_ = std::clamp(rowTop, 0, height_);
    bandBottom_ = std::clamp(rowBottom, bandTop_, height_);
    const size_t samples = static_cast<size_t>(width_) * static_cast<size_t>(bandBottom_ - bandTop_);
    if (samples == 0) return false;
    depthBuffer_.reset(new (std::nothrow) uint16_t[samples]());
    if (shaded) intensityBuffer_.reset(new (std::nothrow) uint8_t[samples]());
    if (depthBuffer_ == nullptr || (shaded && intensityBuffer_ == nullptr)) {
        FreeBandBuffers();
        return false;
    }
    return true;
}

uint32_t CRasterizer_::BandPass(uint8_t* output, double bevelDepth, uint32_t keepBands,
                                bool shaded) {
    if (output != nullptr) {
        bevelDepth_ = bevelDepth;
        output_ = output;
        shadedPass_ = shaded;
        sweepPass_ = false;
        if (keepBands == 0) bands_ = tr::PlanBands(width_, height_);
        (void)AllocateBandBuffers(bands_.first * tr::kSubPerPx, bands_.end * tr::kSubPerPx, shaded);
        return 0;
    }
    if (depthBuffer_ != nullptr && output_ != nullptr && !sweepPass_) {
        // The buffers hold tile rows [first, end) unless the map is shorter.
        const int32_t end = bandBottom_ / tr::kSubPerPx;
        if (shadedPass_) {
            tr::ResolveShadedBand(depthBuffer_.get(), intensityBuffer_.get(), width_, bands_.first,
                                  end, output_);
        } else {
            tr::ResolveDepthBand(depthBuffer_.get(), width_, bands_.first, end, true, output_);
        }
    }
    FreeBandBuffers();
    return tr::AdvanceBand(bands_);
}

uint32_t CRasterizer_::ShadedBandPass(uint8_t* output, double bevelDepth, double lightAngleDeg,
                                      uint32_t keepBands) {
    if (output != nullptr) lightAngle_ = tr::LightAngleFromDegrees(lightAngleDeg);
    return BandPass(output, bevelDepth, keepBands, true);
}

uint32_t CRasterizer_::DepthBandPass(uint8_t* output, double bevelDepth, uint32_t keepBands) {
    return BandPass(output, bevelDepth, keepBands, false);
}

uint32_t CRasterizer_::ShadedBandPass2(uint8_t* output, double bevelDepth, double lightAngleDeg,
                                       uint32_t keepBands) {
    return ShadedBandPass(output, bevelDepth, lightAngleDeg, keepBands);
}

uint32_t CRasterizer_::DepthBandPass2(uint8_t* output, double bevelDepth, uint32_t keepBands) {
    return DepthBandPass(output, bevelDepth, keepBands);
}

void CRasterizer_::SweepPass(uint8_t* output, double sweepDx, double sweepDy) {
    if (output != nullptr) {
        sweepX_ = sweepDx;
        sweepY_ = sweepDy;
        bevelDepth_ = 0.0;
        output_ = output;
        shadedPass_ = false;
        sweepPass_ = true;
        bands_ = tr::BandPlan{0, height_ / tr::kSubPerPx, 1, 0};
        (void)AllocateBandBuffers(0, height_, false);
        return;
    }
    if (depthBuffer_ != nullptr && output_ != nullptr && sweepPass_) {
        tr::ResolveDepthBand(depthBuffer_.get(), width_, 0, height_ / tr::kSubPerPx, false, output_);
    }
    FreeBandBuffers();
    bands_.left = 0;
}
