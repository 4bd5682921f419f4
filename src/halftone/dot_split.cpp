// The dot-split table of phase 4 (small, medium and large dot amounts per ink
// level) and the tables derived from it.
#include <cstring>

#include "halftone/block_format.h"
#include "halftone/protocol_steps.h"

namespace inkdot {

uint32_t copyDotSplitRows(uint8_t table[768], const uint8_t* block) {
    using namespace block::dot_split;
    for (unsigned r = 0; r < kRows; ++r) {
        const uint8_t* row = block + r * kRowBytes;
        if (row[0] + row[1] + row[2] > static_cast<int>(kMaxRowTotal)) return RC_DATA;  // more ink than a level holds
        std::memcpy(table + r * kRowBytes, row, kRowBytes);
    }
    return RC_OK;
}

void reindexEdThresholds(int16_t edThreshold[512], const uint8_t table[768], uint32_t resolutionX) {
    // Lighter thresholds for the first two levels, lightest at 1440 dpi.
    if (resolutionX == 1440) {
        edThreshold[1] = 26;
        edThreshold[2] = 36;
    } else {
        edThreshold[1] = 30;
        edThreshold[2] = 38;
    }
    // The kernels look the threshold up by ink level; it belongs to the level's dot total.
    for (int r = 0; r < 256; ++r) {
        const uint8_t* row = table + 3 * r;
        edThreshold[256 + r] = edThreshold[row[0] + row[1] + row[2]];
    }
    std::memcpy(edThreshold, edThreshold + 256, 256 * sizeof(int16_t));
}

void buildSplitTables(HtContext& ctx) {
    const uint8_t* table = slotData<uint8_t>(ctx, kDotSplitTable);
    const uint16_t* tone = slotData<uint16_t>(ctx, kToneTable);
    for (int r = 0; r < 256; ++r) {
        const uint32_t s = table[3 * r], m = table[3 * r + 1], l = table[3 * r + 2];
        // Two 16-bit halves per word: low for the first value, high for the second.
        ctx.splitToneCumulative[r] = tone[l] + ((uint32_t{tone[l]} + tone[m]) << 16);
        ctx.splitAmounts[r] = s + ((s + m + l) << 16);
        ctx.splitToneTotal[r] = uint32_t{tone[s]} + tone[m] + tone[l];
    }
}

}  // namespace inkdot
