// Dither2Colour and Dither2ColourDoubleY: four planes of two-bit dot codes
// from colour input. The ink amounts come from the grid as in the one-bit
// colour kernels; each plane then gets its dot size by the three-size code
// rule at its own place of the matrix. The DoubleY kernel is the same run
// with the halving reduction.
#include <algorithm>

#include "halftone/ht_context.h"
#include "kernels/colour_input/colour_input.h"
#include "kernels/cpu_clones.h"
#include "kernels/force_inline.h"
#include "kernels/matrix_row.h"
#include "kernels/dither/dither_dots_avx512.h"
#include "kernels/dither/three_size_code.h"
#include "kernels/kernels.h"
#include "kernels/packing.h"

namespace inkdot {
namespace {

struct PlaneThresholds {
    MatrixRow rowA;
    MatrixRow rowB;
    const HtContext& ctx;  // its split tone tables, both at one base

    // The four planes' codes, plane k in byte k, each code repeated over its
    // byte: one OR puts all four into the packer.
    INKDOT_FORCE_INLINE uint32_t codeBytes(uint32_t x, uint32_t inks) const {
        const uint32_t codes = threeSizeCode(ctx, inkLevel(inks, 0), rowA(x)) |
                               threeSizeCode(ctx, inkLevel(inks, 1), rowB(x + kPlane1Column)) << 8 |
                               threeSizeCode(ctx, inkLevel(inks, 2), rowA(x + kPlane2Column)) << 16 |
                               threeSizeCode(ctx, inkLevel(inks, 3), rowB(x + kPlane3Column)) << 24;
        return codes * kCodeRepeat;
    }
};

// The decision stage over a chunk of levels: each plane's split-row tones
// and matrix values, then one loop per plane of the three-size rule (a few
// vector compares per eight pixels), then the packing of whole bytes.
template <class Input, class Source>
INKDOT_CPU_CLONES void ditherRun(const HtContext& ctx, const HtRun& run, Input input, const Source& in) {
    const PlaneThresholds rows{matrixRow(ctx, run.lineNo), matrixRow(ctx, run.lineNo + kRowBLineOffset), ctx};
    const MatrixRow planeRow[4] = {rows.rowA, rows.rowB, rows.rowA, rows.rowB};
    constexpr uint32_t kPlaneColumn[4] = {0, kPlane1Column, kPlane2Column, kPlane3Column};
    PlanePacker<2, 4> out(run.dst, run.planeStride, run.bitOffset);

    // Kept in locals: the output stores may alias anything a reference reaches.
    const uint32_t startX = run.startX;
    const uint32_t count = run.count;
    const uint32_t mainCount = count & ~1u;
    ColourChunk chunk;
    uint32_t cumulative[4][kColourChunk];
    uint32_t total[4][kColourChunk];
    uint32_t threshold[kColourChunk];
    uint8_t codes[4][kColourChunk];
#ifdef INKDOT_AVX512_DITHER_DOTS
    const bool avx512 = ditherDotsAvx512Runs();
#endif
    forEachChunk(input, in, startX, mainCount, chunk, [&](uint32_t x0, uint32_t n) INKDOT_INLINE_LAMBDA {
#ifdef INKDOT_AVX512_DITHER_DOTS
        if (avx512) {
            uint16_t th[4][kColourChunk];
            for (unsigned k = 0; k < 4; ++k) planeRow[k].read(x0 + kPlaneColumn[k], n, th[k]);
            uint8_t* const planes[4] = {codes[0], codes[1], codes[2], codes[3]};
            // Whole output bytes straight from the decisions where they can go out as they are.
            const bool packed = out.aligned() && n % 4 == 0;
            dither2CodesAvx512(ctx.splitToneCumulative, ctx.splitToneTotal, {th[0], th[1], th[2], th[3]}, chunk, n,
                               {planes, packed});
            if (packed) out.putBytes(planes, n / 4);
            else out.put(planes, n);
            return;
        }
#endif
        // The look-ups pixel by pixel, all four planes of an ink word at once.
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t inks = chunk.inks[i];
            for (unsigned k = 0; k < 4; ++k) {
                cumulative[k][i] = ctx.splitToneCumulative[inkLevel(inks, k)];
                total[k][i] = ctx.splitToneTotal[inkLevel(inks, k)];
            }
        }
        for (unsigned k = 0; k < 4; ++k) {
            planeRow[k].read(x0 + kPlaneColumn[k], n, threshold);
            // White pixels print nothing.
            const uint32_t* const c = cumulative[k];
            const uint32_t* const s = total[k];
            uint8_t* const code = codes[k];
            for (uint32_t i = 0; i < n; ++i) {
                code[i] = static_cast<uint8_t>(stackedCode(c[i], s[i], threshold[i]) * !chunk.white[i]);
            }
        }
        out.put({codes[0], codes[1], codes[2], codes[3]}, n);
    });

    if (count & 1) {
        out.setAll(rows.codeBytes(startX + mainCount, input.nearestInks(in, mainCount)));
        out.next();
    }
    out.finish();
}

uint32_t dither2Colour(HtContext& ctx, const HtRun& run, bool halvingOffered) {
    ctx.prevLineNo = run.lineNo;
    const GridInput<kDitherGrid> grid(ctx, NodeMatrix{matrixRow(ctx, run.lineNo)});
    withPixelSource(ctx, run.src, colourPixelBytes(ctx.inputFormat), halvingOffered, [&](const auto& in) {
        withColourInput(ctx, grid, [&](auto input) { ditherRun(ctx, run, input, in); });
    });
    return RC_OK;
}

}  // namespace

uint32_t Dither2Colour(HtContext& ctx, const HtRun& run) { return dither2Colour(ctx, run, false); }

// Each output pixel from two input pixels, byte by byte the smaller, when scaleMode is -1.
uint32_t Dither2ColourDoubleY(HtContext& ctx, const HtRun& run) { return dither2Colour(ctx, run, true); }

}  // namespace inkdot
