// The halftone engine's blocks: the request list, the grid level block and
// threshold matrix blocks.
//
// Request list: u16 LE block ids ended by 65535. Positions: 0 the grid level
// block, 1 the matrix for the general class (and equal resolutions), 2 the
// matrix when the horizontal resolution is twice the vertical (other than
// 1440 × 720), 3 the 1440 × 720 matrix, 4 the matrix when the vertical
// resolution is twice the horizontal.
//
// Grid level block: u16 LE 32, then 32 levels rising from 0 to 255.
//
// Threshold matrix block: width byte, height byte (255 stands for 256), two
// unused bytes, then width × height u16 LE thresholds row by row.
#pragma once

#include <cstdint>
#include <vector>

#include "pack/byte_io.h"

namespace inkdot::tools {

inline constexpr uint16_t kRequestListEnd = 65535;
inline constexpr unsigned kHalftoneGridLevels = 32;

Bytes requestListBlock(const std::vector<uint16_t>& ids);
Bytes gridLevelBlock();
Bytes matrixBlock(unsigned width, unsigned height, const std::vector<uint16_t>& thresholds);

}  // namespace inkdot::tools
