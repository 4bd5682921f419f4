// Blue-noise threshold matrices by the void-and-cluster method.
//
// The matrix is a torus of width × height cells. A cell's energy is the sum of
// a Gaussian of its distance to every dot; distances are measured on paper, so
// a cell that is half as wide as it is tall (1440 × 720 dpi) counts half a
// step per column. The method:
//  1. seed about a tenth of the cells with dots (a fixed pseudo-random
//     pattern), then repeatedly move the dot in the tightest cluster (highest
//     energy) to the largest void (lowest energy among empty cells) until that
//     move would put the dot back where it came from;
//  2. rank the seed dots by removing the tightest cluster one at a time
//     (ranks counting down from the seed size);
//  3. rank the rest by filling the largest void one at a time (ranks counting
//     up). Filling the largest void is the same as taking the tightest cluster
//     of empty cells, since the two energies add up to a constant on a torus.
// The result is a permutation of 0 .. cells − 1: thresholding it at any level
// gives evenly spread dots with little low-frequency content.
#pragma once

#include <cstdint>
#include <vector>

namespace inkdot::tools {

struct BlueNoiseParams {
    unsigned width = 64;      // cells, a power of two
    unsigned height = 64;     // cells
    double cellWidth = 1.0;   // width of a cell on paper, relative to its height
    double sigma = 1.5;       // Gaussian spread, in the smaller cell dimension
    uint32_t seed = 1;
};

// Rank of each cell, row by row. Requires 1 ≤ width × height ≤ 65535.
std::vector<uint16_t> makeBlueNoise(const BlueNoiseParams& params);

}  // namespace inkdot::tools
