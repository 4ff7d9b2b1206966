// outline/tessellator.cpp — GLU tessellation of groups and boundaries.
//
// Tessellate feeds the outer contour and each hole as contours of one
// polygon, vertex data being the running vertex index, and registers an
// edge-flag callback so that GLU emits separate triangles only (no fans or
// strips). The combine callback stores each new crossing vertex in the
// group's extraVertices and hands GLU the next index, so the indices match
// the point order of the block: outer, holes, extra vertices.
//
// Boundary runs GLU in boundary-only mode over one path. Vertex data there
// are addresses of points in a deque (addresses stay valid while it grows,
// which the combine callback relies on); each GL_LINE_LOOP GLU reports
// becomes an output contour.
//
// Callbacks must not let exceptions cross GLU's C frames: an allocation
// failure inside one is recorded and the partial result is discarded.
#include "outline/tessellator.h"

#include <GL/glu.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <deque>

#include "host/recursive_mutex.h"

namespace tr {
namespace {

constexpr double kShortSide = 4.0;

vantor::threads::RecursiveMutex& TessellationLock() {
    static vantor::threads::RecursiveMutex mutex;
    return mutex;
}

// Process-wide tessellation state; meaningful only under the lock.
struct TessellationState {
    CContourGroup* group = nullptr;
    std::uint32_t vertexIndex = 0;
    std::deque<CPoint3D> vertices;  // boundary pass input and crossings
    std::list<Coutline>* output = nullptr;
    bool failed = false;
};

TessellationState& State() {
    static TessellationState state;
    return state;
}

std::atomic<bool> timingOn{false};
TessellationStats stats;  // under the tessellation lock

// Adds the lifetime of the scope to the stats when timing is on; declared
// after the lock is taken, so it runs under it.
class ScopedTiming {
public:
    ScopedTiming() : on_(timingOn.load(std::memory_order_relaxed)) {
        if (on_) start_ = std::chrono::steady_clock::now();
    }
    ~ScopedTiming() {
        if (!on_) return;
        const auto elapsed = std::chrono::steady_clock::now() - start_;
        stats.nanoseconds += static_cast<std::uint64_t>(
            std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count());
        ++stats.calls;
    }
    ScopedTiming(const ScopedTiming&) = delete;
    ScopedTiming& operator=(const ScopedTiming&) = delete;

private:
    bool on_;
    std::chrono::steady_clock::time_point start_;
};

// Every callback is registered through GLU's generic function type.
template <typename F>
_GLUfuncptr AsGluCallback(F* function) {
    return reinterpret_cast<_GLUfuncptr>(function);
}

void GLAPIENTRY IgnoreBegin(GLenum) {}
void GLAPIENTRY IgnoreEdgeFlag(GLboolean) {}
void GLAPIENTRY IgnoreEnd() {}
void GLAPIENTRY IgnoreError(GLenum) {}

void GLAPIENTRY TriangleVertex(void* vertexData, void*) {
    TessellationState& state = State();
    try {
        state.group->triangles.push_back(
            static_cast<std::uint32_t>(reinterpret_cast<uintptr_t>(vertexData)));
    } catch (...) {
        state.failed = true;
    }
}

void GLAPIENTRY TriangleCombine(GLdouble coords[3], void*[4], GLfloat[4], void** outData, void*) {
    TessellationState& state = State();
    try {
        state.group->extraVertices.points.push_back(CPoint3D{coords[0], coords[1], coords[2]});
    } catch (...) {
        state.failed = true;
    }
    *outData = reinterpret_cast<void*>(uintptr_t{state.vertexIndex});
    ++state.vertexIndex;
}

void GLAPIENTRY BoundaryBegin(GLenum) {
    TessellationState& state = State();
    try {
        state.output->emplace_back();
    } catch (...) {
        state.failed = true;
    }
}

void GLAPIENTRY BoundaryVertex(void* vertexData, void*) {
    TessellationState& state = State();
    if (state.output->empty()) return;
    const auto* p = static_cast<const CPoint3D*>(vertexData);
    try {
        state.output->back().points.push_back(CPoint3D{p->x, p->y, 0.0});
    } catch (...) {
        state.failed = true;
    }
}

void GLAPIENTRY BoundaryCombine(GLdouble coords[3], void*[4], GLfloat[4], void** outData, void*) {
    TessellationState& state = State();
    try {
        state.vertices.push_back(CPoint3D{coords[0], coords[1], coords[2]});
        *outData = &state.vertices.back();
    } catch (...) {
        state.failed = true;
        *outData = state.vertices.empty() ? nullptr : &state.vertices.front();
    }
}

void FeedContour(GLUtesselator* tess, const Coutline& contour, std::uint32_t& index) {
    for (const CPoint3D& p : contour.points) {
        GLdouble coords[3] = {p.x, p.y, p.z};
        gluTessVertex(tess, coords, reinterpret_cast<void*>(uintptr_t{index}));
        ++index;
    }
}

double SideLength(const CPoint3D& a, const CPoint3D& b) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    return std::sqrt(dx * dx + dy * dy);
}

}  // namespace

void Tessellate(CContourGroup& group) {
    vantor::threads::ScopedLock lock(TessellationLock(), "tessellation");
    const ScopedTiming timing;
    TessellationState& state = State();
    state.group = &group;
    state.vertexIndex = 0;
    state.failed = false;

    GLUtesselator* tess = gluNewTess();
    if (tess != nullptr) {
        gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
        gluTessCallback(tess, GLU_TESS_BEGIN, AsGluCallback(IgnoreBegin));
        gluTessCallback(tess, GLU_TESS_EDGE_FLAG, AsGluCallback(IgnoreEdgeFlag));
        gluTessCallback(tess, GLU_TESS_END, AsGluCallback(IgnoreEnd));
        gluTessCallback(tess, GLU_TESS_ERROR, AsGluCallback(IgnoreError));
        gluTessCallback(tess, GLU_TESS_VERTEX_DATA, AsGluCallback(TriangleVertex));
        gluTessCallback(tess, GLU_TESS_COMBINE_DATA, AsGluCallback(TriangleCombine));
        gluBeginPolygon(tess);
        gluNextContour(tess, GLU_CW);
        FeedContour(tess, group.outer, state.vertexIndex);
        for (const Coutline& hole : group.holes) {
            gluNextContour(tess, GLU_CW);
            FeedContour(tess, hole, state.vertexIndex);
        }
        gluEndPolygon(tess);
        gluDeleteTess(tess);
    }
    if (state.failed) {
        group.triangles.clear();
        group.extraVertices.points.clear();
    }
    // A triangulation cut short leaves an incomplete triangle behind.
    group.triangles.resize(group.triangles.size() - group.triangles.size() % 3);
    state.group = nullptr;
}

std::list<Coutline> Boundary(const Coutline& path, std::uint32_t flags, std::uint32_t options) {
    std::list<Coutline> output;
    vantor::threads::ScopedLock lock(TessellationLock(), "tessellation");
    const ScopedTiming timing;
    TessellationState& state = State();
    state.vertices.assign(path.points.begin(), path.points.end());
    state.output = &output;
    state.failed = false;

    GLUtesselator* tess = gluNewTess();
    if (tess != nullptr) {
        gluTessProperty(tess, GLU_TESS_BOUNDARY_ONLY, 1.0);
        gluTessProperty(tess, GLU_TESS_WINDING_RULE,
                        (flags & 0x1000) != 0 ? GLU_TESS_WINDING_NONZERO : GLU_TESS_WINDING_ODD);
        gluTessCallback(tess, GLU_TESS_BEGIN, AsGluCallback(BoundaryBegin));
        gluTessCallback(tess, GLU_TESS_EDGE_FLAG, AsGluCallback(IgnoreEdgeFlag));
        gluTessCallback(tess, GLU_TESS_END, AsGluCallback(IgnoreEnd));
        gluTessCallback(tess, GLU_TESS_ERROR, AsGluCallback(IgnoreError));
        gluTessCallback(tess, GLU_TESS_VERTEX_DATA, AsGluCallback(BoundaryVertex));
        gluTessCallback(tess, GLU_TESS_COMBINE_DATA, AsGluCallback(BoundaryCombine));
        gluBeginPolygon(tess);
        gluNextContour(tess, GLU_CW);
        const std::size_t inputCount = state.vertices.size();
        for (std::size_t i = 0; i < inputCount; ++i) {
            CPoint3D& p = state.vertices[i];
            gluTessVertex(tess, &p.x, &p);
        }
        gluEndPolygon(tess);
        gluDeleteTess(tess);
    }
    if (state.failed) output.clear();
    if ((options & 1u) != 0) {
        for (Coutline& contour : output) {
            if (IsSliver(contour)) contour.points.clear();
        }
    }
    state.vertices.clear();
    state.output = nullptr;
    return output;
}

void EnableTessellationTiming(bool on) { timingOn.store(on, std::memory_order_relaxed); }

TessellationStats TakeTessellationStats() {
    vantor::threads::ScopedLock lock(TessellationLock(), "tessellation");
    const TessellationStats taken = stats;
    stats = TessellationStats{};
    return taken;
}

bool IsSliver(const Coutline& contour) {
    const std::size_t n = contour.points.size();
    if (n < 3) return true;
    if (n > 5) return false;
    bool isShort[5] = {false, false, false, false, false};  // s1 .. sn
    auto it = contour.points.begin();
    for (std::size_t i = 0; i < n; ++i) {
        const CPoint3D& a = *it;
        ++it;
        const CPoint3D& b = it == contour.points.end() ? contour.points.front() : *it;
        isShort[i] = SideLength(a, b) < kShortSide;
    }
    const auto s = [&isShort](int side) { return isShort[side - 1]; };  // sides s1 .. sn
    switch (n) {
        case 3: return s(1) || s(2) || s(3);
        case 4: return (s(1) && s(3)) || (s(2) && s(4));
        default: return (s(1) && s(3) && s(5)) || (s(1) && s(3) && s(4)) || (s(2) && s(4) && s(5));
    }
}

}  // namespace tr
