// The grid node choice of the colour kernels: instead of interpolating
// between the nodes of the conversion grid, every pixel takes one node, and
// the threshold matrix decides between the lower and the upper node around
// each input byte. Across the matrix the chosen nodes average out to the
// linear interpolation between them.
#pragma once

#include <cstdint>

namespace inkdot {

inline constexpr uint32_t kGridLevels = 32;  // nodes per axis of the resampled grid
// With q = 128 the choice is the nearest node instead of a matrix-dithered one.
inline constexpr uint32_t kNearestNodeQ = 128;

// q from a matrix value: its bits 1 to 7 (bit 0 and the high byte are not used).
// The upper node is taken where q reaches the lower node's weight, so a byte
// on a node (weight 255) always keeps it.
inline uint32_t nodeChoiceQ(uint32_t m) { return m & 0xFE; }

// Entry of the 32 x 32 x 32 conversion grid for node indices i0, i1, i2 (from
// input bytes 0, 1, 2); byte 2 selects along the slowest axis. The mask keeps
// a damaged cell table inside the grid; valid tables never need it (their
// indices stay within 0..31).
inline uint32_t gridEntryIndex(uint32_t i2, uint32_t i1, uint32_t i0) {
    constexpr uint32_t kGridEntries = kGridLevels * kGridLevels * kGridLevels;
    return ((i2 * kGridLevels + i1) * kGridLevels + i0) & (kGridEntries - 1);
}

// A pixel's three node indices (each at most 256: the last cell table entry
// plus one) in one word for the neighbour test: index + 2 in 10-bit fields,
// so that 0 stands for "no previous pixel", two nodes below any real node.
inline constexpr uint32_t kNoNodes = 0;
inline uint32_t packNodes(uint32_t i0, uint32_t i1, uint32_t i2) {
    return (i0 + 2) | (i1 + 2) << 10 | (i2 + 2) << 20;
}

// Two pixels fall into neighbouring grid cells when no index moved by more
// than one node: all ones then, else 0 (the smoothing selects with it instead
// of branching: whether two pixels of a photograph neighbour is as good as
// random). In every field at once t = 512 + a - b + 1, which stays within
// 255..771 so no field borrows or carries; |a - b| <= 1 is t in 512..514,
// that is bits 2..9 of t reading 1000 0000 and its low two bits not both set.
// The vector passes make the same test lane by lane with these constants.
inline constexpr uint32_t kNodeFields512 = 0x20080200;    // 512 in each field
inline constexpr uint32_t kNodeFieldsOne = 0x00100401;    // 1 in each field
inline constexpr uint32_t kNodeFieldsBits2to9 = 0x3FCFF3FC;
inline uint32_t neighbourMask(uint32_t a, uint32_t b) {
    const uint32_t t = (a | kNodeFields512) - b + kNodeFieldsOne;
    const bool near = ((t & kNodeFieldsBits2to9) == kNodeFields512) & (((t & (t >> 1)) & kNodeFieldsOne) == 0);
    return -static_cast<uint32_t>(near);
}

}  // namespace inkdot
