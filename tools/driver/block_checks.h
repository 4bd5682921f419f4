// Size checks on resource blocks before they reach the engine.
//
// The engine reads a block in place and knows nothing of its length: a short
// block in a damaged or foreign pack would make it read past the end. The
// driver knows which kind of block each protocol step asks for, so it checks
// that the block holds what its own header announces, and hands the engine a
// copy with a zero tail (an index text then always ends at NUL).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace inkdot::tools {

enum class BlockRole {
    IndexText,
    ColourTable,
    Routing,
    BaseWeights,
    CorrectionTables,
    RequestList,
    GridLevels,
    ThresholdMatrix,
    DotSplit,
};

const char* roleName(BlockRole role);

// Empty when the block holds what its role needs, else the reason.
std::string checkBlock(BlockRole role, std::span<const uint8_t> bytes);

// Empty when a colour table (already checked as one) holds what halftoning
// at this depth reads from it, else the reason: one-bit output weighs its
// dots by ink parameters A = 250, 350 or 500 and B from 1 to 1000; two-bit
// output needs the descriptor naming the dot-split block. Checked before the
// halftone protocol, so that a bad table is blamed instead of the matrix
// block the engine happens to be reading when it refuses.
std::string checkHalftoneUse(std::span<const uint8_t> colourTable, unsigned outputBits);

// The copy handed to the engine: the block and a zero tail.
std::vector<uint8_t> engineCopy(std::span<const uint8_t> bytes);

}  // namespace inkdot::tools
