// The arithmetic of colour management worked by hand: logarithms, gamma,
// brightness and contrast, saturation and the colour adjustments, ink scaling and
// tetrahedral interpolation.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "cm/colour_adjust.h"
#include "cm/gamma.h"
#include "cm/ink_scale.h"
#include "cm/interpolate.h"
#include "cm/log_table.h"
#include "cm/tone_curves.h"

namespace inkdot {
namespace {

using Three = std::array<int32_t, 3>;

// The table holds 5000 ln p rounded for the 97 primes up to 509; logOf adds
// them over a number's factors.
TEST(LogTable, RoundedScaledLogarithmsOfThePrimesAddOverFactors) {
    int j = 0;
    for (int p = 2; p <= 509; ++p) {
        bool prime = true;
        for (int d = 2; d * d <= p; ++d) prime = prime && p % d != 0;
        if (!prime) continue;
        EXPECT_EQ(kPrimes[j], p);
        EXPECT_EQ(kLogTable[j++], static_cast<uint32_t>(std::lround(5000.0 * std::log(p)))) << "prime " << p;
    }
    EXPECT_EQ(j, 97);
    for (int a = 1; a <= 22; ++a)
        for (int b = 1; a * b <= 511; ++b) ASSERT_EQ(logOf(a * b), logOf(a) + logOf(b)) << a << "x" << b;
}

TEST(Gamma, RisingAndWithinOneLevelOfThePowerCurve) {
    for (int g : {100, 101, 120, 149, 150, 151, 180, 220, 233, 260, 300}) {
        int32_t levels[256];
        gammaLevels(g, levels);
        for (int v = 0; v <= 255; ++v) {
            ASSERT_EQ(levels[v], gammaLevel(v, g)) << "whole curve and single level, " << v << " " << g;
            ASSERT_LE(std::abs(levels[v] - 255.0 * std::pow(v / 255.0, g / 100.0)), g == 100 ? 1e-9 : 1.0) << v << " " << g;
            ASSERT_TRUE(v == 0 || levels[v] >= levels[v - 1]) << v << " gamma " << g;
        }
        EXPECT_EQ(std::pair(levels[0], levels[255]), std::pair(0, 255)) << g;
    }
    // 255 x (128 / 255)^2 = 64.25 rounds to 64; (129 / 255)^2 x 255 = 65.26 to 65.
    EXPECT_EQ(gammaLevel(128, 200), 64);
    EXPECT_EQ(gammaLevel(129, 200), 65);
}

TEST(ToneCurves, BrightnessAndContrastWorkedValues) {
    // Brightness 50: D = 200, P = 64, A = 118, linear below P, cubic from P;
    // -50: P = 192, cubic below P, linear from P. Contrast 50: D = 200,
    // P1 = 96, A1 = 474, P2 = 160, A2 = 474; -50: (T - 128) / 2 + 128.
    // Brightness -50 then contrast 50: T[160] = 73 and A2 x (73 - 256)^3 needs
    // 64 bits: -2904902838 / 6553600 + 256 < 0 gives 0 (32 bits would wrap to 255).
    // Contrast 40: D = 166, P2 = 466 x 128 / 332 = 179, A2 = 10878976 / 17787 =
    // 611; T[179] = 611 x (-77)^3 / 6553600 + 256 = 256 - 42 = 214 (linear: 212).
    const struct { int32_t b, k; int i, want; } cases[] = {
        {50, 0, 10, 20},    {50, 0, 63, 126},   {50, 0, 64, 129},  {50, 0, 128, 219},  {50, 0, 255, 255},
        {-50, 0, 100, 18},  {-50, 0, 191, 125}, {-50, 0, 192, 128}, {-50, 0, 255, 254}, {0, 50, 50, 9},
        {0, 50, 100, 72},   {0, 50, 128, 128},  {0, 50, 200, 244}, {0, -50, 0, 64},    {0, -50, 255, 191},
        {-50, 50, 160, 0},  {-50, 50, 191, 94}, {0, 40, 179, 214}, {0, 40, 178, 211},
    };
    for (const auto& c : cases) {
        int32_t t[256];
        brightnessContrastCurve(c.b, c.k, t);
        EXPECT_EQ(t[c.i], c.want) << "brightness " << c.b << " contrast " << c.k << " at " << c.i;
    }
}

TEST(ColourAdjust, WorkedCases) {
    enum Kind { kSaturation, kDominant, kMinimum, kHue };
    const struct { Kind kind; Three v; Three p; Three want; const char* why; } cases[] = {
        // Saturation p[0] spreads the others from the smallest component.
        {kSaturation, {10, 60, 110}, {50}, {10, 85, 160}, "red smallest: k1 = 150"},
        {kSaturation, {10, 10, 110}, {50}, {10, 10, 160}, "r <= g, b >= r"},
        {kSaturation, {60, 10, 110}, {50}, {85, 10, 160}, "green smallest"},
        {kSaturation, {60, 110, 10}, {50}, {80, 150, 10}, "blue smallest: weaker k2 = 140"},
        {kSaturation, {10, 60, 110}, {-50}, {10, 35, 60}, "k1 = 50"},
        {kSaturation, {60, 110, 10}, {-50}, {40, 70, 10}, "k2 = 100 - 40 = 60: (50 x 60) / 100 + 10"},
        {kSaturation, {60, 110, 10}, {-1}, {60, 110, 10}, "k2 = 100 + (-80 / 100) = 100: no change"},
        {kSaturation, {10, 60, 110}, {1}, {10, 60, 111}, "k1 = 101: 10 + (50 x 101) / 100 = 60, 10 + 101"},
        {kSaturation, {10, 200, 250}, {50}, {10, 255, 255}, "limited to 255"},
        {kSaturation, {128, 128, 128}, {27}, {128, 128, 128}, "gray passes unchanged"},
        {kSaturation, {10, 60, 110}, {-100000}, {10, 0, 0}, "any factor stays in 0..255"},
        // The unique maximum moves toward the next by its percentage of the gap.
        {kDominant, {200, 100, 50}, {50, 0, 0}, {150, 100, 50}, "cyan leads"},
        {kDominant, {200, 100, 50}, {0, 50, 50}, {200, 100, 50}, "cyan's percentage counts"},
        {kDominant, {10, 90, 40}, {0, 25, 0}, {10, 78, 40}, "90 - (50 x 25) / 100"},
        {kDominant, {50, 200, 100}, {0, 50, 0}, {50, 150, 100}, "magenta leads, toward yellow above cyan"},
        {kDominant, {50, 100, 200}, {0, 0, 50}, {50, 100, 150}, "yellow leads, above magenta above cyan"},
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
        {kHue, {0, 100, 200}, {50, 0, 0}, {0, 50, 200}, "(100 x 50 + 50) / 100 = 50"},
        {kHue, {0, 100, 200}, {127, 0, 0}, {0, 0, 200}, "100 - 127 limited to 0"},
        {kHue, {200, 50, 50}, {9, 9, 9}, {200, 50, 50}, "two equal minima"},
    };
    for (const auto& c : cases) {
        Three v = c.v;
        const std::array<uint16_t, 3> u{uint16_t(c.p[0]), uint16_t(c.p[1]), uint16_t(c.p[2])};
        const std::array<int16_t, 3> p{int16_t(c.p[0]), int16_t(c.p[1]), int16_t(c.p[2])};
        if (c.kind == kSaturation) spreadSaturation(c.p[0], v[0], v[1], v[2]);
        if (c.kind == kDominant) adjustDominant(v.data(), u.data());
        if (c.kind == kMinimum) adjustMinimum(v.data(), p.data());
        if (c.kind == kHue) adjustHue(v.data(), p.data());
        EXPECT_EQ(v, c.want) << c.why;
    }
}

TEST(InkScale, WorkedValues) {
    const struct { int v, a, b, want; const char* why; } cases[] = {
        {128, 150, 100, 114, "t = 127^2 x 50 + 1 = 806451, u = (3162 + 25500) / 100 = 286, (143 + 32640) / 286"},
        {0, 150, 100, 0, "u = (12750 + 25500) / 100 = 382; (191 + 0) / 382"},
        {255, 150, 100, 255, "t = 1, u = 255"},
        {1, 150, 100, 1, "u = 381: (190 + 255) / 381; without the half divisor 0"},
        {11, 150, 100, 8, "t = 244^2 x 50 + 1, u = (11673 + 25500) / 100 = 371: (185 + 2805) / 371 = 8.06"},
        {77, 100, 100, 77, "100 % is the identity"},
        {200, 50, 50, 255, "u = 127: (63 + 51000) / 127 = 402, clamped"},
        {77, 0, 0, 77, "u = 0: the value stays"},
        {200, 0, -1000, 0, "negative u: clamped to 0"},
    };
    for (const auto& c : cases) EXPECT_EQ(inkScale(uint8_t(c.v), c.a, c.b), c.want) << c.why;
    for (int v = 0; v <= 255; ++v) (void)inkScale(static_cast<uint8_t>(v), 32767, -32768);  // wraps in 32 bits
}

TEST(Interpolate, WorkedTetrahedra) {
    // Two points per axis, one channel, eight unrelated node values (index a*4 + b*2 + c).
    uint8_t v[8] = {10, 30, 90, 200, 250, 60, 120, 40};
    CmLut lut{};
    lut.channels = 1;
    lut.lutData = v;
    for (int a = 0; a < 3; ++a) {
        lut.gridCount[a] = 2;
        lut.grid[a][1] = 255;
    }
    const std::vector<uint8_t> rgb = {
        200, 100, 50,   // fx >= fy >= fz: V000 55, V100 100, V110 50, V111 50 -> (550 + 25000 + 6000 + 2000) / 255
        200, 30, 50,    // fx >= fz > fy: V000 55, V100 150, V101 20, V111 30 -> (550 + 37500 + 1200 + 1200) / 255
        100, 50, 200,   // fz > fx >= fy: V000 55, V001 100, V101 50, V111 50 -> (550 + 3000 + 3000 + 2000) / 255
        100, 200, 50,   // fy > fx >= fz: V000 55, V010 100, V110 50, V111 50 -> (550 + 9000 + 6000 + 2000) / 255
        100, 200, 150,  // fy >= fz > fx: V000 55, V010 50, V011 50, V111 100 -> (550 + 4500 + 10000 + 4000) / 255
        100, 150, 200,  // fz > fy > fx: V000 55, V001 50, V011 50, V111 100 -> (550 + 1500 + 10000 + 4000) / 255
    };
    std::vector<uint8_t> out(7, 0xEE);  // one byte more: the six pixels leave it alone
    interpolateRgb(lut, 6, rgb.data(), out.data());
    EXPECT_EQ(out, (std::vector<uint8_t>{131, 158, 33, 68, 74, 62, 0xEE}));
}

}  // namespace
}  // namespace inkdot
