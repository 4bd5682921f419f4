// The contract between Halftone and every kernel. Halftone hands a kernel
// only runs it has checked: the run ends within the line, its first pixel
// lies in the first output byte, the reserved argument is zero and the
// instance is ready. A kernel checks only what is its own (option11, its
// tables), allocates nothing, and writes only the instance's run state, its
// error lines and the output planes.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

struct HtContext;

namespace inkdot {

struct HtRun {
    const uint8_t* src;    // the run's input pixels (after replication)
    uint8_t* dst;          // byte holding the run's first pixel in plane 0
    uint32_t planeStride;  // plane k starts at dst + k * planeStride
    uint32_t bitOffset;    // first pixel's position inside the first byte, from the top
    uint32_t count;        // output pixels in the run
    uint32_t startX;       // column of the first pixel
    uint32_t lineNo;
    uint32_t option11;
};

using HtKernel = uint32_t (*)(HtContext& ctx, const HtRun& run);

// The monochrome kernels take no option11: they refuse a run that sets it
// before touching anything. The colour kernels ignore it.
inline uint32_t refuseOption11(const HtRun& run) { return run.option11 != 0 ? RC_ARG + 11 : RC_OK; }

}  // namespace inkdot
