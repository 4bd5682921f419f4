// Dither2Colour and Dither2ColourDoubleY: four planes of two-bit dot codes
// from colour input. The ink amounts come from the grid as in the one-bit
// colour kernels; each plane then gets its dot size by the three-size code
// rule at its own place of the matrix. The DoubleY kernel is the same run
// with the halving reduction.
#include "halftone/ht_context.h"
#include "kernels/dither/colour_sources.h"
#include "kernels/force_inline.h"
#include "kernels/dither/input_walk.h"
#include "kernels/dither/matrix_row.h"
#include "kernels/dither/run_checks.h"
#include "kernels/dither/three_size_code.h"
#include "kernels/kernels.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

// The four planes read four different places of the matrix: row B lies 24
// lines below row A, and the columns are offset per plane, so the planes'
// dots do not line up.
inline constexpr uint32_t kRowBLineOffset = 24;
inline constexpr uint32_t kPlane1Column = 16;  // row B
inline constexpr uint32_t kPlane2Column = 48;  // row A
inline constexpr uint32_t kPlane3Column = 40;  // row B

struct PlaneThresholds {
    MatrixRow rowA;
    MatrixRow rowB;
};

template <class Packer>
INKDOT_FORCE_INLINE void setCodes(const HtContext& ctx, Packer& out, const PlaneThresholds& rows, uint32_t x, const Inks& c) {
    out.set(0, kCodeByte[threeSizeCode(ctx, c.c[0], rows.rowA(x))]);
    out.set(1, kCodeByte[threeSizeCode(ctx, c.c[1], rows.rowB(x + kPlane1Column))]);
    out.set(2, kCodeByte[threeSizeCode(ctx, c.c[2], rows.rowA(x + kPlane2Column))]);
    out.set(3, kCodeByte[threeSizeCode(ctx, c.c[3], rows.rowB(x + kPlane3Column))]);
}

template <class Reduction, class Source>
void ditherRun(const HtContext& ctx, const HtRun& run, Source source) {
    const PlaneThresholds rows{matrixRow(ctx, run.lineNo), matrixRow(ctx, run.lineNo + kRowBLineOffset)};
    InputWalk<Reduction> in(run.src, bytesPerPixel(ctx.inputFormat), ctx.scaleMode == 1);
    PlanePacker<2, 4> out(run.dst, run.planeStride, run.bitOffset);

    const uint32_t mainCount = run.count & ~1u;
    for (uint32_t i = 0; i < mainCount; ++i) {
        const uint32_t x = run.startX + i;
        const ColourBytes px = Source::read(in);
        if (!Source::white(px)) setCodes(ctx, out, rows, x, source.main(px, rows.rowA(x)));
        out.next();
        in.advanceAfter(i);
    }

    if (run.count & 1) {
        setCodes(ctx, out, rows, run.startX + mainCount, source.lastNearest(Source::read(in)));
        out.next();
    }
    out.finish();
}

uint32_t dither2Colour(HtContext& ctx, const HtRun& run, bool halving) {
    if (const uint32_t rc = checkDitherRun(ctx, run, Option11::Ignored)) return rc;
    ctx.prevLineNo = run.lineNo;
    withReduction(halving, [&]<class Reduction>(Reduction) {
        withColourSource<GridSource>(ctx, [&](auto source) { ditherRun<Reduction>(ctx, run, source); });
    });
    return RC_OK;
}

}  // namespace

uint32_t Dither2Colour(HtContext& ctx, const HtRun& run) { return dither2Colour(ctx, run, false); }

// Each output pixel from two input pixels, byte by byte the smaller, when scaleMode is -1.
uint32_t Dither2ColourDoubleY(HtContext& ctx, const HtRun& run) {
    return dither2Colour(ctx, run, ctx.scaleMode == -1);
}

}  // namespace inkdot
