// The colour kernels pick a node of the 32 x 32 x 32 conversion grid per input
// byte from the grid cell table: the lower node n, or n + 1 when its weight w
// is at most q (the matrix value AND 254, so at most 254; the fixed threshold
// compares with 128). Node 32 would lie outside the grid; only an entry naming
// node 31 with a weight below 255 reaches it, and the table builder cannot make
// one: level rows start at 0, rise strictly and end at 255, so node 31 sits at
// level 255 with weight 255. Checked on many valid level blocks; then every
// colour kernel runs over every level and matrix value for the sanitizer build.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
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
        Bytes levels = test::evenLevels(32);
        if (trial > 0) {
            std::vector<int> inner(254);
            for (int i = 0; i < 254; ++i) inner[i] = i + 1;
            std::shuffle(inner.begin(), inner.end(), rng);
            std::sort(inner.begin(), inner.begin() + 30);
            levels = {0};
            for (int i = 0; i < 30; ++i) levels.push_back(static_cast<uint8_t>(inner[i]));
            levels.push_back(255);
        }
        test::MemoryWatch watch;
        test::HtBlocks blocks;
        blocks.gridLevels = test::gridLevelBlock(levels);
        HtInstance ht(test::htSettings(trial % 2 ? 3 : 1, 1, 1 + (trial / 2) % 2), sourceGrid(), blocks);
        ASSERT_EQ(ht.rc, RC_OK) << trial;
        ASSERT_GE(ht.ctx->buffers[kConversionTable].size, 32u * 32 * 32 * 4);
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

// Every colour kernel (method, bits, resolution, dither mode, input format)
// over every level (all three bytes equal, and mixed with 0 and 255) on lines
// that meet every matrix value, 0, 257, ... up to the largest a u16 holds.
TEST(GridCellBounds, ColourKernelsStayInsideTheGrid) {
    const uint32_t cases[][6] = {  // method, bits, x, y, dither mode, input format
        {3, 1, 720, 720, 1, 3},  {3, 1, 720, 720, 0, 3},  {0, 1, 720, 720, 1, 3}, {1, 1, 720, 720, 1, 4}, {1, 1, 720, 720, 1, 3},
        {1, 1, 1440, 720, 1, 4}, {1, 1, 1440, 720, 1, 3}, {1, 1, 360, 720, 1, 3}, {3, 2, 720, 720, 1, 3}, {3, 2, 360, 720, 1, 3},
        {1, 2, 720, 720, 1, 3},  {1, 2, 1440, 720, 1, 3}, {1, 2, 360, 720, 1, 3},
    };
    std::vector<uint16_t> values(256);
    for (int i = 0; i < 256; ++i) values[i] = static_cast<uint16_t>(i * 257);
    test::HtBlocks blocks;
    blocks.matrix = test::thresholdMatrixBlock(16, 16, values);
    for (const auto& k : cases) {
        test::MemoryWatch watch;
        HtSettings s = test::htSettings(k[0], 1, k[1], 256);
        s.resolutionX = k[2];
        s.resolutionY = k[3];
        s.ditherMode = k[4];
        s.inputFormat = k[5];
        HtInstance ht(s, sourceGrid(), blocks);
        ASSERT_EQ(ht.rc, RC_OK) << "row " << &k - cases;
        const uint32_t bpp = bytesPerPixel(s.inputFormat);
        for (uint32_t line = 0; line < 3 * 16; ++line) {
            Bytes src(256 * bpp), dst(4 * 64, 0);
            for (uint32_t i = 0; i < src.size(); ++i) {
                const uint8_t v = static_cast<uint8_t>(i / bpp + line), mix[3] = {v, line % 3 == 1 ? uint8_t(255) : v, line % 3 == 2 ? uint8_t(0) : v};
                src[i] = mix[i % bpp % 3];
            }
            ASSERT_EQ(Halftone(ht.ctx, src.data(), dst.data(), 64, 0, 256, 0, 0, line, 0, 0), RC_OK) << "row " << &k - cases;
        }
    }
}

}  // namespace
}  // namespace inkdot
