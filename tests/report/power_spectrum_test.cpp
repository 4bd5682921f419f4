// The report's measurements: stripes put their power at their known frequency;
// dot counts of hand-counted lines.
#include <gtest/gtest.h>

#include <algorithm>

#include "report/dot_counts.h"
#include "report/power_spectrum.h"

namespace inkdot::tools {
namespace {

TEST(PowerSpectrum, StripesPutTheirPowerAtTheirFrequency) {
    // Columns on, on, off, off: a period of four pixels across, none down. With
    // columns half as wide as lines are high (1440 x 720) the period is two line
    // pitches on paper, twice the frequency per line pitch.
    std::vector<double> stripes(32 * 32);
    for (size_t i = 0; i < stripes.size(); ++i) stripes[i] = i % 4 < 2 ? 1.0 : 0.0;
    for (auto [columnPitch, frequency] : {std::pair{1.0, 0.25}, std::pair{2.0, 0.5}}) {
        SpectrumAccumulator striped(32, columnPitch / 32, 1.0 / 32);
        striped.add(stripes);
        const RadialSpectrum p = striped.result();
        const size_t peak = size_t(std::max_element(p.power.begin(), p.power.end()) - p.power.begin());
        EXPECT_DOUBLE_EQ(p.frequency[peak], frequency);
        EXPECT_GT(p.anisotropy[peak], 5.0) << "all of it in two of the annulus's values: strongly directional";
    }
}

// Codes are read most significant first; coverage counts small and medium dots by their ink amounts.
TEST(DotCounts, CoverageOfKnownLines) {
    const struct { std::vector<uint8_t> line; uint32_t x0, width; unsigned bits; double coverage, dotted; } cases[] = {
        {std::vector<uint8_t>(8, 0), 0, 32, 2, 0.0, 0.0},     // blank paper
        {std::vector<uint8_t>(4, 0xFF), 0, 32, 1, 1.0, 1.0},  // solid ink
        {std::vector<uint8_t>(4, 0xFF), 0, 16, 2, 1.0, 1.0},
        {std::vector<uint8_t>(4, 0xAA), 0, 32, 1, 0.5, 0.5},  // checkerboard
        {std::vector<uint8_t>(2, 0x55), 0, 8, 2, 0.25, 1.0},  // all small
        {{0xE4}, 0, 4, 2, (1.0 + 0.5 + 0.25) / 4, 0.75},      // one of each code
        {{0x3C, 0x00}, 3, 8, 1, 3.0 / 8, 3.0 / 8},            // pixels 3..10 of dots at 2..5
    };
    for (const auto& c : cases) {
        DotCounts counts;
        countDots(c.line.data(), c.x0, c.width, c.bits, counts);
        EXPECT_EQ(counts.pixels(), c.width);
        EXPECT_DOUBLE_EQ(counts.coverage({0.25, 0.5}), c.coverage) << int(c.line[0]) << " " << c.bits;
        EXPECT_DOUBLE_EQ(counts.dotted(), c.dotted) << int(c.line[0]) << " " << c.bits;
        if (c.bits == 1 && c.coverage == 1.0) EXPECT_EQ(counts.bySize[3], 32u) << "a one-bit dot counts as large";
    }
}

}  // namespace
}  // namespace inkdot::tools
