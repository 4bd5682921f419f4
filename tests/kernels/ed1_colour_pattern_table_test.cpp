// The colour kernels spread by pattern tables (a band by the level, a column
// by dot and parity); the tables must choose what the pattern rules choose,
// for every level, dot and parity, whatever the thresholds.
#include <gtest/gtest.h>

#include "kernels/ed1/ed1_colour_run.h"
#include "kernels/ed1/pattern_choice.h"

namespace inkdot {
namespace {

// Falling thresholds as a class gives them, equal ones, rising ones, and
// ones outside the level range.
constexpr SpreadThresholds kThresholdSets[] = {
    {200, 120, 60, 20}, {128, 128, 64, 64}, {10, 50, 100, 200}, {300, -1, 255, 0}, {0, 0, 0, 0}, {90, 90, 90, 90},
};

template <class Family, unsigned Plane, class Rule>
void expectTableFollowsRule(Rule rule) {
    for (const SpreadThresholds& t : kThresholdSets) {
        for (int32_t level = 0; level <= 255; ++level) {
            for (bool dot : {false, true}) {
                for (bool odd : {false, true}) {
                    ASSERT_EQ((colourPattern<Family, Plane>(level, dot, odd, t)), rule(level, dot, odd, t))
                        << "plane " << Plane << ", level " << level << ", dot " << dot << ", odd " << odd
                        << ", thresholds " << t.t1 << " " << t.t2 << " " << t.t3 << " " << t.t4;
                }
            }
        }
    }
}

TEST(Ed1ColourPatternTable, GeneralFollowsChooseGeneral) {
    // Plane 1 keeps T4 exclusive; the others include it on odd cells.
    auto rule = [](bool planeOne) {
        return [planeOne](int32_t level, bool dot, bool odd, const SpreadThresholds& t) {
            return chooseGeneral({level, dot, odd, !planeOne && odd}, t);
        };
    };
    expectTableFollowsRule<GeneralColourFamily, 0>(rule(false));
    expectTableFollowsRule<GeneralColourFamily, 1>(rule(true));
    expectTableFollowsRule<GeneralColourFamily, 3>(rule(false));
}

TEST(Ed1ColourPatternTable, Colour1440x720FollowsChoose1440x720) {
    auto rule = [](int32_t level, bool dot, bool odd, const SpreadThresholds& t) {
        return choose1440x720({level, dot, odd, false}, t);
    };
    expectTableFollowsRule<Colour1440x720Family, 0>(rule);
    expectTableFollowsRule<Colour1440x720Family, 1>(rule);
    expectTableFollowsRule<Colour1440x720Family, 3>(rule);
}

TEST(Ed1ColourPatternTable, DoubleYFollowsChooseDoubleY) {
    auto rule = [](int32_t level, bool dot, bool odd, const SpreadThresholds& t) {
        return chooseDoubleY({level, dot, odd, odd}, t);
    };
    expectTableFollowsRule<DoubleYColourFamily, 0>(rule);
    expectTableFollowsRule<DoubleYColourFamily, 1>(rule);
    expectTableFollowsRule<DoubleYColourFamily, 3>(rule);
}

}  // namespace
}  // namespace inkdot
