// Four-corner gradient fill with a shine band, in double precision.
//
// Terminology: W, H image size; diag = sqrt(W^2 + H^2); corner i has colour
// C_i at (0, 0), (W, 0), (W, H), (0, H); d_i is the distance of pixel (x, y)
// to corner i and w_i = (1 - d_i / diag)^4 its weight. Each channel is
// trunc(sum C_i w_i / sum w_i), summed in corner order. The shine (see
// shine_shaping.h) then pulls c0, c1, c2 towards the shine colour and
// truncates again; alpha keeps the gradient's value.
//
// The plain path evaluates all of that per pixel: four square roots and
// nine divisions before the shine. The fast path produces the same bits
// with less work by noting that every weight is one function of two
// integers, f(a, b) = (1 - sqrt(a^2 + b^2) / diag)^4:
//
//      w0 = f(x, y)   w1 = f(W - x, y)   w2 = f(W - x, H - y)   w3 = f(x, H - y)
//
// so a row needs only the tables f(., y) and f(., H - y) (W + 1 entries
// each), and rows y and H - y use the same two tables swapped. Shine terms
// split the same way: (py - b) / t depends on the row only, px * t + b on
// the column only. Each table entry is computed by the very expression the
// plain path uses, in the same order, so the results are bit-identical (a
// test compares both paths on many sizes and parameters). Most pixels lie
// well outside the shine band; a bound (s >= min(hd, vd) / sqrt 2) proves
// that without the square root and division of the exact distance.
#include "surface/four_corner_gradient.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <new>
#include <vector>

#include "surface/gradient_pixel.h"
#include "surface/shine_shaping.h"

namespace tr {
namespace {

constexpr int kCorners = 4;
constexpr int kColourChannels = 3; // c0, c1, c2: the channels the shine touches
constexpr uint32_t kChannelLimit = 255;

struct FourCornerSetup {
    double width = 0;
    double height = 0;
    double diagonal = 0;
    double corner[kCorners][kChannels] = {}; // corner i, channel c
    bool shine = false;                       // shine width > 0
    double shineWidth = 0;
    double shineChannel[kColourChannels] = {};
    ShineLine<double> line;
};

FourCornerSetup MakeSetup(const ImageView& image, const FourCornerGradientParameters& parameters) {
    FourCornerSetup setup;
    setup.width = image.width;
    setup.height = image.height;
    // The integer sum, converted once; int64 cannot overflow (< 2^63).
    const int64_t sumSquares =
        int64_t{image.width} * image.width + int64_t{image.height} * image.height;
    setup.diagonal = std::sqrt(static_cast<double>(sumSquares));
    for (int i = 0; i < kCorners; ++i) {
        for (int c = 0; c < kChannels; ++c) {
            setup.corner[i][c] = ChannelOf(parameters.corners[i], c);
        }
    }
    // s >= 0 (or NaN), so "width > s" can only hold for a positive width.
    setup.shineWidth = parameters.shineWidth;
    setup.shine = setup.shineWidth > 0.0;
    for (int c = 0; c < kColourChannels; ++c) {
        setup.shineChannel[c] = ChannelOf(parameters.shineColour, c);
    }
    setup.line = ShineLine<double>::Make(LimitShineAngle(parameters.shineAngle), setup.width,
                                         setup.height, setup.diagonal, parameters.shinePosition);
    return setup;
}

double CornerWeight(double a, double b, double diagonal) {
    const double v = 1.0 - std::sqrt(a * a + b * b) / diagonal;
    const double v2 = v * v;
    return v2 * v2;
}

// trunc(sum C_i w_i / sum w_i) per channel. The quotient lies in
// [0, 255 * (1 + 4 eps)], so it truncates to 0..255.
void MixCorners(const FourCornerSetup& setup, const double (&weight)[kCorners],
                uint32_t (&channel)[kChannels]) {
    const double sum = weight[0] + weight[1] + weight[2] + weight[3];
    for (int c = 0; c < kChannels; ++c) {
        const double numerator = setup.corner[0][c] * weight[0] + setup.corner[1][c] * weight[1] +
                                 setup.corner[2][c] * weight[2] + setup.corner[3][c] * weight[3];
        channel[c] = static_cast<uint32_t>(numerator / sum);
    }
}

// Applies the shine to c0..c2 of a pixel whose shifted point is at
// distances hd, vd from the line.
void ApplyShine(const FourCornerSetup& setup, double hd, double vd,
                uint32_t (&channel)[kChannels]) {
    const double s = PerpendicularDistance(hd, vd);
    if (!(setup.shineWidth > s)) {
        return;
    }
    const double k = ShineFactor(s / setup.shineWidth);
    for (int c = 0; c < kColourChannels; ++c) {
        channel[c] =
            static_cast<uint32_t>(channel[c] * k + setup.shineChannel[c] * (1.0 - k));
    }
}

uint32_t PackLimited(const uint32_t (&channel)[kChannels]) {
    uint32_t pixel = 0;
    for (int c = kChannels - 1; c >= 0; --c) {
        pixel = (pixel << kChannelBits) | std::min(channel[c], kChannelLimit);
    }
    return pixel;
}

void UnpackChannels(uint32_t pixel, uint32_t (&channel)[kChannels]) {
    for (int c = 0; c < kChannels; ++c) {
        channel[c] = ChannelOf(pixel, c);
    }
}

// ---------------------------------------------------------------- plain ---

uint32_t PlainPixel(const FourCornerSetup& setup, int32_t xPx, int32_t yPx) {
    const double x = xPx;
    const double y = yPx;
    const double fromRight = setup.width - x;
    const double fromBottom = setup.height - y;
    const double weight[kCorners] = {
        CornerWeight(x, y, setup.diagonal), CornerWeight(fromRight, y, setup.diagonal),
        CornerWeight(fromRight, fromBottom, setup.diagonal),
        CornerWeight(x, fromBottom, setup.diagonal)};
    uint32_t channel[kChannels];
    MixCorners(setup, weight, channel);
    if (setup.shine) {
        const double px = x + setup.line.dx;
        const double py = y + setup.line.dy;
        ApplyShine(setup, setup.line.HorizontalDistance(px, py),
                   setup.line.VerticalDistance(px, py), channel);
    }
    return PackLimited(channel);
}

// ----------------------------------------------------------------- fast ---

// Per-column terms of the shine, computed once per image.
struct ShineColumns {
    std::vector<double> px;       // x + dx
    std::vector<double> vertical; // px * t + b
};

class CFourCornerRows {
public:
    CFourCornerRows(const ImageView& image, const FourCornerSetup& setup)
        : image_(image), setup_(setup), tableA_(image.width + size_t{1}),
          tableB_(image.width + size_t{1}) {
        if (setup.shine) {
            columns_.px.resize(image.width);
            columns_.vertical.resize(image.width);
            for (int32_t x = 0; x < image.width; ++x) {
                columns_.px[x] = x + setup.line.dx;
                columns_.vertical[x] = columns_.px[x] * setup.line.slope + setup.line.offset;
            }
        }
        // The shine skip bound is only trusted where hd * vd cannot underflow
        // and hd^2 + vd^2 cannot overflow.
        canSkip_ = setup.shineWidth >= 1e-100 && setup.shineWidth <= 1e100;
        skipBeyond_ = setup.shineWidth * 1.5;
    }

    void Run() {
        const int32_t h = image_.height;
        FillTable(0, tableA_);
        FillTable(h, tableB_);
        RenderRow(0, tableA_, tableB_);
        for (int32_t y = 1; y <= h / 2; ++y) {
            FillTable(y, tableA_);
            FillTable(h - y, tableB_);
            RenderRow(y, tableA_, tableB_);
            if (h - y != y) {
                RenderRow(h - y, tableB_, tableA_);
            }
        }
    }

private:
    // table[a] = f(a, b) for a = 0..W.
    void FillTable(int32_t bPx, std::vector<double>& table) const {
        const double b = bPx;
        for (int32_t a = 0; a <= image_.width; ++a) {
            table[a] = CornerWeight(static_cast<double>(a), b, setup_.diagonal);
        }
    }

    // `top` holds f(., y), `bottom` f(., H - y).
    void RenderRow(int32_t yPx, const std::vector<double>& top,
                   const std::vector<double>& bottom) const {
        const int32_t w = image_.width;
        uint32_t* row = image_.Row(yPx);
        for (int32_t x = 0; x < w; ++x) {
            const double weight[kCorners] = {top[x], top[w - x], bottom[w - x], bottom[x]};
            uint32_t channel[kChannels];
            MixCorners(setup_, weight, channel);
            row[x] = PackLimited(channel);
        }
        if (setup_.shine) {
            ShineRow(yPx, row);
        }
    }

    void ShineRow(int32_t yPx, uint32_t* row) const {
        const double py = yPx + setup_.line.dy;
        const double horizontal = (py - setup_.line.offset) / setup_.line.slope;
        for (int32_t x = 0; x < image_.width; ++x) {
            const double hd = std::abs(horizontal - columns_.px[x]);
            const double vd = std::abs(columns_.vertical[x] - py);
            // Exact s >= min(hd, vd) / sqrt(2) > 1.06 width, far beyond the
            // few ulps of error in the computed s: certainly outside the band.
            if (canSkip_ && std::min(hd, vd) > skipBeyond_ && std::max(hd, vd) < 1e100) {
                continue;
            }
            uint32_t channel[kChannels];
            UnpackChannels(row[x], channel);
            ApplyShine(setup_, hd, vd, channel);
            row[x] = PackLimited(channel);
        }
    }

    const ImageView& image_;
    const FourCornerSetup& setup_;
    std::vector<double> tableA_;
    std::vector<double> tableB_;
    ShineColumns columns_;
    bool canSkip_ = false;
    double skipBeyond_ = 0;
};

} // namespace

uint32_t FillFourCornerGradientPlain(const ImageView& image,
                                     const FourCornerGradientParameters& parameters) {
    const FourCornerSetup setup = MakeSetup(image, parameters);
    for (int32_t y = 0; y < image.height; ++y) {
        uint32_t* row = image.Row(y);
        for (int32_t x = 0; x < image.width; ++x) {
            row[x] = PlainPixel(setup, x, y);
        }
    }
    return static_cast<uint32_t>(image.height);
}

uint32_t FillFourCornerGradientImage(const ImageView& image,
                                     const FourCornerGradientParameters& parameters) {
    const FourCornerSetup setup = MakeSetup(image, parameters);
    try {
        CFourCornerRows rows(image, setup);
        rows.Run();
        return static_cast<uint32_t>(image.height);
    } catch (const std::bad_alloc&) {
        // No room for the row tables (nothing has been written yet): the
        // plain path needs no memory and gives the same pixels.
        return FillFourCornerGradientPlain(image, parameters);
    }
}

} // namespace tr
