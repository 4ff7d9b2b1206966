// tests/raster/rasterizer_test_util.h — a rasterizer whose object
// coordinates are screen coordinates (sub-samples), for the raster tests.
#pragma once

#include <memory>

#include "raster/rasterizer.h"

namespace trtest {

struct RasterizerDeleter {
    void operator()(CRasterizer* r) const { ReleaseRasterizer(r); }
};
using RasterizerPtr = std::unique_ptr<CRasterizer, RasterizerDeleter>;

// Viewport (0, 0, 2, 2) gives scale 1 and offset 1; the projection's
// translation by -1 cancels the offset, so dyadic object coordinates reach
// the screen unchanged.
inline void UseScreenSpace(CRasterizer& r) {
    r.Viewport(0, 0, 2, 2);
    r.MatrixMode(kGlProjection);
    r.LoadIdentity();
    r.Translate(-1, -1, 0);
    r.MatrixMode(kGlModelView);
    r.LoadIdentity();
}

inline RasterizerPtr ScreenSpaceRasterizer(uint16_t* map, int32_t w, int32_t h) {
    RasterizerPtr r(CreateRasterizer());
    r->Init(map, 0, w, h, 0);
    UseScreenSpace(*r);
    return r;
}

}  // namespace trtest
