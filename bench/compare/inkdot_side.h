// inkdot's side of the comparison: a colour look-up record built through the
// colour-management resource protocol, halftone instances fed through the
// halftone resource protocol, and whole-image runs through the public calls.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "inkdot/inkdot.h"

namespace inkdot::compare {

// A colour-management instance that ran its protocol to the end on a colour
// table of gridPoints^3 nodes (plain CMYK separation, levels i * 255 / (n - 1)).
class ColourManagement {
public:
    explicit ColourManagement(uint8_t gridPoints);
    ~ColourManagement();
    ColourManagement(const ColourManagement&) = delete;
    ColourManagement& operator=(const ColourManagement&) = delete;

    uint32_t rc() const { return rc_; }
    const CmLut& lut() const { return *CmGetLut(ctx_); }

private:
    CmContext* ctx_ = nullptr;
    uint32_t rc_ = RC_OK;
};

// A halftone instance fed completely: one- or two-bit output, a 64 x 64
// threshold matrix holding every value 0..4095 once, the width of the image.
class HalftoneJob {
public:
    // method 3: matrix dither; 1: error diffusion. colourMode 0 reads gray
    // bytes through `monoLut`, otherwise RGB through `lut`, or with
    // inkInput (inputFormat 4) four ink bytes a pixel, C, M, Y, K.
    HalftoneJob(uint32_t method, uint32_t colourMode, uint32_t width, const CmLut& lut, uint32_t outputBits = 1,
                bool inkInput = false);
    ~HalftoneJob();
    HalftoneJob(const HalftoneJob&) = delete;
    HalftoneJob& operator=(const HalftoneJob&) = delete;

    uint32_t rc() const { return rc_; }
    std::string kernelName() const;

    // Halftones height lines of `image` (1, 3 or 4 bytes a pixel) into `planes`:
    // line y's plane k at planes + (y * planesPerLine + k) * lineBytes.
    uint32_t run(const uint8_t* image, uint32_t height, uint8_t* planes) const;
    uint32_t lineBytes() const { return (width_ * outputBits_ + 7) / 8; }
    uint32_t planesPerLine() const { return colourMode_ == 0 ? 1 : 4; }

private:
    HtContext* ctx_ = nullptr;
    uint32_t rc_ = RC_OK;
    uint32_t width_;
    uint32_t colourMode_;
    uint32_t outputBits_;
    uint32_t pixelBytes_;
};

// A 17-point colour record with a plain CMYK separation (c = 255 - r, m, y
// alike, black half the smallest of the three) and the layered dot split
// two-bit halftoning needs; `inkOf` gives the same separation for ink input.
const CmLut& separationLut();
void inkOf(const uint8_t* rgb, size_t pixels, uint8_t* cmyk);

// The monochrome record halftone instances read gray input through: ink is
// the inverse of the gray byte.
const CmLut& monoLut();

}  // namespace inkdot::compare
