// COutline2 and the outline request: the request record, the callback
// protocol, loading and releasing blocks, untrusted callback answers, and
// builder details visible through a load.
#include "outline/outline2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>

#include "block_view.h"
#include "fake_glyph_host.h"
#include "glyph_data.h"
#include "cache/memory_cache.h"
#include "outline/outline_builder.h"

namespace tr {
namespace {

using test::CurveGlyph;
using test::FakeGlyphHost;

std::vector<std::uint8_t> SquareGlyph(double side = 10) {
    return CurveGlyph().Polygon({0, 0}).Record(1, {{0, side}, {side, side}, {side, 0}}).Data();
}

TEST(OutlineRequest, LayoutAndHostValues) {
    const OutlineRequest r = MakeOutlineRequest(0x1234567890ull, 0x4abcu, -12, &FakeGlyphHost::Callback, 0x41, 8, 5);
    std::uint8_t bytes[60];
    std::memcpy(bytes, &r, 60);
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes), "00004ABC");
    for (int i = 9; i < 32; ++i) EXPECT_EQ(bytes[i], 0) << i;
    EXPECT_EQ(bytes[32], 0x41);
    EXPECT_EQ(bytes[33], 0);
    EXPECT_EQ(bytes[34], 0);
    EXPECT_EQ(bytes[35], 0);
    std::int32_t size;
    std::memcpy(&size, bytes + 40, 4);
    EXPECT_EQ(size, -12);
    EXPECT_EQ(test::U32(bytes, 48), 8u);
    EXPECT_EQ(test::U32(bytes, 52), 0x4abcu);
    EXPECT_EQ(test::U32(bytes, 56), 5u);
    EXPECT_EQ(RequestContext(r), 0x1234567890ull);
    EXPECT_EQ(RequestCallback(r), &FakeGlyphHost::Callback);
    // The same host values give the same record bytes.
    const OutlineRequest again = MakeOutlineRequest(0x1234567890ull, 0x4abcu, -12, &FakeGlyphHost::Callback, 0x41, 8, 5);
    EXPECT_EQ(std::memcmp(&r, &again, 60), 0);
}

TEST(Outline2, CallbackProtocolAndLoadedBlock) {
    FakeGlyphHost host;
    host.data = SquareGlyph();
    COutline2* outline = CreateOutline2();
    ASSERT_NE(outline, nullptr);
    EXPECT_TRUE(outline->IsEmpty());
    EXPECT_EQ(outline->AddOptions(2), 2u);
    CCharacterData* holder = outline->Load(host.Context(), OUTLINE_NO_CACHE, 160, &FakeGlyphHost::Callback, 'A', 8);
    ASSERT_NE(holder, nullptr);
    EXPECT_FALSE(outline->IsEmpty());

    ASSERT_EQ(host.calls.size(), 2u);
    const std::int32_t identity[4] = {0x10000, 0, 0, 0x10000};
    EXPECT_TRUE(host.calls[0].nullBuffer);
    EXPECT_EQ(host.calls[0].bufferSize, 0u);
    EXPECT_TRUE(host.calls[0].metricsZero);
    EXPECT_FALSE(host.calls[1].nullBuffer);
    EXPECT_EQ(host.calls[1].bufferSize, host.data.size());
    for (const auto& call : host.calls) {
        EXPECT_EQ(std::memcmp(call.matrix, identity, sizeof identity), 0);
        EXPECT_EQ(call.code, static_cast<std::uint32_t>('A'));
    }

    const std::uint8_t* block = outline->GetBlock();
    EXPECT_EQ(outline->GetGroupCount(), 1u);
    EXPECT_EQ(outline->GetOutlineSize(), 160.0);
    EXPECT_EQ(std::memcmp(block + 44, host.metricsToWrite, 20), 0);
    EXPECT_EQ(outline->GetGroupRecord(0), block + 72);
    EXPECT_EQ(test::U32(outline->GetGroupRecord(0), 8), 4u);
    EXPECT_EQ(outline->GetTriangleIndexCount(0), 6u);
    const CPoint3D* outer = outline->GetOuterPoints(0);
    EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(outer), block + test::U32(block + 72, 12));
    EXPECT_EQ(reinterpret_cast<const std::uint8_t*>(outline->GetTriangleIndices(0)),
              block + test::U32(block + 72, 4));
    ReleaseOutline2(outline);
    ReleaseOutline2(nullptr);
}

TEST(Outline2, LoadTwiceReplacesTheBlockAndNoOutlineGivesNull) {
    FakeGlyphHost host;
    host.data = SquareGlyph();
    COutline2 outline;
    ASSERT_NE(outline.Load(host.Context(), 0x4000, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
    const std::uint8_t* first = outline.GetBlock();
    std::vector<std::uint8_t> copy(first, first + test::U32(first, 32));
    host.data = SquareGlyph(20);
    ASSERT_NE(outline.Load(host.Context(), 0x4000, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
    EXPECT_NE(std::memcmp(outline.GetBlock(), copy.data(), copy.size()), 0);
    EXPECT_FALSE(outline.holder.fromCache);
    EXPECT_EQ(outline.holder.blockSize, test::U32(outline.GetBlock(), 32));

    host.data.clear();  // a space: size 0
    EXPECT_EQ(outline.Load(host.Context(), OUTLINE_NO_CACHE, 16, &FakeGlyphHost::Callback, ' ', 8), nullptr);
    EXPECT_TRUE(outline.IsEmpty());
    EXPECT_EQ(outline.Load(host.Context(), OUTLINE_NO_CACHE, 16, nullptr, ' ', 8), nullptr);
}

TEST(Outline2, UntrustedCallbackAnswers) {
    struct Case {
        const char* name;
        std::int32_t sizeAnswer;
        std::int32_t resultAnswer;
        bool block;
        std::size_t secondCalls;
    };
    const auto square = SquareGlyph();
    const auto n = static_cast<std::int32_t>(square.size());
    const std::int32_t honest = FakeGlyphHost::kHonest;
    const Case cases[] = {
        {"honest", honest, honest, true, 2},
        {"result larger than the buffer", honest, 1 << 30, true, 2},
        {"result 0", honest, 0, false, 2},
        {"result negative", honest, -5, false, 2},
        {"result cuts the polygon short of its cb", honest, n - 8, false, 2},
        {"size 0", 0, honest, false, 2},
        {"size negative", -100, honest, false, 2},
        {"size huge", 0x7fffffff, honest, false, 1},
    };
    for (const Case& c : cases) {
        FakeGlyphHost host;
        host.data = square;
        host.sizeAnswer = c.sizeAnswer;
        host.resultAnswer = c.resultAnswer;
        COutline2 outline;
        const bool loaded = outline.Load(host.Context(), OUTLINE_NO_CACHE, 64, &FakeGlyphHost::Callback, 'x', 0) != nullptr;
        EXPECT_EQ(loaded, c.block) << c.name;
        EXPECT_EQ(host.calls.size(), c.secondCalls) << c.name;
    }
}

TEST(Outline2, DegenerateContoursKeepGroupsWithoutTriangles) {
    // Contours of 0, 1 and 2 points: nothing to triangulate; empty ones go.
    FakeGlyphHost host;
    host.data = test::PolygonGlyph({{}, {{1, 1}}, {{5, 5}, {6, 6}}});
    COutline2 outline;
    ASSERT_NE(outline.Load(host.Context(), OUTLINE_POLYGON_INPUT | OUTLINE_NO_CACHE, 64, &FakeGlyphHost::Callback, 'x', 0), nullptr);
    ASSERT_EQ(outline.GetGroupCount(), 2u);
    for (std::uint32_t g = 0; g < 2; ++g) EXPECT_EQ(outline.GetTriangleIndexCount(g), 0u);
}

TEST(OutlineBuilder, ZeroSizeMeansNoSimplification) {
    // A square with an extra point 0.05 off its bottom edge: T = S/16000.
    const std::vector<std::vector<test::XY>> contour = {{{0, 0}, {50, 0.05}, {100, 0}, {100, 100}, {0, 100}}};
    struct Case {
        std::int32_t size;
        std::uint32_t points;
    };
    for (const Case& c : {Case{0, 5}, Case{800, 5}, Case{801, 4}}) {  // 800/16000 = 0.05: not closer
        FakeGlyphHost host;
        host.data = test::PolygonGlyph(contour);
        COutline2 outline;
        ASSERT_NE(outline.Load(host.Context(), OUTLINE_POLYGON_INPUT | OUTLINE_NO_CACHE, c.size, &FakeGlyphHost::Callback, 'x', 0), nullptr);
        EXPECT_EQ(test::U32(outline.GetGroupRecord(0), 8), c.points) << c.size;
    }
}

TEST(OutlineBuilder, SinglePathNudges) {
    struct Case {
        const char* name;
        std::vector<test::XY> in;
        std::vector<double> x;
    };
    const Case cases[] = {
        {"vertical step right", {{0, 0}, {0, 10}, {5, 10}}, {0, 0.01313, 5}},
        {"small step left", {{1, 0}, {0.995, 10}, {5, 10}}, {1, 0.995 - 0.01111, 5}},
        {"closing pair, first slightly left", {{4.995, 0}, {0, 10}, {5, 10}}, {4.995 - 0.02222, 0, 5}},
        {"closing pair, first slightly right", {{5.005, 0}, {0, 10}, {5, 10}}, {5.005 + 0.02626, 0, 5}},
    };
    for (const Case& c : cases) {
        Coutline path;
        for (const auto& p : c.in) path.points.push_back(CPoint3D{p.x, p.y, 0});
        NudgeNearVertical(path);
        std::size_t i = 0;
        for (const CPoint3D& p : path.points) EXPECT_DOUBLE_EQ(p.x, c.x[i++]) << c.name;
    }
}

double TiledArea(const std::uint8_t* block) {
    double sum = 0;
    for (const auto& g : test::ReadGroups(block)) {
        for (std::size_t t = 0; t + 2 < g.triangles.size(); t += 3) {
            sum += test::TriangleArea(g.all.at(g.triangles[t]), g.all.at(g.triangles[t + 1]),
                                      g.all.at(g.triangles[t + 2]));
        }
    }
    return sum;
}

TEST(OutlineBuilder, SinglePathThroughTheBoundaryPass) {
    // A pentagram traced as one path. Non-zero fills the whole star; odd
    // leaves out the inner pentagon (winding 2). Star with tip radius R and
    // inner radius r = R cos 72 / cos 36: area 5 R r sin 36; inner pentagon
    // 5/2 r^2 sin 72.
    const double pi = std::numbers::pi, radius = 100.0;
    std::vector<test::XY> tips;
    for (int k = 1; k < 5; ++k) {
        const double a = pi / 2 + k * 4 * pi / 5;
        tips.push_back({radius * std::cos(a), radius * std::sin(a)});
    }
    FakeGlyphHost host;
    host.data = CurveGlyph().Polygon({0, radius}).Record(1, tips).Data();
    const double r = radius * std::cos(2 * pi / 5) / std::cos(pi / 5);
    const double star = 5 * radius * r * std::sin(pi / 5);
    const double pentagon = 2.5 * r * r * std::sin(2 * pi / 5);
    struct Case {
        std::uint32_t flags;
        double area;
    };
    for (const Case& c : {Case{OUTLINE_SINGLE_PATH_NONZERO, star}, Case{OUTLINE_SINGLE_PATH_ODD, star - pentagon}}) {
        COutline2 outline;
        ASSERT_NE(outline.Load(host.Context(), c.flags | OUTLINE_NO_CACHE, 64, &FakeGlyphHost::Callback, 'x', 0), nullptr);
        // The nudges move a few points by about 0.01; allow for that.
        EXPECT_NEAR(TiledArea(outline.GetBlock()), c.area, 0.01 * radius) << c.flags;
    }

    // A thin quad (sides about 50, 2.5, 50, 3) is a sliver under option bit 0.
    host.data = CurveGlyph().Polygon({0, 0}).Record(1, {{0.5, 50}, {3, 50}, {3, 0}}).Data();
    COutline2 outline;
    EXPECT_NE(outline.Load(host.Context(), OUTLINE_SINGLE_PATH_ODD | OUTLINE_NO_CACHE, 64, &FakeGlyphHost::Callback, 'x', 0), nullptr);
    COutline2 withOption;
    withOption.AddOptions(1);
    EXPECT_EQ(withOption.Load(host.Context(), OUTLINE_SINGLE_PATH_ODD | OUTLINE_NO_CACHE, 64, &FakeGlyphHost::Callback, 'x', 0), nullptr);

    host.data = CurveGlyph().Polygon({0, 0}).Record(2, {{100, 100}, {100, 0}}).Data();
    EXPECT_EQ(outline.Load(host.Context(), OUTLINE_SINGLE_PATH_ODD | OUTLINE_NO_CACHE, 64, &FakeGlyphHost::Callback, 'x', 0), nullptr)
        << "a single path must start with a line record";
}

// Loads through the character caches, as the rendering pass makes them once
// the host has created the caches.
class Outline2CacheTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(CreateCharacterCacheLevels()); }
    void TearDown() override { DestroyCharacterCacheLevels(); }
};

TEST_F(Outline2CacheTest, TheSecondLoadIsServedByTheCacheUnlessTheRequestSaysNoCache) {
    struct Case {
        std::uint32_t flags;
        bool shared;
    };
    for (const Case c : {Case{0, true}, Case{OUTLINE_NO_CACHE, false}}) {
        FakeGlyphHost host;
        host.data = SquareGlyph();
        COutline2 first, second;
        ASSERT_NE(first.Load(host.Context(), c.flags, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
        ASSERT_NE(second.Load(host.Context(), c.flags, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
        EXPECT_EQ(first.GetBlock() == second.GetBlock(), c.shared) << c.flags;
        EXPECT_EQ(host.calls.size(), c.shared ? 2u : 4u) << c.flags;
        EXPECT_EQ(first.holder.fromCache, c.shared) << c.flags;
        const std::uint32_t size = test::U32(first.GetBlock(), 32);
        EXPECT_EQ(std::memcmp(first.GetBlock(), second.GetBlock(), size), 0) << c.flags;
    }
}

TEST_F(Outline2CacheTest, LoadAndDestructionGiveTheCachedBlockBack) {
    FakeGlyphHost host;
    host.data = SquareGlyph();
    const OutlineRequest ticket =
        MakeOutlineRequest(host.Context(), 0, 16, &FakeGlyphHost::Callback, 'A', 8, 0);
    auto refCount = [&] {
        int held = 0;
        GetMemoryCache()->ForEachBox(
            [](CharacterMemoryCache::Box* box, void* count) {
                *static_cast<int*>(count) += box->refCount;
                return 0;
            },
            &held);
        return held;
    };
    {
        COutline2 outline;
        ASSERT_NE(outline.Load(host.Context(), 0, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
        EXPECT_EQ(refCount(), 1);
        ASSERT_NE(outline.Load(host.Context(), 0, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
        EXPECT_EQ(refCount(), 1) << "the first handle went back";
        host.data.clear();  // a space: no block, and the previous one goes back
        EXPECT_EQ(outline.Load(host.Context(), 0, 16, &FakeGlyphHost::Callback, ' ', 8), nullptr);
        EXPECT_EQ(refCount(), 0);
        host.data = SquareGlyph();
        ASSERT_NE(outline.Load(host.Context(), 0, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
    }
    EXPECT_EQ(refCount(), 0) << "the destructor gave it back";
    OMData again = MemoryCacheGet(ticket);
    EXPECT_NE(again.pointer, nullptr);
    EXPECT_EQ(MemoryCacheRelease(again), 1);
    EXPECT_EQ(host.calls.size(), 2u + 2u) << "'A' built once, the space asked twice";
}

TEST(Outline2, WithoutCachesOnlyTheNoCacheFlagGetsABlock) {
    FakeGlyphHost host;
    host.data = SquareGlyph();
    COutline2 outline;
    EXPECT_EQ(outline.Load(host.Context(), 0, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
    EXPECT_TRUE(outline.holder.fromCache);
    EXPECT_TRUE(host.calls.empty());
    EXPECT_NE(outline.Load(host.Context(), OUTLINE_NO_CACHE, 16, &FakeGlyphHost::Callback, 'A', 8), nullptr);
}

}  // namespace
}  // namespace tr
