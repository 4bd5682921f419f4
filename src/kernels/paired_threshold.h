// Two planes dithered against one matrix value so that their dots avoid each
// other: while the two tones fit into the matrix together, plane A takes the
// cells below tA and plane B the cells from tA up to tA + tB; when they do
// not fit, B takes the cells from the top of the matrix down and the two
// overlap only where they must.
#pragma once

#include <cstdint>

namespace inkdot {

struct PairDots {
    bool a;
    bool b;
};

// maxT is the largest matrix value (matrixCells - 1); t the pixel's matrix
// value as this pair reads it. Signed 32-bit throughout.
inline PairDots pairedThreshold(int32_t tA, int32_t tB, int32_t maxT, int32_t t) {
    if (tA + tB > maxT) return {tA > t, tB > maxT - t};
    if (tA > t) return {true, false};
    return {false, tA + tB > t};
}

}  // namespace inkdot
