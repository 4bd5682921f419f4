// Counting printed dots in halftoned plane lines.
//
// A plane line holds one code per printed pixel, first pixel in the most
// significant bits: one bit (0 no dot, 1 dot) or two bits (0 none, 1 small,
// 2 medium, 3 large). A one-bit dot is the one and only dot size and is
// counted as large.
#pragma once

#include <array>
#include <cstdint>

namespace inkdot::tools {

// Ink of a small and a medium dot relative to a large one; the defaults are
// the default pack's dot-split block (small-ink 0.35, medium-ink 0.65).
struct DotAmounts {
    double small = 0.35;
    double medium = 0.65;
};

// Code of pixel x in a plane line of `bits` (1 or 2) bits per pixel.
inline unsigned dotCode(const uint8_t* line, uint32_t x, unsigned bits) {
    const unsigned perByte = 8 / bits;
    const unsigned shift = 8 - bits * (x % perByte + 1);  // first pixel in the top bits
    return (line[x / perByte] >> shift) & ((1u << bits) - 1);
}

// The ink a code stands for, relative to a large dot.
double dotAmount(unsigned code, unsigned bits, const DotAmounts& amounts);

struct DotCounts {
    std::array<uint64_t, 4> bySize{};  // none, small, medium, large

    uint64_t pixels() const { return bySize[0] + bySize[1] + bySize[2] + bySize[3]; }
    // Share of the pixels that hold a dot of the given size (1..3).
    double share(unsigned size) const;
    // Share of the pixels with any dot.
    double dotted() const { return share(1) + share(2) + share(3); }
    // Printed coverage: dots counted by their ink amounts, per pixel (0..1).
    double coverage(const DotAmounts& amounts) const;
};

// Adds the codes of pixels x0 .. x0 + width − 1 of one plane line.
void countDots(const uint8_t* line, uint32_t x0, uint32_t width, unsigned bits, DotCounts& into);

}  // namespace inkdot::tools
