// Test helper of tests/surface/: a glyph callback answering in the polygon
// format, so tests can render outlines they describe as point lists.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/outline/glyph_data.h"

namespace tr_test {

inline constexpr uint32_t kPolygonInput = 0x200;
using Contours = std::vector<std::vector<tr::test::XY>>;
inline const Contours kSquare = {{{0, 0}, {100, 0}, {100, 100}, {0, 100}}};

// The context is the address of a tr::test::PolygonGlyph vector.
inline int32_t PolygonCallback(uintptr_t context, uint32_t, void*, uint32_t size, void* buffer,
                               const int32_t*) {
    const auto& data = *reinterpret_cast<const std::vector<uint8_t>*>(context);
    if (size == 0 || !buffer) return static_cast<int32_t>(data.size());
    if (size < data.size()) return 0;
    std::memcpy(buffer, data.data(), data.size());
    return static_cast<int32_t>(data.size());
}

} // namespace tr_test
