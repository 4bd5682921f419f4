// Bounded little readers for the colour-management resource blocks.
// Multi-byte values are little-endian, except the 16-bit parameters of the
// colour table block, which are big-endian.
#pragma once

#include <cstdint>

namespace inkdot {

inline uint32_t readU32le(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

// Big-endian signed 16-bit value, sign-extended.
inline int32_t readBe16(const uint8_t* p) {
    return static_cast<int16_t>(static_cast<uint16_t>(p[0] << 8 | p[1]));
}

inline int16_t readS8(const uint8_t* p) { return static_cast<int8_t>(p[0]); }

}  // namespace inkdot
