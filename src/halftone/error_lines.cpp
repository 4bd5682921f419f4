// Error lines: one signed 32-bit cell per pixel with kErrorLineMargin cells
// on each side, so that the spread patterns may reach past both ends of a line.
#include "halftone/setting_kinds.h"
#include "halftone/protocol_steps.h"
#include "halftone/slots.h"

namespace inkdot {

uint32_t errorLineCountFor(const HtContext& ctx) {
    const bool colour = isColour(ctx.colourMode);
    if (isDitherMethod(ctx.method)) {
        // Only the colour dither that diffuses one plane keeps an error line.
        return colour && isHybridDither(ctx.ditherMode) ? 1 : 0;
    }
    return colour ? 4 : 1;
}

uint32_t errorLineBytes(uint32_t width) {
    return (width + 2 * kErrorLineMargin) * sizeof(int32_t);
}

uint32_t acquireErrorLines(HtContext& ctx) {
    const uint32_t n = ctx.errorLineCount;
    if (n == 0) return RC_OK;
    const uint32_t lineBytes = errorLineBytes(ctx.width);
    // Lines share one block while it stays within 64 KiB.
    if (lineBytes <= 65535 / n) {
        if (const uint32_t rc = acquireSlot(ctx, kErrorLine0, n * lineBytes, true); rc != RC_OK) return rc;
        uint8_t* base = slotData<uint8_t>(ctx, kErrorLine0);
        for (uint32_t k = 1; k < n; ++k) {
            setSlotView(ctx, static_cast<Slot>(kErrorLine0 + k), base + k * lineBytes, lineBytes);
        }
        return RC_OK;
    }
    for (uint32_t k = 0; k < n; ++k) {
        if (const uint32_t rc = acquireSlot(ctx, static_cast<Slot>(kErrorLine0 + k), lineBytes, true); rc != RC_OK) {
            return rc;
        }
    }
    return RC_OK;
}

}  // namespace inkdot
