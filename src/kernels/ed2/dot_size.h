// The two-bit dot-size decision shared by every two-bit error-diffusion
// plane: large and medium dots are placed by the threshold matrix alone,
// the small dot by error diffusion. The diffused error carries the pixel's
// whole ink amount, and any printed dot removes one full dot (255) from it.
#pragma once

#include <cstdint>

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

// `sum` is the error read from the pixel's cell plus the row's whole amount.
// A sum equal to the threshold prints the small dot.
inline DotDecision decideDot(int32_t sum, uint32_t m, const SplitAgainstMatrix& row) {
    if (row.toneLarge > m) return {kLargeDot, sum - kFullDot};
    if (row.toneLargeMedium > m) return {kMediumDot, sum - kFullDot};
    if (row.small == 0) return {kNoDot, sum};
    if (sum >= row.smallThreshold) return {kSmallDot, sum - kFullDot};
    return {kNoDot, sum};
}

// A plane that does not diffuse at this pixel still gets its large and
// medium dots from the matrix, but never a small one.
inline uint8_t matrixLargeMediumCode(uint32_t m, uint32_t toneLarge, uint32_t toneLargeMedium) {
    if (toneLarge > m) return kLargeDot;
    if (toneLargeMedium > m) return kMediumDot;
    return kNoDot;
}

// A plane decided by the matrix alone stacks all three tones against it.
inline uint8_t matrixOnlyCode(uint32_t m, uint32_t toneLarge, uint32_t toneLargeMedium, uint32_t toneTotal) {
    if (toneTotal <= m) return kNoDot;
    if (toneLarge > m) return kLargeDot;
    if (toneLargeMedium > m) return kMediumDot;
    return kSmallDot;
}

}  // namespace inkdot
