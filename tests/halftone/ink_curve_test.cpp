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

// The padded form: entry 0 is the spread W, then h = W / 2 copies of level
// 0's ink, the 256 levels, and copies of level 255's ink up to 2 W + 257
// entries, in whole words. Without ink at full level, the levels from the
// last step on are cleared.
TEST(InkCurve, TwoBitPaddedForm) {
    struct Case {
        const char* what;
        int (*gray)(int);
        uint32_t bytes;
        std::vector<std::pair<int, uint16_t>> entries;
    };
    const Case cases[] = {
        // Step at 101: W = 2 x 155 / 107 + 1 = 2, h = 1; 2 W + 514 bytes.
        {"narrow", [](int v) { return v <= 100 ? 4 + v : 3; }, 520, {{0, 2}, {1, 4}, {2, 4}, {102, 104}, {103, 3}, {257, 3}}},
        // W = 44, h = 22: 88 + 514 = 602, rounded up.
        {"wide", [](int v) { return v <= 100 ? 4 : 3; }, 604,
         {{0, 44}, {1, 4}, {22, 4}, {23, 4}, {123, 4}, {124, 3}, {278, 3}, {279, 3}, {299, 3}}},
        // Step at 252 (3 after 4): W = 8 / 7 + 1 = 2, h = 1; level 254 (ink 1) cleared.
        {"no ink at full level", [](int v) { return 255 - v; }, 520, {{0, 2}, {1, 255}, {2, 255}, {255, 2}, {256, 0}, {257, 0}}},
        {"rising: no step, W = 1", [](int v) { return v / 2; }, 516, {{0, 1}, {1, 0}, {2, 0}, {101, 50}, {256, 127}}},
    };
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        test::MonoLut lut(c.gray);
        const Curve curve = inkCurveOf(lut, 2);
        EXPECT_EQ(curve.bytes, c.bytes) << c.what;
        for (auto [i, v] : c.entries) EXPECT_EQ(curve.entries[i], v) << c.what << ", entry " << i;
    }
}

}  // namespace
}  // namespace inkdot
