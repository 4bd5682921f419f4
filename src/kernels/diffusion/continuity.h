// The error-line continuity rule: which cells of the error lines a run must
// clear before it diffuses, so that error left by runs that did not border on
// this one (skipped lines, gaps on a line, the 16-line band edges) is dropped.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "halftone/kernel.h"

namespace inkdot {

struct ColumnRange {
    uint32_t from;
    uint32_t to;  // exclusive; from == to clears nothing
};

// Decides the case for this run and records it as the previous run
// (prevLineNo, prevRunEnd). Runs on every call, even when count is 0.
ColumnRange continuityRange(HtContext& ctx, const HtRun& run);

// Clears the columns of one error line addressed at column 0.
void clearColumns(int32_t* line, ColumnRange range);

// The rule applied to error lines 0 .. lineCount - 1, with one case for all.
void applyContinuity(HtContext& ctx, const HtRun& run, unsigned lineCount);

}  // namespace inkdot
