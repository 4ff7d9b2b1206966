// tests/cache/cache_level_support.h — test-private: views into any generic
// cache (boxes, budget invariants, forced eviction), a counting glyph host,
// reference blocks built without a cache, and the disk cache's files.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "cache/disk_cache.h"
#include "cache/memory_cache.h"
#include "cache/properties.h"
#include "host/recursive_mutex.h"
#include "outline/outline_builder.h"
#include "outline/outline_request.h"
#include "tests/outline/glyph_data.h"

namespace tr::test {

template <typename Cache>
std::vector<typename Cache::Box*> BoxesOf(Cache& cache) {
    std::vector<typename Cache::Box*> boxes;
    cache.ForEachBox(
        [](typename Cache::Box* box, void* context) {
            static_cast<std::vector<typename Cache::Box*>*>(context)->push_back(box);
            return 0;
        },
        &boxes);
    return boxes;
}

// The entry a lookup of `ticket` would find: equal key, not invalidated.
template <typename Cache, typename Ticket>
typename Cache::Box* LiveBox(Cache& cache, const Ticket& ticket) {
    for (auto* box : BoxesOf(cache)) {
        if (!box->invalidated && !(box->ticket < ticket) && !(ticket < box->ticket)) return box;
    }
    return nullptr;
}

template <typename P, typename Cache>
auto Property(Cache& cache) {
    return PropertyOf<P>(static_cast<CacheProperties&>(cache)).Get();
}

// The budget properties as sums over the boxes, under the cache's lock.
template <typename Cache>
void ExpectBudgetInvariants(Cache& cache, const std::string& where) {
    vantor::threads::ScopedLock lock(cache.GetMutex());
    std::uint32_t total = 0, unreferenced = 0, referenced = 0;
    for (auto* box : BoxesOf(cache)) {
        const auto cost = static_cast<std::uint32_t>(box->cost);
        total += cost;
        (box->refCount > 0 ? referenced : unreferenced) += cost;
        EXPECT_GE(box->refCount, 0) << where;
        EXPECT_TRUE(box->factory != nullptr || box->cost == 0) << where;
    }
    EXPECT_EQ(Property<TotalCacheContents>(cache), total) << where;
    EXPECT_EQ(Property<FlexCacheContents>(cache), unreferenced) << where;
    EXPECT_EQ(Property<FlexCacheSize>(cache), Property<TotalCacheSize>(cache) - referenced)
        << where;
}

// Swaps out every unreferenced entry by a pass under a budget of 0 (for a
// cache of which no handle is held).
template <typename Cache>
void EvictUnreferenced(Cache& cache) {
    const std::uint32_t budget = cache.GetCacheSize();
    cache.SetCacheSize(0);
    cache.RunGreedyPass();
    cache.SetCacheSize(budget);
}

// Answers each code with a square of side (code % 61 + 4) × `scale` units in
// the curve-record format. A build calls twice (size, then data).
struct SquareHost {
    double scale = 1.0;
    std::atomic<int> calls{0};

    uintptr_t Context() { return reinterpret_cast<uintptr_t>(this); }
    [[nodiscard]] int Builds() const { return calls.load() / 2; }

    static std::int32_t Callback(uintptr_t context, std::uint32_t code, void*,
                                 std::uint32_t size, void* buffer, const std::int32_t*) {
        auto* host = reinterpret_cast<SquareHost*>(context);
        host->calls.fetch_add(1);
        const double side = static_cast<double>(code % 61 + 4) * host->scale;
        const std::vector<std::uint8_t> data = CurveGlyph().Polygon({0, 0}).Record(
            1, {{0, side}, {side, side}, {side, 0}}).Data();
        if (buffer == nullptr) return static_cast<std::int32_t>(data.size());
        if (size < data.size()) return 0;
        std::memcpy(buffer, data.data(), data.size());
        return static_cast<std::int32_t>(data.size());
    }
};

inline OutlineRequest Ticket(SquareHost& host, std::uint16_t code, std::uint32_t extraKey = 8,
                             std::uint32_t flags = 0, std::int32_t outlineSize = 64) {
    return MakeOutlineRequest(host.Context(), flags, outlineSize, &SquareHost::Callback, code,
                              extraKey, 0);
}

inline std::vector<std::uint8_t> BytesOf(const OMData& handle) {
    if (handle.pointer == nullptr) return {};
    return {handle.pointer, handle.pointer + handle.size};
}

// The block of a ticket as the direct build makes it (from a host of its own).
inline std::vector<std::uint8_t> ReferenceBlock(const OutlineRequest& ticket) {
    SquareHost host;
    const OMData built = BuildOutlineBlock(
        MakeOutlineRequest(host.Context(), ticket.flags, ticket.outlineSize, &SquareHost::Callback,
                           ticket.characterCode, ticket.extraKey, ticket.options));
    std::vector<std::uint8_t> bytes = BytesOf(built);
    delete[] built.pointer;
    return bytes;
}

inline std::optional<std::vector<std::uint8_t>> FileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

inline void WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

// The file of a disk entry (empty when the entry has no name).
inline std::string FileOf(const OMFactory& factory) {
    return factory.name.empty() ? std::string() : DiskCacheDirectory() + factory.name;
}

// True when the cache directory lies in the temporary directory CTest gives
// each test, where tests may replace and remove it.
inline bool CacheDirectoryIsPrivate() {
    const char* binary = std::getenv("TR_TEST_BINARY_DIR");
    return binary != nullptr && DiskCacheDirectory().rfind(binary, 0) == 0;
}

}  // namespace tr::test
