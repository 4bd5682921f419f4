// The monochrome one-bit error-diffusion kernels: one plane, one error line,
// the shared diffusion step. The three kernels differ in three small points,
// gathered in a family policy: which of two input bytes a halving run keeps,
// what a white pixel leaves in its cell, and how the spread pattern is chosen.
#include <algorithm>
#include <cstdint>

#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "kernels/diffusion/continuity.h"
#include "kernels/diffusion/diffusion_step.h"
#include "kernels/diffusion/level_steps.h"
#include "kernels/diffusion/pattern_choice.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_by_band.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/kernels.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

// kT4InclusiveOnEven as in levelStep.
struct GeneralFamily {
    static constexpr auto kRule = generalRule;
    static constexpr bool kT4InclusiveOnEven = true;
    static uint8_t halve(uint8_t a, uint8_t b) { return std::min(a, b); }
    static void white(int32_t& cell, int32_t& carry) { dropCell(cell, carry); }
};

struct Family1440x720 {
    static constexpr auto kRule = rule1440x720;
    static constexpr bool kT4InclusiveOnEven = false;
    static uint8_t halve(uint8_t a, uint8_t b) { return std::max(a, b); }
    // A white pixel here drops the carry together with its cell's error.
    static void white(int32_t& cell, int32_t& carry) {
        cell = 0;
        carry = 0;
    }
};

struct DoubleYFamily {
    static constexpr auto kRule = doubleYRule;
    static constexpr bool kT4InclusiveOnEven = true;
    static uint8_t halve(uint8_t a, uint8_t b) { return std::min(a, b); }
    static void white(int32_t& cell, int32_t& carry) { dropCell(cell, carry); }
};

// How input bytes become output pixels, by scaleMode.
enum class InputStep {
    Single,   // one byte per pixel
    Doubled,  // scaleMode 1: each byte serves two pixels
    Halved,   // scaleMode -1: two bytes per pixel, the family keeps one
};

// The steps of an input byte: its ink level from the curve, the level
// tables read at the level's low byte (the curve holds 8-bit ink amounts;
// the low byte keeps an odd entry from indexing past the 256-entry tables),
// dot values read as unsigned 16 bits.
template <class Family>
class CurveSteps {
public:
    explicit CurveSteps(const HtContext& ctx)
        : curve_(slotData<int16_t>(ctx, kConversionTable)),
          edThreshold_(slotData<int16_t>(ctx, kEdThresholdTable)),
          dotValue_(slotData<uint16_t>(ctx, kDotValueTable)),
          bands_(spreadThresholds(ctx)) {}

    LevelStep operator()(uint8_t byte) const {
        const int32_t level = curve_[byte];
        const uint32_t index = static_cast<uint8_t>(level);
        return levelStep(level, edThreshold_[index], dotValue_[index], bands_, Family::kT4InclusiveOnEven);
    }

private:
    const int16_t* curve_;
    const int16_t* edThreshold_;
    const uint16_t* dotValue_;
    SpreadThresholds bands_;
};

// Pixels are diffused a chunk at a time: the matrix values of a chunk and
// their perturbations come first, in a loop the compiler vectorises, then
// the error chain runs over them, then its dots are packed.
inline constexpr uint32_t kMonoChunk = 256;

// The chain keeps the pixel's pending error and the two cells right of it in
// registers (CellsAhead); it is flattened so that every spread pattern is
// inlined into it. Compilers without the attribute ignore it.
template <class Family, InputStep Step, class Steps>
[[gnu::flatten]] void diffuseRun(HtContext& ctx, const HtRun& run, const Steps& steps) {
    const MatrixRow row = matrixRow(ctx, run.lineNo);
    const uint32_t count = run.count;  // locals: the cell writes could alias the run record
    const uint32_t startX = run.startX;
    const uint8_t* const src = run.src;
    int32_t* cell = errorLine(ctx, 0) + startX;
    PlanePacker<1, 1> out(run.dst, run.planeStride, run.bitOffset);

    int32_t carry = 0;  // next-line share for the cell right of the previous pixel
    int32_t pending = cell[0];
    CellsAhead ahead{cell[1], 0};
    uint16_t m[kMonoChunk];
    int32_t limitShift[kMonoChunk];  // 32 x the perturbation: the limit moves with the threshold
    uint8_t dots[kMonoChunk];
    LevelStep step{};
    for (uint32_t first = 0; first < count; first += kMonoChunk) {
        const uint32_t n = std::min(kMonoChunk, count - first);
        row.read(startX + first, n, m);
        for (uint32_t i = 0; i < n; ++i) limitShift[i] = 32 * perturbationOf(m[i] & 0xFE);
        const uint8_t* const in = src + (Step == InputStep::Halved    ? 2 * first
                                         : Step == InputStep::Doubled ? first / 2
                                                                      : first);
        for (uint32_t i = 0; i < n; ++i) {
            if constexpr (Step == InputStep::Single) {
                step = steps(in[i]);
            } else if constexpr (Step == InputStep::Doubled) {
                if ((i & 1) == 0) step = steps(in[i >> 1]);  // odd pixels repeat the even one; chunks are even
            } else {
                step = steps(Family::halve(in[2 * i], in[2 * i + 1]));
            }
            ahead.afterNext = 0;
            bool dot = false;
            if (step.level == 0) {
                Family::white(cell[i], carry);  // the pending error is dropped with it
            } else {
                const DiffusionResult r =
                    diffuseAgainstLimit(pending, step.limit + limitShift[i], step.level, step.levelLessDot);
                dot = r.dot;
                const uint32_t odd = m[i] & 1;  // the mono kernels take the a forms on even cells
                spreadByBand<Family::kRule, FormChoice::Jump>(step.band[odd], dot, odd == 0, cell + i, r.err, carry,
                                                              ahead);
            }
            dots[i] = dot;
            pending = ahead.next;
            ahead.next = cell[i + 2] + ahead.afterNext;
        }
        cell += n;
        const uint8_t* const planes[1] = {dots};
        out.put(planes, n);
    }
    // The two cells right of the run get their pending error back; the carry
    // left after the last pixel is discarded.
    cell[0] = pending;
    cell[1] = ahead.next;
    out.finish();
}

template <class Family, InputStep Step>
void diffuseRun(HtContext& ctx, const HtRun& run) {
    withLevelSteps(run.count, CurveSteps<Family>(ctx),
                   [&](const auto& steps) { diffuseRun<Family, Step>(ctx, run, steps); });
}

template <class Family>
uint32_t ed1Mono(HtContext& ctx, const HtRun& run) {
    if (const uint32_t rc = refuseOption11(run)) return rc;

    applyContinuity(ctx, run, 1);
    switch (ctx.scaleMode) {
        case 1: diffuseRun<Family, InputStep::Doubled>(ctx, run); break;
        case -1: diffuseRun<Family, InputStep::Halved>(ctx, run); break;
        default: diffuseRun<Family, InputStep::Single>(ctx, run); break;
    }
    return RC_OK;
}

}  // namespace

uint32_t Ed1MonoGeneral(HtContext& ctx, const HtRun& run) { return ed1Mono<GeneralFamily>(ctx, run); }
uint32_t Ed1Mono1440x720(HtContext& ctx, const HtRun& run) { return ed1Mono<Family1440x720>(ctx, run); }
uint32_t Ed1MonoDoubleY(HtContext& ctx, const HtRun& run) { return ed1Mono<DoubleYFamily>(ctx, run); }

}  // namespace inkdot
