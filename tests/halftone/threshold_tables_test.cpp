// The tables of phase 3: threshold matrix, dot values, tone, error-diffusion
// thresholds and grid cells.
#include <gtest/gtest.h>

#include "halftone/protocol_steps.h"
#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::HtBlocks;
using test::HtInstance;

HtBlocks withMatrix(uint8_t widthByte, uint8_t heightByte) {
    HtBlocks blocks;
    const unsigned w = widthByte == 255 ? 256 : widthByte, h = heightByte == 255 ? 256 : heightByte;
    blocks.matrix = test::thresholdMatrixBlock(widthByte, heightByte, test::rampValues(w * h));
    return blocks;
}

// Dot values fall from 250 % of 255 at level 0 to 100 % at 255; the one-bit
// error thresholds follow them. With 500 % and -32768 the sum still fits:
// (33268 x 65025 + 1) / 255 = 8483340, minus 32768 x 255, / 100 = 1275.
TEST(DotValueTable, PublishedValues) {
    int16_t dot[256], ed[256];
    buildDotValueTable(dot, false, 250, 100);
    const std::pair<int, int16_t> dots[] = {{0, 637}, {1, 634}, {128, 349}, {254, 255}, {255, 255}};
    for (auto [k, v] : dots) EXPECT_EQ(dot[k], v) << "dot value " << k;
    buildEdThresholdTable(ed, dot);
    const std::pair<int, int16_t> eds[] = {{0, 128}, {1, 51}, {2, 56}, {3, 60}, {4, 64},
                                           {252, 208}, {253, 211}, {254, 214}, {255, 128}};
    for (auto [k, v] : eds) EXPECT_EQ(ed[k], v) << "threshold " << k;
    buildDotValueTable(dot, true, 250, 100);
    for (int k = 0; k < 256; ++k) ASSERT_EQ(dot[k], 255);
    buildDotValueTable(dot, false, 500, -32768);
    EXPECT_EQ(dot[0], 1275);
}

// Tone of the 64 x 64 matrix: 16 x 255 / 634 = 6 at level 1, 4096 at 255.
// Fewer than 256 cells give tone only at full level; the one-bit mono dither
// table composes the ink curve (255 - v) into both halves; two-bit does not.
TEST(ToneTable, ByMatrixSizeAndKernel) {
    struct Case { uint32_t method, outputBits; uint8_t side; uint32_t bytes;
                  std::vector<std::pair<int, uint16_t>> tone; };
    const Case cases[] = {
        {1, 1, 64, 512, {{0, 0}, {1, 6}, {254, 4064}, {255, 4096}}},
        {1, 1, 8, 512, {{0, 0}, {128, 0}, {254, 0}, {255, 64}}},
        {3, 1, 64, 1024, {{0, 4096}, {1, 4064}, {254, 6}, {255, 0}, {256, 4096}, {257, 4064}, {511, 0}}},
        {3, 2, 64, 1024, {{0, 0}, {1, 16}, {100, 1600}, {254, 4064}, {255, 4096}}},
    };
    for (const Case& c : cases) {
        test::WatchedMono m(test::htSettings(c.method, 0, c.outputBits), withMatrix(c.side, c.side));
        ASSERT_EQ(m.ht.rc, RC_OK);
        EXPECT_EQ(m.ctx().buffers[kToneTable].size, c.bytes);
        const uint16_t* tone = slotData<uint16_t>(m.ctx(), kToneTable);
        for (auto [i, v] : c.tone) EXPECT_EQ(tone[i], v) << "method " << c.method << " bits " << c.outputBits
                                                         << " side " << int(c.side) << " entry " << i;
    }
}

TEST(EdThresholdTable, PublishedValuesTwoBitBeforeTheDotSplit) {
    test::WatchedMono m(test::htSettings(1, 0, 2), HtBlocks{}, 3);
    ASSERT_EQ(m.ht.rc, RC_OK);
    const int16_t* ed = slotData<int16_t>(m.ctx(), kEdThresholdTable);
    EXPECT_EQ(ed[0], 128);
    EXPECT_EQ(ed[1], 41);  // 22 + 19
    EXPECT_EQ(ed[2], 44);  // 25 + 19
    EXPECT_EQ(ed[255], 128);
}

// Size bytes (255 stands for 256) to width, cells and a slot of whole words
// with the tone table behind; the values are copied row by row.
TEST(ThresholdMatrix, CopiedRowByRowWithTheToneTableBehind) {
    HtBlocks blocks;
    const std::vector<uint16_t> values = {0x1234, 7, 65535, 300, 1, 2, 3, 4};
    blocks.matrix = test::thresholdMatrixBlock(4, 2, values);
    {
        test::WatchedMono m(test::htSettings(1, 0, 1), blocks);
        ASSERT_EQ(m.ht.rc, RC_OK);
        const uint16_t* matrix = slotData<uint16_t>(m.ctx(), kThresholdMatrix);
        EXPECT_EQ(std::vector<uint16_t>(matrix, matrix + 8), values);
    }
    const struct { uint8_t w, h; uint32_t width, cells, bytes; } cases[] = {
        {4, 2, 4, 8, 16}, {1, 3, 1, 3, 8}, {255, 16, 256, 4096, 8192}};
    for (const auto& c : cases) {
        test::WatchedMono n(test::htSettings(1, 0, 1), withMatrix(c.w, c.h));
        ASSERT_EQ(n.ht.rc, RC_OK);
        EXPECT_EQ(n.ctx().matrixWidth, c.width);
        EXPECT_EQ(n.ctx().matrixCells, c.cells);
        EXPECT_EQ(n.ctx().buffers[kThresholdMatrix].size, c.bytes + 512) << int(c.w) << "x" << int(c.h);
        EXPECT_EQ(n.ctx().buffers[kToneTable].data, slotData<uint8_t>(n.ctx(), kThresholdMatrix) + c.bytes);
    }
}

// Sizes the tables cannot hold, and a zero dot value (ink parameter 0 at
// level 255), are refused keeping the earlier slots.
TEST(ThresholdMatrix, RefusalsKeepTheSlots) {
    const uint8_t sizes[][2] = {{0, 16}, {16, 0}, {3, 4}, {12, 1}, {254, 1}, {255, 255}};
    for (const auto& size : sizes) {
        HtBlocks blocks;
        blocks.matrix = test::thresholdMatrixBlock(size[0], size[1], {});
        test::WatchedMono m(test::htSettings(1, 0, 1), blocks);
        EXPECT_EQ(m.ht.rc, RC_DATA) << int(size[0]) << "x" << int(size[1]);
        EXPECT_EQ(m.ht.answers[2], 0xFFFFFFFFu);
        EXPECT_NE(m.ctx().buffers[kConversionTable].handle, nullptr);
        EXPECT_EQ(m.ctx().buffers[kThresholdMatrix].data, nullptr);
        EXPECT_EQ(m.ctx().kernel, nullptr);
    }
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; }, 250, 0);
    HtInstance ht(test::htSettings(1, 0, 1), lut.lut);
    EXPECT_EQ(ht.rc, RC_DATA);
    EXPECT_NE(ht.ctx->buffers[kDotValueTable].handle, nullptr);
    EXPECT_EQ(ht.ctx->kernel, nullptr);
}

TEST(DotValueTable, SlotSizesByColourModeAndDepth) {
    struct Case { uint32_t colourMode, outputBits, total, edOffset, edSize; };
    const Case cases[] = {{0, 1, 1536, 512, 512}, {1, 1, 1536, 512, 512}, {3, 1, 2048, 1024, 512},
                          {1, 2, 2048, 512, 1024}, {3, 2, 2560, 1024, 1024}};
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        test::ColourLut lut(test::evenLevels(2), [](int, int, int) { return test::ColourLut::Node{}; });
        HtInstance ht(test::htSettings(3, c.colourMode, c.outputBits), lut.lut, HtBlocks{}, 3);
        ASSERT_EQ(ht.rc, RC_OK) << c.colourMode << "/" << c.outputBits;
        const auto* base = slotData<uint8_t>(*ht.ctx, kDotValueTable);
        EXPECT_EQ(ht.ctx->buffers[kDotValueTable].size, c.total);
        EXPECT_EQ(ht.ctx->buffers[kEdThresholdTable].data, base + c.edOffset);
        EXPECT_EQ(ht.ctx->buffers[kEdThresholdTable].size, c.edSize);
        EXPECT_EQ(ht.ctx->buffers[kGridCellTable].data, base + c.edOffset + c.edSize);
        EXPECT_EQ(ht.ctx->buffers[kGridCellTable].size, 512u);
    }
}

// Entry 2v, 2v + 1: the lower node of level v and its weight. Levels 255 i /
// 31 (0, 8, 16 ... 246, 255): level 4 is (8 - 4) x 255 / 8 = 127 of node 0,
// 254 is (255 - 254) x 255 / 9 = 28 of node 30. The two corners of fixed
// threshold: 100 is 155 of node 0. No level row leaves the table empty.
TEST(GridCellTable, LowerNodeAndItsWeight) {
    test::MemoryWatch watch;
    test::ColourLut lut({0, 255}, [](int, int, int) { return test::ColourLut::Node{}; });
    HtInstance ht(test::htSettings(1, 1, 1), lut.lut);
    ASSERT_EQ(ht.rc, RC_OK);
    const uint8_t* cell = slotData<uint8_t>(*ht.ctx, kGridCellTable);
    const uint8_t want[][3] = {{0, 0, 255}, {4, 0, 127}, {8, 1, 255}, {254, 30, 28}, {255, 31, 255}};
    for (const auto& w : want) EXPECT_EQ((std::pair{cell[2 * w[0]], cell[2 * w[0] + 1]}), (std::pair{w[1], w[2]})) << int(w[0]);
    uint8_t cells[512] = {};
    const uint8_t levels[2] = {0, 255};
    buildGridCellTable(cells, levels, 2);
    EXPECT_EQ((std::pair{cells[200], cells[201]}), (std::pair<uint8_t, uint8_t>{0, 155}));
    EXPECT_EQ(cells[2 * 255], 1);
    uint8_t empty[512] = {};
    const uint8_t flat[68] = {};
    buildGridCellTable(empty, flat, 0);
    buildGridCellTable(empty, flat, 68);
    for (uint8_t c : empty) ASSERT_EQ(c, 0);
}

}  // namespace
}  // namespace inkdot
