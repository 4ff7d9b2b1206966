// paint/face.h — CFace, the geometry of one character as it will be painted.
//
// The face holds the host's face values, the character's outline, the
// measured image box and the rectangle and quads handed to the painters, and
// it owns the character's CPainter until the rendering pass hands the
// painter to the finished character's plan.
#pragma once

#include <cstdint>

class COutline2;
class CPainter;
class CXyR;

struct FacePoint {
    double x = 0.0;
    double y = 0.0;
};

class CFace {
public:
    // Creates the face with its painter; the painter is null only when
    // memory could not be obtained.
    explicit CFace(CXyR* compositor);
    // Destroys the painter unless it was detached.
    virtual ~CFace();
    CFace(const CFace&) = delete;
    CFace& operator=(const CFace&) = delete;

    // Stores the face values and the outline; with a non-empty outline also
    // the box (centre and half sizes of the outline's bounding box, outline
    // units), the scale s = outline size ÷ size × 0.25 and the quads.
    void SetUp(COutline2* outline, double size, double heightScale, double widthScale,
               double slantA, double slantB, double rotation, double faceX, double faceY,
               double taperH, double taperV, double shearX, double shearY);

    // Computes the image box from the box, margins and face values: slants,
    // scales, shears and rotation widen the box, the margin count adds
    // 8 sub-samples per margin, and the sizes are rounded up to whole
    // pixels. Runs only while the face is dirty, and clears the flag.
    void Measure();

    CPainter* GetPainter() const { return painter; }
    // Gives up ownership of the painter (a plan takes it over, or the
    // surface destroys it); the face no longer reaches it.
    CPainter* DetachPainter() {
        CPainter* p = painter;
        painter = nullptr;
        return p;
    }

    static constexpr int32_t kSubPerPixel = 4;
    static constexpr int32_t kSubPerMargin = 8;

    uint8_t dirty = 1;
    uint8_t hasOutline = 0;  // set up with a non-empty outline
    CPainter* painter = nullptr;  // owned
    CXyR* compositor = nullptr;   // borrowed: the context's fragment compositor
    double size = 0.0;
    double heightScale = 0.0;
    double widthScale = 0.0;
    double slantA = 0.0;
    double slantB = 0.0;
    double taperH = 0.0;
    double taperV = 0.0;
    double rotation = 0.0;
    double shearX = 0.0;
    double shearY = 0.0;
    double faceX = 0.0;
    double faceY = 0.0;
    COutline2* outline = nullptr;  // borrowed
    double pixelRatio = 3.0;
    double scale = 0.0;
    double halfWidth = 0.0;
    double halfHeight = 0.0;
    double centreX = 0.0;
    double centreY = 0.0;
    int32_t imageWidth = 0;  // pixels
    int32_t imageHeight = 0;
    int32_t originColumn = 0;
    int32_t originRow = 0;
    float subWidthExact = 0.0f;  // sub-samples before rounding
    float subHeightExact = 0.0f;
    int32_t subWidth = 0;  // sub-samples, multiples of 4
    int32_t subHeight = 0;
    int32_t marginCount = 6;
    double marginX = 0.0;  // largest fragment extents
    double marginY = 0.0;
    double painterHalfWidth = 0.0;
    double painterHalfHeight = 0.0;
    double painterCentreX = 0.0;
    double painterCentreY = 0.0;
    FacePoint faceExtents[4];
    FacePoint extents[4];
    FacePoint origin;
};
