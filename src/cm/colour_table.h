// Reading the colour table block into the instance and its CmLut.
#pragma once

#include <cstdint>

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
}  // namespace colour_table

// Grid limits the interpolator's fixed row buffers set.
inline constexpr uint32_t kMinGridPoints = 2;
inline constexpr uint32_t kMaxGridPoints = 48;
inline constexpr uint32_t kMaxChannels = 12;
inline constexpr uint32_t kMaxRowBytes = 192;  // n x channels

// RC_DATA for a table outside the supported grid (checked before anything is
// allocated or stored); RC_MEM_ALLOC / RC_MEM_LOCK from the data area or node
// data blocks (a data area copied before a failure stays with the CmLut).
uint32_t readColourTable(CmContext* ctx, const uint8_t* block);

}  // namespace inkdot
