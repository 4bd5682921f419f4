#include <gtest/gtest.h>

#include <vector>

#include "kernels/diffusion/continuity.h"
#include "support/hand_context.h"

namespace inkdot {
namespace {

// A context with one error line of `width` columns, every cell set to 1.
struct Line {
    HtContext ctx{};
    std::vector<int32_t> cells;
    explicit Line(uint32_t width) : cells(width + 60, 1) {
        ctx.width = width;
        ctx.buffers[kErrorLine0].data = cells.data();
    }
    void previous(uint32_t line, uint32_t end) { ctx.prevLineNo = line; ctx.prevRunEnd = end; }
    ColumnRange run(uint32_t line, uint32_t start, uint32_t count) {
        HtRun r{};
        r.lineNo = line;
        r.startX = start;
        r.count = count;
        const ColumnRange range = continuityRange(ctx, r);
        clearColumns(errorLine(ctx, 0), range);
        return range;
    }
    int cleared() const { int n = 0; for (int32_t c : cells) n += c == 0; return n; }
};

TEST(Continuity, FirstCallAfterCreation) {
    Line a(500);
    EXPECT_EQ(a.run(0, 0, 10).to, 0u);  // line 0 follows "line 0": nothing cleared
    Line b(500);
    b.run(1, 0, 10);
    EXPECT_EQ(b.cleared(), 0);
    Line c(500);
    const ColumnRange r = c.run(2, 0, 10);  // line 1 was skipped
    EXPECT_EQ(r.from, 0u);
    EXPECT_EQ(r.to, 500u);
    EXPECT_EQ(c.cleared(), 500);
    EXPECT_EQ(c.cells[29], 1) << "margins are never cleared";
    EXPECT_EQ(c.cells[530], 1);
    EXPECT_EQ(c.ctx.prevLineNo, 2u);
    EXPECT_EQ(c.ctx.prevRunEnd, 10u);
}

TEST(Continuity, BandEdges) {
    Line a(500);
    a.previous(14, 500);
    ColumnRange r = a.run(15, 100, 50);  // line 15 after 14, starting at 100
    EXPECT_EQ(r.from, 0u);
    EXPECT_EQ(r.to, 100u);

    Line b(500);
    b.previous(15, 200);
    r = b.run(15, 300, 10);  // a second run on line 15 after a gap
    EXPECT_EQ(r.from, 200u);
    EXPECT_EQ(r.to, 300u);

    Line c(500);
    c.previous(15, 200);
    r = c.run(16, 0, 10);  // line 16 after a line 15 whose last run ended at 200
    EXPECT_EQ(r.from, 200u);
    EXPECT_EQ(r.to, 500u);
    EXPECT_EQ(c.cleared(), 300);
}

TEST(Continuity, RunEndingAtWidthCountsAsZero) {
    Line a(500);
    a.previous(15, 500);
    EXPECT_EQ(a.run(16, 0, 10).to, 0u);  // case 4 needs a nonzero end
    Line b(500);
    b.previous(15, 500);
    const ColumnRange r = b.run(15, 100, 10);  // case 3 from column 0
    EXPECT_EQ(r.from, 0u);
    EXPECT_EQ(r.to, 100u);
}

TEST(Continuity, OrdinaryNeighboursClearNothing) {
    Line a(500);
    a.previous(3, 500);
    EXPECT_EQ(a.run(4, 0, 500).to, 0u);
    a.previous(15, 100);
    EXPECT_EQ(a.run(15, 100, 10).to, 0u);  // continues where the last run ended
    a.previous(17, 100);
    EXPECT_EQ(a.run(17, 200, 10).to, 0u);  // gaps matter only on band edges
    a.previous(5, 10);
    EXPECT_EQ(a.run(3, 0, 10).to, 0u);      // going back is no case either
    EXPECT_EQ(a.cleared(), 0);
}

TEST(Continuity, LineCounterWraps) {
    Line a(100);
    a.previous(0xFFFFFFFFu, 50);
    const ColumnRange r = a.run(0, 0, 10);  // line 0 follows 0xFFFFFFFF and opens a band
    EXPECT_EQ(r.from, 50u);
    EXPECT_EQ(r.to, 100u);
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
