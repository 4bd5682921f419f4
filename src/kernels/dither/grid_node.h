// Grid node choice for colour input: an input byte lies between two nodes of
// the resampled 32-level grid; gridCellTable gives the lower node n and its
// weight w (255 when the byte sits on the node). The upper node is taken when
// w <= q. With q from the matrix (bits 1 to 7 of the matrix value) the ink
// follows linear interpolation between the nodes on average; with q = 128 the
// choice is the nearest node.
#pragma once

#include <cstdint>

namespace inkdot {

inline constexpr uint32_t kGridLevels = 32;  // nodes per axis of the resampled grid
inline constexpr uint32_t kNearestNodeQ = 128;

// q from a matrix value: its bits 1 to 7 (bit 0 and the high byte are not used).
inline uint32_t nodeChoiceQ(uint32_t m) { return m & 0xFE; }

// The weight 255 of a byte on a node is never <= q (q <= 254), so the last
// node (31) is never stepped past.
inline uint32_t gridNode(const uint8_t* gridCellTable, uint8_t b, uint32_t q) {
    const uint8_t* cell = gridCellTable + 2 * b;
    return cell[0] + (cell[1] <= q ? 1u : 0u);
}

// Entry of node (i2, i1, i0): the first axis (from b2) slowest.
inline uint32_t gridEntryIndex(uint32_t i2, uint32_t i1, uint32_t i0) {
    return (i2 * kGridLevels + i1) * kGridLevels + i0;
}

}  // namespace inkdot
