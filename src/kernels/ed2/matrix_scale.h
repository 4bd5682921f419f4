// The colour kernels take their perturbation, node choice and smoothing bit
// from a matrix value brought down to the 0..255 range of a 256-cell
// matrix: the matrix scale shift.
#pragma once

#include <cstdint>

namespace inkdot {

// n = (cells + 1) / 512, and the shift is n's bit length: 4 for 4096 cells,
// 2 for 1024, 0 for 256, 6 for 16384. A 256 x 256 matrix keeps 0 in its
// 16-bit cell count and so gets 0 as well.
inline uint32_t matrixScaleShift(uint16_t matrixCells) {
    uint32_t n = (uint32_t{matrixCells} + 1) >> 9;
    uint32_t shift = 0;
    while (n != 0) {
        n >>= 1;
        ++shift;
    }
    return shift;
}

}  // namespace inkdot
