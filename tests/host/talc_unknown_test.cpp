// Tests of the interface identifier layout.
#include "host/talc_unknown.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

namespace {

// The 16 bytes of "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" in the standard
// layout: the first three groups little-endian, the last two byte by byte.
void BytesOfText(const char* text, uint8_t bytes[16]) {
    unsigned value[11];
    ASSERT_EQ(std::sscanf(text, "%8x-%4x-%4x-%2x%2x-%2x%2x%2x%2x%2x%2x", &value[0], &value[1], &value[2],
                          &value[3], &value[4], &value[5], &value[6], &value[7], &value[8], &value[9],
                          &value[10]),
              11);
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value[0] >> (8 * i));
    for (int i = 0; i < 2; ++i) bytes[4 + i] = static_cast<uint8_t>(value[1] >> (8 * i));
    for (int i = 0; i < 2; ++i) bytes[6 + i] = static_cast<uint8_t>(value[2] >> (8 * i));
    for (int i = 0; i < 8; ++i) bytes[8 + i] = static_cast<uint8_t>(value[3 + i]);
}

TEST(TalcUnknownTest, GuidFieldsLayOutAsTheStandardSixteenBytes) {
    constexpr Talc::Guid kId{0x793307D6, 0xFE55, 0x4055, {0xB1, 0x34, 0x3A, 0xAF, 0xB1, 0x4D, 0x0A, 0x74}};
    uint8_t expected[16];
    BytesOfText("793307D6-FE55-4055-B134-3AAFB14D0A74", expected);
    EXPECT_EQ(std::memcmp(&kId, expected, 16), 0);
}

TEST(TalcUnknownTest, GuidsAreEqualOnlyWhenAllBytesAre) {
    constexpr Talc::Guid kBase{0xAD0BE999, 0x84A4, 0x4245, {0x93, 0x72, 0xB2, 0x4A, 0x16, 0x49, 0x81, 0x99}};
    Talc::Guid same = kBase;
    EXPECT_EQ(same, kBase);
    for (int byte = 0; byte < 16; ++byte) {
        Talc::Guid changed = kBase;
        reinterpret_cast<uint8_t*>(&changed)[byte] ^= 0x01;
        EXPECT_NE(changed, kBase) << "byte " << byte;
    }
}

}  // namespace
