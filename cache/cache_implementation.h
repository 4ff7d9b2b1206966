// cache/cache_implementation.h — the generic cache (folder-private).
//
// `CacheImplementation` keeps entries (`Factory_Box`) in two ordered indexes:
// `ticketIndex` maps each key to its boxes (several may share a key: an
// invalidated box stays beside its replacement until it is dropped), and
// `dataIndex` has one node per handle a client holds, so that Release finds
// the box of a handle. An entry's data are made by its factory, which the
// meta-factory makes on a swap-in; the cache only asks the factory for
// handles, their cost, and gives handles back.
//
// Budget accounting (all unsigned 32-bit byte counts, kept by UpdateBox):
//   TotalCacheContents = sum of cost over all boxes,
//   FlexCacheContents  = sum of cost over unreferenced boxes,
//   FlexCacheSize      = TotalCacheSize − sum of cost over referenced boxes,
//   Panic              = (FlexCacheSize == 0).
// When the unreferenced data exceed their budget, CheckBudget asks the
// replacement policy for a background pass.
//
// Threads: Get, Release and the replacement pass hold the cache's recursive
// lock for their whole run (a factory may call back into the same cache on
// the same thread). Invalidate, InvalidateIf, Flush, SetCacheSize,
// GetCacheSize and DumpStatistics take no lock: callers run them when no
// other thread uses the cache.
#pragma once

#include <cstdint>
#include <functional>
#include <map>

#include "cache/cache_interfaces.h"
#include "cache/cache_variables.h"
#include "cache/greedy_cra_data.h"
#include "cache/greedy_pass.h"
#include "cache/statistics_text.h"
#include "host/recursive_mutex.h"
#include "host/tick_count.h"

namespace tr {

// The meta-factory makes a factory with no arguments; false when it could not.
template <typename Meta, typename Factory>
concept CacheMetaFactory = requires(Factory*& out) {
    { Meta::MakeFactory(out) } -> std::convertible_to<bool>;
};

}  // namespace tr

// The cache's Get(ticket, out) hides the properties' Get(): on purpose, since
// properties are reached only through tr::PropertyOf.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"

template <typename Ticket, tr::CacheHandle Data, typename Factory, typename MetaFactory,
          template <typename, typename> class Policy, typename ExtraData = EmptyExtraData>
    requires tr::CacheMetaFactory<MetaFactory, Factory>
class CacheImplementation : public CacheAbstractBase<Ticket, Data, Factory, ExtraData>,
                            public CacheVariables<Ticket, Data, Factory, ExtraData> {
public:
    using Private = CachePrivateInterface<Ticket, Data, Factory, ExtraData>;
    using Box = typename Private::Box;
    using Weight = DefaultFBWeight<Box>;
    using ReplacementPolicy = Policy<Private, Weight>;
    using FlushPredicate = typename CacheT<Ticket, Data>::FlushPredicate;

    explicit CacheImplementation(uint32_t budget);
    ~CacheImplementation() override;
    // Appends the statistics of every entry and a summary (see
    // statistics_text.h); true when every entry was written.
    virtual bool DumpStatistics(char* buffer, const uint32_t* capacity);

    bool Get(Ticket ticket, Data& out) override;
    bool Release(Data data) override;
    bool Invalidate(Ticket ticket) override;
    bool InvalidateIf(FlushPredicate& predicate) override;
    bool Flush() override;
    void SetCacheSize(uint32_t bytes) override;
    [[nodiscard]] uint32_t GetCacheSize() override;

    void UpdateBox(Box* box, int event) override;
    bool SwapIn(Ticket ticket, Box* box) override;
    bool SwapOut(Box* box, bool discard) override;
    void CheckBudget() override;
    Box* FindBox(Ticket ticket) override;
    bool RemoveBox(Ticket ticket, Box* box) override;
    Box* TakeBoxForData(Data data) override;
    void AttachData(Box* box, Data data) override;
    bool ForEachBox(typename Private::BoxCallback callback, void* context) override;
    [[nodiscard]] uint32_t BoxCount() override;
    vantor::threads::RecursiveMutex& GetMutex() override { return this->mutex; }
    void RunGreedyPass() override { tr::RunGreedyPass<Weight>(static_cast<Private&>(*this)); }

private:
    template <typename P>
    P& Prop() {
        return tr::PropertyOf<P>(static_cast<CacheProperties&>(*this));
    }
    // Adds a signed amount to an unsigned byte count, wrapping.
    template <typename P>
    void AddTo(int64_t amount) {
        Prop<P>().Set(Prop<P>().Get() + static_cast<uint32_t>(amount));
    }
    void UpdatePanic() { Prop<Panic>().Set(Prop<FlexCacheSize>().Get() == 0); }
};

#pragma GCC diagnostic pop

// ---------------------------------------------------------------------------
// Definitions.

#define TR_CACHE_TEMPLATE                                                          \
    template <typename Ticket, tr::CacheHandle Data, typename Factory,             \
              typename MetaFactory, template <typename, typename> class Policy,    \
              typename ExtraData>                                                  \
        requires tr::CacheMetaFactory<MetaFactory, Factory>
#define TR_CACHE CacheImplementation<Ticket, Data, Factory, MetaFactory, Policy, ExtraData>

TR_CACHE_TEMPLATE
TR_CACHE::CacheImplementation(uint32_t budget) {
    Prop<FlexCacheSize>().Set(0);
    Prop<FlexCacheContents>().Set(0);
    Prop<TotalCacheSize>().Set(0);
    Prop<TotalCacheContents>().Set(0);
    Prop<CRA_Data>().Set(nullptr);
    Prop<Panic>().Set(false);
    SetCacheSize(budget);
    ReplacementPolicy::Initialize(static_cast<Private&>(*this));
}

TR_CACHE_TEMPLATE
TR_CACHE::~CacheImplementation() {
    // No pass may touch the entries from here on.
    ReplacementPolicy::Shutdown(static_cast<Private&>(*this));
    while (!this->ticketIndex.empty()) {
        auto first = this->ticketIndex.begin();
        Box* box = first->second;
        if (box != nullptr && box->factory != nullptr) {
            SwapOut(box, true);
            continue;
        }
        this->ticketIndex.erase(first);
        delete box;
    }
    if (Prop<CRA_Data>().Get() != nullptr) {
        delete static_cast<CRA_Data_Delete*>(Prop<CRA_Data>().Get());
        Prop<CRA_Data>().Set(nullptr);
    }
}

TR_CACHE_TEMPLATE
bool TR_CACHE::DumpStatistics(char* buffer, const uint32_t* capacity) {
    return tr::DumpStatistics(buffer, capacity, [this](auto&& visit) {
        for (const auto& [ticket, box] : this->ticketIndex) {
            const tr::BoxStatistics statistics{box->cost,        box->refCount,
                                               box->hitCount,    box->missCount,
                                               box->swapInCount, box->swapOutCount,
                                               box->factory != nullptr};
            if (!visit(statistics)) {
                return false;
            }
        }
        return true;
    });
}

TR_CACHE_TEMPLATE
bool TR_CACHE::Get(Ticket ticket, Data& out) {
    vantor::threads::ScopedLock lock(this->mutex);
    Box* box = FindBox(ticket);
    if (box == nullptr) {
        return false;
    }
    const uint32_t t0 = vantor::utility::GetTickCount();
    Data handle{};
    if (box->factory != nullptr) {
        box->factory->GetData(ticket, handle);
    }
    box->timeCost += vantor::utility::GetTickCount() - t0;
    if (IsNullHandle(handle)) {
        return false;
    }
    AttachData(box, handle);
    UpdateBox(box, static_cast<int>(tr::BoxEvent::kReferenced));
    box->lastAccess = vantor::utility::GetTickCount();
    CheckBudget();
    out = handle;
    return true;
}

TR_CACHE_TEMPLATE
bool TR_CACHE::Release(Data data) {
    vantor::threads::ScopedLock lock(this->mutex);
    Box* box = TakeBoxForData(data);
    if (box == nullptr) {
        return false;
    }
    box->factory->Release(data);
    UpdateBox(box, static_cast<int>(tr::BoxEvent::kUnreferenced));
    box->lastAccess = vantor::utility::GetTickCount();
    if (box->refCount == 0 && (Prop<Panic>().Get() || box->invalidated)) {
        SwapOut(box, true);
    }
    CheckBudget();
    return true;
}

TR_CACHE_TEMPLATE
bool TR_CACHE::Invalidate(Ticket ticket) {
    bool changed = false;
    auto [first, last] = this->ticketIndex.equal_range(ticket);
    for (auto it = first; it != last; ++it) {
        if (it->second != nullptr && !it->second->invalidated) {
            it->second->invalidated = true;
            changed = true;
        }
    }
    return changed;
}

TR_CACHE_TEMPLATE
bool TR_CACHE::InvalidateIf(FlushPredicate& predicate) {
    for (auto& [ticket, box] : this->ticketIndex) {
        if (box != nullptr && !box->invalidated) {
            box->invalidated = predicate(box->ticket);
        }
    }
    return true;
}

TR_CACHE_TEMPLATE
bool TR_CACHE::Flush() {
    struct Everything : FlushPredicate {
        bool operator()(Ticket) override { return true; }
    } everything;
    return InvalidateIf(everything);
}

TR_CACHE_TEMPLATE
void TR_CACHE::SetCacheSize(uint32_t bytes) {
    Prop<TotalCacheSize>().Set(bytes);
    Prop<FlexCacheSize>().Set(bytes);
}

TR_CACHE_TEMPLATE
uint32_t TR_CACHE::GetCacheSize() { return Prop<TotalCacheSize>().Get(); }

TR_CACHE_TEMPLATE
void TR_CACHE::UpdateBox(Box* box, int event) {
    if (box == nullptr) {
        return;
    }
    const int64_t oldCost = box->cost;
    const int32_t newCost = box->factory != nullptr ? static_cast<int32_t>(box->factory->GetCost()) : 0;
    const int64_t delta = static_cast<int64_t>(newCost) - oldCost;
    AddTo<TotalCacheContents>(delta);
    box->cost = newCost;
    switch (static_cast<tr::BoxEvent>(event)) {
        case tr::BoxEvent::kUnreferenced:
            box->refCount -= 1;
            if (box->refCount > 0) {
                AddTo<FlexCacheSize>(-delta);
                break;
            }
            box->refCount = 0;
            AddTo<FlexCacheContents>(delta);
            AddTo<FlexCacheSize>(oldCost);
            AddTo<FlexCacheContents>(oldCost);
            break;
        case tr::BoxEvent::kReferenced:
            box->refCount += 1;
            AddTo<FlexCacheSize>(-delta);
            if (box->refCount == 1) {
                AddTo<FlexCacheContents>(-oldCost);
                AddTo<FlexCacheSize>(-oldCost);
            }
            break;
        case tr::BoxEvent::kSwappedIn:
            AddTo<FlexCacheContents>(delta);
            AddTo<FlexCacheContents>(oldCost);
            break;
        case tr::BoxEvent::kSwappedOut:
            AddTo<FlexCacheContents>(-oldCost);
            break;
        default:
            break;
    }
    UpdatePanic();
}

TR_CACHE_TEMPLATE
bool TR_CACHE::SwapIn(Ticket ticket, Box* box) {
    const uint32_t t0 = vantor::utility::GetTickCount();
    box->producing = true;
    Factory* factory = nullptr;
    if (!MetaFactory::MakeFactory(factory)) {
        factory = nullptr;
    }
    box->factory = factory;
    box->producing = false;
    const uint32_t elapsed = vantor::utility::GetTickCount() - t0;
    box->timeCost = box->timeCost == 0 ? elapsed : (box->timeCost + elapsed) >> 1;
    if (factory == nullptr) {
        UpdateBox(box, static_cast<int>(tr::BoxEvent::kSwapInFailed));
        return false;
    }
    UpdateBox(box, static_cast<int>(tr::BoxEvent::kSwappedIn));
    box->swapInCount += 1;
    box->ticket = ticket;
    return true;
}

TR_CACHE_TEMPLATE
bool TR_CACHE::SwapOut(Box* box, bool /*discard*/) {
    if (box->factory == nullptr) {
        UpdateBox(box, static_cast<int>(tr::BoxEvent::kNothingToSwapOut));
        return false;
    }
    delete box->factory;
    box->factory = nullptr;
    UpdateBox(box, static_cast<int>(tr::BoxEvent::kSwappedOut));
    box->swapOutCount += 1;
    return true;
}

TR_CACHE_TEMPLATE
void TR_CACHE::CheckBudget() {
    UpdatePanic();
    if (Prop<FlexCacheContents>().Get() > Prop<FlexCacheSize>().Get()) {
        ReplacementPolicy::Post(static_cast<Private&>(*this));
    }
    UpdatePanic();
}

TR_CACHE_TEMPLATE
typename TR_CACHE::Box* TR_CACHE::FindBox(Ticket ticket) {
    Box scratch{};
    bool seen = false;
    auto [it, last] = this->ticketIndex.equal_range(ticket);
    while (it != last) {
        Box* box = it->second;
        if (box == nullptr) {
            it = this->ticketIndex.erase(it);
            last = this->ticketIndex.upper_bound(ticket);
            continue;
        }
        ++it;
        if (box->invalidated) {
            continue;
        }
        if (box->producing) {
            if (box->lastAccess > scratch.lastAccess) {
                scratch = *box;
                seen = true;
            }
            continue;
        }
        if (box->factory != nullptr) {
            box->hitCount += 1;
            return box;
        }
        if (!SwapIn(ticket, box)) {
            return nullptr;
        }
        box->missCount += 1;
        return box;
    }
    Box* box = new Box(seen ? scratch : Box{});
    box->refCount = 0;
    box->factory = nullptr;
    box->cost = 0;
    box->reserved = 0;
    box->producing = false;
    box->invalidated = false;
    if (!SwapIn(ticket, box)) {
        delete box;
        return nullptr;
    }
    this->ticketIndex.emplace(ticket, box);
    box->missCount += 1;
    return box;
}

TR_CACHE_TEMPLATE
bool TR_CACHE::RemoveBox(Ticket ticket, Box* box) {
    auto [it, last] = this->ticketIndex.equal_range(ticket);
    for (; it != last; ++it) {
        if (it->second == box) {
            this->ticketIndex.erase(it);
            return true;
        }
    }
    return false;
}

TR_CACHE_TEMPLATE
typename TR_CACHE::Box* TR_CACHE::TakeBoxForData(Data data) {
    auto [it, last] = this->dataIndex.equal_range(data);
    for (; it != last; ++it) {
        Box* box = it->second;
        if (box->refCount > 0 && !box->producing && box->factory != nullptr) {
            this->dataIndex.erase(it);
            return box;
        }
    }
    return nullptr;
}

TR_CACHE_TEMPLATE
void TR_CACHE::AttachData(Box* box, Data data) {
    if (box->factory != nullptr) {
        this->dataIndex.emplace(data, box);
    }
}

TR_CACHE_TEMPLATE
bool TR_CACHE::ForEachBox(typename Private::BoxCallback callback, void* context) {
    for (auto it = this->ticketIndex.begin(); it != this->ticketIndex.end();) {
        switch (static_cast<tr::BoxAction>(callback(it->second, context))) {
            case tr::BoxAction::kContinue:
                ++it;
                break;
            case tr::BoxAction::kStop:
                return false;
            case tr::BoxAction::kRemoveAndContinue:
                it = this->ticketIndex.erase(it);
                break;
            case tr::BoxAction::kRemoveAndStop:
                this->ticketIndex.erase(it);
                return false;
        }
    }
    return true;
}

TR_CACHE_TEMPLATE
uint32_t TR_CACHE::BoxCount() { return static_cast<uint32_t>(this->ticketIndex.size()); }

#undef TR_CACHE
#undef TR_CACHE_TEMPLATE
