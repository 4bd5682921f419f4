// The spread rows of the two-bit error diffusion: a row spread without a
// jump leaves what the run-time pattern of its column leaves.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/diffusion/spread_row.h"
#include "kernels/ed2/ed2_pattern_choice.h"

namespace inkdot {
namespace {

// spreadRow leaves what spread<P> leaves with the column's pattern P, and
// with the two cells ahead in registers what spreadAhead<P> leaves, over
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
            const bool withAhead = trial % 2 == 1;
            CellsAhead expectedAhead{value(rng), value(rng)}, actualAhead = expectedAhead;
            [&]<unsigned... C>(std::integer_sequence<unsigned, C...>) {
                auto spreadColumn = [&]<class P>() {
                    if (withAhead) spreadAhead<P>(expected.data() + 40, err, expectedCarry, expectedAhead);
                    else spread<P>(expected.data() + 40, err, expectedCarry);
                };
                ((column == C ? spreadColumn.template operator()<PatternType<kRow.column[C]>>() : void()), ...);
            }(std::make_integer_sequence<unsigned, 4>{});
            spreadRow<kRow>(column, actual.data() + 40, err, actualCarry, withAhead ? &actualAhead : nullptr);
            ASSERT_EQ(actual, expected) << "column " << column << ", err " << err;
            ASSERT_EQ(actualCarry, expectedCarry) << "column " << column << ", err " << err;
            ASSERT_EQ(actualAhead.next, expectedAhead.next) << "column " << column << ", err " << err;
            ASSERT_EQ(actualAhead.afterNext, expectedAhead.afterNext) << "column " << column << ", err " << err;
        }
    }
}

template <auto kTable>
void expectTableRowsMatchSpread(std::mt19937& rng) {
    [&]<size_t... B>(std::index_sequence<B...>) {
        (expectRowMatchesSpread<kTable.band[B]>(rng), ...);
    }(std::make_index_sequence<std::size(kTable.band)>{});
}

TEST(SpreadRow, EveryRowSpreadsLikeItsColumnsPattern) {
    std::mt19937 rng(11);
    expectTableRowsMatchSpread<ed2::GeneralFamily::kTable>(rng);
    expectTableRowsMatchSpread<ed2::Family1440x720::kTable>(rng);
    expectTableRowsMatchSpread<ed2::DoubleYFamily::kTable>(rng);
    expectRowMatchesSpread<PatternRow{{Pattern::H5, Pattern::G5a, Pattern::Y0, Pattern::H0b}}>(rng);
}

}  // namespace
}  // namespace inkdot
