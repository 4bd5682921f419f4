// The neighbour test of the colour smoothing on packed node indices.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "kernels/grid_node.h"

namespace inkdot {
namespace {

// The rule itself: no index moved by more than one node.
bool neighbouring(const int a[3], const int b[3]) {
    for (int k = 0; k < 3; ++k)
        if (std::abs(a[k] - b[k]) > 1) return false;
    return true;
}

TEST(GridNode, NeighbourMaskFollowsTheRuleOnEveryIndexRange) {
    std::mt19937 rng(5);
    // Node indices from 0 to 256 (a damaged cell table's last entry plus one).
    std::uniform_int_distribution<int> node(0, 256);
    std::uniform_int_distribution<int> near(-2, 2);
    for (int trial = 0; trial < 20000; ++trial) {
        int a[3], b[3];
        for (int k = 0; k < 3; ++k) a[k] = node(rng);
        // Half the time b lies within two nodes of a on every axis, so both answers occur often.
        for (int k = 0; k < 3; ++k) b[k] = trial % 2 ? node(rng) : std::clamp(a[k] + near(rng), 0, 256);
        ASSERT_EQ(neighbourMask(packNodes(a[0], a[1], a[2]), packNodes(b[0], b[1], b[2])),
                  neighbouring(a, b) ? 0xFFFFFFFFu : 0u);
    }
}

TEST(GridNode, NeighbourMaskExamples) {
    EXPECT_EQ(neighbourMask(packNodes(5, 5, 5), packNodes(4, 6, 5)), 0xFFFFFFFFu);
    EXPECT_EQ(neighbourMask(packNodes(5, 5, 5), packNodes(5, 5, 7)), 0u);  // one axis two nodes away
    EXPECT_EQ(neighbourMask(packNodes(0, 0, 0), kNoNodes), 0u);            // the first pixel of a run
    EXPECT_EQ(neighbourMask(packNodes(256, 0, 256), packNodes(255, 1, 256)), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace inkdot
