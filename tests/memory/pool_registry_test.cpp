// Tests of the pool registry and the library's pool functions.
#include "memory/pool_registry.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using tr::PoolKind;

constexpr uint32_t kMiB = 1048576;

uint32_t AdoptOccupied(CharacterPool& pool, uint32_t keyA, uint32_t keyB, int32_t references = 0) {
    PoolRecord record;
    record.keyA = keyA;
    record.keyB = keyB;
    record.content = std::make_unique<PooledContent>();
    record.valid = 1;
    record.references = references;
    return pool.Adopt(std::move(record));
}

// Counted creation with the default budgets; only the last release destroys
// the pools; a release at 0 does nothing.
TEST(PoolRegistryTest, CountedCreateAndReleaseOwnThePools) {
    PoolRegistry registry;
    registry.Create();
    registry.Create();
    CharacterPool* shape = registry.GetPool(PoolKind::Shape);
    ASSERT_NE(shape, nullptr);
    EXPECT_EQ(shape->GetBudget(), 4 * kMiB);
    EXPECT_EQ(registry.GetPool(PoolKind::Shadow)->GetBudget(), 4 * kMiB);
    EXPECT_EQ(registry.GetPool(PoolKind::Painter)->GetBudget(), 8 * kMiB);
    registry.Release();
    EXPECT_EQ(registry.GetPool(PoolKind::Shape), shape);
    registry.Release();
    for (const PoolKind kind : {PoolKind::Shape, PoolKind::Shadow, PoolKind::Painter}) {
        EXPECT_EQ(registry.GetPool(kind), nullptr);
    }
    registry.Release();
    EXPECT_EQ(registry.GetReferenceCount(), 0u);
}

TEST(PoolRegistryTest, BudgetsAreWholeMebibytesOfAtLeastOneAndSaturate) {
    EXPECT_EQ(tr::GetPoolRegistry().GetReferenceCount(), 1u) << "made when the library is loaded";
    struct Case {
        int32_t shape, shadow, painter;
        uint32_t expectedShape, expectedShadow, expectedPainter;
    };
    const Case cases[] = {
        {0, -5, 3, 1 * kMiB, 1 * kMiB, 3 * kMiB},
        {INT32_MIN, 1, 4095, 1 * kMiB, 1 * kMiB, 4095u * kMiB},
        {4096, INT32_MAX, 8, 0xFFFFFFFFu, 0xFFFFFFFFu, 8 * kMiB},  // 2^32 bytes and more
    };
    for (const Case& c : cases) {
        tr::SetPoolBudgetsMiB(c.shape, c.shadow, c.painter);
        EXPECT_EQ(tr::GetPoolBudget(PoolKind::Shape), c.expectedShape) << c.shape;
        EXPECT_EQ(tr::GetPoolBudget(PoolKind::Shadow), c.expectedShadow) << c.shadow;
        EXPECT_EQ(tr::GetPoolBudget(PoolKind::Painter), c.expectedPainter) << c.painter;
    }
    tr::SetPoolBudgetsMiB(4, 4, 8);
}

// Invalidation reaches the matching records of all three pools; a release
// list reaches the named pool only, and is emptied.
TEST(PoolRegistryTest, LibraryFunctionsReachTheLibrarysPools) {
    PoolRegistry& registry = tr::GetPoolRegistry();
    const PoolKind kinds[] = {PoolKind::Shape, PoolKind::Shadow, PoolKind::Painter};
    uint32_t hit[3], missed[3];
    for (int i = 0; i < 3; ++i) {
        hit[i] = AdoptOccupied(*registry.GetPool(kinds[i]), 0xABCD, 0x1234, 3);
        missed[i] = AdoptOccupied(*registry.GetPool(kinds[i]), 0xABCD, 0x1235);
    }
    tr::InvalidatePooledRecords(0xABCD, 0x1234);
    std::vector<uint32_t> list = {hit[1], hit[1]};
    tr::ReleasePoolReferences(PoolKind::Shadow, list);
    EXPECT_TRUE(list.empty());
    for (int i = 0; i < 3; ++i) {
        CharacterPool& pool = *registry.GetPool(kinds[i]);
        EXPECT_EQ(pool.GetRecordState(hit[i])->valid, 0) << i;
        EXPECT_EQ(pool.GetRecordState(missed[i])->valid, 1) << i;
        EXPECT_EQ(pool.GetRecordState(hit[i])->references, i == 1 ? 1 : 3) << i;
    }
}

}  // namespace
