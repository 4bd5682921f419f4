// One row of the threshold matrix, addressed by absolute column: the row is a
// line number modulo the matrix height, the column is masked with
// matrixWidth - 1 (the width is a power of two). Every kernel reads the
// matrix through this.
#pragma once

#include <algorithm>
#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

struct MatrixRow {
    const uint16_t* cells;
    uint32_t columnMask;

    uint32_t operator()(uint32_t column) const { return cells[column & columnMask]; }

    // The cells of columns x0 .. x0 + n - 1 into out[0 .. n - 1], one run of
    // consecutive cells up to the row's end at a time: a plain copy, which
    // the compiler does with vector loads, where a masked column per pixel
    // is a scalar load each.
    template <class T>
    void read(uint32_t x0, uint32_t n, T* out) const {
        for (uint32_t i = 0; i < n;) {
            const uint32_t column = (x0 + i) & columnMask;
            const uint32_t len = std::min(n - i, columnMask + 1 - column);
            const uint16_t* from = cells + column;
            T* to = out + i;
            for (uint32_t j = 0; j < len; ++j) to[j] = from[j];
            i += len;
        }
    }
};

inline MatrixRow matrixRow(const HtContext& ctx, uint32_t lineNo) {
    const auto* matrix = slotData<uint16_t>(ctx, kThresholdMatrix);
    return {matrix + (lineNo % ctx.matrixHeight) * ctx.matrixWidth, ctx.matrixWidth - 1};
}

// Where the two-bit kernels read the matrix besides a pixel's own cell, so
// that no two readings are correlated: a second value (the jitter of the
// split row, the level shift) 24 columns to the right in the same row; and
// for the four colour planes, a row B 24 lines below row A, with per-plane
// column offsets so that the planes' dots do not line up.
inline constexpr uint32_t kJitterColumn = 24;
inline constexpr uint32_t kRowBLineOffset = 24;
inline constexpr uint32_t kPlane1Column = 16;  // row B
inline constexpr uint32_t kPlane2Column = 48;  // row A
inline constexpr uint32_t kPlane3Column = 40;  // row B

// The largest matrix value, matrixCells - 1 kept to 16 bits like the cell
// count itself (a 65536-cell matrix would read as 0 cells and give 65535).
inline int32_t maxThreshold(const HtContext& ctx) {
    return static_cast<uint16_t>(ctx.matrixCells - 1);
}

}  // namespace inkdot
