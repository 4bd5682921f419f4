#include <gtest/gtest.h>

#include <array>

#include "cm/colour_adjust.h"

namespace inkdot {
namespace {

using Cmy = std::array<int32_t, 3>;

TEST(ColourAdjust, WorkedCases) {
    enum Kind { kDominant, kMinimum, kHue };
    const struct { Kind kind; Cmy v; std::array<int16_t, 3> p; Cmy want; const char* why; } cases[] = {
        // The unique maximum moves toward the next by its percentage of the gap.
        {kDominant, {200, 100, 50}, {50, 0, 0}, {150, 100, 50}, "cyan leads"},
        {kDominant, {200, 100, 50}, {0, 50, 50}, {200, 100, 50}, "cyan's percentage counts"},
        {kDominant, {10, 90, 40}, {0, 25, 0}, {10, 78, 40}, "90 - (50 x 25) / 100"},
        {kDominant, {100, 200, 50}, {0, 50, 0}, {100, 150, 50}, "magenta leads"},
        {kDominant, {200, 100, 50}, {250, 0, 0}, {0, 100, 50}, "below 0 becomes 0"},
        {kDominant, {200, 200, 50}, {50, 50, 50}, {200, 200, 50}, "two equal maxima"},
        // The others move away from the unique minimum by its percentage of their gap.
        {kMinimum, {200, 100, 50}, {0, 0, 50}, {175, 75, 50}, "yellow minimum"},
        {kMinimum, {30, 100, 10}, {0, 0, 200}, {0, 60, 10}, "30 - 40 becomes 0"},
        {kMinimum, {30, 100, 10}, {0, 0, -50}, {40, 110, 10}, "negative widens, no upper limit"},
        {kMinimum, {200, 50, 50}, {90, 90, 90}, {200, 50, 50}, "two equal minima"},
        // Hue: difference 50, percentage 1: (50 + 50) / 100 = 1, half away from zero.
        {kHue, {50, 100, 200}, {1, 0, 0}, {50, 99, 200}, "cyan min, h >= 0: magenta"},
        {kHue, {50, 100, 200}, {-1, 0, 0}, {50, 100, 199}, "cyan min, h < 0: yellow"},
        {kHue, {100, 50, 200}, {0, 1, 0}, {100, 50, 199}, "magenta min, h >= 0: yellow"},
        {kHue, {100, 50, 200}, {0, -1, 0}, {99, 50, 200}, "magenta min, h < 0: cyan"},
        {kHue, {200, 100, 50}, {0, 0, 1}, {199, 100, 50}, "yellow min, h >= 0: cyan"},
        {kHue, {200, 100, 50}, {0, 0, -1}, {200, 99, 50}, "yellow min, h < 0: magenta"},
        {kHue, {50, 100, 200}, {0, 0, 0}, {50, 100, 200}, "0 + 50 truncates to 0"},
        {kHue, {0, 100, 200}, {127, 0, 0}, {0, 0, 200}, "100 - 127 limited to 0"},
        {kHue, {200, 50, 50}, {9, 9, 9}, {200, 50, 50}, "two equal minima"},
    };
    for (const auto& c : cases) {
        Cmy v = c.v;
        const std::array<uint16_t, 3> u{uint16_t(c.p[0]), uint16_t(c.p[1]), uint16_t(c.p[2])};
        if (c.kind == kDominant) adjustDominant(v.data(), u.data());
        if (c.kind == kMinimum) adjustMinimum(v.data(), c.p.data());
        if (c.kind == kHue) adjustHue(v.data(), c.p.data());
        EXPECT_EQ(v, c.want) << c.why;
    }
}

}  // namespace
}  // namespace inkdot
