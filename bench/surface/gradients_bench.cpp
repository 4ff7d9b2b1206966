// Throughput of the gradient generators on a 1920 x 1080 image, next to
// memset of the same bytes as the memory-speed yardstick. Counters report
// megapixels per second (items = pixels).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "surface/four_corner_gradient.h"
#include "surface/image_view.h"
#include "titlerender.h"

namespace {

constexpr int32_t kWidth = 1920;
constexpr int32_t kHeight = 1080;
constexpr int64_t kPixels = int64_t{kWidth} * kHeight;

struct Image {
    std::vector<uint32_t> pixels = std::vector<uint32_t>(kPixels);
    ImageBlock block{pixels.data(), kWidth, kHeight, kWidth * 4};
};

void Touch(const Image& image) {
    benchmark::DoNotOptimize(image.pixels.data());
    benchmark::ClobberMemory();
}

void Count(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * kPixels);
}

FourCornerGradientParameters FourCorner(double shineWidth) {
    FourCornerGradientParameters p{};
    p.corners[0] = 0xFFFF0000u;
    p.corners[1] = 0xFF00FF00u;
    p.corners[2] = 0x800000FFu;
    p.corners[3] = 0xFFFFFFFFu;
    p.shineWidth = shineWidth;
    p.shineColour = 0xFFFFFFFFu;
    p.shineAngle = 0.6;
    p.shinePosition = 0.2;
    return p;
}

void BM_Memset(benchmark::State& state) {
    Image image;
    for (auto _ : state) {
        std::memset(image.pixels.data(), 0x5A, kPixels * sizeof(uint32_t));
        Touch(image);
    }
    Count(state);
}
BENCHMARK(BM_Memset);

void BM_FillSolid(benchmark::State& state) {
    Image image;
    for (auto _ : state) {
        FillSolid(&image.block, 0x805A3C1Eu);
        Touch(image);
    }
    Count(state);
}
BENCHMARK(BM_FillSolid);

// Shine width 0 and 200 pixels: the band costs a square root and two
// divisions per pixel inside it.
void BM_FourCorner(benchmark::State& state) {
    Image image;
    const auto p = FourCorner(static_cast<double>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(FillFourCornerGradient(&image.block, &p));
        Touch(image);
    }
    Count(state);
}
BENCHMARK(BM_FourCorner)->Arg(0)->Arg(200)->Unit(benchmark::kMillisecond);

void BM_FourCornerPlain(benchmark::State& state) {
    Image image;
    const auto view = tr::MakeImageView(&image.block);
    const auto p = FourCorner(static_cast<double>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(tr::FillFourCornerGradientPlain(*view, p));
        Touch(image);
    }
    Count(state);
}
BENCHMARK(BM_FourCornerPlain)->Arg(0)->Arg(200)->Unit(benchmark::kMillisecond);

void BM_ClassicGradient(benchmark::State& state) {
    Image image;
    ClassicGradientParameters p{};
    p.radial = static_cast<uint32_t>(state.range(0));
    p.colour1 = 0xFF2040C0u;
    p.colour2 = 0xFFF0E020u;
    p.start = 90.0;
    p.end = 10.0;
    p.angle = 0.3;
    p.repeats = static_cast<uint32_t>(state.range(1));
    p.shineWidth = 100.0;
    p.shineColour = 0xFFFFFFFFu;
    p.shineAngle = 0.5;
    p.shinePosition = 0.1;
    for (auto _ : state) {
        RenderClassicGradient(&image.block, 960.0, 540.0, 960.0, 540.0, 0.2, 0.0, 0.0, &p,
                              nullptr);
        Touch(image);
    }
    Count(state);
}
BENCHMARK(BM_ClassicGradient)
    ->ArgNames({"radial", "repeats"})
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({0, 4})
    ->Unit(benchmark::kMillisecond);

uint32_t Checkerboard(int32_t x, int32_t y, uintptr_t) {
    return ((x ^ y) & 16) != 0 ? 0xFFFFFFFFu : 0x80000000u;
}

void BM_SampledGradient(benchmark::State& state) {
    Image image;
    SampledGradientParameters p{};
    p.angle = 0.4;
    p.corners[0] = 0xFFFF0000u;
    p.corners[1] = 0xFF00FF00u;
    p.corners[2] = 0xFF0000FFu;
    p.corners[3] = 0x80FFFFFFu;
    p.shineWidth = 100.0;
    p.shineColour = 0xC0FFFFFFu;
    p.shineAngle = 0.7;
    const TextureStyle style{0, 0, 0.5, 0.5, 0.5};
    const bool textured = state.range(0) != 0;
    for (auto _ : state) {
        RenderClassicGradientSampled(&image.block, 960.0, 540.0, 700.0, 400.0, 0.1, 0.0, 0.0, &p,
                                     textured ? Checkerboard : nullptr, &style, 0);
        Touch(image);
    }
    Count(state);
}
BENCHMARK(BM_SampledGradient)->ArgName("textured")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
