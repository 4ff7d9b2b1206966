// cache/statistics_text.h — the statistics text a cache writes on request
// (folder-private).
//
// `DumpStatistics` walks a cache's entries and appends, for each, a block of
// labelled counters, then a summary over all of them. The text goes into the
// caller's NUL-terminated buffer under one append rule: a piece of length L is
// appended only when L does not exceed the remaining capacity (characters
// that may still be appended, not counting the terminating zero); it is then
// appended with strncat and the capacity drops by L. The first piece that
// does not fit stops the writing for good.
//
// The cache owns the walk; this class owns the texts, the totals and the
// capacity. Cache-independent: an entry is described by `BoxStatistics`.
#pragma once

#include <cstdint>

namespace tr {

// What the statistics text says about one cache entry.
struct BoxStatistics {
    int32_t cost = 0;
    int32_t refCount = 0;
    int32_t hitCount = 0;
    int32_t missCount = 0;
    int32_t swapInCount = 0;
    int32_t swapOutCount = 0;
    bool cached = false;  // the entry currently has a factory
};

class CStatisticsText {
public:
    // `buffer` holds a NUL-terminated text with room for `capacity` more
    // characters and the terminating zero.
    CStatisticsText(char* buffer, uint32_t capacity);

    // Appends the block of one entry and adds it to the totals. Returns false,
    // leaving the entry partly written, when a piece does not fit; no further
    // text is written after that.
    [[nodiscard]] bool AppendBox(const BoxStatistics& box);

    // Appends the summary over the entries appended so far when it fits in
    // what is left (nothing is written otherwise).
    void AppendSummary();

    [[nodiscard]] uint32_t GetRemaining() const { return remaining_; }

private:
    [[nodiscard]] bool Append(const char* piece);
    [[nodiscard]] bool AppendLabelled(const char* label, int32_t value);

    uint32_t remaining_;
    char* buffer_;
    int32_t totalHits_ = 0;
    int32_t totalMisses_ = 0;
    int32_t totalReferences_ = 0;
    int32_t entriesCached_ = 0;
    int32_t entriesSeen_ = 0;
    bool stopped_ = false;
};

// Writes the statistics of every entry that `forEach` visits, then the
// summary. `forEach(visit)` calls `visit(const BoxStatistics&) -> bool` for
// each entry in order and stops as soon as it returns false; it returns true
// when it reached the end. Returns true when every entry was written (the
// summary may still have been left out for want of room).
template <typename ForEach>
bool DumpStatistics(char* buffer, const uint32_t* capacity, ForEach&& forEach) {
    CStatisticsText text(buffer, *capacity);
    const bool complete =
        forEach([&text](const BoxStatistics& box) { return text.AppendBox(box); });
    if (!complete) {
        return false;
    }
    text.AppendSummary();
    return true;
}

}  // namespace tr
