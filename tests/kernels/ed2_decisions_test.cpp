// The two-bit decisions computed without a jump (dot size, pattern tables)
// against the rules read as tests in order, for every input that matters.
#include <gtest/gtest.h>

#include <random>

#include "kernels/ed2/dot_size.h"
#include "kernels/ed2/ed2_pattern_choice.h"

namespace inkdot::ed2 {
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

Pattern generalInOrder(const SmallDotPixel& p, const SmallThresholds& t) {
    if (p.heavy || p.small > t.t1) return Pattern::G1;
    if (!p.dot) return Pattern::G0;
    if (p.small > t.t2) return p.aForm ? Pattern::G2a : Pattern::G2b;
    if (p.small > t.t3) return Pattern::G3;
    return p.aForm ? Pattern::G4a : Pattern::G4b;
}

Pattern family1440x720InOrder(const SmallDotPixel& p, const SmallThresholds& t) {
    if (!p.dot) return p.aForm ? Pattern::H0a : Pattern::H0b;
    if (p.heavy || p.small > t.t1) return Pattern::H1;
    if (p.small > t.t2) return Pattern::H2;
    return Pattern::H3;
}

Pattern doubleYInOrder(const SmallDotPixel& p, const SmallThresholds& t) {
    if (p.heavy || p.small > t.t1) return Pattern::Y1;
    if (p.small > t.t2) return Pattern::Y2;
    if (!p.dot) return Pattern::Y0;
    if (p.small > t.t3) return Pattern::Y3;
    return Pattern::G3;
}

constexpr SmallThresholds kThresholdSets[] = {{15, 3, 1}, {14, 3, 0}, {111, 8, 2}, {2, 9, 40}, {5, 5, 5}, {-1, 300, 0}};

template <class Family, class Rule>
void expectTableFollowsRule(Rule rule) {
    for (const SmallThresholds& t : kThresholdSets) {
        for (int32_t small = 0; small <= 255; ++small) {
            for (int bits = 0; bits < 8; ++bits) {
                const SmallDotPixel p{(bits & 1) != 0, small, (bits & 2) != 0, (bits & 4) != 0};
                ASSERT_EQ(Family::choose(p, t), rule(p, t))
                    << "small " << small << ", heavy " << p.heavy << ", dot " << p.dot << ", aForm " << p.aForm;
            }
        }
    }
}

TEST(Ed2PatternTable, FamiliesFollowTheirRules) {
    expectTableFollowsRule<GeneralFamily>(generalInOrder);
    expectTableFollowsRule<Family1440x720>(family1440x720InOrder);
    expectTableFollowsRule<DoubleYFamily>(doubleYInOrder);
}

}  // namespace
}  // namespace inkdot::ed2
