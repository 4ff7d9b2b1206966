// paint/color_applicator.h — CColorApplicator, the base of everything that
// paints a slot of a character, and the two simplest applicators.
//
// The coverage buffer says, per sub-sample, which slot paints it; the
// compositor asks that slot's applicator for a colour and alpha at each
// pixel (`ShadeAt`). The current colour lives in four single-precision
// channels on the 0..255 scale, blue first (the byte order of a pixel);
// `ShadeAt` may rewrite it per pixel and the compositor reads it right after.
#pragma once

#include <cstdint>

#include "titlerender.h"

class CImage;

// Channel order of working colours: the byte order of a packed pixel.
struct WorkingColor {
    float c0 = 255.0f;  // blue
    float c1 = 255.0f;  // green
    float c2 = 255.0f;  // red
    float alpha = 255.0f;
};

// Bytes of a packed colour (bits 0-7 blue ... 24-31 alpha) as floats.
WorkingColor UnpackColor(uint32_t packed);

// Painter rectangle: the character's box in painter pixels.
struct PainterRectangle {
    double halfWidth = 0.0;
    double halfHeight = 0.0;
    double centreX = 0.0;
    double centreY = 0.0;
};

// Rectangle set by the host for one slot (centre in target pixels).
struct ExplicitRectangle {
    double centreX = 0.0;
    double centreY = 0.0;
    double halfWidth = 0.0;
    double halfHeight = 0.0;
    double angle = 0.0;  // radians
};

class CColorApplicator {
public:
    CColorApplicator() = default;
    // Deletes the layer image unless it is borrowed.
    virtual ~CColorApplicator();
    CColorApplicator(const CColorApplicator&) = delete;
    CColorApplicator& operator=(const CColorApplicator&) = delete;

    // Alpha 0..255 at painter pixel (x, y); may first rewrite the colour.
    virtual float ShadeAt(int32_t x, int32_t y);
    // Layer sample 0..255 at (x, y); used to settle ties of joined slots.
    virtual uint32_t LayerValueAt(int32_t x, int32_t y);
    virtual int32_t GetShiftX();
    virtual int32_t GetShiftY();
    virtual int32_t GetLayerOriginX();
    virtual int32_t GetLayerOriginY();
    virtual void SetLayerOriginX(int32_t value);
    virtual void SetLayerOriginY(int32_t value);
    virtual int32_t GetLayerWidth();
    virtual int32_t GetLayerHeight();
    virtual void SetLayerWidth(int32_t value);
    virtual void SetLayerHeight(int32_t value);
    // Stores the image; a previous image is not deleted.
    virtual void SetLayerImage(CImage* image);
    virtual void PrepareForCharacter(int32_t coverageWidth, int32_t coverageHeight, double originX,
                                     double originY);

    // Sets the current colour from a packed colour.
    void SetPackedColor(uint32_t packed) { color = UnpackColor(packed); }
    // Stores the host's rectangle and marks it present.
    void SetExplicitRectangle(const ExplicitRectangle& rectangle) {
        explicitRectangle = rectangle;
        hasExplicitRectangle = 1;
    }

    CImage* layerImage = nullptr;  // owned unless borrowed
    WorkingColor color;            // opaque white until set
    double pixelRatio = 0.0;
    double opacity = 0.0;  // copied from the painter at preparation
    uint8_t hasOwnLayer = 0;
    uint8_t joinsNeighbours = 0;
    PainterRectangle painterRectangle;
    ExplicitRectangle explicitRectangle;
    uint8_t hasExplicitRectangle = 0;
    double ownAngle = 0.0;  // radians
    double sinAngle = 0.0;
    double cosAngle = 0.0;
    int32_t originX = 0;  // floor of the painter position
    int32_t originY = 0;
    uint8_t isStackPainter = 0;
    TextureStyle style{};
};

// Flat colour: the current colour, unchanged.
class CColor final : public CColorApplicator {
public:
    explicit CColor(uint32_t packed) { SetPackedColor(packed); }
};

// Null colour: covers without painting. Channels 0.0, alpha field kept at
// 255.0, but `ShadeAt` reports no alpha.
class CNullColor final : public CColorApplicator {
public:
    CNullColor() { color.c0 = color.c1 = color.c2 = 0.0f; }
    float ShadeAt(int32_t x, int32_t y) override;
};
