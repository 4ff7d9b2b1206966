// Compositing of one glyph-sized character (64 × 64 coverage pixels, an
// anti-aliased ring with a face and an outline slot) into a 1920 × 1080
// target: the fast compositor next to its plain per-sample twin, and two
// overlapping characters. Items are composited pixels; the "fast_share"
// counter is the fraction of pixels whose footprint is one uniform number.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "paint/compositor.h"
#include "paint/overlap_compositor.h"
#include "paint/painter.h"

namespace {

constexpr int32_t kTargetWidth = 1920;
constexpr int32_t kTargetHeight = 1080;
constexpr int32_t kGlyph = 64;  // coverage width and height, pixels

// Sub-sample (sx, sy) of a ring: face (2) between radii 12 and 24 pixels,
// outline (3) from 24 to 27, uncovered (0) elsewhere.
uint32_t RingNumber(int32_t sx, int32_t sy) {
    const double dx = (sx + 0.5) / 4.0 - kGlyph / 2.0;
    const double dy = (sy + 0.5) / 4.0 - kGlyph / 2.0;
    const double r = std::sqrt(dx * dx + dy * dy);
    if (r >= 12.0 && r < 24.0) return 2;
    if (r >= 24.0 && r < 27.0) return 3;
    return 0;
}

struct Glyph {
    Glyph(std::vector<uint32_t>& target, double x, double y)
        : coverage(size_t(kGlyph) * kGlyph * 4, 0) {
        for (int32_t sy = 0; sy < 4 * kGlyph; ++sy) {
            for (int32_t sx = 0; sx < 4 * kGlyph; ++sx) {
                uint16_t& word =
                    coverage[size_t(sy / 4) * 4 * kGlyph + size_t(sx / 4) * 4 + sy % 4];
                word = static_cast<uint16_t>(word | RingNumber(sx, sy) << (12 - 4 * (sx % 4)));
            }
        }
        painter.SetColor(2, 0xFFE0C020u);
        painter.SetColor(3, 0xC0102040u);
        painter.FillEmptySlotsWithNullColors();
        const PainterRectangle rect{};
        const ShaderPoint quad[4] = {};
        painter.BindTarget(kGlyph, kGlyph, coverage.data(), target.data(), x, y, 0,
                           kTargetWidth * 4, &rect, 0.0, kTargetWidth, kTargetHeight, 1.0, quad,
                           quad, ShaderPoint{});
        painter.PrepareApplicators();
    }
    // The image box inset by 3 pixels, as the plans composite asks for it.
    CompositeRect Inset() const {
        return {painter.GetOriginColumn() + 3, painter.GetOriginRow() + 3, kGlyph - 6, kGlyph - 6};
    }
    std::vector<uint16_t> coverage;
    CPainter painter;
};

// Share of the inset box whose eight footprint words are one uniform number.
double FastShare(const Glyph& g) {
    auto word = [&g](int32_t x, int32_t y, int32_t half) {
        const size_t i = (size_t(y) * kGlyph + x) * 4 + 2 * half;
        return uint32_t(g.coverage[i]) | uint32_t(g.coverage[i + 1]) << 16;
    };
    int64_t uniform = 0, all = 0;
    for (int32_t y = 3; y < kGlyph - 3; ++y) {
        for (int32_t x = 3; x < kGlyph - 3; ++x) {
            const uint32_t w[8] = {word(x, y - 1, 1), word(x, y, 0),     word(x, y, 1),
                                   word(x, y + 1, 0), word(x - 1, y, 0), word(x - 1, y, 1),
                                   word(x + 1, y, 0), word(x + 1, y, 1)};
            bool same = w[1] == (w[1] & 0xF) * 0x11111111u;
            for (uint32_t v : w) same = same && v == w[1];
            uniform += same;
            ++all;
        }
    }
    return double(uniform) / double(all);
}

std::vector<uint32_t> MakeTarget() {
    std::vector<uint32_t> target(size_t(kTargetWidth) * kTargetHeight);
    for (size_t i = 0; i < target.size(); ++i)
        target[i] = 0x80000000u | uint32_t(i * 2654435761u >> 8);
    return target;
}

template <void (*Composite)(CPainter&, const CompositeRect&)>
void BM_OneCharacter(benchmark::State& state) {
    std::vector<uint32_t> target = MakeTarget();
    Glyph glyph(target, 900.25, 500.5);
    const CompositeRect rect = glyph.Inset();
    for (auto _ : state) {
        Composite(glyph.painter, rect);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * rect.width * rect.height);
    state.counters["fast_share"] = FastShare(glyph);
}
BENCHMARK(BM_OneCharacter<CompositeCharacter>)->Name("BM_CompositeCharacter");
BENCHMARK(BM_OneCharacter<CompositeCharacterReference>)->Name("BM_CompositeCharacterReference");

// Two rings overlapping by half their width; the overlap box only.
void BM_TwoCharacters(benchmark::State& state) {
    std::vector<uint32_t> target = MakeTarget();
    Glyph left(target, 900.0, 500.0), right(target, 932.0, 500.0);
    CPainter* painters[2] = {&left.painter, &right.painter};
    const CompositeRect overlap{935, 503, 26, kGlyph - 6};
    for (auto _ : state) {
        CompositeTwoCharacters(painters, overlap, 0);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * overlap.width * overlap.height);
}
BENCHMARK(BM_TwoCharacters);

}  // namespace
