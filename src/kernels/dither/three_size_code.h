// The three-size code rule of the two-bit dither kernels: an ink amount is
// split into small, medium and large dot amounts (one dot-split row), and
// their tone values are stacked against one threshold: large dots take the
// cells below tl, medium the next tm cells, small the next ts.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/largest_code.h"

namespace inkdot {

// The stacked tones come ready-made per split row from the resource protocol:
// tl in the low half of splitToneCumulative, tl + tm in its high half, and
// ts + tm + tl in splitToneTotal.
// The three tests are selected without branches (largestCode): the matrix
// makes every one of them as good as random.
// The chunk loops read the two words first and call stackedCode, which
// the compiler turns into a few vector compares per eight pixels.
inline unsigned stackedCode(uint32_t cumulative, uint32_t total, uint32_t threshold) {
    return largestCode((cumulative & 0xFFFF) > threshold, (cumulative >> 16) > threshold, total > threshold);
}
inline unsigned threeSizeCode(const HtContext& ctx, uint32_t amount, uint32_t threshold) {
    return stackedCode(ctx.splitToneCumulative[amount], ctx.splitToneTotal[amount], threshold);
}

}  // namespace inkdot
