// outline/outline_builder.cpp — the builders of the glyph data formats.
//
// Curve records (format 1), per contour: drop consecutive duplicates, drop
// the first point if the last repeats it, cut loops, simplify (tolerance
// S/16000), orient; then nest, tessellate and set the edge angles. Polygons
// of doubles skip the consecutive-duplicate pass and orient before they
// simplify. Grouped floats are taken as they come: tessellated and given
// edge angles, nothing else. A single path is made counter-clockwise, its
// near-vertical edges nudged apart, its boundary extracted by the
// tessellator, and the boundary contours grouped as single-path groups.
#include "outline/outline_builder.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "outline/character_data.h"
#include "outline/contour_cleanup.h"
#include "outline/contour_nesting.h"
#include "outline/glyph_formats.h"
#include "outline/tessellator.h"

namespace tr {
namespace {

constexpr std::int32_t kIdentity[4] = {0x10000, 0, 0, 0x10000};
constexpr double kToleranceDivisor = 16000.0;

// Single-path nudges: edges closer to vertical than kNearVertical are
// pushed apart so that the boundary pass sees no vertical edges.
constexpr double kNearVertical = 0.01;
constexpr double kNudgeRight = 0.01313;
constexpr double kNudgeLeft = 0.01111;
constexpr double kClosingNudgeLeft = 0.02222;
constexpr double kClosingNudgeRight = 0.02626;

void TessellateAndAngle(std::list<CContourGroup>& groups) {
    for (CContourGroup& group : groups) {
        Tessellate(group);
        SetEdgeAngles(group.outer);
        for (Coutline& hole : group.holes) SetEdgeAngles(hole);
    }
}

void AppendAll(std::list<CContourGroup>& out, std::list<CContourGroup>&& groups) {
    out.splice(out.end(), groups);
}

void BuildCurves(std::list<CContourGroup>& out, std::int32_t size, const std::uint8_t* data,
                 std::size_t length) {
    if (IsGroupedFloats(data, length)) {
        std::list<CContourGroup> groups = ReadGroupedFloats(data, length);
        TessellateAndAngle(groups);
        AppendAll(out, std::move(groups));
        return;
    }
    const double z = -static_cast<double>(size);
    const double tolerance = size / kToleranceDivisor;
    std::list<Coutline> contours = ReadCurvePolygons(data, length, z);
    for (Coutline& contour : contours) {
        RemoveConsecutiveDuplicates(contour);
        RemoveClosingDuplicate(contour);
        RemoveLoops(contour);
        Simplify(contour, tolerance);
        Orient(contour);
    }
    std::list<CContourGroup> groups = Nest(contours);
    TessellateAndAngle(groups);
    AppendAll(out, std::move(groups));
}

void BuildPolygons(std::list<CContourGroup>& out, std::int32_t size, const std::uint8_t* data,
                   std::size_t length) {
    const double tolerance = size / kToleranceDivisor;
    std::list<Coutline> contours = ReadPolygons(data, length);
    for (Coutline& contour : contours) {
        RemoveClosingDuplicate(contour);
        RemoveLoops(contour);
        Orient(contour);
        Simplify(contour, tolerance);
    }
    std::list<CContourGroup> groups = Nest(contours);
    TessellateAndAngle(groups);
    AppendAll(out, std::move(groups));
}

void BuildSinglePath(std::list<CContourGroup>& out, std::int32_t size, const std::uint8_t* data,
                     std::size_t length, std::uint32_t flags, std::uint32_t options) {
    if (length < 1) return;
    Coutline path;
    if (!ReadSinglePath(data, length, -static_cast<double>(size), path)) return;
    if (path.points.size() > 1) {
        Orient(path);
        if (path.clockwise) path.Reverse();
    }
    NudgeNearVertical(path);
    Orient(path);
    std::list<Coutline> boundary = Boundary(path, flags, options);
    for (Coutline& contour : boundary) Orient(contour);
    std::list<CContourGroup> groups = NestSinglePath(boundary);
    TessellateAndAngle(groups);
    AppendAll(out, std::move(groups));
}

}  // namespace

void NudgeNearVertical(Coutline& path) {
    auto& pts = path.points;
    if (pts.empty()) return;
    double prevX = pts.front().x;
    for (auto it = std::next(pts.begin()); it != pts.end(); ++it) {
        const double dx = it->x - prevX;
        if (std::fabs(dx) <= kNearVertical) it->x += dx >= 0.0 ? kNudgeRight : -kNudgeLeft;
        prevX = it->x;
    }
    const double dx = pts.front().x - pts.back().x;
    if (-kNearVertical < dx && dx < 0.0) {
        pts.front().x -= kClosingNudgeLeft;
    } else if (0.0 < dx && dx < kNearVertical) {
        pts.front().x += kClosingNudgeRight;
    }
}

void Dispatch(std::list<CContourGroup>& groups, std::int32_t outlineSize, const std::uint8_t* data,
              std::size_t length, std::uint32_t flags, std::uint32_t options) {
    if (data == nullptr) length = 0;
    if ((flags & OUTLINE_SINGLE_PATH) != 0) {
        BuildSinglePath(groups, outlineSize, data, length, flags, options);
    } else if ((flags & OUTLINE_POLYGON_INPUT) != 0) {
        BuildPolygons(groups, outlineSize, data, length);
    } else {
        BuildCurves(groups, outlineSize, data, length);
    }
}

OutlineBuild BuildOutline(const OutlineRequest& request, std::vector<std::uint64_t>& scratch) {
    OutlineBuild build;
    const GlyphOutlineCallback callback = RequestCallback(request);
    if (callback == nullptr) return build;
    const uintptr_t context = RequestContext(request);
    const std::int32_t needed =
        callback(context, request.characterCode, build.metrics, 0, nullptr, kIdentity);
    if (needed > kMaxGlyphBytes) return build;

    // (2L + 8) div 8 zeroed eight-byte units; none when that is nothing.
    // clear() keeps the capacity, so a reused scratch allocates nothing.
    const std::int64_t units = (2 * std::int64_t{needed} + 8) / 8;
    scratch.clear();
    if (units > 0) scratch.resize(static_cast<std::size_t>(units), 0);
    const std::uint32_t told = needed > 0 ? static_cast<std::uint32_t>(needed) : 0;
    void* bytes = scratch.empty() ? nullptr : scratch.data();

    const std::int32_t result =
        callback(context, request.characterCode, build.metrics, told, bytes, kIdentity);
    if (result <= 0) return build;
    // A result beyond the size the host was told is host error: read no
    // further than that size.
    const std::size_t length = std::min<std::size_t>(static_cast<std::uint32_t>(result), told);
    Dispatch(build.groups, request.outlineSize, static_cast<const std::uint8_t*>(bytes), length,
             request.flags, request.options);
    return build;
}

OutlineBuild BuildOutline(const OutlineRequest& request) {
    std::vector<std::uint64_t> scratch;
    scratch.reserve(kGlyphScratchUnits);
    return BuildOutline(request, scratch);
}

OMData BuildOutlineBlock(const OutlineRequest& request, std::vector<std::uint64_t>& scratch) {
    OutlineBuild build = BuildOutline(request, scratch);
    CCharacterData data;
    if (!data.BuildBlock(build.groups, build.metrics, request.outlineSize) || data.owned == nullptr) {
        return OMData{};
    }
    OMData block{data.owned, ReadBlockU32(data.owned, block::kTotalSizeOffset)};
    data.owned = nullptr;
    data.data = nullptr;
    return block;
}

OMData BuildOutlineBlock(const OutlineRequest& request) {
    std::vector<std::uint64_t> scratch;
    scratch.reserve(kGlyphScratchUnits);
    return BuildOutlineBlock(request, scratch);
}

}  // namespace tr
