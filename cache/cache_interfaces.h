// cache/cache_interfaces.h — the interfaces of the generic cache
// (folder-private): the public one clients call (`CacheT`), the private one
// through which the template and its replacement policy talk
// (`CachePrivateInterface`), and their join (`CacheAbstractBase`).
//
// The cache knows nothing of what it holds. A key (`Ticket`) is ordered by
// std::less; a data handle (`Data`) is ordered by std::less as well and is
// tested for "no data" with an `IsNullHandle(const Data&)` found by
// argument-dependent lookup. The entry's owner supplies these beside the key.
#pragma once

#include <concepts>
#include <cstdint>

#include "cache/factory_box.h"
#include "cache/properties.h"
#include "host/recursive_mutex.h"

namespace tr {

template <typename Data>
concept CacheHandle = std::default_initializable<Data> && std::copyable<Data> &&
                      requires(const Data& data) {
                          { IsNullHandle(data) } -> std::convertible_to<bool>;
                      };

// What ForEachBox's callback asks for, per box.
enum class BoxAction : int {
    kContinue = 0,
    kStop = 1,
    kRemoveAndContinue = 2,  // removes the index node; the callback owns the box
    kRemoveAndStop = 3,
};

// Events of UpdateBox.
enum class BoxEvent : int {
    kUnreferenced = 0,   // a handle was given back
    kReferenced = 1,     // a handle was handed out
    kSwappedIn = 2,      // a factory was made while unreferenced
    kSwappedOut = 3,     // the factory was destroyed
    kSwapInFailed = 4,
    kNothingToSwapOut = 5,
};

}  // namespace tr

template <typename Ticket, tr::CacheHandle Data>
class CacheT {
public:
    class FlushPredicate {
    public:
        virtual ~FlushPredicate() = default;
        virtual bool operator()(Ticket ticket) = 0;
    };

    virtual ~CacheT() = default;
    // Finds or makes the entry of `ticket` and hands out a handle to its data.
    virtual bool Get(Ticket ticket, Data& out) = 0;
    // Gives back a handle obtained from Get; false when it is not recognised.
    virtual bool Release(Data data) = 0;
    // Marks every entry of an equal ticket invalidated; true if one was not
    // marked before.
    virtual bool Invalidate(Ticket ticket) = 0;
    virtual bool InvalidateIf(FlushPredicate& predicate) = 0;
    virtual bool Flush() = 0;
    virtual void SetCacheSize(uint32_t bytes) = 0;
    [[nodiscard]] virtual uint32_t GetCacheSize() = 0;
};

template <typename Ticket, tr::CacheHandle Data, typename Factory,
          typename ExtraData = EmptyExtraData>
class CachePrivateInterface : public virtual CacheProperties {
public:
    using Box = Factory_Box<Ticket, Factory, ExtraData>;
    using BoxCallback = int (*)(Box* box, void* context);

    virtual void UpdateBox(Box* box, int event) = 0;
    virtual bool SwapIn(Ticket ticket, Box* box) = 0;
    virtual bool SwapOut(Box* box, bool discard) = 0;
    virtual void CheckBudget() = 0;
    virtual Box* FindBox(Ticket ticket) = 0;
    virtual bool RemoveBox(Ticket ticket, Box* box) = 0;
    virtual Box* TakeBoxForData(Data data) = 0;
    virtual void AttachData(Box* box, Data data) = 0;
    virtual bool ForEachBox(BoxCallback callback, void* context) = 0;
    [[nodiscard]] virtual uint32_t BoxCount() = 0;
    virtual vantor::threads::RecursiveMutex& GetMutex() = 0;
    // One greedy replacement pass, run by the background worker.
    virtual void RunGreedyPass() = 0;

protected:
    ~CachePrivateInterface() override = default;
};

template <typename Ticket, tr::CacheHandle Data, typename Factory,
          typename ExtraData = EmptyExtraData>
class CacheAbstractBase : public CacheT<Ticket, Data>,
                          public CachePrivateInterface<Ticket, Data, Factory, ExtraData> {};
