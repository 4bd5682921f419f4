// The RGB → CMYK separation: neutral axis, black generation and ink limit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "rescomp/separation.h"

namespace inkdot::tools {
namespace {

int total(const Cmyk& ink) { return ink.c + ink.m + ink.y + ink.k; }

TEST(Separation, WhiteTakesNoInkAndBlackFillsTheLimit) {
    const SeparationModel model;
    EXPECT_EQ(total(separate(model, 255, 255, 255)), 0);
    const Cmyk ink = separate(model, 0, 0, 0);
    EXPECT_EQ(ink.k, 255);
    EXPECT_EQ(total(ink), model.inkLimitPercent * 255 / 100) << "the rich black fills the ink limit";
}

TEST(Separation, GrayIsBalancedAndMostlyBlack) {
    const SeparationModel model;
    for (int v = 0; v <= 255; ++v) {
        const Cmyk ink = separate(model, v, v, v);
        // Equal inputs give equal primaries; only the ink-limit trim may take one unit.
        EXPECT_LE(std::max({ink.c, ink.m, ink.y}) - std::min({ink.c, ink.m, ink.y}), 1) << "v " << v;
        if (v >= 64 && v <= 192) {
            EXPECT_GE(ink.k, 2 * std::max({ink.c, ink.m, ink.y})) << "mid grays are carried by black, v " << v;
            if (v <= 128) EXPECT_GE(ink.k, ink.c + ink.m + ink.y) << "v " << v;
        }
    }
}

// A gray ramp printed through the grid shows any step between neighbouring
// levels as a band; the rich black corner must be reached gradually.
TEST(Separation, ShadowsClimbToRichBlackWithoutAStep) {
    const SeparationModel model;
    Cmyk previous = separate(model, 255, 255, 255);
    for (int v = 254; v >= 0; --v) {
        const Cmyk ink = separate(model, v, v, v);
        EXPECT_LE(std::abs(ink.c - previous.c), 4) << "v " << v;
        EXPECT_LE(std::abs(ink.k - previous.k), 4) << "v " << v;
        EXPECT_GE(ink.k, previous.k) << "black never drops as gray darkens, v " << v;
        if (v < 128) EXPECT_GE(ink.c + 1, previous.c) << "primaries only grow in the shadows, v " << v;
        previous = ink;
    }
    // Black fades in: none in the lightest grays, where it would show as grain.
    EXPECT_EQ(separate(model, 250, 250, 250).k, 0);
    // Without the climb the corner takes the neutral axis's own limit.
    SeparationModel plain;
    plain.richBlackStart = 1.0;
    const Cmyk corner = separate(plain, 0, 0, 0);
    const Cmyk beside = separate(plain, 1, 1, 1);
    EXPECT_EQ(corner.k, 255);
    EXPECT_LE(std::abs(corner.c - beside.c), 2);
    EXPECT_EQ(corner.c, 53) << "1 - 0.95 / 1.2 of 255, rounded";
}

TEST(Separation, InkLimitHoldsEverywhere) {
    for (int limit : {200, 240, 280, 320}) {
        SeparationModel model;
        model.inkLimitPercent = limit;
        const int units = limit * 255 / 100;
        for (int r = 0; r <= 255; r += 15)
            for (int g = 0; g <= 255; g += 15)
                for (int b = 0; b <= 255; b += 15)
                    ASSERT_LE(total(separate(model, r, g, b)), units) << limit << "% at " << r << "," << g << "," << b;
    }
}

TEST(Separation, PrimariesFollowTheirOwnChannel) {
    const SeparationModel model;
    const Cmyk cyan = separate(model, 0, 255, 255);
    EXPECT_EQ(cyan.c, 255);
    EXPECT_EQ(cyan.m + cyan.y + cyan.k, 0);
    const Cmyk red = separate(model, 255, 0, 0);
    EXPECT_EQ(red.c, 0);
    EXPECT_EQ(red.m, 255);
    EXPECT_EQ(red.y, 255);
    EXPECT_EQ(red.k, 0);
    // Less red light, more cyan ink.
    int previous = -1;
    for (int r = 255; r >= 0; r -= 5) {
        const int c = separate(model, r, 255, 255).c;
        EXPECT_GE(c, previous);
        previous = c;
    }
}

TEST(Separation, BlackOnlyGrayRunsFromPaperToSolid) {
    const SeparationModel model;
    EXPECT_EQ(blackOnlyGray(model, 255), 0);
    EXPECT_EQ(blackOnlyGray(model, 0), 255);
    for (int v = 1; v <= 255; ++v) EXPECT_LE(blackOnlyGray(model, v), blackOnlyGray(model, v - 1));
}

}  // namespace
}  // namespace inkdot::tools
