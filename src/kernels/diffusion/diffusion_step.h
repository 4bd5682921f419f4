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

// A pixel that does not diffuse (white, or an idle plane) drops the error
// pending in its cell: the cell takes the carry, and the carry is spent.
inline void dropCell(int32_t& cell, int32_t& carry) {
    cell = carry;
    carry = 0;
}

}  // namespace inkdot
