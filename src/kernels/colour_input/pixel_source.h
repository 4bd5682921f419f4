// Where the colour input stage finds the input of output pixel i of a run:
// the pixel step of the input format, doubling (scaleMode 1: each input pixel
// serves two output pixels) and halving (two input pixels per output pixel,
// byte by byte the smaller, in the kernels that offer it).
#pragma once

#include <algorithm>
#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

inline constexpr uint32_t kInkInputFormat = 4;  // four ink levels per pixel

// Bytes from one colour input pixel to the next: the pixel size of the input
// format, as replication copies the pixels in front of the kernel.
inline uint32_t colourPixelBytes(uint32_t inputFormat) { return bytesPerPixel(inputFormat); }

template <bool kHalving>
struct PixelSource {
    const uint8_t* src;
    uint32_t pixelBytes;
    uint32_t shift;  // 1 when doubling: output pixel i reads input pixel i / 2

    PixelSource(const uint8_t* from, uint32_t inputFormat, bool doubling)
        : src(from), pixelBytes(colourPixelBytes(inputFormat)), shift(doubling ? 1 : 0) {}

    const uint8_t* at(uint32_t i) const { return src + static_cast<uintptr_t>(i >> shift) * pixelBytes * (kHalving ? 2 : 1); }
    // Byte k of output pixel i's input (the smaller of the pair when halving).
    uint8_t byte(const uint8_t* px, uint32_t k) const {
        if constexpr (kHalving) return std::min(px[k], px[k + pixelBytes]);
        else return px[k];
    }
};

// Runs f with the source that scaleMode asks for; `halvingOffered` says
// whether the kernel reduces pairs at scaleMode -1.
template <class F>
inline void withPixelSource(const HtContext& ctx, const uint8_t* src, bool halvingOffered, F&& f) {
    const bool doubling = ctx.scaleMode == 1;
    if (halvingOffered && ctx.scaleMode == -1) {
        f(PixelSource<true>(src, ctx.inputFormat, doubling));
    } else {
        f(PixelSource<false>(src, ctx.inputFormat, doubling));
    }
}

}  // namespace inkdot
