// The one-bit pattern choice, checked against the rules read in order: the
// monochrome kernels choose by pattern_choice.h's functions, the colour
// kernels through pattern tables built from them, with the parity forms
// exchanged and plane 1 keeping T4 exclusive in the general family. Every
// level, dot and parity, whatever the thresholds.
#include <gtest/gtest.h>

#include "kernels/ed1/ed1_colour_run.h"
#include "kernels/diffusion/pattern_choice.h"

namespace inkdot {
namespace {

// Falling thresholds as a class gives them, equal ones, rising ones, and
// ones outside the level range.
constexpr SpreadThresholds kThresholdSets[] = {
    {200, 120, 60, 20}, {128, 128, 64, 64}, {10, 50, 100, 200}, {300, -1, 255, 0}, {0, 0, 0, 0}, {90, 90, 90, 90},
};

// The rules as the kernels' documentation lists them, first test that holds.
Pattern generalInOrder(int32_t l, bool dot, bool aForm, bool t4Inclusive, const SpreadThresholds& t) {
    if (l > t.t1) return Pattern::G1;
    if (!dot) return Pattern::G0;
    if (l > t.t2) return aForm ? Pattern::G2a : Pattern::G2b;
    if (l > t.t3) return Pattern::G3;
    if (t4Inclusive ? l >= t.t4 : l > t.t4) return aForm ? Pattern::G4a : Pattern::G4b;
    return aForm ? Pattern::G5a : Pattern::G5b;
}

Pattern family1440x720InOrder(int32_t l, bool dot, bool aForm, bool, const SpreadThresholds& t) {
    if (!dot) return aForm ? Pattern::H0a : Pattern::H0b;
    if (l > t.t1) return Pattern::H1;
    if (l > t.t2) return Pattern::H2;
    if (l > t.t3) return Pattern::H3;
    if (l > t.t4) return Pattern::H4;
    return Pattern::H5;
}

Pattern doubleYInOrder(int32_t l, bool dot, bool aForm, bool t4Inclusive, const SpreadThresholds& t) {
    if (l > t.t1) return Pattern::Y1;
    if (l > t.t2) return Pattern::Y2;
    if (!dot) return Pattern::Y0;
    if (l > t.t3) return Pattern::Y3;
    if (t4Inclusive ? l >= t.t4 : l > t.t4) return Pattern::G3;
    return aForm ? Pattern::G4a : Pattern::G4b;
}

template <class Check>
void forEveryPixel(Check check) {
    for (const SpreadThresholds& t : kThresholdSets)
        for (int32_t level = 0; level <= 255; ++level)
            for (bool dot : {false, true})
                for (bool odd : {false, true}) check(t, level, dot, odd);
}

#define PIXEL_TRACE                                                                                         \
    "level " << level << ", dot " << dot << ", odd " << odd << ", thresholds " << t.t1 << " " << t.t2 << " " \
             << t.t3 << " " << t.t4

TEST(Ed1PatternChoice, MonochromeTakesTheAFormsOnEvenCells) {
    // The general and DoubleY kernels include T4 on even cells.
    forEveryPixel([](const SpreadThresholds& t, int32_t level, bool dot, bool odd) {
        const PixelClass p{level, dot, !odd, !odd};
        ASSERT_EQ(chooseGeneral(p, t), generalInOrder(level, dot, !odd, !odd, t)) << PIXEL_TRACE;
        ASSERT_EQ(choose1440x720(p, t), family1440x720InOrder(level, dot, !odd, !odd, t)) << PIXEL_TRACE;
        ASSERT_EQ(chooseDoubleY(p, t), doubleYInOrder(level, dot, !odd, !odd, t)) << PIXEL_TRACE;
    });
}

TEST(Ed1PatternChoice, ColourTablesTakeTheAFormsOnOddCells) {
    forEveryPixel([](const SpreadThresholds& t, int32_t level, bool dot, bool odd) {
        // General: plane 1 keeps T4 exclusive; the others include it on odd cells.
        ASSERT_EQ((colourPattern<GeneralColourFamily, 0>(level, dot, odd, t)), generalInOrder(level, dot, odd, odd, t))
            << PIXEL_TRACE;
        ASSERT_EQ((colourPattern<GeneralColourFamily, 1>(level, dot, odd, t)),
                  generalInOrder(level, dot, odd, false, t))
            << PIXEL_TRACE;
        ASSERT_EQ((colourPattern<GeneralColourFamily, 3>(level, dot, odd, t)), generalInOrder(level, dot, odd, odd, t))
            << PIXEL_TRACE;
        for (Pattern p : {colourPattern<Colour1440x720Family, 0>(level, dot, odd, t),
                          colourPattern<Colour1440x720Family, 1>(level, dot, odd, t),
                          colourPattern<Colour1440x720Family, 3>(level, dot, odd, t)})
            ASSERT_EQ(p, family1440x720InOrder(level, dot, odd, false, t)) << PIXEL_TRACE;
        for (Pattern p : {colourPattern<DoubleYColourFamily, 0>(level, dot, odd, t),
                          colourPattern<DoubleYColourFamily, 1>(level, dot, odd, t),
                          colourPattern<DoubleYColourFamily, 3>(level, dot, odd, t)})
            ASSERT_EQ(p, doubleYInOrder(level, dot, odd, odd, t)) << PIXEL_TRACE;
    });
}

}  // namespace
}  // namespace inkdot
