// The grid cell table the resource protocol builds for 32 evenly spread
// levels (0, 8, 16, ... 255): on-node levels get weight 255, the others the
// lower node's share of 255. Used by the benchmarks and the kernel snapshot.
#pragma once

#include <cstdint>

#include "support/hand_context.h"

namespace inkdot::bench {

inline void evenGridCells(test::HandContext& hc) {
    uint32_t level[32];
    for (uint32_t k = 0; k < 32; ++k) level[k] = (k * 255 + 15) / 31;
    for (uint32_t v = 0, j = 0; v < 256; ++v) {
        if (level[j] == v) ++j;
        const uint32_t weight = level[j - 1] == v ? 255 : (level[j] - v) * 255 / (level[j] - level[j - 1]);
        hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j - 1), static_cast<uint8_t>(weight));
    }
}

}  // namespace inkdot::bench
