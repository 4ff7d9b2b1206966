// The outline request: its byte layout, and its order as a cache key.
#include "outline/outline_request.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>

namespace tr {
namespace {

int32_t Callback(uintptr_t, uint32_t, void*, uint32_t, void*, const int32_t*) { return 0; }
int32_t OtherCallback(uintptr_t, uint32_t, void*, uint32_t, void*, const int32_t*) { return 1; }

OutlineRequest Request(uint32_t flags, uint16_t code, int32_t size, uint32_t extraKey) {
    return MakeOutlineRequest(7, flags, size, &Callback, code, extraKey, 0);
}

TEST(OutlineRequest, FieldsAndHostValues) {
    const OutlineRequest r = MakeOutlineRequest(0x1234567890ull, 0x4abcu, -12, &Callback, 0x41, 8, 5);
    char text[32] = "00004ABC";  // zero-padded: the key compares all 32 bytes
    EXPECT_EQ(std::memcmp(r.flagsText, text, 32), 0);
    EXPECT_TRUE(r.characterCode == 0x41 && r.reserved34 == 0 && r.reserved35 == 0);
    EXPECT_TRUE(r.outlineSize == -12 && r.extraKey == 8 && r.flags == 0x4abc && r.options == 5);
    EXPECT_EQ(RequestContext(r), 0x1234567890ull);
    EXPECT_EQ(RequestCallback(r), &Callback);
}

TEST(TicketOrder, FieldsComparedInTurnAndOthersIgnored) {
    OutlineRequest byte34High = Request(0, 1, 10, 0);
    byte34High.reserved34 = 1;
    const struct {
        const char* name;
        OutlineRequest a, b;
        int expected;  // -1 when a orders first
    } cases[] = {
        // The flags compare as zero-padded upper-case hex text: digits before 'A'-'F'.
        {"flags by their text", Request(0x10, 5, 10, 0), Request(0x9, 5, 10, 0), 1},
        {"hex letters after digits", Request(0xA, 5, 10, 0), Request(0x9, 5, 10, 0), 1},
        {"flags decide before the code", Request(0x1, 1, 10, 0), Request(0x2, 0, 10, 0), -1},
        {"byte 34 decides before the code", byte34High, Request(0, 9, 10, 0), 1},
        {"code unsigned", Request(0, 0x8000, 10, 0), Request(0, 0x7FFF, 10, 0), 1},
        {"size signed", Request(0, 1, -5, 0), Request(0, 1, 3, 0), -1},
        {"size decides before the extra key", Request(0, 1, 2, 9), Request(0, 1, 3, 0), -1},
        {"extra key signed", Request(0, 1, 2, 0xFFFFFFFFu), Request(0, 1, 2, 1), -1},
        {"equal", Request(0, 1, 2, 3), Request(0, 1, 2, 3), 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ((c.b < c.a) - (c.a < c.b), c.expected) << c.name;
        EXPECT_FALSE(c.a < c.b && c.b < c.a) << c.name;
    }
    // Context, callback, byte 35, the flags word and the options are not compared.
    const OutlineRequest base = Request(0x20, 'A', 64, 8);
    OutlineRequest other = MakeOutlineRequest(12345, 0x20, 64, &OtherCallback, 'A', 8, 0xFF), wordOnly = base;
    other.reserved35 = 0x55;
    wordOnly.flags = 0x4000;
    std::map<OutlineRequest, int> index;
    for (const OutlineRequest& r : {base, other, wordOnly}) index[r] += 1;
    ASSERT_EQ(index.size(), 1u);
    EXPECT_EQ(index.begin()->second, 3);
}

}  // namespace
}  // namespace tr
