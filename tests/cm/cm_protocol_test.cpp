// The colour-management protocol driven whole: the blocks it asks for, the
// grid the colour table leaves (phase 2) and the channel tables (phases 3 to 6).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "cm/ink_scale.h"
#include "robustness/pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::ColourTableWriter;
using test::JobFiles;
using test::kJobCorrectionBlock;
using test::kJobTableBlock;

// A job on the default 3 x 3 x 3 table (black mode 0), without a channel-weight
// record, checked for leaks after the job is deleted.
struct CmJob : test::MemoryWatch, test::Job {
    CmJob() : Job(test::jobConfig("colour management", 1, 1, 1), false) { files.putTable(ColourTableWriter{}); }
    // Byte c of node i (lutData order) as written and as the CmLut holds it.
    uint8_t written(size_t i, size_t c = 0) const {
        return files.cmBlocks.at(kJobTableBlock)[files.table.nodeDataOffset() + i * files.table.channels + c];
    }
    uint8_t node(size_t i, size_t c = 0) const { return lut().lutData[i * lut().channels + c]; }
    size_t nodes() const { return size_t{lut().gridCount[0]} * lut().gridCount[0] * lut().gridCount[0]; }
};

TEST(CmProtocol, TwoCallsWithoutChannelWeightsAndNothingAfterTheEnd) {
    uint32_t next = 5;
    {
        CmJob job;
        ASSERT_TRUE(job.runColour());
        EXPECT_EQ(job.lut().tableBlockNo, kJobTableBlock);
        const int16_t layout[4] = {4, 1, 2, 3};
        EXPECT_EQ(std::memcmp(job.cm->pixelLayout, layout, sizeof layout), 0);
        EXPECT_EQ(CmSetResource(job.cm, job.files.cmBlocks[980].data(), &next), RC_DATA);
    }
    // A fresh instance refuses a null block, then an index naming block 0.
    CmJob fresh;
    fresh.files.putIndex(0, 0, 317, 1, 3);
    ASSERT_TRUE(fresh.runColour(0));
    EXPECT_EQ(CmSetResource(fresh.cm, nullptr, &next), RC_DATA);
    const Bytes& index = fresh.files.cmBlocks[0];
    EXPECT_EQ(CmSetResourceSized(fresh.cm, index.data(), static_cast<uint32_t>(index.size()), &next), RC_DATA);
    EXPECT_EQ(next, 0u);
}

// Channel c takes table d = (requested - base + 20) / 2 limited to 0..20,
// unless every channel is within 2 of its base (then all take 10); a routing
// record with key 7 moves channel c's table to row rows[c]. The tables add
// 3 d, so every node byte must come back as min(255, b + 3 d). Records that
// are no channel-weight record end the protocol after the table.
TEST(CmProtocol, CorrectionTablesFollowTheWeightsAndTheRouting) {
    const Bytes fifty{50, 50, 50, 50}, mixed{70, 30, 50, 54};  // mixed: 20, 0, 10, 12
    Bytes long20{7, 1, 0, 2, 3}, long21;
    long20.resize(20, 9);
    long21 = long20;
    long21.push_back(9);
    for (Bytes* r : {&long20, &long21}) r->insert(r->end(), {0xFE, 0xFF});
    const auto bad = [](size_t at, uint8_t value) {
        Bytes r = test::channelWeightRecord(1, {50, 50, 50, 50});
        r[std::min(at, r.size() - 1)] = value;
        return r;
    };
    const struct Case {
        const char* what;
        Bytes requested, base;
        Bytes routing;  // block 980: records {key, rows...}, each ended by 0xFE, then 0xFF
        int table[4];
        uint32_t rc = RC_OK;
        bool indexMatches = true;
        Bytes record = {};  // a channel-weight record of its own
    } cases[] = {
        {"differences 5, 0, -5, 1", {55, 50, 45, 50}, {50, 50, 50, 49}, {0xFF}, {12, 10, 7, 10}},
        {"all within 2", {52, 48, 50, 31}, {50, 50, 50, 33}, {0xFF}, {10, 10, 10, 10}},
        {"30 against 70 and back", {70, 30, 50, 50}, {30, 70, 50, 50}, {0xFF}, {20, 0, 10, 10}},
        {"-21 and -23 give 0", {30, 30, 47, 50}, {51, 53, 50, 50}, {0xFF}, {0, 0, 8, 10}},
        {"swap 0 and 1", mixed, fifty, {7, 1, 0, 2, 3, 0xFE, 0xFF}, {0, 20, 10, 12}},
        {"other key ignored", mixed, fifty, {6, 1, 0, 2, 3, 0xFE, 0xFF}, {20, 0, 10, 12}},
        {"last match wins", mixed, fifty, {7, 1, 0, 2, 3, 0xFE, 7, 0, 1, 3, 2, 0xFE, 0xFF}, {20, 0, 12, 10}},
        {"row 4 ignored", mixed, fifty, {7, 1, 0, 2, 3, 0xFE, 7, 4, 1, 2, 3, 0xFE, 0xFF}, {0, 20, 10, 12}},
        {"short record ignored", mixed, fifty, {7, 3, 2, 1, 0xFE, 0xFF}, {20, 0, 10, 12}},
        {"20-byte record", mixed, fifty, long20, {0, 20, 10, 12}},
        {"21-byte record", mixed, fifty, long21, {0, 0, 0, 0}, RC_DATA},
        {"table index without a match", mixed, fifty, {0xFF}, {0, 0, 0, 0}, RC_DATA, false},
        {"weight 29", {}, fifty, {0xFF}, {0, 0, 0, 0}, RC_OK, true, test::channelWeightRecord(1, {50, 29, 50, 50})},
        {"not CW:", {}, fifty, {0xFF}, {0, 0, 0, 0}, RC_OK, true, bad(1, 'X')},
        {"no FE FF", {}, fifty, {0xFF}, {0, 0, 0, 0}, RC_OK, true, bad(99, 0xFE)},
    };
    for (const Case& c : cases) {
        CmJob job;
        job.files.useWeights(c.record.empty() ? test::channelWeightRecord(7, c.requested) : c.record);
        job.files.cmBlocks[990] = c.base;
        job.files.cmBlocks[980] = c.routing;
        if (!c.indexMatches) job.files.putIndex(900, kJobCorrectionBlock, 1, 1, 3);
        EXPECT_EQ(job.runColour() ? RC_OK : job.failedRc, c.rc) << c.what;
        EXPECT_EQ(job.cm->loader, nullptr) << c.what;
        for (size_t i = 0; i < job.nodes(); ++i)
            for (int ch = 0; ch < 4; ++ch)
                ASSERT_EQ(job.node(i, ch), std::min(255, job.written(i, ch) + 3 * c.table[ch])) << c.what << " node " << i;
        const std::vector<uint32_t> six{0, kJobTableBlock, 980, 990, 900, kJobCorrectionBlock};
        const bool corrected = c.rc == RC_OK && c.record.empty();
        EXPECT_TRUE(c.rc != RC_OK || job.cmAsked == (corrected ? six : std::vector<uint32_t>{0, kJobTableBlock})) << c.what;
        EXPECT_TRUE(!corrected || job.lut().grayTable[255] == job.written(26, 3)) << "black table built before the tables";
    }
}

// Offsets move the inner nodes only: node (0, 0, 1) has red 0 -> 50, moving
// cyan down along the red axis; green stays 0 (0 - 50 limited), blue 127 as read.
TEST(CmRebuild, CurvesMoveInnerNodesOnly) {
    CmJob job;
    job.files.s1.offsetR = 50;
    job.files.s1.offsetG = -50;
    ASSERT_TRUE(job.runColour());
    for (size_t i : {size_t{0}, size_t{26}})
        for (int c = 0; c < 4; ++c) EXPECT_EQ(job.node(i, c), job.written(i, c)) << "the end nodes keep their levels";
    EXPECT_LT(job.node(1, 0), job.written(1, 0));
    EXPECT_EQ(job.node(1, 1), 255);
    EXPECT_EQ(job.node(1, 2), job.written(1, 2));
}

// In the adjusting mode (processLevel 2), node (1, 0, 0) is red: c, m, y = 0,
// 255, 255; cyan is the minimum with gap 255: e = (2550 + 50) / 100 = 26, so
// the colour becomes (255, 26, 0), interpolated from V100 (0, 255, 255, 0) x
// 229 and V110 (0, 0, 255, 0) x 26. Node (0, 1, 1), cyan, has two equal minima.
TEST(CmRebuild, ColourAdjustmentsInTheAdjustingMode) {
    CmJob job;
    job.files.s1.processLevel = 2;
    job.files.s1.processMode = 0;
    job.files.putIndex(0, kJobTableBlock, 317, 1, 4);  // processLevel 2 gives selectC 4
    ColourTableWriter w;
    w.gridCount[0] = w.gridCount[1] = w.gridCount[2] = 2;
    w.adjustHue[0] = 10;
    job.files.putTable(w);
    ASSERT_TRUE(job.runColour()) << job.failedAt;
    const uint8_t want[4] = {0, 229, 255, 0};
    for (int c = 0; c < 4; ++c) EXPECT_EQ(job.node(4, c), want[c]);
    for (int c = 0; c < 4; ++c) EXPECT_EQ(job.node(3, c), job.written(3, c));
}

// Models 300 to 399 scale the whole table by the ink parameters (A = 160, B =
// 130: 255 - 50 = 205 becomes 182, 0 stays 0, 127 becomes 108) unless the
// gate is 2 or selectA is 1.
TEST(CmRebuild, WholeTableInkScalingByModel) {
    const struct { int32_t model, gate; uint32_t selectA; bool scaled; } cases[] = {
        {299, 1, 3, false}, {300, 1, 3, true}, {399, 1, 3, true}, {400, 1, 3, false},
        {350, 2, 3, false}, {350, -5, 3, true}, {350, 1, 1, false},
    };
    for (const auto& c : cases) {
        CmJob job;
        job.files.s2.inkScaleGate = c.gate;
        job.files.s2.selectA = c.selectA;
        job.files.putIndex(0, kJobTableBlock, c.model, c.selectA, 3);
        ColourTableWriter w;
        w.inkParam[0] = 160;
        w.inkParam[1] = 130;
        job.files.putTable(w);
        ASSERT_TRUE(job.runColour()) << c.model;
        for (size_t i = 0; i < 4 * job.nodes(); ++i) {
            const uint8_t b = job.written(i / 4, i % 4);
            ASSERT_EQ(job.node(i / 4, i % 4), c.scaled ? inkScale(b, 160, 130) : b) << "model " << c.model << " byte " << i;
        }
    }
}

// Black is 255 at black input and 0 at white, linear on the diagonal. Mode 0:
// 255 below level 255 becomes 254; gray[1] = (255 x 126 + 128 x 1) / 127.
// Mode 1 (the neutral list 255, 128, 0): level 255 keeps its 0; gray[254] =
// (128 x 1 + 0 x 126) / 127.
TEST(CmRebuild, BlackTableRules) {
    for (uint8_t blackMode : {0, 1}) {
        CmJob job;
        ColourTableWriter w;
        w.blackMode = blackMode;
        w.node = [](uint8_t r, uint8_t g, uint8_t b, uint8_t* inks) {
            inks[0] = inks[1] = inks[2] = 0;
            inks[3] = static_cast<uint8_t>(255 - (r + g + b) / 3);
        };
        w.neutralList = {255, 128, 0};
        job.files.putTable(w);
        ASSERT_TRUE(job.runColour());
        const uint8_t* gray = job.lut().grayTable;
        const int want[2][4][2] = {{{0, 254}, {1, 254}, {200, 55}, {255, 0}}, {{0, 255}, {253, 2}, {254, 1}, {255, 0}}};
        for (const auto& [v, g] : want[blackMode]) EXPECT_EQ(gray[v], g) << "mode " << int(blackMode) << " at " << v;
        for (int v = 0; v < 255; ++v) EXPECT_NE(gray[v], blackMode == 0 ? 255 : 0) << v;
    }
}

}  // namespace
}  // namespace inkdot
