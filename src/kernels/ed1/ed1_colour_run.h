// The decision stage of the one-bit colour error-diffusion kernels, written
// once. A kernel is this stage instantiated with
//   Family - its spread family and pattern choice,
//   Tables - how it reaches the tables (in place, or copied per call),
//   Planes - how many output planes it writes (3 leaves plane 3's bytes alone
//            while still diffusing it, so its error line is unchanged).
//
// Planes 0, 1 and 3 diffuse on error lines 0, 1 and 2; plane 2 is dithered
// by the matrix. Plane 1's threshold moves against the matrix perturbation,
// the others' with it, which keeps dots of plane 1 off the cells where
// planes 0 and 3 are most likely to print.
#pragma once

#include <algorithm>
#include <cstdint>

#include "halftone/ht_context.h"
#include "halftone/kernel.h"
#include "inkdot/inkdot.h"
#include "kernels/colour_input/colour_input.h"
#include "kernels/ed1/activity_history.h"
#include "kernels/diffusion/continuity.h"
#include "kernels/diffusion/diffusion_step.h"
#include "kernels/ed1/ed1_colour_odd_pixel.h"
#include "kernels/diffusion/pattern_choice.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_by_band.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/force_inline.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"

namespace inkdot {

// Pattern choices. The colour kernels take the a forms on odd matrix cells
// (the monochrome kernels on even ones), so that colour dots are spread the
// other way round from what a black plane on the same matrix would do.
// A family names its rule (pattern_choice.h) and the level band a plane's
// pixel spreads in.

struct GeneralColourFamily {
    static constexpr auto kRule = generalRule;
    // The lowest band's boundary includes T4 on odd cells, except in plane 1,
    // whose boundary excludes it on every cell.
    template <unsigned Plane>
    static unsigned band(int32_t level, bool odd, const SpreadThresholds& t) {
        return levelBand(level, t, Plane != 1 && odd);
    }
};
struct Colour1440x720Family {
    static constexpr auto kRule = rule1440x720;
    template <unsigned Plane>
    static unsigned band(int32_t level, bool, const SpreadThresholds& t) {
        return levelBand(level, t, false);
    }
};
struct DoubleYColourFamily {
    static constexpr auto kRule = doubleYRule;
    template <unsigned Plane>
    static unsigned band(int32_t level, bool odd, const SpreadThresholds& t) {
        return levelBand(level, t, odd);
    }
};

// What the three diffused planes of a chunk share: its matrix values and 32 x
// their perturbations (the dot limit moves by that much with the threshold).
struct ChunkMatrix {
    uint16_t m[kColourChunk];
    int32_t limitShift[kColourChunk];
};

// One diffused plane's error chain, run chunk after chunk as in the
// monochrome diffusion: the pending error and the two cells right of it stay
// in registers for a chunk, and are kept here between chunks. A plane runs
// a whole chunk before the next plane starts, so each chain has the
// registers to itself; the three chains share no state.
template <class Family, unsigned Plane, class Tables>
class DiffusedColourPlane {
public:
    // `line` is the plane's error line; the chain starts at column startX.
    DiffusedColourPlane(int32_t* line, uint32_t startX)
        : cell_(line + startX), pending_(cell_[0]), ahead_{cell_[1], 0} {}

    // The plane's dots of the chunk's n pixels.
    INKDOT_FORCE_INLINE void decide(const Tables& tables, const SpreadThresholds& bands, const ColourChunk& chunk,
                                    const ChunkMatrix& matrix, uint32_t n, uint8_t* dots) {
        int32_t* const cell = cell_;
        int32_t pending = pending_, carry = carry_;
        CellsAhead ahead = ahead_;
        ActivityHistory history = history_;
        for (uint32_t i = 0; i < n; ++i) {
            const int32_t level = static_cast<int32_t>(inkLevel(chunk.inks[i], Plane));
            ahead.afterNext = 0;
            bool dot = false;
            // A white pixel leaves the history as it is; an idle plane drops
            // its pending error like a white pixel. A plane with history
            // diffuses even at level 0: its leftover error can still print.
            if (chunk.white[i] || !history.step(level)) {
                dropCell(cell[i], carry);
            } else {
                // Plane 1's threshold moves against the perturbation, the others' with it.
                const int32_t shift = Plane == 1 ? -matrix.limitShift[i] : matrix.limitShift[i];
                const int32_t limit = 32 * (tables.edThreshold(level) - level) + shift;
                const DiffusionResult r =
                    diffuseAgainstLimit(pending, limit, level, level - tables.template dotValue<Plane>(level));
                dot = r.dot;
                const bool odd = (matrix.m[i] & 1) != 0;
                spreadByBand<Family::kRule, FormChoice::Masked>(Family::template band<Plane>(level, odd, bands), dot,
                                                                odd, cell + i, r.err, carry, ahead);
            }
            dots[i] = dot;
            pending = ahead.next;
            ahead.next = cell[i + 2] + ahead.afterNext;
        }
        cell_ += n;
        pending_ = pending, carry_ = carry, ahead_ = ahead, history_ = history;
    }

    // The two cells right of the last pixel get their pending error back;
    // the carry left over is discarded.
    void finish() const {
        cell_[0] = pending_;
        cell_[1] = ahead_.next;
    }

private:
    int32_t* cell_;  // the cell of the next pixel
    int32_t pending_;
    CellsAhead ahead_;
    int32_t carry_ = 0;
    ActivityHistory history_;
};

// The decision stage reads the levels and white flags that the colour input
// stage made of a chunk of pixels: the matrix of the chunk first, then each
// diffused plane's chain over the whole chunk, plane 2's dither, and the
// packing of whole bytes.
template <class Family, class Tables, unsigned Planes, class Input>
INKDOT_FLATTEN void diffuseColourRun(HtContext& ctx, const HtRun& run, Input input) {
    const Tables tables(ctx, run.lineNo);
    const SpreadThresholds bands = spreadThresholds(ctx);
    // Kept in locals: the error cells written below may alias the run's fields.
    const uint32_t startX = run.startX;
    const uint32_t diffused = run.count & ~1u;  // pixels are diffused in pairs
    // Plane 3 diffuses on the third error line.
    DiffusedColourPlane<Family, 0, Tables> plane0(errorLine(ctx, 0), startX);
    DiffusedColourPlane<Family, 1, Tables> plane1(errorLine(ctx, 1), startX);
    DiffusedColourPlane<Family, 3, Tables> plane3(errorLine(ctx, 2), startX);
    PlanePacker<1, Planes> packer(run.dst, run.planeStride, run.bitOffset);
    // halving reads one pixel per output pixel in these kernels
    const PixelSource<false> in(run.src, colourPixelBytes(ctx.inputFormat), ctx.scaleMode == INKDOT_SCALE_DOUBLE);

    ColourChunk chunk;
    ChunkMatrix matrix;
    uint8_t dots[4][kColourChunk];
    forEachChunk(input, in, startX, diffused, chunk, [&](uint32_t x0, uint32_t n) INKDOT_INLINE_LAMBDA {
        tables.row.read(x0, n, matrix.m);
        for (uint32_t i = 0; i < n; ++i) matrix.limitShift[i] = 32 * perturbationOf(matrix.m[i] & 0xFE);
        plane0.decide(tables, bands, chunk, matrix, n, dots[0]);
        plane1.decide(tables, bands, chunk, matrix, n, dots[1]);
        for (uint32_t i = 0; i < n; ++i)
            dots[2][i] = !chunk.white[i] && matrix.m[i] < tables.tone(static_cast<int32_t>(inkLevel(chunk.inks[i], 2)));
        plane3.decide(tables, bands, chunk, matrix, n, dots[3]);
        if constexpr (Planes == 4) {
            const uint8_t* const planes[4] = {dots[0], dots[1], dots[2], dots[3]};
            packer.put(planes, n);
        } else {
            const uint8_t* const planes[3] = {dots[0], dots[1], dots[2]};
            packer.put(planes, n);
        }
    });
    plane0.finish();
    plane1.finish();
    plane3.finish();

    // An odd last pixel is dithered on its own.
    if ((run.count & 1) != 0) {
        const ColourDots odd = oddPixelDots(tables, input.nearestInks(in, diffused), startX + diffused, maxThreshold(ctx));
        packer.dot(0, odd.dot[0]);
        packer.dot(1, odd.dot[1]);
        packer.dot(2, odd.dot[2]);
        if constexpr (Planes == 4) packer.dot(3, odd.dot[3]);
        packer.next();
    }
    packer.finish();
}

template <class Family, class Tables, unsigned Planes>
uint32_t runColour(HtContext& ctx, const HtRun& run) {
    static_assert(Planes == 3 || Planes == 4);
    // An empty matrix has no row to read; the cached kernels refuse one wider than 256 cells.
    if (ctx.matrixWidth == 0 || ctx.matrixHeight == 0 || ctx.matrixWidth > Tables::kMaxMatrixWidth)
        return RC_DATA;

    applyContinuity(ctx, run, 3);
    const GridInput<kDiffusionGrid> grid(ctx, NodeMatrix{matrixRow(ctx, run.lineNo)});
    withColourInput(ctx, grid, [&](auto input) { diffuseColourRun<Family, Tables, Planes>(ctx, run, input); });
    return RC_OK;
}

}  // namespace inkdot
