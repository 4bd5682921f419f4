// The decision stage of the colour dither kernels written with AVX-512, 32
// pixels at a time in 16-bit lanes: the tone look-ups are byte-indexed
// permutations over the 256-entry table held in registers, the matrix
// compares give mask registers, and the masks become the chunk's dot flags
// or, where the packer is at a byte boundary, the output bytes themselves.
// It runs only where the CPU has AVX-512 BW, VBMI and GFNI (asked once per run);
// the portable chunk loops do the rest. Same results, bit for bit: every
// compare of the portable loops, made exact on unsigned 16-bit lanes.
#pragma once

#include <cstdint>

#include "kernels/colour_input/colour_chunk.h"

#if defined(__GNUC__) && defined(__x86_64__) && defined(__linux__) && !defined(INKDOT_NO_CPU_CLONES)
#define INKDOT_AVX512_DITHER_DOTS 1
#endif

namespace inkdot {

// Where the decision stage puts plane k's dots: at to[k], as one flag or
// code a byte, or `packed` as the output bytes (n then fills whole bytes).
struct DotsOut {
    uint8_t* const (&to)[4];
    bool packed;
};

#ifdef INKDOT_AVX512_DITHER_DOTS
// The CPU has AVX-512 BW, VL, VBMI and GFNI.
bool ditherDotsAvx512Runs();

// One-bit: the dots of planes 3, 0 and 2 of a chunk's n pixels, and of
// plane 1 where `plane1` (by the matrix from its other end); m holds the
// pixels' matrix values, tone the 256-entry tone table.
void dither1DotsAvx512(const uint16_t* tone, uint32_t maxT, const uint16_t* m, const ColourChunk& chunk, uint32_t n,
                       bool plane1, const DotsOut& dots);

// Two-bit: the dot codes (0 to 3, by the three-size rule) of the four
// planes of a chunk's n pixels; threshold[k] holds plane k's matrix values,
// cumulative and total are the split tone tables.
void dither2CodesAvx512(const uint32_t* cumulative, const uint32_t* total, const uint16_t* const (&threshold)[4],
                        const ColourChunk& chunk, uint32_t n, const DotsOut& codes);
#endif

}  // namespace inkdot
