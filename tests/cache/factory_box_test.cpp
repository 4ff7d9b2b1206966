// Tests of the eviction weight and the order of eviction candidates.
#include "cache/factory_box.h"

#include <gtest/gtest.h>

namespace {

struct NoFactory {};
using Box = Factory_Box<int, NoFactory>;
using Weight = DefaultFBWeight<Box>;

TEST(DefaultFBWeight, WeightFormula) {
    const struct {
        uint32_t timeCost;
        int32_t cost;
        uint32_t now, lastAccess;
        double weight;  // worked out by hand
    } cases[] = {
        {100, 50, 10, 10, 2.0},        // 100 / 50 / 1
        {100, 50, 13, 10, 0.5},        // 100 / 50 / 4
        {100, 0, 10, 1, 10.0},         // no cost: factor 1; 100 / 10
        {100, -8, 10, 1, 10.0},        // a negative cost counts as none
        {16, 1, 5, 0xFFFFFFFEu, 2.0},  // the age wraps: 5 + 2 + 1 = 8
        {3, 4, 0, 0, 0.75},
    };
    for (const auto& c : cases) {
        Box box;
        box.timeCost = c.timeCost;
        box.cost = c.cost;
        EXPECT_EQ(Weight::Weight({&box, c.now, c.lastAccess}), c.weight)
            << c.timeCost << " ms, " << c.cost << " bytes, " << c.now << " - " << c.lastAccess;
    }
}

// Ascending weight; equal weights by the pass's time stamp, then by address.
TEST(DefaultFBWeight, CandidateOrder) {
    Box boxes[2];
    boxes[0].timeCost = boxes[1].timeCost = 40;
    boxes[0].cost = boxes[1].cost = 10;
    const WeightedBox<Box> old{&boxes[1], 100, 90}, recent{&boxes[0], 100, 99},
        tie{&boxes[1], 100, 99};
    EXPECT_TRUE(Weight::Before(old, recent));
    EXPECT_FALSE(Weight::Before(recent, old));
    EXPECT_TRUE(Weight::Before(recent, tie));
    EXPECT_FALSE(Weight::Before(tie, recent));
    EXPECT_TRUE(Weight::Before({&boxes[1], 99, 98}, tie)) << "earlier stamp first";
}

}  // namespace
