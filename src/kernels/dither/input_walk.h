// How a dither kernel walks its input: the bytes of one pixel, an optional
// reduction of two input pixels to one (the smaller value, byte by byte), and
// doubling (scaleMode 1: each input pixel serves two output pixels).
//
// Pixel sizes come from inputFormat (one gray byte, three colour bytes, or a
// four-byte pixel); six-byte pixels are refused when the instance is created,
// so no kernel meets them.
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
        : src_(src), pixelBytes_(pixelBytes), step_(pixelBytes * Reduction::kPixels), shift_(doubling ? 1 : 0) {}

    // Byte k of the input of output pixel i: doubling reads input pixel i / 2.
    uint8_t byte(uint32_t i, uint32_t k) const {
        return Reduction::byte(src_ + static_cast<uintptr_t>(i >> shift_) * step_, pixelBytes_, k);
    }

private:
    const uint8_t* src_;
    uint32_t pixelBytes_;
    uint32_t step_;
    uint32_t shift_;
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
