// The instance's pixelLayout as the interpolator's layout record.
#pragma once

#include "cm/cm_context.h"
#include "cm/interpolate.h"

namespace inkdot {

// The node pixels of the rebuild and the black table: four bytes, red, green
// and blue in bytes 1, 2 and 3.
inline constexpr int16_t kNodePixelLayout[4] = {4, 1, 2, 3};

inline PixelLayout pixelLayoutOf(const CmContext& ctx) {
    return PixelLayout{static_cast<uint32_t>(ctx.pixelLayout[0]), static_cast<uint32_t>(ctx.pixelLayout[1]),
                       static_cast<uint32_t>(ctx.pixelLayout[2]), static_cast<uint32_t>(ctx.pixelLayout[3])};
}

}  // namespace inkdot
