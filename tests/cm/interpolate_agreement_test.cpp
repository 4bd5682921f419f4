// The interpolator against a plain per-pixel reading of the tetrahedral
// steps (two divisions per pixel and one per channel, tetrahedron chosen by
// the ordered tests), on random grids with uneven levels and random pixels.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "cm/interpolate.h"

namespace inkdot {
namespace {

void plainInterpolate(const CmLut& lut, const PixelLayout& layout, uint32_t count, const uint8_t* src, uint8_t* dst) {
    const uint32_t ch = lut.channels;
    const uint32_t s2 = ch, s1 = lut.gridCount[2] * ch, s0 = lut.gridCount[1] * s1;
    auto cellOf = [&](uint32_t axis, uint32_t v) {
        uint32_t i = 1;
        while (i < lut.gridCount[axis] - 1 && lut.grid[axis][i] < v) ++i;
        return i;
    };
    for (uint32_t p = 0; p < count; ++p, src += layout.pixelBytes, dst += ch) {
        const uint32_t x = src[layout.red], y = src[layout.green], z = src[layout.blue];
        const uint32_t i = cellOf(0, x), j = cellOf(1, y), k = cellOf(2, z);
        const uint32_t x0 = lut.grid[0][i - 1], y0 = lut.grid[1][j - 1], z0 = lut.grid[2][k - 1];
        const uint32_t dx = lut.grid[0][i] - x0, dy = lut.grid[1][j] - y0, dz = lut.grid[2][k] - z0;
        const uint32_t fx = x - x0, fy = (y - y0) * dx / dy, fz = (z - z0) * dx / dz;
        const uint8_t* v = lut.lutData + (i - 1) * s0 + (j - 1) * s1 + (k - 1) * s2;
        uint32_t a, b, w0, w1, w2, w3;
        if (fx >= fy && fy >= fz) { a = s0; b = s0 + s1; w0 = dx - fx; w1 = fx - fy; w2 = fy - fz; w3 = fz; }
        else if (fx >= fz && fz > fy) { a = s0; b = s0 + s2; w0 = dx - fx; w1 = fx - fz; w2 = fz - fy; w3 = fy; }
        else if (fz > fx && fx >= fy) { a = s2; b = s0 + s2; w0 = dx - fz; w1 = fz - fx; w2 = fx - fy; w3 = fy; }
        else if (fy > fx && fx >= fz) { a = s1; b = s0 + s1; w0 = dx - fy; w1 = fy - fx; w2 = fx - fz; w3 = fz; }
        else if (fy >= fz && fz > fx) { a = s1; b = s1 + s2; w0 = dx - fy; w1 = fy - fz; w2 = fz - fx; w3 = fx; }
        else { a = s2; b = s1 + s2; w0 = dx - fz; w1 = fz - fy; w2 = fy - fx; w3 = fx; }
        for (uint32_t c = 0; c < ch; ++c)
            dst[c] = static_cast<uint8_t>((v[c] * w0 + v[a + c] * w1 + v[b + c] * w2 + v[s0 + s1 + s2 + c] * w3) / dx);
    }
}

// Levels 0 = l0 < l1 < ... < l(n-1) = 255 at random places (n >= 2).
std::vector<uint8_t> randomLevels(std::mt19937& rng, uint32_t n) {
    std::set<uint8_t> inner;
    while (inner.size() < n - 2) inner.insert(static_cast<uint8_t>(1 + rng() % 254));
    std::vector<uint8_t> levels{0};
    levels.insert(levels.end(), inner.begin(), inner.end());
    levels.push_back(255);
    return levels;
}

struct RandomGrid {
    CmLut lut{};
    std::vector<uint8_t> nodes;
    RandomGrid(std::mt19937& rng, uint32_t n, uint32_t channels) {
        lut.channels = channels;
        for (uint32_t a = 0; a < 3; ++a) {
            lut.gridCount[a] = n;
            const std::vector<uint8_t> levels = randomLevels(rng, n);
            std::copy(levels.begin(), levels.end(), lut.grid[a]);
        }
        nodes.resize(static_cast<size_t>(n) * n * n * channels);
        for (auto& b : nodes) b = static_cast<uint8_t>(rng());
        lut.lutData = nodes.data();
    }
};

TEST(InterpolateAgreement, FourChannelGridsMatchThePlainSteps) {
    std::mt19937 rng(2024);
    for (uint32_t n : {2u, 3u, 5u, 17u, 33u, 48u}) {
        const RandomGrid g(rng, n, 4);
        std::vector<uint8_t> rgb(3 * 4000);
        for (auto& b : rgb) b = static_cast<uint8_t>(rng());
        // Equal fractions and cell edges: the ties between tetrahedra.
        for (uint32_t p = 0; p < 256; ++p) rgb[3 * p] = rgb[3 * p + 1] = rgb[3 * p + 2] = static_cast<uint8_t>(p);
        for (uint32_t p = 256; p < 512; ++p) rgb[3 * p + 1] = rgb[3 * p], rgb[3 * p + 2] = g.lut.grid[2][p % n];
        std::vector<uint8_t> got(4 * 4000), want(4 * 4000);
        interpolateRgb(g.lut, 4000, rgb.data(), got.data());
        plainInterpolate(g.lut, kRgbLayout, 4000, rgb.data(), want.data());
        ASSERT_EQ(got, want) << "grid of " << n;
    }
}

TEST(InterpolateAgreement, OtherChannelCountsAndLayoutsMatchThePlainSteps) {
    std::mt19937 rng(77);
    const PixelLayout layout{4, 3, 1, 0};
    for (uint32_t channels : {1u, 2u, 3u, 5u, 8u}) {
        const RandomGrid g(rng, 9, channels);
        std::vector<uint8_t> src(4 * 3000);
        for (auto& b : src) b = static_cast<uint8_t>(rng());
        std::vector<uint8_t> got(channels * 3000), want(channels * 3000);
        interpolatePixels(g.lut, layout, 3000, src.data(), got.data());
        plainInterpolate(g.lut, layout, 3000, src.data(), want.data());
        ASSERT_EQ(got, want) << channels << " channels";
    }
}

// Every numerator the interpolator divides (up to 255 x 255) by every cell
// width, through one-cell grids: level 0 and a level w, then 255.
TEST(InterpolateAgreement, EveryCellWidthDividesExactly) {
    std::mt19937 rng(5);
    for (uint32_t w = 1; w < 255; ++w) {
        CmLut lut{};
        lut.channels = 4;
        std::vector<uint8_t> nodes(3 * 3 * 3 * 4);
        for (auto& b : nodes) b = static_cast<uint8_t>(rng() | 0x80);
        for (uint32_t a = 0; a < 3; ++a) {
            lut.gridCount[a] = 3;
            lut.grid[a][0] = 0;
            lut.grid[a][1] = static_cast<uint8_t>(w);
            lut.grid[a][2] = 255;
        }
        lut.lutData = nodes.data();
        std::vector<uint8_t> rgb;
        for (uint32_t v = 0; v < 256; ++v) rgb.insert(rgb.end(), {static_cast<uint8_t>(v), static_cast<uint8_t>(255 - v), static_cast<uint8_t>(v * 7)});
        std::vector<uint8_t> got(4 * 256), want(4 * 256);
        interpolateRgb(lut, 256, rgb.data(), got.data());
        plainInterpolate(lut, kRgbLayout, 256, rgb.data(), want.data());
        ASSERT_EQ(got, want) << "cell width " << w;
    }
}

}  // namespace
}  // namespace inkdot
