// memory/pool_registry.cpp — the registry, its load/unload lifetime and the
// pool functions called by the surface entry points.
#include "memory/pool_registry.h"

#include <algorithm>

void PoolRegistry::Create() {
    if (referenceCount_ == 0) {
        shape_ = std::make_unique<CharacterPool>(tr::PoolKind::Shape, tr::kDefaultShapeBudget);
        shadow_ = std::make_unique<CharacterPool>(tr::PoolKind::Shadow, tr::kDefaultShadowBudget);
        painter_ = std::make_unique<CharacterPool>(tr::PoolKind::Painter, tr::kDefaultPainterBudget);
    }
    referenceCount_ += 1;
}

void PoolRegistry::Release() {
    if (referenceCount_ == 0) {
        return;
    }
    referenceCount_ -= 1;
    if (referenceCount_ == 0) {
        shape_.reset();
        shadow_.reset();
        painter_.reset();
    }
}

CharacterPool* PoolRegistry::GetPool(tr::PoolKind kind) const {
    switch (kind) {
        case tr::PoolKind::Shape:
            return shape_.get();
        case tr::PoolKind::Shadow:
            return shadow_.get();
        case tr::PoolKind::Painter:
            return painter_.get();
    }
    return nullptr;
}

namespace {

// Constant-initialised, so it is usable before any dynamic initialisation.
constinit PoolRegistry gRegistry;

// The library's load and unload: one reference for the library's lifetime.
struct RegistryLifetime {
    RegistryLifetime() { gRegistry.Create(); }
    ~RegistryLifetime() { gRegistry.Release(); }
} gRegistryLifetime;

}  // namespace

namespace tr {

PoolRegistry& GetPoolRegistry() { return gRegistry; }

void ReleasePoolReferences(PoolKind pool, std::vector<uint32_t>& indices) {
    if (CharacterPool* target = gRegistry.GetPool(pool)) {
        target->ReleaseReferences(indices);
    }
    indices.clear();
}

void InvalidatePooledRecords(uint32_t keyA, uint32_t keyB) {
    for (const PoolKind kind : {PoolKind::Shape, PoolKind::Shadow, PoolKind::Painter}) {
        if (CharacterPool* pool = gRegistry.GetPool(kind)) {
            pool->Invalidate(keyA, keyB);
        }
    }
}

uint32_t PoolBudgetBytes(int32_t mebibytes) {
    const uint64_t bytes = static_cast<uint64_t>(std::max(1, mebibytes)) * kBytesPerMiB;  // < 2^51
    return static_cast<uint32_t>(std::min<uint64_t>(bytes, UINT32_MAX));
}

void SetPoolBudgetsMiB(int32_t shape, int32_t shadow, int32_t painter) {
    const int32_t mebibytes[] = {shape, shadow, painter};
    const PoolKind kinds[] = {PoolKind::Shape, PoolKind::Shadow, PoolKind::Painter};
    for (int i = 0; i < 3; ++i) {
        if (CharacterPool* pool = gRegistry.GetPool(kinds[i])) {
            pool->SetBudget(PoolBudgetBytes(mebibytes[i]));
        }
    }
}

uint32_t GetPoolBudget(PoolKind pool) {
    CharacterPool* target = gRegistry.GetPool(pool);
    return target != nullptr ? target->GetBudget() : 0;
}

int32_t FindPooledRecord(PoolKind /*pool*/, uint32_t /*keyA*/, uint32_t /*keyB*/) {
    return kNoPoolRecord;
}

bool OfferPooledRecord(PoolKind /*pool*/, uint32_t /*keyA*/, uint32_t /*keyB*/) { return false; }

}  // namespace tr
