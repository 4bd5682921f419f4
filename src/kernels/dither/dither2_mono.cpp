// Dither2Mono and Dither2MonoDoubleY: one gray plane of two-bit dot codes.
// The matrix first shifts each input level by up to the level spread W of
// the padded ink curve, then the three-size code rule places the dot sizes.
// The DoubleY kernel is the same run with the halving reduction.
#include <algorithm>

#include "halftone/ht_context.h"
#include "kernels/dither/input_walk.h"
#include "kernels/matrix_row.h"
#include "kernels/dither/run_checks.h"
#include "kernels/dither/three_size_code.h"
#include "kernels/kernels.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

inline constexpr uint32_t kGrayPixelBytes = 1;
// The level shift reads the matrix 24 columns to the right of the threshold,
// so that shift and threshold are not correlated.
inline constexpr uint32_t kShiftColumnOffset = 24;

template <class Reduction>
void ditherRun(const HtContext& ctx, const HtRun& run) {
    const MatrixRow row = matrixRow(ctx, run.lineNo);
    // Padded curve: entry 0 is the level spread W, entry d + v + 1 the ink at
    // level v shifted by d - W / 2. The resource protocol never stores W = 0.
    const auto* curve = slotData<uint16_t>(ctx, kConversionTable);
    const uint32_t spreadW = std::max<uint32_t>(curve[0], 1);
    InputWalk<Reduction> in(run.src, kGrayPixelBytes, ctx.scaleMode == 1);
    PlanePacker<2, 1> out(run.dst, run.planeStride, run.bitOffset);
    for (uint32_t i = 0; i < run.count; ++i) {
        const uint32_t x = run.startX + i;
        const uint32_t shift = row(x + kShiftColumnOffset) % spreadW;
        // The curve holds ink amounts of the black table (0..255): one split row each.
        const uint32_t amount = curve[shift + in.byte(0) + 1] & 0xFF;
        out.set(0, threeSizeCode(ctx, amount, row(x)) * kCodeRepeat);
        out.next();
        in.advanceAfter(i);
    }
    out.finish();
}

uint32_t dither2Mono(HtContext& ctx, const HtRun& run, bool halving) {
    if (const uint32_t rc = checkDitherRun(ctx, run, Option11::MustBeZero)) return rc;
    ctx.prevLineNo = run.lineNo;
    withReduction(halving, [&]<class Reduction>(Reduction) { ditherRun<Reduction>(ctx, run); });
    return RC_OK;
}

}  // namespace

uint32_t Dither2Mono(HtContext& ctx, const HtRun& run) { return dither2Mono(ctx, run, false); }

// Each output pixel from two input pixels, the smaller level, when scaleMode is -1.
uint32_t Dither2MonoDoubleY(HtContext& ctx, const HtRun& run) {
    return dither2Mono(ctx, run, ctx.scaleMode == -1);
}

}  // namespace inkdot
