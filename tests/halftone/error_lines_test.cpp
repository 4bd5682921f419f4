// Error lines of phase 1: how many, how large, one block or several.
#include <gtest/gtest.h>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::HtInstance;

struct Lines {
    uint32_t count;
    int64_t blocks;  // live blocks the error lines took
};

Lines errorLinesOf(uint32_t method, uint32_t colourMode, uint32_t ditherMode, uint32_t width = 100) {
    test::MonoLut lut([](int v) { return v; });
    HtSettings s = test::htSettings(method, colourMode, 1, width);
    s.ditherMode = ditherMode;
    const int64_t before = memFaults().liveBlocks;
    HtInstance ht(s, lut.lut, test::HtBlocks{}, 1);
    EXPECT_EQ(ht.rc, RC_OK);
    // The record and the replicated line are the other two blocks.
    return {ht.ctx->errorLineCount, memFaults().liveBlocks - before - 2};
}

TEST(ErrorLines, CountByMethodAndColour) {
    test::MemoryWatch watch;
    // Dither methods: only colour with ditherMode 0 or 2 diffuses a plane.
    EXPECT_EQ(errorLinesOf(3, 0, 0).count, 0u);
    EXPECT_EQ(errorLinesOf(3, 1, 0).count, 1u);
    EXPECT_EQ(errorLinesOf(3, 1, 2).count, 1u);
    EXPECT_EQ(errorLinesOf(3, 1, 1).count, 0u);
    EXPECT_EQ(errorLinesOf(0, 1, 2).count, 1u);
    EXPECT_EQ(errorLinesOf(0, 1, 3).count, 0u);
    EXPECT_EQ(errorLinesOf(0, 0, 0).count, 0u);
    // Error diffusion, method 2 like method 1.
    EXPECT_EQ(errorLinesOf(1, 0, 0).count, 1u);
    EXPECT_EQ(errorLinesOf(1, 1, 1).count, 4u);
    EXPECT_EQ(errorLinesOf(2, 0, 1).count, 1u);
    EXPECT_EQ(errorLinesOf(2, 1, 0).count, 4u);
    EXPECT_EQ(errorLinesOf(3, 0, 0).blocks, 0);
}

TEST(ErrorLines, WidthThousandSharesOneBlock) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return v; });
    HtInstance ht(test::htSettings(1, 1, 1, 1000), lut.lut, test::HtBlocks{}, 1);
    ASSERT_EQ(ht.rc, RC_OK);
    const HtBuffer* line = &ht.ctx->buffers[kErrorLine0];
    EXPECT_EQ(line[0].size, 16960u);  // 4 x 4240
    ASSERT_NE(line[0].handle, nullptr);
    const auto* base = static_cast<const uint8_t*>(line[0].data);
    for (int k = 1; k < 4; ++k) {
        EXPECT_EQ(line[k].handle, nullptr) << "line " << k << " is a view";
        EXPECT_EQ(line[k].data, base + 4240 * k);
        EXPECT_EQ(line[k].size, 4240u);
    }
    for (uint32_t i = 0; i < 16960; ++i) ASSERT_EQ(base[i], 0) << "zero-filled at " << i;
    EXPECT_EQ(errorLine(*ht.ctx, 1), reinterpret_cast<const int32_t*>(base + 4240) + 30);
}

TEST(ErrorLines, WidthFourThousandStillOneBlock) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return v; });
    HtInstance ht(test::htSettings(1, 1, 1, 4000), lut.lut, test::HtBlocks{}, 1);
    ASSERT_EQ(ht.rc, RC_OK);
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0].size, 4u * 16240);  // 16240 <= 65535 / 4
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0 + 3].handle, nullptr);
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0 + 3].size, 16240u);
}

TEST(ErrorLines, WidthFortyOneHundredTakesFourBlocks) {
    test::MemoryWatch watch;
    const Lines lines = errorLinesOf(1, 1, 1, 4100);
    EXPECT_EQ(lines.count, 4u);
    EXPECT_EQ(lines.blocks, 4);
    test::MonoLut lut([](int v) { return v; });
    HtInstance ht(test::htSettings(1, 1, 1, 4100), lut.lut, test::HtBlocks{}, 1);
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(ht.ctx->buffers[kErrorLine0 + k].size, 16640u);
        EXPECT_NE(ht.ctx->buffers[kErrorLine0 + k].handle, nullptr);
    }
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0 + 4].data, nullptr) << "slot 5 untouched in phase 1";
}

TEST(ErrorLines, OneLineForMonochrome) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return v; });
    HtInstance ht(test::htSettings(1, 0, 1, 17), lut.lut, test::HtBlocks{}, 1);
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0].size, 17u * 4 + 240);
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0 + 1].data, nullptr);
}

TEST(ErrorLines, WidthBeyondThirtyTwoBitLineSizesRefused) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return v; });
    HtInstance ht(test::htSettings(1, 0, 1, 0x40000000), lut.lut, test::HtBlocks{}, 1);
    EXPECT_EQ(ht.rc, RC_ARG + 1);
    EXPECT_EQ(ht.ctx->buffers[kErrorLine0].data, nullptr);
}

}  // namespace
}  // namespace inkdot
