// The colour kernels pick a node of the 32 x 32 x 32 conversion grid per
// input byte from the grid cell table: the lower node n, or n + 1 when the
// lower node's weight w is at most q (q = matrix value AND 254, so at most
// 254; the nearest-node choice of the fixed-threshold kernel compares with
// 128). Node 32 would lie outside the grid. It could only be reached from an
// entry naming node 31 with a weight below 255, and the table builder cannot
// make one: phase 2 accepts only level rows that start at 0, rise strictly
// and end at 255, so node 31 sits at level 255 with weight 255, and every
// other entry names a node below 31. These tests check that on many
// valid-looking level blocks, and run every colour kernel over every level
// and every matrix value, so that the sanitizer build sees any read beyond
// the grid's block.
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
using test::HtBlocks;
using test::HtInstance;

test::ColourLut& sourceGrid() {
    static test::ColourLut lut(test::evenLevels(5), [](int r, int g, int b) {
        return test::ColourLut::Node{uint8_t(255 - r), uint8_t(255 - g), uint8_t(255 - b), uint8_t((255 - r) / 3)};
    });
    lut.refresh();
    return lut;
}

// 32 levels from 0 to 255, rising strictly, with random steps.
Bytes randomLevelRow(std::mt19937& rng) {
    std::vector<int> inner(254);
    for (int i = 0; i < 254; ++i) inner[i] = i + 1;
    std::shuffle(inner.begin(), inner.end(), rng);
    inner.resize(30);
    std::sort(inner.begin(), inner.end());
    Bytes levels{0};
    for (int v : inner) levels.push_back(static_cast<uint8_t>(v));
    levels.push_back(255);
    return levels;
}

struct Cell {
    uint8_t node, weight;
};

std::vector<Cell> cellsOf(HtContext* ctx) {
    const uint8_t* table = slotData<uint8_t>(*ctx, kGridCellTable);
    std::vector<Cell> cells(256);
    for (int v = 0; v < 256; ++v) cells[v] = {table[2 * v], table[2 * v + 1]};
    return cells;
}

constexpr int kMaxQ = 254;  // matrix value AND 254 (the nearest-node choice compares with 128, below it)

TEST(GridCellBounds, NoEntryReachesPastTheLastNode) {
    std::mt19937 rng(20240611);
    for (int trial = 0; trial < 200; ++trial) {
        test::MemoryWatch watch;
        HtBlocks blocks;
        const Bytes levels = trial == 0 ? test::evenLevels(32) : randomLevelRow(rng);
        blocks.gridLevels = test::gridLevelBlock(levels);
        HtInstance ht(test::htSettings(trial % 2 ? 3 : 1, 1, 1 + (trial / 2) % 2), sourceGrid().lut, blocks);
        ASSERT_EQ(ht.rc, RC_OK) << trial;
        ASSERT_GE(ht.ctx->buffers[kConversionTable].size, 32u * 32 * 32 * 4);
        const std::vector<Cell> cells = cellsOf(ht.ctx);
        for (int v = 0; v < 256; ++v) {
            const Cell c = cells[v];
            const bool onNode = std::find(levels.begin(), levels.end(), v) != levels.end();
            EXPECT_EQ(c.weight == 255, onNode) << "trial " << trial << " level " << v;
            EXPECT_LE(c.node + (c.weight <= kMaxQ ? 1 : 0), 31) << "trial " << trial << " level " << v;
            EXPECT_LE(levels[c.node], v);
        }
        EXPECT_EQ(cells[255].node, 31);
        EXPECT_EQ(cells[255].weight, 255);
    }
}

TEST(GridCellBounds, FixedThresholdStaysInItsTwoNodes) {
    test::MemoryWatch watch;
    HtInstance ht(test::htSettings(0, 1, 1), sourceGrid().lut);
    ASSERT_EQ(ht.rc, RC_OK);
    for (const Cell& c : cellsOf(ht.ctx)) EXPECT_LE(c.node + (c.weight <= kMaxQ ? 1 : 0), 1);
}

// Every colour kernel (method, output bits, resolution, dither mode, input
// format) over every input level (all three bytes equal, and mixed with 0 and
// 255) on lines that meet every matrix value, up to the largest a u16 holds.
TEST(GridCellBounds, ColourKernelsStayInsideTheGrid) {
    const struct { uint32_t method, bits, x, y, ditherMode = 1, inputFormat = 3; } cases[] = {
        {3, 1, 720, 720}, {3, 1, 720, 720, 0}, {0, 1, 720, 720}, {1, 1, 720, 720, 1, 4}, {1, 1, 720, 720},
        {1, 1, 1440, 720, 1, 4}, {1, 1, 1440, 720}, {1, 1, 360, 720}, {3, 2, 720, 720}, {3, 2, 360, 720},
        {1, 2, 720, 720}, {1, 2, 1440, 720}, {1, 2, 360, 720},
    };
    // Thresholds spread over the whole u16 range: 0, 257, ... 65535.
    std::vector<uint16_t> values(256);
    for (int i = 0; i < 256; ++i) values[i] = static_cast<uint16_t>(i * 257);
    HtBlocks blocks;
    blocks.matrix = test::thresholdMatrixBlock(16, 16, values);
    for (const auto& k : cases) {
        test::MemoryWatch watch;
        HtSettings s = test::htSettings(k.method, 1, k.bits, 256);
        s.resolutionX = k.x;
        s.resolutionY = k.y;
        s.ditherMode = k.ditherMode;
        s.inputFormat = k.inputFormat;
        const std::string name = "method " + std::to_string(k.method) + ", " + std::to_string(k.bits) + " bits, " +
                                 std::to_string(k.x) + "x" + std::to_string(k.y) + ", dither mode " +
                                 std::to_string(k.ditherMode) + ", format " + std::to_string(k.inputFormat);
        HtInstance ht(s, sourceGrid().lut, blocks);
        ASSERT_EQ(ht.rc, RC_OK) << name;
        const uint32_t bpp = bytesPerPixel(s.inputFormat);
        for (uint32_t line = 0; line < 3 * 16; ++line) {
            Bytes src(256 * bpp);
            for (uint32_t x = 0; x < 256; ++x) {
                const uint8_t v = static_cast<uint8_t>(x + line);
                const uint8_t mix[3] = {v, line % 3 == 1 ? uint8_t(255) : v, line % 3 == 2 ? uint8_t(0) : v};
                for (uint32_t c = 0; c < bpp; ++c) src[x * bpp + c] = mix[c % 3];
            }
            Bytes dst(4 * 64, 0);
            ASSERT_EQ(Halftone(ht.ctx, src.data(), dst.data(), 64, 0, 256, 0, 0, line, 0, 0), RC_OK) << name;
        }
    }
}

}  // namespace
}  // namespace inkdot
