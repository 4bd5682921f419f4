// Dither1Mono: one gray plane, the tone value of each input level against
// the threshold matrix.
#include <algorithm>

#include "halftone/ht_context.h"
#include "kernels/cpu_clones.h"
#include "kernels/matrix_row.h"
#include "kernels/kernels.h"
#include "kernels/packing.h"
#include "kernels/pixel_source.h"

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

// Two stages over a chunk of pixels: the levels of the input bytes (a table
// look-up each), then the comparison with the matrix and the packing, which
// the compiler turns into vector compares.
constexpr uint32_t kChunk = 256;

template <class Source, class Level>
INKDOT_CPU_CLONES void ditherRun(const HtContext& ctx, const HtRun& run, const Source& in, Level level) {
    const MatrixRow row = matrixRow(ctx, run.lineNo);
    PlanePacker<1, 1> out(run.dst, run.planeStride, run.bitOffset);
    uint16_t levels[kChunk];
    uint16_t thresholds[kChunk];
    uint8_t flags[kChunk];
    for (uint32_t first = 0; first < run.count; first += kChunk) {
        const uint32_t n = std::min(kChunk, run.count - first);
        if (const uint8_t* const bytes = in.byteRow(first)) {
            for (uint32_t i = 0; i < n; ++i) levels[i] = static_cast<uint16_t>(level(bytes[i]));
        } else {
            for (uint32_t i = 0; i < n; ++i) levels[i] = static_cast<uint16_t>(level(in.byte(first + i, 0)));
        }
        row.read(run.startX + first, n, thresholds);
        // A level of 0 never prints, even on a matrix cell of 0.
        for (uint32_t i = 0; i < n; ++i) flags[i] = (levels[i] != 0) & (levels[i] > thresholds[i]);
        out.put({flags}, n);
    }
    out.finish();
}

}  // namespace

uint32_t Dither1Mono(HtContext& ctx, const HtRun& run) {
    if (const uint32_t rc = refuseOption11(run)) return rc;
    ctx.prevLineNo = run.lineNo;

    const auto* tone = slotData<uint16_t>(ctx, kToneTable);
    // Halving: two bytes per pixel, the smaller used.
    withPixelSource(ctx, run.src, kGrayPixelBytes, true, [&](const auto& in) {
        if (ctx.method == INKDOT_METHOD_THRESHOLD) {
            ditherRun(ctx, run, in, FixedThresholdLevel{tone[255], tone[0]});
        } else {
            ditherRun(ctx, run, in, ToneLevel{tone});
        }
    });
    return RC_OK;
}

}  // namespace inkdot
