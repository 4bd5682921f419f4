// The neighbour test of the colour smoothing, as a bool and as a mask.
#include <gtest/gtest.h>

#include <random>

#include "kernels/grid_node.h"

namespace inkdot {
namespace {

TEST(GridNode, NeighbourMaskAgreesWithNeighbouringNodes) {
    std::mt19937 rng(5);
    // Node indices of a valid grid, one beyond it, and the -2 of "no previous pixel".
    std::uniform_int_distribution<int32_t> node(-2, 33);
    for (int trial = 0; trial < 20000; ++trial) {
        const NodeIndices a{node(rng), node(rng), node(rng)};
        // Half the time b lies within two nodes of a on every axis, so both answers occur often.
        std::uniform_int_distribution<int32_t> near(-2, 2);
        const NodeIndices b = trial % 2 ? NodeIndices{node(rng), node(rng), node(rng)}
                                        : NodeIndices{a.i0 + near(rng), a.i1 + near(rng), a.i2 + near(rng)};
        ASSERT_EQ(neighbourMask(a, b), neighbouringNodes(a, b) ? 0xFFFFFFFFu : 0u);
    }
}

TEST(GridNode, NeighbourMaskExamples) {
    EXPECT_EQ(neighbourMask({5, 5, 5}, {4, 6, 5}), 0xFFFFFFFFu);
    EXPECT_EQ(neighbourMask({5, 5, 5}, {5, 5, 7}), 0u);   // one axis two nodes away
    EXPECT_EQ(neighbourMask({0, 0, 0}, {-2, -2, -2}), 0u);  // the first pixel of a run
}

}  // namespace
}  // namespace inkdot
