// The per-pixel pass of the grid input (GridInput::convert) written with
// AVX-512 (sixteen pixels at a time) or AVX2 (eight), for three-byte pixels
// read one per output pixel, doubled or halved; it runs only where the CPU
// has one of them (asked once per chunk), and the portable loop does the
// rest. Same results, bit for bit: every step is the integer arithmetic of
// the portable loop on vector lanes wide enough for its values. With
// AVX-512 the serial smoothing has a vector form too (smoothAvx512).
#pragma once

#include <cstdint>

#include "kernels/colour_input/colour_chunk.h"

#if defined(__GNUC__) && defined(__x86_64__) && defined(__linux__) && !defined(INKDOT_NO_CPU_CLONES)
#define INKDOT_SIMD_GRID_PASS 1
#endif

namespace inkdot {

// What the serial smoothing needs of each pixel of a chunk, besides its
// levels and white flag.
struct GridPass {
    uint32_t nodes[kColourChunk];    // packNodes of its node indices
    uint32_t smooth[kColourChunk];   // the smoothed planes if its nodes neighbour pixel i - 1's, else 0
    uint32_t roundUp[kColourChunk];  // kLowBits where the mean rounds up, else 0
};

// Everything the pass reads besides the pixels.
struct GridPassTables {
    const uint32_t* grid;
    const uint8_t* cells;
    const uint16_t* matrixRow;
    uint32_t columnMask;
    uint32_t column;          // the node matrix's column offset
    uint32_t shift;           // and its scale shift
    uint32_t roundBit;
    uint32_t smoothedPlanes;
    uint32_t lastNode;        // node indices above it are held at it
};

// How the chunk's output pixels read three-byte input pixels: one each,
// one per two output pixels (doubling), or a pair each (halving).
enum class InputSpacing { kOnePerPixel, kDoubled, kHalved };

#ifdef INKDOT_SIMD_GRID_PASS
bool gridPassAvx2Runs();
// Pixels 0 .. 8 * floor(n / 8) - 1 of a chunk, pixel 0 read at src and at
// column x0; prevNodes are the nodes of the last coloured pixel before the
// chunk. Returns how many pixels it did.
uint32_t gridPassAvx2(const GridPassTables& t, InputSpacing spacing, const uint8_t* src, uint32_t x0, uint32_t n,
                      uint32_t prevNodes, ColourChunk& out, GridPass& pass);

bool gridPassAvx512Runs();
// As gridPassAvx2, sixteen pixels at a time, without pass.smooth: the
// AVX-512 smoothing below makes its own neighbour tests.
uint32_t gridPassAvx512(const GridPassTables& t, InputSpacing spacing, const uint8_t* src, uint32_t x0, uint32_t n,
                        uint32_t prevNodes, ColourChunk& out, GridPass& pass);
// The serial smoothing of a chunk's n pixels (GridInput::smooth) with
// AVX-512; prevInks and prevNodes are those of the last coloured pixel, before
// and after the chunk.
void smoothAvx512(uint32_t smoothedPlanes, const GridPass& pass, uint32_t n, ColourChunk& out, uint32_t& prevInks,
                  uint32_t& prevNodes);
#endif

}  // namespace inkdot
