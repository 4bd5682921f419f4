// Dither1Mono: one gray plane, the tone value of each input level against
// the threshold matrix.
#include "halftone/ht_context.h"
#include "kernels/dither/input_walk.h"
#include "kernels/matrix_row.h"
#include "kernels/dither/run_checks.h"
#include "kernels/kernels.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

inline constexpr uint32_t kGrayPixelBytes = 1;

// The matrix method: the tone table, already composed with the ink curve.
struct ToneLevel {
    const uint16_t* tone;
    uint32_t operator()(uint8_t b) const { return tone[b]; }
};

// The fixed-threshold method: a byte above 128 is full ink, any other none.
struct FixedThresholdLevel {
    uint32_t full;
    uint32_t none;
    uint32_t operator()(uint8_t b) const { return b > 128 ? full : none; }
};

template <class Reduction, class Level>
void ditherRun(const HtContext& ctx, const HtRun& run, Level level) {
    const MatrixRow row = matrixRow(ctx, run.lineNo);
    InputWalk<Reduction> in(run.src, kGrayPixelBytes, ctx.scaleMode == 1);
    PlanePacker<1, 1> out(run.dst, run.planeStride, run.bitOffset);
    for (uint32_t i = 0; i < run.count; ++i) {
        const uint32_t l = level(in.byte(0));
        // A level of 0 never prints, even on a matrix cell of 0.
        out.dot(0, l != 0 && l > row(run.startX + i));
        out.next();
        in.advanceAfter(i);
    }
    out.finish();
}

}  // namespace

uint32_t Dither1Mono(HtContext& ctx, const HtRun& run) {
    if (const uint32_t rc = checkDitherRun(ctx, run, Option11::MustBeZero)) return rc;
    ctx.prevLineNo = run.lineNo;

    const auto* tone = slotData<uint16_t>(ctx, kToneTable);
    withReduction(ctx.scaleMode == -1, [&]<class Reduction>(Reduction) {
        if (ctx.method == 0) {
            ditherRun<Reduction>(ctx, run, FixedThresholdLevel{tone[255], tone[0]});
        } else {
            ditherRun<Reduction>(ctx, run, ToneLevel{tone});
        }
    });
    return RC_OK;
}

}  // namespace inkdot
