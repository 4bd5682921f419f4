// The one-bit colour dither kernels: Dither1Colour, Dither1ColourHybrid and
// Threshold1Colour share one run loop. They differ in where the ink amounts
// come from (a colour source) and in how plane 1 is decided in the main pass
// (by the matrix, or by error diffusion in the hybrid).
//
// The main pass covers count AND NOT 1 pixels; an odd run's last pixel is
// done by itself, without white test or smoothing, and puts planes 1 and 2
// under the paired rule too.
#include "halftone/ht_context.h"
#include <algorithm>

#include "kernels/colour_input/colour_input.h"
#include "kernels/cpu_clones.h"
#include "kernels/matrix_row.h"
#include "kernels/paired_threshold.h"
#include "kernels/diffusion/diffusion_step.h"
#include "kernels/diffusion/level_steps.h"
#include "kernels/diffusion/pattern_choice.h"
#include "kernels/diffusion/perturbation.h"
#include "kernels/diffusion/spread_by_band.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/dither/dither_dots_avx512.h"
#include "kernels/force_inline.h"
#include "kernels/kernels.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

// A dot decision as a byte pattern for the packer: the matrix makes the
// decisions as good as random, so they are never branched on.
inline uint8_t dotPattern(bool printed) { return static_cast<uint8_t>(-static_cast<int>(printed)); }

// Plane 1 by the matrix, read from its other end (cells above maxT - tone),
// so that it does not pile onto the cells that planes 3 and 0 take first.
struct MatrixPlane1 {
    static constexpr bool kByMatrix = true;

    // Plane 1's dots of a chunk: per pixel, its tone value and matrix value.
    void decide(const ColourChunk& chunk, const int32_t* tone1, const int32_t* m, int32_t maxT, uint32_t,
                uint32_t n, uint8_t* dots) const {
        for (uint32_t i = 0; i < n; ++i) dots[i] = (tone1[i] > maxT - m[i]) & !chunk.white[i];
    }
    void finish(uint32_t) const {}
};

// Plane 1 by one-bit error diffusion on error line 0, the level being the
// ink amount itself. The threshold is jittered against the matrix the other
// way round from the diffusion kernels (p(m) is subtracted). The hybrid keeps
// no continuity rule: its error line is never cleared.

// The steps of an ink amount: dot values read as signed 16 bits, the lowest
// band's boundary exclusive on every cell.
class InkSteps {
public:
    explicit InkSteps(const HtContext& ctx)
        : edThreshold_(slotData<int16_t>(ctx, kEdThresholdTable)),
          dotValue_(slotData<int16_t>(ctx, kDotValueTable)),
          bands_(spreadThresholds(ctx)) {}
    LevelStep operator()(uint8_t amount) const {
        return levelStep(amount, edThreshold_[amount], dotValue_[amount], bands_, false);
    }

private:
    const int16_t* edThreshold_;
    const int16_t* dotValue_;
    SpreadThresholds bands_;
};

// The chain runs chunk after chunk with its pending error and the two cells
// right of it in registers, as in the monochrome diffusion; they are kept
// here between chunks and go back to their cells after the last.
template <class Steps>
class DiffusedPlane1 {
public:
    static constexpr bool kByMatrix = false;

    DiffusedPlane1(HtContext& ctx, uint32_t startX, const Steps& steps)
        : line_(errorLine(ctx, 0)), steps_(steps), pending_(line_[startX]), ahead_{line_[startX + 1], 0} {}

    // Plane 1's dots of a chunk of pixels from column x0 on, one after the
    // other along the error chain. A white pixel drops the error pending in its cell.
    template <class Matrix>
    void decide(const ColourChunk& chunk, const int32_t*, const Matrix* m, int32_t, uint32_t x0, uint32_t n,
                uint8_t* dots) {
        int32_t limitShift[kColourChunk];  // 32 x the perturbation, which lowers the threshold
        for (uint32_t i = 0; i < n; ++i) limitShift[i] = 32 * perturbationOf(static_cast<uint32_t>(m[i]) & 0xFE);
        int32_t* const cell = line_ + x0;
        int32_t pending = pending_, carry = carry_;
        CellsAhead ahead = ahead_;
        for (uint32_t i = 0; i < n; ++i) {
            const LevelStep step = steps_(chunk.white[i] ? 0 : inkLevel(chunk.inks[i], 1));
            ahead.afterNext = 0;
            bool dot = false;
            if (step.level == 0) {
                dropCell(cell[i], carry);
            } else {
                const DiffusionResult r =
                    diffuseAgainstLimit(pending, step.limit - limitShift[i], step.level, step.levelLessDot);
                dot = r.dot;
                // The a forms go with bit 2 of m clear.
                spreadByBand<generalRule, FormChoice::Jump>(step.band[0], dot, (m[i] & 4) == 0, cell + i, r.err,
                                                            carry, ahead);
            }
            dots[i] = dot;
            pending = ahead.next;
            ahead.next = cell[i + 2] + ahead.afterNext;
        }
        pending_ = pending, carry_ = carry, ahead_ = ahead;
    }

    // x: the column after the last pixel diffused. The carry left is dropped.
    void finish(uint32_t x) const {
        line_[x] = pending_;
        line_[x + 1] = ahead_.next;
    }

private:
    int32_t* line_;
    const Steps& steps_;
    int32_t pending_;
    CellsAhead ahead_;
    int32_t carry_ = 0;
};

// The decision stage over a chunk of levels: the tone values and matrix
// values of every pixel, then the dots of the four planes (independent per
// pixel but for a diffused plane 1), then the packing of whole bytes.
template <class Input, class Source, class Plane1>
INKDOT_CPU_CLONES void ditherRun(const HtContext& ctx, const HtRun& run, Input input, const Source& in, Plane1 plane1) {
    const MatrixRow row = matrixRow(ctx, run.lineNo);
    const int32_t maxT = maxThreshold(ctx);
    const auto* tone = slotData<uint16_t>(ctx, kToneTable);
    PlanePacker<1, 4> out(run.dst, run.planeStride, run.bitOffset);

    // Kept in locals: the output stores may alias anything a reference reaches.
    const uint32_t startX = run.startX;
    const uint32_t count = run.count;
    const uint32_t mainCount = count & ~1u;
    ColourChunk chunk;
    int32_t tones[4][kColourChunk];
    int32_t m[kColourChunk];
    uint8_t dots[4][kColourChunk];
#ifdef INKDOT_AVX512_DITHER_DOTS
    const bool avx512 = ditherDotsAvx512Runs();
#endif
    forEachChunk(input, in, startX, mainCount, chunk, [&](uint32_t x0, uint32_t n) INKDOT_INLINE_LAMBDA {
#ifdef INKDOT_AVX512_DITHER_DOTS
        if (avx512) {
            uint16_t m16[kColourChunk];
            row.read(x0, n, m16);
            uint8_t* const planes[4] = {dots[0], dots[1], dots[2], dots[3]};
            // Whole output bytes straight from the decisions where they can go out as they are.
            const bool packed = Plane1::kByMatrix && out.aligned() && n % 8 == 0;
            dither1DotsAvx512(tone, static_cast<uint32_t>(maxT), m16, chunk, n, Plane1::kByMatrix, {planes, packed});
            if (packed) {
                out.putBytes(planes, n / 8);
                return;
            }
            if constexpr (!Plane1::kByMatrix) plane1.decide(chunk, nullptr, m16, maxT, x0, n, dots[1]);
            out.put(planes, n);
            return;
        }
#endif
        row.read(x0, n, m);
        for (uint32_t i = 0; i < n; ++i)
            for (unsigned k = 0; k < 4; ++k) tones[k][i] = tone[inkLevel(chunk.inks[i], k)];
        // White pixels print nothing.
        const int32_t* const t0 = tones[0];
        const int32_t* const t2 = tones[2];
        const int32_t* const t3 = tones[3];
        uint8_t* const dots0 = dots[0];
        uint8_t* const dots2 = dots[2];
        uint8_t* const dots3 = dots[3];
        // One loop per plane: each is a few vector compares per eight pixels.
        for (uint32_t i = 0; i < n; ++i) dots3[i] = static_cast<uint8_t>((t3[i] > m[i]) & !chunk.white[i]);
        for (uint32_t i = 0; i < n; ++i)
            dots0[i] = static_cast<uint8_t>(pairedThreshold(t3[i], t0[i], maxT, m[i]).b & !chunk.white[i]);
        for (uint32_t i = 0; i < n; ++i) dots2[i] = static_cast<uint8_t>((t2[i] > maxT - m[i]) & !chunk.white[i]);
        plane1.decide(chunk, tones[1], m, maxT, x0, n, dots[1]);
        out.put({dots[0], dots[1], dots[2], dots[3]}, n);
    });

    plane1.finish(startX + mainCount);
    if (count & 1) {
        const uint32_t x = startX + mainCount;
        const uint32_t m = row(x);
        const uint32_t inks = input.inksByMatrix(in, mainCount, x);
        int32_t t[4];
        for (unsigned k = 0; k < 4; ++k) t[k] = tone[inkLevel(inks, k)];
        const PairDots p30 = pairedThreshold(t[3], t[0], maxT, static_cast<int32_t>(m));
        const PairDots p12 = pairedThreshold(t[1], t[2], maxT, maxT - static_cast<int32_t>(m));
        out.set(3, dotPattern(p30.a));
        out.set(0, dotPattern(p30.b));
        out.set(1, dotPattern(p12.a));
        out.set(2, dotPattern(p12.b));
        out.next();
    }
    out.finish();
}

// The run with the input stage the instance's input format asks for.
template <class Conversion, class Plane1>
void colourRun(const HtContext& ctx, const HtRun& run, const Conversion& conversion, Plane1 plane1) {
    const PixelSource<false> in(run.src, colourPixelBytes(ctx.inputFormat), ctx.scaleMode == INKDOT_SCALE_DOUBLE);
    withColourInput(ctx, conversion, [&](auto input) { ditherRun(ctx, run, input, in, plane1); });
}

GridInput<kDitherGrid> gridInput(const HtContext& ctx, const HtRun& run) {
    return GridInput<kDitherGrid>(ctx, NodeMatrix{matrixRow(ctx, run.lineNo)});
}

}  // namespace

uint32_t Dither1Colour(HtContext& ctx, const HtRun& run) {
    ctx.prevLineNo = run.lineNo;
    colourRun(ctx, run, gridInput(ctx, run), MatrixPlane1{});
    return RC_OK;
}

uint32_t Dither1ColourHybrid(HtContext& ctx, const HtRun& run) {
    ctx.prevLineNo = run.lineNo;
    withLevelSteps(run.count, InkSteps(ctx), [&](const auto& steps) {
        colourRun(ctx, run, gridInput(ctx, run), DiffusedPlane1(ctx, run.startX, steps));
    });
    return RC_OK;
}

uint32_t Threshold1Colour(HtContext& ctx, const HtRun& run) {
    ctx.prevLineNo = run.lineNo;
    colourRun(ctx, run, ThresholdInput(ctx), MatrixPlane1{});
    return RC_OK;
}

}  // namespace inkdot
