// Colour input through the conversion grid, written once for every colour
// kernel that converts three colour bytes: the threshold matrix chooses a
// grid node per pixel (no interpolation), and a pixel whose nodes neighbour
// those of the previous coloured pixel of the run is averaged with it, which
// takes the edge off the node-to-node jumps of the choice.
//
// The kernels differ in a few points, which are the policy (GridPolicy) and
// the node matrix (NodeMatrix):
//   - which planes the averaging smooths (the dither kernels leave plane 2);
//   - which bit of the matrix value rounds the mean up (clear bit: round up);
//   - whether a lower node at the grid's last node is held there (the
//     two-bit diffusion kernels) or the entry index is only kept in the grid;
//   - which matrix value chooses the node: column offset and the shift that
//     brings a large matrix to the 0..255 scale.
// The last pixel of an odd run, which some kernels treat by itself, is read
// with inksAt (no white test, no averaging).
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/colour_input/colour_chunk.h"
#include "kernels/colour_input/grid_pass.h"
#include "kernels/force_inline.h"
#include "kernels/grid_node.h"
#include "kernels/matrix_row.h"

namespace inkdot {

struct GridPolicy {
    uint32_t smoothedPlanes;  // byte mask of the planes the averaging replaces
    unsigned roundBit;        // the mean rounds up where this bit of the matrix value is 0
    bool holdLastNode;        // a lower node at the last grid node never moves up
};

// Dither kernels: plane 2 is never smoothed; bit 2 rounds.
inline constexpr GridPolicy kDitherGrid{0xFF00FFFF, 2, false};
// One-bit diffusion: all four planes; the matrix parity rounds.
inline constexpr GridPolicy kDiffusionGrid{0xFFFFFFFF, 0, false};
// Two-bit diffusion: as one-bit, with the last node held.
inline constexpr GridPolicy kTwoBitDiffusionGrid{0xFFFFFFFF, 0, true};

// The matrix value that chooses the node of column x is row(x + column);
// its bits 1..7 after the shift choose the node, its roundBit the rounding.
struct NodeMatrix {
    MatrixRow row;
    uint32_t column = 0;
    uint32_t shift = 0;

    uint32_t operator()(uint32_t x) const { return row(x + column); }
    uint32_t q(uint32_t m) const { return nodeChoiceQ(m >> shift); }
};

template <GridPolicy kPolicy>
class GridInput {
public:
    GridInput(const HtContext& ctx, NodeMatrix nodeMatrix)
        : grid_(slotData<uint32_t>(ctx, kConversionTable)),
          cells_(slotData<uint8_t>(ctx, kGridCellTable)),
          matrix_(nodeMatrix) {}

    // Output pixels first .. first + n - 1 of the run (columns x0 onward)
    // into chunk positions 0 .. n - 1. n is at most kColourChunk.
    template <class Source>
    INKDOT_FORCE_INLINE void convert(const Source& in, uint32_t first, uint32_t x0, uint32_t n, ColourChunk& out) {
        GridPass pass;
#ifdef INKDOT_SIMD_GRID_PASS
        if (in.pixelBytes == kRgbPixelBytes && in.shift <= (Source::kHalving ? 0 : 1) && gridPassAvx2Runs()) {
            const InputSpacing spacing = Source::kHalving ? InputSpacing::kHalved
                                         : in.shift == 1  ? InputSpacing::kDoubled
                                                          : InputSpacing::kOnePerPixel;
            if (gridPassAvx512Runs()) {
                const uint32_t done = gridPassAvx512(passTables(), spacing, in.at(first), x0, n, prevNodes_, out, pass);
                perPixel<false>(in, first, x0, done, n, out, pass);
                smoothAvx512(kPolicy.smoothedPlanes, pass, n, out, prevInks_, prevNodes_);
                return;
            }
            const uint32_t done = gridPassAvx2(passTables(), spacing, in.at(first), x0, n, prevNodes_, out, pass);
            perPixel<true>(in, first, x0, done, n, out, pass);
            smooth<true>(pass, n, out);
            return;
        }
#endif
        perPixel<false>(in, first, x0, 0, n, out, pass);
        smooth<false>(pass, n, out);
    }

    // One pixel's levels at node choice q, for the last pixel of an odd run.
    template <class Source>
    uint32_t inksAt(const Source& in, uint32_t i, uint32_t q) const {
        const uint8_t* px = in.at(i);
        return grid_[gridEntryIndex(node(in.byte(px, 2), q), node(in.byte(px, 1), q), node(in.byte(px, 0), q))];
    }
    // The same with the node choice of column x.
    template <class Source>
    uint32_t inksByMatrix(const Source& in, uint32_t i, uint32_t x) const {
        return inksAt(in, i, matrix_.q(matrix_(x)));
    }
    // The nearest node, and levels too faint for a lone dot dropped.
    template <class Source>
    uint32_t nearestInks(const Source& in, uint32_t i) const {
        return dropFaintLevels(inksAt(in, i, kNearestNodeQ));
    }

private:
    // Independent per pixel: node choice, grid look-up and white test of
    // pixels i .. n - 1; with kNeighbours also the neighbour test against
    // pixel i - 1 (the AVX2 pass makes it for the serial loop, where the
    // portable loop is faster leaving it to the serial loop).
    template <bool kNeighbours, class Source>
    INKDOT_FORCE_INLINE void perPixel(const Source& in, uint32_t first, uint32_t x0, uint32_t i, uint32_t n,
                                      ColourChunk& out, GridPass& pass) const {
        uint32_t before = i == 0 ? prevNodes_ : pass.nodes[i - 1];
        for (; i < n; ++i) {
            const uint8_t* px = in.at(first + i);
            const uint32_t b0 = in.byte(px, 0), b1 = in.byte(px, 1), b2 = in.byte(px, 2);
            out.white[i] = b0 + b1 + b2 == 3 * 255;
            const uint32_t m = matrix_(x0 + i);
            const uint32_t q = matrix_.q(m);
            const uint32_t i0 = node(b0, q), i1 = node(b1, q), i2 = node(b2, q);
            out.inks[i] = grid_[gridEntryIndex(i2, i1, i0)];
            const uint32_t nodes = packNodes(i0, i1, i2);
            pass.nodes[i] = nodes;
            if constexpr (kNeighbours) pass.smooth[i] = neighbourMask(nodes, before) & kPolicy.smoothedPlanes;
            before = nodes;
            pass.roundUp[i] = (((m >> kPolicy.roundBit) & 1) ^ 1) * kLowBits;
        }
    }

    // Serial: the averaging with the previous coloured pixel. White pixels
    // leave it alone. With kNeighboursKnown the neighbour test was made
    // against pixel i - 1, and the pixel after a white one is tested again
    // against the last coloured pixel instead of its white neighbour.
    template <bool kNeighboursKnown>
    INKDOT_FORCE_INLINE void smooth(GridPass& pass, uint32_t n, ColourChunk& out) {
        uint32_t prevInks = prevInks_;
        uint32_t prevNodes = prevNodes_;
        for (uint32_t i = 0; i < n; ++i) {
            if (out.white[i]) {
                if (kNeighboursKnown && i + 1 < n)
                    pass.smooth[i + 1] = neighbourMask(pass.nodes[i + 1], prevNodes) & kPolicy.smoothedPlanes;
                continue;
            }
            const uint32_t smooth = kNeighboursKnown ? pass.smooth[i]
                                                     : neighbourMask(pass.nodes[i], prevNodes) & kPolicy.smoothedPlanes;
            prevInks = smoothedInks(prevInks, out.inks[i], smooth, pass.roundUp[i]);
            prevNodes = pass.nodes[i];
            out.inks[i] = prevInks;
        }
        prevInks_ = prevInks;
        prevNodes_ = prevNodes;
    }

    GridPassTables passTables() const {
        return {grid_, cells_, matrix_.row.cells, matrix_.row.columnMask, matrix_.column, matrix_.shift,
                kPolicy.roundBit, kPolicy.smoothedPlanes, kPolicy.holdLastNode ? kGridLevels - 1 : 0xFFFFFFFFu};
    }

    INKDOT_FORCE_INLINE uint32_t node(uint32_t b, uint32_t q) const {
        const uint32_t lower = cells_[2 * b], weight = cells_[2 * b + 1];
        if constexpr (kPolicy.holdLastNode) {
            // The last node has no next one: held there, so a stray table
            // entry cannot address a node outside the grid.
            if (lower >= kGridLevels - 1) return kGridLevels - 1;
        }
        return lower + (weight <= q ? 1u : 0u);
    }

    const uint32_t* grid_;
    const uint8_t* cells_;
    NodeMatrix matrix_;
    uint32_t prevNodes_ = kNoNodes;  // the run's first coloured pixel is never averaged
    uint32_t prevInks_ = 0;   // never read before the first coloured pixel
};

}  // namespace inkdot
