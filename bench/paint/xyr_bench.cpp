// Drawing one character's fragment list into its coverage buffer, as the
// character pass does: a fresh CXyR per character (so the transform set-up
// is part of every iteration), a convex 64-gon of radius 200 outline units
// at s = 1 (a glyph about 100 pixels across) with one hole. Fragment lists:
// the face alone; face plus a 3-pixel outer outline (round joins, or mitres
// with the wide flag); and face, outline and their two shadow extrusions.
//
// BM_TitleGlyphs draws real glyphs as a title line does: the 32 glyphs of
// "The quick brown fox jumps over a lazy do" in DejaVu Sans at 64 px, built
// by the outline builder, each with a 3-px outer outline and then its face,
// either with constant maps (every covered sub-sample set, as a flat title
// does) or with maps that only fill sub-samples still empty.
// BM_TitleStrokeOffsets times what an outer outline of those glyphs must
// evaluate before anything is drawn: the sine and cosine of every edge's
// normal (the directions are read from the outline), with the edge count
// per glyph as a counter: the floor under a stroke of this geometry.
// Items are characters.
#include <benchmark/benchmark.h>

#include <cmath>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "outline/character_data.h"
#include "outline/contour_group.h"
#include "outline/outline2.h"
#include "outline/outline_builder.h"
#include "paint/face.h"
#include "paint/xyr.h"
#include "surface/fragment.h"
#include "tools/glyph_source/glyph_source.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr int kSides = 64;

Coutline Polygon(double radius, bool clockwise) {
    Coutline c;
    for (int i = 0; i < kSides; ++i) {
        const double a = 2 * kPi * i / kSides * (clockwise ? -1 : 1);
        c.points.push_back(CPoint3D{200 + radius * std::cos(a), 200 + radius * std::sin(a), 0});
    }
    return c;
}

struct Character {
    Character() {
        CContourGroup g;
        g.outer = Polygon(200, true);
        g.holes.push_back(Polygon(80, false));
        // Ring triangulation between the outer contour (0..63) and the hole
        // (64..127), which runs the other way round.
        for (uint32_t i = 0; i < kSides; ++i) {
            const uint32_t o0 = i, o1 = (i + 1) % kSides;
            const uint32_t h0 = kSides + (kSides - i) % kSides;
            const uint32_t h1 = kSides + (kSides - i - 1) % kSides;
            g.triangles.insert(g.triangles.end(), {o0, o1, h0, o1, h1, h0});
        }
        const uint8_t metrics[20] = {};
        outline.holder.BuildBlock(std::list<CContourGroup>{g}, metrics, 400);
        outline.current = &outline.holder;
        face.hasOutline = 1;
        face.scale = face.widthScale = face.heightScale = face.pixelRatio = 1.0;
        face.centreX = face.centreY = face.painterCentreX = face.painterCentreY = 200;
        face.halfWidth = face.halfHeight = 200 + 12 + 40;  // room for outline and shadow
        face.Measure();
        coverage.resize(static_cast<size_t>(face.subWidth) * face.subHeight / 4);
    }
    COutline2 outline;
    CFace face{nullptr};
    std::vector<uint16_t> coverage;
};

CFragment Fragment(CFace& face, int32_t kind, uint8_t value, double widthPx, double shadow) {
    uint8_t map[16];
    for (int i = 0; i < 16; ++i) map[i] = i == 0 ? value : static_cast<uint8_t>(i);
    CFragment f(map, kind, 0, 0, 0);
    f.face = &face;
    f.widthPx = widthPx;
    f.shadowOffsetA = f.shadowOffsetB = shadow;
    return f;
}

void Run(benchmark::State& state, int fragmentCount, bool wide) {
    Character c;
    const CFragment all[] = {Fragment(c.face, 0, 2, 0, 0), Fragment(c.face, 2, 3, 12, 0),
                             Fragment(c.face, 3, 4, 0, 30), Fragment(c.face, 5, 4, 12, 30)};
    const FragmentOutlineSource source{c.coverage.data(), c.face.subWidth, c.face.subHeight,
                                       &c.outline};
    for (auto _ : state) {
        CXyR xyr;
        xyr.wideOutlines = wide;
        xyr.DrawFragments(source, std::span<const CFragment>(all, fragmentCount));
        benchmark::DoNotOptimize(c.coverage.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_DrawFaceOnly(benchmark::State& s) { Run(s, 1, false); }
void BM_DrawFaceAndOutline(benchmark::State& s) { Run(s, 2, false); }
void BM_DrawFaceAndWideOutline(benchmark::State& s) { Run(s, 2, true); }
void BM_DrawFaceOutlineAndShadows(benchmark::State& s) { Run(s, 4, false); }

constexpr int32_t kGlyphPx = 64;
constexpr double kOutlinePx = 3.0;

// One glyph of the title line, loaded and measured as the character pass
// does it at outline size = face size (a quarter outline unit per
// sub-sample), at a pen position with a fractional part.
struct TitleGlyph {
    TitleGlyph(tr::tools::GlyphSource& source, uint32_t code, double penX) {
        const OutlineRequest request = tr::MakeOutlineRequest(
            source.Context(), OUTLINE_NO_CACHE, kGlyphPx, &tr::tools::GlyphSource::Callback,
            static_cast<uint16_t>(code), 0, 0);
        tr::OutlineBuild build = tr::BuildOutline(request);
        outline.holder.BuildBlock(build.groups, build.metrics, kGlyphPx);
        outline.current = &outline.holder;
        face.pixelRatio = 1.0;
        face.SetUp(&outline, kGlyphPx, 1.0, 1.0, 0, 0, 0, penX, 540.0, 0, 0, 0, 0);
        face.marginX = face.marginY = kOutlinePx;
        face.Measure();
        coverage.resize(static_cast<size_t>(face.subWidth) * face.subHeight / 4);
    }
    COutline2 outline;
    CFace face{nullptr};
    std::vector<uint16_t> coverage;
};

// The 32 glyphs of the title line at pens 37.5 px apart; none (and the
// benchmark skipped) when the font is missing.
std::vector<std::unique_ptr<TitleGlyph>> TitleLine(benchmark::State& state) {
    std::vector<std::unique_ptr<TitleGlyph>> glyphs;
    auto source = tr::tools::GlyphSource::Open(tr::tools::kDefaultFont, kGlyphPx,
                                               tr::tools::GlyphFormat::CurveRecords);
    if (!source) {
        state.SkipWithError("font missing");
        return glyphs;
    }
    const std::string line = "The quick brown fox jumps over a lazy do";
    double pen = 40.25;
    for (const char ch : line) {
        pen += 37.5;
        if (ch != ' ') glyphs.push_back(std::make_unique<TitleGlyph>(*source, uint8_t(ch), pen));
    }
    return glyphs;
}

void BM_TitleGlyphs(benchmark::State& state, bool constantMaps) {
    const auto glyphs = TitleLine(state);
    if (glyphs.empty()) return;
    for (auto _ : state) {
        for (auto& g : glyphs) {
            uint8_t outlineMap[16], faceMap[16];
            for (int i = 0; i < 16; ++i) {
                outlineMap[i] = constantMaps ? 3 : static_cast<uint8_t>(i == 0 ? 3 : i);
                faceMap[i] = constantMaps ? 2 : static_cast<uint8_t>(i == 0 ? 2 : i);
            }
            CFragment list[] = {CFragment(outlineMap, 2, 0, 0, 0), CFragment(faceMap, 0, 0, 0, 0)};
            for (CFragment& f : list) f.face = &g->face;
            list[0].widthPx = kOutlinePx;
            // Built by the outline builder: the edge directions are stored.
            const FragmentOutlineSource src{g->coverage.data(), g->face.subWidth,
                                            g->face.subHeight, &g->outline, true};
            CXyR xyr;
            xyr.DrawFragments(src, list);
            benchmark::DoNotOptimize(g->coverage.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(glyphs.size()));
}

void BM_TitleStrokeOffsets(benchmark::State& state) {
    const auto glyphs = TitleLine(state);
    if (glyphs.empty()) return;
    int64_t edges = 0;
    for (auto _ : state) {
        double sum = 0.0;
        edges = 0;
        for (const auto& g : glyphs) {
            const CCharacterData& block = g->outline.holder;
            for (uint32_t group = 0; group < block.GroupCount(); ++group) {
                const uint8_t* record = block.GroupRecord(group);
                const uint32_t holes = tr::ReadBlockU32(record, tr::block::kRecordHoleCount);
                for (uint32_t c = 0; c <= holes; ++c) {
                    const CPoint3D* p =
                        c == 0 ? block.OuterPoints(group) : block.HolePoints(group, c - 1);
                    const uint32_t n = tr::ReadBlockU32(
                        record, c == 0 ? tr::block::kRecordOuterCount
                                       : tr::block::kRecordHoleBase + 8 * (c - 1));
                    for (uint32_t i = 0; i < n; ++i) {
                        const double angle = p[i].z + kPi / 2;
                        sum += std::cos(angle) + std::sin(angle);
                    }
                    edges += n;
                }
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["edges_per_glyph"] = static_cast<double>(edges) / glyphs.size();
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(glyphs.size()));
}

BENCHMARK(BM_DrawFaceOnly);
BENCHMARK(BM_DrawFaceAndOutline);
BENCHMARK(BM_DrawFaceAndWideOutline);
BENCHMARK(BM_DrawFaceOutlineAndShadows);
BENCHMARK_CAPTURE(BM_TitleGlyphs, ConstantMaps, true);
BENCHMARK_CAPTURE(BM_TitleGlyphs, FillEmptyMaps, false);
BENCHMARK(BM_TitleStrokeOffsets);

}  // namespace
