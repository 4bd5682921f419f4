// The paired threshold rule: two planes share one matrix value so that, while
// their amounts fit into the matrix together, their dots never meet: plane A
// takes the cells below tA, plane B the cells from tA up to tA + tB. When the
// two do not fit, B is thresholded from the other end of the matrix.
#pragma once

#include <cstdint>

namespace inkdot {

struct PairDots {
    bool a;
    bool b;
};

// maxT is the largest matrix value (matrixCells - 1); threshold the pixel's
// matrix value as this pair reads it. Tone values and thresholds are compared
// as signed 32-bit numbers. Both
// cases are evaluated and one is selected by bit arithmetic, without a
// branch: which case holds changes from pixel to pixel with the ink amounts,
// and GCC makes a jump of a ?: between two bools.
inline PairDots pairedThreshold(int32_t toneA, int32_t toneB, int32_t maxT, int32_t threshold) {
    const bool a = toneA > threshold;
    const bool overfull = toneA + toneB > maxT;
    const bool bFromTop = toneB > maxT - threshold;
    const bool bAfterA = !a & (toneA + toneB > threshold);
    return {a, static_cast<bool>(bAfterA ^ ((bAfterA ^ bFromTop) & overfull))};
}

}  // namespace inkdot
