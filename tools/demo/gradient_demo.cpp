// gradient_demo: renders a few images with the gradient generators through
// the library's C entry points and writes them as PNG files.
//
//   gradient_demo <output folder>   (created if missing)
//
// Files: four_corner_shine.png, classic_linear_repeats.png,
// classic_radial.png, sampled_rotated.png (640 x 360 each).
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "titlerender.h"
#include "tools/png/png_writer.h"

namespace {

constexpr int32_t kWidth = 640;
constexpr int32_t kHeight = 360;

struct Canvas {
    std::vector<uint32_t> pixels = std::vector<uint32_t>(size_t{kWidth} * kHeight);
    ImageBlock block{pixels.data(), kWidth, kHeight, kWidth * 4};
};

// A soft diagonal stripe texture in target coordinates.
uint32_t Stripes(int32_t x, int32_t y, uintptr_t) {
    const bool dark = ((x + y) / 24) % 2 == 0;
    const uint32_t alpha = dark ? 0xFF : 0x60;
    const uint32_t grey = dark ? 0x30 : 0xF0;
    return alpha << 24 | grey << 16 | (grey / 2 + 0x40) << 8 | 0xC0;
}

void FourCornerShine(Canvas& canvas) {
    FourCornerGradientParameters p{};
    p.corners[0] = 0xFFE04020u; // red-orange at the top left
    p.corners[1] = 0xFF20C0F0u; // sky blue
    p.corners[2] = 0xFF103080u; // dark blue
    p.corners[3] = 0xFFF0D040u; // gold
    p.shineWidth = 60.0;
    p.shineColour = 0xFFFFFFFFu;
    p.shineAngle = 0.6;
    p.shinePosition = -0.15;
    FillFourCornerGradient(&canvas.block, &p);
}

void ClassicLinearRepeats(Canvas& canvas) {
    FillSolid(&canvas.block, 0xFF000000u);
    ClassicRecord c{};
    c.radial = 0;
    c.colour1 = 0xFF1830A0u;
    c.colour2 = 0xFFF8E8A0u;
    c.start = 95.0;
    c.end = 5.0;
    c.angle = 0.25; // skew
    c.repeats = 3;
    c.shineWidth = 40.0;
    c.shineColour = 0xFFFFFFFFu;
    c.shineAngle = -0.8;
    c.shinePosition = 0.0;
    // Angle pi/2 runs the linear ramp from top to bottom of the image.
    RenderClassicGradient(&canvas.block, 320.0, 180.0, 180.0, 320.0, 1.5707963267948966, 0.0,
                          0.0, &c, nullptr);
}

void ClassicRadial(Canvas& canvas) {
    ClassicRecord c{};
    c.radial = 1;
    c.colour1 = 0xFFFFF4C0u;
    c.colour2 = 0xFF401060u;
    c.start = 100.0;
    c.end = 0.0;
    c.angle = 0.0;
    RenderClassicGradient(&canvas.block, 320.0, 180.0, 320.0, 320.0, 0.0, 0.0, 0.0, &c, nullptr);
}

void SampledRotated(Canvas& canvas) {
    SampledGradientParameters p{};
    p.angle = 0.35; // extra rotation
    p.corners[0] = 0xFFFF4060u;
    p.corners[1] = 0xFF40FF80u;
    p.corners[2] = 0xFF4060FFu;
    p.corners[3] = 0xA0FFFFFFu;
    p.shineWidth = 30.0;
    p.shineColour = 0xE0FFFFFFu;
    p.shineAngle = 0.4;
    p.shinePosition = 0.2;
    const TextureStyle style{0, 0, 0.35, 0.5, 0.5};
    RenderClassicGradientSampled(&canvas.block, 320.0, 180.0, 250.0, 130.0, 0.0, 0.0, 0.0, &p,
                                 Stripes, &style, 0);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <output folder>\n", argv[0]);
        return 2;
    }
    std::error_code created;
    std::filesystem::create_directories(argv[1], created);
    if (created) {
        std::fprintf(stderr, "gradient_demo: cannot create %s: %s\n", argv[1],
                     created.message().c_str());
        return 1;
    }
    const std::string folder = std::string(argv[1]) + "/";
    const struct {
        const char* file;
        void (*render)(Canvas&);
    } images[] = {
        {"four_corner_shine.png", FourCornerShine},
        {"classic_linear_repeats.png", ClassicLinearRepeats},
        {"classic_radial.png", ClassicRadial},
        {"sampled_rotated.png", SampledRotated},
    };
    int failures = 0;
    for (const auto& image : images) {
        Canvas canvas;
        image.render(canvas);
        std::string error;
        if (!tr::WritePngFile(folder + image.file, canvas.block, error)) {
            std::fprintf(stderr, "gradient_demo: %s\n", error.c_str());
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
