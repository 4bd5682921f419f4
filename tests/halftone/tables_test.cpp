// The tables the resource protocol builds: error lines (phase 1), the ink
// curve and colour grid (phase 2), matrix, dot values, tone, thresholds and
// spread thresholds (phase 3), the dot split and what derives from it (phase 4).
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "halftone/protocol_steps.h"
#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::DotSplitRow;
using test::HtBlocks;
using test::HtInstance;
using test::WatchedMono;
using Node = test::ColourLut::Node;
using Entries = std::vector<std::pair<int, int>>;

HtBlocks with(uint8_t side, const std::function<DotSplitRow(int)>& split = test::layeredSplit) {
    HtBlocks blocks;
    const unsigned w = side == 255 ? 256 : side;
    blocks.matrix = test::thresholdMatrixBlock(side, side, test::rampValues(w * w));
    blocks.dotSplit = test::dotSplitBlock(split);
    return blocks;
}

// Checks entries {index, value} of a slot read as T.
template <typename T>
void expectEntries(const HtContext& ctx, Slot slot, const Entries& entries, const char* what) {
    const T* data = slotData<T>(ctx, slot);
    for (auto [i, v] : entries) EXPECT_EQ(data[i], v) << what << ", entry " << i;
}

// Dot values fall from 250 % of 255 at level 0 to 100 % at 255; the one-bit
// error thresholds follow them. With 500 % and -32768 the sum still fits:
// (33268 x 65025 + 1) / 255 = 8483340, minus 32768 x 255, / 100 = 1275.
TEST(DotValueTable, PublishedValues) {
    int16_t dot[256], ed[256];
    buildDotValueTable(dot, false, 250, 100);
    for (auto [k, v] : Entries{{0, 637}, {1, 634}, {128, 349}, {254, 255}, {255, 255}}) EXPECT_EQ(dot[k], v) << k;
    buildEdThresholdTable(ed, dot);
    for (auto [k, v] : Entries{{0, 128}, {1, 51}, {2, 56}, {3, 60}, {4, 64}, {252, 208}, {253, 211}, {254, 214}, {255, 128}})
        EXPECT_EQ(ed[k], v) << "threshold " << k;
    buildDotValueTable(dot, true, 250, 100);
    for (int k = 0; k < 256; ++k) ASSERT_EQ(dot[k], 255);
    // Flat dot values leave the entries tilted: the steep ends reach to entry 9,
    // 29 x 9 / 10 + 20 = 46 (+ 2380 / 128 = 18), and 246: 255 - 46 - 18; entry 10
    // is (128 + 20) / 3 = 49 (+ 18).
    buildEdThresholdTable(ed, dot);
    for (auto [k, v] : Entries{{9, 64}, {10, 67}, {246, 191}}) EXPECT_EQ(ed[k], v) << "threshold " << k;
    buildDotValueTable(dot, false, 500, -32768);
    EXPECT_EQ(dot[0], 1275);
}

// Tone of the 64 x 64 matrix: 16 x 255 / 634 = 6 at level 1, 4096 at 255.
// Fewer than 256 cells give tone only at full level; the one-bit mono dither
// table composes the ink curve into both halves: with ink 255 - v / 2, entries
// i and 256 + i are tone[255 - i / 2], tone[128] = 16 x 128 x 255 / 349 = 1496
// at i = 255. Two-bit does not; its thresholds before the dot split: 22 + 19, 25 + 19.
TEST(ToneTable, ByMatrixSizeAndKernel) {
    const struct { HtSettings s; uint8_t side; int inkDivisor; uint32_t bytes; Entries entries; } cases[] = {
        {test::htSettings(1, 0, 1), 64, 1, 512, {{0, 0}, {1, 6}, {254, 4064}, {255, 4096}}},
        {test::htSettings(1, 0, 1), 8, 1, 512, {{0, 0}, {128, 0}, {254, 0}, {255, 64}}},
        {test::htSettings(3, 0, 2), 64, 1, 1024, {{0, 0}, {1, 16}, {100, 1600}, {254, 4064}, {255, 4096}}},
        {test::htSettings(3, 0, 1), 64, 2, 1024, {{0, 4096}, {255, 1496}, {256, 4096}, {258, 4064}, {511, 1496}}},
    };
    for (const auto& c : cases) {
        WatchedMono m(c.s, with(c.side), -1, [&](int v) { return 255 - v / c.inkDivisor; });
        ASSERT_EQ(m.ht.rc, RC_OK);
        EXPECT_EQ(m.ctx().buffers[kToneTable].size, c.bytes);
        expectEntries<uint16_t>(m.ctx(), kToneTable, c.entries, "tone");
    }
    WatchedMono two(test::htSettings(1, 0, 2), HtBlocks{}, 3);
    expectEntries<int16_t>(two.ctx(), kEdThresholdTable, {{0, 128}, {1, 41}, {2, 44}, {255, 128}}, "two-bit");
}

// Size bytes (255 stands for 256) to width, cells and a slot of whole words
// with the tone table behind; sizes the tables cannot hold, and a zero dot
// value (ink parameter 0 at level 255, with the spread thresholds below), are
// refused keeping the earlier slots.
TEST(ThresholdMatrix, SizesAndRefusals) {
    HtBlocks blocks;
    const struct { uint8_t w, h; uint32_t width, cells, bytes; } cases[] = {
        {4, 2, 4, 8, 16}, {1, 3, 1, 3, 8}, {255, 16, 256, 4096, 8192},
        {0, 16, 0, 0, 0}, {16, 0, 0, 0, 0}, {3, 4, 0, 0, 0}, {12, 1, 0, 0, 0}, {254, 1, 0, 0, 0}, {255, 255, 0, 0, 0}};
    for (const auto& c : cases) {
        blocks.matrix = test::thresholdMatrixBlock(c.w, c.h, test::rampValues(c.cells));
        WatchedMono n(test::htSettings(1, 0, 1), blocks);
        EXPECT_EQ(n.ht.rc, c.cells ? RC_OK : RC_DATA) << int(c.w) << "x" << int(c.h);
        if (c.cells == 0) {
            EXPECT_EQ(n.ht.answers[2], 0xFFFFFFFFu);
            EXPECT_EQ(n.ctx().failedPhase, 3u) << "later calls are refused";
            EXPECT_NE(n.ctx().buffers[kConversionTable].handle, nullptr);
            EXPECT_EQ(n.ctx().buffers[kThresholdMatrix].data, nullptr);
            continue;
        }
        EXPECT_EQ(n.ctx().matrixWidth, c.width);
        EXPECT_EQ(n.ctx().buffers[kThresholdMatrix].size, c.bytes + 512) << int(c.w) << "x" << int(c.h);
        EXPECT_EQ(n.ctx().buffers[kToneTable].data, slotData<uint8_t>(n.ctx(), kThresholdMatrix) + c.bytes);
    }
}

TEST(SpreadThresholds, ByClassMethodAndInkParameter) {
    using Four = std::array<int32_t, 4>;
    const Four square[] = {{32, 9, 4, 2}, {37, 20, 5, 2}, {55, 22, 8, 3}};
    const Four wide[] = {{30, 8, 5, 2}, {35, 18, 6, 3}, {52, 20, 9, 4}};      // 1440 x 720, error diffusion
    const Four tall[] = {{40, 23, 6, 1}, {47, 30, 13, 2}, {63, 39, 14, 3}};   // DoubleY
    const Four other[] = {{56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}};  // any other class or method
    const auto at = [](uint32_t method, uint32_t resX, uint32_t resY, uint32_t bits = 1) {
        return test::htSettings(method, 0, bits, 64, resX, resY);
    };
    const struct { HtSettings s; const Four* t; } rows[] = {
        {at(1, 720, 720), square}, {at(3, 360, 360), square}, {at(5, 720, 720), square}, {at(1, 1440, 720), wide},
        {at(2, 1440, 720), wide},  {at(1, 720, 1440), tall},  {at(3, 360, 720), tall},   {at(3, 1440, 720), other},
        {at(0, 1440, 720), other}, {at(5, 1440, 720), other}, {at(1, 720, 360), other},  {at(1, 720, 480), other},
    };
    const auto spread = [](const HtSettings& s, int32_t inkParam0, uint32_t rc, int32_t inkParam1 = 100) {
        test::MemoryWatch watch;
        test::MonoLut lut([](int v) { return 255 - v; }, inkParam0, inkParam1);
        HtInstance ht(s, lut.lut, HtBlocks{}, 3);
        const HtContext& c = *ht.ctx;
        EXPECT_EQ(ht.rc, rc) << s.method << " " << s.resolutionX << "x" << s.resolutionY << " ink " << inkParam0;
        EXPECT_TRUE(rc == RC_OK || (c.buffers[kThresholdMatrix].handle && c.buffers[kDotValueTable].handle));
        return Four{c.spreadThreshold1, c.spreadThreshold2, c.spreadThreshold3, c.spreadThreshold4};
    };
    const int32_t params[] = {250, 350, 500};
    for (const auto& r : rows)
        for (int p = 0; p < 3; ++p)
            EXPECT_EQ(spread(r.s, params[p], RC_OK), r.t[p])
                << r.s.method << " " << r.s.resolutionX << "x" << r.s.resolutionY << " ink " << p;
    for (int32_t param : {0, 249, 300, 501, -250}) spread(at(1, 720, 720), param, RC_DATA);
    spread(at(1, 720, 720), 250, RC_DATA, 0);  // a zero dot value at level 255
    // Two-bit output: by class only, inkParam[0] not consulted; General and DoubleX refused.
    EXPECT_EQ(spread(at(1, 1440, 720, 2), 0, RC_OK), (Four{14, 3, 0, 0}));
    EXPECT_EQ(spread(at(1, 720, 720, 2), 0, RC_OK), (Four{15, 3, 1, 0}));
    EXPECT_EQ(spread(at(3, 720, 1440, 2), 123, RC_OK), (Four{111, 8, 2, 0}));
    spread(at(1, 720, 480, 2), 250, RC_ARG + 1);
    spread(at(1, 720, 360, 2), 250, RC_ARG + 1);
}

// One-bit output copies the black table. Two-bit pads it: entry 0 is the
// spread W = 2 (256 - s) / (a + b) + 1 for the topmost step at level s from
// ink a (4 or more) to b (3 or less), made even,
// then h = W / 2 copies of level 0's ink, the 256 levels, and level 255's ink
// up to 2 W + 257 entries, in whole words. Without ink at full level, the
// levels from the last step on are cleared.
TEST(InkCurve, OneBitPlainTwoBitPadded) {
    const struct { const char* what; int (*gray)(int); uint32_t bits, bytes; Entries entries; } cases[] = {
        {"one-bit", [](int v) { return (v * 7) % 256; }, 1, 512, {{0, 0}, {1, 7}, {37, 3}, {255, 249}}},
        // Steps 10 -> 2 at 50, 150, 250: the topmost counts, W = 2 x 6 / 12 + 1 = 2 (50 would give 34).
        {"three steps", [](int v) { return v % 100 < 50 ? 10 : 2; }, 2, 520, {{0, 2}, {1, 10}, {2, 10}, {257, 2}}},
        // Step at 101: W = 2 x 155 / 107 + 1 = 3, made even: 2, h = 1; 2 W + 514 bytes.
        {"narrow", [](int v) { return v <= 100 ? 4 + v : 3; }, 2, 520,
         {{0, 2}, {1, 4}, {2, 4}, {102, 104}, {103, 3}, {257, 3}}},
        // W = 2 x 155 / 7 + 1 = 45, made even: 44, h = 22: 88 + 514 = 602, rounded up.
        {"wide", [](int v) { return v <= 100 ? 4 : 3; }, 2, 604,
         {{0, 44}, {1, 4}, {22, 4}, {23, 4}, {123, 4}, {124, 3}, {278, 3}, {279, 3}, {299, 3}}},
        {"255 to 0 at 1", [](int v) { return v == 0 ? 255 : 0; }, 2, 520, {{0, 2}, {1, 255}, {2, 255}, {3, 0}}},
        // Step at 252 (3 after 4): W = 8 / 7 + 1 = 2, h = 1; level 254 (ink 1) cleared.
        {"no ink at full level", [](int v) { return 255 - v; }, 2, 520,
         {{0, 2}, {1, 255}, {2, 255}, {255, 2}, {256, 0}, {257, 0}}},
        {"rising: no step, W = 1", [](int v) { return v / 2; }, 2, 516, {{0, 1}, {1, 0}, {2, 0}, {101, 50}, {256, 127}}},
        {"never 4 or more", [](int) { return 0; }, 2, 516, {{0, 1}}},
        {"never 3 or less", [](int) { return 255; }, 2, 516, {{0, 1}, {256, 255}}},
    };
    for (const auto& c : cases) {
        WatchedMono m(test::htSettings(3, 0, c.bits), HtBlocks{}, 2, c.gray);
        EXPECT_EQ(m.ctx().buffers[kConversionTable].size, c.bytes) << c.what;
        expectEntries<uint16_t>(m.ctx(), kConversionTable, c.entries, c.what);
    }
}

// Rows are copied; a row total above 255 is refused keeping the rows before
// it and the slots. A split whose dot total is the level itself leaves the
// re-indexing without effect: only threshold entries 1 and 2 change, by class.
TEST(DotSplit, RowsRefusalsAndThresholdsByResolution) {
    {
        WatchedMono m(test::htSettings(1, 0, 2), with(64));
        EXPECT_EQ(m.ctx().buffers[kDotSplitTable].size, 768u);
        expectEntries<uint8_t>(m.ctx(), kDotSplitTable, {{600, 85}, {601, 85}, {602, 30}, {150, 50}, {151, 0}}, "split");
        // Below 1440 dpi; 1440 dpi in the next test.
        expectEntries<int16_t>(m.ctx(), kEdThresholdTable, {{0, 128}, {1, 30}, {2, 38}, {255, 128}}, "by class");
    }
    EXPECT_EQ(WatchedMono(test::htSettings(1, 0, 2), with(64, [](int) { return DotSplitRow{85, 85, 85}; })).ht.rc, RC_OK);
    WatchedMono over(test::htSettings(1, 0, 2), with(64, [](int r) {
        return r == 100 ? DotSplitRow{85, 85, 86} : DotSplitRow{uint8_t(r / 3), 1, 2};
    }));
    EXPECT_EQ(over.ht.rc, RC_DATA);
    EXPECT_EQ(over.ht.answers[3], 0xFFFFFFFFu);
    expectEntries<uint8_t>(over.ctx(), kDotSplitTable, {{0, 0}, {2, 2}, {297, 99 / 3}, {299, 2}}, "rows before");
    EXPECT_NE(over.ctx().buffers[kThresholdMatrix].handle, nullptr) << "slots kept";
    EXPECT_EQ(over.ctx().kernel, nullptr);
    EXPECT_EQ(over.ctx().splitAmounts[0], 0u) << "derived tables not built";
}

// Row r holds r % 3 ink in total: its threshold is that of level 0, 1 or 2.
// Derived tables on rows 200 = {85, 85, 30}, 40 = {40, 0, 0} and 255 = {0, 0,
// 255} with tone 16 i: t[30] = 480, t[85] = 1360, t[255] = 4096.
TEST(DotSplit, ReindexedThresholdsAndDerivedTables) {
    {
        WatchedMono m(test::htSettings(1, 0, 2, 64, 1440, 720), with(64, [](int r) {
            return DotSplitRow{uint8_t(r % 3 == 2 ? 1 : 0), uint8_t(r % 3 == 1 ? 1 : 0), uint8_t(r % 3 == 2 ? 1 : 0)};
        }));
        const int16_t* ed = slotData<int16_t>(m.ctx(), kEdThresholdTable);
        const int16_t byTotal[3] = {128, 26, 36};
        for (int r = 0; r < 512; ++r) ASSERT_EQ(ed[r], byTotal[r % 256 % 3]) << r;
    }
    const uint8_t rows[][3] = {{85, 85, 30}, {40, 0, 0}, {0, 0, 255}};
    WatchedMono d(test::htSettings(1, 0, 2), with(64, [&](int r) {
        const uint8_t* row = rows[r == 200 ? 0 : r == 40 ? 1 : 2];
        return DotSplitRow{row[0], row[1], row[2]};
    }));
    const HtContext& c = d.ctx();
    const uint32_t want[][4] = {{200, 480u + ((480u + 1360u) << 16), 85u + (200u << 16), 1360u + 1360u + 480u},
                                {40, 0, 40u + (40u << 16), 640},
                                {255, 4096u + (4096u << 16), 255u << 16, 4096}};
    for (const auto& w : want)
        EXPECT_EQ((std::array{c.splitToneCumulative[w[0]], c.splitAmounts[w[0]], c.splitToneTotal[w[0]]}),
                  (std::array{w[1], w[2], w[3]})) << "row " << w[0];
}

// Colour grid of phase 2 from a two-node source (the cube's corners), at 32
// levels per axis. Node (1, 2, 3) at levels 8, 16, 24: fractions (8 x 128 +
// 127) / 255 = 4, 8 and 12; largest on axis 2, then 1: vertices (0,0,0),
// (0,0,1), (0,1,1), (1,1,1) weighted 116, 4, 4, 4. Ink 0: (1160 + 1000 + 400
// + 200 + 64) >> 7 = 22; ink 1: (116 + 16 + 28 + 44 + 64) >> 7 = 2; ink 2: 3;
// ink 3: 4. Node (1, 1, 1) at level 8: fraction 4 on each axis, rounded down
// as 1151 / 255 is: (124 x 10 + 4 x 50 + 64) >> 7 = 11 (a fraction of 5 gives 12).
// Fixed threshold keeps the two corners only.
Node cornerInks(int r, int g, int b) {
    if (r == 0 && g == 0 && b == 0) return {10, 1, 2, 3};
    if (r == 0 && g == 0 && b == 255) return {250, 4, 5, 6};
    if (r == 0 && g == 255 && b == 255) return {100, 7, 8, 9};
    if (r == 255 && g == 255 && b == 255) return {50, 11, 12, 13};
    return {0, 0, 0, 0};
}

uint32_t packed(const Node& n) {
    return uint32_t{n[0]} | uint32_t{n[1]} << 8 | uint32_t{n[2]} << 16 | uint32_t{n[3]} << 24;
}

TEST(GridResample, CornersAndOneNodeByHand) {
    test::MemoryWatch watch;
    test::ColourLut lut({0, 255}, cornerInks);
    for (uint32_t method : {1u, 0u}) {
        HtBlocks blocks;
        if (method == 0) blocks.gridLevels = {0xFF};  // not read with method 0
        HtInstance ht(test::htSettings(method, 1, 1), lut.lut, blocks, 2);
        ASSERT_EQ(ht.rc, RC_OK);
        const uint32_t* grid = slotData<uint32_t>(*ht.ctx, kConversionTable);
        const uint32_t n = method ? 32 : 2;
        EXPECT_EQ(ht.ctx->lut.gridCount[2], n);
        EXPECT_EQ(ht.ctx->lut.grid[1][1], method ? 8 : 255);
        EXPECT_EQ(ht.ctx->buffers[kConversionTable].size, 4 * n * n * n);
        for (uint32_t at : {0u, n - 1, n * n - 1, n * n * n - 1})
            EXPECT_EQ(grid[at], packed(cornerInks(at >= n * n ? 255 : 0, at >= n ? 255 : 0, 255 * (at > 0))));
        EXPECT_EQ(static_cast<void*>(ht.ctx->lut.lutData), ht.ctx->buffers[kConversionTable].data);
        if (method == 0) continue;
        EXPECT_EQ(grid[(1 * 32 + 2) * 32 + 3], packed(Node{22, 2, 3, 4}));
        EXPECT_EQ(grid[(1 * 32 + 1) * 32 + 1], packed(Node{11, 1, 2, 3}));
    }
}

// The colour kernels pick a node of the 32 x 32 x 32 conversion grid per input
// byte from the grid cell table: the lower node n, or n + 1 when its weight w
// is at most q (the matrix value AND 254, so at most 254; the fixed threshold
// compares with 128). Node 32 would lie outside the grid; only an entry naming
// node 31 with a weight below 255 reaches it, and the table builder cannot make
// one: level rows start at 0, rise strictly and end at 255, so node 31 sits at
// level 255 with weight 255. Checked on many valid level blocks. (Every colour
// kernel runs in the whole-job tests, under the sanitizer build too.)
constexpr int kMaxQ = 254;

// The highest node entry v may lead a kernel to.
int reach(const HtInstance& ht, int v) {
    const uint8_t* cell = slotData<uint8_t>(*ht.ctx, kGridCellTable) + 2 * v;
    return cell[0] + (cell[1] <= kMaxQ ? 1 : 0);
}

TEST(GridCellBounds, NoEntryReachesPastTheLastNode) {
    const test::ColourLut lut({0, 255}, cornerInks);
    std::mt19937 rng(20240611);
    for (int trial = 0; trial < 200; ++trial) {
        // 32 levels from 0 to 255 rising strictly: even, then random steps.
        test::Bytes levels = test::evenLevels(32), inner(254);
        std::iota(inner.begin(), inner.end(), 1);
        if (trial > 0) std::sample(inner.begin(), inner.end(), levels.begin() + 1, 30, rng);  // in rising order
        test::MemoryWatch watch;
        HtBlocks blocks;
        blocks.gridLevels = test::gridLevelBlock(levels);
        HtInstance ht(test::htSettings(trial % 2 ? 3 : 1, 1, 1 + (trial / 2) % 2), lut.lut, blocks);
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
    HtInstance threshold(test::htSettings(0, 1, 1), lut.lut);
    for (int v = 0; v < 256; ++v) EXPECT_LE(reach(threshold, v), 1) << "the fixed threshold stays in its two nodes";
}

// Error lines of phase 1: dither methods diffuse a plane only in colour with
// ditherMode 0 or 2; error diffusion (method 2 like 1) one line a plane. Four
// colour lines share one block while it stays within 65535 bytes; wider lines
// take a block each. A line holds the width and 60 cells, zero-filled.
TEST(ErrorLines, CountSizesAndBlocks) {
    const struct { uint32_t method, colourMode, ditherMode, width, lines, lineBytes; int64_t blocks; } cases[] = {
        {3, 0, 0, 100, 0, 0, 0},    {3, 1, 0, 100, 1, 640, 1},  {3, 1, 2, 100, 1, 640, 1},    {3, 1, 1, 100, 0, 0, 0},
        {0, 1, 2, 100, 1, 640, 1},  {0, 1, 3, 100, 0, 0, 0},    {0, 0, 0, 100, 0, 0, 0},      {1, 0, 0, 17, 1, 308, 1},
        {2, 0, 1, 100, 1, 640, 1},  {2, 1, 0, 1000, 4, 4240, 1}, {1, 1, 1, 4000, 4, 16240, 1}, {1, 1, 1, 4100, 4, 16640, 4},
    };
    for (const auto& c : cases) {
        HtSettings s = test::htSettings(c.method, c.colourMode, 1, c.width);
        s.ditherMode = c.ditherMode;
        WatchedMono m(s, HtBlocks{}, 1);
        ASSERT_EQ(m.ht.rc, RC_OK);
        EXPECT_EQ(m.ctx().errorLineCount, c.lines) << c.method << "/" << c.colourMode << "/" << c.ditherMode;
        EXPECT_EQ(m.watch.seam().liveBlocks, 2 + c.blocks) << c.width << ": record, replicated line, lines";
        if (c.lines == 0) continue;
        const HtBuffer* line = &m.ctx().buffers[kErrorLine0];
        const bool shared = c.lines > c.blocks;
        EXPECT_EQ(line[0].size, shared ? c.lines * c.lineBytes : c.lineBytes) << c.width;
        const auto* base = static_cast<const uint8_t*>(line[0].data);
        for (uint32_t k = 1; k < c.lines; ++k) {
            EXPECT_EQ(line[k].size, c.lineBytes);
            EXPECT_EQ(line[k].data == base + c.lineBytes * k, shared) << "line " << k << " is a view";
        }
        EXPECT_EQ(line[c.lines].data, nullptr) << "slot behind the lines untouched in phase 1";
        EXPECT_EQ(errorLine(m.ctx(), 0), reinterpret_cast<const int32_t*>(base) + 30);
    }
    EXPECT_EQ(WatchedMono(test::htSettings(1, 0, 1, 0x40000000), HtBlocks{}, 1).ht.rc, RC_ARG + 1)
        << "a width beyond 32-bit line sizes";
}

}  // namespace
}  // namespace inkdot
