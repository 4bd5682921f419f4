// Colour input to four ink levels for the one-bit colour error-diffusion
// kernels: the matrix chooses a grid node per pixel (no interpolation), and a
// pixel whose nodes neighbour the previous coloured pixel's is averaged with
// it, which takes the edge off the node-to-node jumps of the choice.
#pragma once

#include <cstdint>

#include "kernels/grid_node.h"

namespace inkdot {

struct InkLevels {
    int32_t level[4];  // plane k's level, 0..255
};

// A grid entry holds ink k in byte k.
inline InkLevels unpackLevels(uint32_t packed) {
    return {{static_cast<int32_t>(packed & 0xFF), static_cast<int32_t>((packed >> 8) & 0xFF),
             static_cast<int32_t>((packed >> 16) & 0xFF), static_cast<int32_t>(packed >> 24)}};
}

// The levels that four ink bytes carry themselves.
inline InkLevels inkBytes(const uint8_t* px) { return {{px[0], px[1], px[2], px[3]}}; }

template <class Tables>
inline NodeIndices chooseNodes(const Tables& tables, const uint8_t* px, uint32_t q) {
    const GridCell c0 = tables.cell(px[0]), c1 = tables.cell(px[1]), c2 = tables.cell(px[2]);
    return {gridNode(c0.node, c0.weight, q), gridNode(c1.node, c1.weight, q), gridNode(c2.node, c2.weight, q)};
}

// The previous coloured pixel of the run. Its indices start two nodes away
// from any real node, so the first pixel of a run is never averaged; the
// starting levels are then never used.
struct Smoothing {
    NodeIndices prevNodes{-2, -2, -2};
    int32_t prevLevel[4] = {100, 100, 100, 100};

    // Averages with the previous pixel when the nodes neighbour; the rounding
    // term (1 on even matrix cells, 0 on odd) alternates with the matrix so
    // that halving has no bias. The result becomes the previous pixel.
    void apply(InkLevels& levels, NodeIndices nodes, uint32_t m) {
        const uint32_t smooth = neighbourMask(nodes, prevNodes);
        const int32_t r = (m & 1) ? 0 : 1;
        for (int k = 0; k < 4; ++k) {
            const int32_t mean = (prevLevel[k] + levels.level[k] + r) >> 1;
            levels.level[k] = static_cast<int32_t>(
                selectByMask(smooth, static_cast<uint32_t>(mean), static_cast<uint32_t>(levels.level[k])));
        }
        prevNodes = nodes;
        for (int k = 0; k < 4; ++k) prevLevel[k] = levels.level[k];
    }
};

}  // namespace inkdot
