// paint/image.cpp — CImage allocation and release.
#include "paint/image.h"

#include <cstdlib>

CImage::~CImage() { std::free(data); }

bool CImage::Allocate(int32_t w, int32_t h, uint32_t b, int32_t ox, int32_t oy) {
    std::free(data);
    data = nullptr;
    size = 0;
    width = height = 0;
    if (w < 0 || h < 0 || b == 0) return false;
    const uint64_t bytes = static_cast<uint64_t>(w) * static_cast<uint64_t>(h) * b;
    if (bytes > UINT32_MAX) return false;
    auto* p = static_cast<uint8_t*>(std::malloc(bytes ? bytes : 1));
    if (!p) return false;
    data = p;
    size = static_cast<uint32_t>(bytes);
    width = w;
    height = h;
    bytesPerSample = b;
    originX = ox;
    originY = oy;
    return true;
}

void ReleaseLayerImage(CImage* image) {
    if (image && !image->borrowed) delete image;
}
