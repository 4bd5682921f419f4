// Where the colour dither kernels get the four ink amounts of a pixel. A
// source reads a pixel, says whether it is white (no dot in any plane), and
// converts it, in the main pass and for the last pixel of an odd run.
//
//  - GridSource: three colour bytes through the 32-level grid, node chosen by
//    the matrix, neighbouring pixels smoothed (method 3).
//  - ThresholdSource: three colour bytes cut to one bit each (above 128),
//    through the 2 x 2 x 2 grid (method 0).
//  - InkSource: inputFormat 4, the pixel already holds the four ink amounts.
//    The kernels take them as they are for every pixel; a pixel with no ink
//    at all is white. There is no grid, so no node choice and no smoothing.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "halftone/ht_context.h"
#include "kernels/force_inline.h"
#include "kernels/grid_node.h"

namespace inkdot {

inline constexpr uint32_t kInkInputFormat = 4;

// Ink amounts 0..255, ink k for plane k.
struct Inks {
    uint32_t c[4];
};

inline Inks unpackInks(uint32_t packed) {
    return {{packed & 0xFF, (packed >> 8) & 0xFF, (packed >> 16) & 0xFF, packed >> 24}};
}

struct ColourBytes {
    uint8_t b[4];  // b0, b1, b2 in memory order; b[3] only for ink pixels
};

// Amounts below this make no dot worth printing for the nearest-node
// conversion of the two-bit kernels' last pixel; they are dropped to 0.
inline constexpr uint32_t kNearestNodeMinAmount = 32;

class GridSource {
public:
    explicit GridSource(const HtContext& ctx)
        : grid_(slotData<uint32_t>(ctx, kConversionTable)), cells_(slotData<uint8_t>(ctx, kGridCellTable)) {}

    template <class Walk>
    static ColourBytes read(const Walk& in) {
        return {{in.byte(0), in.byte(1), in.byte(2), 0}};
    }
    static bool white(const ColourBytes& px) { return px.b[0] + px.b[1] + px.b[2] == 3 * 255; }

    // Main pass: node by the matrix value m, then smoothing of c0, c1 and c3
    // with the previous non-white pixel of the run when no node index moved
    // by more than one. c2 is never smoothed.
    INKDOT_FORCE_INLINE Inks main(const ColourBytes& px, uint32_t m) {
        const uint32_t q = nodeChoiceQ(m);
        const uint32_t i2 = gridNode(cells_, px.b[2], q);
        const uint32_t i1 = gridNode(cells_, px.b[1], q);
        const uint32_t i0 = gridNode(cells_, px.b[0], q);
        Inks c = unpackInks(grid_[gridEntryIndex(i2, i1, i0)]);
        const NodeIndices nodes{static_cast<int32_t>(i0), static_cast<int32_t>(i1), static_cast<int32_t>(i2)};
        const uint32_t smooth = neighbourMask(nodes, prevNodes_);
        // The mean rounds up or down by bit 2 of m, so that smoothing adds no bias.
        const uint32_t roundUp = ((m >> 2) & 1) ^ 1;
        for (unsigned k : {0u, 1u, 3u}) {
            const uint32_t mean = (c.c[k] + prevInk_[k] + roundUp) >> 1;
            c.c[k] = selectByMask(smooth, mean, c.c[k]);
            prevInk_[k] = c.c[k];
        }
        prevNodes_ = nodes;
        return c;
    }

    // Last pixel of an odd run, one-bit kernels: node by the matrix, no smoothing.
    Inks lastByMatrix(const ColourBytes& px, uint32_t m) const { return at(px, nodeChoiceQ(m)); }

    // Last pixel of an odd run, two-bit kernels: the nearest node, and amounts
    // too small for a dot dropped.
    Inks lastNearest(const ColourBytes& px) const {
        Inks c = at(px, kNearestNodeQ);
        for (uint32_t& amount : c.c) amount = amount < kNearestNodeMinAmount ? 0 : amount;
        return c;
    }

private:
    Inks at(const ColourBytes& px, uint32_t q) const {
        return unpackInks(
            grid_[gridEntryIndex(gridNode(cells_, px.b[2], q), gridNode(cells_, px.b[1], q), gridNode(cells_, px.b[0], q))]);
    }

    const uint32_t* grid_;
    const uint8_t* cells_;
    // Two nodes below node 0 until the run's first coloured pixel: never a
    // neighbour, so that pixel is not smoothed (and the zero inks are never read).
    NodeIndices prevNodes_{-2, -2, -2};
    uint32_t prevInk_[4] = {};
};

class ThresholdSource {
public:
    explicit ThresholdSource(const HtContext& ctx) : grid_(slotData<uint32_t>(ctx, kConversionTable)) {}

    // Each colour byte becomes 1 above 128, else 0.
    template <class Walk>
    static ColourBytes read(const Walk& in) {
        return {{bit(in.byte(0)), bit(in.byte(1)), bit(in.byte(2)), 0}};
    }
    static bool white(const ColourBytes& px) { return (px.b[0] & px.b[1] & px.b[2]) != 0; }

    Inks main(const ColourBytes& px, uint32_t) const { return at(px); }
    Inks lastByMatrix(const ColourBytes& px, uint32_t) const { return at(px); }

private:
    static uint8_t bit(uint8_t b) { return b > 128 ? 1 : 0; }
    Inks at(const ColourBytes& px) const { return unpackInks(grid_[(px.b[2] * 2 + px.b[1]) * 2 + px.b[0]]); }

    const uint32_t* grid_;
};

class InkSource {
public:
    template <class Walk>
    static ColourBytes read(const Walk& in) {
        return {{in.byte(0), in.byte(1), in.byte(2), in.byte(3)}};
    }
    static bool white(const ColourBytes& px) { return (px.b[0] | px.b[1] | px.b[2] | px.b[3]) == 0; }

    static Inks inks(const ColourBytes& px) { return {{px.b[0], px.b[1], px.b[2], px.b[3]}}; }
    Inks main(const ColourBytes& px, uint32_t) const { return inks(px); }
    Inks lastByMatrix(const ColourBytes& px, uint32_t) const { return inks(px); }
    // The amounts are the caller's own: none is dropped.
    Inks lastNearest(const ColourBytes& px) const { return inks(px); }
};

// Runs f with the source that the instance's pixel layout asks for.
template <class Grid, class F>
inline void withColourSource(const HtContext& ctx, F&& f) {
    if (ctx.inputFormat == kInkInputFormat) {
        f(InkSource{});
    } else {
        f(Grid(ctx));
    }
}

}  // namespace inkdot
