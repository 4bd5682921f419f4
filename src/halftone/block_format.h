// Byte layouts of the halftone resource blocks, described once. Every phase
// reads its block through the bounded readers of frame/byte_reader.h, and
// refuses with RC_DATA a block shorter than its layout needs.
#pragma once

#include <cstdint>

#include "kernels/grid_node.h"

namespace inkdot::block {

// Request list: u16 ids ended by kEndOfList; positions name the blocks below.
namespace request_list {
constexpr uint16_t kEndOfList = 65535;
constexpr unsigned kMaxIds = 15;  // requestIds keeps one more place for the terminator
constexpr unsigned kIdBytes = 2;
constexpr unsigned kGridLevels = 0;
constexpr unsigned kMatrixGeneral = 1;
constexpr unsigned kMatrixDoubleX = 2;  // resolutionX = 2 x resolutionY
constexpr unsigned kMatrix1440x720 = 3;
constexpr unsigned kMatrixDoubleY = 4;
}  // namespace request_list

// Grid level block: u16 count (kGridLevels), then the level bytes.
namespace grid_levels {
constexpr unsigned kCountOffset = 0;
constexpr unsigned kLevelsOffset = 2;
constexpr unsigned kLevelCount = kGridLevels;
constexpr unsigned kBlockBytes = kLevelsOffset + kLevelCount;
}  // namespace grid_levels

// Threshold matrix block: width byte, height byte, two unread bytes, u16 values row by row.
namespace threshold_matrix {
constexpr unsigned kWidthOffset = 0;
constexpr unsigned kHeightOffset = 1;
constexpr unsigned kValuesOffset = 4;  // also the header's length
constexpr unsigned kCellBytes = 2;
constexpr uint8_t kByteFor256 = 255;  // a byte cannot say 256, so 255 stands for it
}  // namespace threshold_matrix

// Dot-split descriptor, kept in the colour table's extra data area.
namespace dot_split_descriptor {
constexpr unsigned kPresentOffset = 0;  // u32, nonzero
constexpr unsigned kFormatOffset = 4;   // u16, must be kFormat
constexpr unsigned kBlockIdOffset = 6;  // u16 id of the dot-split block
constexpr uint16_t kFormat = 1;
// Colour management keeps the data area in a block of at least these bytes
// (zero-filled behind a shorter area), so the descriptor is read whole.
constexpr unsigned kBytes = 8;
}  // namespace dot_split_descriptor

// Dot-split block: one row of three amounts (small, medium, large) per ink level.
namespace dot_split {
constexpr unsigned kRows = 256;
constexpr unsigned kRowBytes = 3;
constexpr unsigned kBlockBytes = kRows * kRowBytes;
constexpr unsigned kMaxRowTotal = 255;
}  // namespace dot_split

}  // namespace inkdot::block
