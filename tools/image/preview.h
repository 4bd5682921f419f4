// A screen-sized picture of the printed page.
//
// The page is cut into boxes that are square on paper (two columns per line
// at 1440 × 720 dpi). In each box every ink's dots cover a share f of the
// area (a one-bit dot its whole cell; two-bit dots: small 35 %, medium 65 %,
// large 100 %). Printed dots spread beyond their cell, sparse ones most; the
// preview applies the dot gain that the pack's ink parameters (250 at the
// light end, 100 at the dark end) stand for: apparent coverage
// a = f (1 + 1.5 (1 − f)²), at most 1. Each ink then lets through its own
// transmission in red, green and blue over a share a of the box, inks
// multiply (cyan over magenta makes blue), and the result, linear light, is
// encoded as sRGB.
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
    // Coverage is counted in whole units: a one-bit dot is 1, two-bit dots
    // are 35, 65 and 100 hundredths of a cell.
    uint32_t fullCell_ = 1;
    // Coverage of the first k dots of a packed byte (k = 0 … dots a byte);
    // columns are summed a byte at a time, not dot by dot.
    std::array<std::array<uint16_t, 9>, 256> leadingCoverage_{};
    std::array<std::array<float, 3>, 4> inkAbsorb_{};  // 1 − transmission per plane and channel
    std::vector<uint64_t> sums_;  // per preview column and plane: coverage sums in the current row
    std::vector<uint8_t> row_;
};

}  // namespace inkdot::tools
