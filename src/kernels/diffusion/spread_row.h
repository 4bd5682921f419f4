// Spreading with one of a few patterns without a jump.
//
// A pattern row names the pattern of each of four columns; the kernels pick
// the row by the level (steady along a line) and the column by the dot
// decision and the matrix parity (as good as random: a jump on them
// mispredicts about every other pixel). spreadRow spreads with the pattern
// of the column given at run time without branching on it: per cell, the
// weights of the row's patterns are compared at compile time; where all
// columns agree the cell gets weight x err as spread<P> gives it, elsewhere
// each weight takes err masked to the columns that carry it. The work is the
// union of the row's taps and a few masks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

#include "halftone/ht_context.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/force_inline.h"

namespace inkdot {

// The pattern types in the order of Pattern, for patterns named by value at
// compile time.
using PatternTypes = std::tuple<patterns::G0, patterns::G1, patterns::G2a, patterns::G2b, patterns::G3, patterns::G4a,
                                patterns::G4b, patterns::G5a, patterns::G5b, patterns::H0a, patterns::H0b, patterns::H1,
                                patterns::H2, patterns::H3, patterns::H4, patterns::H5, patterns::Y0, patterns::Y1,
                                patterns::Y2, patterns::Y3>;
static_assert(std::tuple_size_v<PatternTypes> == static_cast<size_t>(Pattern::Y3) + 1);
template <Pattern P>
using PatternType = std::tuple_element_t<static_cast<size_t>(P), PatternTypes>;

struct PatternRow {
    Pattern column[4];
};

namespace detail {

// Weight of pattern P's taps at `offset` of one line, full or half taps.
template <class P>
constexpr int tapWeight(bool nextLine, int offset, bool half) {
    int weight = 0;
    auto add = [&](const auto& taps) {
        for (const Tap& t : taps)
            if (t.offset == offset && t.half == half) weight += t.weight;
    };
    if (nextLine) add(P::nextLine);
    else add(P::thisLine);
    return weight;
}

// f(P{}) for the type P of pattern p, in constant expressions.
template <class F>
constexpr int withPatternType(Pattern p, F f) {
    return [&]<size_t... I>(std::index_sequence<I...>) {
        int result = 0;
        ((I == static_cast<size_t>(p) ? (result = f(std::tuple_element_t<I, PatternTypes>{}), 0) : 0), ...);
        return result;
    }(std::make_index_sequence<std::tuple_size_v<PatternTypes>>{});
}

constexpr int tapWeight(Pattern p, bool nextLine, int offset, bool half) {
    return withPatternType(p, [&](auto pattern) { return tapWeight<decltype(pattern)>(nextLine, offset, half); });
}

// wellFormed for every pattern of a row: spreadRow looks only at the cells
// within the margin and relies on the one weight at x.
constexpr bool wellFormed(const PatternRow& row) {
    for (Pattern p : row.column)
        if (!withPatternType(p, [](auto pattern) { return static_cast<int>(inkdot::wellFormed<decltype(pattern)>()); }))
            return false;
    return true;
}

// One cell of a row: each distinct weight with the columns that carry it.
struct WeightGroup {
    int weight;
    unsigned columns;  // bit c: column c
    bool half;
};
struct CellGroups {
    WeightGroup group[8];  // at most four columns, full and half
    size_t count;
};

constexpr CellGroups cellGroups(const PatternRow& row, bool nextLine, int offset) {
    CellGroups cell{};
    for (bool half : {false, true}) {
        for (unsigned c = 0; c < 4; ++c) {
            const int weight = tapWeight(row.column[c], nextLine, offset, half);
            if (weight == 0) continue;
            size_t g = 0;
            while (g < cell.count && (cell.group[g].weight != weight || cell.group[g].half != half)) ++g;
            if (g == cell.count) cell.group[cell.count++] = {weight, 0, half};
            cell.group[g].columns |= 1u << c;
        }
    }
    return cell;
}

// value where the pixel's column is among kColumns, else 0, without a jump.
template <unsigned kColumns>
INKDOT_FORCE_INLINE int32_t forColumns(unsigned column, int32_t value) {
    if constexpr (kColumns == 0xF) {
        return value;
    } else {
        return value & -static_cast<int32_t>((kColumns >> column) & 1);
    }
}

// The amount that one cell of the row gets for the pixel's column.
template <PatternRow kRow, bool kNextLine, int kOffset, size_t... G>
INKDOT_FORCE_INLINE int32_t rowAmount(std::index_sequence<G...>, [[maybe_unused]] unsigned column,
                                      [[maybe_unused]] int32_t err, [[maybe_unused]] int32_t half) {
    constexpr CellGroups kCell = cellGroups(kRow, kNextLine, kOffset);
    return (0 + ... +
            (kCell.group[G].weight * forColumns<kCell.group[G].columns>(column, kCell.group[G].half ? half : err)));
}

template <PatternRow kRow, bool kNextLine, int kOffset>
INKDOT_FORCE_INLINE int32_t rowAmount(unsigned column, int32_t err, int32_t half) {
    constexpr size_t kGroups = cellGroups(kRow, kNextLine, kOffset).count;
    return rowAmount<kRow, kNextLine, kOffset>(std::make_index_sequence<kGroups>{}, column, err, half);
}

// With `ahead`, the cells at x + 1 and x + 2 are its registers (spreadAhead).
template <PatternRow kRow, int kOffset>
INKDOT_FORCE_INLINE void rowThisLine(int32_t* cell, unsigned column, int32_t err, int32_t half,
                                     CellsAhead* ahead) {
    if constexpr (cellGroups(kRow, false, kOffset).count != 0) {
        const int32_t amount = rowAmount<kRow, false, kOffset>(column, err, half);
        if (ahead != nullptr && kOffset == 1) ahead->next += amount;
        else if (ahead != nullptr && kOffset == 2) ahead->afterNext += amount;
        else cell[kOffset] += amount;
    }
}

// Next line: as nextLineTap, the cell at x is overwritten (every pattern has
// a weight there) and the weight at x + 1 goes to the carry.
template <PatternRow kRow, int kOffset>
INKDOT_FORCE_INLINE void rowNextLine(int32_t* cell, unsigned column, int32_t err, int32_t half, int32_t carry,
                                     int32_t& nextCarry) {
    if constexpr (kOffset == 0) {
        cell[0] = rowAmount<kRow, true, 0>(column, err, half) + carry;
    } else if constexpr (kOffset == 1) {
        nextCarry = rowAmount<kRow, true, 1>(column, err, half);
    } else if constexpr (cellGroups(kRow, true, kOffset).count != 0) {
        cell[kOffset] += rowAmount<kRow, true, kOffset>(column, err, half);
    }
}

template <PatternRow kRow, int... O>
INKDOT_FORCE_INLINE void rowThisLineCells(std::integer_sequence<int, O...>, int32_t* cell, unsigned column, int32_t err,
                                          int32_t half, CellsAhead* ahead) {
    (rowThisLine<kRow, O + 1>(cell, column, err, half, ahead), ...);
}

template <PatternRow kRow, int... O>
INKDOT_FORCE_INLINE void rowNextLineCells(std::integer_sequence<int, O...>, int32_t* cell, unsigned column, int32_t err,
                                          int32_t half, int32_t carry, int32_t& nextCarry) {
    (rowNextLine<kRow, O - static_cast<int>(kErrorLineMargin)>(cell, column, err, half, carry, nextCarry), ...);
}

}  // namespace detail

// Spreads err by the pattern kRow.column[column] (column 0..3), as spread<P>
// does with that pattern, or as spreadAhead<P> does with `ahead` given.
// Every tap lies within the error line's margin (wellFormed), so the cells
// looked at are those.
template <PatternRow kRow>
INKDOT_FORCE_INLINE void spreadRow(unsigned column, int32_t* cell, int32_t err, int32_t& carry,
                                   CellsAhead* ahead = nullptr) {
    static_assert(detail::wellFormed(kRow));
    constexpr int kReach = static_cast<int>(kErrorLineMargin);
    const int32_t half = err >> 1;  // arithmetic shift, as in spread<P>
    detail::rowThisLineCells<kRow>(std::make_integer_sequence<int, kReach>{}, cell, column, err, half, ahead);
    int32_t nextCarry = 0;
    detail::rowNextLineCells<kRow>(std::make_integer_sequence<int, kReach + 2>{}, cell, column, err, half, carry,
                                   nextCarry);
    carry = nextCarry;
}

}  // namespace inkdot
