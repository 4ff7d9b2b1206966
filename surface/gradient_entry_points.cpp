// C entry points of the gradient generators (ordinals 100, 130, 131, 133).
//
// Each shim validates the host's image block (image_view.h) and parameter
// pointers, then calls the generator. A block that cannot be drawn - null,
// empty, without pixels, or with rows that overlap because |stride| is less
// than 4 * width - is left untouched. No C++ exception crosses this line:
// the generators allocate nothing but the four-corner row tables, whose
// allocation failure they handle themselves. (The definitions carry no
// `noexcept` because the public declarations do not, and C++ requires the
// two to agree.)
#include "surface/classic_gradient.h"
#include "surface/four_corner_gradient.h"
#include "surface/gradient_frame.h"
#include "surface/image_view.h"
#include "surface/sampled_gradient.h"
#include "surface/solid_fill.h"
#include "titlerender.h"

namespace {

tr::GradientPlacement Placement(double x0, double y0, double halfWidth, double halfHeight,
                                double angle, double originX, double originY) {
    tr::GradientPlacement placement;
    placement.x0 = x0;
    placement.y0 = y0;
    placement.halfWidth = halfWidth;
    placement.halfHeight = halfHeight;
    placement.angle = angle;
    placement.originX = originX;
    placement.originY = originY;
    return placement;
}

} // namespace

extern "C" {

TR_API uint32_t FillFourCornerGradient(const ImageBlock* image,
                                       const FourCornerGradientParameters* parameters) {
    if (parameters == nullptr) {
        return 0;
    }
    const tr::ImageStatus status = tr::CheckImage(image);
    if (status == tr::ImageStatus::kEmpty && image->width < 1 && image->height >= 1) {
        // Zero pixels per row: every row is stepped through and "written".
        return static_cast<uint32_t>(image->height);
    }
    const auto view = tr::MakeImageView(image);
    if (!view) {
        return 0;
    }
    return tr::FillFourCornerGradientImage(*view, *parameters);
}

TR_API void FillSolid(const ImageBlock* image, uint32_t colour) {
    if (const auto view = tr::MakeImageView(image)) {
        tr::FillSolidImage(*view, colour);
    }
}

TR_API void RenderClassicGradient(const ImageBlock* image, double x0, double y0,
                                  double halfWidth, double halfHeight, double angle,
                                  double originX, double originY,
                                  const ClassicGradientParameters* parameters,
                                  const TextureRecord* texture) {
    if (parameters == nullptr) {
        return;
    }
    if (const auto view = tr::MakeImageView(image)) {
        tr::RenderClassicGradientImage(
            *view, Placement(x0, y0, halfWidth, halfHeight, angle, originX, originY),
            *parameters, texture);
    }
}

TR_API void RenderClassicGradientSampled(const ImageBlock* image, double x0, double y0,
                                         double halfWidth, double halfHeight, double angle,
                                         double originX, double originY,
                                         const SampledGradientParameters* parameters,
                                         TextureCallback callback, const TextureStyle* style,
                                         uintptr_t userValue) {
    if (parameters == nullptr) {
        return;
    }
    // A missing style block reads as all zero, as for the painters: mix 0
    // and both exponents 0 leave the gradient's colours and alpha.
    const TextureStyle noStyle{};
    if (const auto view = tr::MakeImageView(image)) {
        tr::RenderSampledGradientImage(
            *view, Placement(x0, y0, halfWidth, halfHeight, angle, originX, originY),
            *parameters, callback, style != nullptr ? *style : noStyle, userValue);
    }
}

} // extern "C"
