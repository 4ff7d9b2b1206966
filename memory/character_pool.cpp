// memory/character_pool.cpp — reference release and invalidation of records.
#include "memory/character_pool.h"

#include <utility>

using vantor::threads::ScopedLock;

namespace {

constexpr uint32_t kInvalidKey = 0xFFFFFFFF;

}  // namespace

CharacterPool::CharacterPool(tr::PoolKind kind, uint32_t budgetBytes)
    : kind_(kind), budget_(budgetBytes) {}

void CharacterPool::ReleaseReferences(std::vector<uint32_t>& indices) {
    ScopedLock lock(mutex_, "CharacterPool");
    for (const uint32_t index : indices) {
        if (index >= records_.size()) {
            continue;
        }
        PoolRecord& record = records_[index];
        record.references -= 1;
        // Only the shape pool keeps a secondary buffer, and only while the
        // shape is referenced by some surface.
        if (kind_ == tr::PoolKind::Shape && record.references == 0) {
            record.secondary.reset();
        }
        if (record.references < 0) {
            record.references = 0;
        }
    }
    indices.clear();
}

void CharacterPool::Invalidate(uint32_t keyA, uint32_t keyB) {
    ScopedLock lock(mutex_, "CharacterPool");
    for (PoolRecord& record : records_) {
        if (record.content && record.keyA == keyA && record.keyB == keyB) {
            record.keyA = kInvalidKey;
            record.valid = 0;
        }
    }
}

void CharacterPool::SetBudget(uint32_t bytes) {
    ScopedLock lock(mutex_, "CharacterPool");
    budget_ = bytes;
}

uint32_t CharacterPool::GetBudget() {
    ScopedLock lock(mutex_, "CharacterPool");
    return budget_;
}

uint32_t CharacterPool::Adopt(PoolRecord record) {
    ScopedLock lock(mutex_, "CharacterPool");
    records_.push_back(std::move(record));
    return static_cast<uint32_t>(records_.size() - 1);
}

std::optional<PoolRecordState> CharacterPool::GetRecordState(uint32_t index) {
    ScopedLock lock(mutex_, "CharacterPool");
    if (index >= records_.size()) {
        return std::nullopt;
    }
    const PoolRecord& record = records_[index];
    return PoolRecordState{record.keyB,  record.keyA,          record.content != nullptr,
                           record.secondary != nullptr, record.valid, record.references};
}

uint32_t CharacterPool::GetRecordCount() {
    ScopedLock lock(mutex_, "CharacterPool");
    return static_cast<uint32_t>(records_.size());
}
