// paint/face.cpp — CFace lifetime and measuring.
#include "paint/face.h"

#include <cmath>
#include <cstring>
#include <new>

#include "outline/outline2.h"
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

void CFace::SetUp(COutline2* outlineValue, double sizeValue, double heightScaleValue,
                  double widthScaleValue, double slantAValue, double slantBValue,
                  double rotationValue, double faceXValue, double faceYValue, double taperHValue,
                  double taperVValue, double shearXValue, double shearYValue) {
    outline = outlineValue;
    size = sizeValue;
    heightScale = heightScaleValue;
    widthScale = widthScaleValue;
    slantA = slantAValue;
    slantB = slantBValue;
    rotation = rotationValue;
    faceX = faceXValue;
    faceY = faceYValue;
    taperH = taperHValue;
    taperV = taperVValue;
    shearX = shearXValue;
    shearY = shearYValue;
    dirty = 1;
    hasOutline = 0;
    if (!outline || outline->IsEmpty()) return;
    hasOutline = 1;

    scale = outline->GetOutlineSize() / size * 0.25;
    // The block header opens with the bounding box: minX, minY, maxX, maxY.
    double box[4];
    std::memcpy(box, outline->GetBlock(), sizeof box);
    const double minX = box[0], minY = box[1], maxX = box[2], maxY = box[3];
    centreX = (minX + maxX) * 0.5;
    halfWidth = (maxX - minX) * 0.5;
    centreY = (minY + maxY) * 0.5;
    halfHeight = (maxY - minY) * 0.5;
    painterCentreX = centreX;
    painterCentreY = centreY;
    faceExtents[0] = {minX, minY};
    faceExtents[1] = {maxX, minY};
    faceExtents[2] = {maxX, maxY};
    faceExtents[3] = {minX, maxY};
    for (int i = 0; i < 4; ++i) extents[i] = faceExtents[i];
}

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
