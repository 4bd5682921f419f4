#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "cm/interpolate.h"

namespace inkdot {
namespace {

// A CmLut over caller-owned node data, levels the same on every axis.
struct Grid {
    CmLut lut{};
    std::vector<uint8_t> data;
    Grid(std::vector<uint8_t> levels, uint32_t channels, uint8_t (*value)(uint32_t, uint32_t, uint32_t, uint32_t)) {
        const auto n = static_cast<uint32_t>(levels.size());
        lut.channels = channels;
        for (int a = 0; a < 3; ++a) {
            lut.gridCount[a] = n;
            std::copy(levels.begin(), levels.end(), lut.grid[a]);
        }
        for (uint32_t i0 = 0; i0 < n; ++i0)
            for (uint32_t i1 = 0; i1 < n; ++i1)
                for (uint32_t i2 = 0; i2 < n; ++i2)
                    for (uint32_t c = 0; c < channels; ++c) data.push_back(value(i0, i1, i2, c));
        lut.lutData = data.data();
    }
};

TEST(Interpolate, WorkedTetrahedra) {
    // Two points per axis, one channel, eight unrelated node values.
    const Grid g({0, 255}, 1, [](uint32_t a, uint32_t b, uint32_t c, uint32_t) {
        static const uint8_t v[8] = {10, 30, 90, 200, 250, 60, 120, 40};  // index a*4 + b*2 + c
        return v[a * 4 + b * 2 + c];
    });
    struct Case { uint8_t x, y, z; uint8_t want; };
    const Case cases[] = {
        // fx >= fy >= fz: V000 55, V100 100, V110 50, V111 50 -> (550 + 25000 + 6000 + 2000) / 255
        {200, 100, 50, 131},
        // fx >= fz > fy: V000 55, V100 150, V101 20, V111 30 -> (550 + 37500 + 1200 + 1200) / 255
        {200, 30, 50, 158},
        // fz > fx >= fy: V000 (255-200), V001 100, V101 50, V111 50 -> (550 + 3000 + 3000 + 2000) / 255
        {100, 50, 200, 33},
        // fy > fx >= fz: V000 55, V010 100, V110 50, V111 50 -> (550 + 9000 + 6000 + 2000) / 255
        {100, 200, 50, 68},
        // fy >= fz > fx: V000 55, V010 50, V011 50, V111 100 -> (550 + 4500 + 10000 + 4000) / 255
        {100, 200, 150, 74},
        // fz > fy > fx: V000 55, V001 50, V011 50, V111 100 -> (550 + 1500 + 10000 + 4000) / 255
        {100, 150, 200, 62},
    };
    // One pixel at a time, then all six in one call.
    std::vector<uint8_t> rgb, want;
    for (const Case& c : cases) {
        rgb.insert(rgb.end(), {c.x, c.y, c.z});
        want.push_back(c.want);
        uint8_t out = 0;
        interpolateRgb(g.lut, 1, &rgb[rgb.size() - 3], &out);
        EXPECT_EQ(out, c.want) << int(c.x) << "," << int(c.y) << "," << int(c.z);
    }
    std::vector<uint8_t> row(want.size());
    interpolateRgb(g.lut, static_cast<uint32_t>(want.size()), rgb.data(), row.data());
    EXPECT_EQ(row, want);
}

// Tetrahedral interpolation reproduces a function linear in r, g, b exactly
// (before the final truncation) on a two-point grid.
TEST(Interpolate, LinearFunctionsAreReproduced) {
    const Grid g({0, 255}, 3, [](uint32_t a, uint32_t b, uint32_t c, uint32_t ch) {
        const uint32_t weights[3][3] = {{100, 50, 25}, {0, 255, 0}, {85, 85, 85}};
        return static_cast<uint8_t>(a * weights[ch][0] + b * weights[ch][1] + c * weights[ch][2]);
    });
    std::mt19937 rng(7);
    for (int t = 0; t < 5000; ++t) {
        const uint8_t rgb[3] = {static_cast<uint8_t>(rng()), static_cast<uint8_t>(rng()), static_cast<uint8_t>(rng())};
        uint8_t out[3];
        interpolateRgb(g.lut, 1, rgb, out);
        EXPECT_EQ(out[0], (100u * rgb[0] + 50u * rgb[1] + 25u * rgb[2]) / 255);
        EXPECT_EQ(out[1], rgb[1]);
        EXPECT_EQ(out[2], (85u * rgb[0] + 85u * rgb[1] + 85u * rgb[2]) / 255);
    }
}

// One cell of width w then one of 255 - w on every axis, and each channel
// holding the level of one axis (red twice, so that both the four-channel
// and the general path run). Red comes back exactly: its weighted sum is a
// multiple of the cell width, so any inexact division shows. Green and blue
// come back low by less than one step of their fraction rescaled to red's
// cell width (their cell width / red's, plus the truncation).
TEST(Interpolate, EveryCellWidthDividesExactly) {
    static uint32_t w;
    for (w = 1; w < 255; ++w) {
        for (uint32_t channels : {3u, 4u}) {
            const Grid levels({0, static_cast<uint8_t>(w), 255}, channels, [](uint32_t i0, uint32_t i1, uint32_t i2, uint32_t c) {
                const uint32_t level[3] = {0, w, 255};
                return static_cast<uint8_t>(level[c == 1 ? i1 : c == 2 ? i2 : i0]);
            });
            const auto cellWidth = [](uint32_t v) { return v <= w ? w : 255 - w; };
            for (uint32_t v = 0; v < 256; ++v) {
                const uint8_t rgb[3] = {static_cast<uint8_t>(v), static_cast<uint8_t>(255 - v), static_cast<uint8_t>(v * 7)};
                uint8_t out[4] = {};
                interpolateRgb(levels.lut, 1, rgb, out);
                ASSERT_EQ(out[0], rgb[0]) << "cell width " << w;
                if (channels == 4) {
                    ASSERT_EQ(out[3], rgb[0]) << "cell width " << w;
                }
                for (int c = 1; c < 3; ++c) {
                    ASSERT_LE(out[c], rgb[c]) << "cell width " << w << " channel " << c;
                    ASSERT_LT(rgb[c] - out[c], double(cellWidth(rgb[c])) / cellWidth(v) + 1) << "cell width " << w;
                }
            }
        }
    }
}

// Sister paths agree: four channels at once (the packed lanes) against each
// channel through a one-channel grid of its own, on uneven levels, with the
// pixels' components in another order and a padding byte.
TEST(Interpolate, FourChannelPathAgreesWithSingleChannels) {
    std::mt19937 rng(2024);
    static std::vector<uint8_t> values;
    values.resize(9 * 9 * 9 * 4);
    for (auto& b : values) b = static_cast<uint8_t>(rng());
    const std::vector<uint8_t> levels{0, 1, 30, 31, 100, 180, 181, 254, 255};
    const Grid four(levels, 4, [](uint32_t a, uint32_t b, uint32_t c, uint32_t ch) { return values[((a * 9 + b) * 9 + c) * 4 + ch]; });
    const PixelLayout layout{4, 3, 1, 0};
    std::vector<uint8_t> src(4 * 3000);
    for (auto& b : src) b = static_cast<uint8_t>(rng());
    std::vector<uint8_t> got(4 * 3000), one(3000);
    interpolatePixels(four.lut, layout, 3000, src.data(), got.data());
    for (uint32_t ch = 0; ch < 4; ++ch) {
        static uint32_t channel;
        channel = ch;
        const Grid single(levels, 1, [](uint32_t a, uint32_t b, uint32_t c, uint32_t) { return values[((a * 9 + b) * 9 + c) * 4 + channel]; });
        interpolatePixels(single.lut, layout, 3000, src.data(), one.data());
        for (uint32_t p = 0; p < 3000; ++p) ASSERT_EQ(got[4 * p + ch], one[p]) << "pixel " << p << " channel " << ch;
    }
}

}  // namespace
}  // namespace inkdot
