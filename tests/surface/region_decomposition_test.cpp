// Tests of DecomposeRegions: the worked cases pin order and merging; random
// regions are checked pixel by pixel against the plans covering each pixel.
#include "surface/region_decomposition.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>

namespace {

using Plans = std::vector<uint32_t>;

Region R(int32_t x, int32_t y, int32_t w, int32_t h, Plans plans) { return Region{{x, y, w, h}, std::move(plans)}; }

std::string Describe(const std::vector<Region>& regions) {
    std::ostringstream s;
    for (const Region& r : regions) {
        s << "(" << r.rect.x << "," << r.rect.y << "," << r.rect.width << "," << r.rect.height << ")[";
        for (uint32_t p : r.plans) s << p << " ";
        s << "] ";
    }
    return s.str();
}

// Column order when there are more x edges than y edges, else row order;
// cells of equal plans merge along that order, never across an empty cell.
TEST(RegionDecomposition, WorkedCases) {
    const struct { const char* name; std::vector<Region> in, out; } cases[] = {
        {"side by side: column order", {R(0, 0, 10, 10, {1}), R(5, 0, 10, 10, {2})},
         {R(0, 0, 5, 10, {1}), R(5, 0, 5, 10, {1, 2}), R(10, 0, 5, 10, {2})}},
        {"one above the other: row order", {R(0, 0, 10, 10, {1}), R(0, 5, 10, 10, {2})},
         {R(0, 0, 10, 5, {1}), R(0, 5, 10, 5, {1, 2}), R(0, 10, 10, 5, {2})}},
        {"no plans adds no edges", {R(0, 0, 10, 10, {1}), R(5, 5, 10, 10, {})}, {R(0, 0, 10, 10, {1})}},
        {"equal rectangles", {R(2, 2, 8, 8, {5}), R(2, 2, 8, 8, {2, 5})}, {R(2, 2, 8, 8, {2, 5})}},
        {"merge down a column", {R(0, 0, 10, 20, {1}), R(10, 0, 10, 10, {2}), R(20, 0, 10, 10, {3})},
         {R(0, 0, 10, 20, {1}), R(10, 0, 10, 10, {2}), R(20, 0, 10, 10, {3})}},
        {"no merge across a gap",
         {R(0, 0, 10, 10, {1}), R(0, 20, 10, 10, {1}), R(10, 0, 30, 10, {2}), R(20, 0, 10, 10, {2})},
         {R(0, 0, 10, 10, {1}), R(0, 20, 10, 10, {1}), R(10, 0, 10, 10, {2}), R(20, 0, 10, 10, {2}),
          R(30, 0, 10, 10, {2})}},
        {"merge along a row", {R(0, 0, 10, 30, {4}), R(0, 10, 10, 10, {1})},
         {R(0, 0, 10, 10, {4}), R(0, 10, 10, 10, {1, 4}), R(0, 20, 10, 10, {4})}},
    };
    for (const auto& c : cases) {
        std::vector<Region> regions = c.in;
        DecomposeRegions(regions, RegionRect{0, 0, 100, 100});
        EXPECT_EQ(Describe(regions), Describe(c.out)) << c.name;
    }
}

using Pixels = std::map<std::pair<int, int>, Plans>;

// The plans covering each pixel of the clip, straight from the definition.
Pixels ExpectedPixels(const std::vector<Region>& in, const RegionRect& clip) {
    Pixels pixels;
    for (int y = clip.y; y < clip.y + clip.height; ++y) {
        for (int x = clip.x; x < clip.x + clip.width; ++x) {
            std::set<uint32_t> plans;
            for (const Region& r : in) {
                if (x >= r.rect.x && x < r.rect.x + r.rect.width && y >= r.rect.y && y < r.rect.y + r.rect.height) {
                    plans.insert(r.plans.begin(), r.plans.end());
                }
            }
            if (!plans.empty()) pixels[{x, y}] = Plans(plans.begin(), plans.end());
        }
    }
    return pixels;
}

// Output regions are non-empty and disjoint; their plan lists, compared with
// the sorted sets above, must be sorted and free of repeats.
TEST(RegionDecomposition, RandomRegionsMatchPerPixelPlans) {
    std::mt19937 rng(20261123);
    auto uniform = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int iteration = 0; iteration < 2000; ++iteration) {
        const RegionRect clip{uniform(-10, 10), uniform(-10, 10), uniform(0, 50), uniform(0, 50)};
        std::vector<Region> in;
        const int count = uniform(0, 9);
        for (int i = 0; i < count; ++i) {
            Plans plans;
            const int planCount = uniform(0, 3) == 0 ? 0 : uniform(1, 3);
            for (int p = 0; p < planCount; ++p) plans.push_back(static_cast<uint32_t>(uniform(1, 6)));
            in.push_back(R(uniform(-15, 45), uniform(-15, 45), uniform(-2, 30), uniform(-2, 30), plans));
        }
        const std::string input = "clip " + Describe({R(clip.x, clip.y, clip.width, clip.height, {})}) + Describe(in);
        std::vector<Region> out = in;
        DecomposeRegions(out, clip);
        Pixels got;
        for (const Region& r : out) {
            ASSERT_TRUE(r.rect.width > 0 && r.rect.height > 0) << input;
            for (int y = r.rect.y; y < r.rect.y + r.rect.height; ++y) {
                for (int x = r.rect.x; x < r.rect.x + r.rect.width; ++x) {
                    ASSERT_TRUE(got.emplace(std::make_pair(x, y), r.plans).second) << x << "," << y << " " << input;
                }
            }
        }
        ASSERT_EQ(got, ExpectedPixels(in, clip)) << input << "\n -> " << Describe(out);
    }
}

TEST(RegionDecomposition, ExtremeCoordinatesDoNotOverflow) {
    std::vector<Region> regions = {R(INT32_MAX - 5, INT32_MAX - 5, INT32_MAX, 100, {1}),
                                   R(INT32_MIN, 0, 20, INT32_MAX, {2})};
    DecomposeRegions(regions, RegionRect{INT32_MAX - 10, 0, INT32_MAX, INT32_MAX});
    // The first is cut at the clip's right edge, 2^32 - 12: no 32-bit sum.
    EXPECT_EQ(Describe(regions),
              Describe({R(INT32_MAX - 5, INT32_MAX - 5, INT32_MAX - 5, 5, {1})}));
}

}  // namespace
