// Halftone on instances built through the protocol: the checks in order, and
// phase 1's split of an expansion into doubling and replication in front of
// the kernel.
#include <gtest/gtest.h>

#include <vector>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::HtInstance;

// Two-bit output with method 0 has no kernel: Halftone answers 512 after
// replication, whatever the kernels do, which makes the checks visible.
HtSettings noKernelSettings(int32_t scaleMode = 0, uint32_t colourMode = 0) {
    HtSettings s = test::htSettings(0, colourMode, 2, 64);
    s.scaleMode = scaleMode;
    return s;
}

uint32_t run(HtContext* ctx, const uint8_t* src, uint8_t* dst, uint32_t bitOffset, uint32_t count,
             uint32_t startX, uint32_t reserved10 = 0) {
    return Halftone(ctx, src, dst, 64, bitOffset, count, startX, 0, 0, reserved10, 0);
}

TEST(HalftoneCall, ChecksInOrder) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(noKernelSettings(), lut.lut);
    ASSERT_EQ(ht.rc, RC_OK);
    std::vector<uint8_t> src(64, 9), dst(256, 0xA5);
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 0, 4, 60), RC_ARG) << "a run ending at the width is accepted";
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 0, 5, 60, 1), RC_ARG + 6) << "518 before reserved10";
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 9, 4, 60, 1), RC_ARG + 10) << "522 before bitOffset";
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 4, 4, 60), RC_ARG + 5) << "two-bit: four pixels a byte";
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 3, 4, 60), RC_ARG);
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 0, 1, 0xFFFFFFFFu), RC_ARG + 6) << "a wrapping sum does not fit";
    for (uint8_t b : dst) ASSERT_EQ(b, 0xA5) << "nothing written";
}

TEST(HalftoneCall, OneBitBitOffsetRangeAndUnfedInstances) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    std::vector<uint8_t> src(64, 9), dst(256, 0xA5);
    for (int phases = 0; phases < 3; ++phases) {
        HtInstance ht(test::htSettings(3, 0, 1, 64), lut.lut, test::HtBlocks{}, phases);
        EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 0, 4, 0), RC_DATA) << phases << " phases fed";
    }
    for (uint8_t b : dst) ASSERT_EQ(b, 0xA5);
    HtInstance ht(test::htSettings(3, 0, 1, 64), lut.lut);
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(run(ht.ctx, src.data(), dst.data(), 8, 4, 0), RC_ARG + 5);
    EXPECT_NE(run(ht.ctx, src.data(), dst.data(), 7, 4, 0), RC_ARG + 5);
}

// scaleMode 2, 4: expansion 3, 5 is replication alone; 3, 5 (expansion 4, 6)
// is doubling with replication by 2, 3; doubling and halving alone stay. The
// replicated line holds a whole input line: 50 gray, 150 or 200 colour bytes.
// A run of 7 (or with doubling 5) output pixels replicates the input pixels
// it reads and stops inside a repetition; nothing else of the line changes.
TEST(HalftoneCall, ReplicationInFrontOfTheKernel) {
    struct Case { int32_t scaleMode; uint32_t inputFormat, count; int32_t doubling; uint32_t factor, lineBytes;
                  std::vector<uint8_t> line; };
    const Case cases[] = {
        {2, 0, 7, 0, 3, 64, {1, 1, 1, 2, 2, 2, 3, 0xEE}},
        {4, 0, 7, 0, 5, 64, {1, 1, 1, 1, 1, 2, 2, 0xEE}},
        {3, 3, 5, 1, 2, 256, {1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 0xEE}},
        {5, 2, 5, 1, 3, 192, {1, 2, 3, 1, 2, 3, 1, 2, 3, 0xEE}},
        {1, 0, 8, 1, 1, 64, {0xEE, 0xEE, 0xEE}},
        {0, 0, 8, 0, 1, 64, {0xEE, 0xEE, 0xEE}},
        {-1, 0, 8, -1, 1, 64, {0xEE, 0xEE, 0xEE}},
    };
    const uint8_t src[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "scaleMode " << c.scaleMode);
        test::MemoryWatch watch;
        test::ColourLut colour(test::evenLevels(2), [](int, int, int) { return test::ColourLut::Node{}; });
        test::MonoLut mono([](int v) { return 255 - v; });
        HtSettings s = noKernelSettings(c.scaleMode, c.inputFormat ? 1 : 0);
        if (c.inputFormat) s.inputFormat = c.inputFormat;
        HtInstance ht(s, c.inputFormat ? colour.lut : mono.lut);
        ASSERT_EQ(ht.rc, RC_OK);
        EXPECT_EQ(ht.ctx->scaleMode, c.doubling);
        EXPECT_EQ(ht.ctx->replicationFactor, c.factor);
        EXPECT_EQ(ht.ctx->buffers[kReplicatedLine].size, c.lineBytes);
        uint8_t* line = slotData<uint8_t>(*ht.ctx, kReplicatedLine);
        std::fill(line, line + c.lineBytes, 0xEE);
        std::vector<uint8_t> dst(256, 0);
        EXPECT_EQ(run(ht.ctx, src, dst.data(), 0, c.count, 0), RC_ARG);
        EXPECT_EQ(std::vector<uint8_t>(line, line + c.line.size()), c.line);
    }
}

}  // namespace
}  // namespace inkdot
