// The dot-split table: for each ink amount r (0..255) the amounts of small,
// medium and large dots that deliver it.
//
// Each dot size carries a share of the covered area: large dots fade in
// between largeStart and largeFull (smoothstep on r / 255), medium dots
// between mediumStart and mediumFull (their share is what the medium curve
// leaves above the large one), small dots take the rest. The covered area is
// then chosen so that the ink delivered, small × smallInk + medium × mediumInk
// + large × 1, equals what one-bit output lays down for r, capped at 255
// (every pixel covered). Small dots rise and hand over to medium, medium
// rises and hands over to large.
//
// One-bit output weighs every dot by the colour table's ink parameters A, B
// (dot gain: a sparse dot darkens A % of its cell, a dense one B %), so it
// prints r × 255 / dotValue(r) dots where dotValue runs from A % of 255 at
// r = 0 to B % at r = 255. Two-bit output counts every dot at 100 %: unless
// the split delivers that same amount, two-bit prints up to A / 100 times
// the ink of one-bit for the same colour table.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "pack/byte_io.h"

namespace inkdot::tools {

struct DotSplitParams {
    double smallInk = 0.35;   // ink of a small dot relative to a large one
    double mediumInk = 0.65;
    double mediumStart = 0.08, mediumFull = 0.60;
    double largeStart = 0.30, largeFull = 1.00;
    int inkParamA = 250, inkParamB = 100;  // of the colour tables that name the split
};

struct DotSplitRow {
    uint8_t small, medium, large;
};

// The dot value one-bit halftoning gives ink amount r, in 255ths of a dot:
// ((A − B)(255 − r)² / 255 + 255 B) / 100, in integers as the engine has it.
int oneBitDotValue(int r, int inkParamA, int inkParamB);

std::array<DotSplitRow, 256> makeDotSplit(const DotSplitParams& params);

// 768 bytes: small, medium, large for each row.
Bytes dotSplitBlock(const std::array<DotSplitRow, 256>& rows);

}  // namespace inkdot::tools
