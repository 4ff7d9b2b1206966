// Tests of a record pool: reference release and invalidation.
#include "memory/character_pool.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using tr::PoolKind;

PoolRecord MakeRecord(uint32_t keyA, uint32_t keyB, int32_t references, bool occupied = true) {
    PoolRecord record;
    record.keyA = keyA;
    record.keyB = keyB;
    if (occupied) record.content = std::make_unique<PooledContent>();
    record.secondary = std::make_unique<uint8_t[]>(64);
    record.valid = 1;
    record.references = references;
    return record;
}

// Each release takes one reference, clamped at 0; a shape record whose count
// comes down to exactly 0 frees its secondary buffer. Unknown indices and
// records not listed are left alone.
TEST(CharacterPoolTest, ReleaseDecrementsClampsAtZeroAndFreesTheShapeSecondaryAtZero) {
    struct Case {
        PoolKind kind;
        int32_t references;
        int releases;
        int32_t expectedReferences;
        bool expectedSecondary;
    };
    const Case cases[] = {
        {PoolKind::Shape, 2, 1, 1, true},    {PoolKind::Shape, 1, 1, 0, false},
        {PoolKind::Shape, 3, 3, 0, false},   {PoolKind::Shape, 0, 1, 0, true},  // clamped, never "reached" 0
        {PoolKind::Shape, -4, 1, 0, true},   {PoolKind::Shadow, 1, 1, 0, true},  // only shapes drop it
        {PoolKind::Painter, 1, 2, 0, true},
    };
    for (const Case& c : cases) {
        CharacterPool pool(c.kind, 1 << 20);
        const uint32_t bystander = pool.Adopt(MakeRecord(1, 1, 2));
        const uint32_t index = pool.Adopt(MakeRecord(7, 9, c.references));
        std::vector<uint32_t> indices(c.releases, index);
        indices.push_back(12345);
        pool.ReleaseReferences(indices);
        EXPECT_TRUE(indices.empty());
        const auto state = pool.GetRecordState(index);
        ASSERT_TRUE(state);
        EXPECT_EQ(state->references, c.expectedReferences) << c.references << " x" << c.releases;
        EXPECT_EQ(state->hasSecondary, c.expectedSecondary) << c.references << " x" << c.releases;
        EXPECT_EQ(pool.GetRecordState(bystander)->references, 2);
        EXPECT_EQ(pool.GetRecordCount(), 2u);
    }
}

TEST(CharacterPoolTest, InvalidateHitsOccupiedRecordsWithBothKeysOnly) {
    CharacterPool pool(PoolKind::Painter, 1 << 20);
    const uint32_t hits[] = {pool.Adopt(MakeRecord(10, 20, 1)), pool.Adopt(MakeRecord(10, 20, 0))};
    const uint32_t misses[] = {pool.Adopt(MakeRecord(10, 21, 1)), pool.Adopt(MakeRecord(11, 20, 1)),
                               pool.Adopt(MakeRecord(10, 20, 0, false))};  // a free slot with stale keys
    pool.Invalidate(10, 20);
    for (const uint32_t index : hits) {
        const auto state = pool.GetRecordState(index);
        EXPECT_EQ(state->keyA, 0xFFFFFFFFu);
        EXPECT_EQ(state->keyB, 20u);
        EXPECT_EQ(state->valid, 0);
        EXPECT_TRUE(state->occupied) << "invalidation frees nothing";
    }
    for (const uint32_t index : misses) {
        EXPECT_NE(pool.GetRecordState(index)->keyA, 0xFFFFFFFFu) << index;
        EXPECT_EQ(pool.GetRecordState(index)->valid, 1) << index;
    }
}

}  // namespace
