// The dot-split table: rows fit a pixel, dot sizes hand over smoothly and the
// delivered ink follows the ink amount.
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
    // The ink the row delivers follows the row number (within rounding).
    for (int r = 0; r < 256; ++r) {
        const double ink = rows[r].small * params.smallInk + rows[r].medium * params.mediumInk + rows[r].large;
        EXPECT_NEAR(ink, r, 1.5) << r;  // three roundings of half a unit each
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, DotSplitRows,
                         ::testing::Values(DotSplitParams{}, DotSplitParams{0.25, 0.6, 0.05, 0.5, 0.25, 1.0},
                                           DotSplitParams{0.4, 0.7, 0.1, 0.7, 0.4, 1.0}));

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
