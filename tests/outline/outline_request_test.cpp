// The outline request as a cache key: the order of tickets and handles.
#include "outline/outline_request.h"

#include <gtest/gtest.h>

#include <map>

#include "outline/block_source.h"

namespace tr {
namespace {

int32_t Callback(uintptr_t, uint32_t, void*, uint32_t, void*, const int32_t*) { return 0; }
int32_t OtherCallback(uintptr_t, uint32_t, void*, uint32_t, void*, const int32_t*) { return 1; }

OutlineRequest Request(uint32_t flags, uint16_t code, int32_t size, uint32_t extraKey) {
    return MakeOutlineRequest(7, flags, size, &Callback, code, extraKey, 0);
}

// -1 when a orders first, 1 when b does, 0 when they are one key.
int Order(const OutlineRequest& a, const OutlineRequest& b) {
    const bool less = a < b;
    const bool greater = b < a;
    EXPECT_FALSE(less && greater) << "the order must be asymmetric";
    return less ? -1 : greater ? 1 : 0;
}

TEST(TicketOrder, FieldsComparedInTurn) {
    struct Case {
        const char* name;
        OutlineRequest a;
        OutlineRequest b;
        int expected;
    };
    OutlineRequest byte34High = Request(0, 1, 10, 0);
    byte34High.reserved34 = 1;
    const Case cases[] = {
        // The flags compare as their zero-padded upper-case hex text, which
        // orders as the unsigned values do: digits sort before 'A'-'F'.
        {"flags by their text", Request(0x10, 5, 10, 0), Request(0x9, 5, 10, 0), 1},
        {"hex letters after digits", Request(0xA, 5, 10, 0), Request(0x9, 5, 10, 0), 1},
        {"flags unsigned", Request(0x80000000u, 5, 10, 0), Request(0x7FFFFFFF, 5, 10, 0), 1},
        {"flags decide before the code", Request(0x1, 1, 10, 0), Request(0x2, 0, 10, 0), -1},
        {"byte 34 decides before the code", byte34High, Request(0, 9, 10, 0), 1},
        {"code unsigned", Request(0, 0x8000, 10, 0), Request(0, 0x7FFF, 10, 0), 1},
        {"code decides before the size", Request(0, 1, 99, 0), Request(0, 2, 1, 0), -1},
        {"size signed", Request(0, 1, -5, 0), Request(0, 1, 3, 0), -1},
        {"size decides before the extra key", Request(0, 1, 2, 9), Request(0, 1, 3, 0), -1},
        {"extra key signed", Request(0, 1, 2, 0xFFFFFFFFu), Request(0, 1, 2, 1), -1},
        {"extra key", Request(0, 1, 2, 8), Request(0, 1, 2, 7), 1},
        {"equal", Request(0, 1, 2, 3), Request(0, 1, 2, 3), 0},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Order(c.a, c.b), c.expected) << c.name;
        EXPECT_EQ(Order(c.b, c.a), -c.expected) << c.name << " (reversed)";
    }
}

TEST(TicketOrder, FieldsOutsideTheKeyAreIgnored) {
    const OutlineRequest base = Request(0x20, 'A', 64, 8);
    OutlineRequest other = MakeOutlineRequest(12345, 0x20, 64, &OtherCallback, 'A', 8, 0xFF);
    other.reserved35 = 0x55;
    EXPECT_EQ(Order(base, other), 0);

    // The flags word at 52 is not compared; the text at 0 is.
    OutlineRequest wordOnly = base;
    wordOnly.flags = 0x4000;
    EXPECT_EQ(Order(base, wordOnly), 0);

    // One map entry for all of them.
    std::map<OutlineRequest, int> index;
    index[base] = 1;
    index[other] += 1;
    index[wordOnly] += 1;
    EXPECT_EQ(index.size(), 1u);
    EXPECT_EQ(index[base], 3);
}

TEST(HandleOrder, SizeFirstThenPointer) {
    uint8_t bytes[2];
    const OMData small{&bytes[1], 4};
    const OMData large{&bytes[0], 8};
    EXPECT_TRUE(small < large);  // the size decides although the pointer is higher
    EXPECT_FALSE(large < small);
    const OMData lowPointer{&bytes[0], 4};
    EXPECT_TRUE(lowPointer < small);
    EXPECT_FALSE(small < small);

    EXPECT_TRUE(IsNullHandle(OMData{}));
    EXPECT_TRUE(IsNullHandle(OMData{nullptr, 16}));
    EXPECT_FALSE(IsNullHandle(small));
}

}  // namespace
}  // namespace tr
