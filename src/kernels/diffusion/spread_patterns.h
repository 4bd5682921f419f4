// Spread patterns of the error-diffusion kernels.
//
// Weights are in 32nds of the error (cells hold 32 x error, so they are
// written unscaled). One error line serves both rows of the diffusion: cells
// right of x still hold this line's pending error, cells at and left of x
// already collect error for the next line. The next-line weight at x + 1
// cannot go to its cell yet (that cell still holds this line's error for the
// next pixel), so it travels in the carry register and lands when that pixel
// overwrites its own cell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <tuple>
#include <utility>

#include "halftone/ht_context.h"
#include "kernels/diffusion/error_cell.h"
#include "kernels/force_inline.h"

namespace inkdot {

struct Tap {
    int offset;         // column relative to x
    int weight;         // in 32nds
    bool half = false;  // H5's cells take err >> 1 instead of err
};

namespace patterns {

// General family.
struct G0 {
    static constexpr Tap thisLine[] = {{1, 8}, {2, 4}};
    static constexpr Tap nextLine[] = {{-2, 4}, {-1, 8}, {0, 8}};
};
struct G1 {
    static constexpr Tap thisLine[] = {{1, 8}, {2, 4}};
    static constexpr Tap nextLine[] = {{-2, 4}, {-1, 4}, {0, 8}, {1, 4}};
};
struct G2a {
    static constexpr Tap thisLine[] = {{1, 4}, {2, 4}, {3, 2}, {4, 2}, {5, 2}};
    static constexpr Tap nextLine[] = {{-4, 2}, {-3, 2}, {-2, 2}, {-1, 4}, {0, 4}, {1, 4}};
};
struct G2b {
    static constexpr Tap thisLine[] = {{1, 4}, {2, 4}, {3, 2}, {4, 2}};
    static constexpr Tap nextLine[] = {{-4, 2}, {-3, 2}, {-2, 2}, {-1, 4}, {0, 6}, {1, 4}};
};
struct G3 {
    static constexpr Tap thisLine[] = {{1, 3}, {2, 3}, {3, 3}, {4, 1}, {5, 1}, {6, 1}, {7, 1}};
    static constexpr Tap nextLine[] = {{-7, 1}, {-6, 1}, {-5, 2}, {-4, 2}, {-3, 2},
                                       {-2, 2}, {-1, 3}, {0, 3},  {1, 3}};
};
struct G4a {
    static constexpr Tap thisLine[] = {{1, 2}, {2, 2}, {3, 2}, {4, 2}, {5, 1}, {6, 1},
                                       {7, 1}, {8, 1}, {9, 1}, {10, 1}};
    static constexpr Tap nextLine[] = {{-10, 1}, {-9, 1}, {-8, 1}, {-7, 1}, {-6, 1}, {-5, 1},
                                       {-4, 2},  {-3, 2}, {-2, 2}, {-1, 2}, {0, 2},  {1, 2}};
};
struct G4b {
    static constexpr Tap thisLine[] = {{1, 2}, {2, 2}, {3, 2}, {4, 2}, {5, 1}, {6, 1},
                                       {7, 1}, {8, 1}, {9, 1}, {11, 1}};
    static constexpr Tap nextLine[] = {{-10, 1}, {-9, 1}, {-8, 1}, {-7, 1}, {-6, 1}, {-5, 1},
                                       {-4, 2},  {-3, 2}, {-2, 2}, {-1, 2}, {0, 2},  {1, 2}};
};
struct G5a {  // 30/32: the lightest band loses 2/32 of its error at every dot
    static constexpr Tap thisLine[] = {{1, 1}, {2, 1},  {3, 1},  {4, 1},  {5, 1},  {6, 1},  {7, 1},
                                       {8, 1}, {9, 1}, {10, 1}, {11, 1}, {12, 1}, {13, 1}, {14, 1}};
    static constexpr Tap nextLine[] = {{-15, 1}, {-13, 1}, {-12, 1}, {-11, 1}, {-10, 1}, {-9, 1},
                                       {-8, 1},  {-7, 1},  {-6, 1},  {-5, 1},  {-4, 1},  {-3, 1},
                                       {-2, 1},  {-1, 1},  {0, 1},   {1, 1}};
};
struct G5b {
    static constexpr Tap thisLine[] = {{1, 1}, {2, 1},  {3, 1},  {4, 1},  {5, 1},  {6, 1},  {7, 1},
                                       {8, 1}, {9, 1}, {10, 1}, {11, 1}, {12, 1}, {13, 1}, {14, 1}};
    static constexpr Tap nextLine[] = {{-14, 1}, {-13, 1}, {-12, 1}, {-11, 1}, {-10, 1}, {-9, 1},
                                       {-8, 1},  {-7, 1},  {-6, 1},  {-5, 1},  {-4, 1},  {-3, 1},
                                       {-2, 1},  {-1, 1},  {0, 1},   {1, 1}};
};

// 1440x720 family.
struct H0a {
    static constexpr Tap thisLine[] = {{1, 8}, {2, 4}};
    static constexpr Tap nextLine[] = {{-3, 4}, {-2, 4}, {-1, 4}, {0, 8}};
};
struct H0b {
    static constexpr Tap thisLine[] = {{1, 4}, {2, 4}, {3, 4}};
    static constexpr Tap nextLine[] = {{-2, 4}, {-1, 8}, {0, 8}};
};
struct H1 {
    static constexpr Tap thisLine[] = {{1, 4}, {2, 4}, {3, 2}, {4, 2}};
    static constexpr Tap nextLine[] = {{-4, 2}, {-3, 2}, {-2, 4}, {-1, 4}, {0, 4}, {1, 4}};
};
struct H2 {
    static constexpr Tap thisLine[] = {{1, 3}, {2, 3}, {3, 3}, {4, 2}, {5, 2}, {6, 1}, {7, 1}};
    static constexpr Tap nextLine[] = {{-7, 1}, {-6, 1}, {-5, 2}, {-4, 2}, {-3, 3}, {-2, 3}, {-1, 3}, {0, 2}};
};
struct H3 {
    static constexpr Tap thisLine[] = {{1, 2}, {2, 2}, {3, 2}, {4, 2}, {5, 2},
                                       {6, 1}, {7, 1}, {8, 1}, {9, 1}, {10, 1}};
    static constexpr Tap nextLine[] = {{-10, 1}, {-9, 1}, {-8, 1}, {-7, 1}, {-6, 1}, {-5, 2},
                                       {-4, 2},  {-3, 2}, {-2, 2}, {-1, 2}, {0, 2}};
};
struct H4 {
    static constexpr Tap thisLine[] = {{1, 2}, {2, 1},  {3, 1},  {4, 1},  {5, 1},  {6, 1},  {7, 1},
                                       {8, 1}, {9, 1}, {10, 1}, {11, 1}, {12, 1}, {13, 1}, {14, 1}};
    static constexpr Tap nextLine[] = {{-14, 1}, {-13, 1}, {-12, 1}, {-11, 1}, {-10, 1}, {-9, 1},
                                       {-8, 1},  {-7, 1},  {-6, 1},  {-5, 1},  {-4, 1},  {-3, 1},
                                       {-2, 1},  {-1, 2},  {0, 1},   {1, 1}};
};
struct H5 {  // the lightest band reaches 46 cells: 21 left, 23 right
    static constexpr Tap thisLine[] = {
        {1, 1},        {2, 1},        {3, 1},        {4, 1},        {5, 1},        {6, 1},
        {7, 1},        {8, 1},        {9, 1},        {10, 1, true}, {11, 1, true}, {12, 1, true},
        {13, 1, true}, {14, 1, true}, {15, 1, true}, {16, 1, true}, {17, 1, true}, {18, 1, true},
        {19, 1, true}, {20, 1, true}, {21, 1, true}, {22, 1, true}, {23, 1, true}};
    static constexpr Tap nextLine[] = {
        {-21, 1, true}, {-20, 1, true}, {-19, 1, true}, {-18, 1, true}, {-17, 1, true},
        {-16, 1, true}, {-15, 1, true}, {-14, 1, true}, {-13, 1, true}, {-12, 1, true},
        {-11, 1, true}, {-10, 1, true}, {-9, 1},        {-8, 1},        {-7, 1},
        {-6, 1},        {-5, 1},        {-4, 1},        {-3, 1},        {-2, 1},
        {-1, 1},        {0, 1, true},   {1, 1, true}};
};

// DoubleY family (G3 and G4 of the general family complete it).
struct Y0 {
    static constexpr Tap thisLine[] = {{1, 8}};
    static constexpr Tap nextLine[] = {{-1, 8}, {0, 16}};
};
struct Y1 {
    static constexpr Tap thisLine[] = {{1, 4}, {2, 4}};
    static constexpr Tap nextLine[] = {{-1, 8}, {0, 8}, {1, 8}};
};
struct Y2 {
    static constexpr Tap thisLine[] = {{1, 4}, {2, 2}};
    static constexpr Tap nextLine[] = {{-2, 2}, {-1, 4}, {0, 16}, {1, 4}};
};
struct Y3 {
    static constexpr Tap thisLine[] = {{1, 2}, {2, 2}, {3, 2}, {4, 2}};
    static constexpr Tap nextLine[] = {{-4, 2}, {-3, 2}, {-2, 2}, {-1, 4}, {0, 8}, {1, 6}};
};

}  // namespace patterns

// Total weight of a pattern in 64ths (a half cell counts 1, a full weight 2w).
template <class P>
constexpr int weightIn64ths() {
    int sum = 0;
    for (const Tap& t : P::thisLine) sum += t.half ? t.weight : 2 * t.weight;
    for (const Tap& t : P::nextLine) sum += t.half ? t.weight : 2 * t.weight;
    return sum;
}

// A pattern must put this line's weights right of x, the next line's around
// x with exactly one cell at x, and stay inside the error line's margins.
template <class P>
constexpr bool wellFormed() {
    int atX = 0;
    for (const Tap& t : P::thisLine)
        if (t.offset < 1 || t.offset > static_cast<int>(kErrorLineMargin)) return false;
    for (const Tap& t : P::nextLine) {
        if (t.offset > 1 || t.offset < -static_cast<int>(kErrorLineMargin)) return false;
        atX += t.offset == 0;
    }
    return atX == 1;
}

namespace detail {

template <Tap t>
inline void nextLineTap(int32_t* cell, int32_t err, int32_t half, int32_t carry, int32_t& nextCarry) {
    const int32_t amount = t.weight * (t.half ? half : err);
    if constexpr (t.offset < 0) {
        cell[t.offset] += amount;
    } else if constexpr (t.offset == 0) {
        cell[0] = amount + carry;  // overwritten: this pixel has already read its cell
    } else {
        nextCarry = amount;
    }
}

}  // namespace detail

// Spreads err from the cell of column x (`cell` points at it) as straight-line
// additions generated from the pattern's taps; updates the carry.
template <class P>
inline void spread(int32_t* cell, int32_t err, int32_t& carry) {
    static_assert(wellFormed<P>());
    const int32_t half = err >> 1;  // arithmetic shift: -5 gives -3
    [&]<size_t... I>(std::index_sequence<I...>) {
        ((cell[P::thisLine[I].offset] += P::thisLine[I].weight * (P::thisLine[I].half ? half : err)), ...);
    }(std::make_index_sequence<std::size(P::thisLine)>{});
    int32_t nextCarry = 0;  // patterns without a weight at x + 1 leave no carry
    [&]<size_t... I>(std::index_sequence<I...>) {
        (detail::nextLineTap<P::nextLine[I]>(cell, err, half, carry, nextCarry), ...);
    }(std::make_index_sequence<std::size(P::nextLine)>{});
    carry = nextCarry;
}

// Runtime choice among the patterns, for kernels whose rules pick one per pixel.
enum class Pattern : uint8_t { G0, G1, G2a, G2b, G3, G4a, G4b, G5a, G5b, H0a, H0b, H1, H2, H3, H4, H5, Y0, Y1, Y2, Y3 };

inline void spread(Pattern pattern, int32_t* cell, int32_t err, int32_t& carry) {
    using namespace patterns;
    switch (pattern) {
        case Pattern::G0: spread<G0>(cell, err, carry); break;
        case Pattern::G1: spread<G1>(cell, err, carry); break;
        case Pattern::G2a: spread<G2a>(cell, err, carry); break;
        case Pattern::G2b: spread<G2b>(cell, err, carry); break;
        case Pattern::G3: spread<G3>(cell, err, carry); break;
        case Pattern::G4a: spread<G4a>(cell, err, carry); break;
        case Pattern::G4b: spread<G4b>(cell, err, carry); break;
        case Pattern::G5a: spread<G5a>(cell, err, carry); break;
        case Pattern::G5b: spread<G5b>(cell, err, carry); break;
        case Pattern::H0a: spread<H0a>(cell, err, carry); break;
        case Pattern::H0b: spread<H0b>(cell, err, carry); break;
        case Pattern::H1: spread<H1>(cell, err, carry); break;
        case Pattern::H2: spread<H2>(cell, err, carry); break;
        case Pattern::H3: spread<H3>(cell, err, carry); break;
        case Pattern::H4: spread<H4>(cell, err, carry); break;
        case Pattern::H5: spread<H5>(cell, err, carry); break;
        case Pattern::Y0: spread<Y0>(cell, err, carry); break;
        case Pattern::Y1: spread<Y1>(cell, err, carry); break;
        case Pattern::Y2: spread<Y2>(cell, err, carry); break;
        case Pattern::Y3: spread<Y3>(cell, err, carry); break;
    }
}

// The pattern types in the order of Pattern, for patterns named by value at
// compile time.
using PatternTypes = std::tuple<patterns::G0, patterns::G1, patterns::G2a, patterns::G2b, patterns::G3, patterns::G4a,
                                patterns::G4b, patterns::G5a, patterns::G5b, patterns::H0a, patterns::H0b, patterns::H1,
                                patterns::H2, patterns::H3, patterns::H4, patterns::H5, patterns::Y0, patterns::Y1,
                                patterns::Y2, patterns::Y3>;
static_assert(std::tuple_size_v<PatternTypes> == static_cast<size_t>(Pattern::Y3) + 1);

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

template <PatternRow kRow, int kOffset>
INKDOT_FORCE_INLINE void rowThisLine(int32_t* cell, unsigned column, int32_t err, int32_t half) {
    if constexpr (cellGroups(kRow, false, kOffset).count != 0)
        cell[kOffset] += rowAmount<kRow, false, kOffset>(column, err, half);
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
                                          int32_t half) {
    (rowThisLine<kRow, O + 1>(cell, column, err, half), ...);
}

template <PatternRow kRow, int... O>
INKDOT_FORCE_INLINE void rowNextLineCells(std::integer_sequence<int, O...>, int32_t* cell, unsigned column, int32_t err,
                                          int32_t half, int32_t carry, int32_t& nextCarry) {
    (rowNextLine<kRow, O - static_cast<int>(kErrorLineMargin)>(cell, column, err, half, carry, nextCarry), ...);
}

}  // namespace detail

// Spreads err by the pattern kRow.column[column] (column 0..3), as
// spread(kRow.column[column], cell, err, carry) does. Every tap lies within
// the error line's margin (wellFormed), so the cells looked at are those.
template <PatternRow kRow>
INKDOT_FORCE_INLINE void spreadRow(unsigned column, int32_t* cell, int32_t err, int32_t& carry) {
    static_assert(detail::wellFormed(kRow));
    constexpr int kReach = static_cast<int>(kErrorLineMargin);
    const int32_t half = err >> 1;  // arithmetic shift, as in spread<P>
    detail::rowThisLineCells<kRow>(std::make_integer_sequence<int, kReach>{}, cell, column, err, half);
    int32_t nextCarry = 0;
    detail::rowNextLineCells<kRow>(std::make_integer_sequence<int, kReach + 2>{}, cell, column, err, half, carry,
                                   nextCarry);
    carry = nextCarry;
}

}  // namespace inkdot
