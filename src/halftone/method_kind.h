// Which halftoning methods dither and which diffuse error.
#pragma once

#include <cstdint>

namespace inkdot {

// Methods 3 (threshold matrix) and 0 (fixed threshold) are the dither methods.
// Every other method, 1 and 2 included, is error diffusion: it gets error
// lines, a plain tone table and the error-diffusion kernels.
constexpr bool isDitherMethod(uint32_t method) { return method == 3 || method == 0; }

// Method 2 diffuses like method 1 and shares what is tuned for it (the
// 1440x720 spread row); the other diffusion methods (4 and up) do not.
constexpr bool diffusesLikeMethod1(uint32_t method) { return method == 1 || method == 2; }

}  // namespace inkdot
