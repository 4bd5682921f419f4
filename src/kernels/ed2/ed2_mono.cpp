// Two-bit monochrome error diffusion: one gray byte per pixel becomes one
// two-bit dot code. The three kernels are one loop instantiated with their
// resolution class's spread family and input reduction.
#include <algorithm>

#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "kernels/diffusion/continuity.h"
#include "kernels/diffusion/diffusion_step.h"
#include "kernels/diffusion/error_cell.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/ed2/dot_size.h"
#include "kernels/ed2/ed2_pattern_choice.h"
#include "kernels/kernels.h"
#include "kernels/level_shift.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"
#include "kernels/pixel_source.h"

namespace inkdot {
namespace {

constexpr uint8_t kWhiteByte = 255;

// The padded curve: entry 0 is the level spread W, entry 1 + j + v the ink
// amount of input v shifted by j - W/2. The resource protocol makes W >= 1;
// a hand-fed table with W < 1 is read as W = 1 (no shift) rather than
// dividing by zero. The curve only holds amounts 0..255; anything outside
// is held to that range so the split row stays inside the split tables.
struct PaddedCurve {
    const int16_t* entries;
    LevelShift levelShift;

    explicit PaddedCurve(const HtContext& ctx)
        : entries(slotData<int16_t>(ctx, kConversionTable)),
          levelShift(static_cast<uint32_t>(std::max<int32_t>(entries[0], 1))) {}
    uint32_t splitRow(uint32_t jitter, uint8_t v) const {
        const int32_t row = entries[1 + levelShift(jitter) + v];
        return static_cast<uint32_t>(std::clamp(row, 0, 255));
    }
};

template <class Family, bool ReducesPairs>
uint32_t ed2Mono(HtContext& ctx, const HtRun& run) {
    if (const uint32_t rc = refuseOption11(run)) return rc;

    applyContinuity(ctx, run, 1);

    PlanePacker<2, 1> out(run.dst, run.planeStride, run.bitOffset);
    const PaddedCurve curve(ctx);
    const uint16_t* tone = slotData<uint16_t>(ctx, kToneTable);
    const uint8_t* split = slotData<uint8_t>(ctx, kDotSplitTable);
    const int16_t* smallThreshold = slotData<int16_t>(ctx, kEdThresholdTable);
    const uint16_t* rowA = matrixRow(ctx, run.lineNo).cells;
    const uint32_t columnMask = ctx.matrixWidth - 1;
    const ed2::SmallThresholds bands = ed2::smallThresholds(ctx);
    const InputStep step = inputStep(ctx.scaleMode, 1, ReducesPairs);
    const bool reduce = ReducesPairs && ctx.scaleMode == INKDOT_SCALE_HALVE;
    int32_t* const line = errorLine(ctx, 0);
    int32_t carry = 0;

    for (uint32_t i = 0; i < run.count; ++i) {
        const uint32_t x = run.startX + i;
        int32_t* const cell = line + x;
        const uint8_t* const in = run.src + step.offset(i);
        const uint8_t v = reduce ? std::min(in[0], in[1]) : in[0];  // the smaller (darker) byte of a pair
        if (v == kWhiteByte) {
            dropCell(*cell, carry);
            out.next();
            continue;
        }

        const uint32_t m = rowA[x & columnMask];
        const uint32_t r = curve.splitRow(rowA[(x + kJitterColumn) & columnMask], v);
        const int32_t small = split[3 * r], medium = split[3 * r + 1], large = split[3 * r + 2];
        const int32_t sum = readCellTruncate(*cell) + small + medium + large;

        const SplitAgainstMatrix row{tone[large], uint32_t{tone[medium]} + tone[large], small,
                                     smallThreshold[r] + perturbation(m)};
        const DotDecision d = decideDot(sum, m, row);
        const bool even = (m & 1) == 0;
        Family::spreadChosen({large != 0 || medium != 0, small, d.code != kNoDot, even}, bands, cell, d.err, carry);

        out.set(0, d.code * kCodeRepeat);
        out.next();
    }
    out.finish();
    return RC_OK;
}

}  // namespace

uint32_t Ed2MonoGeneral(HtContext& ctx, const HtRun& run) {
    return ed2Mono<ed2::GeneralFamily, false>(ctx, run);
}
uint32_t Ed2Mono1440x720(HtContext& ctx, const HtRun& run) {
    return ed2Mono<ed2::Family1440x720, false>(ctx, run);
}
uint32_t Ed2MonoDoubleY(HtContext& ctx, const HtRun& run) {
    return ed2Mono<ed2::DoubleYFamily, true>(ctx, run);
}

}  // namespace inkdot
