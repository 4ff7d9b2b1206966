// surface/region.h — a rectangle of the composite with the plans covering it.
#pragma once

#include <cstdint>
#include <vector>

struct RegionRect {
    int32_t x = 0;  // half-open: x <= px < x + width
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
};

struct Region {
    RegionRect rect;
    std::vector<uint32_t> plans;  // plan indices; empty regions take no part
};
