// spreadRow (the pattern of a run-time column, spread without a jump) must
// leave exactly what spread() leaves with that column's pattern.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/ed1/ed1_colour_run.h"
#include "kernels/diffusion/spread_row.h"

namespace inkdot {
namespace {

// A line of random cells with room for the widest reach on both sides; the
// pixel's column is cells[kX].
constexpr int kX = 40;

std::vector<int32_t> randomLine(std::mt19937& rng) {
    std::uniform_int_distribution<int32_t> value(-5000, 5000);
    std::vector<int32_t> line(100);
    for (int32_t& c : line) c = value(rng);
    return line;
}

template <PatternRow kRow>
void expectRowMatchesSpread(std::mt19937& rng) {
    std::uniform_int_distribution<int32_t> errs(-9000, 9000);
    for (unsigned column = 0; column < 4; ++column) {
        for (int trial = 0; trial < 20; ++trial) {
            const int32_t err = trial == 0 ? -5 : trial == 1 ? 0 : errs(rng);  // odd negatives halve downwards
            std::vector<int32_t> expected = randomLine(rng);
            std::vector<int32_t> actual = expected;
            int32_t expectedCarry = errs(rng);
            int32_t actualCarry = expectedCarry;
            spread(kRow.column[column], expected.data() + kX, err, expectedCarry);
            spreadRow<kRow>(column, actual.data() + kX, err, actualCarry);
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

TEST(SpreadRow, EveryColourTableRowSpreadsLikeItsColumnsPattern) {
    std::mt19937 rng(11);
    expectTableRowsMatchSpread<GeneralColourFamily>(rng);
    expectTableRowsMatchSpread<Colour1440x720Family>(rng);
    expectTableRowsMatchSpread<DoubleYColourFamily>(rng);
}

TEST(SpreadRow, RowsOfUnrelatedPatternsAndHalfTaps) {
    std::mt19937 rng(12);
    // Four different patterns, H5's half taps among them, and a row of one pattern.
    expectRowMatchesSpread<PatternRow{{Pattern::H5, Pattern::G5a, Pattern::Y0, Pattern::H0b}}>(rng);
    expectRowMatchesSpread<PatternRow{{Pattern::G1, Pattern::H5, Pattern::Y3, Pattern::G4b}}>(rng);
    expectRowMatchesSpread<PatternRow{{Pattern::H5, Pattern::H5, Pattern::H5, Pattern::H5}}>(rng);
}

}  // namespace
}  // namespace inkdot
