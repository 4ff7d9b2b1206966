// Tests of the statistics text: the exact texts, the totals of the summary,
// and the append rule when the buffer runs out.
#include "cache/statistics_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using tr::BoxStatistics;

// Two entries whose ratios are exact in single precision (3/4 and 0/2), and
// a summary ratio of 3/6 = 0.5.
const std::vector<BoxStatistics> kTwoBoxes = {
    {.cost = 4096, .refCount = 2, .hitCount = 3, .missCount = 1,
     .swapInCount = 1, .swapOutCount = 0, .cached = true},
    {.cost = 0, .refCount = 0, .hitCount = 0, .missCount = 2,
     .swapInCount = 2, .swapOutCount = 2, .cached = false},
};

const char kFirstBox[] =
    "Factory_Box:\n Cost in Memory: 4096\n Reference Count: 2\n Hit Count: 3"
    "\n Miss Count: 1\n Hit Ratio: 0.750000\n Num Times Swapped In: 1"
    "\n Num Times Swapped Out: 0\n Is currently cached.\n";
const char kSecondBox[] =
    "Factory_Box:\n Cost in Memory: 0\n Reference Count: 0\n Hit Count: 0"
    "\n Miss Count: 2\n Hit Ratio: 0.000000\n Num Times Swapped In: 2"
    "\n Num Times Swapped Out: 2\n Is not currently cached.\n";
const char kSummary[] =
    "Hit Count: 3\nMiss Count: 3\nHit Ratio: 0.500000\nRef Count: 2\n"
    " Total Currently Cached: 1\n Total FBs: 2\n";

// The pieces of the two entries, in the order they are appended.
std::vector<std::string> EntryPieces() {
    return {"Factory_Box:", "\n Cost in Memory: ", "4096", "\n Reference Count: ", "2",
            "\n Hit Count: ", "3", "\n Miss Count: ", "1", "\n Hit Ratio: ", "0.750000",
            "\n Num Times Swapped In: ", "1", "\n Num Times Swapped Out: ", "0",
            "\n Is currently cached.", "\n",
            "Factory_Box:", "\n Cost in Memory: ", "0", "\n Reference Count: ", "0",
            "\n Hit Count: ", "0", "\n Miss Count: ", "2", "\n Hit Ratio: ", "0.000000",
            "\n Num Times Swapped In: ", "2", "\n Num Times Swapped Out: ", "2",
            "\n Is not currently cached.", "\n"};
}

struct DumpResult {
    bool complete;
    std::string text;
};

// Runs the dump over `boxes` as a cache walk would, stopping when asked to.
DumpResult Dump(const std::vector<BoxStatistics>& boxes, uint32_t capacity,
                const std::string& prefix = "") {
    std::string storage(prefix.size() + capacity + 1 + 64, '#');  // guard after the room
    storage.replace(0, prefix.size() + 1, prefix + '\0');
    const uint32_t capacityCopy = capacity;
    const bool complete = tr::DumpStatistics(storage.data(), &capacityCopy, [&](auto&& visit) {
        for (const BoxStatistics& box : boxes) {
            if (!visit(box)) {
                return false;
            }
        }
        return true;
    });
    EXPECT_EQ(capacityCopy, capacity) << "the capacity is read, never written back";
    const std::string text(storage.c_str());
    EXPECT_LE(text.size(), prefix.size() + capacity);
    EXPECT_EQ(storage.back(), '#') << "wrote past the stated room";
    return {complete, text};
}

TEST(StatisticsText, FullTextOfTwoEntries) {
    const DumpResult result = Dump(kTwoBoxes, 4096);
    EXPECT_TRUE(result.complete);
    EXPECT_EQ(result.text, std::string(kFirstBox) + kSecondBox + kSummary);
}

TEST(StatisticsText, AppendsAfterExistingText) {
    const DumpResult result = Dump(kTwoBoxes, 4096, "memory cache\n");
    EXPECT_EQ(result.text, std::string("memory cache\n") + kFirstBox + kSecondBox + kSummary);
}

// Single-precision ratio: 1/3 prints as 0.333333; totals add up per field.
TEST(StatisticsText, RatioAndTotals) {
    const std::vector<BoxStatistics> boxes = {
        {.cost = 7, .refCount = 1, .hitCount = 1, .missCount = 2, .cached = true},
        {.cost = 9, .refCount = 4, .hitCount = 5, .missCount = 0, .cached = true},
    };
    const DumpResult result = Dump(boxes, 4096);
    EXPECT_NE(result.text.find("\n Hit Ratio: 0.333333\n"), std::string::npos);
    EXPECT_NE(result.text.find("\n Hit Ratio: 1.000000\n"), std::string::npos);
    // 6 hits, 2 misses: 6/8; 5 references; both cached.
    const std::string summary =
        "Hit Count: 6\nMiss Count: 2\nHit Ratio: 0.750000\nRef Count: 5\n"
        " Total Currently Cached: 2\n Total FBs: 2\n";
    ASSERT_GE(result.text.size(), summary.size());
    EXPECT_EQ(result.text.substr(result.text.size() - summary.size()), summary);
}

TEST(StatisticsText, EmptyCacheWritesOnlyTheSummary) {
    const DumpResult result = Dump({}, 4096);
    EXPECT_TRUE(result.complete);
    const std::string head = "Hit Count: 0\nMiss Count: 0\nHit Ratio: ";
    const std::string tail = "\nRef Count: 0\n Total Currently Cached: 0\n Total FBs: 0\n";
    ASSERT_GE(result.text.size(), head.size() + tail.size());
    EXPECT_EQ(result.text.substr(0, head.size()), head);
    EXPECT_EQ(result.text.substr(result.text.size() - tail.size()), tail);
}

// Every capacity from 0 to past the full length: the text is the longest run
// of whole pieces that fits; the entries are complete only when all fit; the
// summary is all or nothing.
TEST(StatisticsText, TruncatesAtWholePieces) {
    const std::vector<std::string> pieces = EntryPieces();
    std::string entries;
    for (const std::string& piece : pieces) {
        entries += piece;
    }
    ASSERT_EQ(entries, std::string(kFirstBox) + kSecondBox);
    const uint32_t fullLength = static_cast<uint32_t>(entries.size() + sizeof kSummary - 1);

    for (uint32_t capacity = 0; capacity <= fullLength + 2; ++capacity) {
        std::string expected;
        uint32_t left = capacity;
        bool stopped = false;
        for (const std::string& piece : pieces) {
            if (piece.size() > left) {
                stopped = true;
                break;
            }
            expected += piece;
            left -= static_cast<uint32_t>(piece.size());
        }
        if (!stopped && sizeof kSummary - 1 <= left) {
            expected += kSummary;
        }
        const DumpResult result = Dump(kTwoBoxes, capacity);
        EXPECT_EQ(result.complete, !stopped) << "capacity " << capacity;
        EXPECT_EQ(result.text, expected) << "capacity " << capacity;
    }
}

TEST(StatisticsText, EdgeCapacities) {
    const std::string entries = std::string(kFirstBox) + kSecondBox;
    const uint32_t entriesLength = static_cast<uint32_t>(entries.size());
    const uint32_t summaryLength = sizeof kSummary - 1;
    struct Case {
        uint32_t capacity;
        bool complete;
        std::string text;
    };
    const Case cases[] = {
        {0, false, ""},
        {11, false, ""},  // "Factory_Box:" is 12 characters
        {12, false, "Factory_Box:"},
        {entriesLength - 1, false, entries.substr(0, entriesLength - 1)},  // all but "\n"
        {entriesLength, true, entries},
        {entriesLength + summaryLength - 1, true, entries},
        {entriesLength + summaryLength, true, entries + kSummary},
    };
    for (const Case& c : cases) {
        const DumpResult result = Dump(kTwoBoxes, c.capacity);
        EXPECT_EQ(result.complete, c.complete) << "capacity " << c.capacity;
        EXPECT_EQ(result.text, c.text) << "capacity " << c.capacity;
    }
}

// The walk stops at the entry that does not fit: later entries are not
// visited.
TEST(StatisticsText, StopsTheWalk) {
    const uint32_t capacity = 20;
    char buffer[64] = "";
    int visited = 0;
    const bool complete = tr::DumpStatistics(buffer, &capacity, [&](auto&& visit) {
        for (const BoxStatistics& box : kTwoBoxes) {
            ++visited;
            if (!visit(box)) {
                return false;
            }
        }
        return true;
    });
    EXPECT_FALSE(complete);
    EXPECT_EQ(visited, 1);
    EXPECT_STREQ(buffer, "Factory_Box:");
}

}  // namespace
