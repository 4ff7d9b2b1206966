// Test helper of tests/surface/: a glyph callback answering in the polygon
// format, so tests can render outlines they describe as point lists.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace tr_test {

inline constexpr uint32_t kPolygonInput = 0x200;
using Contours = std::vector<std::vector<double>>;
inline const Contours kSquare = {{0, 0, 100, 0, 100, 100, 0, 100}};

// Polygons of doubles: a 56-byte header with the contour count at offset 8,
// then per contour an 8-byte header with the point count at offset 4 and the
// (x, y) pairs.
inline std::vector<uint8_t> PolygonData(const Contours& contours) {
    std::vector<uint8_t> data(56, 0);
    const uint32_t count = static_cast<uint32_t>(contours.size());
    std::memcpy(data.data() + 8, &count, 4);
    for (const auto& xy : contours) {
        uint8_t header[8] = {};
        const uint32_t points = static_cast<uint32_t>(xy.size() / 2);
        std::memcpy(header + 4, &points, 4);
        data.insert(data.end(), header, header + 8);
        const auto* bytes = reinterpret_cast<const uint8_t*>(xy.data());
        data.insert(data.end(), bytes, bytes + xy.size() * sizeof(double));
    }
    return data;
}

// The context is the address of a PolygonData vector.
inline int32_t PolygonCallback(uintptr_t context, uint32_t, void*, uint32_t size, void* buffer,
                               const int32_t*) {
    const auto& data = *reinterpret_cast<const std::vector<uint8_t>*>(context);
    if (size == 0 || !buffer) return static_cast<int32_t>(data.size());
    if (size < data.size()) return 0;
    std::memcpy(buffer, data.data(), data.size());
    return static_cast<int32_t>(data.size());
}

} // namespace tr_test
