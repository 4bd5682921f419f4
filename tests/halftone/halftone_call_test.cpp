// Halftone on instances built through the protocol: the checks in order and
// the replication in front of the kernel.
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

TEST(HalftoneCall, TwoBitMethodZeroAnswers512AfterReplication) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(noKernelSettings(2), lut.lut);  // expansion 3: replication by 3
    ASSERT_EQ(ht.rc, RC_OK);
    ASSERT_EQ(ht.ctx->replicationFactor, 3u);
    const uint8_t src[] = {10, 20, 30, 40};
    std::vector<uint8_t> dst(64, 0);
    EXPECT_EQ(run(ht.ctx, src, dst.data(), 0, 7, 0), RC_ARG);
    const uint8_t* line = slotData<uint8_t>(*ht.ctx, kReplicatedLine);
    EXPECT_EQ(std::vector<uint8_t>(line, line + 7), (std::vector<uint8_t>{10, 10, 10, 20, 20, 20, 30}));
}

TEST(HalftoneCall, DoublingWithReplicationByTwo) {
    // scaleMode 3 (expansion 4) is doubling with replication by 2: a run of 5
    // output pixels builds 3 replicated pixels from input 0, 0, 1.
    test::MemoryWatch watch;
    test::ColourLut lut(test::evenLevels(2), [](int, int, int) { return test::ColourLut::Node{}; });
    HtInstance ht(noKernelSettings(3, 1), lut.lut);
    ASSERT_EQ(ht.rc, RC_OK);
    ASSERT_EQ(ht.ctx->scaleMode, 1);
    ASSERT_EQ(ht.ctx->replicationFactor, 2u);
    const uint8_t src[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};  // four-byte pixels
    std::vector<uint8_t> dst(256, 0);
    uint8_t* line = slotData<uint8_t>(*ht.ctx, kReplicatedLine);
    std::fill(line, line + 16, 0xEE);
    EXPECT_EQ(run(ht.ctx, src, dst.data(), 0, 5, 0), RC_ARG);
    EXPECT_EQ(std::vector<uint8_t>(line, line + 16),
              (std::vector<uint8_t>{1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 0xEE, 0xEE, 0xEE, 0xEE}));
}

TEST(HalftoneCall, NoReplicationLeavesTheLineAlone) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(noKernelSettings(1), lut.lut);
    ASSERT_EQ(ht.ctx->replicationFactor, 1u);
    uint8_t* line = slotData<uint8_t>(*ht.ctx, kReplicatedLine);
    std::fill(line, line + 64, 0xEE);
    const uint8_t src[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    std::vector<uint8_t> dst(64, 0);
    EXPECT_EQ(run(ht.ctx, src, dst.data(), 0, 8, 0), RC_ARG);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(line[i], 0xEE);
}

}  // namespace
}  // namespace inkdot
