// Where a two-bit error-diffusion kernel finds the input of output pixel i
// of a run. scaleMode 1 lets each input pixel serve two output pixels;
// scaleMode -1 feeds two input pixels to each output pixel in the kernels
// that reduce (the DoubleY ones, which keep the smaller byte of each pair:
// the darker gray or colour value, the lighter ink amount); any
// other value is one input pixel per output pixel.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

struct InputStep {
    uint32_t shift;   // output index >> shift = input pixel index
    uint32_t stride;  // bytes from one input pixel (or pair) to the next

    uint32_t offset(uint32_t i) const { return (i >> shift) * stride; }
};

inline InputStep inputStep(int32_t scaleMode, uint32_t bytesPerPixel, bool reducesPairs) {
    if (scaleMode == INKDOT_SCALE_DOUBLE) return {1, bytesPerPixel};
    if (scaleMode == INKDOT_SCALE_HALVE && reducesPairs) return {0, 2 * bytesPerPixel};
    return {0, bytesPerPixel};
}

}  // namespace inkdot
