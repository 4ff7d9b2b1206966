// Tests of the statistics text: exact texts, summary totals, and the append
// rule when the buffer runs out.
#include "cache/statistics_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using tr::BoxStatistics;

// Ratios 3/4 and 0/2 per entry (exact in single precision), 3/6 in the summary.
const std::vector<BoxStatistics> kTwoBoxes = {
    {.cost = 4096, .refCount = 2, .hitCount = 3, .missCount = 1, .swapInCount = 1, .cached = true},
    {.missCount = 2, .swapInCount = 2, .swapOutCount = 2, .cached = false},
};
// The pieces of the two entries, in the order they are appended.
const std::vector<std::string> kPieces = {
    "Factory_Box:", "\n Cost in Memory: ", "4096", "\n Reference Count: ", "2",
    "\n Hit Count: ", "3", "\n Miss Count: ", "1", "\n Hit Ratio: ", "0.750000",
    "\n Num Times Swapped In: ", "1", "\n Num Times Swapped Out: ", "0",
    "\n Is currently cached.", "\n",
    "Factory_Box:", "\n Cost in Memory: ", "0", "\n Reference Count: ", "0",
    "\n Hit Count: ", "0", "\n Miss Count: ", "2", "\n Hit Ratio: ", "0.000000",
    "\n Num Times Swapped In: ", "2", "\n Num Times Swapped Out: ", "2",
    "\n Is not currently cached.", "\n"};
const std::string kSummary = "Hit Count: 3\nMiss Count: 3\nHit Ratio: 0.500000\nRef Count: 2\n"
                             " Total Currently Cached: 1\n Total FBs: 2\n";

struct DumpResult {
    bool complete;
    std::string text;
    int visited;
};

// Runs the dump over `boxes` after `prefix`, as a cache walk would, with a
// guard after the stated room.
DumpResult Dump(const std::vector<BoxStatistics>& boxes, uint32_t capacity,
                const std::string& prefix = "") {
    std::string storage = prefix + '\0' + std::string(capacity + 64, '#');
    int visited = 0;
    const bool complete = tr::DumpStatistics(storage.data(), &capacity, [&](auto&& visit) {
        for (const BoxStatistics& box : boxes) {
            ++visited;
            if (!visit(box)) return false;
        }
        return true;
    });
    EXPECT_EQ(storage[prefix.size() + capacity + 1], '#') << "wrote past the stated room";
    return {complete, storage.c_str(), visited};
}

// 27 / 29 = 0.9310344827...: the entry's ratio, in single precision, is the
// float 0.93103450536... and prints as 0.931035; the summary's, in double
// precision, prints as 0.931034.
TEST(StatisticsText, RatiosInTheirPrecision) {
    const std::string text = Dump({{.hitCount = 27, .missCount = 2}}, 4096).text;
    EXPECT_NE(text.find("\n Hit Ratio: 0.931035\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nHit Ratio: 0.931034\n"), std::string::npos) << text;
}

// Every capacity from 0 to past the full length, after existing text: the
// text is the longest run of whole pieces that fits, the walk stops at the
// entry that does not fit, and the summary is all or nothing.
TEST(StatisticsText, TruncatesAtWholePieces) {
    const std::string prefix = "memory cache\n";
    uint32_t fullLength = static_cast<uint32_t>(kSummary.size());
    for (const std::string& piece : kPieces) fullLength += static_cast<uint32_t>(piece.size());
    for (uint32_t capacity = 0; capacity <= fullLength + 1; ++capacity) {
        std::string expected = prefix;
        uint32_t left = capacity;
        size_t fitted = 0;
        for (; fitted < kPieces.size() && kPieces[fitted].size() <= left; ++fitted) {
            expected += kPieces[fitted];
            left -= static_cast<uint32_t>(kPieces[fitted].size());
        }
        const bool complete = fitted == kPieces.size();
        if (complete && kSummary.size() <= left) expected += kSummary;
        const DumpResult result = Dump(kTwoBoxes, capacity, prefix);
        EXPECT_EQ(result.complete, complete) << "capacity " << capacity;
        EXPECT_EQ(result.text, expected) << "capacity " << capacity;
        EXPECT_EQ(result.visited, fitted < 17 ? 1 : 2) << "capacity " << capacity;
    }
}

}  // namespace
