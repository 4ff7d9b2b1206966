// paint/image.h — CImage, a layer image of a painter.
//
// Layer images hold per-pixel samples that an applicator renders before
// compositing (bevel heights, soft-shadow masks, stack layers). The pixel
// data come from the C allocator; an image marked borrowed belongs to
// someone else and is never freed by the applicator that points at it.
#pragma once

#include <cstdint>

class CImage {
public:
    CImage() = default;
    virtual ~CImage();
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;

    // Allocates width × height × bytesPerSample bytes, uninitialised, and
    // sets every field. Returns false (and leaves the image empty) when the
    // size is negative, overflows 32 bits or memory cannot be obtained.
    [[nodiscard]] bool Allocate(int32_t width, int32_t height, uint32_t bytesPerSample,
                                int32_t originX, int32_t originY);

    // Sample (x, y) of a one-byte layer, x and y relative to the painter's
    // pixel (0, 0); the caller keeps them inside the image.
    uint8_t SampleAt(int32_t x, int32_t y) const {
        return data[static_cast<int64_t>(originY + y) * width + originX + x];
    }

    uint8_t* data = nullptr;
    uint32_t size = 0;  // bytes
    int32_t width = 0;
    int32_t height = 0;
    uint8_t borrowed = 0;
    uint32_t bytesPerSample = 1;
    int32_t originX = 0;  // margin between the layer's (0,0) and the painter's (0,0)
    int32_t originY = 0;
};

// Deletes an owned image; leaves a borrowed one alone.
void ReleaseLayerImage(CImage* image);
