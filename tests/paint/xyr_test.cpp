// CXyR::DrawFragments: what each fragment kind sends to the rasterizer (a
// recording fake) and first-use binding; real coverage of a square face
// from its origin pixel, outline strokes widening it behind the face, and
// hostile input staying inside the buffer.
#include "paint/xyr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <list>
#include <memory>
#include <vector>

#include "fragment_test_support.h"
#include "outline/outline_builder.h"
#include "paint/face.h"
#include "surface/fragment.h"
#include "tests/outline/glyph_data.h"
#include "tests/raster/raster_test_util.h"

namespace {

using trtest::RecordingRasterizer;
using trtest::Strips;

int gCreated = 0;
RecordingRasterizer* gLast = nullptr;
CRasterizer* CreateRecording() noexcept {
    ++gCreated;
    return gLast = new RecordingRasterizer();
}
void ReleaseRecording(CRasterizer* r) noexcept { delete r; }

// The face of the box [minX, maxX] × [minY, maxY] at scale 1 (one outline
// unit per sub-sample), measured.
void SetUpFace(CFace& f, double minX, double minY, double maxX, double maxY, double faceX = 0,
               double faceY = 0) {
    trtest::SetUpBox(f, minX, minY, maxX, maxY, 1.0);
    f.faceX = faceX;
    f.faceY = faceY;
    f.Measure();
}

CFragment Fragment(CFace* face, const uint8_t* map, int32_t kind, double widthPx = 0,
                   double offsetX = 0, double offsetY = 0) {
    CFragment f(map, kind, widthPx / 4, 0, 0);
    f.face = face;
    f.widthPx = widthPx;
    f.shadowOffsetA = offsetX;
    f.shadowOffsetB = offsetY;
    return f;
}

const uint8_t kFaceMap[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
const uint8_t kBehindMap[16] = {3, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

// Two groups: a 100-unit square with a hole and a 40-unit square.
class DrawFragmentsFake : public ::testing::Test {
protected:
    void SetUp() override {
        gCreated = 0;
        CContourGroup withHole = trtest::SquareGroup(0, 0, 100);
        withHole.holes.push_back(trtest::Contour({{30, 30}, {70, 30}, {70, 70}, {30, 70}}));
        trtest::LoadGroups(outline, {withHole, trtest::SquareGroup(120, 0, 40)}, 400);
        SetUpFace(face, 0, 0, 160, 100);
        source = {buffer.data(), face.subWidth, face.subHeight, &outline};
    }
    // The calls after the transform set-up (which ends on MatrixMode).
    static std::vector<trtest::Call> DrawCalls() {
        size_t start = 0;
        for (size_t i = 0; i < gLast->calls.size(); ++i)
            if (gLast->calls[i].name == "MatrixMode") start = i + 1;
        return {gLast->calls.begin() + static_cast<long>(start), gLast->calls.end()};
    }

    COutline2 outline;
    CFace face{nullptr};
    std::vector<uint16_t> buffer = std::vector<uint16_t>(4);
    FragmentOutlineSource source;
};

// Strips over the three contours (two per contour for smears), or the
// groups' triangles, displaced when an offset is non-zero; kinds outside
// 1-9 draw the face. The first pair of a strip starts on the outer square's
// first point (0, 0), whose closing edge runs along −x: right-hand strokes
// reach up by w = 6, left-hand ones down; shadows extrude along (5, 0).
// The wide flag changes the strokes only.
TEST_F(DrawFragmentsFake, KindsDrawTheirGeometryOverEveryContour) {
    const struct {
        int32_t kind;
        double dx, dy;
        size_t strips;
        const char* triangles;
        trtest::Pair first;
    } cases[] = {{0, 0, 0, 0, "DrawIndexed", {}},       {0, 0, -0.0, 0, "DrawIndexed", {}},
                 {0, 3, 0, 0, "DrawIndexedOffset", {}}, {0, 0, -2, 0, "DrawIndexedOffset", {}},
                 {10, 0, 0, 0, "DrawIndexed", {}},      {-1, 0, 0, 0, "DrawIndexed", {}},
                 {1, 5, 0, 3, "", {0, 0, 0, 6}},   {2, 5, 0, 3, "", {0, 0, 0, -6}},
                 {3, 5, 0, 3, "", {0, 0, 5, 0}},   {4, 5, 0, 3, "", {0, 6, 5, 6}},
                 {5, 5, 0, 3, "", {0, -6, 5, -6}}, {6, 5, 0, 6, "", {0, 0, 0, 6}},
                 {7, 5, 0, 6, "", {0, 0, 6, 0}},   {8, 5, 0, 3, "", {0, 6, 5, 6}},
                 {9, 5, 0, 3, "", {6, 0, 11, 0}}};
    for (const auto& c : cases) {
        std::vector<trtest::Strip> strips[2];
        for (int wide = 0; wide < 2; ++wide) {
            CXyR xyr(&CreateRecording, &ReleaseRecording);
            xyr.wideOutlines = static_cast<uint8_t>(wide);
            const CFragment list[] = {Fragment(&face, kFaceMap, c.kind, 6, c.dx, c.dy)};
            xyr.DrawFragments(source, list);
            const auto calls = DrawCalls();
            strips[wide] = Strips(calls);
            ASSERT_EQ(strips[wide].size(), c.strips) << "kind " << c.kind;
            std::vector<trtest::Call> triangles;
            std::vector<const void*> points;
            for (const auto& call : calls) {
                if (call.name.starts_with("DrawIndexed")) triangles.push_back(call);
                if (call.name == "VertexPointer") points.push_back(call.pointer);
            }
            ASSERT_EQ(triangles.size(), c.strips == 0 ? 2u : 0u) << "kind " << c.kind;
            for (uint32_t g = 0; g < triangles.size(); ++g) {
                EXPECT_EQ(triangles[g].name, c.triangles) << "kind " << c.kind;
                EXPECT_EQ(triangles[g].pointer, outline.GetTriangleIndices(g));
                EXPECT_EQ(points.at(g), outline.GetOuterPoints(g));
                std::vector<double> args = {double(outline.GetTriangleIndexCount(g)), c.dx, c.dy};
                args.resize(c.dx != 0.0 || c.dy != 0.0 ? 3 : 1);
                EXPECT_EQ(triangles[g].args, args);
            }
        }
        if (c.strips == 0) continue;
        const trtest::Pair& p = strips[0][0][0];
        EXPECT_NEAR(p.ax, c.first.ax, 1e-9) << "kind " << c.kind;
        EXPECT_NEAR(p.ay, c.first.ay, 1e-9) << "kind " << c.kind;
        EXPECT_NEAR(p.bx, c.first.bx, 1e-9) << "kind " << c.kind;
        EXPECT_NEAR(p.by, c.first.by, 1e-9) << "kind " << c.kind;
        // Square corners: 8 round-join pairs plain, 1 mitre pair wide, on
        // the outer square or the hole, whichever is convex on the side.
        EXPECT_EQ(strips[0][0].size() != strips[1][0].size() ||
                      strips[0][1].size() != strips[1][1].size(),
                  c.kind == 1 || c.kind == 2)
            << "kind " << c.kind;
    }
}

// An empty list creates nothing; a list of one unmapped fragment creates
// and binds the rasterizer but draws nothing; the same buffer is bound
// once, another one again.
TEST_F(DrawFragmentsFake, FirstUseCreatesAndBinds) {
    CXyR xyr(&CreateRecording, &ReleaseRecording);
    xyr.DrawFragments(source, {});
    EXPECT_EQ(gCreated, 0);
    const CFragment unmapped[] = {Fragment(&face, nullptr, 0, 8)};
    face.taperH = 12.3;
    face.taperV = -4.56;
    xyr.DrawFragments(source, unmapped);
    ASSERT_EQ(gCreated, 1);
    std::vector<std::vector<double>> tapers;  // the face's, in single precision, in both passes
    for (const auto& c : gLast->calls) {
        if (c.name == "SetTaper") tapers.push_back(c.args);
    }
    EXPECT_EQ(tapers, (std::vector<std::vector<double>>(2, {12.3f, -4.56f})));
    EXPECT_EQ(gLast->calls.front().name, "Init");
    EXPECT_EQ(gLast->calls.front().pointer, buffer.data());
    EXPECT_EQ(gLast->calls.front().args,
              (std::vector<double>{double(face.subWidth), double(face.subHeight)}));
    for (const char* name : {"SetNibbleMap", "Begin", "DrawIndexed", "VertexPointer"})
        EXPECT_EQ(gLast->Count(name), 0u) << name;
    const CFragment list[] = {Fragment(&face, kFaceMap, 0)};
    xyr.DrawFragments(source, list);
    EXPECT_EQ(gLast->Count("Init"), 1u);
    EXPECT_EQ(gLast->Count("Viewport"), 2u);  // the two passes of one set-up
    std::vector<uint16_t> other(4);
    xyr.DrawFragments({other.data(), source.subWidth, source.subHeight, &outline}, list);
    EXPECT_EQ(gLast->Count("Init"), 2u);
    EXPECT_EQ(gLast->Count("Viewport"), 4u);
    EXPECT_EQ(gCreated, 1);
}

// Real coverage of the 100-unit square at the outline origin at scale 1:
// an outline unit is one sub-sample and y turns downward.
class DrawFragmentsReal : public ::testing::Test {
protected:
    void Prepare(double faceX = 0, double faceY = 0) {
        trtest::LoadGroups(outline, {trtest::SquareGroup(0, 0, 100)}, 400);
        SetUpFace(face, 0, 0, 100, 100, faceX, faceY);
        map = std::make_unique<trtest::GuardedMap>(face.subWidth, face.subHeight);
        source = {map->Words(), face.subWidth, face.subHeight, &outline};
    }
    // {minX, minY, maxX + 1, maxY + 1} of the sub-samples holding `value`
    // (any non-zero value when value is 0).
    std::array<int, 4> Box(uint32_t value) const {
        std::array<int, 4> b = {1 << 30, 1 << 30, -1, -1};
        for (int y = 0; y < map->H(); ++y) {
            for (int x = 0; x < map->W(); ++x) {
                const uint32_t v = map->At(x, y);
                if (value == 0 ? v == 0 : v != value) continue;
                b = {std::min(b[0], x), std::min(b[1], y), std::max(b[2], x + 1),
                     std::max(b[3], y + 1)};
            }
        }
        return b;
    }

    COutline2 outline;
    CFace face{nullptr};
    std::unique_ptr<trtest::GuardedMap> map;
    FragmentOutlineSource source;
};

TEST_F(DrawFragmentsReal, FaceFillsTheSquareFromTheOriginPixelCorner) {
    for (const double faceX : {0.0, 17.0, 10.5, -3.25}) {
        Prepare(faceX, 0.0);
        CXyR xyr;
        const CFragment list[] = {Fragment(&face, kFaceMap, 0)};
        xyr.DrawFragments(source, list);
        // Box 148 sub-samples wide (100 + 48 margin); the origin projects to
        // 24, is moved to the next pixel corner above, 28 (pixel 7), and the
        // face position's fraction adds 4 × fraction sub-samples.
        EXPECT_EQ(face.originColumn, 7) << faceX;
        EXPECT_EQ(face.originRow, 32) << faceX;  // y: 124 → 128, flipped
        const int shift = static_cast<int>(4 * (faceX - std::floor(faceX)));
        EXPECT_EQ(map->Count(2), 100 * 100) << faceX;
        EXPECT_EQ(Box(2), (std::array<int, 4>{28 + shift, 28, 128 + shift, 128})) << faceX;
        EXPECT_NEAR(face.origin.x, 7 + shift / 4.0, 1e-9);
        EXPECT_NEAR(face.origin.y, 32, 1e-9);
        EXPECT_TRUE(map->GuardsIntact());
    }
}

// A square with a square hole as the outline builder orients them (outer
// clockwise, hole counter-clockwise): the outer outline grows away from the
// fill on both edges, behind the face, with round or mitred corners.
TEST_F(DrawFragmentsReal, OutlineOutGrowsAwayFromTheFill) {
    const auto glyph = tr::test::PolygonGlyph(
        {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}, {{30, 30}, {30, 70}, {70, 70}, {70, 30}}});
    std::list<CContourGroup> groups;
    tr::Dispatch(groups, 400, glyph.data(), glyph.size(), OUTLINE_POLYGON_INPUT, 0);
    for (const int wide : {0, 1}) {
        Prepare();
        trtest::LoadGroups(outline, groups, 400);
        CXyR xyr;
        xyr.wideOutlines = static_cast<uint8_t>(wide);
        // Width 2 pixels: 8 sub-samples at scale 1; a fragment without a
        // map is skipped.
        const CFragment list[] = {Fragment(&face, kFaceMap, 0), Fragment(&face, kBehindMap, 2, 8),
                                  Fragment(&face, nullptr, 2, 40)};
        xyr.DrawFragments(source, list);
        // Outline units to sub-samples: x + 28, 128 − y; the hole is 58..98.
        EXPECT_EQ(map->Count(2), 100 * 100 - 40 * 40);
        EXPECT_EQ(Box(0), (std::array<int, 4>{20, 20, 136, 136}));
        // Sub-sample (21, 21) is 9 sub-samples diagonally off the corner
        // (28, 28) at its centre: outside the round join, inside the mitre.
        EXPECT_EQ(map->At(21, 21), wide ? 3u : 0u) << wide;
        EXPECT_EQ(map->At(25, 25), 3u);
        EXPECT_EQ(map->At(60, 78), 3u);  // inside the hole, within 8 of its edge
        EXPECT_EQ(map->At(78, 78), 0u);  // the hole's centre stays open
    }
}

// A curved glyph as the curve builder makes it (an "O": two rings of
// quadratic splines, a hundred short edges each, in every direction):
// strokes and stroke shadows that read the directions the builder stored
// send the rasterizer the same calls with the same doubles as strokes that
// recompute every direction.
TEST_F(DrawFragmentsReal, StoredEdgeDirectionsDrawTheSameStrokes) {
    tr::test::CurveGlyph glyph;
    for (const double r : {45.0, 25.0}) {
        glyph.Polygon({50 + r, 50})
            .Record(2, {{50 + r, 50 + r}, {50, 50 + r}, {50 - r, 50 + r}, {50 - r, 50},
                        {50 - r, 50 - r}, {50, 50 - r}, {50 + r, 50 - r}, {50 + r, 50}});
    }
    const auto bytes = glyph.Data();
    std::list<CContourGroup> groups;
    tr::Dispatch(groups, 400, bytes.data(), bytes.size(), 0, 0);
    ASSERT_EQ(groups.size(), 1u);
    ASSERT_GE(groups.front().outer.points.size(), 100u);
    for (const int32_t kind : {1, 2, 4, 5}) {
        std::vector<trtest::Call> calls[2];
        for (const bool stored : {false, true}) {
            Prepare();
            trtest::LoadGroups(outline, groups, 400);
            source.edgeDirectionsStored = stored;
            CXyR xyr(&CreateRecording, &ReleaseRecording);
            const CFragment list[] = {Fragment(&face, kBehindMap, kind, 6, 7, -5)};
            xyr.DrawFragments(source, list);
            calls[stored] = gLast->calls;
        }
        ASSERT_GT(calls[0].size(), 400u) << "kind " << kind;
        ASSERT_EQ(calls[0].size(), calls[1].size()) << "kind " << kind;
        for (size_t i = 0; i < calls[0].size(); ++i) {
            const auto &a = calls[0][i].args, &b = calls[1][i].args;
            ASSERT_TRUE(a.size() == b.size() &&
                        (a.empty() || std::memcmp(a.data(), b.data(), a.size() * 8) == 0))
                << "kind " << kind << ", call " << i << " " << calls[0][i].name;
        }
    }
}

// Non-finite and huge widths and offsets for every kind; kind 10 (a face)
// also at a hostile face position and taper.
TEST_F(DrawFragmentsReal, HostileValuesStayInsideTheBuffer) {
    const double inf = std::numeric_limits<double>::infinity();
    for (const double v : {std::nan(""), inf, -inf, 1e300, -1e300, 3e9, -7e5}) {
        for (int32_t kind = 0; kind <= 10; ++kind) {
            Prepare(kind == 10 ? v : 0.0, kind == 10 ? -v : 0.0);
            face.taperH = kind == 10 ? v : 0.0;
            face.taperV = kind == 10 ? -v : 0.0;
            CXyR xyr;
            xyr.wideOutlines = kind % 2 == 0;
            const CFragment list[] = {Fragment(&face, kFaceMap, kind, v, v, -v),
                                      Fragment(&face, kBehindMap, kind, 4, v, 3),
                                      Fragment(&face, kFaceMap, kind, v, 2, v)};
            xyr.DrawFragments(source, list);
            EXPECT_TRUE(map->GuardsIntact()) << "kind " << kind << " value " << v;
        }
    }
}

}  // namespace
