// Where a kernel's input stage finds the input of output pixel i of a run:
// the pixel step, doubling (scaleMode 1: each input pixel serves two output
// pixels) and halving (scaleMode -1 in the kernels that offer it: two input
// pixels per output pixel, byte by byte the smaller).
#pragma once

#include <algorithm>
#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

template <bool Halving>
struct PixelSource {
    static constexpr bool kHalving = Halving;
    const uint8_t* src;
    uint32_t pixelBytes;
    uint32_t shift;  // 1 when doubling: output pixel i reads input pixel i / 2

    PixelSource(const uint8_t* from, uint32_t bytes, bool doubling)
        : src(from), pixelBytes(bytes), shift(doubling ? 1 : 0) {}

    const uint8_t* at(uint32_t i) const {
        return src + static_cast<uintptr_t>(i >> shift) * pixelBytes * (kHalving ? 2 : 1);
    }
    // Byte k of the input at px (the smaller of the pair when halving).
    uint8_t byte(const uint8_t* px, uint32_t k) const {
        if constexpr (kHalving) return std::min(px[k], px[k + pixelBytes]);
        else return px[k];
    }
    uint8_t byte(uint32_t i, uint32_t k) const { return byte(at(i), k); }
    // Where each output pixel from i on reads one byte of its own (one-byte
    // pixels, no doubling, no halving), those bytes as a plain row, which a
    // chunk loop reads with vector loads; else null.
    const uint8_t* byteRow(uint32_t i) const {
        return !kHalving && shift == 0 && pixelBytes == 1 ? src + i : nullptr;
    }
};

// Runs f with the source that scaleMode asks for; `halvingOffered` says
// whether the kernel reduces pairs at scaleMode -1.
template <class F>
inline void withPixelSource(const HtContext& ctx, const uint8_t* src, uint32_t pixelBytes, bool halvingOffered, F&& f) {
    const bool doubling = ctx.scaleMode == INKDOT_SCALE_DOUBLE;
    if (halvingOffered && ctx.scaleMode == INKDOT_SCALE_HALVE) {
        f(PixelSource<true>(src, pixelBytes, doubling));
    } else {
        f(PixelSource<false>(src, pixelBytes, doubling));
    }
}

// The same without a template, for a loop that reads the input itself:
// output pixel i reads at offset(i); halving (where the kernel reduces pairs)
// steps by a pair and leaves the reduction to the loop.
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
