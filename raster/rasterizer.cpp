// raster/rasterizer.cpp — life cycle of CRasterizer_, vertex arrays, indexed
// coverage triangles and the immediate-mode quad strip.
//
// The quad strip collects transformed vertices a, b, c, d and fills triangle
// (a, b, c) (skipped when a and b coincide) and triangle (d, b, c); c and d
// then become a and b of the next quad, so pairs of vertices along a contour
// form a continuous strip. The band strips of bevel_strips.cpp share the
// vertex store and the scheme.
//
// Coverage drawing has two twins that give identical maps. The plain one
// transforms and tapers the three vertices of every triangle and runs the
// reference set-up and walk. The prepared one (the default) transforms,
// tapers and converts each vertex once - per DrawIndexed call through a
// small cache indexed by vertex number, per slot in the quad strip - and
// hands the prepared vertices to the word-store kernels. Both evaluate the
// same per-vertex expressions, so the prepared values are those the plain
// twin recomputes for each triangle. When the nibble map is idempotent an
// indexed draw's triangles go to the union scan (union_scan.h), which
// writes the region they cover from the edges they do not share; strip
// quads are always drawn as they come.
#include <cstring>
#include <new>

#include "raster/rasterizer_impl.h"

CRasterizer_::CRasterizer_()
    : viewport_{0, 0, 0, 0},
      scaleX_(0),
      offsetX_(0),
      scaleY_(0),
      offsetY_(0),
      stripX_{},
      stripY_{},
      taperX_(0),
      taperY_(0),
      taperDistX_(0),
      taperDistY_(0),
      vertexSize_(0),
      vertexStride_(0),
      vertexPointer_(nullptr),
      coverage_(nullptr),
      width_(0),
      height_(0),
      tilesPerRow_(0),
      nibbleTables_{},
      currentMatrix_(modelView_),
      vertexCount_(0),
      spanKernel_(tr::GeneralCoverageKernel()),
      constantValue_(0),
      mapIsConstant_(false),
      plainKernels_(false),
      preparedKernel_(tr::PreparedGeneralKernel()),
      unionKernel_(nullptr),
      byteMap_{},
      byteMapStale_(false),
      stripPrepared_{},
      stripPreparedMask_(0),
      vertexGeneration_(0),
      vertexStamps_{},
      bandTop_(0),
      bandBottom_(0),
      output_(nullptr),
      shadedPass_(false),
      sweepPass_(false),
      bevelDepth_(0),
      lightAngle_(0),
      sweepX_(0),
      sweepY_(0),
      previousIntensity_(0),
      currentIntensity_(0) {
    // The users load both matrices before drawing; identity keeps an
    // unconfigured rasterizer's output defined.
    MatrixMode(kGlProjection);
    LoadIdentity();
    MatrixMode(kGlModelView);
    LoadIdentity();
}

CRasterizer_::~CRasterizer_() = default;

CRasterizer* CreateRasterizer() noexcept { return new (std::nothrow) CRasterizer_(); }

void ReleaseRasterizer(CRasterizer* rasterizer) noexcept { delete rasterizer; }

double* CRasterizer_::Init(uint16_t* coverage, uint32_t /*reserved0*/, int32_t width,
                           int32_t height, uint32_t /*reserved1*/) {
    // Sizes that are not positive multiples of 4 (or a null buffer) leave an
    // empty map: nothing is cleared and nothing is drawn.
    const bool usable = coverage != nullptr && width > 0 && height > 0;
    coverage_ = usable ? coverage : nullptr;
    width_ = usable ? (width & ~tr::kSubMask) : 0;
    height_ = usable ? (height & ~tr::kSubMask) : 0;
    tilesPerRow_ = width_ / tr::kSubPerPx;
    if (coverage_ != nullptr) {
        std::memset(coverage_, 0, static_cast<size_t>(width_) * static_cast<size_t>(height_) / 2);
    }
    currentMatrix_ = modelView_;
    vertexCount_ = 0;
    taperX_ = taperY_ = 0.0f;
    taperDistX_ = taperDistY_ = 0.0;
    stripPreparedMask_ = 0;
    mapIsConstant_ = false;
    spanKernel_ = tr::GeneralCoverageKernel();
    preparedKernel_ = tr::PreparedGeneralKernel();
    unionKernel_ = nullptr;
    if (byteMapStale_) {
        // The map is still in the tables: position 3 holds it unshifted.
        uint8_t map[16];
        for (int v = 0; v < 16; ++v) map[v] = static_cast<uint8_t>(nibbleTables_[tr::kSubMask][v]);
        tr::BuildByteMapTable(map, byteMap_);
        byteMapStale_ = false;
    }
    return modelView_;
}

void CRasterizer_::SetNibbleMap(const uint8_t* map) {
    tr::BuildNibbleTables(map, nibbleTables_);
    mapIsConstant_ = true;
    for (int i = 1; i < 16; ++i) mapIsConstant_ = mapIsConstant_ && map[i] == map[0];
    // Only the general kernels read the byte table; a constant map leaves
    // it to Init, which selects the general kernel.
    byteMapStale_ = mapIsConstant_;
    if (!byteMapStale_) tr::BuildByteMapTable(map, byteMap_);
    constantValue_ = static_cast<uint8_t>(map[0] & tr::kNibbleMask);
    spanKernel_ = mapIsConstant_ ? tr::ConstantCoverageKernelPlain(constantValue_)
                                 : tr::GeneralCoverageKernel();
    preparedKernel_ = mapIsConstant_ ? tr::PreparedConstantKernel(constantValue_)
                                     : tr::PreparedGeneralKernel();
    unionKernel_ = mapIsConstant_          ? tr::UnionConstantKernel(constantValue_)
                   : tr::IsIdempotentMap(map) ? tr::UnionGeneralKernel()
                                              : nullptr;
}

void CRasterizer_::UsePlainKernels(bool plain) { plainKernels_ = plain; }

void CRasterizer_::VertexPointer(uint32_t size, uint32_t /*type*/, uint32_t stride,
                                 const void* pointer) {
    vertexSize_ = size;
    vertexStride_ = stride;
    vertexPointer_ = static_cast<const unsigned char*>(pointer);
}

const double* CRasterizer_::VertexAt(uint32_t index) const {
    // The caller's vertex array is 8-byte aligned with a stride that is a
    // multiple of 8 (outline blocks use 24-byte points).
    return reinterpret_cast<const double*>(vertexPointer_ + static_cast<size_t>(index) *
                                                                vertexStride_);
}

tr::CoverageTarget CRasterizer_::CoverageTargetOf() const {
    return tr::CoverageTarget{coverage_, width_, height_, &nibbleTables_, &byteMap_};
}

void CRasterizer_::FillCoverage(tr::ScreenTriangle t) const {
    if (coverage_ == nullptr) return;
    if (taperX_ != 0.0f || taperY_ != 0.0f) ApplyTaper(t);
    spanKernel_(CoverageTargetOf(), t);
}

uint32_t CRasterizer_::NextVertexGeneration() {
    if (++vertexGeneration_ == 0) {  // wrapped: forget every stamp
        std::memset(vertexStamps_, 0, sizeof vertexStamps_);
        vertexGeneration_ = 1;
    }
    return vertexGeneration_;
}

// With an idempotent map the triangles whose vertices are all cached and
// walkable go to the union scan, chunk by chunk; the others (and all of
// them with other maps, or once a chunk shows that the triangles do not
// share their edges) are walked at once. With such a map the order in
// which sub-samples are drawn does not matter.
void CRasterizer_::DrawIndexedPrepared(uint32_t count, const uint32_t* indices, double dx,
                                       double dy) {
    const uint32_t generation = NextVertexGeneration();
    const tr::CoverageTarget target = CoverageTargetOf();
    const tr::PreparedCoverageKernel kernel = preparedKernel_;
    bool unite = unionKernel_ != nullptr;
    if (unite) unionScan_.Begin(width_, height_);
    auto prepare = [&](uint32_t index, tr::PreparedVertex& out) {
        const double* v = VertexAt(index);
        float x, y;
        TransformVertex(v[0] + dx, v[1] + dy, x, y);
        PrepareScreenVertexInto(x, y, out);
    };
    for (uint32_t i = 0; i + 3 <= count; i += 3) {
        tr::PreparedVertex uncached[3];
        const tr::PreparedVertex* v[3];
        bool cached = true;
        for (int k = 0; k < 3; ++k) {
            const uint32_t index = indices[i + k];
            if (index >= kVertexCacheSize) {
                prepare(index, uncached[k]);
                v[k] = &uncached[k];
                cached = false;
                continue;
            }
            if (vertexStamps_[index] != generation) {
                prepare(index, vertexCache_[index]);
                vertexStamps_[index] = generation;
            }
            v[k] = &vertexCache_[index];
        }
        if (!unite || !cached || !v[0]->walkable || !v[1]->walkable || !v[2]->walkable) {
            kernel(target, *v[0], *v[1], *v[2]);
            continue;
        }
        const uint32_t* t = indices + i;
        if (!unionScan_.Add(*v[0], *v[1], *v[2], t[0], t[1], t[2])) {
            FlushUnion(target);
            unionScan_.Begin(width_, height_);
            (void)unionScan_.Add(*v[0], *v[1], *v[2], t[0], t[1], t[2]);
        }
        if (!unionScan_.Promising()) {  // triangles that share no edges: walk them
            FlushUnion(target);
            unite = false;
        }
    }
    if (unite) FlushUnion(target);
}

// Scans the chunk as one region when that is cheaper, else walks its
// triangles; their vertices are still in the cache.
void CRasterizer_::FlushUnion(const tr::CoverageTarget& target) {
    if (unionScan_.Empty()) return;
    if (unionScan_.ScanPays()) {
        unionKernel_(target, unionScan_);
        return;
    }
    for (uint32_t i = 0; i < unionScan_.TriangleCount(); ++i) {
        const uint32_t* t = unionScan_.Triangle(i);
        preparedKernel_(target, vertexCache_[t[0]], vertexCache_[t[1]], vertexCache_[t[2]]);
    }
}

void CRasterizer_::DrawIndexedCoverage(uint32_t count, const uint32_t* indices, double dx,
                                       double dy) {
    if (coverage_ == nullptr || indices == nullptr || vertexPointer_ == nullptr) return;
    if (!plainKernels_) {
        DrawIndexedPrepared(count, indices, dx, dy);
        return;
    }
    for (uint32_t i = 0; i + 3 <= count; i += 3) {
        tr::ScreenTriangle t{};
        for (int k = 0; k < 3; ++k) {
            const double* v = VertexAt(indices[i + k]);
            TransformVertex(v[0] + dx, v[1] + dy, t.x[k], t.y[k]);
        }
        FillCoverage(t);
    }
}

void CRasterizer_::DrawIndexed(uint32_t /*mode*/, uint32_t count, uint32_t /*type*/,
                               const uint32_t* indices) {
    DrawIndexedCoverage(count, indices, 0.0, 0.0);
}

void CRasterizer_::DrawIndexedOffset(uint32_t /*mode*/, uint32_t count, uint32_t /*type*/,
                                     const uint32_t* indices, double dx, double dy) {
    DrawIndexedCoverage(count, indices, dx, dy);
}

bool CRasterizer_::AppendStripVertex(double x, double y) {
    TransformVertex(x, y, stripX_[vertexCount_], stripY_[vertexCount_]);
    stripPreparedMask_ &= ~(1u << vertexCount_);
    return ++vertexCount_ == 4;
}

void CRasterizer_::KeepLastPair() {
    stripX_[0] = stripX_[2];
    stripY_[0] = stripY_[2];
    stripX_[1] = stripX_[3];
    stripY_[1] = stripY_[3];
    stripPrepared_[0] = stripPrepared_[2];
    stripPrepared_[1] = stripPrepared_[3];
    stripPreparedMask_ = (stripPreparedMask_ >> 2) & 3u;
    vertexCount_ = 2;
}

void CRasterizer_::Begin() { vertexCount_ = 0; }
void CRasterizer_::End() {}
void CRasterizer_::Finish() {}

void CRasterizer_::Vertex2dv(const double* xy) { Vertex2d(xy[0], xy[1]); }

tr::ScreenTriangle CRasterizer_::QuadTriangle(int tri) const {
    static constexpr int kCorners[2][3] = {{0, 1, 2}, {3, 1, 2}};
    tr::ScreenTriangle t{};
    for (int k = 0; k < 3; ++k) {
        t.x[k] = stripX_[kCorners[tri][k]];
        t.y[k] = stripY_[kCorners[tri][k]];
    }
    return t;
}

int CRasterizer_::FirstQuadTriangle() const {
    return stripX_[0] == stripX_[1] && stripY_[0] == stripY_[1] ? 1 : 0;
}

// Triangles (a, b, c) and (d, b, c) of the quad from the prepared slots,
// preparing any slot a band strip appended.
void CRasterizer_::FillPreparedQuad() {
    for (uint32_t slot = 0; slot < 4; ++slot) {
        if ((stripPreparedMask_ & (1u << slot)) != 0) continue;
        PrepareScreenVertexInto(stripX_[slot], stripY_[slot], stripPrepared_[slot]);
        stripPreparedMask_ |= 1u << slot;
    }
    if (coverage_ == nullptr) return;
    const tr::CoverageTarget target = CoverageTargetOf();
    // A triangle with two equal corners has area 0 and draws nothing: the
    // first triangle when a and b coincide, or (along a join's fan, where
    // every pair starts at the same point) a and c.
    const tr::PreparedVertex *a = &stripPrepared_[0], *b = &stripPrepared_[1];
    const tr::PreparedVertex *c = &stripPrepared_[2], *d = &stripPrepared_[3];
    if (FirstQuadTriangle() == 0 && (a->x != c->x || a->y != c->y)) {
        preparedKernel_(target, *a, *b, *c);
    }
    if (b->x != d->x || b->y != d->y) preparedKernel_(target, *d, *b, *c);
}

void CRasterizer_::Vertex2d(double x, double y) {
    if (!AppendStripVertex(x, y)) return;
    if (plainKernels_) {
        for (int tri = FirstQuadTriangle(); tri < 2; ++tri) FillCoverage(QuadTriangle(tri));
    } else {
        FillPreparedQuad();
    }
    KeepLastPair();
}
