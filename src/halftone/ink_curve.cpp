// The monochrome ink curve: u16 per input level from the black table.
//
// One-bit output keeps it as it stands. Two-bit output pads it on both sides
// by half a level spread W, so that the dither kernels can shift a level by
// the matrix value modulo W (-h to W - 1 - h) and still read inside the table.
#include "halftone/protocol_steps.h"
#include "halftone/slots.h"
#include "halftone/setting_kinds.h"

namespace inkdot {

uint32_t levelSpread(const uint8_t grayTable[256]) {
    // The topmost step where the ink falls from 4 or more to 3 or less: the
    // lighter the level of that step, the wider the spread.
    for (int i = 255; i >= 1; --i) {
        const int here = grayTable[i];
        const int below = grayTable[i - 1];
        if (here <= 3 && below >= 4) {
            int spread = (2 * (256 - i)) / (here + below) + 1;
            spread = (spread / 2) * 2;  // even, so that h = W / 2 centres the shift
            return spread < 1 ? 1 : static_cast<uint32_t>(spread);
        }
    }
    // A black table without such a step gives no spread: W = 1 shifts
    // nothing, and the table is the plain curve behind entry 0.
    return 1;
}

uint32_t buildInkCurve(HtContext& ctx) {
    const uint8_t* gray = ctx.lut.grayTable;
    if (!isTwoBit(ctx.outputBits)) {
        if (const uint32_t rc = acquireSlot(ctx, kConversionTable, 512, false); rc != RC_OK) return rc;
        uint16_t* curve = slotData<uint16_t>(ctx, kConversionTable);
        for (int i = 0; i < 256; ++i) curve[i] = gray[i];
        return RC_OK;
    }

    const uint32_t w = levelSpread(gray);
    const uint32_t h = w / 2;
    const uint32_t bytes = (2 * w + 514 + 3) & ~3u;  // W + 257 u16 entries, whole words
    if (const uint32_t rc = acquireSlot(ctx, kConversionTable, bytes, false); rc != RC_OK) return rc;
    uint16_t* entry = slotData<uint16_t>(ctx, kConversionTable);
    entry[0] = static_cast<uint16_t>(w);
    for (uint32_t i = 1; i <= h; ++i) entry[i] = gray[0];
    for (uint32_t v = 0; v < 256; ++v) entry[h + 1 + v] = gray[v];
    for (uint32_t i = h + 257; i <= w + 255; ++i) entry[i] = gray[255];
    // Without ink at full level the padding behind the top stays empty too.
    if (gray[255] == 0) {
        for (uint32_t i = 256; i <= w + 255; ++i) entry[i] = 0;
    }
    return RC_OK;
}

}  // namespace inkdot
