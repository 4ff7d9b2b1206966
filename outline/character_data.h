// outline/character_data.h — folder-private: the character outline block,
// its writer (BuildBlock) and its readers (`CCharacterData`).
//
// The block is flat and position independent, so the caches can store it
// and copy it to disk as is. Little-endian, offsets from the block start,
// every section a multiple of 8 bytes so each point array is 8-aligned:
//
//   0   header (64): minX minY maxX maxY (double), total size (u32),
//       outline size (i32), G = group count (u32), 20-byte metrics record
//   64  group offset table: G u32 offsets, plus one unwritten slot if G odd
//       group records, one per group (32 + 8*H bytes for H holes):
//         0 K triangle indices, 4 index array offset, 8 outer point count,
//         12 outer points offset, 16 H, 20 reserved,
//         24+8j hole j point count, 28+8j hole j points offset,
//         24+8H reserved (8)
//       group data, per group: outer points, hole 0, hole 1 ..., extra
//       vertices (24 bytes each: x, y, z), then K u32 indices (+1 fill slot
//       if K is odd)
//
// Triangle index i of a group addresses the point at outer offset + 24*i.
// The bounding box covers outer and hole points only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>

#include "outline/contour_group.h"
#include "outline/point3d.h"

namespace tr::block {
constexpr std::uint32_t kHeaderSize = 64;
constexpr std::uint32_t kMinXOffset = 0;
constexpr std::uint32_t kMinYOffset = 8;
constexpr std::uint32_t kMaxXOffset = 16;
constexpr std::uint32_t kMaxYOffset = 24;
constexpr std::uint32_t kTotalSizeOffset = 32;
constexpr std::uint32_t kOutlineSizeOffset = 36;
constexpr std::uint32_t kGroupCountOffset = 40;
constexpr std::uint32_t kMetricsOffset = 44;
constexpr std::uint32_t kMetricsSize = 20;
constexpr std::uint32_t kGroupTableOffset = 64;

// Group record fields.
constexpr std::uint32_t kRecordIndexCount = 0;
constexpr std::uint32_t kRecordIndexOffset = 4;
constexpr std::uint32_t kRecordOuterCount = 8;
constexpr std::uint32_t kRecordOuterOffset = 12;
constexpr std::uint32_t kRecordHoleCount = 16;
constexpr std::uint32_t kRecordHoleBase = 24;  // + 8*j: count, + 8*j + 4: offset
constexpr std::uint32_t kRecordFixedSize = 32;
constexpr std::uint32_t kPointSize = 24;

static_assert(kHeaderSize == kMetricsOffset + kMetricsSize, "metrics close the header");
}  // namespace tr::block

class CCharacterData {
public:
    CCharacterData() = default;
    CCharacterData(const CCharacterData&) = delete;
    CCharacterData& operator=(const CCharacterData&) = delete;
    virtual ~CCharacterData();

    // Frees `owned`, clears both pointers and, when the groups give a block
    // larger than the header, allocates and fills one (data = owned = it).
    // metrics points at 20 bytes copied verbatim. Returns false only when
    // the allocation failed or the size does not fit 32 bits.
    bool BuildBlock(const std::list<CContourGroup>& groups, const void* metrics,
                    std::int32_t outlineSize);

    // Readers of `data`; a null `data` is a caller error. Indices are bounded
    // by the counts of the group record (caller's duty).
    std::uint32_t GroupCount() const;
    const std::uint8_t* GroupRecord(std::uint32_t group) const;
    const CPoint3D* OuterPoints(std::uint32_t group) const;
    const CPoint3D* HolePoints(std::uint32_t group, std::uint32_t hole) const;
    const std::uint32_t* TriangleIndices(std::uint32_t group) const;
    std::uint32_t TriangleIndexCount(std::uint32_t group) const;
    double OutlineSize() const;

    const std::uint8_t* data = nullptr;  // block in use, maybe not ours
    std::uint8_t* owned = nullptr;       // block this object allocated (new[])
};

namespace tr {
// Size in bytes of the block the groups give, 64 when there are none;
// 0 when it would not fit 32 bits.
std::uint32_t BlockSize(const std::list<CContourGroup>& groups);

// Little-endian u32 at byte offset of a block (blocks are 8-aligned, the
// offsets of u32 fields 4-aligned).
std::uint32_t ReadBlockU32(const std::uint8_t* block, std::uint32_t offset);
}  // namespace tr
