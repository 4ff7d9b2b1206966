// paint/color_applicator.cpp — base behaviour of the applicator interface.
#include "paint/color_applicator.h"

#include "paint/image.h"

WorkingColor UnpackColor(uint32_t packed) {
    WorkingColor c;
    c.c0 = static_cast<float>(packed & 0xFFu);
    c.c1 = static_cast<float>((packed >> 8) & 0xFFu);
    c.c2 = static_cast<float>((packed >> 16) & 0xFFu);
    c.alpha = static_cast<float>(packed >> 24);
    return c;
}

CColorApplicator::~CColorApplicator() { ReleaseLayerImage(layerImage); }

float CColorApplicator::ShadeAt(int32_t, int32_t) { return color.alpha; }
uint32_t CColorApplicator::LayerValueAt(int32_t, int32_t) { return 255; }
int32_t CColorApplicator::GetShiftX() { return 0; }
int32_t CColorApplicator::GetShiftY() { return 0; }
int32_t CColorApplicator::GetLayerOriginX() { return 0; }
int32_t CColorApplicator::GetLayerOriginY() { return 0; }
void CColorApplicator::SetLayerOriginX(int32_t) {}
void CColorApplicator::SetLayerOriginY(int32_t) {}
int32_t CColorApplicator::GetLayerWidth() { return 0; }
int32_t CColorApplicator::GetLayerHeight() { return 0; }
void CColorApplicator::SetLayerWidth(int32_t) {}
void CColorApplicator::SetLayerHeight(int32_t) {}
void CColorApplicator::SetLayerImage(CImage* image) { layerImage = image; }
void CColorApplicator::PrepareForCharacter(int32_t, int32_t, double, double) {}

float CNullColor::ShadeAt(int32_t, int32_t) { return 0.0f; }
