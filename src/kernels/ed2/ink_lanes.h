// The four ink values of a colour pixel travel as two 32-bit words with one
// 8-bit value in each 16-bit lane: planes 0 and 2 in one word, planes 1 and 3
// in the other. The lanes leave room for the sum of two values plus a
// rounding bit, so averaging two pixels is two additions, one shift and one
// mask per word.
#pragma once

#include <cstdint>

namespace inkdot {

inline constexpr uint32_t kLaneBytes = 0x00FF00FF;  // one 8-bit value per 16-bit lane

struct InkLanes {
    uint32_t planes02;
    uint32_t planes13;

    // Byte k of a packed word (ink k) goes to plane k's lane.
    static InkLanes fromPacked(uint32_t word) { return {word & kLaneBytes, (word >> 8) & kLaneBytes}; }

    uint32_t plane0() const { return planes02 & 0xFFFF; }
    uint32_t plane1() const { return planes13 & 0xFFFF; }
    uint32_t plane2() const { return planes02 >> 16; }
    uint32_t plane3() const { return planes13 >> 16; }
};

// (previous + current + round) >> 1 in every lane; round is 0 or 1. A lane's
// sum stays below 512, and the bit that the shift moves from the upper lane
// into the lower one is cut off by the mask.
inline InkLanes averageLanes(const InkLanes& previous, const InkLanes& current, uint32_t round) {
    const uint32_t roundBoth = round * 0x00010001;
    return {((previous.planes02 + current.planes02 + roundBoth) >> 1) & kLaneBytes,
            ((previous.planes13 + current.planes13 + roundBoth) >> 1) & kLaneBytes};
}

}  // namespace inkdot
