// paint/shader_mixer.h — the shader primitive interface of stack painters.
//
// A stack painter runs an ordered list of primitives per pixel. They share
// one `ShaderPixel` record: the pixel position, sixteen colour registers
// (register 0 is the result) and the target description copied when the
// character is prepared. Primitives flagged evaluated-on-demand do their work
// when bound (or, for the paint markers, when released) and are never run
// per pixel.
#pragma once

#include <cstdint>

class CImage;

struct ShaderRegister {
    float c0 = 0.0f;  // blue
    float c1 = 0.0f;  // green
    float c2 = 0.0f;  // red
    float alpha = 0.0f;
};

struct ShaderPoint {
    double x = 0.0;
    double y = 0.0;
};

// The record a stack painter's primitives read and write; zero at start.
struct ShaderPixel {
    int32_t x = 0;  // pixel being shaded, painter pixel coordinates
    int32_t y = 0;
    ShaderRegister registers[16];
    uint32_t* targetPixels = nullptr;
    int32_t originX = 0;  // floor of the painter position
    int32_t originY = 0;
    int32_t clipWidth = 0;  // the surface's size
    int32_t clipHeight = 0;
    int32_t targetPitch = 0;  // bytes
    double pixelRatio = 0.0;
    const uint16_t* coverage = nullptr;
    int32_t coverageWidth = 0;
    int32_t coverageHeight = 0;
    double painterAngle = 0.0;
    ShaderPoint faceExtents[4];
    ShaderPoint extents[4];
    ShaderPoint origin;
    CImage* layers[4] = {nullptr, nullptr, nullptr, nullptr};
    int32_t shiftX = 0;
    int32_t shiftY = 0;
};

class CShaderMixer {
public:
    virtual ~CShaderMixer() = default;
    virtual void Mix() = 0;
    virtual uint32_t GetFlags() = 0;
    virtual void SetPixelRecord(ShaderPixel* record) = 0;
    // Destroys the primitive (the paint markers draw first).
    virtual void Release() = 0;
    virtual uint32_t ValueAt(int32_t x, int32_t y) = 0;
};

class CShaderMixer_implementation : public CShaderMixer {
public:
    void Mix() override {}
    uint32_t GetFlags() override { return 0; }
    void SetPixelRecord(ShaderPixel* record) override { pixel = record; }
    void Release() override { delete this; }
    uint32_t ValueAt(int32_t, int32_t) override { return 255; }

    bool IsEvaluatedOnDemand() const { return evaluatedOnDemand != 0; }

protected:
    ShaderPixel* pixel = nullptr;  // null until bound
    uint8_t evaluatedOnDemand = 0;
};
