#include <gtest/gtest.h>

#include <cstring>

#include "frame/memory.h"
#include "halftone/ht_context.h"
#include "halftone/slots.h"
#include "inkdot/inkdot.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

HtSettings monoSettings() {
    HtSettings s{};
    s.method = 1;
    s.outputBits = 1;
    s.width = 100;
    return s;
}

CmLut lutWithModel(uint32_t modelId) {
    CmLut lut{};
    lut.modelId = modelId;
    lut.channels = 4;
    return lut;
}

TEST(HalftoneNew, ArgumentChecksInOrder) {
    test::MemoryWatch watch;
    const CmLut lut = lutWithModel(301);
    HtContext* ctx = nullptr;
    uint32_t model = 0;
    EXPECT_EQ(HalftoneNew(nullptr, nullptr, 1, &model, &ctx), RC_ARG + 3);  // reserved3 first
    EXPECT_EQ(HalftoneNew(nullptr, &lut, 0, &model, &ctx), RC_ARG + 1);
    const HtSettings s = monoSettings();
    EXPECT_EQ(HalftoneNew(&s, nullptr, 0, &model, &ctx), RC_ARG + 2);
    EXPECT_EQ(model, 0u);
    EXPECT_EQ(ctx, nullptr);
    EXPECT_EQ(watch.seam().allocs, 0u);
}

TEST(HalftoneNew, CopiesSettingsAndLut) {
    test::MemoryWatch watch;
    CmLut lut = lutWithModel(345);
    lut.grayTable[17] = 99;
    lut.inkParam[0] = 250;
    HtSettings s = monoSettings();
    s.spare8 = 8;
    s.spare10 = 10;
    HtContext* ctx = nullptr;
    uint32_t model = 0;
    ASSERT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), RC_OK);
    EXPECT_EQ(model, 345u);
    EXPECT_EQ(std::memcmp(&ctx->method, &s, sizeof s), 0);
    EXPECT_EQ(std::memcmp(&ctx->lut, &lut, sizeof lut), 0);
    EXPECT_EQ(ctx->selfBlock, static_cast<void*>(ctx));
    EXPECT_EQ(ctx->callCount, 0u);
    EXPECT_EQ(ctx->kernel, nullptr);
    const uint32_t freesBefore = watch.seam().frees;
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
    EXPECT_EQ(watch.seam().frees - freesBefore, 1u);  // an unfed instance frees only its record
}

TEST(HalftoneNew, PixelLayoutAgainstColourMode) {
    test::MemoryWatch watch;
    const CmLut lut = lutWithModel(1);
    struct Case { uint32_t inputFormat, colourMode, outputBits; uint32_t want; };
    const Case cases[] = {
        {0, 0, 1, RC_OK},       {3, 1, 1, RC_OK},       {2, 1, 2, RC_OK},       {4, 2, 1, RC_OK},
        {0, 1, 1, RC_ARG + 1},  {3, 0, 1, RC_ARG + 1},  {7, 1, 1, RC_ARG + 1},  {1, 1, 1, RC_ARG + 1},
        // Our additions: only one- and two-bit output, and no six-byte pixels.
        {0, 0, 0, RC_ARG + 1},  {0, 0, 3, RC_ARG + 1},  {6, 1, 1, RC_ARG + 1},
    };
    for (const Case& c : cases) {
        HtSettings s = monoSettings();
        s.inputFormat = c.inputFormat;
        s.colourMode = c.colourMode;
        s.outputBits = c.outputBits;
        HtContext* ctx = nullptr;
        uint32_t model = 0;
        EXPECT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), c.want) << c.inputFormat << "/" << c.colourMode;
        ASSERT_NE(ctx, nullptr) << "a refused layout still hands back the record";
        EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
    }
}

TEST(HalftoneNew, AllocationFailureStillReportsModel) {
    for (bool lock : {false, true}) {
        test::MemoryWatch watch;
        if (lock) watch.seam().failLockAt = 1; else watch.seam().failAllocAt = 1;
        const CmLut lut = lutWithModel(321);
        const HtSettings s = monoSettings();
        HtContext* ctx = nullptr;
        uint32_t model = 0;
        EXPECT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), lock ? RC_MEM_LOCK : RC_MEM_ALLOC);
        EXPECT_EQ(model, 321u);
        EXPECT_EQ(ctx, nullptr);
    }
}

class SlotRelease : public ::testing::Test {
protected:
    void SetUp() override {
        const CmLut lut = lutWithModel(1);
        const HtSettings s = monoSettings();
        uint32_t model = 0;
        ASSERT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), RC_OK);
        // Slot 5 owns a block with slot 6 as a view behind it; slot 7 owns one with two views.
        ASSERT_EQ(acquireSlot(*ctx, kThresholdMatrix, 64, false), RC_OK);
        setSlotView(*ctx, kToneTable, slotData<uint8_t>(*ctx, kThresholdMatrix) + 32, 32);
        ASSERT_EQ(acquireSlot(*ctx, kDotValueTable, 1536, true), RC_OK);
        setSlotView(*ctx, kEdThresholdTable, slotData<uint8_t>(*ctx, kDotValueTable) + 512, 512);
        setSlotView(*ctx, kGridCellTable, slotData<uint8_t>(*ctx, kDotValueTable) + 1024, 512);
    }
    test::MemoryWatch watch;
    HtContext* ctx = nullptr;
};

TEST_F(SlotRelease, ViewsAreNeverFreed) {
    const uint32_t freesBefore = watch.seam().frees;
    const uint32_t unlocksBefore = watch.seam().unlocks;
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
    EXPECT_EQ(watch.seam().frees - freesBefore, 3u);    // slots 5, 7 and the record
    EXPECT_EQ(watch.seam().unlocks - unlocksBefore, 3u);
}

TEST_F(SlotRelease, FailedUnlockKeepsEverything) {
    watch.seam().failUnlockAt = watch.seam().unlocks + 2;  // slot 7's unlock
    EXPECT_EQ(HalftoneDelete(ctx), RC_MEM_UNLOCK);
    EXPECT_EQ(ctx->buffers[kThresholdMatrix].data, nullptr);  // already unlocked
    EXPECT_NE(ctx->buffers[kDotValueTable].data, nullptr);
    EXPECT_NE(ctx->buffers[kThresholdMatrix].handle, nullptr);  // nothing freed
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
}

TEST_F(SlotRelease, FailedFreeClearsHandlesAndKeepsRecord) {
    watch.seam().failFreeAt = watch.seam().frees + 1;  // slot 5's free
    void* lost = ctx->buffers[kThresholdMatrix].handle;
    EXPECT_EQ(HalftoneDelete(ctx), RC_MEM_FREE);
    for (const HtBuffer& b : ctx->buffers) EXPECT_EQ(b.handle, nullptr);
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);  // the record itself is still there to delete
    EXPECT_EQ(releaseBlock(lost), RC_OK);   // the block the failed free kept
}

}  // namespace
}  // namespace inkdot
