// The colour grid of phase 2: resampled at 32 levels per axis (or the two
// corners for fixed threshold), one packed u32 of four inks per node.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using Node = test::ColourLut::Node;

uint32_t packed(const Node& n) {
    return uint32_t{n[0]} | uint32_t{n[1]} << 8 | uint32_t{n[2]} << 16 | uint32_t{n[3]} << 24;
}

const uint32_t* gridOf(const test::HtInstance& ht) { return slotData<uint32_t>(*ht.ctx, kConversionTable); }

TEST(GridResample, LinearGridStaysLinear) {
    // Inks linear in the input: resampling a coarse 5-level grid at 32 levels
    // gives each node its own levels, within the rounding of the fraction.
    test::MemoryWatch watch;
    test::ColourLut lut({0, 60, 128, 200, 255}, [](int r, int g, int b) {
        return Node{uint8_t(r), uint8_t(g), uint8_t(b), uint8_t(255 - r)};
    });
    test::HtBlocks blocks;
    test::HtInstance ht(test::htSettings(1, 1, 1), lut.lut, blocks, 2);
    ASSERT_EQ(ht.rc, RC_OK);
    const test::Bytes levels = test::evenLevels(32);
    for (int a = 0; a < 32; ++a)
        for (int b = 0; b < 32; ++b)
            for (int c = 0; c < 32; ++c) {
                const uint32_t v = gridOf(ht)[(a * 32 + b) * 32 + c];
                ASSERT_LE(std::abs(int(v & 0xFF) - levels[a]), 1);
                ASSERT_LE(std::abs(int(v >> 8 & 0xFF) - levels[b]), 1);
                ASSERT_LE(std::abs(int(v >> 16 & 0xFF) - levels[c]), 1);
                ASSERT_LE(std::abs(int(v >> 24) - (255 - levels[a])), 1);
            }
    // The target levels are the block's, on all three axes.
    EXPECT_EQ(ht.ctx->lut.gridCount[2], 32u);
    EXPECT_EQ(ht.ctx->lut.grid[1][1], 8);
    EXPECT_EQ(ht.ctx->lut.lutDataBlock, nullptr);
    EXPECT_EQ(static_cast<void*>(ht.ctx->lut.lutData), ht.ctx->buffers[kConversionTable].data);
}

// A two-node source: the cube's corners (levels 0 and 255).
Node cornerInks(int r, int g, int b) {
    if (r == 0 && g == 0 && b == 0) return {10, 1, 2, 3};
    if (r == 0 && g == 0 && b == 255) return {250, 4, 5, 6};
    if (r == 0 && g == 255 && b == 255) return {100, 7, 8, 9};
    if (r == 255 && g == 255 && b == 255) return {50, 11, 12, 13};
    return {0, 0, 0, 0};
}

TEST(GridResample, TwoNodeSourceCornersAndOneNodeByHand) {
    test::MemoryWatch watch;
    test::ColourLut lut({0, 255}, cornerInks);
    test::HtInstance ht(test::htSettings(1, 1, 1), lut.lut, test::HtBlocks{}, 2);
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(gridOf(ht)[0], packed({10, 1, 2, 3}));
    EXPECT_EQ(gridOf(ht)[31], packed({250, 4, 5, 6}));  // (0, 0, 255)
    EXPECT_EQ(gridOf(ht)[32 * 32 * 32 - 1], packed({50, 11, 12, 13}));
    // Node (1, 2, 3) at levels 8, 16, 24: fractions (8 x 128 + 127) / 255 = 4,
    // (2048 + 127) / 255 = 8 and (3072 + 127) / 255 = 12. Largest on axis 2,
    // then axis 1: vertices (0,0,0), (0,0,1), (0,1,1), (1,1,1) weighted
    // 116, 4, 4, 4. Ink 0: (1160 + 1000 + 400 + 200 + 64) >> 7 = 22;
    // ink 1: (116 + 16 + 28 + 44 + 64) >> 7 = 2; ink 2: (232 + 20 + 32 + 48 + 64) >> 7 = 3;
    // ink 3: (348 + 24 + 36 + 52 + 64) >> 7 = 4.
    EXPECT_EQ(gridOf(ht)[(1 * 32 + 2) * 32 + 3], packed({22, 2, 3, 4}));
}

TEST(GridResample, FixedThresholdKeepsOnlyTheCorners) {
    test::MemoryWatch watch;
    test::ColourLut lut({0, 128, 255}, [](int r, int g, int b) {
        return Node{uint8_t(r), uint8_t(g), uint8_t(b), uint8_t(r / 2 + g / 4)};
    });
    test::HtBlocks blocks;
    blocks.gridLevels = {0xFF};  // not read with method 0
    test::HtInstance ht(test::htSettings(0, 1, 1), lut.lut, blocks, 2);
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(ht.ctx->buffers[kConversionTable].size, 32u);
    EXPECT_EQ(ht.ctx->lut.gridCount[0], 2u);
    EXPECT_EQ(ht.ctx->lut.grid[2][1], 255);
    for (int a = 0; a < 2; ++a)
        for (int b = 0; b < 2; ++b)
            for (int c = 0; c < 2; ++c) {
                const int r = 255 * a, g = 255 * b, bl = 255 * c;
                EXPECT_EQ(gridOf(ht)[(a * 2 + b) * 2 + c], packed({uint8_t(r), uint8_t(g), uint8_t(bl), uint8_t(r / 2 + g / 4)}));
            }
}

TEST(GridResample, LevelBlockRefusals) {
    // A count other than 32, or levels that do not start at 0, rise strictly
    // and end at 255: the grid level block is refused and the slots released.
    test::Bytes good = test::evenLevels(32);
    test::Bytes notFromZero = good;
    notFromZero[0] = 1;
    test::Bytes flat = good;
    flat[5] = flat[4];
    test::Bytes short255 = good;
    short255[31] = 254;
    const test::Bytes blocks[] = {test::gridLevelBlock(good, 31), test::gridLevelBlock(test::evenLevels(33)),
                                  test::gridLevelBlock(notFromZero), test::gridLevelBlock(flat),
                                  test::gridLevelBlock(short255)};
    for (const test::Bytes& block : blocks) {
        test::MemoryWatch watch;
        test::ColourLut lut({0, 255}, cornerInks);
        test::HtBlocks feed;
        feed.gridLevels = block;
        test::HtInstance ht(test::htSettings(1, 1, 1), lut.lut, feed, 2);
        EXPECT_EQ(ht.rc, RC_ARG + 2);
        EXPECT_EQ(ht.answers[1], test::kMatrixGeneralId) << "answered before the block was read";
        for (const HtBuffer& b : ht.ctx->buffers) EXPECT_EQ(b.handle, nullptr);
        EXPECT_EQ(watch.seam().liveBlocks, 1) << "only the record";
    }
}

TEST(GridResample, MissingSourceGridReleasesEverything) {
    for (int which = 0; which < 2; ++which) {
        test::MemoryWatch watch;
        test::ColourLut lut({0, 255}, cornerInks);
        if (which == 0) lut.lut.lutData = nullptr; else lut.lut.lutDataBlock = nullptr;
        test::HtInstance ht(test::htSettings(3, 1, 1), lut.lut, test::HtBlocks{}, 2);
        EXPECT_EQ(ht.rc, RC_ARG + 1);
        EXPECT_EQ(watch.seam().liveBlocks, 1);
    }
}

TEST(GridResample, SourceGridOfAnotherShapeIsRefusedKeepingTheSlots) {
    // Four inks per node and a level row are what resampling can read;
    // anything else is invalid data from colour management.
    for (int which = 0; which < 4; ++which) {
        test::MemoryWatch watch;
        test::ColourLut lut({0, 100, 255}, cornerInks);
        if (which == 0) lut.lut.channels = 3;
        if (which == 1) lut.lut.grid[0][1] = 0;     // does not rise
        if (which == 2) lut.lut.gridCount[0] = 1;
        if (which == 3) lut.lut.gridCount[0] = 69;  // beyond the level row
        test::HtInstance ht(test::htSettings(1, 1, 1), lut.lut, test::HtBlocks{}, 2);
        EXPECT_EQ(ht.rc, RC_DATA) << which;
        EXPECT_NE(ht.ctx->buffers[kErrorLine0].handle, nullptr) << "phase 1 slots kept";
        EXPECT_EQ(ht.ctx->buffers[kConversionTable].data, nullptr);
    }
}

}  // namespace
}  // namespace inkdot
