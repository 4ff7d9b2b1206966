// COutline2: the glyph callback protocol, loading and releasing blocks with
// and without the caches, untrusted callback answers, and builder rules
// visible through a load (simplification tolerance, single paths).
#include "outline/outline2.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <numbers>

#include "block_view.h"
#include "cache/memory_cache.h"
#include "glyph_data.h"

namespace tr {
namespace {

using test::CurveGlyph;

// A glyph callback answering from `data` (or with the answers set) and
// recording how it was called.
struct FakeHost {
    static constexpr std::int32_t kHonest = INT32_MIN;  // answer data.size()
    std::vector<std::uint8_t> data;
    std::int32_t sizeAnswer = kHonest, resultAnswer = kHonest;
    std::uint8_t metrics[20] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    struct Call {
        std::uint32_t code, bufferSize;
        bool nullBuffer, identity, metricsZero;
    };
    std::vector<Call> calls;

    static std::int32_t Callback(uintptr_t context, std::uint32_t code, void* metrics, std::uint32_t bufferSize,
                                 void* buffer, const std::int32_t* matrix) {
        auto* host = reinterpret_cast<FakeHost*>(context);
        const std::int32_t identity[4] = {0x10000, 0, 0, 0x10000};
        const std::uint8_t zero[20] = {};
        host->calls.push_back({code, bufferSize, buffer == nullptr, std::memcmp(matrix, identity, 16) == 0,
                               std::memcmp(metrics, zero, 20) == 0});
        std::memcpy(metrics, host->metrics, 20);
        const auto size = static_cast<std::int32_t>(host->data.size());
        if (buffer == nullptr) return host->sizeAnswer != kHonest ? host->sizeAnswer : size;
        std::memcpy(buffer, host->data.data(), std::min<std::size_t>(host->data.size(), bufferSize));
        return host->resultAnswer != kHonest ? host->resultAnswer : size;
    }
    CCharacterData* Load(COutline2& outline, std::uint32_t flags, std::int32_t size = 16, std::uint16_t code = 'A') {
        return outline.Load(reinterpret_cast<uintptr_t>(this), flags, size, &Callback, code, 8);
    }
};

std::vector<std::uint8_t> SquareGlyph(double side = 10) {
    return CurveGlyph().Polygon({0, 0}).Record(1, {{0, side}, {side, side}, {side, 0}}).Data();
}

TEST(Outline2, CallbackProtocolAndLoadedBlock) {
    FakeHost host;
    host.data = SquareGlyph();
    COutline2* outline = CreateOutline2();
    ASSERT_NE(outline, nullptr);
    EXPECT_TRUE(outline->IsEmpty());
    ASSERT_NE(host.Load(*outline, OUTLINE_NO_CACHE, 160), nullptr);
    EXPECT_FALSE(outline->IsEmpty());
    // Size first (no buffer, zeroed metrics), then the data; identity matrix both times.
    ASSERT_EQ(host.calls.size(), 2u);
    EXPECT_TRUE(host.calls[0].nullBuffer && host.calls[0].bufferSize == 0 && host.calls[0].metricsZero);
    EXPECT_TRUE(!host.calls[1].nullBuffer && host.calls[1].bufferSize == host.data.size());
    for (const auto& call : host.calls) EXPECT_TRUE(call.identity && call.code == 'A');
    EXPECT_EQ(std::memcmp(outline->GetBlock() + 44, host.metrics, 20), 0);
    EXPECT_TRUE(outline->GetOutlineSize() == 160.0 && outline->GetGroupCount() == 1u);
    EXPECT_DOUBLE_EQ(test::TiledArea(test::ReadGroups(outline->GetBlock())), 100.0);
    host.data = SquareGlyph(20);  // a new load replaces the block
    ASSERT_NE(host.Load(*outline, OUTLINE_NO_CACHE), nullptr);
    EXPECT_DOUBLE_EQ(test::TiledArea(test::ReadGroups(outline->GetBlock())), 400.0);
    host.data.clear();  // a space: size 0
    EXPECT_EQ(host.Load(*outline, OUTLINE_NO_CACHE), nullptr);
    EXPECT_TRUE(outline->IsEmpty());
    ReleaseOutline2(outline);
    ReleaseOutline2(nullptr);
}

TEST(Outline2, UntrustedCallbackAnswers) {
    const auto square = SquareGlyph();
    const auto n = static_cast<std::int32_t>(square.size());
    const std::int32_t honest = FakeHost::kHonest;
    const struct {
        const char* name;
        std::int32_t sizeAnswer, resultAnswer;
        bool block;
        std::size_t calls;
    } cases[] = {
        {"honest", honest, honest, true, 2},
        {"result larger than the buffer", honest, 1 << 30, true, 2},
        {"result 0", honest, 0, false, 2},
        {"result cuts the polygon short of its cb", honest, n - 8, false, 2},
        {"size negative", -100, honest, false, 2},
        {"size huge", 0x7fffffff, honest, false, 1},
    };
    for (const auto& c : cases) {
        FakeHost host;
        host.data = square;
        host.sizeAnswer = c.sizeAnswer;
        host.resultAnswer = c.resultAnswer;
        COutline2 outline;
        EXPECT_EQ(host.Load(outline, OUTLINE_NO_CACHE) != nullptr, c.block) << c.name;
        EXPECT_EQ(host.calls.size(), c.calls) << c.name;
    }
}

TEST(OutlineBuilder, SimplificationToleranceIsSizeOver16000) {
    // (50, 0.05) lies 0.05 off the bottom edge: it goes only when strictly
    // closer than the tolerance; (0, 50) sits on the closing edge, never
    // simplified. Size 0: no simplification.
    for (auto [size, points] : {std::pair{0, 6u}, std::pair{800, 6u}, std::pair{801, 5u}}) {
        FakeHost host;
        host.data = test::PolygonGlyph({{{0, 0}, {50, 0.05}, {100, 0}, {100, 100}, {0, 100}, {0, 50}}});
        COutline2 outline;
        ASSERT_NE(host.Load(outline, OUTLINE_POLYGON_INPUT | OUTLINE_NO_CACHE, size), nullptr);
        EXPECT_EQ(test::U32(outline.GetGroupRecord(0), 8), points) << size;
    }
}

TEST(OutlineBuilder, SinglePathThroughTheBoundaryPass) {
    // A pentagram traced as one path. Non-zero fills the whole star; odd
    // leaves out the inner pentagon (winding 2). Tip radius R, inner radius
    // r = R cos 72 / cos 36: star 5 R r sin 36, inner pentagon 5/2 r^2 sin 72.
    const double pi = std::numbers::pi, radius = 100.0;
    std::vector<test::XY> tips;
    for (int k = 1; k < 5; ++k) {
        const double a = pi / 2 + k * 4 * pi / 5;
        tips.push_back({radius * std::cos(a), radius * std::sin(a)});
    }
    FakeHost host;
    host.data = CurveGlyph().Polygon({0, radius}).Record(1, tips).Data();
    const double r = radius * std::cos(2 * pi / 5) / std::cos(pi / 5);
    const double star = 5 * radius * r * std::sin(pi / 5), pentagon = 2.5 * r * r * std::sin(2 * pi / 5);
    const std::pair<std::uint32_t, double> cases[] = {{OUTLINE_SINGLE_PATH_NONZERO, star},
                                                      {OUTLINE_SINGLE_PATH_ODD, star - pentagon}};
    for (auto [flags, area] : cases) {
        COutline2 outline;
        ASSERT_NE(host.Load(outline, flags | OUTLINE_NO_CACHE, 64), nullptr);
        // The nudges move a few points by about 0.01.
        EXPECT_NEAR(test::TiledArea(test::ReadGroups(outline.GetBlock())), area, 0.01 * radius) << flags;
    }
    // A thin quad (sides about 50, 2.5, 50, 3) is a sliver under option bit 0.
    host.data = CurveGlyph().Polygon({0, 0}).Record(1, {{0.5, 50}, {3, 50}, {3, 0}}).Data();
    COutline2 plain, withOption;
    withOption.AddOptions(1);
    EXPECT_NE(host.Load(plain, OUTLINE_SINGLE_PATH_ODD | OUTLINE_NO_CACHE, 64), nullptr);
    EXPECT_EQ(host.Load(withOption, OUTLINE_SINGLE_PATH_ODD | OUTLINE_NO_CACHE, 64), nullptr);
}

TEST(Outline2, LoadsAndDestructionGiveTheCachedBlockBack) {
    FakeHost host;
    host.data = SquareGlyph();
    {
        COutline2 outline;  // without caches only the no-cache flag gets a block
        EXPECT_EQ(host.Load(outline, 0), nullptr);
        EXPECT_TRUE(host.calls.empty());
    }
    ASSERT_TRUE(CreateCharacterCacheLevels());
    const auto held = [] {  // handles held on the memory cache's blocks
        int count = 0;
        const auto add = [](CharacterMemoryCache::Box* b, void* sum) {
            return *static_cast<int*>(sum) += b->refCount, 0;
        };
        GetMemoryCache()->ForEachBox(add, &count);
        return count;
    };
    {
        COutline2 outline;
        ASSERT_NE(host.Load(outline, 0), nullptr);
        ASSERT_NE(host.Load(outline, 0), nullptr);
        EXPECT_EQ(held(), 1) << "the first handle went back";
        host.data.clear();  // a space: no block, and the previous one goes back
        EXPECT_EQ(host.Load(outline, 0, 16, ' '), nullptr);
        EXPECT_EQ(held(), 0);
        host.data = SquareGlyph();
        ASSERT_NE(host.Load(outline, 0), nullptr);
    }
    EXPECT_EQ(held(), 0) << "the destructor gave it back";
    EXPECT_EQ(host.calls.size(), 2u + 2u) << "'A' built once, the space asked twice";
    COutline2 uncached;
    ASSERT_NE(host.Load(uncached, OUTLINE_NO_CACHE), nullptr);
    EXPECT_EQ(host.calls.size(), 6u) << "no cache: built again";
    EXPECT_EQ(held(), 0);
    DestroyCharacterCacheLevels();
}

}  // namespace
}  // namespace tr
