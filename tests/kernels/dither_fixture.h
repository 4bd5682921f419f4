// Small writers and readers for the ordered-dither kernel tests: instance
// settings, colour grid nodes, threshold matrices, and the output planes
// read back as strings of bits or dot codes.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "support/hand_context.h"

namespace inkdot::test {

struct DitherSetup {
    uint32_t method = 3;
    uint32_t ditherMode = 1;
    uint32_t inputFormat = 0;
    uint32_t colourMode = 0;
    uint32_t resolutionX = 720;
    uint32_t resolutionY = 720;
    uint32_t outputBits = 1;
    int32_t scaleMode = 0;
    uint32_t width = 64;

    HtSettings settings() const {
        return {method, ditherMode, inputFormat, colourMode, resolutionX, resolutionY,
                outputBits, scaleMode, 0, width, 0};
    }
};

inline DitherSetup monoSetup(uint32_t outputBits = 1) { return DitherSetup{.outputBits = outputBits}; }
inline DitherSetup colourSetup(uint32_t outputBits = 1) {
    return DitherSetup{.inputFormat = 2, .colourMode = 1, .outputBits = outputBits};
}
// The class in which the two-bit kernels offer halving.
inline DitherSetup doubleY(DitherSetup s) {
    s.resolutionX = 360;
    s.resolutionY = 720;
    return s;
}

inline uint32_t packInks(uint32_t c0, uint32_t c1, uint32_t c2, uint32_t c3) {
    return c0 | c1 << 8 | c2 << 16 | c3 << 24;
}

// Input level v sits on grid node n.
inline void onNode(HandContext& hc, uint8_t v, uint8_t n) { hc.setGridCell(v, n, 255); }

// The grid cell table the resource protocol builds for 32 evenly spread
// levels (0, 8, 16, ... 255): on-node levels get weight 255, the others the
// lower node's share of 255.
inline void evenGridCells(HandContext& hc) {
    uint32_t level[32];
    for (uint32_t k = 0; k < 32; ++k) level[k] = (k * 255 + 15) / 31;
    uint32_t j = 0;
    for (uint32_t v = 0; v < 256; ++v) {
        if (level[j] == v) {
            hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j), 255);
            ++j;
        } else {
            hc.setGridCell(static_cast<uint8_t>(v), static_cast<uint8_t>(j - 1),
                           static_cast<uint8_t>((level[j] - v) * 255 / (level[j] - level[j - 1])));
        }
    }
}

// A side x side matrix holding every value 0 .. side^2 - 1 once, shuffled.
inline std::vector<uint16_t> permutationMatrix(uint32_t side, uint32_t seed) {
    std::vector<uint16_t> cells(side * side);
    std::iota(cells.begin(), cells.end(), uint16_t{0});
    std::mt19937 rng(seed);
    std::shuffle(cells.begin(), cells.end(), rng);
    return cells;
}

// The recursive Bayer matrix of side 2^k: also every value once.
inline std::vector<uint16_t> bayerMatrix(uint32_t side) {
    // Built by doubling: B(2n) = [4B + 0, 4B + 2; 4B + 3, 4B + 1].
    std::vector<uint16_t> b = {0};
    for (uint32_t n = 1; n < side; n *= 2) {
        std::vector<uint16_t> next(4 * n * n);
        for (uint32_t y = 0; y < n; ++y)
            for (uint32_t x = 0; x < n; ++x) {
                const uint16_t v = static_cast<uint16_t>(4 * b[y * n + x]);
                next[y * 2 * n + x] = v;
                next[y * 2 * n + x + n] = v + 2;
                next[(y + n) * 2 * n + x] = v + 3;
                next[(y + n) * 2 * n + x + n] = v + 1;
            }
        b = std::move(next);
    }
    return b;
}

// Pixel i of a one-bit plane.
inline bool bitAt(const uint8_t* plane, uint32_t i) { return (plane[i / 8] >> (7 - i % 8)) & 1; }
// Dot code of pixel i of a two-bit plane.
inline unsigned codeAt(const uint8_t* plane, uint32_t i) { return (plane[i / 4] >> (6 - 2 * (i % 4))) & 3; }

// Pixels from..from + n - 1 of plane k as "0"/"1" (one-bit) or "0".."3" (two-bit).
inline std::string bitsOf(const std::vector<uint8_t>& out, uint32_t stride, unsigned k, uint32_t n, uint32_t from = 0) {
    std::string s;
    for (uint32_t i = from; i < from + n; ++i) s += bitAt(out.data() + k * stride, i) ? '1' : '0';
    return s;
}
inline std::string codesOf(const std::vector<uint8_t>& out, uint32_t stride, unsigned k, uint32_t n, uint32_t from = 0) {
    std::string s;
    for (uint32_t i = from; i < from + n; ++i) s += static_cast<char>('0' + codeAt(out.data() + k * stride, i));
    return s;
}

// Colour pixels, three bytes each.
inline std::vector<uint8_t> rgbPixels(std::initializer_list<std::array<uint8_t, 3>> pixels) {
    std::vector<uint8_t> bytes;
    for (const auto& p : pixels) bytes.insert(bytes.end(), p.begin(), p.end());
    return bytes;
}

}  // namespace inkdot::test
