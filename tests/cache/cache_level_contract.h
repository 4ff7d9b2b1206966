// tests/cache/cache_level_contract.h — test-private: what both outline cache
// levels promise their clients, as one typed suite. Each level's test file
// instantiates it with a `Level` that names its create, destroy, get and
// release functions and its cache object.
#pragma once

#include <gtest/gtest.h>

#include "cache_level_support.h"

namespace tr::test {

struct DiskLevel {
    static bool Create() { return CreateDiskCache(); }
    static bool Destroy() { return DestroyDiskCache(); }
    static OMData Get(const OMTicket& ticket) { return DiskCacheGet(ticket); }
    static int Release(OMData& handle) { return DiskCacheRelease(handle); }
    static CharacterDiskCache* Cache() { return GetDiskCache(); }
};

struct MemoryLevel {
    static bool Create() { return CreateCharacterCacheLevels(); }
    static bool Destroy() { return DestroyCharacterCacheLevels(); }
    static OMData Get(const OMTicket& ticket) { return MemoryCacheGet(ticket); }
    static int Release(OMData& handle) { return MemoryCacheRelease(handle); }
    static CharacterMemoryCache* Cache() { return GetMemoryCache(); }
};

template <typename Level>
class CacheLevelContract : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(Level::Create()); }
    void TearDown() override { Level::Destroy(); }

    static OMData Get(const OMTicket& ticket) { return Level::Get(ticket); }
    static int Release(OMData handle) { return Level::Release(handle); }
    static auto& Cache() { return *Level::Cache(); }
};

TYPED_TEST_SUITE_P(CacheLevelContract);

TYPED_TEST_P(CacheLevelContract, OneKeyIsBuiltOnceAndSharesOneBlock) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'A');
    const OMData first = this->Get(ticket);
    const OMData second = this->Get(ticket);
    ASSERT_NE(first.pointer, nullptr);
    EXPECT_EQ(second.pointer, first.pointer);
    EXPECT_EQ(second.size, first.size);
    EXPECT_EQ(host.Builds(), 1);
    EXPECT_EQ(BytesOf(first), ReferenceBlock(ticket));

    auto* box = LiveBox(this->Cache(), ticket);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->refCount, 2);
    EXPECT_EQ(box->hitCount, 1);
    EXPECT_EQ(box->missCount, 1);
    ExpectBudgetInvariants(this->Cache(), "held twice");
    EXPECT_EQ(this->Release(first), 1);
    EXPECT_EQ(this->Release(second), 1);
    EXPECT_EQ(box->refCount, 0);
    ExpectBudgetInvariants(this->Cache(), "given back");
}

TYPED_TEST_P(CacheLevelContract, ContextCallbackAndOptionsAreNotPartOfTheKey) {
    SquareHost first, second;
    second.scale = 3.0;  // its squares would differ: it must not be asked
    const OMData a = this->Get(Ticket(first, 'Q'));
    OutlineRequest other = Ticket(second, 'Q');
    other.options = 0x77;
    other.reserved35 = 1;
    const OMData b = this->Get(other);
    ASSERT_NE(a.pointer, nullptr);
    EXPECT_EQ(b.pointer, a.pointer);
    EXPECT_EQ(first.Builds(), 1);
    EXPECT_EQ(second.calls.load(), 0);
    EXPECT_EQ(this->Release(a), 1);
    EXPECT_EQ(this->Release(b), 1);
}

TYPED_TEST_P(CacheLevelContract, EachKeyFieldMakesAnEntryOfItsOwn) {
    SquareHost host;
    const OutlineRequest base = Ticket(host, 'B', 8, 0, 64);
    struct Case {
        const char* name;
        OutlineRequest ticket;
    };
    const Case cases[] = {
        {"extra key", Ticket(host, 'B', 9, 0, 64)},
        {"character code", Ticket(host, 'C', 8, 0, 64)},
        {"outline size", Ticket(host, 'B', 8, 0, 65)},
    };
    const OMData held = this->Get(base);
    ASSERT_NE(held.pointer, nullptr);
    int builds = 1;
    for (const Case& c : cases) {
        const OMData other = this->Get(c.ticket);
        ASSERT_NE(other.pointer, nullptr) << c.name;
        EXPECT_NE(other.pointer, held.pointer) << c.name;
        EXPECT_EQ(host.Builds(), ++builds) << c.name;
        EXPECT_EQ(BytesOf(other), ReferenceBlock(c.ticket)) << c.name;
        EXPECT_EQ(this->Release(other), 1) << c.name;
    }
    EXPECT_EQ(this->Release(held), 1);
    ExpectBudgetInvariants(this->Cache(), "after the variations");
}

TYPED_TEST_P(CacheLevelContract, AnUnknownHandleChangesNothing) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'D');
    const OMData held = this->Get(ticket);
    ASSERT_NE(held.pointer, nullptr);
    auto* box = LiveBox(this->Cache(), ticket);
    ASSERT_NE(box, nullptr);
    std::uint8_t elsewhere = 0;
    struct Case {
        const char* name;
        OMData handle;
    };
    const Case cases[] = {
        {"null", OMData{}},
        {"other pointer, same size", OMData{&elsewhere, held.size}},
        {"same pointer, other size", OMData{held.pointer, held.size + 8}},
    };
    auto& cache = this->Cache();
    const auto before = std::vector<std::uint32_t>{Property<TotalCacheContents>(cache),
                                                   Property<FlexCacheContents>(cache),
                                                   Property<FlexCacheSize>(cache)};
    for (const Case& c : cases) {
        EXPECT_EQ(this->Release(c.handle), 0) << c.name;
        EXPECT_EQ(box->refCount, 1) << c.name;
        EXPECT_EQ((std::vector<std::uint32_t>{Property<TotalCacheContents>(cache),
                                              Property<FlexCacheContents>(cache),
                                              Property<FlexCacheSize>(cache)}),
                  before)
            << c.name;
    }
    EXPECT_EQ(this->Release(held), 1);
    EXPECT_EQ(this->Release(held), 0) << "a handle given back twice";
    EXPECT_EQ(box->refCount, 0);
}

TYPED_TEST_P(CacheLevelContract, CreateTwiceKeepsTheCacheAndDestroyEndsIt) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'E');
    auto* cache = &this->Cache();
    const OMData held = this->Get(ticket);
    ASSERT_NE(held.pointer, nullptr);
    EXPECT_FALSE(TypeParam::Create());
    EXPECT_EQ(&this->Cache(), cache);
    const OMData again = this->Get(ticket);
    EXPECT_EQ(again.pointer, held.pointer) << "the entry survived the second create";
    EXPECT_EQ(this->Release(again), 1);
    EXPECT_EQ(this->Release(held), 1);

    EXPECT_TRUE(TypeParam::Destroy());
    EXPECT_EQ(TypeParam::Cache(), nullptr);
    const OMData none = this->Get(ticket);
    EXPECT_EQ(none.pointer, nullptr);
    EXPECT_EQ(none.size, 0u);
    std::uint8_t byte = 0;
    EXPECT_EQ(this->Release(OMData{&byte, 1}), 0);
    EXPECT_FALSE(TypeParam::Destroy());
    EXPECT_EQ(host.Builds(), 1);
}

REGISTER_TYPED_TEST_SUITE_P(CacheLevelContract, OneKeyIsBuiltOnceAndSharesOneBlock,
                            ContextCallbackAndOptionsAreNotPartOfTheKey,
                            EachKeyFieldMakesAnEntryOfItsOwn, AnUnknownHandleChangesNothing,
                            CreateTwiceKeepsTheCacheAndDestroyEndsIt);

}  // namespace tr::test
