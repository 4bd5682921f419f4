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
#include "kernels/diffusion/pattern_choice.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/kernels.h"
#include "kernels/matrix_row.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

struct GeneralFamily {
    static uint8_t halve(uint8_t a, uint8_t b) { return std::min(a, b); }
    static void white(int32_t& cell, int32_t& carry) { dropCell(cell, carry); }
    static Pattern choose(const PixelClass& p, const SpreadThresholds& t) { return chooseGeneral(p, t); }
};

struct Family1440x720 {
    static uint8_t halve(uint8_t a, uint8_t b) { return std::max(a, b); }
    // A white pixel here drops the carry together with its cell's error.
    static void white(int32_t& cell, int32_t& carry) {
        cell = 0;
        carry = 0;
    }
    static Pattern choose(const PixelClass& p, const SpreadThresholds& t) { return choose1440x720(p, t); }
};

struct DoubleYFamily {
    static uint8_t halve(uint8_t a, uint8_t b) { return std::min(a, b); }
    static void white(int32_t& cell, int32_t& carry) { dropCell(cell, carry); }
    static Pattern choose(const PixelClass& p, const SpreadThresholds& t) { return chooseDoubleY(p, t); }
};

// How input bytes become output pixels, by scaleMode.
enum class InputStep {
    Single,   // one byte per pixel
    Doubled,  // scaleMode 1: each byte serves two pixels
    Halved,   // scaleMode -1: two bytes per pixel, the family keeps one
};

// Flattened so that the pattern choice and every spread pattern are inlined
// into the pixel loop: no call per pixel, the carry stays in a register.
// Compilers without the attribute ignore it and call the pattern switch.
template <class Family, InputStep Step>
[[gnu::flatten]] void diffuseRun(HtContext& ctx, const HtRun& run) {
    // Ink levels are signed 16-bit entries of the ink curve.
    const int16_t* curve = slotData<int16_t>(ctx, kConversionTable);
    const int16_t* edThreshold = slotData<int16_t>(ctx, kEdThresholdTable);
    // The amount a dot removes, taken as unsigned 16 bits by these kernels.
    const uint16_t* dotValue = slotData<uint16_t>(ctx, kDotValueTable);
    const uint16_t* rowCells = matrixRow(ctx, run.lineNo).cells;
    const uint32_t columnMask = ctx.matrixWidth - 1;  // the width is a power of two
    const SpreadThresholds bands = spreadThresholds(ctx);
    const uint8_t* src = run.src;
    const uint32_t count = run.count;  // a local: the cell writes could alias the run record
    int32_t* cell = errorLine(ctx, 0) + run.startX;
    PlanePacker<1, 1> out(run.dst, run.planeStride, run.bitOffset);

    int32_t carry = 0;  // next-line share for the cell right of the previous pixel
    int32_t level = 0;
    // The cell of the pixel about to be processed, carried in a register: it
    // is re-read right after the previous pixel's spread stored it, so the
    // compiler forwards the value and the loop-carried chain of sum -> dot ->
    // error -> next sum never waits on memory.
    int32_t ahead = *cell;
    uint32_t column = run.startX;
    for (uint32_t i = 0; i < count; ++i, ++column, ++cell) {
        if constexpr (Step == InputStep::Single) {
            level = curve[src[i]];
        } else if constexpr (Step == InputStep::Doubled) {
            if ((i & 1) == 0) level = curve[src[i >> 1]];  // odd pixels repeat the even one
        } else {
            level = curve[Family::halve(src[2 * i], src[2 * i + 1])];
        }

        if (level == 0) {
            Family::white(*cell, carry);
        } else {
            const uint32_t m = rowCells[column & columnMask];
            // The curve holds 8-bit ink amounts; its low byte keeps an odd
            // entry from indexing past the 256-entry level tables.
            const uint32_t index = static_cast<uint8_t>(level);
            // The step clears its copy; every pattern overwrites the real cell.
            int32_t pending = ahead;
            const DiffusionResult r = diffuse(pending, level, edThreshold[index] + perturbation(m), dotValue[index]);
            out.dot(0, r.dot);
            const bool even = (m & 1) == 0;  // the mono kernels take the a forms on even cells
            spread(Family::choose(PixelClass{level, r.dot, even, even}, bands), cell, r.err, carry);
        }
        ahead = cell[1];
        out.next();
    }
    out.finish();  // the carry left after the last pixel is discarded
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
