// HalftoneNew, the phase machine, the slots each failure keeps or releases,
// the checks of a Halftone call and the kernel each settings row leads to.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "frame/memory.h"
#include "halftone/dispatch.h"
#include "halftone/slots.h"
#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::HtBlocks;
using test::HtInstance;
using test::WatchedMono;

HtSettings at(uint32_t method, uint32_t bits, uint32_t resX, uint32_t resY, uint32_t colourMode = 0) {
    HtSettings s = test::htSettings(method, colourMode, bits);
    s.resolutionX = resX;
    s.resolutionY = resY;
    return s;
}

TEST(HalftoneNew, ChecksInOrderCopiesAndPixelLayouts) {
    test::MemoryWatch watch;
    test::MonoLut mono([](int v) { return 255 - v; });
    CmLut lut = mono.lut;
    lut.modelId = 345;
    HtSettings s = test::htSettings(1, 0, 1, 100);
    HtContext* ctx = nullptr;
    uint32_t model = 0;
    EXPECT_EQ(HalftoneNew(nullptr, nullptr, 1, &model, &ctx), RC_ARG + 3);  // reserved3 first
    EXPECT_EQ(HalftoneNew(nullptr, &lut, 0, &model, &ctx), RC_ARG + 1);
    EXPECT_EQ(HalftoneNew(&s, nullptr, 0, &model, &ctx), RC_ARG + 2);
    EXPECT_TRUE(model == 0 && ctx == nullptr && watch.seam().allocs == 0);
    s.spare8 = 8;
    ASSERT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), RC_OK);
    EXPECT_EQ(model, 345u);
    EXPECT_EQ(std::memcmp(&ctx->method, &s, sizeof s), 0);
    EXPECT_EQ(std::memcmp(&ctx->lut, &lut, sizeof lut), 0);
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
    // {inputFormat, colourMode, outputBits, rc}: a refused layout still hands back the record.
    const uint32_t layouts[][4] = {{0, 0, 1, RC_OK},     {3, 1, 1, RC_OK},     {2, 1, 2, RC_OK},     {4, 2, 1, RC_OK},
                                   {0, 1, 1, RC_ARG + 1}, {3, 0, 1, RC_ARG + 1}, {7, 1, 1, RC_ARG + 1}, {1, 1, 1, RC_ARG + 1},
                                   {0, 0, 0, RC_ARG + 1}, {0, 0, 3, RC_ARG + 1}, {6, 1, 1, RC_ARG + 1}};
    for (const auto& c : layouts) {
        s.inputFormat = c[0];
        s.colourMode = c[1];
        s.outputBits = c[2];
        ctx = nullptr;
        EXPECT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), c[3]) << c[0] << "/" << c[1] << "/" << c[2];
        ASSERT_NE(ctx, nullptr);
        EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
    }
    s = test::htSettings(1, 0, 1);
    MemFaults& seam = watch.seam();
    for (auto [fail, count] : {std::pair{&seam.failAllocAt, &seam.allocs}, std::pair{&seam.failLockAt, &seam.locks}}) {
        *fail = *count + 1;
        model = 0;
        EXPECT_NE(HalftoneNew(&s, &lut, 0, &model, &ctx), RC_OK);
        EXPECT_EQ(model, 345u) << "reported even when the record is not had";
    }
}

// The answers: the first id, then the matrix id by the resolution class's
// position (General 1, DoubleX 2, 1440 x 720 3, DoubleY 4), then the dot-split
// block for two-bit output; ids arrive widened with their sign.
TEST(RequestList, AnswersByResolutionClass) {
    const std::vector<uint16_t> ids{100, 101, 102, 103, 104};
    const uint32_t end = 0xFFFFFFFFu, none = 0xDEADBEEFu;
    const struct { std::vector<uint16_t> ids; HtSettings s; uint32_t rc; std::vector<uint32_t> answers; } cases[] = {
        {ids, at(1, 1, 720, 720), RC_OK, {100, 101, end}},
        {ids, at(1, 1, 720, 360), RC_OK, {100, 102, end}},
        {ids, at(1, 1, 600, 300), RC_OK, {100, 102, end}},
        {ids, at(1, 1, 1440, 720), RC_OK, {100, 103, end}},
        {ids, at(1, 1, 720, 1440), RC_OK, {100, 104, end}},
        {ids, at(1, 1, 300, 600), RC_OK, {100, 104, end}},
        {ids, at(3, 2, 720, 720), RC_OK, {100, 101, 200, end}},
        {{}, at(1, 1, 720, 720), RC_OK, {end}},
        {{40000, 32767}, at(1, 1, 720, 720), RC_OK, {0xFFFF9C40u, 32767}},
        {{100, 101}, at(1, 1, 720, 480), RC_OK, {100, 101}},
        {{100, 101}, at(1, 1, 720, 360), RC_DATA, {100, none}},  // position 2 is the terminator
        {{100, 101}, at(1, 1, 1440, 720), RC_OK, {100, 0}},      // behind the terminator
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, at(1, 1, 720, 720), RC_OK, {1}},
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}, at(1, 1, 720, 720), RC_DATA, {none}},
    };
    for (const auto& c : cases) {
        HtBlocks blocks;
        blocks.requestList = test::requestListBlock(c.ids);
        WatchedMono m(c.s, blocks, static_cast<int>(c.answers.size()));
        EXPECT_EQ(m.ht.rc, c.rc) << c.ids.size() << " ids, " << c.s.resolutionX << "x" << c.s.resolutionY;
        EXPECT_EQ(m.ht.answers, c.answers) << c.ids.size() << " ids, " << c.s.resolutionX << "x" << c.s.resolutionY;
        EXPECT_TRUE(c.ids.size() != 16 || m.watch.seam().liveBlocks == 1) << "no slot before the list is read";
        EXPECT_TRUE(c.answers.size() < 3 || m.ctx().kernel == chooseKernel(m.ctx()).kernel) << c.s.resolutionX;
    }
}

TEST(PhaseCounter, EveryCallCountsAndCallsAfterTheEndKeepTheInstance) {
    WatchedMono m(test::htSettings(1, 0, 1), HtBlocks{}, 2);
    EXPECT_EQ(m.ctx().kernel, nullptr) << "not ready before the last phase";
    EXPECT_EQ(m.ht.feed(HtBlocks{}.matrix), RC_OK);
    const HtContext before = m.ctx();
    EXPECT_EQ(m.ht.feed(HtBlocks{}.dotSplit), RC_DATA);  // a fourth call on a one-bit instance
    EXPECT_EQ(m.ctx().callCount, 4u);
    EXPECT_EQ(m.ctx().kernel, before.kernel);
    for (unsigned k = 0; k < kSlotCount; ++k) EXPECT_EQ(m.ctx().buffers[k].data, before.buffers[k].data);
    // A call without an answer word uses up its phase: the later ones are refused.
    HtInstance ht(test::htSettings(1, 0, 1), m.lut.lut, HtBlocks{}, 0);
    EXPECT_EQ(HalftoneSetResource(ht.ctx, HtBlocks{}.requestList.data(), nullptr), RC_ARG + 3);
    EXPECT_EQ(ht.ctx->failedPhase, 1u);
    EXPECT_EQ(ht.feed(HtBlocks{}.gridLevels), RC_DATA);
    EXPECT_EQ(ht.feed(HtBlocks{}.matrix), RC_DATA);
    EXPECT_EQ(ht.ctx->callCount, 3u);
    EXPECT_EQ(ht.ctx->kernel, nullptr);
}

// Instances whose protocol touches every allocation site fail at each in
// turn, allocating and locking: every slot released, nothing leaked.
TEST(AllocationFailure, EverySiteReleasesAllSlots) {
    HtSettings wide = at(1, 1, 1440, 720, 1);
    wide.width = 4100;  // four separate error lines
    const struct { HtSettings s; int blocks; } configs[] = {
        {test::htSettings(1, 0, 1), 6},  // record, line, replicated, curve, matrix, dot values
        {test::htSettings(3, 0, 2), 6},  // no error line; dot-split table
        {wide, 9},                       // four lines, replicated, grid, matrix, dot values
        {test::htSettings(1, 1, 2), 7},
    };
    test::ColourLut colour(test::evenLevels(3), [](int r, int g, int b) {
        return test::ColourLut::Node{uint8_t(r), uint8_t(g), uint8_t(b), 0};
    });
    test::MonoLut mono([](int v) { return 255 - v; });
    const uint32_t phaseOf[] = {0, 1, 2, 3, 3, 4};  // mono two-bit dither, by failing site
    for (const auto& c : configs) {
        const CmLut& lut = c.s.colourMode ? colour.lut : mono.lut;
        for (int n = 0; n <= 2 * c.blocks; ++n) {
            test::MemoryWatch watch;
            if (n > c.blocks) watch.seam().failLockAt = n - c.blocks; else watch.seam().failAllocAt = n;
            HtInstance ht(c.s, lut);
            if (n == 0 || n == 1 || n == c.blocks + 1) {  // nothing to fail; the record itself
                EXPECT_TRUE(n != 0 || watch.seam().liveBlocks == c.blocks) << "a complete build takes every site";
                continue;
            }
            EXPECT_EQ(ht.rc, n > c.blocks ? RC_MEM_LOCK : RC_MEM_ALLOC) << c.blocks << " " << n;
            EXPECT_TRUE(test::allSlotsEmpty(*ht.ctx)) << c.blocks << ", failure " << n;
            EXPECT_EQ(watch.seam().liveBlocks, 1) << c.blocks << ", failure " << n;
            EXPECT_EQ(ht.ctx->failedPhase, ht.ctx->callCount);
            if (c.s.outputBits == 2 && c.s.colourMode == 0 && n <= c.blocks) {
                EXPECT_EQ(ht.ctx->callCount, phaseOf[n - 1]) << "failure " << n;
            }
        }
    }
}

// Slot 5 owns a block with slot 6 a view behind it; slot 7 one with two views.
// Views are never freed; a failed unlock keeps everything, a failed free
// clears the handles and keeps the record.
TEST(SlotRelease, ViewsNeverFreedAndFailuresKeepWhatTheyMust) {
    for (int fault = 0; fault < 3; ++fault) {
        test::MemoryWatch watch;
        test::MonoLut lut([](int v) { return 255 - v; });
        HtInstance ht(test::htSettings(1, 0, 1), lut.lut, HtBlocks{}, 0);
        HtContext* ctx = ht.ctx;
        ASSERT_EQ(acquireSlot(*ctx, kThresholdMatrix, 64, false), RC_OK);
        setSlotView(*ctx, kToneTable, slotData<uint8_t>(*ctx, kThresholdMatrix) + 32, 32);
        ASSERT_EQ(acquireSlot(*ctx, kDotValueTable, 1536, true), RC_OK);
        setSlotView(*ctx, kEdThresholdTable, slotData<uint8_t>(*ctx, kDotValueTable) + 512, 512);
        setSlotView(*ctx, kGridCellTable, slotData<uint8_t>(*ctx, kDotValueTable) + 1024, 512);
        const uint32_t frees = watch.seam().frees, unlocks = watch.seam().unlocks;
        void* lost = ctx->buffers[kThresholdMatrix].handle;
        if (fault == 0) {
            EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
            EXPECT_EQ(watch.seam().frees - frees, 3u);  // slots 5, 7 and the record
            EXPECT_EQ(watch.seam().unlocks - unlocks, 3u);
        } else if (fault == 1) {
            watch.seam().failUnlockAt = unlocks + 2;  // slot 7's unlock
            EXPECT_EQ(HalftoneDelete(ctx), RC_MEM_UNLOCK);
            EXPECT_EQ(ctx->buffers[kThresholdMatrix].data, nullptr);  // already unlocked
            EXPECT_NE(ctx->buffers[kDotValueTable].data, nullptr);
            EXPECT_NE(ctx->buffers[kThresholdMatrix].handle, nullptr);  // nothing freed
            EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
        } else {
            watch.seam().failFreeAt = frees + 1;  // slot 5's free
            EXPECT_EQ(HalftoneDelete(ctx), RC_MEM_FREE);
            for (const HtBuffer& b : ctx->buffers) EXPECT_EQ(b.handle, nullptr);
            EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
            EXPECT_EQ(releaseBlock(lost), RC_OK);
        }
        ht.ctx = nullptr;
    }
}

// Two-bit output with method 0 has no kernel: Halftone answers 512 after
// replication, which makes the checks before it visible.
TEST(HalftoneCall, ChecksInOrder) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(test::htSettings(0, 0, 2, 64), lut.lut);
    std::vector<uint8_t> src(64, 9), dst(256, 0xA5);
    const auto run = [&](HtContext* ctx, uint32_t bitOffset, uint32_t count, uint32_t startX, uint32_t reserved10 = 0) {
        return Halftone(ctx, src.data(), dst.data(), 64, bitOffset, count, startX, 0, 0, reserved10, 0);
    };
    EXPECT_EQ(run(ht.ctx, 0, 4, 60), RC_ARG) << "a run ending at the width is accepted";
    EXPECT_EQ(run(ht.ctx, 0, 5, 60, 1), RC_ARG + 6) << "518 before reserved10";
    EXPECT_EQ(run(ht.ctx, 9, 4, 60, 1), RC_ARG + 10) << "522 before bitOffset";
    EXPECT_EQ(run(ht.ctx, 4, 4, 60), RC_ARG + 5) << "two-bit: four pixels a byte";
    EXPECT_EQ(run(ht.ctx, 3, 4, 60), RC_ARG);
    EXPECT_EQ(run(ht.ctx, 0, 1, 0xFFFFFFFFu), RC_ARG + 6) << "a wrapping sum does not fit";
    for (int phases = 0; phases < 4; ++phases) {
        HtInstance one(test::htSettings(3, 0, 1, 64), lut.lut, HtBlocks{}, phases);
        EXPECT_EQ(run(one.ctx, phases < 3 ? 0 : 8, 4, 0), phases < 3 ? RC_DATA : RC_ARG + 5) << phases << " phases fed";
    }
    for (uint8_t b : dst) ASSERT_EQ(b, 0xA5) << "nothing written";
}

// scaleMode 2, 4: expansion 3, 5 is replication alone; 3, 5 (expansion 4, 6)
// is doubling with replication by 2, 3; doubling and halving alone stay. The
// replicated line holds a whole input line: 64 gray, 192 or 256 colour bytes.
// A run of 7 (with doubling 5) output pixels replicates the input pixels it
// reads and stops inside a repetition; nothing else of the line changes.
TEST(HalftoneCall, ReplicationInFrontOfTheKernel) {
    const struct { int32_t scaleMode; uint32_t inputFormat, count; int32_t doubling; uint32_t factor, lineBytes;
                   std::vector<uint8_t> line; } cases[] = {
        {2, 0, 7, 0, 3, 64, {1, 1, 1, 2, 2, 2, 3, 0xEE}},
        {4, 0, 7, 0, 5, 64, {1, 1, 1, 1, 1, 2, 2, 0xEE}},
        {3, 3, 5, 1, 2, 256, {1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 0xEE}},
        {5, 2, 5, 1, 3, 192, {1, 2, 3, 1, 2, 3, 1, 2, 3, 0xEE}},
        {1, 0, 8, 1, 1, 64, {0xEE, 0xEE, 0xEE}},
        {-1, 0, 8, -1, 1, 64, {0xEE, 0xEE, 0xEE}},
    };
    const uint8_t src[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    test::ColourLut colour(test::evenLevels(2), [](int, int, int) { return test::ColourLut::Node{}; });
    test::MonoLut mono([](int v) { return 255 - v; });
    for (const auto& c : cases) {
        test::MemoryWatch watch;
        HtSettings s = test::htSettings(0, c.inputFormat ? 1 : 0, 2, 64);
        s.scaleMode = c.scaleMode;
        if (c.inputFormat) s.inputFormat = c.inputFormat;
        HtInstance ht(s, c.inputFormat ? colour.lut : mono.lut);
        ASSERT_EQ(ht.rc, RC_OK);
        EXPECT_EQ(ht.ctx->scaleMode, c.doubling) << c.scaleMode;
        EXPECT_EQ(ht.ctx->replicationFactor, c.factor) << c.scaleMode;
        EXPECT_EQ(ht.ctx->buffers[kReplicatedLine].size, c.lineBytes) << c.scaleMode;
        uint8_t* line = slotData<uint8_t>(*ht.ctx, kReplicatedLine);
        std::fill(line, line + c.lineBytes, 0xEE);
        std::vector<uint8_t> dst(256, 0);
        EXPECT_EQ(Halftone(ht.ctx, src, dst.data(), 64, 0, c.count, 0, 0, 0, 0, 0), RC_ARG);
        EXPECT_EQ(std::vector<uint8_t>(line, line + c.line.size()), c.line) << c.scaleMode;
    }
}

// The kernel every settings row leads to; method 2 is error diffusion, routed like method 1.
TEST(Dispatch, KernelByRow) {
    const struct { uint32_t bits, method, colourMode, resX, resY, ditherMode, inputFormat; int32_t scaleMode;
                   const char* kernel; } rows[] = {
        {2, 3, 1, 360, 720, 1, 3, 0, "Dither2ColourDoubleY"},  {2, 3, 1, 1440, 720, 1, 3, 0, "Dither2Colour"},
        {2, 3, 0, 360, 720, 1, 0, 0, "Dither2MonoDoubleY"},    {2, 3, 0, 720, 720, 1, 0, 0, "Dither2Mono"},
        {2, 1, 1, 1440, 720, 1, 3, 0, "Ed2Colour1440x720"},    {2, 1, 1, 720, 1440, 1, 3, 0, "Ed2ColourDoubleY"},
        {2, 1, 1, 720, 720, 1, 3, 0, "Ed2ColourGeneral"},      {2, 1, 0, 1440, 720, 1, 0, 0, "Ed2Mono1440x720"},
        {2, 1, 0, 360, 720, 1, 0, 0, "Ed2MonoDoubleY"},        {2, 1, 0, 720, 360, 1, 0, 0, "Ed2MonoGeneral"},
        {2, 0, 0, 720, 720, 1, 0, 0, "NoTwoBitKernel"},        {2, 2, 1, 720, 720, 1, 3, 0, "NoTwoBitKernel"},
        {1, 3, 0, 360, 720, 1, 0, 0, "Dither1Mono"},           {1, 3, 1, 720, 720, 0, 3, 0, "Dither1ColourHybrid"},
        {1, 3, 1, 720, 720, 2, 3, 0, "Dither1ColourHybrid"},   {1, 3, 1, 720, 720, 1, 3, 0, "Dither1Colour"},
        {1, 0, 0, 1440, 720, 1, 0, 0, "Dither1Mono"},          {1, 0, 1, 1440, 720, 1, 3, 0, "Threshold1Colour"},
        {1, 1, 0, 360, 720, 1, 0, 0, "Ed1MonoDoubleY"},        {1, 1, 0, 1440, 720, 1, 0, 0, "Ed1Mono1440x720"},
        {1, 1, 0, 720, 720, 1, 0, 0, "Ed1MonoGeneral"},        {1, 1, 1, 360, 720, 1, 3, 0, "Ed1ColourDoubleY"},
        {1, 1, 1, 1440, 720, 1, 3, 0, "Ed1Colour1440x720B"},   {1, 1, 1, 1440, 720, 1, 4, 0, "Ed1Colour1440x720"},
        {1, 1, 1, 1440, 720, 1, 3, -1, "Ed1Colour1440x720"},   {1, 1, 1, 720, 360, 1, 3, 0, "Ed1ColourGeneralB"},
        {1, 1, 1, 720, 360, 1, 4, 0, "Ed1ColourGeneral"},      {1, 1, 1, 720, 720, 1, 3, -1, "Ed1ColourGeneral"},
        {1, 2, 1, 1440, 720, 1, 3, 0, "Ed1Colour1440x720B"},   {1, 2, 0, 720, 720, 1, 0, 0, "Ed1MonoGeneral"},
    };
    for (const auto& r : rows) {
        HtContext ctx{};
        ctx.outputBits = r.bits;
        ctx.method = r.method;
        ctx.colourMode = r.colourMode;
        ctx.resolutionX = r.resX;
        ctx.resolutionY = r.resY;
        ctx.ditherMode = r.ditherMode;
        ctx.inputFormat = r.inputFormat;
        ctx.scaleMode = r.scaleMode;
        EXPECT_EQ(std::string(chooseKernel(ctx).name), r.kernel) << r.kernel;
    }
}

}  // namespace
}  // namespace inkdot
