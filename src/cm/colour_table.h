// Reading the colour table block into the instance and its CmLut.
#pragma once

#include <cstdint>

#include "frame/byte_reader.h"

struct CmContext;

namespace inkdot {

// Offsets within the colour table block.
namespace colour_table {
inline constexpr uint32_t kTableMode = 15;
inline constexpr uint32_t kDataAreaOffset = 16;  // u32 little-endian
inline constexpr uint32_t kDataAreaSize = 20;    // u32 little-endian; 0 = none
inline constexpr uint32_t kBlackMode = 24;
inline constexpr uint32_t kAdjustDominant = 32;  // 3 unsigned bytes
inline constexpr uint32_t kAdjustHue = 36;       // 3 signed bytes
inline constexpr uint32_t kSaturationOffset = 39;
inline constexpr uint32_t kAdjustMinimum = 42;   // 3 signed bytes
inline constexpr uint32_t kInkParam = 48;        // 5 big-endian i16
inline constexpr uint32_t kAuxParam = 64;        // 4 big-endian i16
inline constexpr uint32_t kGridCount = 72;       // 3 bytes
inline constexpr uint32_t kChannels = 75;
inline constexpr uint32_t kGridLevels = 76;      // n levels per axis, then nodes, neutral lists
inline constexpr uint32_t kHeaderBytes = kGridLevels;

// Bytes the block needs for a grid of n points per axis and `channels` inks:
// the header, three level rows, the node data, the neutral list (one black
// value per neutral node) and the neutral node list (every ink of each).
inline constexpr size_t bytesFor(size_t n, size_t channels) {
    return kHeaderBytes + 3 * n + n * n * n * channels + n + n * channels;
}
}  // namespace colour_table

// The optional data area is kept in a block of at least this many bytes,
// zero-filled behind the area: the halftone engine reads the dot-split
// descriptor (8 bytes) from it through the CmLut, which carries no size.
inline constexpr uint32_t kMinDataAreaBlock = 8;

// Grid limits the interpolator's fixed row buffers set.
inline constexpr uint32_t kMinGridPoints = 2;
inline constexpr uint32_t kMaxGridPoints = 48;
inline constexpr uint32_t kMaxChannels = 12;
inline constexpr uint32_t kMaxRowBytes = 192;  // n x channels

// RC_DATA for a table outside the supported grid, a block shorter than its
// grid needs, or a data area reaching outside the block (all checked before
// anything is allocated or stored); RC_MEM_ALLOC / RC_MEM_LOCK from the data
// area or node data blocks (a data area copied before a failure stays with
// the CmLut).
uint32_t readColourTable(CmContext* ctx, ByteView block);

}  // namespace inkdot
