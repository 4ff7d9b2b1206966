// memory/character_pool.h — one store of pooled per-character records.
//
// A `CharacterPool` holds fixed-size records addressed by index, each tagged
// with two key words (keyA, keyB) by the rendering pass that made it, a valid
// flag and a count of the surfaces referring to it. Surfaces give their
// references back when they close (`ReleaseReferences`); the host invalidates
// records by key when the underlying character changes (`Invalidate`).
//
// The rendering pass never stores a record (its offers are declined, see
// memory/pool_registry.h), so in the library the pools stay empty; `Adopt`
// and `GetRecordState` exist so that the pool operations can be exercised.
//
// Every operation holds the pool's recursive mutex for its whole run.
#pragma once

#include "host/recursive_mutex.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tr {

enum class PoolKind { Shape, Shadow, Painter };

// Bytes of one record in each pool. The records here carry only the fields
// the pool operations use; these are the sizes of the full records (key,
// flags, counts and pool-specific image data), kept as the figures a budget
// would be measured against.
inline constexpr uint32_t kShapeRecordBytes = 1096;
inline constexpr uint32_t kShadowRecordBytes = 912;
inline constexpr uint32_t kPainterRecordBytes = 952;

inline constexpr uint32_t kBytesPerMiB = 1048576;

}  // namespace tr

// The image data a record owns (a shape's content, a shadow or painter
// image); destroyed through its virtual destructor.
class PooledContent {
public:
    virtual ~PooledContent() = default;
};

struct PoolRecord {
    uint32_t keyB = 0;
    uint32_t keyA = 0;
    std::unique_ptr<PooledContent> content;  // non-null while the slot is occupied
    std::unique_ptr<uint8_t[]> secondary;    // shape records only; may be null
    int32_t valid = 0;
    int32_t references = 0;
};

// A copy of a record's fields, without its content.
struct PoolRecordState {
    uint32_t keyB;
    uint32_t keyA;
    bool occupied;
    bool hasSecondary;
    int32_t valid;
    int32_t references;
};

class CharacterPool {
public:
    CharacterPool(tr::PoolKind kind, uint32_t budgetBytes);
    CharacterPool(const CharacterPool&) = delete;
    CharacterPool& operator=(const CharacterPool&) = delete;

    // For each index: one reference fewer, clamped at 0; a shape record whose
    // count comes down to exactly 0 frees its secondary buffer. Indices past
    // the last record are skipped. Empties `indices`.
    void ReleaseReferences(std::vector<uint32_t>& indices);

    // Every occupied record with these keys gets keyA = 0xFFFFFFFF (so it
    // never matches again) and valid = 0.
    void Invalidate(uint32_t keyA, uint32_t keyB);

    void SetBudget(uint32_t bytes);
    [[nodiscard]] uint32_t GetBudget();

    // Appends a record and returns its index.
    uint32_t Adopt(PoolRecord record);
    [[nodiscard]] std::optional<PoolRecordState> GetRecordState(uint32_t index);
    [[nodiscard]] uint32_t GetRecordCount();

private:
    const tr::PoolKind kind_;
    vantor::threads::RecursiveMutex mutex_;
    std::vector<PoolRecord> records_;
    uint32_t budget_;  // bytes; nothing in the library reads it
};
