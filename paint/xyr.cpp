// paint/xyr.cpp — CXyR: the per-character drawing of the fragment list.
//
// Each fragment with a map loads its nibble map and draws, for every contour
// group of the outline block, either the group's triangles (the face, maybe
// displaced by the shadow offset) or quad strips along the outer contour and
// then each hole (strokes, extrusions, smears; stroke_walk.cpp). Kinds
// outside 1-9 draw as the face.
#include "paint/xyr.h"

#include <cassert>

#include "outline/outline.h"
#include "paint/stroke_walk.h"
#include "raster/rasterizer.h"
#include "surface/fragment.h"

namespace {

// GL enumerants passed along with the vertex array and indices; the
// rasterizer does not examine them.
constexpr uint32_t kGlTriangles = 4;
constexpr uint32_t kGlUnsignedInt = 0x1405;
constexpr uint32_t kGlDouble = 0x140A;
constexpr uint32_t kCoordinatesPerVertex = 2;

// Calls draw(contour) for the outer contour of a group and then each hole.
template <class Draw>
void ForEachContour(const COutline& outline, uint32_t group, bool directionsStored, Draw&& draw) {
    namespace blk = tr::block;
    const uint8_t* record = outline.GetGroupRecord(group);
    draw(tr::ContourView{outline.GetOuterPoints(group),
                         tr::ReadBlockU32(record, blk::kRecordOuterCount), directionsStored});
    const uint32_t holes = tr::ReadBlockU32(record, blk::kRecordHoleCount);
    for (uint32_t h = 0; h < holes; ++h) {
        draw(tr::ContourView{outline.GetHolePoints(group, h),
                             tr::ReadBlockU32(record, blk::kRecordHoleBase + 8 * h),
                             directionsStored});
    }
}

}  // namespace

CRasterizer* CXyR::CreateRasterizerDefault() noexcept { return CreateRasterizer(); }
void CXyR::ReleaseRasterizerDefault(CRasterizer* r) noexcept { ReleaseRasterizer(r); }

CXyR::~CXyR() {
    if (rasterizer) releaseRasterizer(rasterizer);
}

void CXyR::DrawFragments(const FragmentOutlineSource& source,
                         std::span<const CFragment> fragments) {
    if (fragments.empty() || source.outline == nullptr) return;
    CFace* face = fragments.front().face;
    if (face == nullptr) return;
    if (rasterizer == nullptr) {
        rasterizer = createRasterizer();
        if (rasterizer == nullptr) return;
    }
    // A new buffer must be bound (Init clears it) and the transform set up
    // again, since binding switches the taper off; the same buffer keeps
    // what earlier calls drew.
    if (boundCoverage == nullptr || boundCoverage != source.coverage ||
        boundWidth != source.subWidth || boundHeight != source.subHeight) {
        rasterizer->Init(source.coverage, 0, source.subWidth, source.subHeight, 0);
        boundCoverage = source.coverage;
        boundWidth = source.subWidth;
        boundHeight = source.subHeight;
        SetUpTransform(*face, fragments);
    }
    for (const CFragment& fragment : fragments) {
        if (fragment.noMap) continue;
        currentFragment = &fragment;
        rasterizer->SetNibbleMap(fragment.nibbleMap);
        strokeWidth = fragment.widthPx;
        shadowOffsetX = fragment.shadowOffsetA;
        shadowOffsetY = fragment.shadowOffsetB;
        DrawFragment(source, fragment);
    }
    rasterizer->Finish();
}

void CXyR::DrawFaceTriangles(const COutline& outline) {
    const uint32_t groups = outline.GetGroupCount();
    const bool displaced = shadowOffsetX != 0.0 || shadowOffsetY != 0.0;
    for (uint32_t g = 0; g < groups; ++g) {
        rasterizer->VertexPointer(kCoordinatesPerVertex, kGlDouble, tr::block::kPointSize,
                                  outline.GetOuterPoints(g));
        const uint32_t count = outline.GetTriangleIndexCount(g);
        const uint32_t* indices = outline.GetTriangleIndices(g);
        if (displaced) {
            rasterizer->DrawIndexedOffset(kGlTriangles, count, kGlUnsignedInt, indices,
                                          shadowOffsetX, shadowOffsetY);
        } else {
            rasterizer->DrawIndexed(kGlTriangles, count, kGlUnsignedInt, indices);
        }
    }
}

void CXyR::DrawFragment(const FragmentOutlineSource& source, const CFragment& fragment) {
    using tr::StrokeSide;
    const COutline& outline = *source.outline;
    CRasterizer& r = *rasterizer;
    const double w = strokeWidth;
    const double ox = shadowOffsetX;
    const double oy = shadowOffsetY;
    const bool wide = wideOutlines != 0;
    auto forEach = [&](auto&& draw) {
        const uint32_t groups = outline.GetGroupCount();
        for (uint32_t g = 0; g < groups; ++g) {
            ForEachContour(outline, g, source.edgeDirectionsStored, draw);
        }
    };
    switch (static_cast<FragmentKind>(fragment.kind)) {
        case FragmentKind::OutlineIn:
            forEach([&](tr::ContourView c) { tr::DrawStroke(r, c, w, StrokeSide::Right, wide); });
            return;
        case FragmentKind::OutlineOut:
            forEach([&](tr::ContourView c) { tr::DrawStroke(r, c, w, StrokeSide::Left, wide); });
            return;
        case FragmentKind::FaceShadow:
            forEach([&](tr::ContourView c) { tr::DrawExtrusion(r, c, 0.0, 0.0, ox, oy); });
            return;
        case FragmentKind::OutlineInShadow:
            forEach([&](tr::ContourView c) {
                tr::DrawStrokeExtrusion(r, c, w, StrokeSide::Right, ox, oy);
            });
            return;
        case FragmentKind::OutlineOutShadow:
            forEach([&](tr::ContourView c) {
                tr::DrawStrokeExtrusion(r, c, w, StrokeSide::Left, ox, oy);
            });
            return;
        case FragmentKind::SmearVertical:
            forEach([&](tr::ContourView c) { tr::DrawSmear(r, c, 0.0, w); });
            return;
        case FragmentKind::SmearHorizontal:
            forEach([&](tr::ContourView c) { tr::DrawSmear(r, c, w, 0.0); });
            return;
        case FragmentKind::ShiftedYShadow:
            forEach([&](tr::ContourView c) { tr::DrawExtrusion(r, c, 0.0, w, ox, oy); });
            return;
        case FragmentKind::ShiftedXShadow:
            forEach([&](tr::ContourView c) { tr::DrawExtrusion(r, c, w, 0.0, ox, oy); });
            return;
        case FragmentKind::Face:
            break;
    }
    DrawFaceTriangles(outline);
}
