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

// The grid with its cell search done ahead: for every input level on each
// axis, the index of the grid point that closes its cell. Lives on the
// caller's stack; valid while the CmLut's grid levels stay as they are.
struct Interpolator {
    const CmLut* lut;
    uint8_t cell[3][256];
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
