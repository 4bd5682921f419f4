// Halftone: checks a run, replicates its input when the instance scales
// horizontally, and hands it to the kernel chosen when the protocol completed.
#include "halftone/ht_context.h"
#include "halftone/ht_instance.h"
#include "halftone/replication.h"
#include "halftone/setting_kinds.h"

namespace inkdot {

uint32_t halftone(HtContext* ctx, const uint8_t* src, uint8_t* dst, uint32_t planeStride,
                  uint32_t bitOffset, uint32_t count, uint32_t startX, uint32_t /*reserved8*/,
                  uint32_t lineNo, uint32_t reserved10, uint32_t option11) {
    // The run must end at or before the line's end. A sum that wraps past
    // 32 bits cannot describe a run inside the line either.
    if (count > ctx->width || startX > ctx->width - count) return RC_ARG + 6;
    if (reserved10 != 0) return RC_ARG + 10;
    // Pixels per output byte are 8 (one-bit) or 4 (two-bit); a first pixel
    // outside the first byte would write in front of dst.
    const uint32_t pixelsPerByte = isTwoBit(ctx->outputBits) ? 4 : 8;
    if (bitOffset >= pixelsPerByte) return RC_ARG + 5;
    // An instance that was not fed completely has no kernel and empty tables.
    if (ctx->kernel == nullptr) return RC_DATA;

    HtRun run{src, dst, planeStride, bitOffset, count, startX, lineNo, option11};
    if (ctx->replicationFactor != 1) {
        const uint32_t target = ctx->scaleMode == INKDOT_SCALE_DOUBLE ? (count + 1) / 2 : count;
        auto* line = slotData<uint8_t>(*ctx, kReplicatedLine);
        replicatePixels(src, line, bytesPerPixel(ctx->inputFormat), ctx->replicationFactor, target);
        run.src = line;
    }
    return ctx->kernel(*ctx, run);
}

}  // namespace inkdot
