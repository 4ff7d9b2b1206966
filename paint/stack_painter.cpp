// paint/stack_painter.cpp — CStackPainter list handling and shading.
#include "paint/stack_painter.h"

#include "paint/image.h"

CStackPainter::CStackPainter(uint8_t joins) {
    isStackPainter = 1;
    joinsNeighbours = joins;
}

CStackPainter::~CStackPainter() {
    for (int32_t i = 0; i < ownedCount; ++i) owned[i]->Release();
    for (CImage*& image : layers) {
        // Layer 0 may also be the base class's layer image: free it once.
        if (image == layerImage) layerImage = nullptr;
        ReleaseLayerImage(image);
        image = nullptr;
    }
}

void CStackPainter::AddMixer(CShaderMixer* mixer) {
    if (!mixer) return;
    for (int32_t i = 0; i < ownedCount; ++i) {
        if (owned[i] == mixer) return;  // already ours: nothing to add
    }
    if (ownedCount == kMaxMixers) {
        mixer->Release();
        return;
    }
    auto* implementation = dynamic_cast<CShaderMixer_implementation*>(mixer);
    const bool onDemand = implementation && implementation->IsEvaluatedOnDemand();
    if (!onDemand) perPixel[perPixelCount++] = mixer;
    owned[ownedCount++] = mixer;
}

void CStackPainter::SetLayerDescriptor(int32_t layer, const LayerDescriptor& descriptor) {
    if (layer < 0 || layer >= kLayerCount) return;
    descriptors[layer] = descriptor;
}

float CStackPainter::ShadeAt(int32_t x, int32_t y) {
    pixel.x = x;
    pixel.y = y;
    for (int32_t i = 0; i < perPixelCount; ++i) perPixel[i]->Mix();
    const ShaderRegister& result = pixel.registers[0];
    color.c0 = result.c0;
    color.c1 = result.c1;
    color.c2 = result.c2;
    color.alpha = result.alpha;
    return color.alpha;
}

uint32_t CStackPainter::LayerValueAt(int32_t x, int32_t y) {
    const CImage* image = layers[0];
    if (!image || !image->data) return 0;
    return image->SampleAt(x, y);
}

int32_t CStackPainter::GetLayerOriginX() { return layers[0] ? layers[0]->originX : 0; }
int32_t CStackPainter::GetLayerOriginY() { return layers[0] ? layers[0]->originY : 0; }
int32_t CStackPainter::GetLayerWidth() { return layers[0] ? layers[0]->width : 0; }
int32_t CStackPainter::GetLayerHeight() { return layers[0] ? layers[0]->height : 0; }
