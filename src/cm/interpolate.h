// Tetrahedral interpolation through a colour grid: the core numeric routine
// of colour management. Integer only, no allocation.
//
// The grid must meet the requirements the colour-table reader enforces:
// three equal counts of 2..48 points, levels rising strictly from 0 to 255.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

// Where red, green and blue sit in a pixel.
struct PixelLayout {
    uint32_t pixelBytes;
    uint32_t red;
    uint32_t green;
    uint32_t blue;
};

inline constexpr PixelLayout kRgbLayout{3, 0, 1, 2};

// The grid with its per-level work done ahead: for every input level on
// each axis, where its cell starts in the node data, how far into the cell
// the level lies and how wide the cell is. Lives on the caller's stack; valid
// while the CmLut's grid levels, counts and channel count stay as they are
// (the node data itself is read at each call).
struct AxisLevel {
    uint32_t nodeOffset;  // bytes from the first node to the cell's lower node along this axis
    uint16_t fraction;    // level - lower grid level
    uint16_t width;       // upper grid level - lower grid level, 1..255
};

struct Interpolator {
    const CmLut* lut;
    AxisLevel axis[3][256];
    uint32_t step[3];  // bytes of one node step along each axis
};

void prepareInterpolator(const CmLut& lut, Interpolator& out);

// For `count` pixels at src, writes lut.channels ink bytes per pixel,
// consecutively, to dst.
void interpolate(const Interpolator& ip, const PixelLayout& layout, uint32_t count, const uint8_t* src,
                 uint8_t* dst);

inline void interpolatePixels(const CmLut& lut, const PixelLayout& layout, uint32_t count, const uint8_t* src,
                              uint8_t* dst) {
    Interpolator ip;
    prepareInterpolator(lut, ip);
    interpolate(ip, layout, count, src, dst);
}

// Packed three-byte RGB pixels through a finished CmLut.
inline void interpolateRgb(const CmLut& lut, uint32_t count, const uint8_t* rgb, uint8_t* dst) {
    interpolatePixels(lut, kRgbLayout, count, rgb, dst);
}

}  // namespace inkdot
