#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "cm/cm_context.h"
#include "cm/ink_scale.h"
#include "support/cm_fixture.h"
#include "support/colour_table_writer.h"
#include "support/index_text_writer.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::ColourTableWriter;
using test::IndexTextWriter;

constexpr uint32_t kTableBlock = 100;
constexpr uint32_t kCorrectionBlock = 4321;
constexpr uint32_t kEnd = INKDOT_NO_MORE_BLOCKS;

// Routing block 980: records {key, rows...}, each ended by 0xFE, then 0xFF.
std::vector<uint8_t> routing(const std::vector<std::vector<uint8_t>>& records) {
    std::vector<uint8_t> out;
    for (const auto& r : records) {
        out.insert(out.end(), r.begin(), r.end());
        out.push_back(0xFE);
    }
    out.push_back(0xFF);
    return out;
}

// 21 correction tables: table d adds d (limited to 255).
std::vector<uint8_t> correctionTables() {
    std::vector<uint8_t> out(21 * 256);
    for (int d = 0; d < 21; ++d)
        for (int x = 0; x < 256; ++x) out[d * 256 + x] = static_cast<uint8_t>(std::min(255, x + d));
    return out;
}

// Everything a driver hands over for one job, and a driver loop.
struct Job {
    test::CmSettings settings;
    ColourTableWriter table;
    std::vector<uint8_t> weights = test::channelWeightRecord(7, {50, 50, 50, 50});
    test::ChunkDir dir;
    bool withWeights = true;
    std::vector<uint8_t> routingBlock = routing({});
    std::vector<uint8_t> baseBlock = {50, 50, 50, 50};
    IndexTextWriter tableIndex;  // block 900
    std::vector<uint8_t> tables = correctionTables();

    std::map<uint32_t, std::vector<uint8_t>> blocks;
    std::vector<uint32_t> asked;
    CmContext* ctx = nullptr;

    Job() {
        tableIndex.add(static_cast<int32_t>(kCorrectionBlock), 1, "L1", "Photo", 5, 6, "M0", 8, 9);
    }

    // Creates the instance and the blocks; the index names the instance's own selectC.
    uint32_t start() {
        if (withWeights) dir.add(512, weights.data());
        settings.s1.chunkDir = dir.get();
        uint32_t first = 99;
        const uint32_t rc = CmNew(&settings.s1, &settings.s2, 0, &first, &ctx);
        if (rc != RC_OK) return rc;
        IndexTextWriter index;
        index.add(static_cast<int32_t>(kTableBlock), 317, "L" + std::to_string(ctx->settings2.selectA), "Photo", 5, 6,
                  "M" + std::to_string(ctx->selectC), 8, 9);
        const std::string text = index.text();
        blocks[0] = std::vector<uint8_t>(text.begin(), text.end() + 1);
        blocks[kTableBlock] = table.build();
        blocks[980] = routingBlock;
        blocks[990] = baseBlock;
        const std::string second = tableIndex.text();
        blocks[900] = std::vector<uint8_t>(second.begin(), second.end() + 1);
        blocks[kCorrectionBlock] = tables;
        return RC_OK;
    }

    // Runs the protocol to its end or its first failure; returns that code.
    uint32_t run() {
        uint32_t next = 0;
        for (int call = 0; call < 10; ++call) {
            asked.push_back(next);
            auto it = blocks.find(next);
            if (it == blocks.end()) return 0xDEAD;
            const uint32_t rc = CmSetResource(ctx, it->second.data(), &next);
            if (rc != RC_OK) return rc;
            if (next == kEnd) return RC_OK;
        }
        return 0xBEEF;
    }

    uint32_t startAndRun() {
        const uint32_t rc = start();
        return rc != RC_OK ? rc : run();
    }

    const CmLut& lut() const { return *CmGetLut(ctx); }
    const uint8_t* tableNode(uint32_t i0, uint32_t i1, uint32_t i2) const {
        const uint32_t n = table.gridCount[0];
        return blocks.at(kTableBlock).data() + table.nodeDataOffset() + ((i0 * n + i1) * n + i2) * table.channels;
    }
    const uint8_t* lutNode(uint32_t i0, uint32_t i1, uint32_t i2) const {
        const uint32_t n = lut().gridCount[0];
        return lut().lutData + ((i0 * n + i1) * n + i2) * lut().channels;
    }
    size_t nodeBytes() const {
        const uint32_t n = lut().gridCount[0];
        return static_cast<size_t>(n) * n * n * lut().channels;
    }
    bool gridAsRead() const {
        return std::memcmp(lut().lutData, tableNode(0, 0, 0), nodeBytes()) == 0;
    }
    ~Job() {
        if (ctx != nullptr) CmDelete(ctx);
    }
};

// The two-call protocol ------------------------------------------------------

TEST(CmProtocol, TwoCallsWithoutChannelWeights) {
    test::MemoryWatch watch;
    Job job;
    job.withWeights = false;
    ASSERT_EQ(job.startAndRun(), RC_OK);
    EXPECT_EQ(job.asked, (std::vector<uint32_t>{0, kTableBlock}));
    EXPECT_EQ(job.lut().tableBlockNo, kTableBlock);
    EXPECT_EQ(job.lut().modelId, 317u);
    EXPECT_EQ(job.ctx->loader, nullptr);
    // Neutral settings and a processLevel other than 2: the grid is as read.
    EXPECT_TRUE(job.gridAsRead());
    const int16_t layout[4] = {4, 1, 2, 3};
    EXPECT_EQ(std::memcmp(job.ctx->pixelLayout, layout, sizeof layout), 0);
    // After the end every call is out of order.
    uint32_t next = 5;
    EXPECT_EQ(CmSetResource(job.ctx, job.blocks[980].data(), &next), RC_DATA);
    EXPECT_EQ(CmSetResource(job.ctx, job.blocks[980].data(), &next), RC_DATA);
}

TEST(CmProtocol, InvalidChannelWeightRecordsEndAfterPhaseTwo) {
    struct Case { const char* what; std::vector<uint8_t> record; bool present; bool emptyDir; };
    auto rec = [](std::vector<uint8_t> w) { return test::channelWeightRecord(1, w); };
    std::vector<uint8_t> badTag = rec({50, 50, 50, 50});
    badTag[1] = 'X';
    std::vector<uint8_t> badEnd = rec({50, 50, 50, 50});
    badEnd.back() = 0xFE;
    const Case cases[] = {
        {"weight 29", rec({50, 29, 50, 50}), true, false},
        {"weight 71", rec({50, 50, 50, 71}), true, false},
        {"not CW:", badTag, true, false},
        {"no FE FF", badEnd, true, false},
        {"no chunk 512", rec({50, 50, 50, 50}), false, false},
        {"count 0", rec({50, 50, 50, 50}), true, true},
    };
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        Job job;
        job.weights = c.record;
        job.withWeights = c.present;
        if (!c.present) job.dir.add(1, nullptr);  // some other chunk
        ASSERT_EQ(job.start(), RC_OK);
        if (c.emptyDir) job.dir.count = 0;
        EXPECT_EQ(job.run(), RC_OK) << c.what;
        EXPECT_EQ(job.asked.size(), 2u) << c.what;
        EXPECT_EQ(job.ctx->loader, nullptr) << c.what;
    }
    test::MemoryWatch watch;
    Job weightsAtLimits;
    weightsAtLimits.weights = rec({30, 70, 30, 70});
    EXPECT_EQ(weightsAtLimits.startAndRun(), RC_OK);
    EXPECT_EQ(weightsAtLimits.asked.size(), 6u);
}

// The six-call protocol -------------------------------------------------------

TEST(CmProtocol, SixCallsApplyTheCorrectionTables) {
    test::MemoryWatch watch;
    Job job;
    job.weights = test::channelWeightRecord(7, {55, 50, 45, 50});
    job.baseBlock = {50, 50, 50, 49};
    ASSERT_EQ(job.startAndRun(), RC_OK);
    EXPECT_EQ(job.asked, (std::vector<uint32_t>{0, kTableBlock, 980, 990, 900, kCorrectionBlock}));
    EXPECT_EQ(job.ctx->loader, nullptr);
    EXPECT_EQ(job.ctx->selectC, 0);  // the table index is searched with selectC 0
    // d = (requested - base + 20) / 2: 12, 10, 7 (15 / 2), 10 (21 / 2).
    const int add[4] = {12, 10, 7, 10};
    const uint32_t n = job.lut().gridCount[0];
    for (uint32_t i = 0; i < n * n * n; ++i)
        for (uint32_t c = 0; c < 4; ++c) {
            const int original = job.tableNode(0, 0, 0)[i * 4 + c];
            ASSERT_EQ(job.lut().lutData[i * 4 + c], std::min(255, original + add[c])) << i << " " << c;
        }
    // The black table was built before the tables were applied.
    const int blackOfGray255 = job.tableNode(n - 1, n - 1, n - 1)[3];
    EXPECT_EQ(job.lut().grayTable[255], blackOfGray255);
}

// A job whose every node holds 100 in every ink, so that lutData[c] - 100
// names the correction table channel c took.
void flatNodes(Job& job) {
    job.table.node = [](uint8_t, uint8_t, uint8_t, uint8_t* inks) { inks[0] = inks[1] = inks[2] = inks[3] = 100; };
    job.table.neutralList = {100, 100, 100};
}

TEST(CmProtocol, CorrectionTableFollowsTheWeightDifference) {
    const struct { std::vector<uint8_t> requested, base; int table[4]; } cases[] = {
        // All within 2 of their base: every channel takes table 10.
        {{52, 48, 50, 31}, {50, 50, 50, 33}, {10, 10, 10, 10}},
        // One channel 3 away: the others keep their own differences.
        {{52, 48, 53, 50}, {50, 50, 50, 50}, {11, 9, 11, 10}},
        // 70 against 30 gives 30, limited to 20; 30 against 70 gives 0.
        {{70, 30, 50, 50}, {30, 70, 50, 50}, {20, 0, 10, 10}},
        // -21 + 20 = -1 truncates to 0; -23 + 20 = -3 gives -1, limited to 0.
        {{30, 30, 47, 50}, {51, 53, 50, 50}, {0, 0, 8, 10}},
    };
    for (const auto& c : cases) {
        test::MemoryWatch watch;
        Job job;
        job.weights = test::channelWeightRecord(7, c.requested);
        job.baseBlock = c.base;
        flatNodes(job);
        ASSERT_EQ(job.startAndRun(), RC_OK);
        for (uint32_t ch = 0; ch < 4; ++ch) EXPECT_EQ(job.lut().lutData[ch], 100 + c.table[ch]) << "channel " << ch;
    }
}

TEST(CmProtocol, RoutingRecordsMoveTablesBetweenRows) {
    struct Case { const char* what; std::vector<std::vector<uint8_t>> records; int add[4]; uint32_t rc; };
    // Requested 70/30/50/54 against base 50: tables 20, 0, 10, 12 for channels 0..3.
    const Case cases[] = {
        {"no records", {}, {20, 0, 10, 12}, RC_OK},
        {"swap 0 and 1", {{7, 1, 0, 2, 3}}, {0, 20, 10, 12}, RC_OK},
        {"other key ignored", {{6, 1, 0, 2, 3}}, {20, 0, 10, 12}, RC_OK},
        {"last match wins", {{7, 1, 0, 2, 3}, {7, 0, 1, 3, 2}}, {20, 0, 12, 10}, RC_OK},
        // Rows outside the four channels, or too few rows: the record is ignored.
        {"row 4 ignored", {{7, 1, 0, 2, 3}, {7, 4, 1, 2, 3}}, {0, 20, 10, 12}, RC_OK},
        {"short record ignored", {{7, 3, 2, 1}}, {20, 0, 10, 12}, RC_OK},
        {"20-byte record", {{7, 1, 0, 2, 3, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}}, {0, 20, 10, 12}, RC_OK},
        {"21-byte record", {{7, 1, 0, 2, 3, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}}, {0, 0, 0, 0}, RC_DATA},
    };
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        Job job;
        job.weights = test::channelWeightRecord(7, {70, 30, 50, 54});
        job.routingBlock = routing(c.records);
        flatNodes(job);
        EXPECT_EQ(job.startAndRun(), c.rc) << c.what;
        EXPECT_EQ(job.ctx->loader, nullptr) << c.what;
        for (uint32_t ch = 0; ch < 4; ++ch) EXPECT_EQ(job.lut().lutData[ch], 100 + c.add[ch]) << c.what << " channel " << ch;
        if (c.rc != RC_OK) {
            uint32_t next = 0;
            EXPECT_EQ(CmSetResource(job.ctx, job.blocks[990].data(), &next), RC_DATA) << "no loader left";
        }
    }
}

TEST(CmProtocol, TableIndexWithoutMatchFails) {
    test::MemoryWatch watch;
    Job job;
    job.tableIndex.records[0].name3 = "M3";  // the block-900 search runs with selectC 0
    EXPECT_EQ(job.startAndRun(), RC_DATA);
    EXPECT_EQ(job.asked.back(), 900u);
    EXPECT_EQ(job.ctx->loader, nullptr);
    EXPECT_TRUE(job.gridAsRead());  // as phase 2 left it
}

TEST(CmProtocol, DeleteInTheMiddleReleasesTheLoader) {
    for (size_t calls = 2; calls <= 5; ++calls) {
        test::MemoryWatch watch;
        Job job;
        ASSERT_EQ(job.start(), RC_OK);
        uint32_t next = 0;
        for (size_t i = 0; i < calls; ++i) ASSERT_EQ(CmSetResource(job.ctx, job.blocks[next].data(), &next), RC_OK);
        EXPECT_NE(job.ctx->loader, nullptr);
        CmDelete(job.ctx);
        job.ctx = nullptr;
    }
}

TEST(CmProtocol, NullBlocksAndFailedPhaseTwoLeaveNothingToContinue) {
    test::MemoryWatch watch;
    Job nulls;
    ASSERT_EQ(nulls.start(), RC_OK);
    uint32_t next = 77;
    EXPECT_EQ(CmSetResource(nulls.ctx, nullptr, &next), RC_DATA);
    EXPECT_EQ(CmSetResource(nulls.ctx, nullptr, &next), RC_DATA);
    Job job;
    job.settings.s1.brightness = 51;
    EXPECT_EQ(job.startAndRun(), RC_ARG + 1);
    EXPECT_EQ(job.asked.size(), 2u);
    next = 77;
    EXPECT_EQ(CmSetResource(job.ctx, job.blocks[980].data(), &next), RC_DATA);
    EXPECT_EQ(next, 77u);
}

// Phase 2: rebuild, ink scaling, black table ---------------------------------

TEST(CmRebuild, EndNodesKeepTheirLevelsThroughTheCurves) {
    test::MemoryWatch watch;
    Job job;
    job.withWeights = false;
    job.settings.s1.offsetR = 50;
    job.settings.s1.offsetG = -50;
    ASSERT_EQ(job.startAndRun(), RC_OK);
    EXPECT_EQ(std::memcmp(job.lutNode(0, 0, 0), job.tableNode(0, 0, 0), 4), 0);
    EXPECT_EQ(std::memcmp(job.lutNode(2, 2, 2), job.tableNode(2, 2, 2), 4), 0);
    // (0, 0, 1): red 0 -> 50, green stays 0 (0 - 50 limited), blue 127 unchanged.
    // Default separation: cyan = 255 - 50 interpolated on the red axis (cell 0..127).
    const uint8_t* moved = job.lutNode(0, 0, 1);
    EXPECT_LT(moved[0], job.tableNode(0, 0, 1)[0]);
    EXPECT_EQ(moved[1], 255);
    EXPECT_EQ(moved[2], job.tableNode(0, 0, 1)[2]);
}

TEST(CmRebuild, ColourAdjustmentsInTheAdjustingMode) {
    test::MemoryWatch watch;
    Job job;
    job.withWeights = false;
    job.settings.s1.processLevel = 2;
    job.settings.s1.processMode = 0;
    job.table.gridCount[0] = job.table.gridCount[1] = job.table.gridCount[2] = 2;
    job.table.adjustHue[0] = 10;
    ASSERT_EQ(job.startAndRun(), RC_OK);
    // Node (1, 0, 0) is red (255, 0, 0): c, m, y = 0, 255, 255; cyan is the
    // minimum with gap 255: e = (2550 + 50) / 100 = 26, magenta 229, so the
    // node colour becomes (255, 26, 0). Interpolated: V100 (0, 255, 255, 0)
    // weight 229, V110 (0, 0, 255, 0) weight 26, over 255.
    const uint8_t want[4] = {0, 229, 255, 0};
    EXPECT_EQ(std::memcmp(job.lutNode(1, 0, 0), want, 4), 0);
    // Node (0, 1, 1) is cyan: c, m, y = 255, 0, 0 has two equal minima and no
    // dominant percentage for cyan, so it stays as read.
    EXPECT_EQ(std::memcmp(job.lutNode(0, 1, 1), job.tableNode(0, 1, 1), 4), 0);
}

TEST(CmRebuild, SaturationOffsetJoinsInTheAdjustingMode) {
    struct Case { int32_t saturation; int8_t offset; uint32_t processLevel; uint32_t rc; };
    const Case cases[] = {
        {40, 20, 2, RC_OK},        // 60 limited to 50
        {-50, -1, 2, RC_ARG + 1},  // limited only from above
        {-50, -1, 3, RC_OK},       // not the adjusting mode: the offset does not join
        {50, 0, 2, RC_OK},
    };
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        Job job;
        job.withWeights = false;
        job.settings.s1.saturation = c.saturation;
        job.settings.s1.processLevel = c.processLevel;
        job.settings.s1.processMode = 0;
        job.settings.s2.pixelFormat = 1;
        job.table.saturationOffset = c.offset;
        EXPECT_EQ(job.startAndRun(), c.rc) << c.saturation << " + " << int(c.offset);
    }
}

TEST(CmRebuild, WholeTableInkScalingByModel) {
    struct Case { int32_t model; int32_t gate; uint32_t selectA; bool scaled; };
    const Case cases[] = {
        {299, 1, 3, false}, {300, 1, 3, true}, {399, 1, 3, true}, {400, 1, 3, false},
        {350, 2, 3, false}, {350, -5, 3, true}, {350, 1, 1, false},
    };
    for (const Case& c : cases) {
        test::MemoryWatch watch;
        Job job;
        job.withWeights = false;
        job.settings.s2.inkScaleGate = c.gate;
        job.settings.s2.selectA = c.selectA;
        job.table.inkParam[0] = 160;
        job.table.inkParam[1] = 130;
        ASSERT_EQ(job.start(), RC_OK);
        IndexTextWriter index;
        index.add(static_cast<int32_t>(kTableBlock), c.model, "L" + std::to_string(c.selectA), "Photo", 5, 6,
                  "M" + std::to_string(job.ctx->selectC), 8, 9);
        const std::string text = index.text();
        job.blocks[0] = std::vector<uint8_t>(text.begin(), text.end() + 1);
        ASSERT_EQ(job.run(), RC_OK);
        EXPECT_EQ(job.lut().modelId, static_cast<uint32_t>(c.model));
        const uint8_t* original = job.tableNode(0, 0, 0);
        for (size_t i = 0; i < job.nodeBytes(); ++i) {
            const uint8_t want = c.scaled ? inkScale(original[i], 160, 130) : original[i];
            ASSERT_EQ(job.lut().lutData[i], want) << "model " << c.model << " byte " << i;
        }
    }
}

TEST(CmRebuild, BlackTableRules) {
    for (uint8_t blackMode : {0, 1}) {
        test::MemoryWatch watch;
        Job job;
        job.withWeights = false;
        job.table.blackMode = blackMode;
        // Black is 255 at black input and 0 at white, linear on the diagonal.
        job.table.node = [](uint8_t r, uint8_t g, uint8_t b, uint8_t* inks) {
            inks[0] = inks[1] = inks[2] = 0;
            inks[3] = static_cast<uint8_t>(255 - (r + g + b) / 3);
        };
        job.table.neutralList = {255, 128, 0};  // used by black mode 1
        ASSERT_EQ(job.startAndRun(), RC_OK);
        const uint8_t* gray = job.lut().grayTable;
        if (blackMode == 0) {
            EXPECT_EQ(gray[0], 254);  // 255 below level 255 becomes 254
            EXPECT_EQ(gray[1], 254);  // (255 x 126 + 128 x 1) / 127 = 254
            EXPECT_EQ(gray[255], 0);
            EXPECT_EQ(gray[200], 55);
        } else {
            EXPECT_EQ(gray[0], 255);
            EXPECT_EQ(gray[254], 1);  // (128 x 1 + 0 x 126) / 127 = 1
            EXPECT_EQ(gray[255], 0);  // level 255 keeps its 0
            EXPECT_EQ(gray[253], 2);
        }
        for (int v = 0; v < 255; ++v) EXPECT_NE(gray[v], blackMode == 0 ? 255 : 0) << v;
    }
}

}  // namespace
}  // namespace inkdot
