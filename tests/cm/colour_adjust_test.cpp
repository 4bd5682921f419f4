#include <gtest/gtest.h>

#include <array>

#include "cm/colour_adjust.h"

namespace inkdot {
namespace {

using Cmy = std::array<int32_t, 3>;

Cmy dominant(Cmy v, std::array<uint16_t, 3> p) { adjustDominant(v.data(), p.data()); return v; }
Cmy minimum(Cmy v, std::array<int16_t, 3> q) { adjustMinimum(v.data(), q.data()); return v; }
Cmy hue(Cmy v, std::array<int16_t, 3> h) { adjustHue(v.data(), h.data()); return v; }

TEST(DominantAdjustment, MovesTheUniqueMaximumTowardTheNext) {
    EXPECT_EQ(dominant({200, 100, 50}, {50, 0, 0}), (Cmy{150, 100, 50}));
    EXPECT_EQ(dominant({200, 100, 50}, {0, 50, 50}), (Cmy{200, 100, 50}));  // cyan's percentage counts
    EXPECT_EQ(dominant({10, 90, 40}, {0, 25, 0}), (Cmy{10, 78, 40}));        // 90 - (50 x 25) / 100
    EXPECT_EQ(dominant({100, 200, 50}, {0, 50, 0}), (Cmy{100, 150, 50}));   // cyan beats yellow only: magenta leads
    EXPECT_EQ(dominant({200, 100, 50}, {250, 0, 0}), (Cmy{0, 100, 50}));      // below 0 becomes 0
    EXPECT_EQ(dominant({200, 200, 50}, {50, 50, 50}), (Cmy{200, 200, 50}));  // two equal maxima
}

TEST(MinimumAdjustment, TakesTheMinimumsGapFromTheOthers) {
    EXPECT_EQ(minimum({200, 100, 50}, {0, 0, 50}), (Cmy{175, 75, 50}));
    EXPECT_EQ(minimum({30, 100, 10}, {0, 0, 200}), (Cmy{0, 60, 10}));     // 30 - 40 becomes 0
    EXPECT_EQ(minimum({30, 100, 10}, {0, 0, -50}), (Cmy{40, 110, 10}));   // negative widens, no upper limit
    EXPECT_EQ(minimum({200, 50, 50}, {90, 90, 90}), (Cmy{200, 50, 50}));  // two equal minima
}

TEST(HueAdjustment, RoundsHalfAwayFromZero) {
    // Difference 50: percentage 1 gives (50 + 50) / 100 = 1, -1 gives -1.
    EXPECT_EQ(hue({50, 100, 200}, {1, 0, 0}), (Cmy{50, 99, 200}));   // cyan min, h >= 0: magenta
    EXPECT_EQ(hue({50, 100, 200}, {-1, 0, 0}), (Cmy{50, 100, 199})); // cyan min, h < 0: yellow
    EXPECT_EQ(hue({100, 50, 200}, {0, 1, 0}), (Cmy{100, 50, 199}));  // magenta min, h >= 0: yellow
    EXPECT_EQ(hue({100, 50, 200}, {0, -1, 0}), (Cmy{99, 50, 200}));  // magenta min, h < 0: cyan
    EXPECT_EQ(hue({200, 100, 50}, {0, 0, 1}), (Cmy{199, 100, 50}));  // yellow min, h >= 0: cyan
    EXPECT_EQ(hue({200, 100, 50}, {0, 0, -1}), (Cmy{200, 99, 50}));  // yellow min, h < 0: magenta
    EXPECT_EQ(hue({50, 100, 200}, {0, 0, 0}), (Cmy{50, 100, 200}));  // 0 + 50 truncates to 0
    EXPECT_EQ(hue({0, 100, 200}, {127, 0, 0}), (Cmy{0, 0, 200}));    // 100 - 127 limited to 0
    EXPECT_EQ(hue({200, 50, 50}, {9, 9, 9}), (Cmy{200, 50, 50}));    // two equal minima
}

}  // namespace
}  // namespace inkdot
