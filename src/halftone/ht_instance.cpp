// HalftoneNew and HalftoneDelete: the life of a halftone instance.
#include "halftone/ht_instance.h"

#include <cstring>

#include "frame/memory.h"
#include "halftone/ht_context.h"
#include "halftone/slots.h"
#include "halftone/setting_kinds.h"

namespace inkdot {

static_assert(offsetof(HtContext, spare10) - offsetof(HtContext, method) == 10 * sizeof(uint32_t),
              "the eleven setting words lie in one run, in the caller's order");

uint32_t halftoneNew(const HtSettings* settings, const CmLut* lut, uint32_t reserved3,
                     uint32_t* outModelId, HtContext** outHandle) {
    if (reserved3 != 0) return RC_ARG + 3;
    if (settings == nullptr) return RC_ARG + 1;
    if (lut == nullptr) return RC_ARG + 2;
    *outModelId = lut->modelId;  // before allocating: the caller gets it even on failure

    void* block = MemAlloc(sizeof(HtContext), 1);
    if (block == nullptr) return RC_MEM_ALLOC;
    if (MemLock(block) == nullptr) {
        MemFree(block);
        return RC_MEM_LOCK;
    }
    auto* ctx = static_cast<HtContext*>(block);
    *outHandle = ctx;
    ctx->selfBlock = block;
    std::memcpy(&ctx->method, settings, sizeof(HtSettings));
    std::memcpy(&ctx->lut, lut, sizeof(CmLut));
    ctx->callCount = 0;
    ctx->prevLineNo = 0;
    ctx->prevRunEnd = 0;
    clearSlots(*ctx);
    return checkSettings(*ctx);
}

uint32_t checkSettings(const HtContext& ctx) {
    // Formats 1 and 7 are layouts no kernel reads.
    const bool gray = ctx.inputFormat == INKDOT_INPUT_GRAY;
    if (gray == isColour(ctx.colourMode) || ctx.inputFormat == 1 || ctx.inputFormat == 7) return RC_ARG + 1;
    // Only one-bit and two-bit output exist. Other values would be dispatched
    // as one-bit output but built with tables of another shape, so they are refused.
    if (ctx.outputBits != INKDOT_ONE_BIT && ctx.outputBits != INKDOT_TWO_BITS) return RC_ARG + 1;
    // No kernel has a reading for six-byte pixels (they step three bytes, or
    // four for ink input), so such a layout is refused up front.
    if (bytesPerPixel(ctx.inputFormat) == 6) return RC_ARG + 1;
    return RC_OK;
}

uint32_t halftoneDelete(HtContext* ctx) {
    if (const uint32_t rc = releaseSlots(*ctx); rc != RC_OK) return rc;
    if (MemUnlock(ctx->selfBlock) != 0) return RC_MEM_UNLOCK;
    if (MemFree(ctx->selfBlock) != 0) return RC_MEM_FREE;
    return RC_OK;
}

}  // namespace inkdot
