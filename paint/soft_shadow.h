// paint/soft_shadow.h — CSoftShadow, the applicator of painter slot 16.
//
// A character's soft shadow is a blurred copy of its coverage, kept as a
// one-byte mask layer and composited under the characters of its layer. This
// class holds the shadow's colour, softness, shift and the mask geometry;
// the mask is built by the face when the character is finished.
#pragma once

#include <cstdint>

#include "paint/color_applicator.h"

class CSoftShadow final : public CColorApplicator {
public:
    // alpha is kept as a fraction (packed alpha ÷ 255); softness is
    // truncated toward zero (values outside the int32 range saturate).
    CSoftShadow(uint8_t knockOut, double softness, uint32_t colour, double shiftX, float shiftY,
                double extra);

    uint32_t LayerValueAt(int32_t x, int32_t y) override;
    int32_t GetShiftX() override;
    int32_t GetShiftY() override;
    int32_t GetLayerOriginX() override { return layerOriginX; }
    int32_t GetLayerOriginY() override { return layerOriginY; }
    void SetLayerOriginX(int32_t value) override { layerOriginX = value; }
    void SetLayerOriginY(int32_t value) override { layerOriginY = value; }
    int32_t GetLayerWidth() override { return layerWidth; }
    int32_t GetLayerHeight() override { return layerHeight; }
    void SetLayerWidth(int32_t value) override { layerWidth = value; }
    void SetLayerHeight(int32_t value) override { layerHeight = value; }
    // Scales the stored alpha by the painter's opacity (single precision).
    void PrepareForCharacter(int32_t coverageWidth, int32_t coverageHeight, double originX,
                             double originY) override;

    uint8_t knockOut = 0;
    int32_t softness = 0;  // σ of the blur
    double shiftX = 0.0;
    double shiftY = 0.0;
    double extra = 0.0;
    int32_t layerOriginX = 0;
    int32_t layerOriginY = 0;
    int32_t layerWidth = 0;
    int32_t layerHeight = 0;
};
