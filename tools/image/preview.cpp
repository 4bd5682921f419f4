#include "image/preview.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

namespace inkdot::tools {
namespace {

float srgbToLinear(int v) {
    const float c = v / 255.0f;
    return c <= 0.04045f ? c / 12.92f : std::pow((c + 0.055f) / 1.055f, 2.4f);
}

uint8_t linearToSrgbExact(float v) {
    v = std::clamp(v, 0.0f, 1.0f);
    const float c = v <= 0.0031308f ? v * 12.92f : 1.055f * std::pow(v, 1.0f / 2.4f) - 0.055f;
    return static_cast<uint8_t>(std::lround(c * 255.0f));
}

// The encoding is monotonic, so an sRGB code is the number of steps at or
// below the linear value, step i being the least float that encodes above i.
// A bucket table gives the code at each bucket's start and the steps finish
// the count, so each channel costs a look-up or two in place of a power
// function, and the codes are the very ones the formula gives.
struct SrgbEncoder {
    static constexpr unsigned kBuckets = 4096;  // narrower than the closest steps (at the dark end, 1/3294)
    std::array<float, 256> steps{};             // step 255 stands above 1: no code past 255
    std::array<uint8_t, kBuckets + 1> bucketCode{};

    SrgbEncoder() {
        for (unsigned i = 0; i < 255; ++i) {
            // Bisection over the bit patterns of floats in [0, 1], which order like the floats.
            uint32_t low = std::bit_cast<uint32_t>(0.0f), high = std::bit_cast<uint32_t>(1.0f);
            while (low < high) {
                const uint32_t mid = low + (high - low) / 2;
                if (linearToSrgbExact(std::bit_cast<float>(mid)) > i) high = mid;
                else low = mid + 1;
            }
            steps[i] = std::bit_cast<float>(low);
        }
        steps[255] = 2.0f;
        for (unsigned b = 0; b <= kBuckets; ++b) bucketCode[b] = linearToSrgbExact(static_cast<float>(b) / kBuckets);
    }

    uint8_t encode(float v) const {
        v = std::clamp(v, 0.0f, 1.0f);
        unsigned code = bucketCode[static_cast<unsigned>(v * kBuckets)];  // a code at or below v's
        while (steps[code] <= v) ++code;
        return static_cast<uint8_t>(code);
    }
};

uint8_t linearToSrgb(float v) {
    static const SrgbEncoder encoder;
    return encoder.encode(v);
}

// Ink colours as they look printed solid on white paper (sRGB).
constexpr int kInkColour[4][3] = {
    {0, 166, 226},   // cyan
    {222, 30, 129},  // magenta
    {255, 226, 0},   // yellow
    {35, 31, 32},    // black
};
// Two-bit dot codes' share of a cell in hundredths: no dot, small, medium, large.
constexpr uint32_t kTwoBitCoverage[4] = {0, 35, 65, 100};
constexpr uint32_t kTwoBitFullCell = 100;

}  // namespace

PreviewGeometry previewGeometry(uint32_t pageWidth, uint32_t pageHeight, uint32_t dpiX, uint32_t dpiY,
                                uint32_t maxWidth) {
    // A box of (dpiX / g) × (dpiY / g) printed pixels is square on paper.
    const uint32_t g = std::gcd(dpiX, dpiY);
    const uint32_t unitX = dpiX / g, unitY = dpiY / g;
    const uint32_t unitsAcross = (pageWidth + unitX - 1) / unitX;
    const uint32_t k = std::max<uint32_t>(1, (unitsAcross + maxWidth - 1) / std::max<uint32_t>(1, maxWidth));
    PreviewGeometry geo{k * unitX, k * unitY, 0, 0};
    geo.width = (pageWidth + geo.boxWidth - 1) / geo.boxWidth;
    geo.height = (pageHeight + geo.boxHeight - 1) / geo.boxHeight;
    return geo;
}

bool PreviewBuilder::open(const std::string& path, uint32_t pageWidth, uint32_t pageHeight, uint32_t dpiX,
                          uint32_t dpiY, unsigned planes, unsigned bits, uint32_t maxWidth, std::string& error) {
    pageWidth_ = pageWidth;
    pageHeight_ = pageHeight;
    planes_ = planes;
    bits_ = bits;
    geometry_ = previewGeometry(pageWidth, pageHeight, dpiX, dpiY, maxWidth);

    const unsigned perByte = 8 / bits;
    fullCell_ = bits == 1 ? 1 : kTwoBitFullCell;
    for (unsigned byte = 0; byte < 256; ++byte) {
        for (unsigned k = 0; k < perByte; ++k) {
            const unsigned code = (byte >> (8 - bits * (k + 1))) & ((1u << bits) - 1);  // first dot in the top bits
            leadingCoverage_[byte][k + 1] = static_cast<uint16_t>(
                leadingCoverage_[byte][k] + (bits == 1 ? code : kTwoBitCoverage[code]));
        }
    }
    for (unsigned p = 0; p < planes; ++p) {
        const int ink = planes == 1 ? 3 : static_cast<int>(p);
        for (int c = 0; c < 3; ++c) inkAbsorb_[p][c] = 1.0f - srgbToLinear(kInkColour[ink][c]);
    }
    sums_.assign(size_t{geometry_.width} * planes, 0);
    row_.resize(size_t{geometry_.width} * 3);
    return png_.open(path, geometry_.width, geometry_.height, 3, error);
}

bool PreviewBuilder::addLine(const uint8_t* planes, size_t stride, std::string& error) {
    const unsigned perByte = 8 / bits_;
    for (unsigned p = 0; p < planes_; ++p) {
        const uint8_t* line = planes + p * stride;
        // Coverage of the line up to each column's end: whole bytes from a
        // running sum, the dots of a byte the end cuts through from the table.
        uint64_t wholeBytes = 0, atColumnStart = 0;
        size_t byte = 0;
        for (uint32_t column = 0; column < geometry_.width; ++column) {
            const uint32_t end = std::min(pageWidth_, (column + 1) * geometry_.boxWidth);
            for (; byte < end / perByte; ++byte) wholeBytes += leadingCoverage_[line[byte]][perByte];
            const unsigned cut = end % perByte;
            const uint64_t atColumnEnd = wholeBytes + (cut == 0 ? 0 : leadingCoverage_[line[byte]][cut]);
            sums_[size_t{column} * planes_ + p] += atColumnEnd - atColumnStart;
            atColumnStart = atColumnEnd;
        }
    }
    ++linesDone_;
    if (++linesInRow_ == geometry_.boxHeight || linesDone_ == pageHeight_) return flushRow(error);
    return true;
}

bool PreviewBuilder::flushRow(std::string& error) {
    for (uint32_t column = 0; column < geometry_.width; ++column) {
        // Printed pixels in the box: the last column's box may be cut by the page edge.
        const uint32_t columns = std::min(geometry_.boxWidth, pageWidth_ - column * geometry_.boxWidth);
        const float n = static_cast<float>(std::max<uint32_t>(1, columns * linesInRow_));
        std::array<float, 3> light = {1.0f, 1.0f, 1.0f};
        for (unsigned p = 0; p < planes_; ++p) {
            const float f = static_cast<float>(sums_[size_t{column} * planes_ + p]) / fullCell_ / n;
            // Dot gain: sparse dots spread by up to 2.5 times their cell.
            const float apparent = std::min(1.0f, f * (1.0f + 1.5f * (1.0f - f) * (1.0f - f)));
            for (int c = 0; c < 3; ++c) light[c] *= 1.0f - apparent * inkAbsorb_[p][c];
        }
        for (int c = 0; c < 3; ++c) row_[column * 3 + c] = linearToSrgb(light[c]);
    }
    std::fill(sums_.begin(), sums_.end(), 0);
    linesInRow_ = 0;
    return png_.writeRow(row_.data(), error);
}

bool PreviewBuilder::finish(std::string& error) { return png_.finish(error); }

}  // namespace inkdot::tools
