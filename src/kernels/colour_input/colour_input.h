// The colour input stage: the kernel's own conversion of colour bytes (through
// the grid, or to the fixed-threshold corners), or the ink levels of ink
// pixels, chosen once per call by the instance's input format.
#pragma once

#include "halftone/ht_context.h"
#include "kernels/colour_input/colour_chunk.h"
#include "kernels/colour_input/direct_input.h"
#include "kernels/colour_input/grid_input.h"
#include "kernels/colour_input/pixel_source.h"

namespace inkdot {

// Runs f with InkInput for ink pixels, else with `conversion`.
template <class Conversion, class F>
inline void withColourInput(const HtContext& ctx, const Conversion& conversion, F&& f) {
    if (ctx.inputFormat == kInkInputFormat) {
        f(InkInput{});
    } else {
        f(conversion);
    }
}

}  // namespace inkdot
