// Tests of the SetFragment rules and the fragment list of a character.
#include "surface/fragment.h"

#include <gtest/gtest.h>

#include <optional>

#include "surface/character_context.h"

namespace {

TEST(FragmentRules, KindsAfterWidthAndDistanceRules) {
    const struct { int32_t kind; double width, distance; std::optional<int32_t> expected; } cases[] = {
        {0, 0.0, 0.0, 0}, {0, 3.0, 2.0, 0},  // faces are never dropped
        // Strokes without width vanish.
        {1, 0.0, 5.0, std::nullopt}, {2, 0.0, 0.0, std::nullopt}, {6, 0.0, 1.0, std::nullopt},
        {7, -0.0, 1.0, std::nullopt}, {1, 2.0, 0.0, 1}, {2, 2.0, 1.0, 2},
        // Stroke shadows without width become the face shadow, which vanishes without distance.
        {4, 0.0, 3.0, 3}, {5, 0.0, 3.0, 3}, {4, 0.0, 0.0, std::nullopt}, {3, 1.0, 0.0, std::nullopt},
        {3, 0.0, -0.0, std::nullopt},
        // Shadows without distance fall back to what they shadow.
        {4, 2.0, 0.0, 1}, {5, 2.0, 0.0, 2}, {8, 2.0, 0.0, 6}, {9, 2.0, 0.0, 7}, {8, 2.0, 1.0, 8}, {3, 0.0, 1.0, 3},
        {12, 0.0, 0.0, 12}, {-3, 0.0, 0.0, -3},  // kinds outside 0-9 pass unchanged (drawn as faces later)
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ApplyFragmentRules(c.kind, c.width, c.distance), c.expected)
            << "kind " << c.kind << " width " << c.width << " distance " << c.distance;
    }
}

// Option 0x400: each stroke gets a mapless twin 1.42 times as wide, faces
// none. 0x8000 clears option A, 0x200 sets option B.
TEST(FragmentList, WideOutlinesAddMaplessTwinAndOwnTheirMap) {
    CharacterContext* context = CharacterContext::Create();
    ASSERT_NE(context, nullptr);
    uint8_t map[16] = {0, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 9};
    context->AddFragment(map, 2, 5.0, 0.0, 0.0);
    map[15] = 0;
    EXPECT_EQ(context->fragments[0].nibbleMap[15], 9);
    context->ApplyCharacterOptions(0x400);
    context->AddFragment(map, 2, 5.0, 0.0, 0.0);
    context->AddFragment(map, 0, 5.0, 0.0, 0.0);
    context->AddFragment(map, 4, 2.0, 30.0, 1.0);
    ASSERT_EQ(context->fragments.size(), 6u);
    const int32_t kinds[6] = {2, 2, 2, 0, 4, 4};
    const uint8_t noMap[6] = {0, 0, 1, 0, 0, 1};
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_TRUE(context->fragments[i].kind == kinds[i] && context->fragments[i].noMap == noMap[i]) << i;
    }
    EXPECT_DOUBLE_EQ(context->fragments[2].width, 5.0 * 1.42);
    EXPECT_DOUBLE_EQ(context->fragments[5].width, 2.0 * 1.42);
    EXPECT_TRUE(context->fragments[5].distance == 1.0 && context->compositor.optionA == 1);
    context->ApplyCharacterOptions(0x8000 | 0x200);
    EXPECT_TRUE(context->compositor.optionA == 0 && context->compositor.optionB == 1);
    CharacterContext::Destroy(context);
}

}  // namespace
