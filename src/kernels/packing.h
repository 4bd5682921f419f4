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
// Two-bit code bytes: the code repeated in all four bit pairs.
inline constexpr uint8_t kCodeByte[4] = {0x00, 0x55, 0xAA, 0xFF};

template <unsigned Bits, unsigned Planes>
class PlanePacker {
public:
    static_assert(Bits == 1 || Bits == 2);
    static constexpr uint8_t kFirstMask = Bits == 1 ? 0x80 : 0xC0;

    PlanePacker(uint8_t* dst, uint32_t planeStride, uint32_t bitOffset)
        : out_(dst), stride_(planeStride), mask_(static_cast<uint8_t>(kFirstMask >> (Bits * bitOffset))) {
        // Bits in front of the run belong to earlier runs and survive.
        const uint8_t keep = static_cast<uint8_t>(~(0xFFu >> (Bits * bitOffset)));
        for (unsigned k = 0; k < Planes; ++k) byte_[k] = bitOffset ? (plane(k)[0] & keep) : 0;
    }

    // ORs the pattern of plane k's pixel into the byte being assembled.
    // Inlined early: GCC otherwise folds the identical bodies of packers with
    // different plane counts into one and warns about the smaller one's bounds.
#if defined(__GNUC__)
    [[gnu::always_inline]]
#endif
    void set(unsigned k, uint8_t pattern) { byte_[k] |= pattern & mask_; }
    // Selected by a mask, not a jump: dot decisions are as good as random.
#if defined(__GNUC__)
    [[gnu::always_inline]]
#endif
    void dot(unsigned k, bool printed) { byte_[k] |= static_cast<uint8_t>(mask_ & -static_cast<unsigned>(printed)); }
    uint8_t mask() const { return mask_; }

    // Moves to the next pixel; a full byte goes out to every plane.
    void next() {
        mask_ = static_cast<uint8_t>(mask_ >> Bits);
        if (mask_ == 0) {
            store();
            ++out_;
            mask_ = kFirstMask;
            for (unsigned k = 0; k < Planes; ++k) byte_[k] = 0;
        }
    }

    // Stores a partly filled last byte (its bits behind the run are 0).
    void finish() {
        if (mask_ != kFirstMask) store();
    }
    // Stores the bytes being assembled whatever the mask says.
    void store() {
        for (unsigned k = 0; k < Planes; ++k) plane(k)[0] = byte_[k];
    }

private:
    uint8_t* plane(unsigned k) const { return out_ + static_cast<uintptr_t>(k) * stride_; }

    uint8_t* out_;
    uint32_t stride_;
    uint8_t mask_;
    uint8_t byte_[Planes];
};

}  // namespace inkdot
