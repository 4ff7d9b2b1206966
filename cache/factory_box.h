// cache/factory_box.h — one cache entry (`Factory_Box`) and the weight that
// orders entries for eviction (`DefaultFBWeight`) (folder-private).
//
// An entry outlives its data: when its factory is destroyed (swapped out) the
// box stays in the cache's ticket index with its statistics, so that the next
// lookup of the same key reuses it. The cache allocates boxes zero-filled and
// owns them; the fields are changed only under the cache lock.
//
// The eviction weight is a cost/benefit ratio: making the data again costs
// `timeCost` milliseconds, keeping them costs `cost` bytes, and a box not used
// for a long time is less likely to be asked for again, so
//
//     weight = timeCost × (1 / cost, or 1 when cost is 0) ÷ (now − lastAccess + 1)
//
// in double precision; candidates are evicted in ascending weight: cheap to
// remake, large, or long unused first.
#pragma once

#include <cstdint>
#include <functional>

// Per-entry extra data that hold nothing.
struct EmptyExtraData {};

template <typename Ticket, typename Factory, typename ExtraData = EmptyExtraData>
struct Factory_Box {
    Factory* factory = nullptr;  // owned while the entry is cached; null otherwise
    int32_t refCount = 0;        // handles of this entry that clients hold
    int32_t cost = 0;            // bytes last reported by the factory; 0 when not cached
    int32_t hitCount = 0;        // lookups that found the entry cached
    int32_t missCount = 0;       // lookups that had to make the data
    Ticket ticket{};             // the key the entry was last made for
    uint32_t lastAccess = 0;     // tick count of the last get or release
    int32_t swapInCount = 0;     // times a factory was made for the entry
    int32_t swapOutCount = 0;    // times the entry's factory was destroyed
    uint32_t timeCost = 0;       // milliseconds spent making and fetching the data
    uint8_t reserved = 0;        // always 0
    bool producing = false;      // the factory is being made (further up this thread)
    bool invalidated = false;    // never returned by a lookup again
    [[no_unique_address]] ExtraData extra{};
};

// An eviction candidate of one replacement pass.
template <typename Box>
struct WeightedBox {
    Box* box;
    uint32_t now;         // the same tick count for every candidate of a pass
    uint32_t lastAccess;  // the box's lastAccess when it was listed
};

template <typename Box>
struct DefaultFBWeight {
    [[nodiscard]] static double Weight(const WeightedBox<Box>& candidate) {
        const Box& box = *candidate.box;
        const double inverseCost = box.cost > 0 ? 1.0 / static_cast<double>(box.cost) : 1.0;
        // The age wraps with the tick count, as the tick count itself does.
        const uint32_t age = candidate.now - candidate.lastAccess + 1u;
        return static_cast<double>(box.timeCost) * inverseCost / static_cast<double>(age);
    }

    // Ascending weight; equal weights by time stamp, then by box address.
    [[nodiscard]] static bool Before(const WeightedBox<Box>& a, const WeightedBox<Box>& b) {
        const double weightA = Weight(a);
        const double weightB = Weight(b);
        if (weightA != weightB) {
            return weightA < weightB;
        }
        if (a.now != b.now) {
            return a.now < b.now;
        }
        return std::less<const Box*>()(a.box, b.box);
    }
};
