// The shared parts of the kernels on hand-worked cases: the continuity rule,
// the node neighbour test, and the spread patterns
// (each delivers its weight; a row spread without a jump equals the pattern
// of its column).
#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <vector>

#include "kernels/diffusion/continuity.h"
#include "kernels/diffusion/spread_row.h"
#include "kernels/ed1/ed1_colour_run.h"
#include "kernels/grid_node.h"

namespace inkdot {
namespace {

// The columns cleared on a line 500 wide; the run state left is the run's own
// line and end. Bands are 16 lines: 31 is a band's last line, 32 a first.
TEST(Continuity, ColumnsClearedByCase) {
    struct Case {
        const char* what;
        uint32_t prevLine, prevEnd, line, start, from, to;
    };
    const Case cases[] = {
        {"line 1 after creation", 0, 0, 1, 0, 0, 0},
        {"a skipped line clears the whole line", 0, 0, 2, 0, 0, 500},
        {"line 31 after 30 clears up to its start", 30, 500, 31, 100, 0, 100},
        {"a second run on line 31 clears the gap", 31, 200, 31, 300, 200, 300},
        {"line 31 after a run that ended the line: from 0", 31, 500, 31, 100, 0, 100},
        {"line 32 clears behind the last run of 31", 31, 200, 32, 0, 200, 500},
        {"a run that ended line 31 hands over nothing", 31, 500, 32, 0, 0, 0},
        {"a run continuing where the last ended", 31, 100, 31, 100, 0, 0},
        {"gaps matter only on band edges", 17, 100, 17, 200, 0, 0},
        {"going back is no case", 5, 10, 3, 0, 0, 0},
        {"line 0 after 0xFFFFFFFF opens a band", 0xFFFFFFFFu, 50, 0, 0, 50, 500},
    };
    for (const Case& c : cases) {
        HtContext ctx{};
        ctx.width = 500;
        ctx.prevLineNo = c.prevLine;
        ctx.prevRunEnd = c.prevEnd;
        const ColumnRange r = continuityRange(ctx, HtRun{nullptr, nullptr, 0, 0, 10, c.start, c.line, 0});
        EXPECT_EQ(r.to - r.from, c.to - c.from) << c.what;
        if (c.to != c.from) {
            EXPECT_EQ(r.from, c.from) << c.what;
        }
        EXPECT_EQ(ctx.prevLineNo, c.line) << c.what;
        EXPECT_EQ(ctx.prevRunEnd, c.start + 10) << c.what;
    }
}

TEST(GridNode, NeighbourMaskExamples) {
    EXPECT_EQ(neighbourMask(packNodes(5, 5, 5), packNodes(4, 6, 5)), 0xFFFFFFFFu);
    EXPECT_EQ(neighbourMask(packNodes(5, 5, 5), packNodes(5, 5, 7)), 0u);  // one axis two nodes away
    EXPECT_EQ(neighbourMask(packNodes(0, 0, 0), kNoNodes), 0u);            // the first pixel of a run
    EXPECT_EQ(neighbourMask(packNodes(256, 0, 256), packNodes(255, 1, 256)), 0xFFFFFFFFu);
}

// Each pattern delivers its whole weight in 64ths (G5 30/32), the +1 weight
// in the carry, and the run-time choice names the same pattern.
template <class P>
void expectPattern(Pattern pattern, int weight = 64) {
    std::vector<int32_t> line(100, 0), runtime(100, 0);
    int32_t carry = 7, runtimeCarry = 7;
    spread<P>(line.data() + 40, 10, carry);
    EXPECT_EQ(std::accumulate(line.begin(), line.end(), 0) + carry, weight * 10 / 2 + 7) << static_cast<int>(pattern);
    spread(pattern, runtime.data() + 40, 10, runtimeCarry);
    EXPECT_EQ(runtime, line) << static_cast<int>(pattern);
    EXPECT_EQ(runtimeCarry, carry);
}

TEST(SpreadPatterns, EveryPatternDeliversItsWeightAndIsNamedAtRunTime) {
    using namespace patterns;
    expectPattern<G0>(Pattern::G0), expectPattern<G1>(Pattern::G1), expectPattern<G2a>(Pattern::G2a);
    expectPattern<G2b>(Pattern::G2b), expectPattern<G3>(Pattern::G3), expectPattern<G4a>(Pattern::G4a);
    expectPattern<G4b>(Pattern::G4b), expectPattern<G5a>(Pattern::G5a, 60), expectPattern<G5b>(Pattern::G5b, 60);
    expectPattern<H0a>(Pattern::H0a), expectPattern<H0b>(Pattern::H0b), expectPattern<H1>(Pattern::H1);
    expectPattern<H2>(Pattern::H2), expectPattern<H3>(Pattern::H3), expectPattern<H4>(Pattern::H4);
    expectPattern<H5>(Pattern::H5), expectPattern<Y0>(Pattern::Y0), expectPattern<Y1>(Pattern::Y1);
    expectPattern<Y2>(Pattern::Y2), expectPattern<Y3>(Pattern::Y3);
}

// spreadRow leaves what spread() leaves with the column's pattern, over
// random lines and errors (-5: odd negatives halve downwards).
template <PatternRow kRow>
void expectRowMatchesSpread(std::mt19937& rng) {
    std::uniform_int_distribution<int32_t> value(-9000, 9000);
    for (unsigned column = 0; column < 4; ++column) {
        for (int trial = 0; trial < 20; ++trial) {
            const int32_t err = trial == 0 ? -5 : value(rng);
            std::vector<int32_t> expected(100), actual;
            for (int32_t& c : expected) c = value(rng);
            actual = expected;
            int32_t expectedCarry = value(rng), actualCarry = expectedCarry;
            spread(kRow.column[column], expected.data() + 40, err, expectedCarry);
            spreadRow<kRow>(column, actual.data() + 40, err, actualCarry);
            ASSERT_EQ(actual, expected) << "column " << column << ", err " << err;
            ASSERT_EQ(actualCarry, expectedCarry) << "column " << column << ", err " << err;
        }
    }
}

template <class Family>
void expectTableRowsMatchSpread(std::mt19937& rng) {
    [&]<size_t... B>(std::index_sequence<B...>) {
        (expectRowMatchesSpread<Family::kTable.band[B]>(rng), ...);
    }(std::make_index_sequence<std::size(Family::kTable.band)>{});
}

TEST(SpreadRow, EveryRowSpreadsLikeItsColumnsPattern) {
    std::mt19937 rng(11);
    expectTableRowsMatchSpread<GeneralColourFamily>(rng);
    expectTableRowsMatchSpread<Colour1440x720Family>(rng);
    expectTableRowsMatchSpread<DoubleYColourFamily>(rng);
    expectRowMatchesSpread<PatternRow{{Pattern::H5, Pattern::G5a, Pattern::Y0, Pattern::H0b}}>(rng);
    expectRowMatchesSpread<PatternRow{{Pattern::G0, Pattern::H0a, Pattern::H0b, Pattern::Y0}}>(rng);  // no carry
}

}  // namespace
}  // namespace inkdot
