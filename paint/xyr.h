// paint/xyr.h — CXyR, the fragment compositor of one character.
//
// It owns the rasterizer that draws the character's fragment list into the
// coverage buffer, and the character's option bytes that change how outline
// fragments are drawn.
#pragma once

#include <cstdint>

class CRasterizer;
class CFragment;

class CXyR {
public:
    CXyR() = default;
    virtual ~CXyR();
    CXyR(const CXyR&) = delete;
    CXyR& operator=(const CXyR&) = delete;

    CRasterizer* rasterizer = nullptr;  // owned; created on first use
    const CFragment* currentFragment = nullptr;
    double strokeWidth = 0.0;  // pixels
    double shadowOffsetX = 0.0;
    double shadowOffsetY = 0.0;
    uint8_t wideOutlines = 0;  // outline fragments drawn with the wide joins
    uint8_t optionA = 1;       // cleared by character option 0x8000
    uint8_t optionB = 0;       // set by character option 0x200
};
