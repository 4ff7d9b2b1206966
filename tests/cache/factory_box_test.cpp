// Tests of the eviction weight and the order of eviction candidates.
#include "cache/factory_box.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

struct NoFactory {};
using Box = Factory_Box<int, NoFactory>;
using Weight = DefaultFBWeight<Box>;

TEST(DefaultFBWeight, WeightFormula) {
    struct Case {
        uint32_t timeCost;
        int32_t cost;
        uint32_t now;
        uint32_t lastAccess;
        double weight;  // worked out by hand
    };
    const Case cases[] = {
        {100, 50, 10, 10, 2.0},        // 100 / 50 / 1
        {100, 50, 13, 10, 0.5},        // 100 / 50 / 4
        {100, 0, 10, 1, 10.0},         // no cost: factor 1; 100 / 10
        {100, -8, 10, 1, 10.0},        // a negative cost counts as none
        {16, 1, 5, 0xFFFFFFFEu, 2.0},  // the age wraps: 5 + 2 + 1 = 8
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

// Cheap, large, old entries first; equal weights by address.
TEST(DefaultFBWeight, OrderOfCandidates) {
    std::vector<Box> boxes(5);
    const int fields[5][3] = {{40, 10, 99}, {40, 40, 99}, {40, 40, 90}, {10, 10, 99}, {0, 1, 100}};
    for (int i = 0; i < 5; ++i) {  // weights 2, 0.5, 1/11, 0.5 (tie with 1), 0
        boxes[i].timeCost = fields[i][0];
        boxes[i].cost = fields[i][1];
        boxes[i].lastAccess = fields[i][2];
    }
    std::vector<WeightedBox<Box>> candidates;
    for (int i : {3, 0, 4, 1, 2}) candidates.push_back({&boxes[i], 100, boxes[i].lastAccess});
    std::sort(candidates.begin(), candidates.end(), Weight::Before);
    std::vector<const Box*> order;
    for (const auto& candidate : candidates) order.push_back(candidate.box);
    EXPECT_EQ(order, (std::vector<const Box*>{&boxes[4], &boxes[2], &boxes[1], &boxes[3], &boxes[0]}));
}

}  // namespace
