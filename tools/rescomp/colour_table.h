// Writing a colour table block: header, grid levels, node data, neutral lists
// and the optional data area with the dot-split descriptor.
//
//   offset  size  content
//   0       15    label "inkdot ctable", padded with zeros (not read by the engine)
//   15      1     table mode (50)
//   16      4     u32 LE offset of the data area
//   20      4     u32 LE size of the data area (0: none)
//   24      1     black mode (0: black from the grid; 1: neutral axis black only)
//   25      23    zeros: no dominant, hue or minimum adjustment, no saturation offset
//   48      10    ink parameters, five big-endian 16-bit values
//   58      6     zeros
//   64      8     auxiliary parameters, four big-endian 16-bit values (zeros)
//   72      3     points per axis n, three times
//   75      1     channels (4: C, M, Y, K)
//   76      3n    grid levels of the three axes (R, G, B)
//   76+3n   S     node data, S = 4 n³, blue fastest, then green, then red
//   76+3n+S n     neutral list: black-only amount for each neutral node
//   ...     4n    neutral node list: C, M, Y, K of each neutral node
//   ...     8     data area: u32 1, u16 1, u16 dot-split block id
#pragma once

#include <array>
#include <cstdint>

#include "pack/byte_io.h"
#include "rescomp/separation.h"

namespace inkdot::tools {

namespace colourtable {
inline constexpr size_t kTableModeAt = 15;
inline constexpr size_t kDataAreaOffsetAt = 16;
inline constexpr size_t kDataAreaSizeAt = 20;
inline constexpr size_t kBlackModeAt = 24;
inline constexpr size_t kInkParamAt = 48;
inline constexpr size_t kGridCountAt = 72;
inline constexpr size_t kChannelsAt = 75;
inline constexpr size_t kGridLevelsAt = 76;
inline constexpr unsigned kChannels = 4;
inline constexpr size_t kDescriptorSize = 8;
}  // namespace colourtable

struct ColourTableParams {
    unsigned points = 17;            // grid points per axis, 2..48
    uint8_t blackMode = 0;
    uint8_t tableMode = 50;
    std::array<int16_t, 5> inkParam = {250, 100, 0, 0, 0};
    uint16_t dotSplitBlock = 0;      // 0: no data area
    SeparationModel model;
};

// Evenly spaced levels 0..255, rounded: strictly rising for 2..256 points.
uint8_t gridLevel(unsigned index, unsigned points);

Bytes buildColourTable(const ColourTableParams& params);

}  // namespace inkdot::tools
