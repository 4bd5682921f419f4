// The two-bit dot-size decision, computed without a jump, against the rules
// read as tests in order.
#include <gtest/gtest.h>

#include <random>

#include "kernels/ed2/dot_size.h"

namespace inkdot {
namespace {

DotDecision decideInOrder(int32_t sum, uint32_t m, const SplitAgainstMatrix& row) {
    if (row.toneLarge > m) return {kLargeDot, sum - kFullDot};
    if (row.toneLargeMedium > m) return {kMediumDot, sum - kFullDot};
    if (row.small == 0) return {kNoDot, sum};
    if (sum >= row.smallThreshold) return {kSmallDot, sum - kFullDot};
    return {kNoDot, sum};
}

uint8_t matrixOnlyInOrder(uint32_t m, uint32_t toneLarge, uint32_t toneLargeMedium, uint32_t toneTotal) {
    if (toneTotal <= m) return kNoDot;
    if (toneLarge > m) return kLargeDot;
    if (toneLargeMedium > m) return kMediumDot;
    return kSmallDot;
}

TEST(Ed2DotSizeSelect, LargestCodeIsTheFirstSizeThatHoldsFromLargeDown) {
    for (int bits = 0; bits < 8; ++bits) {
        const bool large = bits & 4, medium = bits & 2, small = bits & 1;
        const uint32_t expected = large ? 3 : medium ? 2 : small ? 1 : 0;
        EXPECT_EQ(largestCode(large, medium, small), expected) << bits;
    }
}

TEST(Ed2DotSizeSelect, AgreesWithTheRulesInOrder) {
    std::mt19937 rng(3);
    // Small ranges so that equalities and every order of the tones occur,
    // including tones that do not rise (as a damaged table could give).
    std::uniform_int_distribution<uint32_t> tone(0, 12);
    std::uniform_int_distribution<int32_t> amount(0, 3);
    std::uniform_int_distribution<int32_t> sum(-20, 20);
    for (int trial = 0; trial < 50000; ++trial) {
        const SplitAgainstMatrix row{tone(rng), tone(rng), amount(rng), sum(rng)};
        const uint32_t m = tone(rng);
        const int32_t s = sum(rng);
        const DotDecision expected = decideInOrder(s, m, row);
        const DotDecision actual = decideDot(s, m, row);
        ASSERT_EQ(actual.code, expected.code);
        ASSERT_EQ(actual.err, expected.err);
        const uint32_t total = tone(rng);
        ASSERT_EQ(matrixOnlyCode(m, row.toneLarge, row.toneLargeMedium, total),
                  matrixOnlyInOrder(m, row.toneLarge, row.toneLargeMedium, total));
        ASSERT_EQ(matrixLargeMediumCode(m, row.toneLarge, row.toneLargeMedium),
                  row.toneLarge > m ? kLargeDot : row.toneLargeMedium > m ? kMediumDot : kNoDot);
    }
}

}  // namespace
}  // namespace inkdot
