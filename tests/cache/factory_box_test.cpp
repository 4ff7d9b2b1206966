// Tests of the cache entry's defaults and of the eviction weight and order.
#include "cache/factory_box.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

struct Key {
    int value;
};
struct NoFactory {};
using Box = Factory_Box<Key, NoFactory>;
using Weight = DefaultFBWeight<Box>;

TEST(FactoryBox, StartsEmpty) {
    const Box box;
    EXPECT_EQ(box.factory, nullptr);
    EXPECT_EQ(box.refCount + box.cost + box.hitCount + box.missCount, 0);
    EXPECT_EQ(box.swapInCount + box.swapOutCount, 0);
    EXPECT_EQ(box.lastAccess + box.timeCost, 0u);
    EXPECT_EQ(box.ticket.value, 0);
    EXPECT_FALSE(box.producing || box.invalidated || box.reserved != 0);
}

TEST(DefaultFBWeight, WeightFormula) {
    struct Case {
        uint32_t timeCost;
        int32_t cost;
        uint32_t now;
        uint32_t lastAccess;
        double weight;  // worked out by hand
    };
    const Case cases[] = {
        {100, 50, 10, 10, 2.0},                // 100 / 50 / 1
        {100, 50, 13, 10, 0.5},                // 100 / 50 / 4
        {100, 0, 10, 1, 10.0},                 // no cost: factor 1; 100 / 10
        {100, -8, 10, 1, 10.0},                // a negative cost counts as none
        {16, 1, 5, 0xFFFFFFFEu, 2.0},          // the age wraps: 5 + 2 + 1 = 8
        {0, 4096, 100, 0, 0.0},                // free to remake
        {3, 4, 0, 0, 0.75},
    };
    for (const Case& c : cases) {
        Box box;
        box.timeCost = c.timeCost;
        box.cost = c.cost;
        EXPECT_EQ(Weight::Weight({&box, c.now, c.lastAccess}), c.weight)
            << c.timeCost << " ms, " << c.cost << " bytes, " << c.now << " - " << c.lastAccess;
    }
}

// Sorting puts cheap, large, old entries first; equal weights go by address.
TEST(DefaultFBWeight, OrderOfCandidates) {
    std::vector<Box> boxes(5);
    boxes[0].timeCost = 40; boxes[0].cost = 10; boxes[0].lastAccess = 99;  // 4 / 2 = 2
    boxes[1].timeCost = 40; boxes[1].cost = 40; boxes[1].lastAccess = 99;  // 1 / 2 = 0.5
    boxes[2].timeCost = 40; boxes[2].cost = 40; boxes[2].lastAccess = 90;  // 1 / 11
    boxes[3].timeCost = 10; boxes[3].cost = 10; boxes[3].lastAccess = 99;  // 0.5, tie with 1
    boxes[4].timeCost = 0;  boxes[4].cost = 1;  boxes[4].lastAccess = 100; // 0
    std::vector<WeightedBox<Box>> candidates;
    for (int i : {3, 0, 4, 1, 2}) {
        candidates.push_back({&boxes[i], 100, boxes[i].lastAccess});
    }
    std::sort(candidates.begin(), candidates.end(), Weight::Before);
    std::vector<const Box*> order;
    for (const auto& candidate : candidates) order.push_back(candidate.box);
    const std::vector<const Box*> expected = {&boxes[4], &boxes[2], &boxes[1], &boxes[3],
                                              &boxes[0]};
    EXPECT_EQ(order, expected);
}

}  // namespace
