// The dot-split table: for each ink amount r (0..255) the amounts of small,
// medium and large dots that deliver it.
//
// Each dot size carries a share of the covered area: large dots fade in
// between largeStart and largeFull (smoothstep on r / 255), medium dots
// between mediumStart and mediumFull (their share is what the medium curve
// leaves above the large one), small dots take the rest. The covered area is
// then chosen so that the ink delivered, small × smallInk + medium × mediumInk
// + large × 1, equals r, capped at 255 (every pixel covered). Small dots rise
// and hand over to medium, medium rises and hands over to large, and the
// delivered ink follows r.
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
};

struct DotSplitRow {
    uint8_t small, medium, large;
};

std::array<DotSplitRow, 256> makeDotSplit(const DotSplitParams& params);

// 768 bytes: small, medium, large for each row.
Bytes dotSplitBlock(const std::array<DotSplitRow, 256>& rows);

}  // namespace inkdot::tools
