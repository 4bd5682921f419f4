// Counting printed dots: codes read most significant first, coverage counts
// small and medium dots by their ink amounts.
#include <gtest/gtest.h>

#include <vector>

#include "report/dot_counts.h"

namespace inkdot::tools {
namespace {

DotCounts countLine(const std::vector<uint8_t>& line, uint32_t x0, uint32_t width, unsigned bits) {
    DotCounts counts;
    countDots(line.data(), x0, width, bits, counts);
    return counts;
}

TEST(DotCodes, OneBitCodesStartAtTheTopBit) {
    const std::vector<uint8_t> line{0x80, 0x01};
    EXPECT_EQ(dotCode(line.data(), 0, 1), 1u);
    for (uint32_t x = 1; x < 15; ++x) EXPECT_EQ(dotCode(line.data(), x, 1), 0u) << x;
    EXPECT_EQ(dotCode(line.data(), 15, 1), 1u);
}

TEST(DotCodes, TwoBitCodesStartAtTheTopPair) {
    const std::vector<uint8_t> line{0xE4};  // 11 10 01 00: large, medium, small, none
    EXPECT_EQ(dotCode(line.data(), 0, 2), 3u);
    EXPECT_EQ(dotCode(line.data(), 1, 2), 2u);
    EXPECT_EQ(dotCode(line.data(), 2, 2), 1u);
    EXPECT_EQ(dotCode(line.data(), 3, 2), 0u);
}

TEST(DotCounts, BlankPaperHasNoCoverage) {
    for (unsigned bits : {1u, 2u}) {
        const DotCounts c = countLine(std::vector<uint8_t>(8, 0), 0, 32, bits);
        EXPECT_EQ(c.pixels(), 32u);
        EXPECT_EQ(c.coverage({}), 0.0);
        EXPECT_EQ(c.dotted(), 0.0);
    }
}

TEST(DotCounts, SolidInkIsFullCoverage) {
    const DotCounts one = countLine(std::vector<uint8_t>(4, 0xFF), 0, 32, 1);
    EXPECT_EQ(one.bySize[3], 32u);  // a one-bit dot counts as large
    EXPECT_DOUBLE_EQ(one.coverage({}), 1.0);
    const DotCounts two = countLine(std::vector<uint8_t>(4, 0xFF), 0, 16, 2);
    EXPECT_DOUBLE_EQ(two.share(3), 1.0);
    EXPECT_DOUBLE_EQ(two.coverage({}), 1.0);
}

TEST(DotCounts, CheckerboardIsHalfCovered) {
    const DotCounts c = countLine(std::vector<uint8_t>(4, 0xAA), 0, 32, 1);
    EXPECT_DOUBLE_EQ(c.coverage({}), 0.5);
    EXPECT_DOUBLE_EQ(c.dotted(), 0.5);
}

TEST(DotCounts, SmallAndMediumDotsCountByTheirAmounts) {
    const DotAmounts amounts{0.25, 0.5};
    const DotCounts small = countLine(std::vector<uint8_t>(2, 0x55), 0, 8, 2);  // all small
    EXPECT_DOUBLE_EQ(small.share(1), 1.0);
    EXPECT_DOUBLE_EQ(small.coverage(amounts), 0.25);
    EXPECT_DOUBLE_EQ(small.dotted(), 1.0);
    const DotCounts mixed = countLine(std::vector<uint8_t>{0xE4}, 0, 4, 2);  // one of each code
    EXPECT_DOUBLE_EQ(mixed.coverage(amounts), (1.0 + 0.5 + 0.25) / 4);
    EXPECT_DOUBLE_EQ(mixed.dotted(), 0.75);
}

TEST(DotCounts, ARegionCountsOnlyItsOwnPixels) {
    // Dots at pixels 2..5 of the first byte; count pixels 3..10.
    const DotCounts c = countLine(std::vector<uint8_t>{0x3C, 0x00}, 3, 8, 1);
    EXPECT_EQ(c.pixels(), 8u);
    EXPECT_EQ(c.bySize[3], 3u);
}

TEST(DotCounts, DotAmountOfEachCode) {
    const DotAmounts amounts{0.3, 0.6};
    EXPECT_EQ(dotAmount(0, 2, amounts), 0.0);
    EXPECT_EQ(dotAmount(1, 2, amounts), 0.3);
    EXPECT_EQ(dotAmount(2, 2, amounts), 0.6);
    EXPECT_EQ(dotAmount(3, 2, amounts), 1.0);
    EXPECT_EQ(dotAmount(1, 1, amounts), 1.0);
}

}  // namespace
}  // namespace inkdot::tools
