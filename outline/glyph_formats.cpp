// outline/glyph_formats.cpp — bounded readers of the glyph data formats.
//
// All reads go through GlyphReader, which knows the bytes left and fails
// instead of reading past them. Curve records are flattened as they are
// read (curve_flattening.h); the current point of a curve is the last point
// appended to the contour so far.
#include "outline/glyph_formats.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "outline/curve_flattening.h"

namespace tr {
namespace {

constexpr std::size_t kPolygonHeaderSize = 16;
constexpr std::size_t kCurveHeaderSize = 4;
constexpr std::size_t kFixedPointSize = 8;
constexpr std::size_t kPolygonsHeaderSize = 56;
constexpr std::size_t kPolygonsCountOffset = 8;
constexpr double kFixedScale = 65536.0;

enum : std::uint16_t { kLineRecord = 1, kQuadraticRecord = 2, kCubicRecord = 3 };

class GlyphReader {
public:
    GlyphReader(const std::uint8_t* data, std::size_t length) : data_(data), length_(length) {}

    std::size_t Left() const { return length_ - offset_; }
    bool Has(std::size_t bytes) const { return bytes <= Left(); }

    template <typename T>
    bool Read(T& value) {
        if (!Has(sizeof(T))) return false;
        std::memcpy(&value, data_ + offset_, sizeof(T));
        offset_ += sizeof(T);
        return true;
    }
    bool Skip(std::size_t bytes) {
        if (!Has(bytes)) return false;
        offset_ += bytes;
        return true;
    }

private:
    const std::uint8_t* data_;
    std::size_t length_;
    std::size_t offset_ = 0;
};

bool Valid(double v) { return std::isfinite(v) && std::fabs(v) <= kMaxCoordinate; }

// FIXED: u16 fraction, then i16 integer part.
double FixedAt(const std::uint8_t* p) {
    std::uint16_t fraction;
    std::int16_t integer;
    std::memcpy(&fraction, p, 2);
    std::memcpy(&integer, p + 2, 2);
    return static_cast<double>(integer) + static_cast<double>(fraction) / kFixedScale;
}

Point2 FixedPoint(const std::uint8_t* p) { return Point2{FixedAt(p), FixedAt(p + 4)}; }

Point2 Current(const std::list<CPoint3D>& points) { return Point2{points.back().x, points.back().y}; }

Point2 Midpoint(Point2 a, Point2 b) { return Point2{(a.x + b.x) / 2.0, (a.y + b.y) / 2.0}; }

// Quadratic spline q1 .. qn: n-1 pieces, piece k with control qk ending at
// the midpoint of qk and qk+1, the last one at qn.
void AppendQuadraticSpline(std::list<CPoint3D>& out, const std::uint8_t* q, std::size_t n, double z) {
    for (std::size_t k = 0; k + 1 < n; ++k) {
        const Point2 control = FixedPoint(q + k * kFixedPointSize);
        const Point2 next = FixedPoint(q + (k + 1) * kFixedPointSize);
        const Point2 end = k + 2 < n ? Midpoint(control, next) : next;
        AppendQuadraticPiece(out, Current(out), control, end, z);
    }
}

// Reads the curve records of one polygon, data[begin, end).
void ReadCurveRecords(const std::uint8_t* data, std::size_t begin, std::size_t end, double z,
                      Coutline& contour) {
    std::size_t pos = begin;
    while (end - pos >= kCurveHeaderSize) {
        std::uint16_t type;
        std::uint16_t n;
        std::memcpy(&type, data + pos, 2);
        std::memcpy(&n, data + pos + 2, 2);
        const std::uint8_t* points = data + pos + kCurveHeaderSize;
        const std::size_t bytes = kCurveHeaderSize + n * kFixedPointSize;
        if (bytes > end - pos) return;  // truncated record
        pos += bytes;
        auto& out = contour.points;
        if (type == kLineRecord) {
            for (std::size_t i = 0; i < n; ++i) {
                const Point2 p = FixedPoint(points + i * kFixedPointSize);
                out.push_back(CPoint3D{p.x, p.y, z});
            }
        } else if (type == kCubicRecord) {
            for (std::size_t i = 0; i + 3 <= n; i += 3) {
                const std::uint8_t* c = points + i * kFixedPointSize;
                AppendCubic(out, Current(out), FixedPoint(c), FixedPoint(c + kFixedPointSize),
                            FixedPoint(c + 2 * kFixedPointSize), z);
            }
        } else if (type == kQuadraticRecord && n > 0) {
            AppendQuadraticSpline(out, points, n, z);
            // qn closes the spline only when a line or cubic record follows.
            std::uint16_t nextType = 0;
            if (end - pos >= kCurveHeaderSize) std::memcpy(&nextType, data + pos, 2);
            if (nextType == kLineRecord || nextType == kCubicRecord) {
                const Point2 qn = FixedPoint(points + (n - 1) * kFixedPointSize);
                out.push_back(CPoint3D{qn.x, qn.y, z});
            }
        }
    }
}

// Reads count (x, y) pairs of T into contour; false on missing bytes.
template <typename T>
bool ReadPairs(GlyphReader& reader, std::size_t count, Coutline& contour, bool& valid) {
    if (count > reader.Left() / (2 * sizeof(T))) return false;
    for (std::size_t i = 0; i < count; ++i) {
        T x, y;
        reader.Read(x);
        reader.Read(y);
        const double dx = static_cast<double>(x);
        const double dy = static_cast<double>(y);
        valid = valid && Valid(dx) && Valid(dy);
        contour.points.push_back(CPoint3D{dx, dy, 0.0});
    }
    return true;
}

// A float count truncated toward zero; false for NaN, negative or (unless
// it only bounds a loop whose reads are checked, clampToLimit) more than the
// data could hold.
bool ReadFloatCount(GlyphReader& reader, std::size_t limit, std::size_t& count,
                    bool clampToLimit = false) {
    float f;
    if (!reader.Read(f)) return false;
    if (!(f > -1.0f)) return false;
    if (!(f < static_cast<float>(limit) + 1.0f)) {
        if (!clampToLimit) return false;
        count = limit;
        return true;
    }
    count = f < 1.0f ? 0 : static_cast<std::size_t>(f);
    return count <= limit;
}

bool ReadFloatContour(GlyphReader& reader, Coutline& contour, bool& valid) {
    std::size_t count;
    if (!ReadFloatCount(reader, reader.Left() / 8, count)) return false;
    return ReadPairs<float>(reader, count, contour, valid);
}

}  // namespace

bool IsGroupedFloats(const std::uint8_t* data, std::size_t length) {
    std::int32_t marker;
    if (length < sizeof marker) return false;
    std::memcpy(&marker, data, sizeof marker);
    return marker == -1;
}

std::list<Coutline> ReadCurvePolygons(const std::uint8_t* data, std::size_t length, double z) {
    std::list<Coutline> contours;
    std::size_t offset = 0;
    while (length - offset >= kPolygonHeaderSize) {
        std::uint32_t cb;
        std::uint32_t type;
        std::memcpy(&cb, data + offset, 4);
        std::memcpy(&type, data + offset + 4, 4);
        if (cb < kPolygonHeaderSize || cb > length - offset) break;  // 0 or past the end
        const std::size_t end = offset + cb;
        if (type == kPolygonRecordType) {
            Coutline& contour = contours.emplace_back();
            const Point2 start = FixedPoint(data + offset + 8);
            contour.points.push_back(CPoint3D{start.x, start.y, z});
            ReadCurveRecords(data, offset + kPolygonHeaderSize, end, z, contour);
        }
        offset = end;
    }
    return contours;
}

std::list<CContourGroup> ReadGroupedFloats(const std::uint8_t* data, std::size_t length) {
    std::list<CContourGroup> groups;
    GlyphReader reader(data, length);
    std::size_t groupCount;
    if (!reader.Skip(4) || !ReadFloatCount(reader, reader.Left() / 8, groupCount, true)) return groups;
    for (std::size_t g = 0; g < groupCount; ++g) {
        CContourGroup group;
        bool outerValid = true;
        if (!ReadFloatContour(reader, group.outer, outerValid)) break;
        std::size_t holeCount;
        bool complete = ReadFloatCount(reader, reader.Left() / 4, holeCount);
        for (std::size_t h = 0; complete && h < holeCount; ++h) {
            Coutline hole;
            bool holeValid = true;
            complete = ReadFloatContour(reader, hole, holeValid);
            if (complete && holeValid) group.holes.push_back(std::move(hole));
        }
        if (outerValid && !group.outer.points.empty()) groups.push_back(std::move(group));
        if (!complete) break;
    }
    return groups;
}

std::list<Coutline> ReadPolygons(const std::uint8_t* data, std::size_t length) {
    std::list<Coutline> contours;
    if (length < kPolygonsHeaderSize) return contours;
    std::uint32_t count;
    std::memcpy(&count, data + kPolygonsCountOffset, sizeof count);
    GlyphReader reader(data + kPolygonsHeaderSize, length - kPolygonsHeaderSize);
    for (std::uint32_t c = 0; c < count; ++c) {
        std::uint32_t header[2];
        if (!reader.Read(header)) break;
        Coutline contour;
        bool valid = true;
        if (!ReadPairs<double>(reader, header[1], contour, valid)) break;
        if (valid) contours.push_back(std::move(contour));
    }
    return contours;
}

bool ReadSinglePath(const std::uint8_t* data, std::size_t length, double z, Coutline& path) {
    if (length < kPolygonHeaderSize + kCurveHeaderSize) return false;
    std::uint32_t cb;
    std::memcpy(&cb, data, 4);
    const std::size_t end = std::min<std::size_t>(cb, length);
    if (end < kPolygonHeaderSize + kCurveHeaderSize) return false;
    std::uint16_t type;
    std::uint16_t n;
    std::memcpy(&type, data + kPolygonHeaderSize, 2);
    std::memcpy(&n, data + kPolygonHeaderSize + 2, 2);
    if (type != kLineRecord) return false;
    const std::size_t available = (end - kPolygonHeaderSize - kCurveHeaderSize) / kFixedPointSize;
    const std::size_t count = std::min<std::size_t>(n, available);  // a truncated run is cut
    const Point2 start = FixedPoint(data + 8);
    path.points.push_back(CPoint3D{start.x, start.y, z});
    const std::uint8_t* points = data + kPolygonHeaderSize + kCurveHeaderSize;
    for (std::size_t i = 0; i < count; ++i) {
        const Point2 p = FixedPoint(points + i * kFixedPointSize);
        path.points.push_back(CPoint3D{p.x, p.y, z});
    }
    return true;
}

}  // namespace tr
