// tests/outline/glyph_data.h — test-private: writers of glyph data in the
// four formats, byte by byte from the format descriptions.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tr::test {

struct XY {
    double x, y;
};

class Bytes {
public:
    template <typename T>
    Bytes& Put(T v) {
        const std::size_t at = data.size();
        data.resize(at + sizeof(T));
        std::memcpy(data.data() + at, &v, sizeof(T));
        return *this;
    }
    template <typename T>
    void PutAt(std::size_t at, T v) {
        std::memcpy(data.data() + at, &v, sizeof(T));
    }
    std::vector<std::uint8_t> data;
};

// FIXED 16.16: u16 fraction, i16 integer, i.e. the 32-bit value v * 65536.
inline std::int32_t Fixed(double v) { return static_cast<std::int32_t>(std::lround(v * 65536.0)); }

// Format 1: polygons of curve records.
class CurveGlyph {
public:
    CurveGlyph& Polygon(XY start) {
        End();
        open_ = bytes_.data.size();
        bytes_.Put<std::uint32_t>(0).Put<std::uint32_t>(24).Put(Fixed(start.x)).Put(Fixed(start.y));
        return *this;
    }
    CurveGlyph& Record(std::uint16_t type, const std::vector<XY>& points) {
        bytes_.Put(type).Put(static_cast<std::uint16_t>(points.size()));
        for (const XY& p : points) bytes_.Put(Fixed(p.x)).Put(Fixed(p.y));
        return *this;
    }
    std::vector<std::uint8_t> Data() {
        End();
        return bytes_.data;
    }

private:
    void End() {
        if (open_ == kNone) return;
        bytes_.PutAt<std::uint32_t>(open_, static_cast<std::uint32_t>(bytes_.data.size() - open_));
        open_ = kNone;
    }
    static constexpr std::size_t kNone = ~std::size_t{0};
    Bytes bytes_;
    std::size_t open_ = kNone;
};

// Format 3: polygons of doubles.
inline std::vector<std::uint8_t> PolygonGlyph(const std::vector<std::vector<XY>>& contours,
                                              std::uint32_t countOverride = 0) {
    Bytes b;
    for (int i = 0; i < 14; ++i) {
        b.Put<std::uint32_t>(i == 2 ? (countOverride ? countOverride : static_cast<std::uint32_t>(contours.size())) : 0);
    }
    for (const auto& c : contours) {
        b.Put<std::uint32_t>(0).Put<std::uint32_t>(static_cast<std::uint32_t>(c.size()));
        for (const XY& p : c) b.Put(p.x).Put(p.y);
    }
    return b.data;
}

}  // namespace tr::test
