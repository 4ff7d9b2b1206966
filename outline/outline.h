// outline/outline.h — `COutline`, the read interface of a
// character's outline block as the rendering pass sees it.
//
// The virtual operations keep this slot order: Load, destructor, GetBlock,
// GetGroupCount, GetGroupRecord, GetOuterPoints, GetHolePoints,
// GetTriangleIndices, GetTriangleIndexCount, GetOutlineSize, IsEmpty,
// AddOptions. Everything from GetBlock to GetOutlineSize requires a loaded
// block (IsEmpty false); group, hole and index bounds are the counts stored
// in the group record.
#pragma once

#include <cstdint>

#include "outline/character_data.h"
#include "outline/point3d.h"
#include "titlerender.h"

class COutline {
public:
    COutline() = default;
    COutline(const COutline&) = delete;
    COutline& operator=(const COutline&) = delete;

    // Loads the block of one character; returns the holder of the loaded
    // block or null when the character has no outline.
    virtual CCharacterData* Load(uintptr_t context, std::uint32_t flags, std::int32_t outlineSize,
                                 GlyphOutlineCallback callback, std::uint16_t characterCode,
                                 std::uint32_t extraKey) = 0;
    virtual ~COutline();
    virtual const std::uint8_t* GetBlock() const = 0;
    virtual std::uint32_t GetGroupCount() const = 0;
    virtual const std::uint8_t* GetGroupRecord(std::uint32_t group) const = 0;
    virtual const CPoint3D* GetOuterPoints(std::uint32_t group) const = 0;
    virtual const CPoint3D* GetHolePoints(std::uint32_t group, std::uint32_t hole) const = 0;
    virtual const std::uint32_t* GetTriangleIndices(std::uint32_t group) const = 0;
    virtual std::uint32_t GetTriangleIndexCount(std::uint32_t group) const = 0;
    virtual double GetOutlineSize() const = 0;
    virtual bool IsEmpty() const = 0;
    virtual std::uint32_t AddOptions(std::uint32_t bits) = 0;
};
