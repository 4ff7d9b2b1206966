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

// Curve records: each Polygon() opens a polygon record whose cb is filled
// in when the next one opens or Data() is called.
class CurveGlyph {
public:
    CurveGlyph& Polygon(XY start) {
        End();
        open_ = bytes_.size();
        for (std::int32_t v : {0, 24, Fixed(start.x), Fixed(start.y)}) Put(bytes_, v);
        return *this;
    }
    CurveGlyph& Record(std::uint16_t type, const std::vector<XY>& points) {  // 1 line, 2 quadratic, 3 cubic
        Put(bytes_, type);
        Put(bytes_, static_cast<std::uint16_t>(points.size()));
        for (const XY& p : points) Put(bytes_, Fixed(p.x)), Put(bytes_, Fixed(p.y));
        return *this;
    }
    std::vector<std::uint8_t> Data() {
        End();
        return bytes_;
    }

private:
    void End() {
        if (open_ >= bytes_.size()) return;
        const auto cb = static_cast<std::uint32_t>(bytes_.size() - open_);
        std::memcpy(bytes_.data() + open_, &cb, 4);
        open_ = ~std::size_t{0};
    }
    std::vector<std::uint8_t> bytes_;
    std::size_t open_ = ~std::size_t{0};
};

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
