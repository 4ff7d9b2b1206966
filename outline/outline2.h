// outline/outline2.h — `COutline2`, the outline holder used
// by the rendering pass.
//
// It owns at most one block at a time, obtained through the block source
// (block_source.h) and released there on the next Load or on destruction.
// `options` is ORed in by the caller before Load and travels in every
// request. Create it with CreateOutline2 (null when memory is short) and
// destroy it with ReleaseOutline2 (null is ignored).
#pragma once

#include "outline/block_source.h"
#include "outline/outline.h"

// The holder embedded in `COutline2`: the reader plus the handle it reads.
struct CharacterDataHolder : CCharacterData {
    std::uint8_t* blockPointer = nullptr;
    std::uint32_t blockSize = 0;
    bool fromCache = true;  // how blockPointer is to be released
};

class COutline2 final : public COutline {
public:
    COutline2() = default;

    CCharacterData* Load(uintptr_t context, std::uint32_t flags, std::int32_t outlineSize,
                         GlyphOutlineCallback callback, std::uint16_t characterCode,
                         std::uint32_t extraKey) override;
    ~COutline2() override;
    const std::uint8_t* GetBlock() const override;
    std::uint32_t GetGroupCount() const override;
    const std::uint8_t* GetGroupRecord(std::uint32_t group) const override;
    const CPoint3D* GetOuterPoints(std::uint32_t group) const override;
    const CPoint3D* GetHolePoints(std::uint32_t group, std::uint32_t hole) const override;
    const std::uint32_t* GetTriangleIndices(std::uint32_t group) const override;
    std::uint32_t GetTriangleIndexCount(std::uint32_t group) const override;
    double GetOutlineSize() const override;
    bool IsEmpty() const override;
    std::uint32_t AddOptions(std::uint32_t bits) override;

    CharacterDataHolder* current = nullptr;
    CharacterDataHolder holder;
    std::uint32_t options = 0;

private:
    void ReleaseBlock();
};

namespace tr {
COutline2* CreateOutline2() noexcept;
void ReleaseOutline2(COutline* outline) noexcept;
}  // namespace tr
