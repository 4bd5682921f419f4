// The keys by which the driver picks its colour table from the pack's
// indexes (resources/index0.txt and index900.txt), and the block numbers the
// driver itself needs to know. resources/README.md holds the same table.
//
//   index field  setting                value
//   name 1       selectA                1, "Plain" (list 1: Any Plain)
//   name 2       selectB                10 + resolution class (list 2 starts at 10:
//                                       R720x720 R1440x720 R360x720 R720x360)
//   key 5        selectD                0 colour, 1 mono
//   key 6        selectE                0
//   name 3       selectC (derived)      0, "Std": processLevel 0 with a non-zero pixelFormat
//   key 8        selectF                0
//   key 9        selectG                0
#pragma once

#include <cstdint>

#include "inkdot/job.h"

namespace inkdot::tools::keys {

inline constexpr uint32_t kMediaPlain = 1;        // selectA: position of "Plain" in name list 1
inline constexpr uint32_t kResolutionBase = 10;   // selectB of R720x720; the others follow
inline constexpr uint32_t kColour = 0, kMono = 1; // selectD
inline constexpr uint32_t kPixelFormatRgb = 2;    // any non-zero pixelFormat keeps selectC at 0
inline constexpr uint32_t kNeutralPlain = 50;     // neutralSetting 50: the table's own neutral axis
inline constexpr int32_t kNoWholeTableInkScaling = 2;  // inkScaleGate of 2 or more: off
inline constexpr uint8_t kRoutingKey = 0;         // the routing record of block 980 the driver asks for

// The halftone protocol starts with this block of the pack.
inline constexpr uint32_t kRequestListBlock = 1000;

inline uint32_t resolutionKey(Resolution r) { return kResolutionBase + static_cast<uint32_t>(r); }

}  // namespace inkdot::tools::keys
