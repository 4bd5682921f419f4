// The grid node choice of the colour kernels: instead of interpolating
// between the nodes of the conversion grid, every pixel takes one node, and
// the threshold matrix decides between the lower and the upper node around
// each input byte. Across the matrix the chosen nodes average out to the
// linear interpolation between them.
#pragma once

#include <algorithm>
#include <cstdint>

namespace inkdot {

inline constexpr uint32_t kGridLevels = 32;  // nodes per axis of the resampled grid
// With q = 128 the choice is the nearest node instead of a matrix-dithered one.
inline constexpr uint32_t kNearestNodeQ = 128;

// q from a matrix value: its bits 1 to 7 (bit 0 and the high byte are not used).
inline uint32_t nodeChoiceQ(uint32_t m) { return m & 0xFE; }

// gridCellTable entry of an input byte: the lower node on its axis and that
// node's weight (255 = the byte sits on the node).
struct GridCell {
    uint8_t node;
    uint8_t weight;
};

// The table holds the two bytes of each entry side by side.
inline GridCell gridCell(const uint8_t* table, uint8_t v) { return {table[2 * v], table[2 * v + 1]}; }

// q is the matrix value's bits 1..7 (m AND 0xFE, at most 254): the upper node
// is taken where q reaches the lower node's weight, so a byte on a node
// (weight 255) always keeps it.
inline int32_t gridNode(uint8_t node, uint8_t weight, uint32_t q) { return node + (weight <= q ? 1 : 0); }

// The same choice read straight from the table for input byte b.
inline uint32_t gridNode(const uint8_t* gridCellTable, uint8_t b, uint32_t q) {
    const uint8_t* cell = gridCellTable + 2 * b;
    return cell[0] + (cell[1] <= q ? 1u : 0u);
}

// Node indices from input bytes 0, 1 and 2.
struct NodeIndices {
    int32_t i0, i1, i2;
};

// Grid entry of the 32 x 32 x 32 conversion grid; byte 2 selects along the
// slowest axis. The mask keeps a damaged cell table inside the grid; valid
// tables never need it (their indices stay within 0..31).
inline uint32_t gridEntry(NodeIndices n) {
    constexpr uint32_t kGridEntries = kGridLevels * kGridLevels * kGridLevels;
    return static_cast<uint32_t>((n.i2 * 32 + n.i1) * 32 + n.i0) & (kGridEntries - 1);
}

inline uint32_t gridEntryIndex(uint32_t i2, uint32_t i1, uint32_t i0) {
    return gridEntry({static_cast<int32_t>(i0), static_cast<int32_t>(i1), static_cast<int32_t>(i2)});
}

// Two pixels fall into neighbouring grid cells when no index moved by more
// than one node.
inline bool neighbouringNodes(NodeIndices a, NodeIndices b) {
    auto near = [](int32_t u, int32_t v) { return u - v <= 1 && v - u <= 1; };
    return near(a.i0, b.i0) && near(a.i1, b.i1) && near(a.i2, b.i2);
}

// The same test as a mask: all ones for neighbours, else 0. The smoothing
// selects with it instead of branching: in a photograph whether two pixels
// neighbour is as good as random, and GCC makes jumps of the && chain.
// |u - v| <= 1 is u - v + 1 <= 2 with unsigned wrap; the largest of the three
// distances decides.
inline uint32_t neighbourMask(NodeIndices a, NodeIndices b) {
    auto distance = [](int32_t u, int32_t v) { return static_cast<uint32_t>(u) - static_cast<uint32_t>(v) + 1; };
    const uint32_t farthest = std::max({distance(a.i0, b.i0), distance(a.i1, b.i1), distance(a.i2, b.i2)});
    return -static_cast<uint32_t>(farthest <= 2);
}

// Blends by such a mask: `yes` where the mask is all ones, `no` where it is 0.
inline uint32_t selectByMask(uint32_t mask, uint32_t yes, uint32_t no) { return (yes & mask) | (no & ~mask); }

}  // namespace inkdot
