#include <gtest/gtest.h>

#include "kernels/diffusion/continuity.h"

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
        if (c.to != c.from) {
            EXPECT_EQ(r.from, c.from) << c.what;
        }
        EXPECT_EQ(ctx.prevLineNo, c.line) << c.what;
        EXPECT_EQ(ctx.prevRunEnd, c.start + 10) << c.what;
    }
}

}  // namespace
}  // namespace inkdot
