// The dot-split table: rows fit a pixel, dot sizes hand over smoothly and the
// delivered ink is what one-bit output lays down for the ink amount.
#include <gtest/gtest.h>

#include <cmath>

#include "rescomp/dot_split.h"

namespace inkdot::tools {
namespace {

// True when the sequence rises (not strictly) to one peak and then falls.
template <class Get>
bool unimodal(Get get) {
    int r = 1;
    while (r < 256 && get(r) >= get(r - 1)) ++r;
    while (r < 256 && get(r) <= get(r - 1)) ++r;
    return r == 256;
}

class DotSplitRows : public ::testing::TestWithParam<DotSplitParams> {};

TEST_P(DotSplitRows, FitAPixelAndHandOverMonotonically) {
    const DotSplitParams params = GetParam();
    const auto rows = makeDotSplit(params);
    EXPECT_EQ(rows[0].small + rows[0].medium + rows[0].large, 0);
    EXPECT_EQ(rows[255].large, 255);
    for (int r = 0; r < 256; ++r) EXPECT_LE(rows[r].small + rows[r].medium + rows[r].large, 255) << r;
    for (int r = 1; r < 256; ++r) EXPECT_GE(rows[r].large, rows[r - 1].large) << "large dots never recede, row " << r;
    EXPECT_TRUE(unimodal([&](int r) { return rows[r].small; })) << "small dots rise, then give way";
    EXPECT_TRUE(unimodal([&](int r) { return rows[r].medium; })) << "medium dots rise, then give way";
    // Small dots peak before medium ones, medium before large ones fill in.
    int smallPeak = 0, mediumPeak = 0;
    for (int r = 0; r < 256; ++r) {
        if (rows[r].small > rows[smallPeak].small) smallPeak = r;
        if (rows[r].medium > rows[mediumPeak].medium) mediumPeak = r;
    }
    EXPECT_LT(smallPeak, mediumPeak);
    EXPECT_LT(mediumPeak, 255);
    // The ink the row delivers is the one-bit ink, r scaled by 255 over the
    // dot value (within rounding).
    for (int r = 0; r < 256; ++r) {
        const double ink = rows[r].small * params.smallInk + rows[r].medium * params.mediumInk + rows[r].large;
        const double oneBit = r * 255.0 / oneBitDotValue(r, params.inkParamA, params.inkParamB);
        EXPECT_NEAR(ink, oneBit, 1.5) << r;  // three roundings of half a unit each
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, DotSplitRows,
                         ::testing::Values(DotSplitParams{}, DotSplitParams{0.25, 0.6, 0.05, 0.5, 0.25, 1.0},
                                           DotSplitParams{0.4, 0.7, 0.1, 0.7, 0.4, 1.0, 500, 100}));

TEST(DotSplit, OneBitDotValuesOfTheInkParameters) {
    // ((A − B)(255 − r)² + 1) / 255 + 255 B, over 100, truncated. A 250, B 100:
    // r 0: (150 × 65025 + 1) / 255 = 38250, + 25500 = 63750 → 637;
    // r 128: (150 × 16129 + 1) / 255 = 9487, + 25500 = 34987 → 349;
    // r 254: 1 + 25500 → 255. A 500, B 120, r 0: 96900 + 30600 → 1275.
    // A = B = 100 gives 255 throughout (no dot gain).
    const struct {
        int r, a, b, dot;
    } cases[] = {{0, 250, 100, 637}, {128, 250, 100, 349}, {254, 250, 100, 255}, {255, 250, 100, 255},
                 {0, 100, 100, 255}, {200, 100, 100, 255}, {0, 500, 120, 1275}};
    for (const auto& c : cases) EXPECT_EQ(oneBitDotValue(c.r, c.a, c.b), c.dot) << c.r << " " << c.a << "," << c.b;
    // Without dot gain the split delivers the ink amount itself.
    const auto rows = makeDotSplit({0.35, 0.65, 0.08, 0.6, 0.3, 1.0, 100, 100});
    EXPECT_NEAR(rows[100].small * 0.35 + rows[100].medium * 0.65 + rows[100].large, 100.0, 1.5);
}

TEST(DotSplitBlock, IsThreeBytesPerRowInSmallMediumLargeOrder) {
    std::array<DotSplitRow, 256> rows{};
    rows[1] = {10, 20, 30};
    rows[255] = {0, 0, 255};
    const Bytes block = dotSplitBlock(rows);
    ASSERT_EQ(block.size(), 768u);
    EXPECT_EQ(block[3], 10);
    EXPECT_EQ(block[4], 20);
    EXPECT_EQ(block[5], 30);
    EXPECT_EQ(block[767], 255);
}

}  // namespace
}  // namespace inkdot::tools
