// Horizontal replication: each input pixel repeated replicationFactor times
// into replicatedLine before the kernel sees the run.
#pragma once

#include <cstdint>

namespace inkdot {

// Writes `target` pixels of `pixelBytes` bytes to `out`, taking input pixels
// from `in` in order and repeating each `factor` times; stops as soon as
// `target` pixels are written, even inside a repetition.
void replicatePixels(const uint8_t* in, uint8_t* out, uint32_t pixelBytes, uint32_t factor,
                     uint32_t target);

}  // namespace inkdot
