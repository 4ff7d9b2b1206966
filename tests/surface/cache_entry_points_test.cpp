// Tests of the character cache entry points as a host uses them.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/cache/cache_level_support.h"
#include "titlerender.h"

namespace tr::test {
namespace {

constexpr int kSide = 64;

struct Render {
    std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(kSide * kSide, 0);
    std::int32_t plan = 0;
};

// The face and an outer outline at one outline unit per pixel.
Render RenderCharacter(SquareHost& host, std::uint32_t code, std::uint32_t flags = 0) {
    Render render;
    SurfaceDescriptor descriptor{{render.pixels.data(), kSide, kSide, kSide * 4}, 1.0};
    Surface* surface = CreateSurface(&descriptor);
    NewCharacterCallBack(surface, host.Context(), flags, 64, &SquareHost::Callback, code);
    FaceParameters face{64.0, 1.0, 1.0, 0.0, 0.0, 0.0, 10.0, 50.0, 0.0, 0.0};
    SetFace(surface, &face);
    SetFragment(surface, std::vector<std::uint8_t>(16, 2).data(), 0, 0.0, 0.0, 0.0);
    SetFragment(surface, std::vector<std::uint8_t>(16, 3).data(), 2, 3.0, 0.0, 0.0);
    SetColor(surface, 2, 0xFF2040E0u);
    SetColor(surface, 3, 0xC0F0F020u);
    render.plan = FinishCharacter(surface, 0, 0, 0, 0);
    CloseSurface(surface);
    return render;
}

class CacheEntryPointsTest : public ::testing::Test {
protected:
    void TearDown() override { DestroyCharacterCaches(); }
};

// A disk cache that exists alone is kept and the memory cache joins it.
TEST_F(CacheEntryPointsTest, CreateAndDestroyReportWhatTheyDid) {
    ASSERT_TRUE(CreateDiskCache());
    CharacterDiskCache* disk = GetDiskCache();
    EXPECT_TRUE(CreateCharacterCaches());
    EXPECT_TRUE(GetMemoryCache() != nullptr && GetDiskCache() == disk);
    EXPECT_FALSE(CreateCharacterCaches());
    EXPECT_TRUE(DestroyCharacterCaches());
    EXPECT_TRUE(GetMemoryCache() == nullptr && GetDiskCache() == nullptr);
    EXPECT_FALSE(DestroyCharacterCaches());
}

// Without caches only the no-cache flag gets an outline; with them a glyph
// is built once, and the no-cache flag builds at every render, drawing the same.
TEST_F(CacheEntryPointsTest, TheSameGlyphRenderedTwiceIsBuiltOnce) {
    SquareHost host, direct;
    const Render none = RenderCharacter(host, 'X');
    EXPECT_TRUE(none.plan == 0 && host.calls.load() == 0);
    EXPECT_EQ(std::count(none.pixels.begin(), none.pixels.end(), 0u), kSide * kSide);
    ASSERT_TRUE(CreateCharacterCaches());
    const Render first = RenderCharacter(host, 'X'), second = RenderCharacter(host, 'X');
    EXPECT_EQ(first.plan, 1);
    EXPECT_EQ(host.calls.load(), 2);  // size and data, once
    const auto inked = std::count_if(first.pixels.begin(), first.pixels.end(), [](std::uint32_t p) { return p >> 24; });
    EXPECT_GT(inked, ('X' % 61 + 4) * ('X' % 61 + 4));  // SquareHost's square
    EXPECT_TRUE(second.pixels == first.pixels);
    const Render uncached = RenderCharacter(direct, 'X', OUTLINE_NO_CACHE);
    RenderCharacter(direct, 'X', OUTLINE_NO_CACHE);
    EXPECT_EQ(direct.Builds(), 2);
    EXPECT_TRUE(uncached.pixels == first.pixels);
}

}  // namespace
}  // namespace tr::test
