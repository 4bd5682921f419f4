#include "image/preview.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace inkdot::tools {
namespace {

float srgbToLinear(int v) {
    const float c = v / 255.0f;
    return c <= 0.04045f ? c / 12.92f : std::pow((c + 0.055f) / 1.055f, 2.4f);
}

uint8_t linearToSrgb(float v) {
    v = std::clamp(v, 0.0f, 1.0f);
    const float c = v <= 0.0031308f ? v * 12.92f : 1.055f * std::pow(v, 1.0f / 2.4f) - 0.055f;
    return static_cast<uint8_t>(std::lround(c * 255.0f));
}

// Ink colours as they look printed solid on white paper (sRGB).
constexpr int kInkColour[4][3] = {
    {0, 166, 226},   // cyan
    {222, 30, 129},  // magenta
    {255, 226, 0},   // yellow
    {35, 31, 32},    // black
};
// libpng writes images of up to a million rows; the preview stays well below.
constexpr uint32_t kMaxPreviewHeight = 20000;

constexpr float kTwoBitCoverage[4] = {0.0f, 0.35f, 0.65f, 1.0f};  // no dot, small, medium, large

}  // namespace

PreviewGeometry previewGeometry(uint32_t pageWidth, uint32_t pageHeight, uint32_t dpiX, uint32_t dpiY,
                                uint32_t maxWidth) {
    // A box of (dpiX / g) × (dpiY / g) printed pixels is square on paper.
    const uint32_t g = std::gcd(dpiX, dpiY);
    const uint32_t unitX = dpiX / g, unitY = dpiY / g;
    const uint32_t unitsAcross = (pageWidth + unitX - 1) / unitX;
    const uint32_t unitsDown = (pageHeight + unitY - 1) / unitY;
    // A very tall page is scaled down until its preview fits the height a
    // PNG writer takes too.
    const uint32_t k = std::max({uint32_t{1}, (unitsAcross + maxWidth - 1) / std::max<uint32_t>(1, maxWidth),
                                 (unitsDown + kMaxPreviewHeight - 1) / kMaxPreviewHeight});
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

    if (bits == 1) codeCoverage_ = {0.0f, 1.0f, 0.0f, 0.0f};
    else codeCoverage_ = {kTwoBitCoverage[0], kTwoBitCoverage[1], kTwoBitCoverage[2], kTwoBitCoverage[3]};
    for (unsigned p = 0; p < planes; ++p) {
        const int ink = planes == 1 ? 3 : static_cast<int>(p);
        for (int c = 0; c < 3; ++c) inkAbsorb_[p][c] = 1.0f - srgbToLinear(kInkColour[ink][c]);
    }
    sums_.assign(size_t{geometry_.width} * planes, 0.0f);
    counts_.assign(geometry_.width, 0);
    row_.resize(size_t{geometry_.width} * 3);
    return png_.open(path, geometry_.width, geometry_.height, 3, error);
}

bool PreviewBuilder::addLine(const uint8_t* planes, size_t stride, std::string& error) {
    const unsigned perByte = 8 / bits_;
    const unsigned mask = (1u << bits_) - 1;
    for (uint32_t x = 0; x < pageWidth_; ++x) {
        const size_t byte = x / perByte;
        const unsigned shift = 8 - bits_ * (x % perByte + 1);  // first pixel in the top bits
        const uint32_t column = x / geometry_.boxWidth;
        float* sum = &sums_[size_t{column} * planes_];
        for (unsigned p = 0; p < planes_; ++p) sum[p] += codeCoverage_[(planes[p * stride + byte] >> shift) & mask];
        ++counts_[column];
    }
    ++linesDone_;
    if (++linesInRow_ == geometry_.boxHeight || linesDone_ == pageHeight_) return flushRow(error);
    return true;
}

bool PreviewBuilder::flushRow(std::string& error) {
    for (uint32_t column = 0; column < geometry_.width; ++column) {
        const float n = static_cast<float>(std::max<uint32_t>(1, counts_[column]));
        std::array<float, 3> light = {1.0f, 1.0f, 1.0f};
        for (unsigned p = 0; p < planes_; ++p) {
            const float f = sums_[size_t{column} * planes_ + p] / n;
            // Dot gain: sparse dots spread by up to 2.5 times their cell.
            const float apparent = std::min(1.0f, f * (1.0f + 1.5f * (1.0f - f) * (1.0f - f)));
            for (int c = 0; c < 3; ++c) light[c] *= 1.0f - apparent * inkAbsorb_[p][c];
        }
        for (int c = 0; c < 3; ++c) row_[column * 3 + c] = linearToSrgb(light[c]);
    }
    std::fill(sums_.begin(), sums_.end(), 0.0f);
    std::fill(counts_.begin(), counts_.end(), 0u);
    linesInRow_ = 0;
    return png_.writeRow(row_.data(), error);
}

bool PreviewBuilder::finish(std::string& error) { return png_.finish(error); }

}  // namespace inkdot::tools
