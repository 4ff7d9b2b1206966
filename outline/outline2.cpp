// outline/outline2.cpp — COutline2: loading, releasing and reading a block.
#include "outline/outline2.h"

#include <cassert>
#include <new>

COutline2::~COutline2() { ReleaseBlock(); }

void COutline2::ReleaseBlock() {
    tr::ReleaseOutlineBlock(OMData{holder.blockPointer, holder.blockSize}, holder.fromCache);
    holder.blockPointer = nullptr;
    holder.blockSize = 0;
}

CCharacterData* COutline2::Load(uintptr_t context, std::uint32_t flags, std::int32_t outlineSize,
                                GlyphOutlineCallback callback, std::uint16_t characterCode,
                                std::uint32_t extraKey) {
    delete[] holder.owned;
    holder.owned = nullptr;
    holder.data = nullptr;
    current = nullptr;
    ReleaseBlock();

    const OutlineRequest request = tr::MakeOutlineRequest(context, flags, outlineSize, callback,
                                                          characterCode, extraKey, options);
    bool fromCache = true;
    const OMData block = tr::FetchOutlineBlock(request, fromCache);
    holder.fromCache = fromCache;
    holder.blockPointer = block.pointer;
    holder.blockSize = block.size;
    holder.data = block.pointer;
    current = holder.data != nullptr ? &holder : nullptr;
    return current;
}

const std::uint8_t* COutline2::GetBlock() const {
    assert(current != nullptr && "callers check IsEmpty first");
    return current->data;
}

std::uint32_t COutline2::GetGroupCount() const { return current->GroupCount(); }

const std::uint8_t* COutline2::GetGroupRecord(std::uint32_t group) const {
    return current->GroupRecord(group);
}

const CPoint3D* COutline2::GetOuterPoints(std::uint32_t group) const {
    return current->OuterPoints(group);
}

const CPoint3D* COutline2::GetHolePoints(std::uint32_t group, std::uint32_t hole) const {
    return current->HolePoints(group, hole);
}

const std::uint32_t* COutline2::GetTriangleIndices(std::uint32_t group) const {
    return current->TriangleIndices(group);
}

std::uint32_t COutline2::GetTriangleIndexCount(std::uint32_t group) const {
    return current->TriangleIndexCount(group);
}

double COutline2::GetOutlineSize() const { return current->OutlineSize(); }

bool COutline2::IsEmpty() const { return current == nullptr; }

std::uint32_t COutline2::AddOptions(std::uint32_t bits) {
    options |= bits;
    return bits;
}

namespace tr {

COutline2* CreateOutline2() noexcept { return new (std::nothrow) COutline2(); }

void ReleaseOutline2(COutline* outline) noexcept { delete outline; }

}  // namespace tr
