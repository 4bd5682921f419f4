// The channel-table set: the routing block (980), the base weights (990) and
// the table block of 21 per-channel correction tables.
//
// A requested ink weight w (30..70) against the base weight b picks table
// d = (w − b + 20) / 2, so table 10 is "as the base" and each step of two
// weight units moves one table. Table d is a power curve through (0, 0) and
// (255, 255): x' = 255 (x / 255)^e with e = strength^((10 − d) / 10); tables
// below 10 lay down less ink, above 10 more, and table 10 is the identity.
#pragma once

#include <cstdint>
#include <vector>

#include "pack/byte_io.h"

namespace inkdot::tools {

inline constexpr int kCorrectionTables = 21;

// One routing record: the key and, per channel, the row its table goes to.
struct RoutingRecord {
    uint8_t key;
    std::vector<uint8_t> rows;
};

// Records end with 0xFE; 0xFF ends the list.
Bytes routingBlock(const std::vector<RoutingRecord>& records);

Bytes baseWeightBlock(const std::vector<uint8_t>& weights);

Bytes correctionTableBlock(double strength);

}  // namespace inkdot::tools
