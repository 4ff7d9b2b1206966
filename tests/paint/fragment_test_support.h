// tests/paint/fragment_test_support.h — shared by the fragment drawing
// tests: a rasterizer that records the calls it receives (forwarding the
// transform calls to a real rasterizer so Project gives real answers), the
// quad strips read back from a recording, and hand-made outline blocks.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "outline/character_data.h"
#include "outline/contour_group.h"
#include "outline/outline2.h"
#include "paint/face.h"
#include "raster/rasterizer.h"

namespace trtest {

struct Call {
    std::string name;
    std::vector<double> args;
    const void* pointer = nullptr;
};

class RecordingRasterizer final : public CRasterizer {
public:
    RecordingRasterizer() : inner_(CreateRasterizer()) {}
    ~RecordingRasterizer() override { ReleaseRasterizer(inner_); }

    size_t Count(const std::string& name) const {
        size_t n = 0;
        for (const Call& c : calls) n += c.name == name;
        return n;
    }

    std::vector<Call> calls;

    double* Init(uint16_t* coverage, uint32_t, int32_t w, int32_t h, uint32_t) override {
        Log("Init", {double(w), double(h)}, coverage);
        return inner_->Init(nullptr, 0, 0, 0, 0);
    }
    void MultMatrix(const double* m) override { inner_->MultMatrix(m); }
    void Viewport(float x, float y, float w, float h) override {
        Log("Viewport", {x, y, w, h});
        inner_->Viewport(x, y, w, h);
    }
    void MatrixMode(uint32_t mode) override {
        Log("MatrixMode", {});
        inner_->MatrixMode(mode);
    }
    void LoadIdentity() override { inner_->LoadIdentity(); }
    void Translate(double x, double y, double z) override { inner_->Translate(x, y, z); }
    void Scale(double x, double y, double z) override { inner_->Scale(x, y, z); }
    void SetTaper(float h, float v) override {
        Log("SetTaper", {h, v});
        inner_->SetTaper(h, v);
    }
    int Project(double x, double y, double z, const double* mv, const double* pr, const float* vp,
                double* wx, double* wy, double* wz) override {
        return inner_->Project(x, y, z, mv, pr, vp, wx, wy, wz);
    }
    void Finish() override {}
    void VertexPointer(uint32_t, uint32_t, uint32_t, const void* p) override {
        Log("VertexPointer", {}, p);
    }
    void DrawIndexed(uint32_t, uint32_t count, uint32_t, const uint32_t* indices) override {
        Log("DrawIndexed", {double(count)}, indices);
    }
    void DrawIndexedOffset(uint32_t, uint32_t count, uint32_t, const uint32_t* indices, double dx,
                           double dy) override {
        Log("DrawIndexedOffset", {double(count), dx, dy}, indices);
    }
    void Vertex2dv(const double* xy) override { Log("Vertex2dv", {xy[0], xy[1]}); }
    void Vertex2d(double x, double y) override { Log("Vertex2d", {x, y}); }
    void End() override { Log("End", {}); }
    void Begin() override { Log("Begin", {}); }
    void SetNibbleMap(const uint8_t* map) override {
        Log("SetNibbleMap", std::vector<double>(map, map + 16));
    }
    // Not used by fragment drawing.
    uint32_t ShadedBandPass(uint8_t*, double, double, uint32_t) override { return 0; }
    uint32_t DepthBandPass(uint8_t*, double, uint32_t) override { return 0; }
    uint32_t ShadedBandPass2(uint8_t*, double, double, uint32_t) override { return 0; }
    uint32_t DepthBandPass2(uint8_t*, double, uint32_t) override { return 0; }
    void SweepPass(uint8_t*, double, double) override {}
    void DrawIndexedToBand(uint32_t, const uint32_t*) override {}
    void BevelVertex(double, double, double) override {}
    void BevelVertexAt(double, double, double, double) override {}
    void BevelStart(double, double, double) override {}
    void DepthVertex(double, double, double) override {}
    void DepthVertexAt(double, double, double, double) override {}
    void BevelVertexFar(double, double, double) override {}
    void BevelStartFar(double, double, double) override {}
    void DepthVertexFar(double, double, double) override {}
    void BevelVertexAtFar(double, double, double, double) override {}
    void DepthVertexAtFar(double, double, double, double) override {}
    void SweepVertex(double, double) override {}
    void BandVertex(double, double) override {}

private:
    void Log(const char* name, std::vector<double> args, const void* p = nullptr) {
        calls.push_back(Call{name, std::move(args), p});
    }
    CRasterizer* inner_;
};

// One vertex pair of a quad strip: (ax, ay) through Vertex2dv, (bx, by)
// through Vertex2d.
struct Pair {
    double ax, ay, bx, by;
};
using Strip = std::vector<Pair>;

// The strips opened by Begin, in order.
inline std::vector<Strip> Strips(const std::vector<Call>& calls) {
    std::vector<Strip> strips;
    const Call* first = nullptr;
    for (const Call& c : calls) {
        if (c.name == "Begin") strips.emplace_back();
        if (c.name == "Vertex2dv") first = &c;
        if (c.name == "Vertex2d" && first != nullptr && !strips.empty()) {
            strips.back().push_back({first->args[0], first->args[1], c.args[0], c.args[1]});
            first = nullptr;
        }
    }
    return strips;
}

inline Coutline Contour(const std::vector<std::pair<double, double>>& pts) {
    Coutline c;
    for (const auto& [x, y] : pts) c.points.push_back(CPoint3D{x, y, 0.0});
    return c;
}

// A loaded COutline2 whose block (owned by the outline) holds the groups.
inline void LoadGroups(COutline2& outline, const std::list<CContourGroup>& groups,
                       int32_t outlineSize) {
    const uint8_t metrics[20] = {};
    outline.holder.BuildBlock(groups, metrics, outlineSize);
    outline.current = outline.holder.data != nullptr ? &outline.holder : nullptr;
}

// The square [x0, x0 + side] × [y0, y0 + side], clockwise with y up (the
// orientation of outer contours), as two triangles.
inline CContourGroup SquareGroup(double x0, double y0, double side) {
    CContourGroup g;
    g.outer = Contour({{x0, y0}, {x0, y0 + side}, {x0 + side, y0 + side}, {x0 + side, y0}});
    g.outer.clockwise = true;
    g.triangles = {0, 1, 2, 0, 2, 3};
    return g;
}

// A face over the outline box [minX, maxX] × [minY, maxY] at the given
// scale, unit width and height scales and pixel ratio, as the character
// pass sets it up; the caller adjusts and measures it.
inline void SetUpBox(CFace& f, double minX, double minY, double maxX, double maxY, double scale) {
    f.hasOutline = f.dirty = 1;
    f.widthScale = f.heightScale = f.pixelRatio = 1.0;
    f.scale = scale;
    f.centreX = f.painterCentreX = (minX + maxX) * 0.5;
    f.centreY = f.painterCentreY = (minY + maxY) * 0.5;
    f.halfWidth = (maxX - minX) * 0.5;
    f.halfHeight = (maxY - minY) * 0.5;
    f.faceExtents[0] = f.extents[0] = {minX, minY};
    f.faceExtents[1] = f.extents[1] = {maxX, minY};
    f.faceExtents[2] = f.extents[2] = {maxX, maxY};
    f.faceExtents[3] = f.extents[3] = {minX, maxY};
}

}  // namespace trtest
