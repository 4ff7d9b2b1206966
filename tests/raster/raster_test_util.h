// tests/raster/raster_test_util.h — helpers shared by the raster tests: a
// coverage map with guard words, sub-sample access written from the layout
// definition, a brute-force oracle of the fill rule, jittered meshes, and a
// rasterizer whose object coordinates are screen sub-samples.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "raster/coverage_kernels.h"
#include "raster/rasterizer.h"

namespace trtest {

// W x H sub-samples with kGuardWords guard words on each side.
class GuardedMap {
public:
    static constexpr size_t kGuardWords = 256;
    static constexpr uint16_t kGuardPattern = 0xA5C3;

    GuardedMap(int32_t w, int32_t h)
        : w_(w), h_(h), data_(static_cast<size_t>(w) * h / 4 + 2 * kGuardWords, kGuardPattern) {
        std::memset(Words(), 0, Bytes());
    }
    uint16_t* Words() { return data_.data() + kGuardWords; }
    size_t Bytes() const { return static_cast<size_t>(w_) * h_ / 2; }
    int32_t W() const { return w_; }
    int32_t H() const { return h_; }
    void Randomize(std::mt19937& rng, uint16_t mask = 0xFFFF) {
        for (size_t i = 0; i < Bytes() / 2; ++i) Words()[i] = static_cast<uint16_t>(rng() & mask);
    }
    // Sub-sample (x, y): word (y/4)*W + 4*(x/4) + y%4, nibble x%4 from the top.
    uint32_t At(int32_t x, int32_t y) const { return (data_[Index(x, y)] >> Shift(x)) & 0xF; }
    void Set(int32_t x, int32_t y, uint32_t v) {
        uint16_t& w = data_[Index(x, y)];
        w = static_cast<uint16_t>((w & ~(0xF << Shift(x))) | (v << Shift(x)));
    }
    int Count(uint32_t v) const {
        int n = 0;
        for (int32_t y = 0; y < h_; ++y)
            for (int32_t x = 0; x < w_; ++x) n += At(x, y) == v;
        return n;
    }
    bool GuardsIntact() const {
        for (size_t i = 0; i < kGuardWords; ++i)
            if (data_[i] != kGuardPattern || data_[data_.size() - 1 - i] != kGuardPattern) return false;
        return true;
    }
    bool SameAs(const GuardedMap& o) const { return data_ == o.data_; }

private:
    size_t Index(int32_t x, int32_t y) const {
        return kGuardWords + (y / 4) * w_ + 4 * (x / 4) + (y % 4);
    }
    static int Shift(int32_t x) { return 12 - 4 * (x % 4); }
    int32_t w_, h_;
    std::vector<uint16_t> data_;
};

// The fill rule per sub-sample in closed form, 2048 units per sub-sample:
// X = trunc((x + 0.5) * 2048), Y = trunc((y - 0.5) * 2048), so the centre
// of (p, r) is at ((p + 1) * 2048, r * 2048). An edge from (x0, y0) down
// to (x1, y1) is on row r at
//   x0 + trunc((first * 2048 - y0) * dx / dy) + (r - first) * trunc(dx / dy * 2048),
// first = ceil(y0 / 2048); the centre is covered when Ytop <= Cy < Ybot
// and Xleft(r) <= Cx < Xright(r).
class FillRuleOracle {
public:
    FillRuleOracle(const float* xs, const float* ys) {
        int o[3] = {0, 1, 2};
        for (int i = 0; i < 3; ++i)
            for (int j = i + 1; j < 3; ++j)
                if (ys[o[j]] < ys[o[i]] || (ys[o[j]] == ys[o[i]] && o[j] < o[i])) std::swap(o[i], o[j]);
        double x[3], y[3];
        for (int i = 0; i < 3; ++i) {
            x[i] = xs[o[i]], y[i] = ys[o[i]];
            xf_[i] = static_cast<int64_t>((x[i] + 0.5) * 2048.0);
            yf_[i] = static_cast<int64_t>((y[i] - 0.5) * 2048.0);
        }
        area2_ = (x[1] - x[0]) * (y[2] - y[0]) - (x[2] - x[0]) * (y[1] - y[0]);
    }
    bool Covers(int32_t p, int32_t r) const {
        if (std::fabs(area2_) < 0.05) return false;
        const int64_t cy = int64_t{r} * 2048, cx = (int64_t{p} + 1) * 2048;
        if (cy < yf_[0] || cy >= yf_[2]) return false;
        const int64_t longX = EdgeX(0, 2, r);
        const int64_t shortX = cy < yf_[1] ? EdgeX(0, 1, r) : EdgeX(1, 2, r);
        return area2_ > 0 ? longX <= cx && cx < shortX : shortX <= cx && cx < longX;
    }

private:
    int64_t EdgeX(int a, int b, int32_t r) const {
        const int64_t first = (yf_[a] >= 0 ? yf_[a] + 2047 : yf_[a]) / 2048;  // ceil
        const double dx = double(xf_[b] - xf_[a]), dy = double(yf_[b] - yf_[a]);
        return xf_[a] + static_cast<int64_t>(double(first * 2048 - yf_[a]) * dx / dy) +
               (r - first) * static_cast<int64_t>(dx / dy * 2048.0);
    }
    int64_t xf_[3], yf_[3];
    double area2_;
};

inline std::string TriangleText(const float* xs, const float* ys) {
    char buf[256];
    std::snprintf(buf, sizeof buf, "(%.9g %.9g) (%.9g %.9g) (%.9g %.9g)", xs[0], ys[0], xs[1],
                  ys[1], xs[2], ys[2]);
    return buf;
}

inline tr::NibbleTables TablesOf(const uint8_t* map) {
    tr::NibbleTables t;
    tr::BuildNibbleTables(map, t);
    return t;
}

// map[v] = v + 1 (saturating): drawn with it, a sub-sample counts its covers.
inline std::array<uint8_t, 16> CountingMap() {
    std::array<uint8_t, 16> map;
    for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>(v < 15 ? v + 1 : 15);
    return map;
}

inline void DrawKernel(GuardedMap& m, tr::CoverageKernel kernel, const float* xs, const float* ys,
                       const tr::NibbleTables* tables = nullptr) {
    const tr::ScreenTriangle t{{xs[0], xs[1], xs[2]}, {ys[0], ys[1], ys[2]}, {}};
    kernel(tr::CoverageTarget{m.Words(), m.W(), m.H(), tables, nullptr}, t);
}

// The reference walk of one triangle over the whole map, span(row, x0, x1).
template <class Span>
void WalkReference(const GuardedMap& m, const float* xs, const float* ys, Span span) {
    auto onSetup = [&](const tr::TriangleSetup&, const tr::ScreenTriangle&) { return span; };
    tr::RasterizeTriangle(tr::ScreenTriangle{{xs[0], xs[1], xs[2]}, {ys[0], ys[1], ys[2]}, {}},
                          tr::WalkWindow{0, m.H(), m.W()}, onSetup);
}

struct Mesh {
    std::vector<float> x, y;
    std::vector<uint32_t> triangles;  // three vertex numbers each
    void Add(double x0, double y0) { x.push_back(float(x0)), y.push_back(float(y0)); }
    void Triangle(size_t t, float* xs, float* ys) const {
        for (int k = 0; k < 3; ++k) xs[k] = x[triangles[3 * t + k]], ys[k] = y[triangles[3 * t + k]];
    }
};

// cols x rows jittered cells, each cut along a random diagonal; neighbours
// share their sides. Jitter below half a cell keeps every quad convex.
inline Mesh JitteredGrid(std::mt19937& rng, int cols, int rows, float x0, float y0, float cell,
                         float jitter) {
    std::uniform_real_distribution<float> j(-jitter, jitter);
    Mesh mesh;
    for (int r = 0; r <= rows; ++r)
        for (int c = 0; c <= cols; ++c) mesh.Add(x0 + c * cell + j(rng), y0 + r * cell + j(rng));
    for (uint32_t r = 0; r < uint32_t(rows); ++r)
        for (uint32_t c = 0; c < uint32_t(cols); ++c) {
            const uint32_t a = r * (cols + 1) + c, b = a + 1, d = a + cols + 1, e = d + 1;
            const bool diagonal = rng() % 2;
            mesh.triangles.insert(mesh.triangles.end(),
                                  {a, b, diagonal ? e : d, diagonal ? a : b, e, d});
        }
    return mesh;
}

struct RasterizerDeleter {
    void operator()(CRasterizer* r) const { ReleaseRasterizer(r); }
};
using RasterizerPtr = std::unique_ptr<CRasterizer, RasterizerDeleter>;

// Viewport (0, 0, 2, 2): scale 1 and offset 1, which the projection's
// translation by -1 cancels, so object coordinates reach the screen as is.
inline void UseScreenSpace(CRasterizer& r) {
    r.Viewport(0, 0, 2, 2);
    r.MatrixMode(kGlProjection);
    r.LoadIdentity();
    r.Translate(-1, -1, 0);
    r.MatrixMode(kGlModelView);
    r.LoadIdentity();
}

inline RasterizerPtr ScreenSpaceRasterizer(uint16_t* map, int32_t w, int32_t h) {
    RasterizerPtr r(CreateRasterizer());
    r->Init(map, 0, w, h, 0);
    UseScreenSpace(*r);
    return r;
}

inline void SetConstantMap(CRasterizer& r, uint8_t k) {
    uint8_t map[16];
    std::memset(map, k, sizeof map);
    r.SetNibbleMap(map);
}

}  // namespace trtest
