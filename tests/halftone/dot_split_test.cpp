// Phase 4: the dot-split table, the re-indexed error thresholds and the
// three split tables derived from it.
#include <gtest/gtest.h>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::DotSplitRow;
using test::HtBlocks;
using test::HtInstance;

HtSettings twoBitMono(uint32_t method = 1, uint32_t resX = 720, uint32_t resY = 720) {
    HtSettings s = test::htSettings(method, 0, 2);
    s.resolutionX = resX;
    s.resolutionY = resY;
    return s;
}

HtBlocks withSplit(const std::function<DotSplitRow(int)>& rowFor) {
    HtBlocks blocks;
    blocks.matrix = test::thresholdMatrixBlock(64, 64, test::rampValues(4096));  // tone 16 i
    blocks.dotSplit = test::dotSplitBlock(rowFor);
    return blocks;
}

TEST(DotSplit, RowsCopiedAndTotalsUpTo255Accepted) {
    {
        test::WatchedMono m(twoBitMono(), withSplit(test::layeredSplit));
        ASSERT_EQ(m.ht.rc, RC_OK);
        const uint8_t* table = slotData<uint8_t>(m.ctx(), kDotSplitTable);
        EXPECT_EQ(m.ctx().buffers[kDotSplitTable].size, 768u);
        EXPECT_EQ(std::vector<uint8_t>(table + 3 * 200, table + 3 * 201), (std::vector<uint8_t>{85, 85, 30}));
        EXPECT_EQ(std::vector<uint8_t>(table + 3 * 50, table + 3 * 51), (std::vector<uint8_t>{50, 0, 0}));
    }
    test::WatchedMono full(twoBitMono(), withSplit([](int) { return DotSplitRow{85, 85, 85}; }));
    EXPECT_EQ(full.ht.rc, RC_OK);
}

TEST(DotSplit, RowTotalAbove255RefusedWithTheRowsBeforeCopied) {
    test::WatchedMono m(twoBitMono(), withSplit([](int r) {
        return r == 100 ? DotSplitRow{85, 85, 86} : DotSplitRow{uint8_t(r / 3), 1, 2};
    }));
    HtInstance& ht = m.ht;
    EXPECT_EQ(ht.rc, RC_DATA);
    EXPECT_EQ(ht.answers[3], 0xFFFFFFFFu);
    const uint8_t* table = slotData<uint8_t>(*ht.ctx, kDotSplitTable);
    for (int r = 0; r < 100; ++r) {
        ASSERT_EQ(table[3 * r], r / 3);
        ASSERT_EQ(table[3 * r + 2], 2);
    }
    EXPECT_NE(ht.ctx->buffers[kThresholdMatrix].handle, nullptr) << "slots kept";
    EXPECT_EQ(ht.ctx->kernel, nullptr);
    EXPECT_EQ(ht.ctx->splitAmounts[0], 0u) << "derived tables not built";
}

TEST(DotSplit, ThresholdEntriesOneAndTwoByResolution) {
    // A split whose dot total is the level itself leaves the re-indexing
    // without effect: only entries 1 and 2 change.
    struct Case { uint32_t resX, resY; int16_t e1, e2; };
    for (const Case& c : {Case{1440, 720, 26, 36}, Case{720, 720, 30, 38}, Case{360, 720, 30, 38}}) {
        test::WatchedMono m(twoBitMono(1, c.resX, c.resY), withSplit(test::layeredSplit));
        HtInstance& ht = m.ht;
        ASSERT_EQ(ht.rc, RC_OK);
        const int16_t* ed = slotData<int16_t>(*ht.ctx, kEdThresholdTable);
        EXPECT_EQ(ed[0], 128);
        EXPECT_EQ(ed[1], c.e1) << c.resX;
        EXPECT_EQ(ed[2], c.e2) << c.resX;
        EXPECT_EQ(ed[255], 128);
    }
}

TEST(DotSplit, ThresholdsReindexedByDotTotal) {
    // Row r holds r % 3 ink in total: its threshold is that of level 0, 1 or 2.
    test::WatchedMono m(twoBitMono(1, 1440, 720), withSplit([](int r) {
        return DotSplitRow{uint8_t(r % 3 == 2 ? 1 : 0), uint8_t(r % 3 == 1 ? 1 : 0), uint8_t(r % 3 == 2 ? 1 : 0)};
    }));
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    const int16_t* ed = slotData<int16_t>(*ht.ctx, kEdThresholdTable);
    const int16_t byTotal[3] = {128, 26, 36};
    for (int r = 0; r < 256; ++r) {
        ASSERT_EQ(ed[r], byTotal[r % 3]) << r;
        ASSERT_EQ(ed[256 + r], byTotal[r % 3]) << r;
    }
}

TEST(DotSplit, DerivedSplitTables) {
    test::WatchedMono m(twoBitMono(), withSplit([](int r) {
        if (r == 255) return DotSplitRow{0, 0, 255};
        return test::layeredSplit(r);
    }));
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    const HtContext& c = *ht.ctx;
    // Row 200 = {85, 85, 30}; tone 16 i: t[30] = 480, t[85] = 1360.
    EXPECT_EQ(c.splitToneCumulative[200], 480u + ((480u + 1360u) << 16));
    EXPECT_EQ(c.splitAmounts[200], 85u + (200u << 16));
    EXPECT_EQ(c.splitToneTotal[200], 1360u + 1360u + 480u);
    // Row 40 = {40, 0, 0}: no large or medium tone.
    EXPECT_EQ(c.splitToneCumulative[40], 0u);
    EXPECT_EQ(c.splitAmounts[40], 40u + (40u << 16));
    EXPECT_EQ(c.splitToneTotal[40], 640u);
    // Row 255 = {0, 0, 255}: t[255] = 4096 reaches above every threshold.
    EXPECT_EQ(c.splitToneCumulative[255], 4096u + (4096u << 16));
    EXPECT_EQ(c.splitAmounts[255], 0u + (255u << 16));
    EXPECT_EQ(c.splitToneTotal[255], 4096u);
}

// A two-bit instance refuses a missing descriptor, one marked absent and one
// of another format, keeping the slots; one-bit output does not read it.
TEST(DotSplitDescriptor, MissingOrInvalidRefusedKeepingTheSlots) {
    for (const test::Bytes& descriptor : {test::Bytes{}, test::dotSplitDescriptor(200, 0), test::dotSplitDescriptor(200, 1, 2)}) {
        test::MemoryWatch watch;
        test::MonoLut lut([](int v) { return 255 - v; });
        lut.descriptor = descriptor;
        lut.refresh();
        HtInstance ht(twoBitMono(), lut.lut, HtBlocks{}, 3);
        EXPECT_EQ(ht.rc, RC_DATA);
        EXPECT_EQ(ht.answers[2], 0xDEADBEEFu) << "no answer without a descriptor";
        EXPECT_NE(ht.ctx->buffers[kConversionTable].handle, nullptr);
        EXPECT_EQ(ht.ctx->buffers[kThresholdMatrix].data, nullptr);
        EXPECT_EQ(HtInstance(test::htSettings(1, 0, 1), lut.lut).rc, RC_OK);
    }
}

}  // namespace
}  // namespace inkdot
