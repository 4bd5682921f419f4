// The monochrome ink curve of phase 2: plain for one-bit output, padded by
// the level spread for two-bit output.
#include <gtest/gtest.h>

#include <vector>

#include "halftone/protocol_steps.h"
#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

struct Curve {
    uint32_t bytes;
    std::vector<uint16_t> entries;
};

Curve inkCurveOf(const test::MonoLut& lut, uint32_t outputBits) {
    test::HtInstance ht(test::htSettings(3, 0, outputBits), lut.lut, test::HtBlocks{}, 2);
    EXPECT_EQ(ht.rc, RC_OK);
    const HtBuffer& slot = ht.ctx->buffers[kConversionTable];
    const auto* p = static_cast<const uint16_t*>(slot.data);
    return {slot.size, std::vector<uint16_t>(p, p + slot.size / 2)};
}

TEST(InkCurve, OneBitCopiesTheBlackTable) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return (v * 7) % 256; });
    const Curve curve = inkCurveOf(lut, 1);
    EXPECT_EQ(curve.bytes, 512u);
    for (int v = 0; v < 256; ++v) ASSERT_EQ(curve.entries[v], (v * 7) % 256) << v;
}

TEST(InkCurve, LevelSpreadFromTheTopmostStep) {
    const struct { const char* what; int (*gray)(int); uint32_t spread; } cases[] = {
        // Steps from 10 down to 2 at 50, 150 and 250: the topmost one counts,
        // W = 2 x 6 / 12 + 1 = 2 (50 would give 34, 150 would give 18).
        {"three steps", [](int v) { return v % 100 < 50 ? 10 : 2; }, 2},
        {"4 to 3 at 101", [](int v) { return v <= 100 ? 4 : 3; }, 44},  // 2 x 155 / 7 + 1 = 45, made even
        {"255 to 0 at 1", [](int v) { return v == 0 ? 255 : 0; }, 2},   // 510 / 255 + 1 = 3, made even
        {"never 3 or less", [](int) { return 255; }, 1},
        {"never 4 or more", [](int) { return 0; }, 1},
        {"rising", [](int v) { return v; }, 1},
    };
    for (const auto& c : cases) {
        uint8_t gray[256];
        for (int v = 0; v < 256; ++v) gray[v] = static_cast<uint8_t>(c.gray(v));
        EXPECT_EQ(levelSpread(gray), c.spread) << c.what;
    }
}

TEST(InkCurve, TwoBitPaddedForm) {
    test::MemoryWatch watch;
    auto gray = [](int v) { return v <= 100 ? 4 + v : 3; };  // step at 101: W = 2 x 155 / 107 + 1 = 2
    test::MonoLut lut(gray);
    const Curve curve = inkCurveOf(lut, 2);
    const uint32_t w = 2, h = 1;
    EXPECT_EQ(curve.bytes, 520u);  // 2 W + 514 rounded up to whole words
    EXPECT_EQ(curve.entries[0], w);
    EXPECT_EQ(curve.entries[1], gray(0));
    for (int v = 0; v < 256; ++v) ASSERT_EQ(curve.entries[h + 1 + v], gray(v)) << v;
}

TEST(InkCurve, TwoBitWideSpreadPadsBothEnds) {
    test::MemoryWatch watch;
    auto gray = [](int v) { return v <= 100 ? 4 : 3; };  // W = 44, h = 22
    test::MonoLut lut(gray);
    const Curve curve = inkCurveOf(lut, 2);
    EXPECT_EQ(curve.bytes, 604u);  // 88 + 514 = 602, rounded up
    EXPECT_EQ(curve.entries[0], 44);
    for (int i = 1; i <= 22; ++i) EXPECT_EQ(curve.entries[i], 4) << "front pad " << i;
    EXPECT_EQ(curve.entries[23], 4);        // level 0
    EXPECT_EQ(curve.entries[23 + 100], 4);  // level 100
    EXPECT_EQ(curve.entries[23 + 101], 3);  // level 101
    EXPECT_EQ(curve.entries[23 + 255], 3);  // level 255
    for (int i = 279; i <= 44 + 255; ++i) EXPECT_EQ(curve.entries[i], 3) << "back pad " << i;
}

TEST(InkCurve, TwoBitWithoutInkAtFullLevelClearsTheTop) {
    test::MemoryWatch watch;
    auto gray = [](int v) { return 255 - v; };  // step at 252 (3 after 4): W = 8 / 7 + 1 = 2, h = 1
    test::MonoLut lut(gray);
    const Curve curve = inkCurveOf(lut, 2);
    EXPECT_EQ(curve.entries[0], 2);
    EXPECT_EQ(curve.entries[1], 255);
    EXPECT_EQ(curve.entries[2], 255);         // level 0
    EXPECT_EQ(curve.entries[255], 2);         // level 253
    EXPECT_EQ(curve.entries[256], 0) << "level 254 (ink 1) cleared";
    EXPECT_EQ(curve.entries[257], 0);
}

TEST(InkCurve, TwoBitWithoutAStepKeepsThePlainCurve) {
    test::MemoryWatch watch;
    auto gray = [](int v) { return v / 2; };  // rising: no falling step, W = 1
    test::MonoLut lut(gray);
    const Curve curve = inkCurveOf(lut, 2);
    EXPECT_EQ(curve.bytes, 516u);
    EXPECT_EQ(curve.entries[0], 1);
    for (int v = 0; v < 256; ++v) ASSERT_EQ(curve.entries[1 + v], v / 2) << v;
}

}  // namespace
}  // namespace inkdot
