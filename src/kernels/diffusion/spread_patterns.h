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
#include <utility>

#include "halftone/ht_context.h"  // kErrorLineMargin
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

// The pending error of the two cells right of x, for a pixel loop that keeps
// its error chain in registers: `next` is cell x + 1's whole pending error
// (its memory cell is stale), `afterNext` gathers what this pixel adds to
// cell x + 2, whose memory cell holds the rest. A spread to either would
// otherwise be stored and read back at once by the next pixel, and on this
// chain every cycle of that round trip counts.
struct CellsAhead {
    int32_t next;
    int32_t afterNext;
};

// spread<P> with the two cells right of x in `ahead` instead of memory.
template <class P>
INKDOT_FORCE_INLINE void spreadAhead(int32_t* cell, int32_t err, int32_t& carry, CellsAhead& ahead) {
    static_assert(wellFormed<P>());
    const int32_t half = err >> 1;
    auto thisLineTap = [&]<Tap t>() {
        const int32_t amount = t.weight * (t.half ? half : err);
        if constexpr (t.offset == 1) ahead.next += amount;
        else if constexpr (t.offset == 2) ahead.afterNext += amount;
        else cell[t.offset] += amount;
    };
    [&]<size_t... I>(std::index_sequence<I...>) {
        (thisLineTap.template operator()<P::thisLine[I]>(), ...);
    }(std::make_index_sequence<std::size(P::thisLine)>{});
    int32_t nextCarry = 0;
    [&]<size_t... I>(std::index_sequence<I...>) {
        (detail::nextLineTap<P::nextLine[I]>(cell, err, half, carry, nextCarry), ...);
    }(std::make_index_sequence<std::size(P::nextLine)>{});
    carry = nextCarry;
}

// The patterns by name, for the rules that choose one per pixel; PatternType
// (spread_row.h) is a name's type.
enum class Pattern : uint8_t { G0, G1, G2a, G2b, G3, G4a, G4b, G5a, G5b, H0a, H0b, H1, H2, H3, H4, H5, Y0, Y1, Y2, Y3 };

}  // namespace inkdot
