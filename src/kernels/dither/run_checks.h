// The argument checks every ordered-dither kernel makes before it touches
// anything, and the run state it leaves behind.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "halftone/kernel.h"
#include "inkdot/inkdot.h"

namespace inkdot {

enum class Option11 : bool { Ignored, MustBeZero };

// The monochrome kernels refuse option11 before any other test of their own.
// The run must end at or before the line's end; the sum startX + count is
// never formed, so a run whose end would wrap past 32 bits is refused too.
inline uint32_t checkDitherRun(const HtContext& ctx, const HtRun& run, Option11 option11) {
    if (option11 == Option11::MustBeZero && run.option11 != 0) return RC_ARG + 11;
    if (run.count > ctx.width || run.startX > ctx.width - run.count) return RC_ARG + 6;
    if (run.reserved10 != 0) return RC_ARG + 10;
    return RC_OK;
}

}  // namespace inkdot
