// The paired threshold rule on hand-worked pairs: B takes the cells after A
// when the pair fits the matrix, else the cells from the other end.
#include <gtest/gtest.h>

#include "kernels/paired_threshold.h"

namespace inkdot {
namespace {

TEST(PairedThreshold, HandWorkedPairs) {
    // 10 + 20 fits 63: A on thresholds below 10, B on 10..29, neither from 30.
    EXPECT_TRUE(pairedThreshold(10, 20, 63, 9).a);
    EXPECT_FALSE(pairedThreshold(10, 20, 63, 9).b);
    EXPECT_FALSE(pairedThreshold(10, 20, 63, 10).a);
    EXPECT_TRUE(pairedThreshold(10, 20, 63, 10).b);
    EXPECT_TRUE(pairedThreshold(10, 20, 63, 29).b);
    EXPECT_FALSE(pairedThreshold(10, 20, 63, 30).b);
    // 3000 + 2000 > 4095: A below 3000, B above 4095 - 2000 = 2095; both on 2096..2999.
    EXPECT_FALSE(pairedThreshold(3000, 2000, 4095, 2095).b);
    EXPECT_TRUE(pairedThreshold(3000, 2000, 4095, 2096).a);
    EXPECT_TRUE(pairedThreshold(3000, 2000, 4095, 2096).b);
    EXPECT_FALSE(pairedThreshold(3000, 2000, 4095, 3000).a);
}

}  // namespace
}  // namespace inkdot
