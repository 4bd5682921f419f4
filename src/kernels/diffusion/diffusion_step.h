// The one-bit diffusion step shared by every one-bit error-diffusion plane:
// read the pending error, decide the dot against a threshold, and hand back
// the error to spread.
#pragma once

#include <cstdint>

#include "kernels/diffusion/error_cell.h"

namespace inkdot {

struct DiffusionResult {
    bool dot;
    int32_t err;
};

// `cell` is the cell of the pixel's column; it is read (flooring) and cleared.
// A sum equal to the threshold prints.
inline DiffusionResult diffuse(int32_t& cell, int32_t level, int32_t threshold, int32_t dotValue) {
    const int32_t sum = readCellFloor(cell) + level;
    cell = 0;
    const bool dot = sum >= threshold;
    return {dot, dot ? sum - dotValue : sum};
}

// The same step for a pixel loop whose error chain runs through `pending`,
// the pixel's cell value kept in a register. floor(pending / 32) + level >=
// threshold exactly when pending >= 32 x (threshold - level) = `limit`
// (limit fits in 32 bits: the tables hold 16-bit values), so the dot is
// known without waiting for the shift. The error is then the shifted cell
// plus level or levelLessDot (level - dotValue), taken by a conditional
// move: compilers otherwise jump on the choice, and a dot is as good as
// random, so that jump mispredicts about every other pixel.
inline DiffusionResult diffuseAgainstLimit(int32_t pending, int32_t limit, int32_t level, int32_t levelLessDot) {
    const bool dot = pending >= limit;
    int32_t added = level;
#if (defined(__GNUC__) || defined(__clang__)) && (defined(__x86_64__) || defined(__i386__))
    asm("cmpl %[limit], %[pending]\n\tcmovge %[ifDot], %[added]"
        : [added] "+r"(added)
        : [pending] "r"(pending), [limit] "r"(limit), [ifDot] "rm"(levelLessDot)
        : "cc");
#else
    added = dot ? levelLessDot : level;
#endif
    return {dot, readCellFloor(pending) + added};
}

// A pixel that does not diffuse (white, or an idle plane) drops the error
// pending in its cell: the cell takes the carry, and the carry is spent.
inline void dropCell(int32_t& cell, int32_t& carry) {
    cell = carry;
    carry = 0;
}

}  // namespace inkdot
