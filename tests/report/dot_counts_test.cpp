// Counting printed dots: codes read most significant first, coverage counts
// small and medium dots by their ink amounts (hand-counted lines).
#include <gtest/gtest.h>

#include <vector>

#include "report/dot_counts.h"

namespace inkdot::tools {
namespace {

TEST(DotCounts, CoverageOfKnownLines) {
    const DotAmounts amounts{0.25, 0.5};
    const struct { std::vector<uint8_t> line; uint32_t x0, width; unsigned bits; double coverage, dotted; } cases[] = {
        {std::vector<uint8_t>(8, 0), 0, 32, 1, 0.0, 0.0},      // blank paper
        {std::vector<uint8_t>(8, 0), 0, 32, 2, 0.0, 0.0},
        {std::vector<uint8_t>(4, 0xFF), 0, 32, 1, 1.0, 1.0},   // solid ink
        {std::vector<uint8_t>(4, 0xFF), 0, 16, 2, 1.0, 1.0},
        {std::vector<uint8_t>(4, 0xAA), 0, 32, 1, 0.5, 0.5},   // checkerboard
        {std::vector<uint8_t>(2, 0x55), 0, 8, 2, 0.25, 1.0},   // all small
        {{0xE4}, 0, 4, 2, (1.0 + 0.5 + 0.25) / 4, 0.75},       // one of each code
        {{0x3C, 0x00}, 3, 8, 1, 3.0 / 8, 3.0 / 8},             // pixels 3..10 of dots at 2..5
    };
    for (const auto& c : cases) {
        DotCounts counts;
        countDots(c.line.data(), c.x0, c.width, c.bits, counts);
        EXPECT_EQ(counts.pixels(), c.width);
        EXPECT_DOUBLE_EQ(counts.coverage(amounts), c.coverage) << int(c.line[0]) << " " << c.bits;
        EXPECT_DOUBLE_EQ(counts.dotted(), c.dotted) << int(c.line[0]) << " " << c.bits;
    }
    DotCounts one;
    countDots(std::vector<uint8_t>(4, 0xFF).data(), 0, 32, 1, one);
    EXPECT_EQ(one.bySize[3], 32u) << "a one-bit dot counts as large";
}

}  // namespace
}  // namespace inkdot::tools
