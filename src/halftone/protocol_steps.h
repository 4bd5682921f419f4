// The steps of the halftone resource protocol and the table builders they
// call, one file per concept. The builders that work on plain arrays are
// free of the record so that each table can be checked on its own.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"

namespace inkdot {

// request_list.cpp
// Stores the ids of the request list in requestIds with the terminator behind them.
// More than 15 ids: RC_DATA.
uint32_t readRequestList(HtContext& ctx, const uint8_t* block);
// The threshold matrix id of the instance's resolution class.
uint16_t classMatrixId(const HtContext& ctx);

// error_lines.cpp
uint32_t errorLineCountFor(const HtContext& ctx);
uint32_t errorLineBytes(uint32_t width);
// Acquires errorLineCount zero-filled lines, sharing one block when it stays
// within 64 KiB. On failure the caller releases all slots.
uint32_t acquireErrorLines(HtContext& ctx);

// replication_setup.cpp
// Splits an expansion into the kernels' doubling and a replication factor,
// and acquires the replicated line.
uint32_t setUpReplication(HtContext& ctx);

// ink_curve.cpp
// Level spread W of the padded two-bit ink curve.
uint32_t levelSpread(const uint8_t grayTable[256]);
// Monochrome phase 2: acquires slot 0 and fills the ink curve.
uint32_t buildInkCurve(HtContext& ctx);

// grid_resample.cpp
// True when the first `count` levels start at 0, rise strictly and end at 255.
bool isLevelRow(const uint8_t* levels, uint32_t count);
// Resamples the source grid at the target's levels into packed u32 nodes.
void resampleGrid(const CmLut& source, const CmLut& target, uint32_t* out);

// threshold_tables.cpp
void buildDotValueTable(int16_t dot[256], bool twoBit, int32_t inkParam0, int32_t inkParam1);
bool hasZeroDotValue(const int16_t dot[256]);
void buildToneTable(uint16_t tone[256], const int16_t dot[256], uint16_t matrixCells);
// Both halves of `tone` become tone[inkCurve[i]].
void composeToneWithInkCurve(uint16_t tone[512], const uint16_t inkCurve[256]);
void buildEdThresholdTable(int16_t edThreshold[256], const int16_t dot[256]);
// {lower node, its weight} per input level; left untouched when `levels` is
// not a level row of `count` entries.
void buildGridCellTable(uint8_t cells[512], const uint8_t* levels, uint32_t count);

// spread_thresholds.cpp
uint32_t chooseSpreadThresholds(HtContext& ctx);

// dot_split.cpp
// Copies the rows; a row adding up to more than 255 stops the copy with RC_DATA.
uint32_t copyDotSplitRows(uint8_t table[768], const uint8_t* block);
// Phase 4 change of the two-bit threshold table, re-indexed by dot total.
void reindexEdThresholds(int16_t edThreshold[512], const uint8_t table[768], uint32_t resolutionX);
void buildSplitTables(HtContext& ctx);

}  // namespace inkdot
