#include "cm/ink_scale.h"

namespace inkdot {

uint8_t inkScale(uint8_t v, int32_t percentAt0, int32_t percentAt255) {
    const int32_t a = percentAt0;
    const int32_t b = percentAt255;
    const int32_t w = 255 - v;
    // The product is formed in 32 bits and wraps as a 32-bit one would; the
    // percentages are 16-bit values, so only absurd tables come near that.
    const auto t = static_cast<int32_t>(static_cast<uint32_t>(w * w) * static_cast<uint32_t>(a - b) + 1u);
    const int32_t u = (t / 255 + 255 * b) / 100;
    // u is 0 only for tables with percentages far below 100 (B = 0 and A
    // close to it); rather than divide by zero the value is left unchanged.
    if (u == 0) return v;
    const int32_t scaled = (u / 2 + 255 * v) / u;  // u / 2 rounds the quotient
    // Percentages below 100 can push the result past a byte: clamp.
    if (scaled < 0) return 0;
    if (scaled > 255) return 255;
    return static_cast<uint8_t>(scaled);
}

void inkScaleGrid(CmLut& lut) {
    // inkScale depends on the byte alone: form it once per level.
    uint8_t scaled[256];
    for (int v = 0; v < 256; ++v) scaled[v] = inkScale(static_cast<uint8_t>(v), lut.inkParam[0], lut.inkParam[1]);
    const uint32_t bytes = lut.gridCount[0] * lut.gridCount[1] * lut.gridCount[2] * lut.channels;
    for (uint32_t i = 0; i < bytes; ++i) lut.lutData[i] = scaled[lut.lutData[i]];
}

}  // namespace inkdot
