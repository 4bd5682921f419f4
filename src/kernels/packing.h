// Output packing shared by every kernel: dot codes packed most significant
// first into one or more planes at dst + k * planeStride.
//
// A pixel's bits come from a code pattern repeated over the whole byte
// (one-bit: 0x00 / 0xFF; two-bit: 0x00, 0x55, 0xAA, 0xFF) cut by the pixel's
// mask. The first byte keeps the bits of the bitOffset pixels in front of the
// run; the last byte gets zeros behind it.
#pragma once

#include <cstdint>

namespace inkdot {

inline constexpr uint8_t kDotPattern = 0xFF;
// A two-bit code c repeated in all four bit pairs of a byte is c times this
// (0x00, 0x55, 0xAA, 0xFF); the packer's mask then picks the pixel's pair.
inline constexpr uint32_t kCodeRepeat = 0x55;
// Byte k of a packed word belongs to plane k; this repeats a byte into every plane.
inline constexpr uint32_t kEveryPlane = 0x01010101;

// The bytes being assembled for up to four planes live in one register word,
// byte k for plane k: byte arrays on the stack cost a load and a store per
// plane and pixel, and the stores through uint8_t pointers made the compiler
// reload every table pointer behind them.
template <unsigned Bits, unsigned Planes>
class PlanePacker {
public:
    static_assert(Bits == 1 || Bits == 2);
    static_assert(Planes >= 1 && Planes <= 4);
    static constexpr uint32_t kFirstMask = Bits == 1 ? 0x80 : 0xC0;

    PlanePacker(uint8_t* dst, uint32_t planeStride, uint32_t bitOffset)
        : out_(dst), stride_(planeStride), mask_(kFirstMask >> (Bits * bitOffset)) {
        // Bits in front of the run belong to earlier runs and survive.
        const uint32_t keep = ~(0xFFu >> (Bits * bitOffset)) & 0xFF;
        if (bitOffset != 0)
            for (unsigned k = 0; k < Planes; ++k) word_ |= static_cast<uint32_t>(plane(k)[0] & keep) << (8 * k);
    }

    // ORs the pattern of plane k's pixel into the byte being assembled.
    void set(unsigned k, uint32_t pattern) { word_ |= (pattern & mask_) << (8 * k); }
    // Selected by a mask, not a jump: dot decisions are as good as random.
    void dot(unsigned k, bool printed) { word_ |= (mask_ & -static_cast<uint32_t>(printed)) << (8 * k); }
    // Every plane at once: byte k of `patterns` is plane k's pattern.
    void setAll(uint32_t patterns) { word_ |= patterns & (mask_ * kEveryPlane); }

    // Moves to the next pixel; a full byte goes out to every plane.
    void next() {
        mask_ >>= Bits;
        if (mask_ == 0) {
            store();
            ++out_;
            mask_ = kFirstMask;
            word_ = 0;
        }
    }

    // Stores a partly filled last byte (its bits behind the run are 0).
    void finish() {
        if (mask_ != kFirstMask) store();
    }
    // Stores the bytes being assembled whatever the mask says.
    void store() {
        for (unsigned k = 0; k < Planes; ++k) plane(k)[0] = static_cast<uint8_t>(word_ >> (8 * k));
    }

private:
    uint8_t* plane(unsigned k) const { return out_ + static_cast<uintptr_t>(k) * stride_; }

    uint8_t* out_;
    uintptr_t stride_;
    uint32_t mask_;
    uint32_t word_ = 0;
};

}  // namespace inkdot
