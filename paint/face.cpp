// paint/face.cpp — CFace lifetime and measuring.
#include "paint/face.h"

#include <cmath>
#include <new>

#include "paint/numeric.h"
#include "paint/painter.h"

CFace::CFace(CXyR* xyr) : painter(new (std::nothrow) CPainter()), compositor(xyr) {}

CFace::~CFace() { delete painter; }

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 2.0 * kPi;

// trunc(size) + margin, rounded up to a multiple of 4 sub-samples. Sizes
// beyond the int32 range saturate (the pass rejects such characters).
int32_t RoundedSubSize(double size, int32_t margin) {
    int64_t whole = static_cast<int64_t>(tr::TruncateToInt32(size)) + margin;
    whole = (whole + 3) / 4 * 4;
    if (whole > INT32_MAX - 3) whole = INT32_MAX / 4 * 4;
    if (whole < 0) whole = 0;
    return static_cast<int32_t>(whole);
}

}  // namespace

void CFace::Measure() {
    if (!dirty) return;
    dirty = 0;
    if (!hasOutline) return;

    double hw = halfWidth + marginX;
    double hh = halfHeight + marginY;
    painterHalfWidth = hw;
    painterHalfHeight = hh;
    double cx = centreX;
    double cy = centreY;

    const double tanSlantA = std::tan(slantA);
    cx = cy * tanSlantA + cx;
    hw = std::fabs(tanSlantA * hh) + hw;

    const double tanSlantB = std::tan(slantB);
    hh = (std::fabs(hw * tanSlantB) + hh) * heightScale;
    cy = (tanSlantB * cx + cy) * heightScale;

    const double tanShearX = std::tan(shearX);
    cx = cx * widthScale + cy * tanShearX;
    hw = std::fabs(tanShearX * hh) + widthScale * hw;

    const double tanShearY = std::tan(shearY);
    cy = cx * tanShearY + cy;
    hh = std::fabs(hw * tanShearY) + hh;

    if (rotation != 0.0) {
        // Half sizes of the bounding rectangle of the rotated box; the angle
        // is folded into [0, π/2] first.
        const double rho = std::sqrt(hw * hw + hh * hh);
        double r = rotation;
        // Host angles are a few turns at most; far larger ones are reduced
        // with fmod first so the stepping below stays short.
        if (std::fabs(r) > 64.0 * kPi) r = std::fmod(r, kTwoPi);
        while (r < 0.0) r += kTwoPi;
        while (r > kTwoPi) r -= kTwoPi;
        if (r > kPi) r -= kPi;
        if (r > kPi / 2.0) r = kPi - r;
        const double alpha = std::atan2(hw, hh);
        hw = std::sin(alpha + r) * rho;
        hh = std::cos(r - alpha) * rho;
    }

    // Sizes in sub-samples; the pixel ratio stretches the width only.
    const double heightSub = hh * 2.0 / scale;
    const double widthSub = hw * 2.0 / scale * pixelRatio;
    const int32_t margin = marginCount * kSubPerMargin;
    subWidth = RoundedSubSize(widthSub, margin);
    subHeight = RoundedSubSize(heightSub, margin);

    // The box grows by the margin, in outline units.
    halfWidth = hw * (margin / widthSub + 1.0);
    halfHeight = hh * (margin / heightSub + 1.0);
    centreX = cx;
    centreY = cy;
    subWidthExact = static_cast<float>(widthSub + margin);
    subHeightExact = static_cast<float>(heightSub + margin);
    imageWidth = subWidth / kSubPerPixel;
    imageHeight = subHeight / kSubPerPixel;
}
