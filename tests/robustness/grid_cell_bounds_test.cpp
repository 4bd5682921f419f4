// The colour kernels pick a node of the 32 x 32 x 32 conversion grid per input
// byte from the grid cell table: the lower node n, or n + 1 when its weight w
// is at most q (the matrix value AND 254, so at most 254; the fixed threshold
// compares with 128). Node 32 would lie outside the grid; only an entry naming
// node 31 with a weight below 255 reaches it, and the table builder cannot make
// one: level rows start at 0, rise strictly and end at 255, so node 31 sits at
// level 255 with weight 255. Checked on many valid level blocks. (Every colour
// kernel runs in the whole-job tests, under the sanitizer build too.)
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::HtInstance;

const CmLut& sourceGrid() {
    static test::ColourLut lut(test::evenLevels(5), [](int r, int g, int b) {
        return test::ColourLut::Node{uint8_t(255 - r), uint8_t(255 - g), uint8_t(255 - b), uint8_t((255 - r) / 3)};
    });
    lut.refresh();
    return lut.lut;
}

constexpr int kMaxQ = 254;

// The highest node entry v may lead a kernel to.
int reach(const HtInstance& ht, int v) {
    const uint8_t* cell = slotData<uint8_t>(*ht.ctx, kGridCellTable) + 2 * v;
    return cell[0] + (cell[1] <= kMaxQ ? 1 : 0);
}

TEST(GridCellBounds, NoEntryReachesPastTheLastNode) {
    std::mt19937 rng(20240611);
    for (int trial = 0; trial < 200; ++trial) {
        // 32 levels from 0 to 255 rising strictly: even, then random steps.
        Bytes levels = test::evenLevels(32), inner(254);
        std::iota(inner.begin(), inner.end(), 1);
        if (trial > 0) std::sample(inner.begin(), inner.end(), levels.begin() + 1, 30, rng);  // in rising order
        test::MemoryWatch watch;
        test::HtBlocks blocks;
        blocks.gridLevels = test::gridLevelBlock(levels);
        HtInstance ht(test::htSettings(trial % 2 ? 3 : 1, 1, 1 + (trial / 2) % 2), sourceGrid(), blocks);
        ASSERT_EQ(ht.rc, RC_OK) << trial;
        const uint8_t* cells = slotData<uint8_t>(*ht.ctx, kGridCellTable);
        for (int v = 0; v < 256; ++v) {
            const bool onNode = std::find(levels.begin(), levels.end(), v) != levels.end();
            EXPECT_EQ(cells[2 * v + 1] == 255, onNode) << "trial " << trial << " level " << v;
            EXPECT_LE(reach(ht, v), 31) << "trial " << trial << " level " << v;
            EXPECT_LE(levels[cells[2 * v]], v);
        }
        EXPECT_TRUE(cells[510] == 31 && cells[511] == 255) << trial;
    }
    HtInstance threshold(test::htSettings(0, 1, 1), sourceGrid());
    for (int v = 0; v < 256; ++v) EXPECT_LE(reach(threshold, v), 1) << "the fixed threshold stays in its two nodes";
}

}  // namespace
}  // namespace inkdot
