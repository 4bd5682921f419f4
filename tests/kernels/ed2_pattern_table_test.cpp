// The two-bit families choose through pattern tables; the tables must give
// what the rules give read in order, for every small amount, dot, parity and
// heaviness, whatever the thresholds.
#include <gtest/gtest.h>

#include "kernels/ed2/ed2_pattern_choice.h"

namespace inkdot::ed2 {
namespace {

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
