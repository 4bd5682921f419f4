// The pixel loop of the one-bit colour error-diffusion kernels, written once.
// A kernel is this loop instantiated with
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
#include "kernels/diffusion/pattern_table.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/force_inline.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"

namespace inkdot {

// Pattern choices. The colour kernels take the a forms on odd matrix cells
// (the monochrome kernels on even ones), so that colour dots are spread the
// other way round from what a black plane on the same matrix would do.
//
// Each family spreads through a pattern table built from its rule
// (pattern_choice.h): the level picks a band, the dot decision and the
// matrix parity a column. A band branches, a column does not (spreadByTable).

struct GeneralColourFamily {
    static constexpr PatternTable<kLevelBands> kTable = bandTable<kLevelBands>(generalRule);
    // The lowest band's boundary includes T4 on odd cells, except in plane 1,
    // whose boundary excludes it on every cell.
    template <unsigned Plane>
    static unsigned band(int32_t level, bool, bool odd, const SpreadThresholds& t) {
        return levelBand(level, t, Plane != 1 && odd);
    }
};
// No dot comes first, whatever the level. Its own band: the wide patterns
// of light levels (H5 reaches 46 cells) would otherwise be paid for at every
// pixel without a dot, which is most pixels of a light area.
struct Colour1440x720Family {
    static constexpr PatternTable<1 + kLevelBands> kTable = noDotFirstTable<kLevelBands>(rule1440x720);
    template <unsigned Plane>
    static unsigned band(int32_t level, bool dot, bool, const SpreadThresholds& t) {
        return dot ? 1 + levelBand(level, t, false) : 0;
    }
};
struct DoubleYColourFamily {
    static constexpr PatternTable<kLevelBands> kTable = bandTable<kLevelBands>(doubleYRule);
    template <unsigned Plane>
    static unsigned band(int32_t level, bool, bool odd, const SpreadThresholds& t) {
        return levelBand(level, t, odd);
    }
};

// Spreads err with the pattern of a colour pixel (odd cells take the a forms).
template <class Family, unsigned Plane>
INKDOT_FORCE_INLINE void spreadColour(int32_t level, bool dot, bool odd, const SpreadThresholds& t, int32_t* cell,
                                      int32_t err, int32_t& carry) {
    spreadByTable<Family::kTable>(Family::template band<Plane>(level, dot, odd, t), patternColumn(dot, odd), cell,
                                  err, carry);
}

namespace detail {

// One diffused plane of one coloured pixel. `cell` points at the column's cell.
// Inlined into the pixel loop with its pattern choice and spread, so that
// the plane's carry, history and cell pointer stay in registers and the
// branches of the choice lead straight to the additions of their pattern
// (out of line, the three calls per pixel took some 40% of the time).
template <class Family, unsigned Plane, class Tables>
INKDOT_FORCE_INLINE bool diffusePlane(const Tables& tables, int32_t* cell, int32_t& carry, ActivityHistory& history,
                                      int32_t level, int32_t p, bool odd, const SpreadThresholds& bands) {
    if (!history.step(level)) {
        dropCell(*cell, carry);
        return false;
    }
    // A plane with history diffuses even at level 0: its leftover error can still print.
    const int32_t threshold = tables.edThreshold(level) + (Plane == 1 ? -p : p);
    const DiffusionResult r = diffuse(*cell, level, threshold, tables.template dotValue<Plane>(level));
    spreadColour<Family, Plane>(level, r.dot, odd, bands, cell, r.err, carry);
    return r.dot;
}

}  // namespace detail

// The pixel loop is the decision stage: it reads the levels and white flags
// that the colour input stage made of a chunk of pixels, and runs the error
// chains over them.
template <class Family, class Tables, unsigned Planes, class Input>
INKDOT_FLATTEN void diffuseColourRun(HtContext& ctx, const HtRun& run, Input input) {
    const Tables tables(ctx, run.lineNo);
    const SpreadThresholds thresholds = spreadThresholds(ctx);
    int32_t* const line0 = errorLine(ctx, 0);
    int32_t* const line1 = errorLine(ctx, 1);
    int32_t* const line3 = errorLine(ctx, 2);  // plane 3 diffuses on the third line
    int32_t carry0 = 0, carry1 = 0, carry3 = 0;
    ActivityHistory history0, history1, history3;
    PlanePacker<1, Planes> packer(run.dst, run.planeStride, run.bitOffset);
    // halving reads one pixel per output pixel in these kernels
    const PixelSource<false> in(run.src, colourPixelBytes(ctx.inputFormat), ctx.scaleMode == INKDOT_SCALE_DOUBLE);

    // Pixels are diffused in pairs; an odd last pixel is dithered on its own.
    // Kept in a local: the error cells written below may alias the run's fields.
    const uint32_t startX = run.startX;
    const uint32_t diffused = run.count & ~1u;
    ColourChunk chunk;
    forEachChunk(input, in, startX, diffused, chunk, [&](uint32_t x0, uint32_t n) INKDOT_INLINE_LAMBDA {
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t x = x0 + i;
            int32_t* const cell0 = line0 + x;
            int32_t* const cell1 = line1 + x;
            int32_t* const cell3 = line3 + x;
            if (chunk.white[i]) {
                // No dot anywhere; the pending error is dropped and the
                // histories wait for the next coloured pixel.
                dropCell(*cell0, carry0);
                dropCell(*cell1, carry1);
                dropCell(*cell3, carry3);
                packer.next();
                continue;
            }

            const uint32_t m = tables.row(x);
            const int32_t p = kPerturbationTable[tables.q(x)];
            const bool odd = (m & 1) != 0;
            const uint32_t inks = chunk.inks[i];
            const int32_t L0 = inkLevel(inks, 0), L1 = inkLevel(inks, 1), L2 = inkLevel(inks, 2),
                          L3 = inkLevel(inks, 3);

            packer.dot(0, detail::diffusePlane<Family, 0>(tables, cell0, carry0, history0, L0, p, odd, thresholds));
            packer.dot(1, detail::diffusePlane<Family, 1>(tables, cell1, carry1, history1, L1, p, odd, thresholds));
            packer.dot(2, m < tables.tone(L2));
            const bool dot3 = detail::diffusePlane<Family, 3>(tables, cell3, carry3, history3, L3, p, odd, thresholds);
            if constexpr (Planes == 4) packer.dot(3, dot3);
            packer.next();
        }
    });

    if ((run.count & 1) != 0) {
        const ColourDots dots = oddPixelDots(tables, input.nearestInks(in, diffused), startX + diffused, maxThreshold(ctx));
        packer.dot(0, dots.dot[0]);
        packer.dot(1, dots.dot[1]);
        packer.dot(2, dots.dot[2]);
        if constexpr (Planes == 4) packer.dot(3, dots.dot[3]);
        packer.next();
    }
    packer.finish();  // the carries left over are discarded
}

template <class Family, class Tables, unsigned Planes>
uint32_t runColour(HtContext& ctx, const HtRun& run) {
    static_assert(Planes == 3 || Planes == 4);
    // An empty matrix has no row to read; a cached row has room for 256 columns.
    if (ctx.matrixWidth == 0 || ctx.matrixHeight == 0 || ctx.matrixWidth > Tables::kMaxMatrixWidth)
        return RC_DATA;

    applyContinuity(ctx, run, 3);
    const GridInput<kDiffusionGrid> grid(ctx, NodeMatrix{matrixRow(ctx, run.lineNo)});
    withColourInput(ctx, grid, [&](auto input) { diffuseColourRun<Family, Tables, Planes>(ctx, run, input); });
    return RC_OK;
}

}  // namespace inkdot
