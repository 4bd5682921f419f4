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

// The copy handed to the engine: the block and a zero tail.
std::vector<uint8_t> engineCopy(std::span<const uint8_t> bytes);

}  // namespace inkdot::tools
