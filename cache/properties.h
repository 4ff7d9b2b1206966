// cache/properties.h — the named properties of a cache (folder-private).
//
// A cache keeps its budget and its replacement state in six named properties,
// each an object behind a small get/set interface, so that the cache
// template, the replacement policy and the background worker reach them
// through one vocabulary:
//
//   property interface     value               named properties
//   size_t_Property        unsigned 32-bit     FlexCacheSize, FlexCacheContents,
//                                               TotalCacheSize, TotalCacheContents
//   pVoid_Property         untyped pointer     CRA_Data
//   bool_Property          bool                Panic
//
// `CacheProperties` gathers the six as virtual bases, so that every interface
// of one cache that names them shares a single instance; `CachePropertiesImpl`
// supplies every Get/Set through `PropertyImpl<P>`. A cache object derives
// from both and so has exactly one value per property.
//
// The six names share their Get/Set names, so a call through a cache object
// is ambiguous: reach a property with `PropertyOf<P>(cache)`.
//
// Threads: Get and Set are plain reads and writes; the cache lock guards them
// wherever the cache changes them.
#pragma once

#include <cstdint>
#include <utility>

// Read-only and read-write interfaces, by value type --------------------------

class RO_size_t_Property {
public:
    [[nodiscard]] virtual uint32_t Get() const = 0;
    virtual ~RO_size_t_Property() = default;
};

class size_t_Property : public RO_size_t_Property {
public:
    ~size_t_Property() override = default;
    // Stores the value; always returns true.
    virtual bool Set(uint32_t value) = 0;
};

class RO_bool_Property {
public:
    [[nodiscard]] virtual bool Get() const = 0;
    virtual ~RO_bool_Property() = default;
};

class bool_Property : public RO_bool_Property {
public:
    ~bool_Property() override = default;
    virtual bool Set(bool value) = 0;
};

class RO_pVoid_Property {
public:
    [[nodiscard]] virtual void* Get() const = 0;
    virtual ~RO_pVoid_Property() = default;
};

class pVoid_Property : public RO_pVoid_Property {
public:
    ~pVoid_Property() override = default;
    virtual bool Set(void* value) = 0;
};

// Named properties --------------------------------------------------------------

// Bytes of budget left for unreferenced data: TotalCacheSize minus the cost of
// the referenced entries.
class FlexCacheSize : public size_t_Property {};
// Bytes of cached data that no client holds.
class FlexCacheContents : public size_t_Property {};
// The cache's budget in bytes.
class TotalCacheSize : public size_t_Property {};
// Bytes of all cached data.
class TotalCacheContents : public size_t_Property {};
// The replacement policy's state (a CRA_Data_Delete), null when none.
class CRA_Data : public pVoid_Property {};
// No flexible budget is left; while true, data are dropped when their last
// handle comes back.
class Panic : public bool_Property {};

// Holds the value of the named property P; neither Get nor Set checks or
// clamps anything. The value starts zero-initialised (0, false, null); the
// cache sets each value explicitly in its constructor anyway.
template <typename P>
class PropertyImpl : public virtual P {
public:
    using Value = decltype(std::declval<const P&>().Get());

    [[nodiscard]] Value Get() const override { return value_; }
    bool Set(Value value) override {
        value_ = value;
        return true;
    }

private:
    Value value_{};
};

// The interface of a cache's six properties.
class CacheProperties : public virtual FlexCacheSize,
                        public virtual FlexCacheContents,
                        public virtual TotalCacheSize,
                        public virtual TotalCacheContents,
                        public virtual CRA_Data,
                        public virtual Panic {};

// The storage of a cache's six properties.
class CachePropertiesImpl : public PropertyImpl<FlexCacheSize>,
                            public PropertyImpl<FlexCacheContents>,
                            public PropertyImpl<TotalCacheSize>,
                            public PropertyImpl<TotalCacheContents>,
                            public PropertyImpl<CRA_Data>,
                            public PropertyImpl<Panic> {};

namespace tr {

// The named property P of a cache (or of anything deriving from it).
template <typename P, typename Cache>
P& PropertyOf(Cache& cache) {
    return static_cast<P&>(cache);
}
template <typename P, typename Cache>
const P& PropertyOf(const Cache& cache) {
    return static_cast<const P&>(cache);
}

}  // namespace tr
