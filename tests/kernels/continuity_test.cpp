#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kernels/diffusion/continuity.h"
#include "support/hand_context.h"

namespace inkdot {
namespace {

// The columns the continuity rule clears, case by case, on a line 500 wide;
// the run state it leaves is the run's own line and end.
TEST(Continuity, ColumnsClearedByCase) {
    struct Case {
        const char* what;
        uint32_t prevLine, prevEnd, line, start;
        uint32_t from, to;
    };
    const Case cases[] = {
        {"line 0 after creation", 0, 0, 0, 0, 0, 0},
        {"line 1 after creation", 0, 0, 1, 0, 0, 0},
        {"a skipped line clears the whole line", 0, 0, 2, 0, 0, 500},
        {"line 15 after 14 clears up to its start", 14, 500, 15, 100, 0, 100},
        {"a second run on line 15 clears the gap", 15, 200, 15, 300, 200, 300},
        {"line 15 after a run that ended the line: from 0", 15, 500, 15, 100, 0, 100},
        {"line 16 clears behind the last run of 15", 15, 200, 16, 0, 200, 500},
        {"a run that ended line 15 hands over nothing", 15, 500, 16, 0, 0, 0},
        {"ordinary next line", 3, 500, 4, 0, 0, 0},
        {"a run continuing where the last ended", 15, 100, 15, 100, 0, 0},
        {"gaps matter only on band edges", 17, 100, 17, 200, 0, 0},
        {"going back is no case", 5, 10, 3, 0, 0, 0},
        {"line 0 after 0xFFFFFFFF opens a band", 0xFFFFFFFFu, 50, 0, 0, 50, 500},
    };
    for (const Case& c : cases) {
        HtContext ctx{};
        ctx.width = 500;
        ctx.prevLineNo = c.prevLine;
        ctx.prevRunEnd = c.prevEnd;
        HtRun run{};
        run.lineNo = c.line;
        run.startX = c.start;
        run.count = 10;
        const ColumnRange r = continuityRange(ctx, run);
        EXPECT_EQ(r.to - r.from, c.to - c.from) << c.what;
        if (c.to != c.from) EXPECT_EQ(r.from, c.from) << c.what;
        EXPECT_EQ(ctx.prevLineNo, c.line) << c.what;
        EXPECT_EQ(ctx.prevRunEnd, c.start + 10) << c.what;
    }
}

// Every error-diffusion kernel applies the rule to the lines it diffuses,
// even for an empty run, and leaves the margins and the other lines alone.
TEST(Continuity, EveryDiffusionKernelAppliesTheRule) {
    // Line 2 after creation (line 1 skipped) clears every column; line 15 after a
    // line 14 that reached the width, from column 20, clears columns 0..19.
    struct Case { uint32_t previousLine, previousEnd, line, startX, clearedTo; };
    const Case cases[] = {{0, 0, 2, 0, 64}, {14, 64, 15, 20, 20}};
    for (const test::KernelSetup& k : test::everyKernelSetup()) {
        if (k.method != 1) continue;
        for (const Case& c : cases) {
            test::HandContext h(k.settings());
            SCOPED_TRACE(testing::Message() << h.ready().kernel << ", line " << c.line);
            for (auto& l : h.errorLines) std::fill(l.begin(), l.end(), 7);
            h.ctx.prevLineNo = c.previousLine;
            h.ctx.prevRunEnd = c.previousEnd;
            std::vector<uint8_t> out(64, 0);
            ASSERT_EQ(h.run(nullptr, out.data(), 16, 0, 0, c.startX, c.line), RC_OK);
            for (unsigned l = 0; l < 4; ++l) {
                const bool diffused = l < (k.colourMode ? 3u : 1u);
                for (int x = -30; x < 94; ++x) {
                    const bool cleared = diffused && x >= 0 && x < static_cast<int>(c.clearedTo);
                    ASSERT_EQ(h.line(l)[x], cleared ? 0 : 7) << "line " << l << ", column " << x;
                }
            }
            EXPECT_EQ(h.ctx.prevLineNo, c.line);
        }
    }
}

}  // namespace
}  // namespace inkdot
