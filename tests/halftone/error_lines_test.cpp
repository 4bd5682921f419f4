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
    // {method, colourMode, ditherMode, lines}. Dither methods: only colour with
    // ditherMode 0 or 2 diffuses a plane. Error diffusion, method 2 like method 1.
    const uint32_t rows[][4] = {{3, 0, 0, 0}, {3, 1, 0, 1}, {3, 1, 2, 1}, {3, 1, 1, 0}, {0, 1, 2, 1}, {0, 1, 3, 0},
                                {0, 0, 0, 0}, {1, 0, 0, 1}, {1, 1, 1, 4}, {2, 0, 1, 1}, {2, 1, 0, 4}};
    for (const auto& r : rows) EXPECT_EQ(errorLinesOf(r[0], r[1], r[2]).count, r[3]) << r[0] << "/" << r[1] << "/" << r[2];
    EXPECT_EQ(errorLinesOf(3, 0, 0).blocks, 0);
}

TEST(ErrorLines, SizesAndBlocksByWidth) {
    // Four colour lines share one block while it stays within 65535 bytes;
    // wider lines take a block each. A line holds the width and 60 cells.
    const struct { uint32_t colourMode, width, lineBytes; bool shared; } cases[] = {
        {1, 1000, 4240, true}, {1, 4000, 16240, true}, {1, 4100, 16640, false}, {0, 17, 17 * 4 + 240, false}};
    for (const auto& c : cases) {
        test::MemoryWatch watch;
        test::MonoLut lut([](int v) { return v; });
        HtInstance ht(test::htSettings(1, c.colourMode, 1, c.width), lut.lut, test::HtBlocks{}, 1);
        ASSERT_EQ(ht.rc, RC_OK);
        const HtBuffer* line = &ht.ctx->buffers[kErrorLine0];
        const uint32_t lines = c.colourMode ? 4 : 1;
        EXPECT_EQ(watch.seam().liveBlocks, 2 + (c.shared ? 1 : lines)) << c.width << ": record, replicated line, lines";
        EXPECT_EQ(line[0].size, c.shared ? 4 * c.lineBytes : c.lineBytes) << c.width;
        const auto* base = static_cast<const uint8_t*>(line[0].data);
        for (uint32_t k = 1; k < lines; ++k) {
            EXPECT_EQ(line[k].handle == nullptr, c.shared) << c.width << " line " << k << " is a view";
            EXPECT_EQ(line[k].size, c.lineBytes);
            if (c.shared) {
                EXPECT_EQ(line[k].data, base + c.lineBytes * k);
            }
        }
        EXPECT_EQ(line[lines].data, nullptr) << "slot behind the lines untouched in phase 1";
        for (uint32_t i = 0; i < line[0].size; ++i) ASSERT_EQ(base[i], 0) << "zero-filled at " << i;
        if (c.shared) {
            EXPECT_EQ(errorLine(*ht.ctx, 1), reinterpret_cast<const int32_t*>(base + c.lineBytes) + 30);
        }
    }
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
