// CXyR::DrawFragments: what each fragment kind sends to the rasterizer (a
// recording fake), first-use creation and binding, and real coverage: a
// square face where the origin pixel says, outline strokes widening it, and
// hostile widths and offsets staying inside the buffer; and real glyphs
// drawn through the rasterizer's default path and its plain twin.
#include "paint/xyr.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "fragment_test_support.h"
#include "outline/outline_builder.h"
#include "paint/face.h"
#include "raster/rasterizer_impl.h"
#include "surface/fragment.h"
#include "tests/outline/glyph_data.h"
#include "tests/raster/raster_test_util.h"
#if TR_TEST_WITH_GLYPH_SOURCE
#include "tools/glyph_source/glyph_source.h"
#endif

namespace {

using trtest::RecordingRasterizer;
using trtest::Strips;

int gCreated = 0;
int gReleased = 0;
RecordingRasterizer* gLast = nullptr;

CRasterizer* CreateRecording() noexcept {
    ++gCreated;
    gLast = new RecordingRasterizer();
    return gLast;
}
void ReleaseRecording(CRasterizer* r) noexcept {
    ++gReleased;
    delete r;
}

// The face of an outline whose box is [minX, maxX] × [minY, maxY], set up
// as the character pass does with scale s = 1 (one outline unit per
// sub-sample), unit scales and pixel ratio, then measured.
void SetUpFace(CFace& f, double minX, double minY, double maxX, double maxY, double faceX = 0,
               double faceY = 0) {
    f.hasOutline = 1;
    f.dirty = 1;
    f.scale = 1.0;
    f.widthScale = f.heightScale = 1.0;
    f.pixelRatio = 1.0;
    f.faceX = faceX;
    f.faceY = faceY;
    f.centreX = f.painterCentreX = (minX + maxX) * 0.5;
    f.centreY = f.painterCentreY = (minY + maxY) * 0.5;
    f.halfWidth = (maxX - minX) * 0.5;
    f.halfHeight = (maxY - minY) * 0.5;
    f.faceExtents[0] = {minX, minY};
    f.faceExtents[1] = {maxX, minY};
    f.faceExtents[2] = {maxX, maxY};
    f.faceExtents[3] = {minX, maxY};
    for (int i = 0; i < 4; ++i) f.extents[i] = f.faceExtents[i];
    f.Measure();
}

// A fragment as the pass prepares it with s = 1: widthPx = 4 × width.
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

class DrawFragmentsFake : public ::testing::Test {
protected:
    void SetUp() override {
        gCreated = gReleased = 0;
        gLast = nullptr;
        std::list<CContourGroup> groups;
        CContourGroup withHole = trtest::SquareGroup(0, 0, 100);
        withHole.holes.push_back(trtest::Contour({{30, 30}, {70, 30}, {70, 70}, {30, 70}}));
        groups.push_back(withHole);
        groups.push_back(trtest::SquareGroup(120, 0, 40));
        trtest::LoadGroups(outline, groups, 400);
        ASSERT_FALSE(outline.IsEmpty());
        SetUpFace(face, 0, 0, 160, 100);
        source = {buffer.data(), face.subWidth, face.subHeight, &outline};
    }
    // The calls after the transform set-up (which ends on MatrixMode).
    std::vector<trtest::Call> DrawCalls() const {
        size_t start = 0;
        for (size_t i = 0; i < gLast->calls.size(); ++i) {
            if (gLast->calls[i].name == "MatrixMode") start = i + 1;
        }
        return {gLast->calls.begin() + static_cast<long>(start), gLast->calls.end()};
    }

    COutline2 outline;
    CFace face{nullptr};
    std::vector<uint16_t> buffer = std::vector<uint16_t>(4);
    FragmentOutlineSource source;
};

TEST_F(DrawFragmentsFake, FaceUsesPlainOrOffsetTriangles) {
    struct Case {
        double dx, dy;
        bool offset;
    };
    for (const Case c : {Case{0, 0, false}, Case{0, -0.0, false}, Case{3, 0, true},
                         Case{0, -2, true}}) {
        {
            CXyR xyr(&CreateRecording, &ReleaseRecording);
            const CFragment list[] = {Fragment(&face, kFaceMap, 0, 0, c.dx, c.dy)};
            xyr.DrawFragments(source, list);
            const auto calls = DrawCalls();
            ASSERT_EQ(calls.size(), 6u);  // map, 2 × (pointer, triangles), finish
            EXPECT_EQ(calls[0].name, "SetNibbleMap");
            for (uint32_t g = 0; g < 2; ++g) {
                const auto& vp = calls[1 + 2 * g];
                const auto& tri = calls[2 + 2 * g];
                EXPECT_EQ(vp.name, "VertexPointer");
                EXPECT_EQ(vp.args, (std::vector<double>{2, 24}));
                EXPECT_EQ(vp.pointer, outline.GetOuterPoints(g));
                EXPECT_EQ(tri.name, c.offset ? "DrawIndexedOffset" : "DrawIndexed");
                EXPECT_EQ(tri.pointer, outline.GetTriangleIndices(g));
                EXPECT_EQ(tri.args[0], outline.GetTriangleIndexCount(g));
                if (c.offset) {
                    EXPECT_EQ(tri.args[1], c.dx);
                    EXPECT_EQ(tri.args[2], c.dy);
                }
            }
            EXPECT_EQ(calls[5].name, "Finish");
        }
        EXPECT_EQ(gReleased, gCreated);
    }
}

TEST_F(DrawFragmentsFake, OnlyUnmappedFragmentCreatesAndBindsButDrawsNothing) {
    {
        CXyR xyr(&CreateRecording, &ReleaseRecording);
        const CFragment list[] = {Fragment(&face, nullptr, 0, 8)};
        xyr.DrawFragments(source, list);
        ASSERT_EQ(gCreated, 1);
        ASSERT_EQ(gLast->Count("Init"), 1u);
        const trtest::Call& init = gLast->calls.front();
        EXPECT_EQ(init.name, "Init");
        EXPECT_EQ(init.pointer, buffer.data());
        EXPECT_EQ(init.args, (std::vector<double>{double(face.subWidth), double(face.subHeight)}));
        for (const char* name : {"SetNibbleMap", "Begin", "DrawIndexed", "VertexPointer"}) {
            EXPECT_EQ(gLast->Count(name), 0u) << name;
        }
        EXPECT_EQ(gReleased, 0);
    }
    EXPECT_EQ(gReleased, 1);
}

TEST_F(DrawFragmentsFake, EmptyListCreatesNothing) {
    {
        CXyR xyr(&CreateRecording, &ReleaseRecording);
        xyr.DrawFragments(source, {});
        EXPECT_EQ(xyr.rasterizer, nullptr);
    }
    EXPECT_EQ(gCreated, 0);
    EXPECT_EQ(gReleased, 0);
}

TEST_F(DrawFragmentsFake, KindsDrawTheirGeometryOverEveryContour) {
    // Three contours: the first group's outer square and hole, the second
    // group's square. Kinds outside 1-9 draw the face.
    struct Case {
        int32_t kind;
        size_t strips;
        size_t triangleDraws;
    };
    const Case cases[] = {{0, 0, 2}, {1, 3, 0}, {2, 3, 0}, {3, 3, 0},  {4, 3, 0},  {5, 3, 0},
                          {6, 6, 0}, {7, 6, 0}, {8, 3, 0}, {9, 3, 0}, {10, 0, 2}, {-1, 0, 2}};
    for (const Case& c : cases) {
        CXyR xyr(&CreateRecording, &ReleaseRecording);
        const CFragment list[] = {Fragment(&face, kFaceMap, c.kind, 6, 5, 0)};
        xyr.DrawFragments(source, list);
        const auto calls = DrawCalls();
        const auto strips = Strips(calls);
        EXPECT_EQ(strips.size(), c.strips) << "kind " << c.kind;
        EXPECT_EQ(gLast->Count("DrawIndexed") + gLast->Count("DrawIndexedOffset"), c.triangleDraws)
            << "kind " << c.kind;
        if (c.kind == 8 || c.kind == 9 || c.kind == 3) {
            // Extrusion of the outer square (first point (0, 0)) moved by w
            // on one axis, along the shadow offset (5, 0).
            ASSERT_FALSE(strips.empty());
            const trtest::Pair& p = strips[0][0];
            EXPECT_EQ(p.ax, c.kind == 9 ? 6.0 : 0.0);
            EXPECT_EQ(p.ay, c.kind == 8 ? 6.0 : 0.0);
            EXPECT_EQ(p.bx, p.ax + 5);
            EXPECT_EQ(p.by, p.ay);
        }
    }
}

TEST_F(DrawFragmentsFake, WideFlagChangesOnlyTheStrokesThemselves) {
    for (const int32_t kind : {1, 2, 4, 5}) {
        std::vector<trtest::Strip> strips[2];
        for (int wide = 0; wide < 2; ++wide) {
            CXyR xyr(&CreateRecording, &ReleaseRecording);
            xyr.wideOutlines = static_cast<uint8_t>(wide);
            const CFragment list[] = {Fragment(&face, kFaceMap, kind, 6, 2, 2)};
            xyr.DrawFragments(source, list);
            strips[wide] = Strips(DrawCalls());
        }
        // Square corners: 8 round-join pairs plain, 1 mitre pair wide, on
        // the side where the corners are convex.
        const bool changes = kind == 1 || kind == 2;
        EXPECT_EQ(strips[0][0].size() != strips[1][0].size() ||
                      strips[0][1].size() != strips[1][1].size(),
                  changes)
            << "kind " << kind;
    }
}

TEST_F(DrawFragmentsFake, MapsLoadInListOrderAndUnmappedFragmentsAreSkipped) {
    CXyR xyr(&CreateRecording, &ReleaseRecording);
    const CFragment list[] = {Fragment(&face, kFaceMap, 0), Fragment(&face, nullptr, 2, 40),
                              Fragment(&face, kBehindMap, 2, 4)};
    xyr.DrawFragments(source, list);
    std::vector<std::vector<double>> maps;
    for (const auto& c : DrawCalls()) {
        if (c.name == "SetNibbleMap") maps.push_back(c.args);
    }
    ASSERT_EQ(maps.size(), 2u);
    EXPECT_EQ(maps[0], std::vector<double>(kFaceMap, kFaceMap + 16));
    EXPECT_EQ(maps[1], std::vector<double>(kBehindMap, kBehindMap + 16));
    EXPECT_EQ(xyr.currentFragment, &list[2]);
    EXPECT_EQ(xyr.strokeWidth, 4.0);
    // Only the mapped stroke draws: 3 contour strips.
    EXPECT_EQ(Strips(DrawCalls()).size(), 3u);
}

TEST_F(DrawFragmentsFake, SameBufferIsBoundOnceAnotherIsBoundAgain) {
    CXyR xyr(&CreateRecording, &ReleaseRecording);
    const CFragment list[] = {Fragment(&face, kFaceMap, 0)};
    xyr.DrawFragments(source, list);
    xyr.DrawFragments(source, list);
    EXPECT_EQ(gLast->Count("Init"), 1u);
    EXPECT_EQ(gLast->Count("Viewport"), 2u);  // the two passes of one set-up
    std::vector<uint16_t> other(4);
    FragmentOutlineSource second = source;
    second.coverage = other.data();
    xyr.DrawFragments(second, list);
    EXPECT_EQ(gLast->Count("Init"), 2u);
    EXPECT_EQ(gLast->Count("Viewport"), 4u);
    EXPECT_EQ(gCreated, 1);
}

// Real coverage: a 100 × 100 square at the outline origin, s = 1, so an
// outline unit is one sub-sample and y turns downward.
class DrawFragmentsReal : public ::testing::Test {
protected:
    void Prepare(double faceX = 0, double faceY = 0) {
        std::list<CContourGroup> groups{trtest::SquareGroup(0, 0, 100)};
        trtest::LoadGroups(outline, groups, 400);
        SetUpFace(face, 0, 0, 100, 100, faceX, faceY);
        map = std::make_unique<trtest::GuardedMap>(face.subWidth, face.subHeight);
        source = {map->Words(), face.subWidth, face.subHeight, &outline};
    }
    // Bounding box of the sub-samples holding value (or any non-zero value
    // when value is 0): {minX, minY, maxX + 1, maxY + 1}, and their count.
    struct Box {
        int x0 = 1 << 30, y0 = 1 << 30, x1 = -1, y1 = -1;
        int count = 0;
    };
    Box Covered(uint32_t value) const {
        Box b;
        for (int y = 0; y < map->H(); ++y) {
            for (int x = 0; x < map->W(); ++x) {
                const uint32_t v = map->At(x, y);
                if (value == 0 ? v == 0 : v != value) continue;
                b.x0 = std::min(b.x0, x);
                b.y0 = std::min(b.y0, y);
                b.x1 = std::max(b.x1, x + 1);
                b.y1 = std::max(b.y1, y + 1);
                ++b.count;
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
        ASSERT_NE(xyr.rasterizer, nullptr);
        // Box 148 sub-samples wide (100 + 48 margin); the origin projects to
        // 24, is moved to the next pixel corner above, 28 (pixel 7), and the
        // face position's fraction adds 4 × fraction sub-samples.
        EXPECT_EQ(face.subWidth, 148);
        EXPECT_EQ(face.originColumn, 7) << faceX;
        EXPECT_EQ(face.originRow, 32) << faceX;  // y: 124 → 128, flipped
        const int shift = static_cast<int>(4 * (faceX - std::floor(faceX)));
        const Box b = Covered(2);
        EXPECT_EQ(b.count, 100 * 100) << faceX;
        EXPECT_EQ(b.x0, 28 + shift) << faceX;
        EXPECT_EQ(b.x1, 128 + shift) << faceX;
        EXPECT_EQ(b.y0, 28);
        EXPECT_EQ(b.y1, 128);
        EXPECT_NEAR(face.origin.x, 7 + shift / 4.0, 1e-9);
        EXPECT_NEAR(face.origin.y, 32, 1e-9);
        EXPECT_TRUE(map->GuardsIntact());
    }
}

TEST_F(DrawFragmentsReal, OutlineOutWidensByTheStrokeWidthWithRoundOrMitredCorners) {
    for (const int wide : {0, 1}) {
        Prepare();
        CXyR xyr;
        xyr.wideOutlines = static_cast<uint8_t>(wide);
        // Width 2 pixels: widthPx 8 sub-samples at s = 1.
        const CFragment list[] = {Fragment(&face, kFaceMap, 0),
                                  Fragment(&face, kBehindMap, 2, 8)};
        xyr.DrawFragments(source, list);
        const Box faceBox = Covered(2);
        EXPECT_EQ(faceBox.count, 100 * 100);  // the stroke only writes behind the face
        const Box all = Covered(0);
        EXPECT_EQ(all.x0, 28 - 8);
        EXPECT_EQ(all.x1, 128 + 8);
        EXPECT_EQ(all.y0, 28 - 8);
        EXPECT_EQ(all.y1, 128 + 8);
        // Sub-sample (21, 21) is 9 sub-samples diagonally off the corner
        // (28, 28) at its centre: outside the round join, inside the mitre.
        EXPECT_EQ(map->At(21, 21), wide ? 3u : 0u) << wide;
        EXPECT_EQ(map->At(25, 25), 3u);
        EXPECT_EQ(map->At(60, 22), 3u);
        EXPECT_TRUE(map->GuardsIntact());
    }
}

// Contours as the outline builder orients them (outer clockwise, holes
// counter-clockwise): the outer outline grows away from the filled area on
// both the outer edge and the hole's edge.
TEST_F(DrawFragmentsReal, BuilderOrientedGlyphIsOutlinedOutsideItsFill) {
    const auto glyph = tr::test::PolygonGlyph(
        {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}, {{30, 30}, {30, 70}, {70, 70}, {70, 30}}});
    std::list<CContourGroup> groups;
    tr::Dispatch(groups, 400, glyph.data(), glyph.size(), OUTLINE_POLYGON_INPUT, 0);
    ASSERT_EQ(groups.size(), 1u);
    ASSERT_EQ(groups.front().holes.size(), 1u);
    trtest::LoadGroups(outline, groups, 400);
    SetUpFace(face, 0, 0, 100, 100);
    map = std::make_unique<trtest::GuardedMap>(face.subWidth, face.subHeight);
    source = {map->Words(), face.subWidth, face.subHeight, &outline};
    CXyR xyr;
    const CFragment list[] = {Fragment(&face, kFaceMap, 0), Fragment(&face, kBehindMap, 2, 8)};
    xyr.DrawFragments(source, list);
    // Outline units to sub-samples: x + 28, 128 − y. Hole: 58..98 both ways.
    EXPECT_EQ(Covered(2).count, 100 * 100 - 40 * 40);
    EXPECT_EQ(map->At(40, 40), 2u);  // fill
    EXPECT_EQ(map->At(24, 70), 3u);  // outside the outer edge, within 8
    EXPECT_EQ(map->At(60, 78), 3u);  // inside the hole, within 8 of its edge
    EXPECT_EQ(map->At(78, 78), 0u);  // the hole's centre stays open
    EXPECT_EQ(map->At(70, 70), 0u);
    EXPECT_TRUE(map->GuardsIntact());
}

TEST_F(DrawFragmentsReal, HostileWidthsAndOffsetsStayInsideTheBuffer) {
    const double inf = std::numeric_limits<double>::infinity();
    const double values[] = {std::nan(""), inf, -inf, 1e300, -1e300, 3e9, -7e5};
    for (int32_t kind = 0; kind <= 10; ++kind) {
        for (const double v : values) {
            Prepare();
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

TEST_F(DrawFragmentsReal, HostileFacePositionAndTaperStayInsideTheBuffer) {
    const double values[] = {std::nan(""), 1e300, -1e300, 2147483647.5};
    for (const double v : values) {
        Prepare(v, -v);
        face.taperH = v;
        face.taperV = -v;
        CXyR xyr;
        const CFragment list[] = {Fragment(&face, kFaceMap, 0),
                                  Fragment(&face, kBehindMap, 2, 8, 3, 3)};
        xyr.DrawFragments(source, list);
        EXPECT_TRUE(map->GuardsIntact()) << v;
    }
}

#if TR_TEST_WITH_GLYPH_SOURCE
// Real glyphs (DejaVu Sans at 64 px through the outline builder) with every
// fragment kind, plain and wide strokes, shadows, constant and general
// maps, and faces slanted, rotated, sheared and tapered: the coverage
// drawn through the rasterizer's default path equals that of its plain
// twin, byte for byte.
CRasterizer* CreatePlainRasterizer() noexcept {
    auto* r = new (std::nothrow) CRasterizer_();
    if (r != nullptr) r->UsePlainKernels(true);
    return r;
}

class DrawFragmentsGlyphs : public ::testing::Test {
protected:
    static constexpr int32_t kPx = 64;

    void SetUp() override {
        source = tr::tools::GlyphSource::Open(tr::tools::kDefaultFont, kPx,
                                              tr::tools::GlyphFormat::CurveRecords);
        if (!source) GTEST_SKIP() << "font not found";
    }

    bool Load(uint16_t code) {
        const OutlineRequest request = tr::MakeOutlineRequest(
            source->Context(), OUTLINE_NO_CACHE, kPx, &tr::tools::GlyphSource::Callback, code,
            0, 0);
        tr::OutlineBuild build = tr::BuildOutline(request);
        trtest::LoadGroups(outline, build.groups, kPx);
        return !outline.IsEmpty();
    }

    // Faces as the character pass sets them up (scale 0.25: an outline
    // unit is a pixel), margins from the fragments' widths and offsets.
    void SetUpFace(CFace& face, std::mt19937& rng, int variant,
                   const std::vector<CFragment>& list) {
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        const bool plainFace = variant % 3 == 0;
        face.pixelRatio = 1.0;
        face.SetUp(&outline, kPx, plainFace ? 1.0 : 1.0 + 0.3 * u(rng),
                   plainFace ? 1.0 : 1.0 + 0.3 * u(rng), plainFace ? 0.0 : 0.3 * u(rng),
                   plainFace ? 0.0 : 0.1 * u(rng), plainFace ? 0.0 : 3.0 * u(rng),
                   100.0 + 10.0 * u(rng), 200.0 + 10.0 * u(rng),
                   variant % 3 == 2 ? 25.0 * u(rng) : 0.0, variant % 3 == 2 ? 25.0 * u(rng) : 0.0,
                   plainFace ? 0.0 : 0.2 * u(rng), plainFace ? 0.0 : 0.2 * u(rng));
        for (const CFragment& f : list) {
            face.marginX = std::fmax(face.marginX, std::fabs(f.shadowOffsetA) + f.widthPx);
            face.marginY = std::fmax(face.marginY, std::fabs(f.shadowOffsetB) + f.widthPx);
        }
        face.Measure();
    }

    std::unique_ptr<tr::tools::GlyphSource> source;
    COutline2 outline;
};

TEST_F(DrawFragmentsGlyphs, DefaultAndPlainRasterizerDrawTheSameCoverage) {
    std::mt19937 rng(64);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    const std::string text = "aB8@gQ%&ew";
    int compared = 0;
    for (const char ch : text) {
        ASSERT_TRUE(Load(static_cast<uint8_t>(ch))) << ch;
        for (int variant = 0; variant < 12; ++variant) {
            // Maps: all constant (a flat title), or constant face over
            // strokes and shadows that only fill what is still empty.
            const bool constant = variant % 2 == 0;
            uint8_t maps[4][16];
            for (int m = 0; m < 4; ++m) {
                for (int v = 0; v < 16; ++v) {
                    maps[m][v] = static_cast<uint8_t>(constant || v == 0 ? m + 2 : v);
                }
            }
            std::vector<CFragment> list;
            auto add = [&](int32_t kind, const uint8_t* map, double width, double a, double b) {
                CFragment f(map, kind, width, 0, 0);
                f.widthPx = width;  // an outline unit is a pixel at this size
                f.shadowOffsetA = a;
                f.shadowOffsetB = b;
                list.push_back(f);
            };
            const double w = 1.0 + 4.0 * (u(rng) + 1.0);
            const int32_t strokeKind = 1 + variant % 2;          // in, out
            const int32_t extraKind = 3 + variant % 7;          // shadows, smears, shifted
            add(extraKind, maps[3], w, 6.0 * u(rng), 6.0 * u(rng));
            add(strokeKind, maps[1], w, 0, 0);
            add(0, maps[0], 0, 0, 0);
            if (variant % 4 == 3) add(0, maps[2], 0, 5.0 * u(rng), -4.0);  // displaced face
            CFace fastFace{nullptr}, plainFace{nullptr};
            std::mt19937 faceRng(rng());
            std::mt19937 sameRng = faceRng;
            SetUpFace(fastFace, faceRng, variant, list);
            SetUpFace(plainFace, sameRng, variant, list);
            trtest::GuardedMap fast(fastFace.subWidth, fastFace.subHeight);
            trtest::GuardedMap plain(plainFace.subWidth, plainFace.subHeight);
            for (auto [face, map, create] :
                 {std::tuple{&fastFace, &fast, &CreateRasterizer},
                  std::tuple{&plainFace, &plain, &CreatePlainRasterizer}}) {
                std::vector<CFragment> own = list;
                for (CFragment& f : own) f.face = face;
                CXyR xyr(create, &ReleaseRasterizer);
                xyr.wideOutlines = static_cast<uint8_t>(variant / 6);
                xyr.DrawFragments({map->Words(), face->subWidth, face->subHeight, &outline}, own);
            }
            ASSERT_TRUE(fast.SameAs(plain)) << "'" << ch << "' variant " << variant;
            ASSERT_TRUE(fast.GuardsIntact());
            int drawn = 0;
            for (int32_t y = 0; y < fast.H(); ++y)
                for (int32_t x = 0; x < fast.W(); ++x) drawn += fast.At(x, y) != 0;
            ASSERT_GT(drawn, 2000) << "'" << ch << "' variant " << variant;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 120);
}
#endif

}  // namespace
