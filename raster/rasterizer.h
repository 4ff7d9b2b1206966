// raster/rasterizer.h — the coverage rasterizer interface used by fragment
// drawing and the relief layer generators.
//
// `CRasterizer` is a small software rasterizer shaped like fixed-function
// OpenGL (model-view and projection matrices, viewport, vertex arrays with
// indexed triangles, an immediate-mode quad strip). Its target is a coverage
// map of 4-bit applicator numbers, 4 x 4 sub-samples per output pixel; every
// triangle rewrites the sub-samples it covers through a 16-entry nibble map.
// The same object runs the banded depth passes that turn strips drawn along
// contours into per-pixel depth and light ramps.
//
// Coverage map layout (W x H sub-samples, W and H multiples of 4, W*H/2
// bytes): sub-sample (x, y) is in 16-bit word (y/4)*W + 4*(x/4) + y%4, nibble
// x%4 counted from the high end; one output pixel is 4 consecutive words.
//
// A rasterizer and its buffers belong to one thread at a time.
#pragma once

#include <cstdint>

// GL enumerants understood by MatrixMode.
inline constexpr uint32_t kGlModelView = 5888;
inline constexpr uint32_t kGlProjection = 5889;

class CRasterizer {
public:
    virtual ~CRasterizer() = default;

    // Binds the coverage map (width x height sub-samples, multiples of 4)
    // and clears it; makes model-view current, empties the strip, turns
    // the taper off and selects the general kernel. Matrices and nibble map
    // persist. Returns the model-view matrix (16 column-major doubles).
    virtual double* Init(uint16_t* coverage, uint32_t reserved0, int32_t width, int32_t height,
                         uint32_t reserved1) = 0;
    // Non-null output: sets up the current band (keepBands 0 plans the
    // bands anew) and returns 0. Null output: resolves the current band into
    // the output given at set-up (2 bytes per pixel: intensity, depth),
    // frees the band buffers, advances and returns the bands still to draw.
    virtual uint32_t ShadedBandPass(uint8_t* output, double bevelDepth, double lightAngleDeg,
                                    uint32_t keepBands) = 0;
    // As ShadedBandPass with depth only (1 byte per pixel).
    virtual uint32_t DepthBandPass(uint8_t* output, double bevelDepth, uint32_t keepBands) = 0;
    virtual uint32_t ShadedBandPass2(uint8_t* output, double bevelDepth, double lightAngleDeg,
                                     uint32_t keepBands) = 0;
    virtual uint32_t DepthBandPass2(uint8_t* output, double bevelDepth, uint32_t keepBands) = 0;
    // Non-null output: one depth buffer for the whole map and the sweep
    // offset; null output: resolves into the output given before.
    virtual void SweepPass(uint8_t* output, double sweepDx, double sweepDy) = 0;

    virtual void MultMatrix(const double* m) = 0;
    virtual void Viewport(float x, float y, float w, float h) = 0;
    virtual void MatrixMode(uint32_t mode) = 0;
    virtual void LoadIdentity() = 0;
    virtual void Translate(double x, double y, double z) = 0;
    virtual void Scale(double x, double y, double z) = 0;
    virtual void Finish() = 0;
    // Vertex i is the pair of doubles at pointer + i * stride bytes.
    virtual void VertexPointer(uint32_t size, uint32_t type, uint32_t stride,
                               const void* pointer) = 0;
    // count / 3 triangles of u32 indices; mode and type are not examined.
    virtual void DrawIndexed(uint32_t mode, uint32_t count, uint32_t type,
                             const uint32_t* indices) = 0;
    // Marks the triangles' sub-samples in the current band.
    virtual void DrawIndexedToBand(uint32_t count, const uint32_t* indices) = 0;
    virtual void Vertex2dv(const double* xy) = 0;
    virtual void Vertex2d(double x, double y) = 0;
    virtual void End() = 0;
    virtual void Begin() = 0;
    // 16 entries 0-15; all equal selects a constant kernel.
    virtual void SetNibbleMap(const uint8_t* map) = 0;
    // Perspective taper in percent; 0 switches a direction off.
    virtual void SetTaper(float horizontal, float vertical) = 0;
    // gluProject; a null modelView uses the rasterizer's own matrices and
    // viewport. Returns 0 (outputs untouched) when w is 0.
    virtual int Project(double x, double y, double z, const double* modelView,
                        const double* projection, const float* viewport, double* winX,
                        double* winY, double* winZ) = 0;
    virtual void BevelVertex(double x, double y, double direction) = 0;
    virtual void BevelVertexAt(double x, double y, double direction, double depth) = 0;
    virtual void BevelStart(double x, double y, double direction) = 0;
    virtual void DepthVertex(double x, double y, double direction) = 0;
    virtual void DepthVertexAt(double x, double y, double direction, double depth) = 0;
    virtual void BevelVertexFar(double x, double y, double direction) = 0;
    virtual void BevelStartFar(double x, double y, double direction) = 0;
    virtual void DepthVertexFar(double x, double y, double direction) = 0;
    virtual void BevelVertexAtFar(double x, double y, double direction, double depth) = 0;
    virtual void DepthVertexAtFar(double x, double y, double direction, double depth) = 0;
    virtual void SweepVertex(double x, double y) = 0;
    virtual void BandVertex(double x, double y) = 0;
    // DrawIndexed with (dx, dy) added to every vertex before the transform.
    virtual void DrawIndexedOffset(uint32_t mode, uint32_t count, uint32_t type,
                                   const uint32_t* indices, double dx, double dy) = 0;
};

// Returns a new rasterizer, or null when allocation fails.
CRasterizer* CreateRasterizer() noexcept;
// Destroys a rasterizer made by CreateRasterizer; null is ignored.
void ReleaseRasterizer(CRasterizer* rasterizer) noexcept;
