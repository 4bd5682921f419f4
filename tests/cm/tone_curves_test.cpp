#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "cm/gamma.h"
#include "cm/log_table.h"
#include "cm/tone_curves.h"
#include "support/cm_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

constexpr CurveLayout kNodeLayout{4, {1, 2, 3}};

TEST(LogTable, RoundedScaledLogarithmsOfThePrimesAddOverFactors) {
    int j = 0;
    for (int p = 2; p <= 509; ++p) {
        bool prime = true;
        for (int d = 2; d * d <= p; ++d) prime = prime && p % d != 0;
        if (!prime) continue;
        ASSERT_LT(j, kPrimeCount);
        EXPECT_EQ(kPrimes[j], p);
        EXPECT_EQ(kLogTable[j++], static_cast<uint32_t>(std::lround(5000.0 * std::log(p)))) << "prime " << p;
    }
    EXPECT_EQ(j, 97);
    EXPECT_EQ(kLogTable[97], 0u);
    EXPECT_EQ(logOf(1), 0);
    EXPECT_EQ(logOf(509), 31162);
    for (int a = 1; a <= 22; ++a)
        for (int b = 1; a * b <= 511; ++b) ASSERT_EQ(logOf(a * b), logOf(a) + logOf(b)) << a << "x" << b;
}

TEST(Gamma, RisingAndWithinOneLevelOfThePowerCurve) {
    for (int g : {100, 101, 120, 149, 150, 151, 180, 220, 233, 260, 300}) {
        int32_t levels[256];
        gammaLevels(g, levels);
        EXPECT_EQ(levels[0], 0);
        EXPECT_EQ(gammaLevel(255, g), 255);
        for (int v = 0; v <= 255; ++v) {
            ASSERT_EQ(levels[v], gammaLevel(v, g)) << "whole curve and single level, " << v << " " << g;
            if (g == 100) {
                EXPECT_EQ(levels[v], v);
            }
            EXPECT_LE(std::abs(levels[v] - 255.0 * std::pow(v / 255.0, g / 100.0)), 1.0) << v << " gamma " << g;
            if (v > 0) {
                EXPECT_GE(levels[v], levels[v - 1]);
            }
        }
    }
}

TEST(ToneCurves, BrightnessAndContrastWorkedValues) {
    // Brightness 50: D = 200, P = 64, A = 118, linear below P, cubic from P;
    // -50: P = 192, cubic below P, linear from P. Contrast 50: D = 200,
    // P1 = 96, A1 = 474, P2 = 160, A2 = 474; -50: (T - 128) / 2 + 128.
    // Brightness -50 then contrast 50: T[160] = 73 and A2 x (73 - 256)^3 needs
    // 64 bits: -2904902838 / 6553600 + 256 < 0 gives 0 (32 bits would wrap to 255).
    const struct { int32_t b, k; int i, want; } cases[] = {
        {50, 0, 10, 20},    {50, 0, 63, 126},   {50, 0, 64, 129},  {50, 0, 128, 219},  {50, 0, 255, 255},
        {-50, 0, 100, 18},  {-50, 0, 191, 125}, {-50, 0, 192, 128}, {-50, 0, 255, 254}, {0, 50, 50, 9},
        {0, 50, 100, 72},   {0, 50, 128, 128},  {0, 50, 200, 244}, {0, -50, 0, 64},    {0, -50, 255, 191},
        {-50, 50, 160, 0},  {-50, 50, 191, 94},
    };
    for (const auto& c : cases) {
        int32_t t[256];
        brightnessContrastCurve(c.b, c.k, t);
        EXPECT_EQ(t[c.i], c.want) << "brightness " << c.b << " contrast " << c.k << " at " << c.i;
    }
    // Either setting alone keeps the curve rising (together they need not, as above).
    for (int b : {-50, -20, -1, 0, 1, 20, 50}) {
        for (int k : {-50, -1, 0, 1, 50}) {
            if (b != 0 && k != 0) continue;
            int32_t t[256];
            brightnessContrastCurve(b, k, t);
            for (int i = 1; i < 256; ++i) ASSERT_GE(t[i], t[i - 1]) << b << " " << k << " at " << i;
        }
    }
}

TEST(CurveBuild, OffsetGammaAndReadyMadeCurves) {
    test::MemoryWatch watch;
    const auto curves = [](const CmSettings1& s) {
        CurveRecord* rec = nullptr;
        EXPECT_EQ(buildCurves(s, kNodeLayout, &rec), RC_OK);
        return rec;
    };
    CmSettings1 s{};
    CurveRecord* rec = curves(s);  // neutral settings: the identity
    for (int i = 0; i < 768; ++i) ASSERT_EQ(rec->curve[i / 256][i % 256], i % 256);
    EXPECT_EQ(rec->pixelBytes, 4u);
    EXPECT_EQ(rec->componentPos[2], 3u);
    releaseCurves(rec);

    // Offset 50 lifts red and clips at 255; smoothing (v[i-1] + v[i] + v[i+1]) / 3
    // from the left then creeps along the top: 204 sees (254 + 254 + 255) / 3.
    s.offsetR = 50;
    rec = curves(s);
    const int red[][2] = {{0, 50}, {100, 150}, {204, 254}, {205, 254}, {253, 254}, {254, 255}};
    for (const auto& [i, want] : red) EXPECT_EQ(rec->curve[0][i], want) << i;
    EXPECT_EQ(rec->curve[1][100], 100);
    EXPECT_EQ(rec->curve[2][100], 100);
    releaseCurves(rec);

    int32_t gamma = 0;  // 0 means 150, the curves' own gamma: identity
    test::ChunkDir dir;
    dir.add(1u, &gamma);
    CmSettings1 g{};
    g.chunkDir = dir.get();
    rec = curves(g);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(rec->curve[1][i], i);
    releaseCurves(rec);
    gamma = 300;  // darker mid-tones, ends kept
    rec = curves(g);
    EXPECT_LT(rec->curve[0][128], 128);
    EXPECT_EQ(rec->curve[0][0], 0);
    EXPECT_EQ(rec->curve[0][255], 255);
    releaseCurves(rec);

    // Ready-made curves from chunk 256 skip every check (gamma 999, brightness 200).
    uint8_t ready[768];
    for (int i = 0; i < 768; ++i) ready[i] = static_cast<uint8_t>(i * 7);
    gamma = 999;
    dir.add(256, ready);
    g.curveSource = 1;
    g.brightness = 200;
    g.saturation = 30;
    rec = curves(g);
    for (int i = 0; i < 768; ++i) ASSERT_EQ(rec->curve[i / 256][i % 256], ready[i]);
    EXPECT_EQ(rec->saturation, 30);
    EXPECT_EQ(rec->curveSource, 1u);
    releaseCurves(rec);
}

TEST(CurveBuild, RecordFailuresAndReleaseCodes) {
    test::MemoryWatch watch;
    CurveRecord* rec = nullptr;
    watch.seam().failAllocAt = watch.seam().allocs + 1;
    EXPECT_EQ(buildCurves(CmSettings1{}, kNodeLayout, &rec), RC_MEM_ALLOC);
    watch.seam().failLockAt = watch.seam().locks + 1;
    EXPECT_EQ(buildCurves(CmSettings1{}, kNodeLayout, &rec), RC_MEM_LOCK);
    ASSERT_EQ(buildCurves(CmSettings1{}, kNodeLayout, &rec), RC_OK);
    watch.seam().failUnlockAt = watch.seam().unlocks + 1;
    EXPECT_EQ(releaseCurves(rec), RC_MEM_UNLOCK);
    watch.seam().failFreeAt = watch.seam().frees + 1;
    EXPECT_EQ(releaseCurves(rec), RC_MEM_FREE);  // the failed free kept the block
    EXPECT_EQ(releaseCurves(rec), RC_OK);
}

TEST(Saturation, SpreadsFromTheSmallestComponent) {
    const struct { int32_t s, r, g, b, wr, wg, wb; } cases[] = {
        {50, 10, 60, 110, 10, 85, 160},    // red smallest: k1 = 150
        {50, 10, 10, 110, 10, 10, 160},    // r <= g, b >= r
        {50, 60, 10, 110, 85, 10, 160},    // green smallest
        {50, 60, 110, 10, 80, 150, 10},    // blue smallest: weaker k2 = 140
        {50, 110, 60, 10, 150, 80, 10},
        {-50, 10, 60, 110, 10, 35, 60},    // k1 = 50
        {-50, 60, 110, 10, 40, 70, 10},    // k2 = 100 - 40 = 60: (50 x 60) / 100 + 10
        {-1, 60, 110, 10, 60, 110, 10},    // k2 = 100 + (-80 / 100) = 100: no change
        {1, 10, 60, 110, 10, 60, 111},     // k1 = 101: 10 + (50 x 101) / 100 = 60, 10 + 101
        {50, 10, 200, 250, 10, 255, 255},  // limited to 255
        {27, 128, 128, 128, 128, 128, 128},  // gray passes unchanged
        {-13, 255, 255, 255, 255, 255, 255},
    };
    for (const auto& c : cases) {
        int32_t r = c.r, g = c.g, b = c.b;
        spreadSaturation(c.s, r, g, b);
        EXPECT_EQ(std::vector<int32_t>({r, g, b}), std::vector<int32_t>({c.wr, c.wg, c.wb}))
            << c.s << " " << c.r << "," << c.g << "," << c.b;
    }
    for (int32_t s : {-100000, -200, 1000, 2147483647}) {  // any factor stays in 0..255
        int32_t r = 10, g = 60, b = 110;
        spreadSaturation(s, r, g, b);
        for (int32_t v : {r, g, b}) EXPECT_TRUE(v >= 0 && v <= 255) << s;
    }
}

TEST(ApplyCurves, WritesOnlyTheComponentBytes) {
    test::MemoryWatch watch;
    CmSettings1 s{};
    s.offsetG = 10;
    s.saturation = 50;
    CurveRecord* rec = nullptr;
    ASSERT_EQ(buildCurves(s, kNodeLayout, &rec), RC_OK);
    uint8_t src[8] = {0xAA, 10, 60, 110, 0xBB, 7, 7, 7};
    uint8_t dst[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(applyCurves(*rec, 2, src, dst), RC_OK);
    const uint8_t want[8] = {1, 10, 95, 160, 5, 7, 17, 7};  // green = curve[85] = 85 + 10
    EXPECT_EQ(std::memcmp(dst, want, 8), 0);
    applyCurves(*rec, 2, src, src);  // in place
    const uint8_t wantInPlace[8] = {0xAA, 10, 95, 160, 0xBB, 7, 17, 7};
    EXPECT_EQ(std::memcmp(src, wantInPlace, 8), 0);
    releaseCurves(rec);
}

}  // namespace
}  // namespace inkdot
