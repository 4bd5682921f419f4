// The phase machine: request list, answers, the phase counter and completion.
#include <gtest/gtest.h>

#include "halftone/dispatch.h"
#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::HtBlocks;
using test::HtInstance;
using test::MonoLut;

const auto kGray = [](int v) { return 255 - v; };

HtSettings monoEd(uint32_t resX = 720, uint32_t resY = 720) {
    HtSettings s = test::htSettings(1, 0, 1);
    s.resolutionX = resX;
    s.resolutionY = resY;
    return s;
}

// The answers to the first calls: the first id, then the class's matrix id
// by its position in the list (General 1, resolutionX = 2 x resolutionY 2,
// 1440 x 720 3, DoubleY 4); ids arrive widened with their sign.
TEST(RequestList, Answers) {
    struct Case { std::vector<uint16_t> ids; uint32_t resX, resY, rc; std::vector<uint32_t> answers; };
    const Case cases[] = {
        {{}, 720, 720, RC_OK, {0xFFFFFFFFu}},
        {{40000, 32767}, 720, 720, RC_OK, {0xFFFF9C40u, 32767}},
        {{100, 101}, 720, 480, RC_OK, {100, 101}},
        {{100, 101}, 720, 360, RC_DATA, {100, 0xDEADBEEF}},  // position 2 is the terminator
        {{100, 101}, 1440, 720, RC_OK, {100, 0}},            // behind the terminator
        {{100, 101}, 360, 720, RC_OK, {100, 0}},
    };
    for (const Case& c : cases) {
        HtBlocks blocks;
        blocks.requestList = test::requestListBlock(c.ids);
        test::WatchedMono m(monoEd(c.resX, c.resY), blocks, static_cast<int>(c.answers.size()));
        EXPECT_EQ(m.ht.rc, c.rc) << c.resX << "x" << c.resY;
        EXPECT_EQ(m.ht.answers, c.answers) << c.resX << "x" << c.resY;
    }
}

TEST(RequestList, FifteenIdsAcceptedSixteenRefused) {
    HtBlocks blocks;
    blocks.requestList = test::requestListBlock({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    test::WatchedMono m(monoEd(), blocks, 1);
    HtInstance& fifteen = m.ht;
    EXPECT_EQ(fifteen.rc, RC_OK);
    EXPECT_EQ(fifteen.ctx->requestIds[14], 15);
    EXPECT_EQ(fifteen.ctx->requestIds[15], 65535);

    blocks.requestList = test::requestListBlock({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    const int64_t liveBefore = m.watch.seam().liveBlocks;
    HtInstance sixteen(monoEd(), m.lut.lut, blocks, 1);
    EXPECT_EQ(sixteen.rc, RC_DATA);
    EXPECT_EQ(sixteen.answers[0], 0xDEADBEEFu) << "no answer before the list is read";
    EXPECT_EQ(m.watch.seam().liveBlocks - liveBefore, 1) << "only the record: no slot acquired";
}

TEST(PhaseCounter, RaisedByEveryCallEvenAFailingOne) {
    HtBlocks blocks;
    blocks.requestList = test::requestListBlock({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    test::WatchedMono m(monoEd(), blocks, 1);
    HtInstance& ht = m.ht;
    EXPECT_EQ(ht.ctx->callCount, 1u);
    EXPECT_EQ(ht.feed(blocks.gridLevels), RC_DATA);  // the instance failed: no going on
    EXPECT_EQ(ht.ctx->callCount, 2u);
    EXPECT_EQ(ht.feed(blocks.matrix), RC_DATA);
    EXPECT_EQ(ht.ctx->callCount, 3u);
    EXPECT_EQ(ht.ctx->kernel, nullptr);
}

TEST(PhaseCounter, CallWithoutAnAnswerWordUsesUpItsPhase) {
    test::WatchedMono m(monoEd(), HtBlocks{}, 0);
    HtInstance& ht = m.ht;
    EXPECT_EQ(HalftoneSetResource(ht.ctx, HtBlocks{}.requestList.data(), nullptr), RC_ARG + 3);
    EXPECT_EQ(ht.ctx->callCount, 1u);
    EXPECT_EQ(ht.ctx->failedPhase, 1u);
    // The request list never arrived: the later phases are refused.
    EXPECT_EQ(ht.feed(HtBlocks{}.gridLevels), RC_DATA);
    EXPECT_EQ(ht.feed(HtBlocks{}.matrix), RC_DATA);
    EXPECT_EQ(ht.ctx->kernel, nullptr);
}

TEST(Completion, OneBitChoosesItsKernelAfterPhaseThree) {
    test::WatchedMono m(monoEd(), HtBlocks{}, 2);
    HtInstance& ht = m.ht;
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(ht.answers[1], test::kMatrixGeneralId);
    EXPECT_EQ(ht.ctx->kernel, nullptr) << "not ready before the last phase";
    uint32_t next = 0;
    ASSERT_EQ(ht.feed(HtBlocks{}.matrix, &next), RC_OK);
    EXPECT_EQ(next, 0xFFFFFFFFu);
    EXPECT_EQ(ht.ctx->kernel, chooseKernel(*ht.ctx).kernel);
    EXPECT_NE(ht.ctx->kernel, nullptr);
}

TEST(Completion, TwoBitAsksForTheDotSplitBlockThenEnds) {
    test::MemoryWatch watch;
    MonoLut lut(kGray);
    HtSettings s = test::htSettings(3, 0, 2);
    HtInstance ht(s, lut.lut);
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(ht.answers, (std::vector<uint32_t>{test::kGridLevelsId, test::kMatrixGeneralId, test::kDotSplitId,
                                                 0xFFFFFFFFu}));
    EXPECT_EQ(ht.ctx->kernel, chooseKernel(*ht.ctx).kernel);
}

TEST(Completion, ClassIdsByResolution) {
    struct Case { uint32_t resX, resY; uint16_t id; };
    const Case cases[] = {{720, 720, test::kMatrixGeneralId}, {720, 360, test::kMatrixDoubleXId},
                          {1440, 720, test::kMatrix1440x720Id}, {720, 1440, test::kMatrixDoubleYId},
                          {600, 300, test::kMatrixDoubleXId},   {300, 600, test::kMatrixDoubleYId}};
    for (const Case& c : cases) {
        test::WatchedMono m(monoEd(c.resX, c.resY), HtBlocks{}, 2);
        HtInstance& ht = m.ht;
        EXPECT_EQ(ht.answers[1], c.id) << c.resX << "x" << c.resY;
    }
}

TEST(Completion, CallsBeyondTheLastPhaseAreRefusedAndKeepTheInstance) {
    test::WatchedMono m(monoEd());
    HtInstance& oneBit = m.ht;
    ASSERT_EQ(oneBit.rc, RC_OK);
    HtContext before = *oneBit.ctx;
    EXPECT_EQ(oneBit.feed(HtBlocks{}.dotSplit), RC_DATA);  // a fourth call on a one-bit instance
    EXPECT_EQ(oneBit.ctx->callCount, 4u);
    EXPECT_NE(oneBit.ctx->kernel, nullptr) << "still ready";
    for (unsigned k = 0; k < kSlotCount; ++k) EXPECT_EQ(oneBit.ctx->buffers[k].data, before.buffers[k].data);

    HtInstance twoBit(test::htSettings(3, 0, 2), m.lut.lut);
    ASSERT_EQ(twoBit.rc, RC_OK);
    const int64_t live = m.watch.seam().liveBlocks;
    for (int extra = 0; extra < 3; ++extra) EXPECT_EQ(twoBit.feed(HtBlocks{}.dotSplit), RC_DATA);  // no fifth phase
    EXPECT_EQ(twoBit.ctx->callCount, 7u);
    EXPECT_EQ(m.watch.seam().liveBlocks, live);
    EXPECT_NE(twoBit.ctx->kernel, nullptr);
    EXPECT_NE(twoBit.ctx->buffers[kDotSplitTable].data, nullptr);
}

}  // namespace
}  // namespace inkdot
