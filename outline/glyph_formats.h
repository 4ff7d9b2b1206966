// outline/glyph_formats.h — folder-private: readers of the four glyph data
// formats the host's glyph callback may return.
//
// The data come from host code and are not trusted: every read is bounded
// by the length given, a record that does not fit ends the reading (what
// was complete is kept), counts are checked against the bytes that remain
// before anything is reserved, and a contour with a coordinate that is not
// finite or beyond +-kMaxCoordinate is dropped.
//
// 1. Curve records: polygon records {cb u32, type u32 (24), start x, y as
//    FIXED 16.16 (u16 fraction, i16 integer)}, each followed by curve
//    records {type u16: 1 line, 2 quadratic spline, 3 cubic spline; n u16;
//    n FIXED points} filling the polygon's cb bytes.
// 2. Grouped floats: i32 -1, float group count, per group the outer contour
//    (float count, count float x,y pairs), float hole count, per hole a
//    float count and pairs. Counts are truncated.
// 3. Polygons of doubles: 56-byte header, u32 contour count at 8; from 56,
//    per contour an 8-byte header with the u32 point count at 4, then the
//    double x,y pairs.
// 4. Single path: the start point and first curve record (a line) of the
//    first polygon record of format 1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>

#include "outline/contour_group.h"

namespace tr {

constexpr double kMaxCoordinate = 1.0e12;
constexpr std::uint32_t kPolygonRecordType = 24;

// True when the data start with the grouped-float marker FF FF FF FF.
bool IsGroupedFloats(const std::uint8_t* data, std::size_t length);

// Format 1, curves flattened; every point gets z.
std::list<Coutline> ReadCurvePolygons(const std::uint8_t* data, std::size_t length, double z);

// Format 2, straight into groups (z = 0); groups without outer points are
// dropped.
std::list<CContourGroup> ReadGroupedFloats(const std::uint8_t* data, std::size_t length);

// Format 3 (z = 0).
std::list<Coutline> ReadPolygons(const std::uint8_t* data, std::size_t length);

// Format 4; false when there is no leading line record.
bool ReadSinglePath(const std::uint8_t* data, std::size_t length, double z, Coutline& path);

}  // namespace tr
