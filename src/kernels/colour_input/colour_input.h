// The colour input stage: the kernel's own conversion of colour bytes (through
// the grid, or to the fixed-threshold corners), or the ink levels of ink
// pixels, chosen once per call by the instance's input format.
#pragma once

#include <algorithm>
#include <cstdint>

#include "halftone/ht_context.h"
#include "halftone/setting_kinds.h"
#include "kernels/colour_input/colour_chunk.h"
#include "kernels/colour_input/direct_input.h"
#include "kernels/colour_input/grid_input.h"
#include "kernels/force_inline.h"
#include "kernels/pixel_source.h"

namespace inkdot {

// The pixel step of colour input is colourPixelBytes (halftone/ht_context.h):
// three bytes, four for ink pixels.

// Runs f with InkInput for ink pixels, else with `conversion`.
template <class Conversion, class F>
inline void withColourInput(const HtContext& ctx, const Conversion& conversion, F&& f) {
    if (isInkInput(ctx.inputFormat)) {
        f(InkInput{});
    } else {
        f(conversion);
    }
}

// The two stages over output pixels 0 .. count - 1 of a run (from column
// startX), one chunk at a time: the input stage fills `chunk`, then
// decide(x0, n) reads its n pixels, the first at column x0.
template <class Input, class Source, class Decide>
INKDOT_FORCE_INLINE void forEachChunk(Input& input, const Source& in, uint32_t startX, uint32_t count,
                                      ColourChunk& chunk, Decide&& decide) {
    for (uint32_t first = 0; first < count; first += kColourChunk) {
        const uint32_t n = std::min(kColourChunk, count - first);
        input.convert(in, first, startX + first, n, chunk);
        decide(startX + first, n);
    }
}

}  // namespace inkdot
