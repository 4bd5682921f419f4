// Looking up optional data in the driver's chunk directory.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

// Chunk ids in use.
inline constexpr uint32_t kChunkGamma = 1;         // int32 gamma, 100..300 (0 means 150)
inline constexpr uint32_t kChunkToneCurves = 256;  // three 256-byte curves: red, green, blue
inline constexpr uint32_t kChunkCurveRecord = 257; // read by nothing (its resampling changes nothing)
inline constexpr uint32_t kChunkChannelWeights = 512;

// The value of the first entry with this id; null when there is none, the
// directory is null or its count is 0 or negative. An entry whose value is
// null therefore counts as absent.
const void* lookupChunk(const ChunkDirectory* dir, uint32_t id);

}  // namespace inkdot
