// The three-size code rule of the two-bit dither kernels: an ink amount is
// split into small, medium and large dot amounts (one dot-split row), and
// their tone values are stacked against one threshold: large dots take the
// cells below tl, medium the next tm cells, small the next ts.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

// The stacked tones come ready-made per split row from the resource protocol:
// tl in the low half of splitToneCumulative, tl + tm in its high half, and
// ts + tm + tl in splitToneTotal.
inline unsigned threeSizeCode(const HtContext& ctx, uint32_t amount, uint32_t threshold) {
    const uint32_t cumulative = ctx.splitToneCumulative[amount];
    if ((cumulative & 0xFFFF) > threshold) return 3;  // large
    if ((cumulative >> 16) > threshold) return 2;     // medium
    if (ctx.splitToneTotal[amount] > threshold) return 1;  // small
    return 0;
}

}  // namespace inkdot
