// A pattern choice as a table, for kernels that spread without a jump on the
// random part of the choice.
//
// Every family of pattern rules first tests the level (or the small amount):
// that picks a band, and it stays steady along a line. Within a band the
// pattern depends only on the dot decision and the matrix parity, which are
// as good as random, so a jump on them mispredicts about every other pixel.
// A table row holds the band's pattern for each of the four (dot, parity)
// columns; the kernel branches on the band and spreads the column's pattern
// with spreadRow, which has no jump.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "kernels/diffusion/spread_row.h"
#include "kernels/force_inline.h"

namespace inkdot {

template <size_t kBands>
struct PatternTable {
    PatternRow band[kBands];
};

// Column of a pattern row: no dot (0, 1) or dot (2, 3), each a form then b form.
constexpr unsigned patternColumn(bool dot, bool aForm) { return (dot ? 2u : 0u) + (aForm ? 0u : 1u); }
constexpr bool columnDot(unsigned column) { return column >= 2; }
constexpr bool columnAForm(unsigned column) { return (column & 1) == 0; }

// The table of a rule written on level bands (pattern_choice.h): row b holds
// rule(b, dot, aForm) for the four columns.
template <size_t kBands, class Rule>
constexpr PatternTable<kBands> bandTable(Rule rule) {
    PatternTable<kBands> table{};
    for (unsigned b = 0; b < kBands; ++b)
        for (unsigned c = 0; c < 4; ++c) table.band[b].column[c] = rule(b, columnDot(c), columnAForm(c));
    return table;
}

// The same with the pixels without a dot in a row of their own (row 0) in
// front of the level bands, for rules that test the dot first. A row never
// meets the other dot decision, so its columns for that repeat the ones it
// meets: spreadRow then does only the work of the patterns the row can use.
template <size_t kBands, class Rule>
constexpr PatternTable<1 + kBands> noDotFirstTable(Rule rule) {
    PatternTable<1 + kBands> table{};
    for (unsigned c = 0; c < 4; ++c) {
        table.band[0].column[c] = rule(0, false, columnAForm(c));
        for (unsigned b = 0; b < kBands; ++b) table.band[1 + b].column[c] = rule(b, true, columnAForm(c));
    }
    return table;
}

namespace detail {

template <const auto& kTable, size_t... B>
INKDOT_FORCE_INLINE void spreadByBand(std::index_sequence<B...>, unsigned band, unsigned column, int32_t* cell,
                                      int32_t err, int32_t& carry) {
    (void)((band == B && (spreadRow<kTable.band[B]>(column, cell, err, carry), true)) || ...);
}

}  // namespace detail

// Spreads err with kTable.band[band].column[column]: a branch on the band,
// none on the column.
template <const auto& kTable>
INKDOT_FORCE_INLINE void spreadByTable(unsigned band, unsigned column, int32_t* cell, int32_t err, int32_t& carry) {
    detail::spreadByBand<kTable>(std::make_index_sequence<std::size(kTable.band)>{}, band, column, cell, err, carry);
}

}  // namespace inkdot
