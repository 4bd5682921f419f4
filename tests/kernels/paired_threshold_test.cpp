// The paired threshold rule, computed without a branch, against the rule
// read as two cases.
#include <gtest/gtest.h>

#include "kernels/paired_threshold.h"

namespace inkdot {
namespace {

PairDots byCases(int32_t toneA, int32_t toneB, int32_t maxT, int32_t threshold) {
    const bool a = toneA > threshold;
    if (toneA + toneB > maxT) return {a, toneB > maxT - threshold};  // do not fit: B from the top
    return {a, !a && toneA + toneB > threshold};                     // B takes the cells after A
}

TEST(PairedThreshold, AgreesWithTheTwoCases) {
    constexpr int32_t kMaxT = 63;  // an 8 x 8 matrix
    for (int32_t toneA = 0; toneA <= 70; ++toneA) {
        for (int32_t toneB = 0; toneB <= 70; ++toneB) {
            for (int32_t threshold = 0; threshold <= kMaxT; ++threshold) {
                const PairDots expected = byCases(toneA, toneB, kMaxT, threshold);
                const PairDots actual = pairedThreshold(toneA, toneB, kMaxT, threshold);
                ASSERT_EQ(actual.a, expected.a) << toneA << " " << toneB << " " << threshold;
                ASSERT_EQ(actual.b, expected.b) << toneA << " " << toneB << " " << threshold;
            }
        }
    }
}

// 3000 + 2000 > 4095: A below 3000, B above 4095 - 2000 = 2095; both on 2096..2999.
TEST(PairedThreshold, OverfullPairTakesBFromTheOtherEnd) {
    EXPECT_FALSE(pairedThreshold(3000, 2000, 4095, 2095).b);
    EXPECT_TRUE(pairedThreshold(3000, 2000, 4095, 2096).a);
    EXPECT_TRUE(pairedThreshold(3000, 2000, 4095, 2096).b);
    EXPECT_FALSE(pairedThreshold(3000, 2000, 4095, 3000).a);
}

}  // namespace
}  // namespace inkdot
