// Dither2Mono and Dither2MonoDoubleY: one gray plane of two-bit dot codes.
// The matrix first shifts each input level by up to the level spread W of
// the padded ink curve, then the three-size code rule places the dot sizes.
// The DoubleY kernel is the same run with the halving reduction.
#include <algorithm>

#include "halftone/ht_context.h"
#include "kernels/cpu_clones.h"
#include "kernels/matrix_row.h"
#include "kernels/dither/three_size_code.h"
#include "kernels/kernels.h"
#include "kernels/level_shift.h"
#include "kernels/packing.h"
#include "kernels/pixel_source.h"

namespace inkdot {
namespace {

inline constexpr uint32_t kGrayPixelBytes = 1;

// Stages over a chunk of pixels, each its own loop so that only the table
// look-ups stay scalar: the matrix values and level shifts, then the split
// row of each pixel (the curve and its tones), then the dot codes and the
// packing.
constexpr uint32_t kChunk = 256;

template <class Source>
INKDOT_CPU_CLONES void ditherRun(const HtContext& ctx, const HtRun& run, const Source& in) {
    const MatrixRow row = matrixRow(ctx, run.lineNo);
    // Padded curve: entry 0 is the level spread W, entry d + v + 1 the ink at
    // level v shifted by d - W / 2. The resource protocol never stores W = 0.
    const auto* curve = slotData<uint16_t>(ctx, kConversionTable);
    const LevelShift levelShift(std::max<uint32_t>(curve[0], 1));
    PlanePacker<2, 1> out(run.dst, run.planeStride, run.bitOffset);
    uint32_t thresholds[kChunk];
    uint32_t entries[kChunk];
    uint32_t cumulative[kChunk];
    uint32_t total[kChunk];
    uint8_t codes[kChunk];
    for (uint32_t first = 0; first < run.count; first += kChunk) {
        const uint32_t n = std::min(kChunk, run.count - first);
        const uint32_t x0 = run.startX + first;
        row.read(x0 + kJitterColumn, n, entries);
        // Each pixel's curve entry.
        if (const uint8_t* const bytes = in.byteRow(first)) {
            for (uint32_t i = 0; i < n; ++i) entries[i] = levelShift(entries[i]) + bytes[i] + 1;
        } else {
            for (uint32_t i = 0; i < n; ++i) entries[i] = levelShift(entries[i]) + in.byte(first + i, 0) + 1;
        }
        for (uint32_t i = 0; i < n; ++i) {
            // The curve holds ink amounts of the black table (0..255): one split row each.
            const uint8_t amount = static_cast<uint8_t>(curve[entries[i]]);
            cumulative[i] = ctx.splitToneCumulative[amount];
            total[i] = ctx.splitToneTotal[amount];
        }
        row.read(x0, n, thresholds);
        // The three-size rule, a few vector compares per eight pixels.
        for (uint32_t i = 0; i < n; ++i) {
            codes[i] = static_cast<uint8_t>(stackedCode(cumulative[i], total[i], thresholds[i]));
        }
        out.put({codes}, n);
    }
    out.finish();
}

uint32_t dither2Mono(HtContext& ctx, const HtRun& run, bool halvingOffered) {
    if (const uint32_t rc = refuseOption11(run)) return rc;
    ctx.prevLineNo = run.lineNo;
    withPixelSource(ctx, run.src, kGrayPixelBytes, halvingOffered, [&](const auto& in) { ditherRun(ctx, run, in); });
    return RC_OK;
}

}  // namespace

uint32_t Dither2Mono(HtContext& ctx, const HtRun& run) { return dither2Mono(ctx, run, false); }

// Each output pixel from two input pixels, the smaller level, when scaleMode is -1.
uint32_t Dither2MonoDoubleY(HtContext& ctx, const HtRun& run) { return dither2Mono(ctx, run, true); }

}  // namespace inkdot
