// The last pixel of an odd-length colour run is not diffused: it is dithered
// against the matrix in two pairs of planes, 0 with 3 on the matrix value and
// 1 with 2 on its mirror image, so that the two planes of a pair avoid each
// other. It touches no error line, carry, history or smoothing state.
#pragma once

#include <cstdint>

#include "kernels/colour_input/colour_chunk.h"
#include "kernels/paired_threshold.h"

namespace inkdot {

struct ColourDots {
    bool dot[4];  // per plane
};

// `inks` are the pixel's levels (byte k for plane k): from the nearest grid
// node with faint levels dropped, or the ink pixel's own.
template <class Tables>
inline ColourDots oddPixelDots(const Tables& tables, uint32_t inks, uint32_t x, int32_t maxT) {
    int32_t t[4];
    for (unsigned k = 0; k < 4; ++k) t[k] = static_cast<int32_t>(tables.tone(static_cast<int32_t>(inkLevel(inks, k))));
    const int32_t m = static_cast<int32_t>(tables.row(x));
    const int32_t mirrored = static_cast<uint16_t>(maxT - m);  // 16-bit wrap
    const PairDots p30 = pairedThreshold(t[3], t[0], maxT, m);
    const PairDots p12 = pairedThreshold(t[1], t[2], maxT, mirrored);
    return {{p30.b, p12.a, p12.b, p30.a}};
}

}  // namespace inkdot
