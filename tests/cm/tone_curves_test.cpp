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

// Logarithm and gamma ------------------------------------------------------

TEST(LogTable, EntriesAreRoundedScaledLogarithmsOfThePrimes) {
    int j = 0;
    for (int p = 2; p <= 509; ++p) {
        bool prime = true;
        for (int d = 2; d * d <= p; ++d) prime = prime && p % d != 0;
        if (!prime) continue;
        ASSERT_LT(j, kPrimeCount);
        EXPECT_EQ(kPrimes[j], p);
        EXPECT_EQ(kLogTable[j], static_cast<uint32_t>(std::lround(5000.0 * std::log(p)))) << "prime " << p;
        ++j;
    }
    EXPECT_EQ(j, 97);
    EXPECT_EQ(kLogTable[97], 0u);
}

TEST(LogTable, LogarithmAddsOverPrimeFactors) {
    EXPECT_EQ(logOf(1), 0);
    EXPECT_EQ(logOf(2), 3466);
    EXPECT_EQ(logOf(509), 31162);
    for (int a = 1; a <= 22; ++a) {
        for (int b = 1; a * b <= 511; ++b) ASSERT_EQ(logOf(a * b), logOf(a) + logOf(b)) << a << "x" << b;
    }
}

TEST(Gamma, WithinOneLevelOfThePowerCurve) {
    for (int g : {100, 101, 120, 149, 150, 151, 180, 220, 233, 260, 300}) {
        int32_t levels[256];
        gammaLevels(g, levels);
        EXPECT_EQ(gammaLevel(0, g), 0);
        EXPECT_EQ(gammaLevel(255, g), 255);
        int previous = 0;
        for (int v = 0; v <= 255; ++v) {
            const int level = gammaLevel(v, g);
            ASSERT_EQ(levels[v], level) << "whole curve and single level, " << v << " " << g;
            if (g == 100) EXPECT_EQ(level, v);
            EXPECT_LE(std::abs(level - 255.0 * std::pow(v / 255.0, g / 100.0)), 1.0) << "v " << v << " gamma " << g;
            EXPECT_GE(level, previous);
            previous = level;
        }
    }
}

// The builder's base curve ---------------------------------------------------

int32_t curveAt(int32_t brightness, int32_t contrast, int i) {
    int32_t t[256];
    brightnessContrastCurve(brightness, contrast, t);
    return t[i];
}

TEST(ToneCurves, BrightnessWorkedValues) {
    // b = 50: D = 200, P = 64, A = 118; linear below P, cubic from P.
    EXPECT_EQ(curveAt(50, 0, 10), 20);
    EXPECT_EQ(curveAt(50, 0, 63), 126);
    EXPECT_EQ(curveAt(50, 0, 64), 129);
    EXPECT_EQ(curveAt(50, 0, 128), 219);
    EXPECT_EQ(curveAt(50, 0, 255), 255);
    // b = -50: D = 200, P = 192, A = 118; cubic below P, linear from P.
    EXPECT_EQ(curveAt(-50, 0, 100), 18);
    EXPECT_EQ(curveAt(-50, 0, 191), 125);
    EXPECT_EQ(curveAt(-50, 0, 192), 128);
    EXPECT_EQ(curveAt(-50, 0, 255), 254);
}

TEST(ToneCurves, ContrastWorkedValues) {
    // k = 50: D = 200, P1 = 96, A1 = 474, P2 = 160, A2 = 474.
    EXPECT_EQ(curveAt(0, 50, 50), 9);
    EXPECT_EQ(curveAt(0, 50, 100), 72);
    EXPECT_EQ(curveAt(0, 50, 128), 128);
    EXPECT_EQ(curveAt(0, 50, 200), 244);
    // k = -50: (T - 128) / 2 + 128.
    EXPECT_EQ(curveAt(0, -50, 0), 64);
    EXPECT_EQ(curveAt(0, -50, 255), 191);
    // After brightness -50, T[160] is 73 and A2 x (73 - 256)^3 needs 64 bits:
    // -2904902838 / 6553600 + 256 < 0, clamped to 0 (a 32-bit product would wrap to 255).
    EXPECT_EQ(curveAt(-50, 50, 160), 0);
    EXPECT_EQ(curveAt(-50, 50, 191), 94);
}

// Either setting alone keeps the curve rising (together they need not: see
// the 64-bit case above, where the curve drops to 0 at 160).
TEST(ToneCurves, SingleSettingsStayMonotone) {
    for (int b : {-50, -20, -1, 0, 1, 20, 50}) {
        for (int k : {-50, -1, 0, 1, 50}) {
            if (b != 0 && k != 0) continue;
            int32_t t[256];
            brightnessContrastCurve(b, k, t);
            for (int i = 1; i < 256; ++i) ASSERT_GE(t[i], t[i - 1]) << b << " " << k << " at " << i;
        }
    }
}

// Building and releasing -----------------------------------------------------

class CurveBuild : public ::testing::Test {
protected:
    test::MemoryWatch watch;
    CmSettings1 s{};
    test::ChunkDir dir;
    uint32_t build(CurveRecord** out) { return buildCurves(s, kNodeLayout, out); }
};

TEST_F(CurveBuild, NeutralSettingsGiveTheIdentity) {
    CurveRecord* rec = nullptr;
    ASSERT_EQ(build(&rec), RC_OK);
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i) ASSERT_EQ(rec->curve[c][i], i);
    EXPECT_EQ(rec->pixelBytes, 4u);
    EXPECT_EQ(rec->componentPos[2], 3u);
    EXPECT_EQ(releaseCurves(rec), RC_OK);
}

TEST_F(CurveBuild, OffsetLiftsAndClipsBeforeSmoothing) {
    s.offsetR = 50;
    CurveRecord* rec = nullptr;
    ASSERT_EQ(build(&rec), RC_OK);
    EXPECT_EQ(rec->curve[0][0], 50);
    EXPECT_EQ(rec->curve[0][100], 150);
    EXPECT_EQ(rec->curve[0][204], 254);  // (254 + 254 + 255) / 3, its left neighbour already smoothed
    EXPECT_EQ(rec->curve[0][205], 254);  // (254 + 255 + 255) / 3
    EXPECT_EQ(rec->curve[0][206], 254);
    EXPECT_EQ(rec->curve[0][253], 254);  // smoothing creeps along: (254 + 255 + 255) / 3
    EXPECT_EQ(rec->curve[0][254], 255);  // never smoothed
    EXPECT_EQ(rec->curve[1][100], 100);
    EXPECT_EQ(rec->curve[2][100], 100);
    releaseCurves(rec);
}

TEST_F(CurveBuild, SettingChecks) {
    CurveRecord* rec = nullptr;
    s.brightness = -50;
    s.contrast = 50;
    ASSERT_EQ(build(&rec), RC_OK);
    releaseCurves(rec);
    int32_t CmSettings1::*const words[] = {&CmSettings1::brightness, &CmSettings1::contrast,
                                           &CmSettings1::saturation, &CmSettings1::offsetR,
                                           &CmSettings1::offsetG,    &CmSettings1::offsetB};
    for (auto word : words) {
        for (int32_t bad : {-51, 51}) {
            CmSettings1 t{};
            t.*word = bad;
            EXPECT_EQ(buildCurves(t, kNodeLayout, &rec), RC_ARG + 1);
        }
    }
    CmSettings1 t{};
    t.curveSource = 1;
    EXPECT_EQ(buildCurves(t, kNodeLayout, &rec), RC_ARG + 1);
    EXPECT_EQ(watch.seam().liveBlocks, 0);  // each failed build released its record
}

TEST_F(CurveBuild, GammaFromChunkOne) {
    int32_t gamma = 0;  // 0 means 150
    dir.add(1u, &gamma);
    s.chunkDir = dir.get();
    CurveRecord* rec = nullptr;
    ASSERT_EQ(build(&rec), RC_OK);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(rec->curve[1][i], i);
    releaseCurves(rec);

    for (int32_t bad : {99, 301}) {
        gamma = bad;
        EXPECT_EQ(build(&rec), RC_ARG + 2) << bad;
    }
    gamma = 300;  // darker mid-tones: d = G(i, 300) - G(i, 150) < 0 inside
    ASSERT_EQ(build(&rec), RC_OK);
    EXPECT_LT(rec->curve[0][128], 128);
    EXPECT_EQ(rec->curve[0][0], 0);
    EXPECT_EQ(rec->curve[0][255], 255);
    releaseCurves(rec);
}

TEST_F(CurveBuild, ReadyMadeCurvesSkipEveryCheck) {
    uint8_t curves[768];
    for (int i = 0; i < 768; ++i) curves[i] = static_cast<uint8_t>(i * 7);
    int32_t gamma = 999;
    dir.add(1u, &gamma);
    dir.add(256, curves);
    s.chunkDir = dir.get();
    s.curveSource = 1;
    s.brightness = 200;
    s.saturation = 30;
    CurveRecord* rec = nullptr;
    ASSERT_EQ(build(&rec), RC_OK);
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i) ASSERT_EQ(rec->curve[c][i], curves[c * 256 + i]);
    EXPECT_EQ(rec->saturation, 30);
    EXPECT_EQ(rec->curveSource, 1u);
    releaseCurves(rec);
}

TEST_F(CurveBuild, RecordFailuresAndReleaseCodes) {
    CurveRecord* rec = nullptr;
    watch.seam().failAllocAt = watch.seam().allocs + 1;
    EXPECT_EQ(build(&rec), RC_MEM_ALLOC);
    watch.seam().failLockAt = watch.seam().locks + 1;
    EXPECT_EQ(build(&rec), RC_MEM_LOCK);

    ASSERT_EQ(build(&rec), RC_OK);
    watch.seam().failUnlockAt = watch.seam().unlocks + 1;
    EXPECT_EQ(releaseCurves(rec), RC_MEM_UNLOCK);
    watch.seam().failFreeAt = watch.seam().frees + 1;
    EXPECT_EQ(releaseCurves(rec), RC_MEM_FREE);  // the failed free kept the block
    EXPECT_EQ(releaseCurves(rec), RC_OK);
}

// Saturation and applying ------------------------------------------------------

TEST(Saturation, SpreadsFromTheSmallestComponent) {
    struct Case { int32_t s, r, g, b, wr, wg, wb; };
    const Case cases[] = {
        {50, 10, 60, 110, 10, 85, 160},    // red smallest: k1 = 150
        {50, 10, 10, 110, 10, 10, 160},    // r <= g, b >= r
        {50, 60, 10, 110, 85, 10, 160},    // green smallest
        {50, 60, 110, 10, 80, 150, 10},    // blue smallest: weaker k2 = 140
        {50, 110, 60, 10, 150, 80, 10},
        {-50, 10, 60, 110, 10, 35, 60},    // k1 = 50
        {-50, 60, 110, 10, 40, 70, 10},    // k2 = 100 - 40 = 60: (50 x 60) / 100 + 10
        {-1, 60, 110, 10, 60, 110, 10},    // k2 = 100 + (-80 / 100) = 100: no change
        {50, 10, 200, 250, 10, 255, 255},  // limited to 255
    };
    for (const Case& c : cases) {
        int32_t r = c.r, g = c.g, b = c.b;
        spreadSaturation(c.s, r, g, b);
        EXPECT_EQ(r, c.wr) << c.s << " " << c.r << "," << c.g << "," << c.b;
        EXPECT_EQ(g, c.wg) << c.s << " " << c.r << "," << c.g << "," << c.b;
        EXPECT_EQ(b, c.wb) << c.s << " " << c.r << "," << c.g << "," << c.b;
    }
}

TEST(Saturation, GrayPassesUnchangedAndAnyFactorStaysInRange) {
    for (int32_t s : {-50, -13, 0, 27, 50, 100000, -100000}) {
        for (int32_t v : {0, 1, 128, 255}) {
            int32_t r = v, g = v, b = v;
            spreadSaturation(s, r, g, b);
            EXPECT_EQ(std::vector<int32_t>({r, g, b}), std::vector<int32_t>({v, v, v})) << s;
        }
    }
    for (int32_t s : {-100000, -200, 1000, 2147483647}) {
        int32_t r = 10, g = 60, b = 110;
        spreadSaturation(s, r, g, b);
        for (int32_t v : {r, g, b}) {
            EXPECT_GE(v, 0);
            EXPECT_LE(v, 255);
        }
    }
}

TEST(ApplyCurves, WritesOnlyTheComponentBytes) {
    test::MemoryWatch watch;
    CmSettings1 s{};
    s.offsetG = 10;
    s.saturation = 50;
    CurveRecord* rec = nullptr;
    ASSERT_EQ(buildCurves(s, kNodeLayout, &rec), RC_OK);
    const uint8_t src[8] = {0xAA, 10, 60, 110, 0xBB, 7, 7, 7};
    uint8_t dst[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(applyCurves(*rec, 2, src, dst), RC_OK);
    const uint8_t want[8] = {1, 10, 95, 160, 5, 7, 17, 7};  // green = curve[85] = 85 + 10
    EXPECT_EQ(std::memcmp(dst, want, 8), 0);
    uint8_t inPlace[8];
    std::memcpy(inPlace, src, 8);
    applyCurves(*rec, 2, inPlace, inPlace);
    const uint8_t wantInPlace[8] = {0xAA, 10, 95, 160, 0xBB, 7, 17, 7};
    EXPECT_EQ(std::memcmp(inPlace, wantInPlace, 8), 0);
    releaseCurves(rec);
}

}  // namespace
}  // namespace inkdot
