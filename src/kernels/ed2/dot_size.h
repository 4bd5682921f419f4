// The two-bit dot-size decision shared by every two-bit error-diffusion
// plane: large and medium dots are placed by the threshold matrix alone,
// the small dot by error diffusion. The diffused error carries the pixel's
// whole ink amount, and any printed dot removes one full dot (255) from it.
#pragma once

#include <cstdint>

#include "kernels/largest_code.h"

namespace inkdot {

// One printed dot of any size covers a pixel: 255 on the ink-amount scale.
inline constexpr int32_t kFullDot = 255;

enum DotCode : uint8_t { kNoDot = 0, kSmallDot = 1, kMediumDot = 2, kLargeDot = 3 };

struct DotDecision {
    uint8_t code;
    int32_t err;  // what the spread pattern distributes
};

// What one split row says against one matrix value: the tone of its large
// amount and of large plus medium (on the matrix scale), its small amount,
// and the small-dot threshold (already perturbed).
struct SplitAgainstMatrix {
    uint32_t toneLarge;
    uint32_t toneLargeMedium;
    int32_t small;
    int32_t smallThreshold;
};

// The size tests below are against matrix values: largestCode selects the
// code without a jump.

// `sum` is the error read from the pixel's cell plus the row's whole amount.
// A sum equal to the threshold prints the small dot.
inline DotDecision decideDot(int32_t sum, uint32_t m, const SplitAgainstMatrix& row) {
    const uint32_t code =
        largestCode(row.toneLarge > m, row.toneLargeMedium > m, (row.small != 0) & (sum >= row.smallThreshold));
    // Any printed dot removes one full dot from the error.
    return {static_cast<uint8_t>(code), sum - (kFullDot & -static_cast<int32_t>(code != kNoDot))};
}

// A plane that does not diffuse at this pixel still gets its large and
// medium dots from the matrix, but never a small one.
inline uint8_t matrixLargeMediumCode(uint32_t m, uint32_t toneLarge, uint32_t toneLargeMedium) {
    return static_cast<uint8_t>(largestCode(toneLarge > m, toneLargeMedium > m, false));
}

// A plane decided by the matrix alone stacks all three tones against it; a
// matrix value at or above the total places nothing, whatever the others say.
inline uint8_t matrixOnlyCode(uint32_t m, uint32_t toneLarge, uint32_t toneLargeMedium, uint32_t toneTotal) {
    const uint32_t code = largestCode(toneLarge > m, toneLargeMedium > m, true);
    return static_cast<uint8_t>(code & -static_cast<uint32_t>(toneTotal > m));
}

}  // namespace inkdot
