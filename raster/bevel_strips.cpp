// raster/bevel_strips.cpp — strip vertices of the depth-band passes.
//
// Every strip slot appends a pair: a contour point a and the point displaced
// from it, b = a + d * (cos theta, sin theta) for bevels and depth strips,
// a + sweep offset for the sweep. Two pairs make a quad a, b, c, d that is
// filled as triangles (a, b, c) - skipped when a and b coincide - and
// (d, b, c), each vertex carrying the depth of its end of the strip:
//
//   table   triangle (a, b, c)     triangle (d, b, c)
//   near    255, 64770, 255        64770, 64770, 255
//   far     64770, 255, 64770      255, 255, 64770
//
// so depth grows (near) or falls (far) linearly with the distance from the
// contour, and the depth test keeps the nearest contour edge. Bevel quads
// also carry a light intensity: the earlier pair gets the previous strip
// intensity and the later pair the current one.
#include <cmath>

#include "raster/fixed_point.h"
#include "raster/rasterizer_impl.h"

namespace {

// The constant the light computations use for a full turn.
constexpr double kTurn = 6.2831852;
// Beyond this many turns, wrapping by repeated addition would take too
// long; such angles are reduced with fmod first.
constexpr double kMaxWrapTurns = 64.0;

// Brings an angle into [0, period] by adding or subtracting the period.
double WrapAngle(double a, double period) {
    if (!std::isfinite(a)) return 0.0;
    if (std::fabs(a) > kMaxWrapTurns * period) a = std::fmod(a, period);
    while (a < 0.0) a += period;
    while (a > period) a -= period;
    return a;
}

constexpr double kDepthTables[2][2][3] = {
    {{tr::kNearDepth, tr::kMarkDepth, tr::kNearDepth},
     {tr::kMarkDepth, tr::kMarkDepth, tr::kNearDepth}},
    {{tr::kMarkDepth, tr::kNearDepth, tr::kMarkDepth},
     {tr::kNearDepth, tr::kNearDepth, tr::kMarkDepth}},
};

}  // namespace

uint8_t CRasterizer_::StripIntensity(double direction) const {
    const double phi = WrapAngle(direction - lightAngle_, kTurn);
    return tr::SaturatingTrunc<uint8_t>((std::sin(phi) + 1) * 125 + 1);
}

void CRasterizer_::FillBand(tr::BandKernel kernel, tr::ScreenTriangle t) const {
    if (depthBuffer_ == nullptr) return;
    if (taperX_ != 0.0f || taperY_ != 0.0f) ApplyTaper(t);
    tr::FillBandTriangle(BandTargetOf(), kernel, t);
}

void CRasterizer_::StripPair(double x, double y, double x2, double y2, tr::BandKernel kernel,
                             DepthTable table, QuadShade shade) {
    const double(&depths)[2][3] = kDepthTables[table == DepthTable::kNear ? 0 : 1];
    // Intensity of the vertices of triangles (a, b, c) and (d, b, c).
    const double light[2][3] = {{double(shade.ab), double(shade.ab), double(shade.cd)},
                                {double(shade.cd), double(shade.ab), double(shade.cd)}};
    auto push = [&](double px, double py) {
        if (!AppendStripVertex(px, py)) return;
        for (int tri = FirstQuadTriangle(); tri < 2; ++tri) {
            tr::ScreenTriangle t = QuadTriangle(tri);
            for (int k = 0; k < 3; ++k) {
                t.attr[0][k] = depths[tri][k];
                t.attr[1][k] = light[tri][k];
            }
            FillBand(kernel, t);
        }
        KeepLastPair();
    };
    push(x, y);
    push(x2, y2);
}

void CRasterizer_::BevelPair(double x, double y, double direction, double depth,
                             tr::BandKernel kernel, DepthTable table) {
    previousIntensity_ = currentIntensity_;
    currentIntensity_ = StripIntensity(direction);
    StripPair(x, y, x + depth * std::cos(direction), y + depth * std::sin(direction), kernel,
              table, {previousIntensity_, currentIntensity_});
}

// The quad is shaded flat with the intensity in effect before this vertex.
void CRasterizer_::BevelPairAt(double x, double y, double direction, double depth,
                               tr::BandKernel kernel, DepthTable table) {
    StripPair(x, y, x + depth * std::cos(direction), y + depth * std::sin(direction), kernel,
              table, {currentIntensity_, currentIntensity_});
    previousIntensity_ = currentIntensity_;
    currentIntensity_ = StripIntensity(direction);
}

void CRasterizer_::BevelPairStart(double x, double y, double direction, tr::BandKernel kernel,
                                  DepthTable table) {
    currentIntensity_ = previousIntensity_ = StripIntensity(direction);
    StripPair(x, y, x + bevelDepth_ * std::cos(direction), y + bevelDepth_ * std::sin(direction),
              kernel, table, {currentIntensity_, currentIntensity_});
}

void CRasterizer_::DepthPair(double x, double y, double direction, double depth,
                             tr::BandKernel kernel, DepthTable table) {
    StripPair(x, y, x + depth * std::cos(direction), y + depth * std::sin(direction), kernel,
              table, {0, 0});
}

using tr::BandKernel;

void CRasterizer_::BevelVertex(double x, double y, double direction) {
    BevelPair(x, y, direction, bevelDepth_, BandKernel::kShadedNear, DepthTable::kNear);
}
void CRasterizer_::BevelVertexAt(double x, double y, double direction, double depth) {
    BevelPairAt(x, y, direction, depth, BandKernel::kShadedNear, DepthTable::kNear);
}
void CRasterizer_::BevelStart(double x, double y, double direction) {
    BevelPairStart(x, y, direction, BandKernel::kShadedNear, DepthTable::kNear);
}
void CRasterizer_::DepthVertex(double x, double y, double direction) {
    DepthPair(x, y, direction, bevelDepth_, BandKernel::kDepthNear, DepthTable::kNear);
}
void CRasterizer_::DepthVertexAt(double x, double y, double direction, double depth) {
    DepthPair(x, y, direction, depth, BandKernel::kDepthNear, DepthTable::kNear);
}
void CRasterizer_::BevelVertexFar(double x, double y, double direction) {
    BevelPair(x, y, direction, bevelDepth_, BandKernel::kShadedFar, DepthTable::kFar);
}
void CRasterizer_::BevelStartFar(double x, double y, double direction) {
    BevelPairStart(x, y, direction, BandKernel::kShadedFar, DepthTable::kFar);
}
void CRasterizer_::DepthVertexFar(double x, double y, double direction) {
    DepthPair(x, y, direction, bevelDepth_, BandKernel::kDepthFar, DepthTable::kFar);
}
void CRasterizer_::BevelVertexAtFar(double x, double y, double direction, double depth) {
    BevelPairAt(x, y, direction, depth, BandKernel::kShadedFar, DepthTable::kFar);
}
void CRasterizer_::DepthVertexAtFar(double x, double y, double direction, double depth) {
    DepthPair(x, y, direction, depth, BandKernel::kDepthFar, DepthTable::kFar);
}

void CRasterizer_::SweepVertex(double x, double y) {
    StripPair(x, y, x + sweepX_, y + sweepY_, BandKernel::kSweep, DepthTable::kFar, {0, 0});
}

// Single vertices: every fourth completes a quad of the mark kernel.
void CRasterizer_::BandVertex(double x, double y) {
    if (!AppendStripVertex(x, y)) return;
    for (int tri = FirstQuadTriangle(); tri < 2; ++tri) FillBand(BandKernel::kMark, QuadTriangle(tri));
    KeepLastPair();
}

void CRasterizer_::DrawIndexedToBand(uint32_t count, const uint32_t* indices) {
    if (indices == nullptr || vertexPointer_ == nullptr) return;
    for (uint32_t i = 0; i + 3 <= count; i += 3) {
        tr::ScreenTriangle t{};
        for (int k = 0; k < 3; ++k) {
            const double* v = VertexAt(indices[i + k]);
            TransformVertex(v[0], v[1], t.x[k], t.y[k]);
        }
        FillBand(BandKernel::kMark, t);
    }
}

double tr::LightAngleFromDegrees(double degrees) {
    return WrapAngle(degrees, 360.0) / 360.0 * kTurn;
}
