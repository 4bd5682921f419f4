// The neighbour test of the colour smoothing on packed node indices.
#include <gtest/gtest.h>

#include "kernels/grid_node.h"

namespace inkdot {
namespace {

TEST(GridNode, NeighbourMaskExamples) {
    EXPECT_EQ(neighbourMask(packNodes(5, 5, 5), packNodes(4, 6, 5)), 0xFFFFFFFFu);
    EXPECT_EQ(neighbourMask(packNodes(5, 5, 5), packNodes(5, 5, 7)), 0u);  // one axis two nodes away
    EXPECT_EQ(neighbourMask(packNodes(0, 0, 0), kNoNodes), 0u);            // the first pixel of a run
    EXPECT_EQ(neighbourMask(packNodes(256, 0, 256), packNodes(255, 1, 256)), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace inkdot
