// raster/rasterizer_impl.h — private to raster/: `CRasterizer_`, the one
// implementation of `CRasterizer`.
//
// The object is split over four files by what the state serves:
// transform_stack.cpp (matrices, viewport, vertex transform, taper,
// Project), rasterizer.cpp (life cycle, vertex arrays, coverage drawing and
// the immediate-mode quad strip), bevel_strips.cpp (strip vertices of the
// band kernels) and band_passes.cpp (set-up and resolve of the passes).
// The coverage kernels, the prepared walk and the union scan live in
// coverage_kernels.cpp, prepared_triangle.h and union_scan.cpp.
#pragma once

#include <cstdint>
#include <memory>

#include "raster/band_kernels.h"
#include "raster/coverage_kernels.h"
#include "raster/depth_bands.h"
#include "raster/rasterizer.h"

namespace tr {
// Brings a light angle in degrees into [0, 360] and converts it to radians
// with the strips' turn constant 6.2831852.
double LightAngleFromDegrees(double degrees);
}  // namespace tr

class CRasterizer_ final : public CRasterizer {
public:
    CRasterizer_();
    ~CRasterizer_() override;

    double* Init(uint16_t* coverage, uint32_t reserved0, int32_t width, int32_t height,
                 uint32_t reserved1) override;
    uint32_t ShadedBandPass(uint8_t* output, double bevelDepth, double lightAngleDeg,
                            uint32_t keepBands) override;
    uint32_t DepthBandPass(uint8_t* output, double bevelDepth, uint32_t keepBands) override;
    uint32_t ShadedBandPass2(uint8_t* output, double bevelDepth, double lightAngleDeg,
                             uint32_t keepBands) override;
    uint32_t DepthBandPass2(uint8_t* output, double bevelDepth, uint32_t keepBands) override;
    void SweepPass(uint8_t* output, double sweepDx, double sweepDy) override;
    void MultMatrix(const double* m) override;
    void Viewport(float x, float y, float w, float h) override;
    void MatrixMode(uint32_t mode) override;
    void LoadIdentity() override;
    void Translate(double x, double y, double z) override;
    void Scale(double x, double y, double z) override;
    void Finish() override;
    void VertexPointer(uint32_t size, uint32_t type, uint32_t stride, const void* pointer) override;
    void DrawIndexed(uint32_t mode, uint32_t count, uint32_t type,
                     const uint32_t* indices) override;
    void DrawIndexedToBand(uint32_t count, const uint32_t* indices) override;
    void Vertex2dv(const double* xy) override;
    void Vertex2d(double x, double y) override;
    void End() override;
    void Begin() override;
    void SetNibbleMap(const uint8_t* map) override;
    void SetTaper(float horizontal, float vertical) override;
    int Project(double x, double y, double z, const double* modelView, const double* projection,
                const float* viewport, double* winX, double* winY, double* winZ) override;
    void BevelVertex(double x, double y, double direction) override;
    void BevelVertexAt(double x, double y, double direction, double depth) override;
    void BevelStart(double x, double y, double direction) override;
    void DepthVertex(double x, double y, double direction) override;
    void DepthVertexAt(double x, double y, double direction, double depth) override;
    void BevelVertexFar(double x, double y, double direction) override;
    void BevelStartFar(double x, double y, double direction) override;
    void DepthVertexFar(double x, double y, double direction) override;
    void BevelVertexAtFar(double x, double y, double direction, double depth) override;
    void DepthVertexAtFar(double x, double y, double direction, double depth) override;
    void SweepVertex(double x, double y) override;
    void BandVertex(double x, double y) override;
    void DrawIndexedOffset(uint32_t mode, uint32_t count, uint32_t type, const uint32_t* indices,
                           double dx, double dy) override;

    // Switches coverage drawing to its plain twin (identical output; for
    // differential tests and benchmarks): every triangle transformed,
    // tapered and set up from scratch through the reference walk, spans
    // written one nibble at a time. The default path prepares each vertex
    // once per DrawIndexed call or strip slot, writes whole tile words, and
    // scans indexed draws as one region when the map is idempotent.
    void UsePlainKernels(bool plain);
    // The light intensity 1..251 of a strip leaving its contour at
    // `direction` (radians) under the current light angle.
    uint8_t StripIntensity(double direction) const;

private:
    // Which depth table a strip quad uses.
    enum class DepthTable { kNear, kFar };
    // How a strip quad is shaded: both pairs from the two intensities, or
    // flat with one.
    struct QuadShade {
        uint8_t ab;
        uint8_t cd;
    };

    // transform_stack.cpp (TransformVertex below: every vertex passes it)
    void TransformVertex(double x, double y, float& wx, float& wy) const;
    void ApplyTaper(tr::ScreenTriangle& t) const;
    void TaperVertex(float& x, float& y) const;

    // rasterizer.cpp
    void FillCoverage(tr::ScreenTriangle t) const;
    void DrawIndexedCoverage(uint32_t count, const uint32_t* indices, double dx, double dy);
    void DrawIndexedPrepared(uint32_t count, const uint32_t* indices, double dx, double dy);
    void FlushUnion(const tr::CoverageTarget& target);
    // A screen vertex (transformed, tapered) ready for the prepared kernels.
    void PrepareScreenVertexInto(float x, float y, tr::PreparedVertex& out) const;
    tr::CoverageTarget CoverageTargetOf() const;
    void FillPreparedQuad();
    uint32_t NextVertexGeneration();
    const double* VertexAt(uint32_t index) const;
    bool AppendStripVertex(double x, double y);
    // Triangle 0 (a, b, c) or 1 (d, b, c) of the completed quad; the first
    // is skipped when a and b coincide.
    tr::ScreenTriangle QuadTriangle(int tri) const;
    int FirstQuadTriangle() const;
    void KeepLastPair();

    // bevel_strips.cpp
    void FillBand(tr::BandKernel kernel, tr::ScreenTriangle t) const;
    void StripPair(double x, double y, double x2, double y2, tr::BandKernel kernel,
                   DepthTable table, QuadShade shade);
    void BevelPair(double x, double y, double direction, double depth, tr::BandKernel kernel,
                   DepthTable table);
    void BevelPairAt(double x, double y, double direction, double depth, tr::BandKernel kernel,
                     DepthTable table);
    void BevelPairStart(double x, double y, double direction, tr::BandKernel kernel,
                        DepthTable table);
    void DepthPair(double x, double y, double direction, double depth, tr::BandKernel kernel,
                   DepthTable table);

    // band_passes.cpp
    uint32_t BandPass(uint8_t* output, double bevelDepth, uint32_t keepBands, bool shaded);
    bool AllocateBandBuffers(int32_t rowTop, int32_t rowBottom, bool shaded);
    void FreeBandBuffers();
    tr::BandTarget BandTargetOf() const;

    double modelView_[16];
    double projection_[16];
    float viewport_[4];
    float scaleX_, offsetX_, scaleY_, offsetY_;
    float stripX_[4], stripY_[4];
    float taperX_, taperY_;
    double taperDistX_, taperDistY_;  // Dh = H*100/|h|, Dv = W*100/|v|
    uint32_t vertexSize_, vertexStride_;
    const unsigned char* vertexPointer_;
    uint16_t* coverage_;
    int32_t width_, height_, tilesPerRow_;
    tr::NibbleTables nibbleTables_;
    double* currentMatrix_;
    uint32_t vertexCount_;
    tr::CoverageKernel spanKernel_;
    uint8_t constantValue_;  // valid when the map is constant
    bool mapIsConstant_;
    bool plainKernels_;

    // Prepared path: kernel, byte table of the general map, the strip's
    // prepared vertices (bit i set when slot i is prepared for the current
    // vertex; band strips append without preparing) and the per-call cache
    // of indexed vertices (entry i valid when its stamp equals the call's
    // generation; indices beyond the cache are prepared per use).
    static constexpr uint32_t kVertexCacheSize = 1024;
    tr::PreparedCoverageKernel preparedKernel_;
    tr::UnionCoverageKernel unionKernel_;  // null unless the map is idempotent
    tr::ByteMapTable byteMap_;
    bool byteMapStale_;  // byteMap_ lags the tables (the map is constant)
    tr::PreparedVertex stripPrepared_[4];
    uint32_t stripPreparedMask_;
    uint32_t vertexGeneration_;
    uint32_t vertexStamps_[kVertexCacheSize];
    tr::PreparedVertex vertexCache_[kVertexCacheSize];
    tr::CUnionScan unionScan_;

    // Depth-band state.
    tr::BandPlan bands_;
    int32_t bandTop_, bandBottom_;  // sub-sample rows held by the buffers
    std::unique_ptr<uint16_t[]> depthBuffer_;
    std::unique_ptr<uint8_t[]> intensityBuffer_;
    uint8_t* output_;
    bool shadedPass_, sweepPass_;
    double bevelDepth_;
    double lightAngle_;  // radians
    double sweepX_, sweepY_;
    uint8_t previousIntensity_, currentIntensity_;
};

// Object (x, y) to screen: model-view and the affine part of the
// projection in doubles, then the viewport, stored as floats.
inline void CRasterizer_::TransformVertex(double x, double y, float& wx, float& wy) const {
    const double* mv = modelView_;
    const double ex = mv[0] * x + mv[4] * y + mv[12];
    const double ey = mv[1] * x + mv[5] * y + mv[13];
    const double cx = ex * projection_[0] + projection_[12];
    const double cy = ey * projection_[5] + projection_[13];
    wx = static_cast<float>(cx * scaleX_ + offsetX_);
    wy = static_cast<float>(cy * scaleY_ + offsetY_);
}

// Stored field by field: a returned PreparedVertex copied as a whole is
// assembled on the stack with narrow stores and read back with wide loads,
// which stalls store forwarding on every vertex.
inline void CRasterizer_::PrepareScreenVertexInto(float x, float y,
                                                  tr::PreparedVertex& out) const {
    if (taperX_ != 0.0f || taperY_ != 0.0f) TaperVertex(x, y);
    const tr::PreparedVertex v = tr::PrepareVertex(x, y);
    out.x = v.x;
    out.y = v.y;
    out.xFx = v.xFx;
    out.yFx = v.yFx;
    out.walkable = v.walkable;
}
