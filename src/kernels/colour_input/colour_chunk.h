// What the colour input stage hands the decision stage: the ink levels of a
// chunk of pixels, four 8-bit levels per pixel in one word (byte k for
// plane k, the layout of a conversion grid node), and which pixels are white.
//
// Colour halftoning runs in two stages over a chunk at a time: the input stage
// turns pixels into levels (it depends on the input, the matrix and the
// tables only, never on the error lines, so it runs ahead pixel by pixel
// without waiting for the error chain), and the decision stage places the
// dots, diffuses and packs. The chunk lives on the stack: no allocation, and
// it stays in the first-level cache between the two stages.
#pragma once

#include <cstdint>

namespace inkdot {

// Pixels per chunk: long enough that the stages' loop overhead vanishes,
// short enough that a chunk (5 bytes a pixel) stays far inside the L1 cache.
inline constexpr uint32_t kColourChunk = 256;

struct ColourChunk {
    uint32_t inks[kColourChunk];   // levels, byte k = plane k; white pixels' are to be ignored
    uint8_t white[kColourChunk];   // 1: no dot in any plane, the pixel's state is skipped
};

// Level of plane k in an ink word.
inline uint32_t inkLevel(uint32_t inks, unsigned k) { return (inks >> (8 * k)) & 0xFF; }

// Levels below this print too rarely on a lone pixel to be worth a dot: the
// last pixel of an odd run, converted at the nearest node, drops them to 0.
inline constexpr uint32_t kFaintLevel = 32;

inline uint32_t dropFaintLevels(uint32_t inks) {
    uint32_t kept = 0;
    for (unsigned k = 0; k < 4; ++k)
        if (inkLevel(inks, k) >= kFaintLevel) kept |= inks & (0xFFu << (8 * k));
    return kept;
}

// The low bit of every plane's byte.
inline constexpr uint32_t kLowBits = 0x01010101;

// The smoothing of one pixel: in the bytes that `smooth` selects (all ones
// or zero per byte), (prev + inks + 1) >> 1 where roundUp holds kLowBits and
// (prev + inks) >> 1 where it holds 0; elsewhere the pixel's own level.
// The floor of the mean is (a AND b) + (a XOR b) / 2, and rounding up adds
// the low bit of a XOR b. No byte carries into the next (the mean fits a
// byte), so masking each term with `smooth` masks the sum, and the own levels
// fill only bytes where every other term is 0, so they can be added too.
// This is the one chain from pixel to pixel: the terms are grouped so that
// as few steps as possible wait for prev (with the compiler's regrouping,
// five instead of the seven of a mean followed by a masked select).
inline uint32_t smoothedInks(uint32_t prev, uint32_t inks, uint32_t smooth, uint32_t roundUp) {
    const uint32_t differ = prev ^ inks;
    const uint32_t ownLevels = inks & ~smooth;
    const uint32_t halfDiffer = (differ >> 1) & (smooth & 0x7F7F7F7F);
    return (((prev & (inks & smooth)) + ownLevels) + (differ & (roundUp & smooth))) + halfDiffer;
}

}  // namespace inkdot
