// Two-bit colour error diffusion: four planes of two-bit dot codes per run.
// Planes 0, 1 and 3 take the dot-size decision with error diffusion, each on
// its own error line; plane 2 is placed by the threshold matrix alone. The
// four planes read the matrix at four places so their dots do not stack.
//
// Three wrappers (one per resolution class) run one decision loop
// instantiated with the class's spread family; the colour input stage hands
// it the split rows of ink or three-channel pixels.
#include <algorithm>

#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "kernels/colour_input/colour_input.h"
#include "kernels/diffusion/continuity.h"
#include "kernels/diffusion/diffusion_step.h"
#include "kernels/diffusion/error_cell.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/ed2/dot_size.h"
#include "kernels/ed2/ed2_pattern_choice.h"
#include "kernels/ed2/matrix_scale.h"
#include "kernels/force_inline.h"
#include "kernels/kernels.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

// The small-dot history: a plane keeps diffusing while it has seen small-dot
// ink at this pixel or one of the four non-white pixels before it. Bit 4 is
// set by small ink and shifts out after five pixels; every run starts as if
// small ink had just been seen.
constexpr uint32_t kHistoryFresh = 16;

// Everything the pixel loop needs about one split row, gathered once per call
// so the loop reads one small record instead of four context tables.
struct SplitRowInfo {
    uint32_t toneLarge;        // low half of splitToneCumulative
    uint32_t toneLargeMedium;  // high half of splitToneCumulative
    uint32_t toneTotal;        // splitToneTotal
    int32_t small;             // low byte of splitAmounts
    int32_t total;             // high half of splitAmounts: small + medium + large
    int32_t smallThreshold;    // edThresholdTable, before the perturbation
};

void gatherSplitRows(const HtContext& ctx, SplitRowInfo* rows) {
    const int16_t* threshold = slotData<int16_t>(ctx, kEdThresholdTable);
    for (uint32_t v = 0; v < 256; ++v) {
        rows[v] = {ctx.splitToneCumulative[v] & 0xFFFF, ctx.splitToneCumulative[v] >> 16, ctx.splitToneTotal[v],
                   static_cast<int32_t>(ctx.splitAmounts[v] & 0xFF), static_cast<int32_t>(ctx.splitAmounts[v] >> 16),
                   threshold[v]};
    }
}

struct DiffusedPlane {
    int32_t* line;
    int32_t carry = 0;
    uint32_t history = kHistoryFresh;

    void noteSmallInk(const SplitRowInfo& row) {
        history = (history >> 1) | (row.small != 0 ? kHistoryFresh : 0);
    }
};

// One diffused plane at column x. `perturbation` is already signed for the
// plane; `aForm` is the matrix parity that takes the a patterns.
// Inlined into the pixel loop, so that the plane's state stays in registers
// and the band's branch leads straight to its additions.
template <class Family>
INKDOT_FORCE_INLINE uint8_t diffusePlane(DiffusedPlane& plane, uint32_t x, const SplitRowInfo& row, uint32_t m,
                            int32_t perturbation, bool aForm, const ed2::SmallThresholds& bands) {
    int32_t* const cell = plane.line + x;
    if (plane.history == 0) {
        // No small ink for five pixels: drop the pending error, place only
        // what the matrix places.
        dropCell(*cell, plane.carry);
        return matrixLargeMediumCode(m, row.toneLarge, row.toneLargeMedium);
    }
    const int32_t sum = readCellTruncate(*cell) + row.total;
    const DotDecision d =
        decideDot(sum, m, {row.toneLarge, row.toneLargeMedium, row.small, row.smallThreshold + perturbation});
    Family::spreadChosen({row.toneLargeMedium != 0, row.small, d.code != kNoDot, aForm}, bands, cell, d.err,
                         plane.carry);
    return d.code;
}

// The decision stage: reads the split rows (ink values) and white flags that
// the colour input stage made of a chunk of pixels, and runs the error chains.
template <class Family, class Input, class Source>
INKDOT_FLATTEN void colourRun(HtContext& ctx, const HtRun& run, Input input, const Source& in) {
    PlanePacker<2, 4> out(run.dst, run.planeStride, run.bitOffset);
    if (run.count == 0) {
        out.finish();
        return;
    }

    SplitRowInfo rows[256];
    gatherSplitRows(ctx, rows);
    const uint32_t scaleShift = matrixScaleShift(ctx.matrixCells);
    const uint16_t* rowA = matrixRow(ctx, run.lineNo).cells;
    const uint16_t* rowB = matrixRow(ctx, run.lineNo + kRowBLineOffset).cells;
    const uint32_t columnMask = ctx.matrixWidth - 1;
    const ed2::SmallThresholds bands = ed2::smallThresholds(ctx);
    DiffusedPlane plane0{errorLine(ctx, 0)}, plane1{errorLine(ctx, 1)}, plane3{errorLine(ctx, 2)};

    // Kept in locals: the error cells written below may alias the run's fields.
    const uint32_t startX = run.startX;
    const uint32_t count = run.count;
    ColourChunk chunk;
    forEachChunk(input, in, startX, count, chunk, [&](uint32_t x0, uint32_t n) INKDOT_INLINE_LAMBDA {
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t x = x0 + i;
            if (chunk.white[i]) {
                // White: the error pending at x is dropped in every diffused
                // plane; the history and the smoothing neighbour stay as they were.
                dropCell(plane0.line[x], plane0.carry);
                dropCell(plane1.line[x], plane1.carry);
                dropCell(plane3.line[x], plane3.carry);
                out.next();
                continue;
            }

            const uint32_t mP = rowA[(x + kJitterColumn) & columnMask];
            const uint32_t q = (mP >> scaleShift) & 0xFE;  // bits 1..7 at the 256-cell scale
            const int32_t p = kPerturbationTable[q];
            const bool odd = (mP & 1) != 0;  // the colour kernels take the a forms on odd cells
            const uint32_t inks = chunk.inks[i];

            const SplitRowInfo& row0 = rows[inkLevel(inks, 0)];
            const SplitRowInfo& row1 = rows[inkLevel(inks, 1)];
            const SplitRowInfo& row2 = rows[inkLevel(inks, 2)];
            const SplitRowInfo& row3 = rows[inkLevel(inks, 3)];

            const uint32_t m2 = rowA[(x + kPlane2Column) & columnMask];
            const uint32_t code2 = matrixOnlyCode(m2, row2.toneLarge, row2.toneLargeMedium, row2.toneTotal);

            plane0.noteSmallInk(row0);
            plane1.noteSmallInk(row1);
            plane3.noteSmallInk(row3);
            const uint32_t m0 = rowA[x & columnMask];
            const uint32_t m1 = rowB[(x + kPlane1Column) & columnMask];
            const uint32_t m3 = rowB[(x + kPlane3Column) & columnMask];
            // Plane 1's threshold moves against the others', so the planes do not
            // all favour the same cells.
            const uint32_t code0 = diffusePlane<Family>(plane0, x, row0, m0, p, odd, bands);
            const uint32_t code1 = diffusePlane<Family>(plane1, x, row1, m1, -p, odd, bands);
            const uint32_t code3 = diffusePlane<Family>(plane3, x, row3, m3, p, odd, bands);
            // All four codes, plane k in byte k, each repeated over its byte.
            out.setAll((code0 | code1 << 8 | code2 << 16 | code3 << 24) * kCodeRepeat);
            out.next();
        }
    });
    out.finish();
}

// The inner kernel of a resolution class: the run with the input stage the
// instance's input asks for (ink or three-channel; halving where the class
// offers it). The grid node is chosen by mP, the matrix value at column
// x + 24 brought to the 256-cell scale.
template <class Family, bool kHalvingOffered>
void innerKernel(HtContext& ctx, const HtRun& run) {
    const NodeMatrix nodeMatrix{matrixRow(ctx, run.lineNo), kJitterColumn, matrixScaleShift(ctx.matrixCells)};
    const GridInput<kTwoBitDiffusionGrid> grid(ctx, nodeMatrix);
    withPixelSource(ctx, run.src, colourPixelBytes(ctx.inputFormat), kHalvingOffered, [&](const auto& in) {
        withColourInput(ctx, grid, [&](auto input) { colourRun<Family>(ctx, run, input, in); });
    });
}

// The wrapper keeps the three error lines consistent (one continuity case for
// all three) and hands the run to the inner kernel; the run was checked by Halftone.
template <class Family, bool kHalvingOffered>
uint32_t colourWrapper(HtContext& ctx, const HtRun& run) {
    applyContinuity(ctx, run, 3);
    innerKernel<Family, kHalvingOffered>(ctx, run);
    return RC_OK;
}

}  // namespace

uint32_t Ed2ColourGeneral(HtContext& ctx, const HtRun& run) { return colourWrapper<ed2::GeneralFamily, false>(ctx, run); }
uint32_t Ed2Colour1440x720(HtContext& ctx, const HtRun& run) {
    return colourWrapper<ed2::Family1440x720, false>(ctx, run);
}
uint32_t Ed2ColourDoubleY(HtContext& ctx, const HtRun& run) { return colourWrapper<ed2::DoubleYFamily, true>(ctx, run); }

}  // namespace inkdot
