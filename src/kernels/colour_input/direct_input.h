// Colour input that needs no grid node choice and no averaging:
//  - InkInput: inputFormat 4, the pixel already holds the four ink levels;
//    a pixel without any ink is white.
//  - ThresholdInput: the fixed-threshold method; each colour byte becomes
//    one bit (above 128), the three bits address the 2 x 2 x 2 grid, and a
//    pixel whose three bits are all 1 is white.
// Both fill the same chunk as GridInput and answer the same questions for
// the last pixel of an odd run.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/colour_input/colour_chunk.h"
#include "kernels/force_inline.h"

namespace inkdot {

class InkInput {
public:
    template <class Source>
    INKDOT_FORCE_INLINE void convert(const Source& in, uint32_t first, uint32_t, uint32_t n, ColourChunk& out) const {
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t inks = word(in, first + i);
            out.inks[i] = inks;
            out.white[i] = inks == 0;
        }
    }
    template <class Source>
    uint32_t inksAt(const Source& in, uint32_t i, uint32_t) const { return word(in, i); }
    template <class Source>
    uint32_t inksByMatrix(const Source& in, uint32_t i, uint32_t) const { return word(in, i); }
    // The caller's own levels: none is dropped.
    template <class Source>
    uint32_t nearestInks(const Source& in, uint32_t i) const { return word(in, i); }

private:
    template <class Source>
    static uint32_t word(const Source& in, uint32_t i) {
        const uint8_t* px = in.at(i);
        return uint32_t{in.byte(px, 0)} | uint32_t{in.byte(px, 1)} << 8 | uint32_t{in.byte(px, 2)} << 16 |
               uint32_t{in.byte(px, 3)} << 24;
    }
};

class ThresholdInput {
public:
    explicit ThresholdInput(const HtContext& ctx) : grid_(slotData<uint32_t>(ctx, kConversionTable)) {}

    template <class Source>
    INKDOT_FORCE_INLINE void convert(const Source& in, uint32_t first, uint32_t, uint32_t n, ColourChunk& out) const {
        if (!Source::kHalving && in.shift == 0 && in.pixelBytes == kRgbPixelBytes) {
            // Three bytes a pixel at a fixed step: the corners in a loop the
            // compiler vectorises (held in the white flags until their
            // look-up), then the grid look-ups.
            const uint8_t* const px = in.src + static_cast<uintptr_t>(first) * kRgbPixelBytes;
            for (uint32_t i = 0; i < n; ++i) {
                const uint8_t* const p = px + kRgbPixelBytes * i;
                out.white[i] = static_cast<uint8_t>(corner(p[0], p[1], p[2]));
            }
            for (uint32_t i = 0; i < n; ++i) {
                const uint32_t c = out.white[i];
                out.inks[i] = grid_[c];
                out.white[i] = c == kWhiteCorner;
            }
            return;
        }
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t corner = cornerOf(in, first + i);
            out.inks[i] = grid_[corner];
            out.white[i] = corner == kWhiteCorner;
        }
    }
    template <class Source>
    uint32_t inksAt(const Source& in, uint32_t i, uint32_t) const { return grid_[cornerOf(in, i)]; }
    template <class Source>
    uint32_t inksByMatrix(const Source& in, uint32_t i, uint32_t) const { return grid_[cornerOf(in, i)]; }

private:
    static constexpr uint32_t kWhiteCorner = 7;  // all three bytes above 128

    // (bit2 * 2 + bit1) * 2 + bit0, each bit set for a byte above 128.
    static uint32_t corner(uint8_t b0, uint8_t b1, uint8_t b2) {
        return (b2 > 128 ? 4u : 0u) | (b1 > 128 ? 2u : 0u) | (b0 > 128 ? 1u : 0u);
    }
    template <class Source>
    static uint32_t cornerOf(const Source& in, uint32_t i) {
        const uint8_t* px = in.at(i);
        return corner(in.byte(px, 0), in.byte(px, 1), in.byte(px, 2));
    }

    const uint32_t* grid_;
};

}  // namespace inkdot
