// Tests of the SetFragment rules and the fragment list of a character.
#include "surface/fragment.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "surface/character_context.h"

namespace {

struct RuleCase {
    int32_t kind;
    double width;
    double distance;
    std::optional<int32_t> expected;
};

TEST(FragmentRules, KindsAfterWidthAndDistanceRules) {
    const RuleCase cases[] = {
        // Face is never dropped.
        {0, 0.0, 0.0, 0}, {0, 3.0, 2.0, 0},
        // Strokes without width vanish.
        {1, 0.0, 5.0, std::nullopt}, {2, 0.0, 0.0, std::nullopt},
        {6, 0.0, 1.0, std::nullopt}, {7, -0.0, 1.0, std::nullopt},
        {1, 2.0, 0.0, 1}, {2, 2.0, 1.0, 2},
        // Stroke shadows without width become the face shadow...
        {4, 0.0, 3.0, 3}, {5, 0.0, 3.0, 3},
        // ...which vanishes without distance.
        {4, 0.0, 0.0, std::nullopt}, {3, 1.0, 0.0, std::nullopt}, {3, 0.0, -0.0, std::nullopt},
        // Shadows without distance fall back to what they shadow.
        {4, 2.0, 0.0, 1}, {5, 2.0, 0.0, 2}, {8, 2.0, 0.0, 6}, {9, 2.0, 0.0, 7},
        {8, 2.0, 1.0, 8}, {3, 0.0, 1.0, 3},
        // Kinds outside 0-9 pass unchanged (drawn as faces later).
        {12, 0.0, 0.0, 12}, {-3, 0.0, 0.0, -3},
    };
    for (const RuleCase& c : cases) {
        EXPECT_EQ(ApplyFragmentRules(c.kind, c.width, c.distance), c.expected)
            << "kind " << c.kind << " width " << c.width << " distance " << c.distance;
    }
}

TEST(FragmentRules, TraceNames) {
    EXPECT_STREQ(FragmentKindName(0), "Face            ");
    EXPECT_STREQ(FragmentKindName(5), "OutlineOutShadow");
    EXPECT_STREQ(FragmentKindName(6), "ERR*****");
    EXPECT_STREQ(FragmentKindName(1000), "ERR*****");
    for (int32_t kind = 0; kind <= 5; ++kind) EXPECT_EQ(std::strlen(FragmentKindName(kind)), 16u);
}

TEST(FragmentList, MapIsCopiedAndMissingMapMarksNoMap) {
    uint8_t map[16];
    for (int i = 0; i < 16; ++i) map[i] = static_cast<uint8_t>(15 - i);
    CFragment drawn(map, 2, 5.0, 45.0, 3.0);
    map[0] = 0;  // the fragment keeps its own copy
    EXPECT_EQ(drawn.noMap, 0);
    EXPECT_EQ(drawn.nibbleMap[0], 15);
    EXPECT_EQ(drawn.nibbleMap[15], 0);
    CFragment hidden(nullptr, 0, 0.0, 0.0, 0.0);
    EXPECT_EQ(hidden.noMap, 1);
    for (uint8_t v : hidden.nibbleMap) EXPECT_EQ(v, 0);
    CFragment defaults;
    EXPECT_EQ(defaults.kind, 0);
    EXPECT_EQ(defaults.noMap, 1);
}

TEST(FragmentList, WideOutlinesAddMaplessTwin) {
    CharacterContext* context = CharacterContext::Create();
    ASSERT_NE(context, nullptr);
    const uint8_t map[16] = {0, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
    context->AddFragment(map, 2, 5.0, 0.0, 0.0);
    ASSERT_EQ(context->fragments.size(), 1u);  // not wide yet

    context->ApplyCharacterOptions(0x400);
    context->AddFragment(map, 2, 5.0, 0.0, 0.0);
    context->AddFragment(map, 0, 5.0, 0.0, 0.0);  // faces get no twin
    context->AddFragment(map, 4, 2.0, 30.0, 1.0);
    ASSERT_EQ(context->fragments.size(), 6u);
    const CFragment& twin = context->fragments[2];
    EXPECT_EQ(twin.kind, 2);
    EXPECT_EQ(twin.noMap, 1);
    EXPECT_DOUBLE_EQ(twin.width, 5.0 * 1.42);
    EXPECT_EQ(context->fragments[1].noMap, 0);
    EXPECT_EQ(context->fragments[3].kind, 0);
    const CFragment& shadowTwin = context->fragments[5];
    EXPECT_EQ(shadowTwin.kind, 4);
    EXPECT_EQ(shadowTwin.noMap, 1);
    EXPECT_DOUBLE_EQ(shadowTwin.width, 2.0 * 1.42);
    EXPECT_DOUBLE_EQ(shadowTwin.angle, 30.0);
    EXPECT_DOUBLE_EQ(shadowTwin.distance, 1.0);
    CharacterContext::Destroy(context);
}

TEST(FragmentList, CharacterOptionBytes) {
    CharacterContext* context = CharacterContext::Create();
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->outlineFlags, 2u);
    EXPECT_EQ(context->compositor.wideOutlines, 0);
    EXPECT_EQ(context->compositor.optionA, 1);
    EXPECT_EQ(context->compositor.optionB, 0);
    context->ApplyCharacterOptions(0x8000 | 0x200);
    EXPECT_EQ(context->compositor.wideOutlines, 0);
    EXPECT_EQ(context->compositor.optionA, 0);
    EXPECT_EQ(context->compositor.optionB, 1);
    CharacterContext::Destroy(context);
}

}  // namespace
