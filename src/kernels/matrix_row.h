// One row of the threshold matrix, addressed by absolute column: the row is a
// line number modulo the matrix height, the column is masked with
// matrixWidth - 1 (the width is a power of two). Every kernel reads the
// matrix through this.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

struct MatrixRow {
    const uint16_t* cells;
    uint32_t columnMask;

    uint32_t operator()(uint32_t column) const { return cells[column & columnMask]; }
};

inline MatrixRow matrixRow(const HtContext& ctx, uint32_t lineNo) {
    const auto* matrix = slotData<uint16_t>(ctx, kThresholdMatrix);
    return {matrix + (lineNo % ctx.matrixHeight) * ctx.matrixWidth, ctx.matrixWidth - 1};
}

// The largest matrix value, matrixCells - 1 kept to 16 bits like the cell
// count itself (a 65536-cell matrix would read as 0 cells and give 65535).
inline int32_t maxThreshold(const HtContext& ctx) {
    return static_cast<uint16_t>(ctx.matrixCells - 1);
}

}  // namespace inkdot
