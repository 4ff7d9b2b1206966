// Tests of the pool registry and the library's pool functions.
#include "memory/pool_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using tr::PoolKind;

constexpr uint32_t kMiB = 1048576;

// Content that logs the name of its pool when destroyed.
class LoggedContent : public PooledContent {
public:
    LoggedContent(std::vector<std::string>* log, std::string name) : log_(log), name_(std::move(name)) {}
    ~LoggedContent() override { log_->push_back(name_); }

private:
    std::vector<std::string>* log_;
    std::string name_;
};

uint32_t AdoptOccupied(CharacterPool& pool, uint32_t keyA, uint32_t keyB,
                       std::unique_ptr<PooledContent> content = std::make_unique<PooledContent>()) {
    PoolRecord record;
    record.keyA = keyA;
    record.keyB = keyB;
    record.content = std::move(content);
    record.valid = 1;
    return pool.Adopt(std::move(record));
}

TEST(PoolRegistryTest, CountedCreateAndReleaseOwnThePoolsWithDefaultBudgets) {
    PoolRegistry registry;
    EXPECT_EQ(registry.GetPool(PoolKind::Shape), nullptr);
    registry.Create();
    registry.Create();
    EXPECT_EQ(registry.GetReferenceCount(), 2u);
    CharacterPool* shape = registry.GetPool(PoolKind::Shape);
    ASSERT_NE(shape, nullptr);
    EXPECT_EQ(shape->GetBudget(), 4 * kMiB);
    EXPECT_EQ(registry.GetPool(PoolKind::Shadow)->GetBudget(), 4 * kMiB);
    EXPECT_EQ(registry.GetPool(PoolKind::Painter)->GetBudget(), 8 * kMiB);

    registry.Release();
    EXPECT_EQ(registry.GetPool(PoolKind::Shape), shape);  // the second creation kept them
    registry.Release();
    EXPECT_EQ(registry.GetReferenceCount(), 0u);
    EXPECT_EQ(registry.GetPool(PoolKind::Shape), nullptr);
    EXPECT_EQ(registry.GetPool(PoolKind::Painter), nullptr);
    registry.Release();  // at zero: nothing happens
    EXPECT_EQ(registry.GetReferenceCount(), 0u);
}

TEST(PoolRegistryTest, LastReleaseDestroysShapeThenShadowThenPainter) {
    std::vector<std::string> log;
    PoolRegistry registry;
    registry.Create();
    // Adopted in another order than the expected destruction order.
    for (const auto& [kind, name] : {std::pair{PoolKind::Painter, "painter"}, std::pair{PoolKind::Shape, "shape"},
                                     std::pair{PoolKind::Shadow, "shadow"}}) {
        AdoptOccupied(*registry.GetPool(kind), 1, 1, std::make_unique<LoggedContent>(&log, name));
    }
    registry.Release();
    EXPECT_EQ(log, (std::vector<std::string>{"shape", "shadow", "painter"}));
}

TEST(PoolRegistryTest, LibraryRegistryExistsFromLoad) {
    EXPECT_EQ(tr::GetPoolRegistry().GetReferenceCount(), 1u);
    EXPECT_NE(tr::GetPoolRegistry().GetPool(PoolKind::Shadow), nullptr);
}

TEST(PoolRegistryTest, BudgetsAreWholeMebibytesOfAtLeastOne) {
    struct Case {
        int32_t shape, shadow, painter;
        uint32_t expectedShape, expectedShadow, expectedPainter;
    };
    const Case cases[] = {
        {0, 2, -1, 1 * kMiB, 2 * kMiB, 1 * kMiB},
        {0, -5, 3, 1 * kMiB, 1 * kMiB, 3 * kMiB},
        {INT32_MIN, 1, 4095, 1 * kMiB, 1 * kMiB, 4095u * kMiB},
        // 4096 MiB and more do not fit 32 bits: the budget saturates.
        {4096, INT32_MAX, 8, 0xFFFFFFFFu, 0xFFFFFFFFu, 8 * kMiB},
    };
    for (const Case& c : cases) {
        tr::SetPoolBudgetsMiB(c.shape, c.shadow, c.painter);
        EXPECT_EQ(tr::GetPoolBudget(PoolKind::Shape), c.expectedShape) << c.shape;
        EXPECT_EQ(tr::GetPoolBudget(PoolKind::Shadow), c.expectedShadow) << c.shadow;
        EXPECT_EQ(tr::GetPoolBudget(PoolKind::Painter), c.expectedPainter) << c.painter;
    }
    tr::SetPoolBudgetsMiB(4, 4, 8);
}

TEST(PoolRegistryTest, InvalidationReachesAllThreePools) {
    PoolRegistry& registry = tr::GetPoolRegistry();
    const PoolKind kinds[] = {PoolKind::Shape, PoolKind::Shadow, PoolKind::Painter};
    uint32_t hit[3];
    uint32_t missed[3];
    for (int i = 0; i < 3; ++i) {
        hit[i] = AdoptOccupied(*registry.GetPool(kinds[i]), 0xABCD, 0x1234);
        missed[i] = AdoptOccupied(*registry.GetPool(kinds[i]), 0xABCD, 0x1235);
    }
    tr::InvalidatePooledRecords(0xABCD, 0x1234);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(registry.GetPool(kinds[i])->GetRecordState(hit[i])->valid, 0) << i;
        EXPECT_EQ(registry.GetPool(kinds[i])->GetRecordState(missed[i])->valid, 1) << i;
    }
}

TEST(PoolRegistryTest, ReleaseThroughTheLibraryEmptiesTheListOfTheNamedPoolOnly) {
    PoolRegistry& registry = tr::GetPoolRegistry();
    CharacterPool& shadow = *registry.GetPool(PoolKind::Shadow);
    PoolRecord record;
    record.content = std::make_unique<PooledContent>();
    record.references = 3;
    const uint32_t index = shadow.Adopt(std::move(record));
    std::vector<uint32_t> list = {index, index};
    tr::ReleasePoolReferences(PoolKind::Shadow, list);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(shadow.GetRecordState(index)->references, 1);
}

TEST(PoolRegistryTest, RenderingHooksFindNothingAndStoreNothing) {
    PoolRegistry& registry = tr::GetPoolRegistry();
    const uint32_t before = registry.GetPool(PoolKind::Shape)->GetRecordCount();
    EXPECT_EQ(tr::FindPooledRecord(PoolKind::Shape, 1, 2), tr::kNoPoolRecord);
    EXPECT_FALSE(tr::OfferPooledRecord(PoolKind::Shape, 1, 2));
    EXPECT_EQ(registry.GetPool(PoolKind::Shape)->GetRecordCount(), before);
}

}  // namespace
