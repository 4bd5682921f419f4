// The contract every halftone kernel keeps: the run arguments of Halftone and
// one result code. Kernels allocate nothing and write only the instance's run
// state, its error lines and the output planes.
#pragma once

#include <cstdint>

struct HtContext;

namespace inkdot {

struct HtRun {
    const uint8_t* src;    // the run's input pixels (after replication)
    uint8_t* dst;          // byte holding the run's first pixel in plane 0
    uint32_t planeStride;  // plane k starts at dst + k * planeStride
    uint32_t bitOffset;    // first pixel's position inside the first byte, from the top
    uint32_t count;        // output pixels in the run
    uint32_t startX;       // column of the first pixel
    uint32_t reserved8;
    uint32_t lineNo;
    uint32_t reserved10;
    uint32_t option11;
};

using HtKernel = uint32_t (*)(HtContext& ctx, const HtRun& run);

}  // namespace inkdot
