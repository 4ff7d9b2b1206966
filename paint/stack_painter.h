// paint/stack_painter.h — CStackPainter, an applicator that shades through
// an ordered list of shader primitives and owns up to four layer images.
#pragma once

#include <cstdint>

#include "paint/color_applicator.h"
#include "paint/shader_mixer.h"
#include "titlerender.h"

class CStackPainter final : public CColorApplicator {
public:
    static constexpr int kMaxMixers = 32;
    static constexpr int kLayerCount = 4;

    explicit CStackPainter(uint8_t joins);
    // Releases every owned primitive and the layer images (unless borrowed).
    ~CStackPainter() override;

    float ShadeAt(int32_t x, int32_t y) override;
    uint32_t LayerValueAt(int32_t x, int32_t y) override;
    int32_t GetShiftX() override { return shiftX; }
    int32_t GetShiftY() override { return shiftY; }
    int32_t GetLayerOriginX() override;
    int32_t GetLayerOriginY() override;
    int32_t GetLayerWidth() override;
    int32_t GetLayerHeight() override;

    // Takes ownership of the primitive. Primitives flagged evaluated-on-demand
    // are owned but not run per pixel. With 32 primitives owned, a further
    // one is released at once (the list cannot grow).
    void AddMixer(CShaderMixer* mixer);
    // Copies a host layer descriptor; layers outside 0-3 are ignored.
    void SetLayerDescriptor(int32_t layer, const LayerDescriptor& descriptor);

    int32_t GetMixerCount() const { return ownedCount; }
    int32_t GetPerPixelCount() const { return perPixelCount; }
    const LayerDescriptor& GetLayerDescriptor(int32_t layer) const { return descriptors[layer]; }
    ShaderPixel& GetPixelRecord() { return pixel; }

    CShaderMixer* owned[kMaxMixers] = {};
    int32_t ownedCount = 0;
    CShaderMixer* perPixel[kMaxMixers] = {};
    int32_t perPixelCount = 0;
    ShaderPixel pixel;
    CImage* layers[kLayerCount] = {};
    LayerDescriptor descriptors[kLayerCount] = {};
    int32_t shiftX = 0;
    int32_t shiftY = 0;
};
