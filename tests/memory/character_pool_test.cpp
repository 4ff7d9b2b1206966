// Tests of a record pool: reference release, invalidation, ownership.
#include "memory/character_pool.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using tr::PoolKind;

// Content that counts its destructions.
class CountedContent : public PooledContent {
public:
    explicit CountedContent(int* destroyed) : destroyed_(destroyed) {}
    ~CountedContent() override { ++*destroyed_; }

private:
    int* destroyed_;
};

PoolRecord MakeRecord(uint32_t keyA, uint32_t keyB, int32_t references, bool secondary,
                      int* destroyed = nullptr) {
    static int unused = 0;
    PoolRecord record;
    record.keyA = keyA;
    record.keyB = keyB;
    record.content = std::make_unique<CountedContent>(destroyed ? destroyed : &unused);
    if (secondary) {
        record.secondary = std::make_unique<uint8_t[]>(64);
    }
    record.valid = 1;
    record.references = references;
    return record;
}

TEST(CharacterPoolTest, ReleaseDecrementsClampsAtZeroAndFreesTheShapeSecondaryAtZero) {
    struct Case {
        PoolKind kind;
        int32_t references;
        int releases;
        int32_t expectedReferences;
        bool expectedSecondary;
    };
    const Case cases[] = {
        {PoolKind::Shape, 2, 1, 1, true},
        {PoolKind::Shape, 1, 1, 0, false},   // reaches 0: secondary freed
        {PoolKind::Shape, 3, 3, 0, false},
        {PoolKind::Shape, 0, 1, 0, true},    // would be -1: clamped, never "reached" 0
        {PoolKind::Shape, -4, 1, 0, true},
        {PoolKind::Shadow, 1, 1, 0, true},   // only shape records drop a secondary buffer
        {PoolKind::Painter, 1, 2, 0, true},
    };
    for (const Case& c : cases) {
        CharacterPool pool(c.kind, 1 << 20);
        const uint32_t index = pool.Adopt(MakeRecord(7, 9, c.references, true));
        std::vector<uint32_t> indices(c.releases, index);
        pool.ReleaseReferences(indices);
        EXPECT_TRUE(indices.empty());
        const auto state = pool.GetRecordState(index);
        ASSERT_TRUE(state);
        EXPECT_EQ(state->references, c.expectedReferences)
            << static_cast<int>(c.kind) << " from " << c.references << " x" << c.releases;
        EXPECT_EQ(state->hasSecondary, c.expectedSecondary)
            << static_cast<int>(c.kind) << " from " << c.references << " x" << c.releases;
        EXPECT_TRUE(state->occupied);
        EXPECT_EQ(state->valid, 1);
    }
}

TEST(CharacterPoolTest, ReleaseSkipsUnknownIndicesAndTouchesOnlyListedRecords) {
    CharacterPool pool(PoolKind::Shape, 1 << 20);
    const uint32_t first = pool.Adopt(MakeRecord(1, 1, 2, true));
    const uint32_t second = pool.Adopt(MakeRecord(2, 2, 2, true));
    std::vector<uint32_t> indices = {second, 12345, second};
    pool.ReleaseReferences(indices);
    EXPECT_TRUE(indices.empty());
    EXPECT_EQ(pool.GetRecordState(first)->references, 2);
    EXPECT_EQ(pool.GetRecordState(second)->references, 0);
    EXPECT_FALSE(pool.GetRecordState(second)->hasSecondary);
    EXPECT_EQ(pool.GetRecordCount(), 2u);

    // A surface with nothing pooled releases an empty list: no change.
    std::vector<uint32_t> none;
    pool.ReleaseReferences(none);
    EXPECT_EQ(pool.GetRecordState(first)->references, 2);
}

TEST(CharacterPoolTest, InvalidateHitsOccupiedRecordsWithBothKeysOnly) {
    CharacterPool pool(PoolKind::Painter, 1 << 20);
    int destroyed = 0;
    const uint32_t match = pool.Adopt(MakeRecord(10, 20, 1, false, &destroyed));
    const uint32_t matchToo = pool.Adopt(MakeRecord(10, 20, 0, false, &destroyed));
    const uint32_t otherB = pool.Adopt(MakeRecord(10, 21, 1, false, &destroyed));
    const uint32_t otherA = pool.Adopt(MakeRecord(11, 20, 1, false, &destroyed));
    PoolRecord empty = MakeRecord(10, 20, 0, false);
    empty.content.reset();  // a free slot with stale keys
    const uint32_t freeSlot = pool.Adopt(std::move(empty));

    pool.Invalidate(10, 20);

    for (const uint32_t index : {match, matchToo}) {
        const auto state = pool.GetRecordState(index);
        EXPECT_EQ(state->keyA, 0xFFFFFFFFu);
        EXPECT_EQ(state->keyB, 20u);
        EXPECT_EQ(state->valid, 0);
        EXPECT_TRUE(state->occupied);  // invalidation frees nothing
    }
    for (const uint32_t index : {otherB, otherA, freeSlot}) {
        const auto state = pool.GetRecordState(index);
        EXPECT_NE(state->keyA, 0xFFFFFFFFu);
        EXPECT_EQ(state->valid, 1);
    }
    EXPECT_EQ(destroyed, 0);
}

TEST(CharacterPoolTest, DestroyingThePoolDestroysOwnedContent) {
    int destroyed = 0;
    {
        CharacterPool pool(PoolKind::Shadow, 1 << 20);
        pool.Adopt(MakeRecord(1, 2, 0, false, &destroyed));
        pool.Adopt(MakeRecord(3, 4, 5, false, &destroyed));
    }
    EXPECT_EQ(destroyed, 2);
}

TEST(CharacterPoolTest, BudgetIsStoredAsGiven) {
    CharacterPool pool(PoolKind::Shape, 4194304);
    EXPECT_EQ(pool.GetBudget(), 4194304u);
    pool.SetBudget(1048576);
    EXPECT_EQ(pool.GetBudget(), 1048576u);
    EXPECT_FALSE(pool.GetRecordState(0));
}

}  // namespace
