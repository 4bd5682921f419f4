// Dither2Colour and Dither2ColourDoubleY: four planes of two-bit dot codes
// from colour input. The ink amounts come from the grid as in the one-bit
// colour kernels; each plane then gets its dot size by the three-size code
// rule at its own place of the matrix. The DoubleY kernel is the same run
// with the halving reduction.
#include "halftone/ht_context.h"
#include "kernels/dither/colour_sources.h"
#include "kernels/force_inline.h"
#include "kernels/dither/input_walk.h"
#include "kernels/matrix_row.h"
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
    const HtContext& ctx;  // its split tone tables, both at one base

    // The four planes' codes, plane k in byte k, each code repeated over its
    // byte: one OR puts all four into the packer.
    INKDOT_FORCE_INLINE uint32_t codeBytes(uint32_t x, const Inks& c) const {
        const uint32_t codes = threeSizeCode(ctx, c.c[0], rowA(x)) |
                               threeSizeCode(ctx, c.c[1], rowB(x + kPlane1Column)) << 8 |
                               threeSizeCode(ctx, c.c[2], rowA(x + kPlane2Column)) << 16 |
                               threeSizeCode(ctx, c.c[3], rowB(x + kPlane3Column)) << 24;
        return codes * kCodeRepeat;
    }
};

template <class Reduction, class Source>
void ditherRun(const HtContext& ctx, const HtRun& run, Source source) {
    const PlaneThresholds rows{matrixRow(ctx, run.lineNo), matrixRow(ctx, run.lineNo + kRowBLineOffset), ctx};
    InputWalk<Reduction> in(run.src, colourPixelBytes(ctx.inputFormat), ctx.scaleMode == 1);
    PlanePacker<2, 4> out(run.dst, run.planeStride, run.bitOffset);

    // Kept in locals: the output stores may alias anything a reference reaches.
    const uint32_t startX = run.startX;
    const uint32_t count = run.count;
    const uint32_t mainCount = count & ~1u;
    for (uint32_t i = 0; i < mainCount; ++i) {
        const uint32_t x = startX + i;
        const ColourBytes px = Source::read(in);
        if (!Source::white(px)) out.setAll(rows.codeBytes(x, source.main(px, rows.rowA(x))));
        out.next();
        in.advanceAfter(i);
    }

    if (count & 1) {
        out.setAll(rows.codeBytes(startX + mainCount, source.lastNearest(Source::read(in))));
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
