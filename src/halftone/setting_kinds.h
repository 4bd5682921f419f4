// What the setting words of an instance ask for, named once: which methods
// dither and which diffuse, the hybrid dither, ink input, colour, two bits.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

// Threshold-matrix and fixed-threshold dither. Every other method, 1 and 2
// included, is error diffusion: it gets error lines, a plain tone table and
// the error-diffusion kernels.
constexpr bool isDitherMethod(uint32_t method) {
    return method == INKDOT_METHOD_MATRIX || method == INKDOT_METHOD_THRESHOLD;
}

// Method 2 diffuses like method 1 and shares what is tuned for it (the
// 1440x720 spread row); the other diffusion methods (4 and up) do not.
constexpr bool diffusesLikeMethod1(uint32_t method) {
    return method == INKDOT_METHOD_DIFFUSION || method == INKDOT_METHOD_DIFFUSION_ALT;
}

// The colour matrix dither that diffuses plane 1 instead of dithering it.
constexpr bool isHybridDither(uint32_t ditherMode) {
    return ditherMode == INKDOT_DITHER_HYBRID || ditherMode == INKDOT_DITHER_HYBRID_ALT;
}

constexpr bool isColour(uint32_t colourMode) { return colourMode != INKDOT_MONO; }
constexpr bool isTwoBit(uint32_t outputBits) { return outputBits == INKDOT_TWO_BITS; }
constexpr bool isInkInput(uint32_t inputFormat) { return inputFormat == INKDOT_INPUT_INK; }

}  // namespace inkdot
