// memory/pool_registry.h — the process-wide registry of record pools.
//
// `PoolRegistry` owns the shape, shadow and painter `CharacterPool`s while its
// reference count is above zero. The library's own registry is created when
// the library is loaded and released when it is unloaded (a static object in
// pool_registry.cpp); the functions in namespace tr act on it and do nothing
// (beyond emptying a release list) while it holds no pools.
//
// Default budgets: shape 4 MiB, shadow 4 MiB, painter 8 MiB.
//
// The rendering pass consults the pools through `FindPooledRecord` and
// `OfferPooledRecord`. In this library a lookup always reports that no record
// exists and an offer is always declined, so every character is rendered in
// full and the surfaces' reference lists stay empty.
#pragma once

#include "memory/character_pool.h"

#include <cstdint>
#include <memory>
#include <vector>

class PoolRegistry {
public:
    constexpr PoolRegistry() = default;
    PoolRegistry(const PoolRegistry&) = delete;
    PoolRegistry& operator=(const PoolRegistry&) = delete;

    // The first creation makes the three pools; every one counts once.
    void Create();
    // The release that brings the count to 0 destroys the shape, shadow and
    // painter pools in that order. A release at count 0 does nothing.
    void Release();

    [[nodiscard]] uint32_t GetReferenceCount() const { return referenceCount_; }
    // Null while the count is 0.
    [[nodiscard]] CharacterPool* GetPool(tr::PoolKind kind) const;

    // Create and Release run at library load and unload only, so the count is
    // not locked; the pools lock themselves.
private:
    uint32_t referenceCount_ = 0;
    std::unique_ptr<CharacterPool> shape_;
    std::unique_ptr<CharacterPool> shadow_;
    std::unique_ptr<CharacterPool> painter_;
};

namespace tr {

inline constexpr uint32_t kDefaultShapeBudget = 4 * kBytesPerMiB;
inline constexpr uint32_t kDefaultShadowBudget = 4 * kBytesPerMiB;
inline constexpr uint32_t kDefaultPainterBudget = 8 * kBytesPerMiB;

// FindPooledRecord's answer when no record exists (also a plan's pool index
// when its coverage buffer is not pooled).
inline constexpr int32_t kNoPoolRecord = -1;

// The library's registry.
PoolRegistry& GetPoolRegistry();

// Releases one reference per listed index in `pool` and empties the list.
void ReleasePoolReferences(PoolKind pool, std::vector<uint32_t>& indices);

// Invalidates the matching records of the shape, shadow and painter pools,
// in that order.
void InvalidatePooledRecords(uint32_t keyA, uint32_t keyB);

// Budgets become max(1, n) MiB each; a product above 2^32 - 1 bytes
// saturates at 0xFFFFFFFF. Nothing in the library reads a budget.
void SetPoolBudgetsMiB(int32_t shape, int32_t shadow, int32_t painter);

// 0 while the registry holds no pools.
uint32_t GetPoolBudget(PoolKind pool);

// The bytes of an n MiB budget as SetPoolBudgetsMiB computes them.
[[nodiscard]] uint32_t PoolBudgetBytes(int32_t mebibytes);

// Lookup hook: the index of a finished record with these keys; always
// kNoPoolRecord here.
[[nodiscard]] int32_t FindPooledRecord(PoolKind pool, uint32_t keyA, uint32_t keyB);

// Offer hook: whether the pool took the rendering pass's result for these
// keys; always false here, the caller keeps what it offered.
[[nodiscard]] bool OfferPooledRecord(PoolKind pool, uint32_t keyA, uint32_t keyB);

}  // namespace tr
