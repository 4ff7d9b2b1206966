// paint/xyr.h — CXyR, the fragment compositor of one character.
//
// It owns the rasterizer that draws the character's fragment list into the
// coverage buffer, and the character's option bytes that change how outline
// fragments are drawn. On its first drawing it binds the coverage buffer and
// sets up the transform from outline units to coverage sub-samples from the
// character's face; that set-up also fixes the face's origin pixel and
// projects the rectangle and quads the painters read.
#pragma once

#include <cstdint>
#include <span>

class COutline;
class CRasterizer;
class CFace;
class CFragment;

// What DrawFragments draws from and into: the character's coverage buffer
// (subWidth × subHeight sub-samples, the face's measured sizes, multiples
// of 4; subWidth × subHeight ÷ 2 bytes) and its loaded, non-empty outline.
struct FragmentOutlineSource {
    uint16_t* coverage = nullptr;
    int32_t subWidth = 0;
    int32_t subHeight = 0;
    const COutline* outline = nullptr;
    // True when the outline's z values hold the edge directions the outline
    // builder stores (tr::ContourView::directionsStored); outlines made by
    // hand (tests) leave it false.
    bool edgeDirectionsStored = false;
};

class CXyR {
public:
    using RasterizerFactory = CRasterizer* (*)() noexcept;
    using RasterizerRelease = void (*)(CRasterizer*) noexcept;

    // The factory pair makes the rasterizer on first use and destroys it
    // with the compositor; tests pass a recording rasterizer here.
    CXyR() = default;
    CXyR(RasterizerFactory create, RasterizerRelease release)
        : createRasterizer(create), releaseRasterizer(release) {}
    virtual ~CXyR();
    CXyR(const CXyR&) = delete;
    CXyR& operator=(const CXyR&) = delete;

    // Draws every fragment with a nibble map, in list order, into the
    // source's coverage buffer; later fragments rewrite earlier ones through
    // their maps. The first call (and any call with another buffer) creates
    // the rasterizer if needed, binds and clears the buffer, and runs the
    // transform set-up with the first fragment's face, which must be
    // measured. An empty list, a null face or a failed rasterizer
    // allocation draws nothing.
    void DrawFragments(const FragmentOutlineSource& source, std::span<const CFragment> fragments);

    CRasterizer* rasterizer = nullptr;  // owned; created on first use
    const CFragment* currentFragment = nullptr;
    double strokeWidth = 0.0;  // the fragment's widthPx (outline units)
    double shadowOffsetX = 0.0;
    double shadowOffsetY = 0.0;
    uint8_t wideOutlines = 0;  // outline fragments drawn with the wide joins
    uint8_t optionA = 1;       // cleared by character option 0x8000
    uint8_t optionB = 0;       // set by character option 0x200

private:
    // The transform from outline units to coverage sub-samples, and the
    // face's origin pixel, painter rectangle, quads and origin point in
    // coverage pixels (xyr_transform.cpp).
    void SetUpTransform(CFace& face, std::span<const CFragment> fragments);
    void DrawFragment(const FragmentOutlineSource& source, const CFragment& fragment);
    void DrawFaceTriangles(const COutline& outline);

    RasterizerFactory createRasterizer = &CreateRasterizerDefault;
    RasterizerRelease releaseRasterizer = &ReleaseRasterizerDefault;
    const uint16_t* boundCoverage = nullptr;
    int32_t boundWidth = 0;
    int32_t boundHeight = 0;

    static CRasterizer* CreateRasterizerDefault() noexcept;
    static void ReleaseRasterizerDefault(CRasterizer* r) noexcept;
};
