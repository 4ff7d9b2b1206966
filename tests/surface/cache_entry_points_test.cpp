// Tests of the character cache entry points as a host uses them: what they
// report, that a glyph rendered twice is built once, and that a cache file
// damaged between two renders changes nothing on screen.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "tests/cache/cache_level_support.h"
#include "titlerender.h"

namespace tr::test {
namespace {

constexpr int kSide = 64;

struct Render {
    std::vector<std::uint32_t> pixels;
    std::int32_t plan = 0;
};

// One character, its face and an outer outline, at one outline unit per
// pixel, onto a transparent target.
Render RenderCharacter(SquareHost& host, std::uint32_t code, std::uint32_t flags = 0) {
    Render render;
    render.pixels.assign(kSide * kSide, 0);
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

int Inked(const Render& r) {
    return static_cast<int>(std::count_if(r.pixels.begin(), r.pixels.end(), [](std::uint32_t p) { return p >> 24; }));
}

class CacheEntryPointsTest : public ::testing::Test {
protected:
    void TearDown() override { DestroyCharacterCaches(); }
};

TEST_F(CacheEntryPointsTest, CreateAndDestroyReportWhatTheyDid) {
    EXPECT_TRUE(CreateCharacterCaches());
    ASSERT_TRUE(GetMemoryCache() != nullptr && GetDiskCache() != nullptr);
    EXPECT_FALSE(CreateCharacterCaches()) << "the caches exist already";
    EXPECT_TRUE(DestroyCharacterCaches());
    EXPECT_TRUE(GetMemoryCache() == nullptr && GetDiskCache() == nullptr);
    EXPECT_FALSE(DestroyCharacterCaches()) << "nothing left to destroy";
    // A disk cache that exists alone is kept; the memory cache joins it.
    ASSERT_TRUE(CreateDiskCache());
    CharacterDiskCache* disk = GetDiskCache();
    EXPECT_TRUE(CreateCharacterCaches()) << "the memory cache is made";
    EXPECT_EQ(GetDiskCache(), disk);
}

// Without caches only the no-cache flag gets an outline; with them a glyph
// is built once, and the no-cache flag builds at every render, drawing the same.
TEST_F(CacheEntryPointsTest, TheSameGlyphRenderedTwiceIsBuiltOnce) {
    SquareHost host, direct;
    const Render none = RenderCharacter(host, 'X');
    EXPECT_TRUE(none.plan == 0 && Inked(none) == 0 && host.calls.load() == 0);
    ASSERT_TRUE(CreateCharacterCaches());
    const Render first = RenderCharacter(host, 'X'), second = RenderCharacter(host, 'X');
    EXPECT_EQ(first.plan, 1);
    EXPECT_EQ(host.calls.load(), 2) << "asked for size and data once";
    EXPECT_GT(Inked(first), ('X' % 61 + 4) * ('X' % 61 + 4)) << "SquareHost's square, one unit per pixel";
    EXPECT_TRUE(second.pixels == first.pixels);
    const Render uncached = RenderCharacter(direct, 'X', OUTLINE_NO_CACHE);
    RenderCharacter(direct, 'X', OUTLINE_NO_CACHE);
    EXPECT_EQ(direct.Builds(), 2);
    EXPECT_TRUE(uncached.pixels == first.pixels);
}

TEST_F(CacheEntryPointsTest, ADamagedCacheFileRendersTheCharacterAsBefore) {
    ASSERT_TRUE(CreateCharacterCaches());
    SquareHost host;
    const Render before = RenderCharacter(host, 'M');
    ASSERT_EQ(before.plan, 1);
    // Push the block out of memory so that its file is written.
    EvictUnreferenced(*GetMemoryCache());
    const OutlineRequest ticket = Ticket(host, 'M');
    auto* box = LiveBox(*GetDiskCache(), ticket);
    ASSERT_TRUE(box != nullptr && box->factory->onDisk);
    const std::string path = FileOf(*box->factory);
    auto file = FileBytes(path);
    ASSERT_TRUE(file.has_value());
    // Garbage of the right length: the size word stays, the block does not.
    for (std::size_t i = 4; i < file->size(); ++i) (*file)[i] = static_cast<std::uint8_t>(i * 151 + 7);
    WriteFileBytes(path, *file);
    const Render after = RenderCharacter(host, 'M');
    EXPECT_TRUE(after.plan == 1 && after.pixels == before.pixels);
    EXPECT_EQ(host.Builds(), 2) << "the damaged file was not used";
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace tr::test
