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

TEST(DotValueTable, PublishedValues) {
    int16_t dot[256];
    buildDotValueTable(dot, false, 250, 100);
    EXPECT_EQ(dot[0], 637);  // 250 % of 255
    EXPECT_EQ(dot[1], 634);
    EXPECT_EQ(dot[128], 349);
    EXPECT_EQ(dot[254], 255);
    EXPECT_EQ(dot[255], 255);  // 100 % of 255
    for (int k = 1; k < 256; ++k) EXPECT_LE(dot[k], dot[k - 1]) << "falls towards full level";
    buildDotValueTable(dot, true, 250, 100);
    for (int k = 0; k < 256; ++k) ASSERT_EQ(dot[k], 255);
}

TEST(DotValueTable, ExtremeParametersDoNotOverflow) {
    int16_t dot[256];
    buildDotValueTable(dot, false, 500, -32768);
    // (33268 x 65025 + 1) / 255 = 8483340; minus 32768 x 255 gives 127500; / 100.
    EXPECT_EQ(dot[0], 1275);
}

TEST(ToneTable, PublishedValuesWithA64By64Matrix) {
    test::WatchedMono m(test::htSettings(1, 0, 1), withMatrix(64, 64));
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    const uint16_t* tone = slotData<uint16_t>(*ht.ctx, kToneTable);
    EXPECT_EQ(tone[0], 0);
    EXPECT_EQ(tone[1], 6);    // 16 x 255 / 634
    EXPECT_EQ(tone[254], 4064);
    EXPECT_EQ(tone[255], 4096);
    EXPECT_EQ(ht.ctx->matrixCells, 4096);
    EXPECT_EQ(ht.ctx->buffers[kToneTable].size, 512u) << "error diffusion keeps a plain 256-entry table";
}

TEST(ToneTable, FewerThan256CellsGiveToneOnlyAtFullLevel) {
    test::WatchedMono m(test::htSettings(1, 0, 1), withMatrix(8, 8));
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    const uint16_t* tone = slotData<uint16_t>(*ht.ctx, kToneTable);
    for (int i = 0; i < 255; ++i) ASSERT_EQ(tone[i], 0) << i;
    EXPECT_EQ(tone[255], 64);  // matrixCells, with dot value 255
}

TEST(ToneTable, MonochromeDitherComposesTheInkCurve) {
    test::WatchedMono m(test::htSettings(3, 0, 1), withMatrix(64, 64));  // ink 255 - v
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(ht.ctx->buffers[kToneTable].size, 1024u);
    const uint16_t* tone = slotData<uint16_t>(*ht.ctx, kToneTable);
    EXPECT_EQ(tone[0], 4096);  // level 0 is full ink
    EXPECT_EQ(tone[1], 4064);
    EXPECT_EQ(tone[254], 6);
    EXPECT_EQ(tone[255], 0);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(tone[256 + i], tone[i]) << "both halves hold the composed table";
}

TEST(ToneTable, TwoBitMonochromeDitherIsNotComposed) {
    test::WatchedMono m(test::htSettings(3, 0, 2), withMatrix(64, 64));
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    const uint16_t* tone = slotData<uint16_t>(*ht.ctx, kToneTable);
    for (int i = 0; i < 255; ++i) ASSERT_EQ(tone[i], 16 * i) << i;  // dot values 255: cells / 256 per level
    EXPECT_EQ(tone[255], 4096);
}

TEST(EdThresholdTable, PublishedValuesOneBit) {
    int16_t dot[256], ed[256];
    buildDotValueTable(dot, false, 250, 100);
    buildEdThresholdTable(ed, dot);
    EXPECT_EQ(ed[0], 128);
    EXPECT_EQ(ed[1], 51);
    EXPECT_EQ(ed[2], 56);
    EXPECT_EQ(ed[3], 60);
    EXPECT_EQ(ed[4], 64);
    EXPECT_EQ(ed[252], 208);
    EXPECT_EQ(ed[253], 211);
    EXPECT_EQ(ed[254], 214);
    EXPECT_EQ(ed[255], 128);
}

TEST(EdThresholdTable, PublishedValuesTwoBitBeforeTheDotSplit) {
    test::WatchedMono m(test::htSettings(1, 0, 2), HtBlocks{}, 3);
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    const int16_t* ed = slotData<int16_t>(*ht.ctx, kEdThresholdTable);
    EXPECT_EQ(ed[0], 128);
    EXPECT_EQ(ed[1], 41);  // 22 + 19
    EXPECT_EQ(ed[2], 44);  // 25 + 19
    EXPECT_EQ(ed[255], 128);
}

TEST(ThresholdMatrix, CopiedRowByRowWithTheToneTableBehind) {
    HtBlocks blocks;
    const std::vector<uint16_t> values = {0x1234, 7, 65535, 300, 1, 2, 3, 4};
    blocks.matrix = test::thresholdMatrixBlock(4, 2, values);
    {
        test::WatchedMono m(test::htSettings(1, 0, 1), blocks);
        ASSERT_EQ(m.ht.rc, RC_OK);
        const uint16_t* matrix = slotData<uint16_t>(m.ctx(), kThresholdMatrix);
        EXPECT_EQ(std::vector<uint16_t>(matrix, matrix + 8), values);
        EXPECT_EQ(m.ctx().buffers[kToneTable].handle, nullptr);
    }
    // Size bytes to width, cells and a slot of whole words with the tone table behind.
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

TEST(ThresholdMatrix, SizesTheTablesCannotHoldAreRefusedKeepingTheSlots) {
    const uint8_t sizes[][2] = {{0, 16}, {16, 0}, {3, 4}, {12, 1}, {254, 1}, {255, 255}};
    for (const auto& size : sizes) {
        HtBlocks blocks;
        blocks.matrix = test::thresholdMatrixBlock(size[0], size[1], {});
        test::WatchedMono m(test::htSettings(1, 0, 1), blocks);
        HtInstance& ht = m.ht;
        EXPECT_EQ(ht.rc, RC_DATA) << int(size[0]) << "x" << int(size[1]);
        EXPECT_EQ(ht.answers[2], 0xFFFFFFFFu);
        EXPECT_NE(ht.ctx->buffers[kConversionTable].handle, nullptr);
        EXPECT_EQ(ht.ctx->buffers[kThresholdMatrix].data, nullptr);
        EXPECT_EQ(ht.ctx->kernel, nullptr);
    }
}

TEST(DotValueTable, ZeroDotValueRefusedKeepingTheSlots) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; }, 250, 0);  // entry 255 = 0 x 255 / 100
    HtInstance ht(test::htSettings(1, 0, 1), lut.lut);
    EXPECT_EQ(ht.rc, RC_DATA);
    EXPECT_NE(ht.ctx->buffers[kDotValueTable].handle, nullptr);
    EXPECT_NE(ht.ctx->buffers[kThresholdMatrix].handle, nullptr);
    EXPECT_EQ(ht.ctx->kernel, nullptr);
}

TEST(DotValueTable, SlotSizesByColourModeAndDepth) {
    struct Case { uint32_t colourMode, outputBits, total, edOffset, edSize; };
    const Case cases[] = {{0, 1, 1536, 512, 512}, {1, 1, 1536, 512, 512}, {3, 1, 2048, 1024, 512},
                          {1, 2, 2048, 512, 1024}, {3, 2, 2560, 1024, 1024}};
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        test::ColourLut lut(test::evenLevels(2), [](int, int, int) { return test::ColourLut::Node{}; });
        HtSettings s = test::htSettings(3, c.colourMode, c.outputBits);
        HtInstance ht(s, lut.lut, HtBlocks{}, 3);
        ASSERT_EQ(ht.rc, RC_OK) << c.colourMode << "/" << c.outputBits;
        const auto* base = slotData<uint8_t>(*ht.ctx, kDotValueTable);
        EXPECT_EQ(ht.ctx->buffers[kDotValueTable].size, c.total);
        EXPECT_EQ(ht.ctx->buffers[kEdThresholdTable].data, base + c.edOffset);
        EXPECT_EQ(ht.ctx->buffers[kEdThresholdTable].size, c.edSize);
        EXPECT_EQ(ht.ctx->buffers[kGridCellTable].data, base + c.edOffset + c.edSize);
        EXPECT_EQ(ht.ctx->buffers[kGridCellTable].size, 512u);
    }
}

TEST(GridCellTable, LowerNodeAndItsWeight) {
    test::MemoryWatch watch;
    test::ColourLut lut({0, 255}, [](int, int, int) { return test::ColourLut::Node{}; });
    HtInstance ht(test::htSettings(1, 1, 1), lut.lut);
    ASSERT_EQ(ht.rc, RC_OK);
    const uint8_t* cell = slotData<uint8_t>(*ht.ctx, kGridCellTable);
    // Levels 255 i / 31: 0, 8, 16 ... 246, 255.
    EXPECT_EQ(cell[0], 0);
    EXPECT_EQ(cell[1], 255);
    EXPECT_EQ(cell[2 * 4], 0);
    EXPECT_EQ(cell[2 * 4 + 1], 127);  // (8 - 4) x 255 / 8
    EXPECT_EQ(cell[2 * 8], 1);
    EXPECT_EQ(cell[2 * 8 + 1], 255);
    EXPECT_EQ(cell[2 * 254], 30);
    EXPECT_EQ(cell[2 * 254 + 1], 28);  // (255 - 254) x 255 / 9
    EXPECT_EQ(cell[2 * 255], 31);
    EXPECT_EQ(cell[2 * 255 + 1], 255);
}

TEST(GridCellTable, CornersOnlyOrNoLevelRow) {
    uint8_t cells[512] = {};
    const uint8_t levels[2] = {0, 255};
    buildGridCellTable(cells, levels, 2);  // fixed threshold: the two corners
    EXPECT_EQ(cells[2 * 100], 0);
    EXPECT_EQ(cells[2 * 100 + 1], 155);  // (255 - 100) x 255 / 255
    EXPECT_EQ(cells[2 * 255], 1);
    uint8_t empty[512] = {};
    const uint8_t flat[68] = {};
    buildGridCellTable(empty, flat, 0);
    buildGridCellTable(empty, flat, 68);
    for (uint8_t c : empty) ASSERT_EQ(c, 0);
}

}  // namespace
}  // namespace inkdot
