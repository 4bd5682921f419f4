// Integer logarithm and gamma function of the tone curves.
#pragma once

#include <cstdint>

namespace inkdot {

// 5000 * ln n, rounded per prime factor, for 1 <= n <= 511 (L(1) = 0).
int32_t logOf(int32_t n);

// The level 255 * (v / 255)^(gamma / 100), within one level, by an integer
// search; gamma in hundredths, 100 to 300. G(0) = 0 and G(255) = 255.
int32_t gammaLevel(int32_t v, int32_t gamma);

}  // namespace inkdot

namespace inkdot {

// gammaLevel for every level 0..255 at once.
void gammaLevels(int32_t gamma, int32_t out[256]);

}  // namespace inkdot
