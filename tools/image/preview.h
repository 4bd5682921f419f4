// A screen-sized picture of the printed page.
//
// Every printed pixel is drawn as paper with its dots on top: a dot of ink k
// covers a share of the pixel (one-bit dot: all of it; two-bit: small 35 %,
// medium 65 %, large 100 %) and lets through the ink's own transmission in
// red, green and blue, so overlapping cyan and magenta make blue. The pixels
// are averaged in linear light over boxes that are square on paper (two
// columns per row at 1440 × 720 dpi) and the averages encoded as sRGB.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "image/png_writer.h"

namespace inkdot::tools {

struct PreviewGeometry {
    uint32_t boxWidth, boxHeight;  // printed pixels per preview pixel
    uint32_t width, height;        // preview pixels
};

// The largest preview not wider than maxWidth whose boxes are square on paper.
PreviewGeometry previewGeometry(uint32_t pageWidth, uint32_t pageHeight, uint32_t dpiX, uint32_t dpiY,
                                uint32_t maxWidth);

class PreviewBuilder {
public:
    // planes: 1 (black) or 4 (C, M, Y, K); bits: 1 or 2.
    bool open(const std::string& path, uint32_t pageWidth, uint32_t pageHeight, uint32_t dpiX, uint32_t dpiY,
              unsigned planes, unsigned bits, uint32_t maxWidth, std::string& error);
    // One printed line: `planes` planes of `stride` bytes.
    bool addLine(const uint8_t* planes, size_t stride, std::string& error);
    bool finish(std::string& error);
    const PreviewGeometry& geometry() const { return geometry_; }

private:
    bool flushRow(std::string& error);

    PngWriter png_;
    PreviewGeometry geometry_{};
    uint32_t pageWidth_ = 0, pageHeight_ = 0;
    unsigned planes_ = 4, bits_ = 1;
    uint32_t linesInRow_ = 0, linesDone_ = 0;
    // Linear RGB of a printed pixel for each combination of dot codes.
    std::vector<std::array<float, 3>> pixelColour_;
    std::vector<float> sums_;      // per preview column: linear R, G, B sums
    std::vector<uint32_t> counts_; // printed pixels per preview column in the current row
    std::vector<uint8_t> row_;
};

}  // namespace inkdot::tools
