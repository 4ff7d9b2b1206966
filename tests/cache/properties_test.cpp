// Tests of the cache properties: defaults, set/get, and that a cache object
// has exactly one value per property whichever interface reaches it.
#include "cache/properties.h"

#include <gtest/gtest.h>

namespace {

// A cache-like object: the interface and the storage, as a cache has them.
class PropertiesHolder : public CacheProperties, public CachePropertiesImpl {};

template <typename P>
uint32_t ReadSize(const CacheProperties& properties) {
    return tr::PropertyOf<P>(properties).Get();
}

TEST(CacheProperties, StartZeroFalseNull) {
    PropertiesHolder holder;
    EXPECT_EQ(ReadSize<FlexCacheSize>(holder), 0u);
    EXPECT_EQ(ReadSize<FlexCacheContents>(holder), 0u);
    EXPECT_EQ(ReadSize<TotalCacheSize>(holder), 0u);
    EXPECT_EQ(ReadSize<TotalCacheContents>(holder), 0u);
    EXPECT_EQ(tr::PropertyOf<CRA_Data>(holder).Get(), nullptr);
    EXPECT_FALSE(tr::PropertyOf<Panic>(holder).Get());
}

// Each size property keeps its own value: writing distinct values through the
// interface and reading them back catches two names sharing one slot.
TEST(CacheProperties, SizePropertiesAreIndependent) {
    PropertiesHolder holder;
    CacheProperties& view = holder;
    EXPECT_TRUE(tr::PropertyOf<FlexCacheSize>(view).Set(11));
    EXPECT_TRUE(tr::PropertyOf<FlexCacheContents>(view).Set(22));
    EXPECT_TRUE(tr::PropertyOf<TotalCacheSize>(view).Set(4194304));
    EXPECT_TRUE(tr::PropertyOf<TotalCacheContents>(view).Set(0xFFFFFFFFu));
    EXPECT_EQ(ReadSize<FlexCacheSize>(view), 11u);
    EXPECT_EQ(ReadSize<FlexCacheContents>(view), 22u);
    EXPECT_EQ(ReadSize<TotalCacheSize>(view), 4194304u);
    EXPECT_EQ(ReadSize<TotalCacheContents>(view), 0xFFFFFFFFu);
}

// Set never refuses, also when the value does not change, and stores exactly
// what it is given (no clamping).
TEST(CacheProperties, SetAlwaysSucceeds) {
    PropertiesHolder holder;
    const uint32_t sizes[] = {0u, 0u, 1u, 1u, 268435456u, 0x80000000u, 0xFFFFFFFFu, 0u};
    for (uint32_t size : sizes) {
        EXPECT_TRUE(tr::PropertyOf<TotalCacheSize>(holder).Set(size)) << size;
        EXPECT_EQ(ReadSize<TotalCacheSize>(holder), size);
    }
    for (bool panic : {false, true, true, false}) {
        EXPECT_TRUE(tr::PropertyOf<Panic>(holder).Set(panic));
        EXPECT_EQ(tr::PropertyOf<Panic>(holder).Get(), panic);
    }
    int state = 0;
    for (void* pointer : {static_cast<void*>(&state), static_cast<void*>(&state),
                          static_cast<void*>(nullptr)}) {
        EXPECT_TRUE(tr::PropertyOf<CRA_Data>(holder).Set(pointer));
        EXPECT_EQ(tr::PropertyOf<CRA_Data>(holder).Get(), pointer);
    }
}

// Two interfaces of one cache that both name the properties share them: a
// value set through one is read through the other and through the storage.
class FirstView : public virtual CacheProperties {};
class SecondView : public virtual CacheProperties {};
class TwoViews : public FirstView, public SecondView, public CachePropertiesImpl {};

TEST(CacheProperties, SharedByEveryInterface) {
    TwoViews cache;
    FirstView& first = cache;
    SecondView& second = cache;
    tr::PropertyOf<FlexCacheSize>(first).Set(1234);
    tr::PropertyOf<Panic>(second).Set(true);
    EXPECT_EQ(ReadSize<FlexCacheSize>(second), 1234u);
    EXPECT_TRUE(tr::PropertyOf<Panic>(first).Get());
    const PropertyImpl<FlexCacheSize>& storage = cache;
    EXPECT_EQ(storage.Get(), 1234u);
}

// The properties are destroyed through their interfaces.
TEST(CacheProperties, DestroyedThroughInterface) {
    size_t_Property* property = new PropertyImpl<TotalCacheContents>();
    property->Set(5);
    RO_size_t_Property* readOnly = property;
    EXPECT_EQ(readOnly->Get(), 5u);
    delete readOnly;
}

}  // namespace
