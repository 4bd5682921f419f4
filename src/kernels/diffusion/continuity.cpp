#include "kernels/diffusion/continuity.h"

#include <algorithm>

namespace inkdot {

ColumnRange continuityRange(HtContext& ctx, const HtRun& run) {
    const uint32_t prevLine = ctx.prevLineNo;
    uint32_t prevEnd = ctx.prevRunEnd;
    const uint32_t line = run.lineNo;
    const uint32_t start = run.startX;
    const uint32_t width = ctx.width;
    ctx.prevLineNo = line;
    ctx.prevRunEnd = run.startX + run.count;

    if (prevEnd == width) prevEnd = 0;  // a run that ended the line hands over nothing on it
    // Unsigned comparisons throughout: prevLine + 1 wraps like the line counter.
    ColumnRange range{0, 0};
    if (prevLine + 1 < line) {
        range = {0, width};  // lines were skipped
    } else if (line == prevLine + 1 && line % 16 == 15 && start != 0) {
        range = {0, start};
    } else if (line == prevLine && line % 16 == 15 && prevEnd < start) {
        range = {prevEnd, start};
    } else if (line == prevLine + 1 && line % 16 == 0 && prevEnd != 0) {
        range = {prevEnd, width};
    }
    range.to = std::min(range.to, width);
    range.from = std::min(range.from, range.to);
    return range;
}

void clearColumns(int32_t* line, ColumnRange range) {
    std::fill(line + range.from, line + range.to, 0);
}

void applyContinuity(HtContext& ctx, const HtRun& run, unsigned lineCount) {
    const ColumnRange range = continuityRange(ctx, run);
    for (unsigned k = 0; k < lineCount; ++k) clearColumns(errorLine(ctx, k), range);
}

}  // namespace inkdot
