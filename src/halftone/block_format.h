// Byte layouts of the halftone resource blocks, described once, and the
// little-endian readers every phase reads them through.
#pragma once

#include <cstdint>

namespace inkdot::block {

inline uint16_t readU16le(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
inline uint32_t readU32le(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
}

// Request list: u16 ids ended by kEndOfList; positions name the blocks below.
namespace request_list {
constexpr uint16_t kEndOfList = 65535;
constexpr unsigned kMaxIds = 15;  // requestIds keeps one more place for the terminator
constexpr unsigned kGridLevels = 0;
constexpr unsigned kMatrixGeneral = 1;
constexpr unsigned kMatrixDoubleX = 2;  // resolutionX = 2 x resolutionY
constexpr unsigned kMatrix1440x720 = 3;
constexpr unsigned kMatrixDoubleY = 4;
}  // namespace request_list

// Grid level block: u16 count (32), then the 32 level bytes.
namespace grid_levels {
constexpr unsigned kCountOffset = 0;
constexpr unsigned kLevelsOffset = 2;
constexpr unsigned kLevelCount = 32;
}  // namespace grid_levels

// Threshold matrix block: width byte, height byte, two unread bytes, u16 values row by row.
namespace threshold_matrix {
constexpr unsigned kWidthOffset = 0;
constexpr unsigned kHeightOffset = 1;
constexpr unsigned kValuesOffset = 4;
constexpr uint8_t kByteFor256 = 255;  // a byte cannot say 256, so 255 stands for it
}  // namespace threshold_matrix

// Dot-split descriptor, kept in the colour table's extra data area.
namespace dot_split_descriptor {
constexpr unsigned kPresentOffset = 0;  // u32, nonzero
constexpr unsigned kFormatOffset = 4;   // u16, must be kFormat
constexpr unsigned kBlockIdOffset = 6;  // u16 id of the dot-split block
constexpr uint16_t kFormat = 1;
}  // namespace dot_split_descriptor

// Dot-split block: one row of three amounts (small, medium, large) per ink level.
namespace dot_split {
constexpr unsigned kRows = 256;
constexpr unsigned kRowBytes = 3;
constexpr unsigned kBlockBytes = kRows * kRowBytes;
constexpr unsigned kMaxRowTotal = 255;
}  // namespace dot_split

}  // namespace inkdot::block
