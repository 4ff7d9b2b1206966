// tests/cache/cache_level_contract.h — test-private: what both outline cache
// levels promise their clients, as one typed suite over a `Level` naming the
// level's create, destroy, get and release functions and its cache.
#pragma once

#include <gtest/gtest.h>

#include "cache_level_support.h"

namespace tr::test {

struct DiskLevel {
    static bool Create() { return CreateDiskCache(); }
    static bool Destroy() { return DestroyDiskCache(); }
    static OMData Get(const OMTicket& ticket) { return DiskCacheGet(ticket); }
    static int Release(OMData handle) { return DiskCacheRelease(handle); }
    static CharacterDiskCache* Cache() { return GetDiskCache(); }
};

struct MemoryLevel {
    static bool Create() { return CreateCharacterCacheLevels(); }
    static bool Destroy() { return DestroyCharacterCacheLevels(); }
    static OMData Get(const OMTicket& ticket) { return MemoryCacheGet(ticket); }
    static int Release(OMData handle) { return MemoryCacheRelease(handle); }
    static CharacterMemoryCache* Cache() { return GetMemoryCache(); }
};

template <typename Level>
class CacheLevelContract : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(Level::Create()); }
    void TearDown() override { Level::Destroy(); }
};

TYPED_TEST_SUITE_P(CacheLevelContract);

// The same glyph asked for twice is built once; both holders share the
// block. Handles the cache did not hand out, or gave back, change nothing. A
// second create keeps the cache; destroy ends it even with handles out.
TYPED_TEST_P(CacheLevelContract, OneKeyIsBuiltOnceAndSharesOneBlock) {
    SquareHost host;
    const OutlineRequest ticket = Ticket(host, 'A');
    const OMData first = TypeParam::Get(ticket);
    const OMData second = TypeParam::Get(ticket);
    ASSERT_NE(first.pointer, nullptr);
    EXPECT_EQ(second.pointer, first.pointer);
    EXPECT_EQ(BytesOf(first), ReferenceBlock(ticket));
    auto* box = LiveBox(*TypeParam::Cache(), ticket);
    EXPECT_EQ(box->refCount, 2);
    EXPECT_EQ(box->hitCount, 1);
    EXPECT_EQ(box->missCount, 1);
    std::uint8_t elsewhere = 0;
    for (const OMData unknown :
         {OMData{}, OMData{&elsewhere, first.size}, OMData{first.pointer, first.size + 8}}) {
        EXPECT_EQ(TypeParam::Release(unknown), 0) << unknown.size;
    }
    EXPECT_EQ(box->refCount, 2);
    ExpectBudgetInvariants(*TypeParam::Cache(), "held twice");
    EXPECT_EQ(TypeParam::Release(first), 1);
    EXPECT_EQ(TypeParam::Release(second), 1);
    EXPECT_EQ(TypeParam::Release(second), 0) << "a handle given back twice";
    EXPECT_EQ(box->refCount, 0);
    ExpectBudgetInvariants(*TypeParam::Cache(), "given back");

    auto* cache = TypeParam::Cache();
    const OMData held = TypeParam::Get(ticket);
    EXPECT_FALSE(TypeParam::Create());
    EXPECT_EQ(TypeParam::Cache(), cache);
    EXPECT_EQ(TypeParam::Get(ticket).pointer, held.pointer) << "survived the second create";
    EXPECT_TRUE(TypeParam::Destroy());
    EXPECT_EQ(TypeParam::Cache(), nullptr);
    EXPECT_EQ(TypeParam::Get(ticket).pointer, nullptr);
    EXPECT_EQ(TypeParam::Release(held), 0);
    EXPECT_FALSE(TypeParam::Destroy());
    EXPECT_EQ(host.Builds(), 1);
}

// Code, extra key and outline size make the key; context, callback and
// options do not (the other host would draw other squares: it is never asked).
TYPED_TEST_P(CacheLevelContract, WhatMakesTheKey) {
    SquareHost host, other;
    other.scale = 3.0;
    OutlineRequest sameKey = Ticket(other, 'B');
    sameKey.options = 0x77;
    const struct {
        const char* name;
        OutlineRequest ticket;
        bool sameEntry;
    } cases[] = {{"other context, callback, options", sameKey, true},
                 {"extra key", Ticket(host, 'B', 9), false},
                 {"character code", Ticket(host, 'C'), false},
                 {"outline size", Ticket(host, 'B', 8, 0, 65), false}};
    const OMData held = TypeParam::Get(Ticket(host, 'B'));
    ASSERT_NE(held.pointer, nullptr);
    for (const auto& c : cases) {
        const OMData got = TypeParam::Get(c.ticket);
        ASSERT_NE(got.pointer, nullptr) << c.name;
        EXPECT_EQ(got.pointer == held.pointer, c.sameEntry) << c.name;
        EXPECT_EQ(BytesOf(got), c.sameEntry ? BytesOf(held) : ReferenceBlock(c.ticket))
            << c.name;
        EXPECT_EQ(TypeParam::Release(got), 1) << c.name;
    }
    EXPECT_EQ(host.Builds(), 4);
    EXPECT_EQ(other.calls.load(), 0);
    EXPECT_EQ(TypeParam::Release(held), 1);
    ExpectBudgetInvariants(*TypeParam::Cache(), "after the variations");
}

REGISTER_TYPED_TEST_SUITE_P(CacheLevelContract, OneKeyIsBuiltOnceAndSharesOneBlock,
                            WhatMakesTheKey);

}  // namespace tr::test
