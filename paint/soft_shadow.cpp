// paint/soft_shadow.cpp — CSoftShadow parameters and mask accessors.
#include "paint/soft_shadow.h"

#include "paint/image.h"
#include "paint/numeric.h"

CSoftShadow::CSoftShadow(uint8_t knockOutValue, double softnessValue, uint32_t colour,
                         double shiftXValue, float shiftYValue, double extraValue)
    : knockOut(knockOutValue),
      softness(tr::TruncateToInt32(softnessValue)),
      shiftX(shiftXValue),
      shiftY(shiftYValue),
      extra(extraValue) {
    SetPackedColor(colour);
    color.alpha = color.alpha / 255.0f;
    hasOwnLayer = 1;
}

uint32_t CSoftShadow::LayerValueAt(int32_t x, int32_t y) {
    if (!layerImage || !layerImage->data) return 0;
    return layerImage->data[static_cast<int64_t>(layerOriginY + y) * layerWidth + layerOriginX + x];
}

int32_t CSoftShadow::GetShiftX() { return tr::TruncateToInt32(shiftX); }
int32_t CSoftShadow::GetShiftY() { return tr::TruncateToInt32(shiftY); }

void CSoftShadow::PrepareForCharacter(int32_t, int32_t, double, double) {
    color.alpha = color.alpha * static_cast<float>(opacity);
}
