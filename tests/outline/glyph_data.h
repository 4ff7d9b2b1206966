// tests/outline/glyph_data.h — test-private: writers of glyph data in the
// curve-record and polygon formats, byte by byte from the format layouts.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tr::test {

struct XY {
    double x, y;
};

template <typename T>
void Put(std::vector<std::uint8_t>& out, T v) {
    const std::size_t at = out.size();
    out.resize(at + sizeof(T));
    std::memcpy(out.data() + at, &v, sizeof(T));
}

// FIXED 16.16: u16 fraction, i16 integer, i.e. the 32-bit value v * 65536.
inline std::int32_t Fixed(double v) { return static_cast<std::int32_t>(std::lround(v * 65536.0)); }

struct CurveRecord {
    std::uint16_t type;  // 1 line, 2 quadratic, 3 cubic
    std::vector<XY> points;
};

// One polygon record of the curve-record format: {cb, 24, start} and the
// curve records.
inline std::vector<std::uint8_t> CurvePolygon(XY start, const std::vector<CurveRecord>& records) {
    std::vector<std::uint8_t> b;
    for (std::int32_t v : {0, 24, Fixed(start.x), Fixed(start.y)}) Put(b, v);
    for (const CurveRecord& r : records) {
        Put(b, r.type);
        Put(b, static_cast<std::uint16_t>(r.points.size()));
        for (const XY& p : r.points) Put(b, Fixed(p.x)), Put(b, Fixed(p.y));
    }
    const auto cb = static_cast<std::uint32_t>(b.size());
    std::memcpy(b.data(), &cb, 4);
    return b;
}

// Polygons of doubles: 56-byte header with the contour count at 8 (or
// countOverride when non-zero), then per contour {0, n} and n x,y pairs.
inline std::vector<std::uint8_t> PolygonGlyph(const std::vector<std::vector<XY>>& contours,
                                              std::uint32_t countOverride = 0) {
    std::vector<std::uint8_t> b(56, 0);
    const auto count = countOverride ? countOverride : static_cast<std::uint32_t>(contours.size());
    std::memcpy(b.data() + 8, &count, 4);
    for (const auto& c : contours) {
        Put<std::uint32_t>(b, 0);
        Put(b, static_cast<std::uint32_t>(c.size()));
        for (const XY& p : c) Put(b, p.x), Put(b, p.y);
    }
    return b;
}

}  // namespace tr::test
