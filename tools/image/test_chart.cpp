#include "image/test_chart.h"

#include <algorithm>
#include <vector>

#include "image/png_writer.h"

namespace inkdot::tools {
namespace {

// Band edges in thousandths of the height.
constexpr uint32_t kGrayRamp = 140, kGraySteps = 220, kInkRamps = 400, kLightRamps = 580, kHueSweep = 820;
constexpr int kGraySteps17 = 17;  // 0, 16, … 255: the levels a print test usually reads

constexpr uint8_t kSkinTones[][3] = {
    {255, 224, 196}, {241, 194, 167}, {224, 172, 138}, {198, 134, 103},
    {161, 102, 77},  {120, 72, 52},   {92, 56, 42},    {62, 38, 30},
};
constexpr uint8_t kDarkTones[][3] = {
    {0, 0, 0},    {8, 8, 8},   {16, 16, 16}, {24, 24, 24},
    {32, 32, 32}, {40, 20, 20}, {20, 40, 20}, {20, 20, 40},
};

void setRgb(uint8_t rgb[3], int r, int g, int b) {
    rgb[0] = static_cast<uint8_t>(std::clamp(r, 0, 255));
    rgb[1] = static_cast<uint8_t>(std::clamp(g, 0, 255));
    rgb[2] = static_cast<uint8_t>(std::clamp(b, 0, 255));
}

// Fully saturated hue h in 0..1535 (six sextants of 256 steps).
void hueColour(int h, int out[3]) {
    const int sextant = h / 256, t = h % 256;
    switch (sextant) {
        case 0: out[0] = 255; out[1] = t; out[2] = 0; break;
        case 1: out[0] = 255 - t; out[1] = 255; out[2] = 0; break;
        case 2: out[0] = 0; out[1] = 255; out[2] = t; break;
        case 3: out[0] = 0; out[1] = 255 - t; out[2] = 255; break;
        case 4: out[0] = t; out[1] = 0; out[2] = 255; break;
        default: out[0] = 255; out[1] = 0; out[2] = 255 - t; break;
    }
}

}  // namespace

void chartPixel(uint32_t x, uint32_t y, uint32_t width, uint32_t height, uint8_t rgb[3]) {
    const uint32_t band = static_cast<uint32_t>(uint64_t{y} * 1000 / height);
    const int ramp = width > 1 ? static_cast<int>(uint64_t{x} * 255 / (width - 1)) : 0;  // 0 at left, 255 at right
    if (band < kGrayRamp) {
        setRgb(rgb, 255 - ramp, 255 - ramp, 255 - ramp);
    } else if (band < kGraySteps) {
        const int step = static_cast<int>(uint64_t{x} * kGraySteps17 / width);
        const int v = 255 - std::min(255, step * 16);
        setRgb(rgb, v, v, v);
    } else if (band < kLightRamps) {
        // Three ramps per band: cyan, magenta, yellow (one primary falls),
        // then red, green, blue (two primaries fall).
        const bool light = band >= kInkRamps;
        const uint32_t from = light ? kInkRamps : kGraySteps, to = light ? kLightRamps : kInkRamps;
        const int which = static_cast<int>((band - from) * 3 / (to - from));
        int c[3] = {255, 255, 255};
        if (!light) c[which] = 255 - ramp;
        else
            for (int i = 0; i < 3; ++i)
                if (i != which) c[i] = 255 - ramp;
        setRgb(rgb, c[0], c[1], c[2]);
    } else if (band < kHueSweep) {
        int c[3];
        hueColour(static_cast<int>(uint64_t{x} * 1535 / std::max<uint32_t>(1, width - 1)), c);
        // Top half: white to full colour; bottom half: full colour to black.
        const int t = static_cast<int>((band - kLightRamps) * 510 / (kHueSweep - kLightRamps));
        for (int& v : c) v = t <= 255 ? 255 - (255 - v) * t / 255 : v * (510 - t) / 255;
        setRgb(rgb, c[0], c[1], c[2]);
    } else {
        const bool dark = x >= width / 2;
        const uint32_t half = std::max<uint32_t>(1, width / 2);
        const uint32_t patch = std::min<uint32_t>(7, (dark ? x - width / 2 : x) * 8 / half);
        const uint8_t* c = dark ? kDarkTones[patch] : kSkinTones[patch];
        setRgb(rgb, c[0], c[1], c[2]);
    }
}

bool writeChart(const std::string& path, uint32_t width, uint32_t height, std::string& error) {
    PngWriter png;
    if (!png.open(path, width, height, 3, error)) return false;
    std::vector<uint8_t> row(size_t{width} * 3);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) chartPixel(x, y, width, height, &row[size_t{x} * 3]);
        if (!png.writeRow(row.data(), error)) return false;
    }
    return png.finish(error);
}

}  // namespace inkdot::tools
