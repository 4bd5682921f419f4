// How a dither kernel walks its input: the bytes of one pixel, an optional
// reduction of two input pixels to one (the smaller value, byte by byte), and
// doubling (scaleMode 1: each input pixel serves two output pixels).
//
// Pixel sizes: one gray byte, three colour bytes (every colour inputFormat but
// ink input), or four ink bytes (colourPixelBytes).
#pragma once

#include <algorithm>
#include <cstdint>

namespace inkdot {

// Input reductions, as template policies of the kernels.
struct ReadOne {
    static constexpr uint32_t kPixels = 1;
    static uint8_t byte(const uint8_t* pixel, uint32_t, uint32_t k) { return pixel[k]; }
};
struct SmallerOfTwo {
    static constexpr uint32_t kPixels = 2;
    static uint8_t byte(const uint8_t* pixel, uint32_t pixelBytes, uint32_t k) {
        return std::min(pixel[k], pixel[pixelBytes + k]);
    }
};

template <class Reduction>
class InputWalk {
public:
    InputWalk(const uint8_t* src, uint32_t pixelBytes, bool doubling)
        : at_(src), pixelBytes_(pixelBytes), step_(pixelBytes * Reduction::kPixels), doubleMask_(doubling ? 1 : 0) {}

    uint8_t byte(uint32_t k) const { return Reduction::byte(at_, pixelBytes_, k); }

    // After output pixel i of the run: doubling moves on after every second
    // pixel only (after the odd ones), otherwise after every pixel.
    void advanceAfter(uint32_t i) {
        if ((i & doubleMask_) == doubleMask_) at_ += step_;
    }

private:
    const uint8_t* at_;
    uint32_t pixelBytes_;
    uint32_t step_;
    uint32_t doubleMask_;
};

}  // namespace inkdot

namespace inkdot {

// Runs f with the reduction that scaleMode -1 asks for, where a kernel offers it.
template <class F>
inline void withReduction(bool halving, F&& f) {
    if (halving) {
        f(SmallerOfTwo{});
    } else {
        f(ReadOne{});
    }
}

}  // namespace inkdot
