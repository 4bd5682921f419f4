// A deterministic stand-in for a photograph, so every benchmark and the peer
// comparison halftone the same pixels: broad gradients, a few soft blobs of
// tone that differ per channel, and a little grain. Integer hash noise keeps
// it identical on every machine and build.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace inkdot::bench {

// Grain: a hash of (x, y, channel) mapped to -12..+12.
inline int grain(uint32_t x, uint32_t y, uint32_t channel) {
    uint32_t h = x * 0x9E3779B1u ^ (y + 0x7F4A7C15u) * 0x85EBCA77u ^ (channel + 1) * 0xC2B2AE3Du;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    return static_cast<int>(h % 25) - 12;
}

// Sample of channel `channel` (0..2) at (x, y) of a width x height image; 255 is white.
inline uint8_t photoSample(uint32_t x, uint32_t y, uint32_t channel, uint32_t width, uint32_t height) {
    const double u = static_cast<double>(x) / width;
    const double v = static_cast<double>(y) / height;
    const double phase = 2.1 * channel;
    double tone = 40.0 + 170.0 * (0.55 * u + 0.45 * v);                    // the broad gradient
    tone += 45.0 * std::sin(6.0 * u + phase) * std::cos(4.0 * v - phase);   // soft blobs
    tone += 20.0 * std::sin(23.0 * u * (1.0 + v) + 1.3 * channel);          // finer detail
    const int value = static_cast<int>(std::lround(tone)) + grain(x, y, channel);
    return static_cast<uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
}

// One line of `channels` interleaved bytes per pixel (1: gray, 3: RGB).
inline void photoLine(uint8_t* out, uint32_t y, uint32_t channels, uint32_t width, uint32_t height) {
    for (uint32_t x = 0; x < width; ++x) {
        for (uint32_t c = 0; c < channels; ++c) {
            // Gray is the mean of the colour channels, so both versions show one picture.
            out[x * channels + c] = channels == 1 ? static_cast<uint8_t>((photoSample(x, y, 0, width, height) +
                                                                         photoSample(x, y, 1, width, height) +
                                                                         photoSample(x, y, 2, width, height)) / 3)
                                                  : photoSample(x, y, c, width, height);
        }
    }
}

// The whole image, lines top to bottom.
inline std::vector<uint8_t> photoImage(uint32_t channels, uint32_t width, uint32_t height) {
    std::vector<uint8_t> image(static_cast<size_t>(channels) * width * height);
    for (uint32_t y = 0; y < height; ++y) photoLine(image.data() + static_cast<size_t>(y) * width * channels, y, channels, width, height);
    return image;
}

}  // namespace inkdot::bench
