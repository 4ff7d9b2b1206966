// outline/character_data.cpp — writing and reading the character outline
// block. The writer lays the block out in one pass per section; the readers
// only follow the offsets stored in it. The block is zero-filled before it is
// written, so the reserved slots and fill words are deterministic (the disk
// cache writes blocks to files byte for byte).
#include "outline/character_data.h"

#include <cstring>
#include <new>

namespace tr {
namespace {

constexpr std::uint64_t RoundUpEven(std::uint64_t n) { return (n + 1) & ~std::uint64_t{1}; }

std::uint64_t GroupBytes(const CContourGroup& group) {
    std::uint64_t points = group.outer.points.size() + group.extraVertices.points.size();
    for (const Coutline& hole : group.holes) points += hole.points.size();
    return block::kRecordFixedSize + 8 * std::uint64_t{group.holes.size()} +
           block::kPointSize * points + 4 * RoundUpEven(group.triangles.size());
}

void PutU32(std::uint8_t* block, std::uint64_t offset, std::uint64_t value) {
    const auto v = static_cast<std::uint32_t>(value);
    std::memcpy(block + offset, &v, sizeof v);  // x86-64 is little-endian
}

void PutDouble(std::uint8_t* block, std::uint32_t offset, double value) {
    std::memcpy(block + offset, &value, sizeof value);
}

// Appends the points at `cursor`, widening the box; returns the new cursor.
std::uint64_t PutPoints(std::uint8_t* block, std::uint64_t cursor, const Coutline& contour,
                        bool widenBox, bool& seeded, double box[4]) {
    for (const CPoint3D& p : contour.points) {
        std::memcpy(block + cursor, &p, sizeof p);
        cursor += block::kPointSize;
        if (!widenBox) continue;
        if (!seeded) {
            box[0] = box[2] = p.x;
            box[1] = box[3] = p.y;
            seeded = true;
            continue;
        }
        if (p.x < box[0]) box[0] = p.x;
        if (p.y < box[1]) box[1] = p.y;
        if (p.x > box[2]) box[2] = p.x;
        if (p.y > box[3]) box[3] = p.y;
    }
    return cursor;
}

}  // namespace

std::uint32_t BlockSize(const std::list<CContourGroup>& groups) {
    std::uint64_t total = block::kHeaderSize + 4 * RoundUpEven(groups.size());
    for (const CContourGroup& group : groups) total += GroupBytes(group);
    return total > 0xFFFFFFFFu ? 0 : static_cast<std::uint32_t>(total);
}

std::uint32_t ReadBlockU32(const std::uint8_t* block, std::uint32_t offset) {
    std::uint32_t v;
    std::memcpy(&v, block + offset, sizeof v);
    return v;
}

}  // namespace tr

CCharacterData::~CCharacterData() { delete[] owned; }

bool CCharacterData::BuildBlock(const std::list<CContourGroup>& groups, const void* metrics,
                                std::int32_t outlineSize) {
    delete[] owned;
    owned = nullptr;
    data = nullptr;
    const std::uint32_t total = tr::BlockSize(groups);
    if (total == 0) return false;
    if (total <= tr::block::kHeaderSize) return true;
    std::uint8_t* block = new (std::nothrow) std::uint8_t[total]();
    if (block == nullptr) return false;

    // Records start behind the padded table; the data behind all records.
    const std::uint64_t table = tr::block::kGroupTableOffset;
    std::uint64_t record = table + 4 * ((groups.size() + 1) & ~std::size_t{1});
    std::uint64_t cursor = record;
    for (const CContourGroup& group : groups) cursor += tr::block::kRecordFixedSize + 8 * std::uint64_t{group.holes.size()};

    bool seeded = false;
    double box[4] = {0.0, 0.0, 0.0, 0.0};
    std::uint64_t g = 0;
    for (const CContourGroup& group : groups) {
        std::uint8_t* rec = block + record;
        tr::PutU32(block, table + 4 * g, record);
        tr::PutU32(rec, tr::block::kRecordOuterCount, group.outer.points.size());
        tr::PutU32(rec, tr::block::kRecordOuterOffset, cursor);
        cursor = tr::PutPoints(block, cursor, group.outer, true, seeded, box);
        tr::PutU32(rec, tr::block::kRecordHoleCount, group.holes.size());
        std::uint32_t j = 0;
        for (const Coutline& hole : group.holes) {
            tr::PutU32(rec, tr::block::kRecordHoleBase + 8 * j, hole.points.size());
            tr::PutU32(rec, tr::block::kRecordHoleBase + 8 * j + 4, cursor);
            cursor = tr::PutPoints(block, cursor, hole, true, seeded, box);
            ++j;
        }
        cursor = tr::PutPoints(block, cursor, group.extraVertices, false, seeded, box);
        tr::PutU32(rec, tr::block::kRecordIndexCount, group.triangles.size());
        tr::PutU32(rec, tr::block::kRecordIndexOffset, cursor);
        if (!group.triangles.empty()) {
            std::memcpy(block + cursor, group.triangles.data(), 4 * group.triangles.size());
        }
        cursor += 4 * ((group.triangles.size() + 1) & ~std::size_t{1});
        record += tr::block::kRecordFixedSize + 8 * std::uint64_t{group.holes.size()};
        ++g;
    }

    tr::PutDouble(block, tr::block::kMinXOffset, box[0]);
    tr::PutDouble(block, tr::block::kMinYOffset, box[1]);
    tr::PutDouble(block, tr::block::kMaxXOffset, box[2]);
    tr::PutDouble(block, tr::block::kMaxYOffset, box[3]);
    tr::PutU32(block, tr::block::kTotalSizeOffset, total);
    std::memcpy(block + tr::block::kOutlineSizeOffset, &outlineSize, 4);
    tr::PutU32(block, tr::block::kGroupCountOffset, groups.size());
    std::memcpy(block + tr::block::kMetricsOffset, metrics, tr::block::kMetricsSize);
    data = block;
    owned = block;
    return true;
}

std::uint32_t CCharacterData::GroupCount() const {
    return tr::ReadBlockU32(data, tr::block::kGroupCountOffset);
}

const std::uint8_t* CCharacterData::GroupRecord(std::uint32_t group) const {
    return data + tr::ReadBlockU32(data, tr::block::kGroupTableOffset + 4 * group);
}

const CPoint3D* CCharacterData::OuterPoints(std::uint32_t group) const {
    const std::uint32_t at = tr::ReadBlockU32(GroupRecord(group), tr::block::kRecordOuterOffset);
    return reinterpret_cast<const CPoint3D*>(data + at);
}

const CPoint3D* CCharacterData::HolePoints(std::uint32_t group, std::uint32_t hole) const {
    const std::uint32_t at =
        tr::ReadBlockU32(GroupRecord(group), tr::block::kRecordHoleBase + 8 * hole + 4);
    return reinterpret_cast<const CPoint3D*>(data + at);
}

const std::uint32_t* CCharacterData::TriangleIndices(std::uint32_t group) const {
    const std::uint32_t at = tr::ReadBlockU32(GroupRecord(group), tr::block::kRecordIndexOffset);
    return reinterpret_cast<const std::uint32_t*>(data + at);
}

std::uint32_t CCharacterData::TriangleIndexCount(std::uint32_t group) const {
    return tr::ReadBlockU32(GroupRecord(group), tr::block::kRecordIndexCount);
}

double CCharacterData::OutlineSize() const {
    std::int32_t size;
    std::memcpy(&size, data + tr::block::kOutlineSizeOffset, sizeof size);
    return static_cast<double>(size);
}
