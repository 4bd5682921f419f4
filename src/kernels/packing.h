// Output packing shared by every kernel: dot codes packed most significant
// first into one or more planes at dst + k * planeStride.
//
// A pixel's bits come from a code pattern repeated over the whole byte
// (one-bit: 0x00 / 0xFF; two-bit: 0x00, 0x55, 0xAA, 0xFF) cut by the pixel's
// mask. The first byte keeps the bits of the bitOffset pixels in front of the
// run; the last byte gets zeros behind it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

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

    // One-bit, one plane: the next n pixels from dot flags (bytes 0 or 1).
    // Once the byte being assembled is full, eight flags at a time become a
    // whole output byte.
    void dots(const uint8_t* flags, uint32_t n) {
        static_assert(Bits == 1 && Planes == 1);
        static_assert(std::endian::native == std::endian::little, "flag i is byte i of the word");
        uint32_t i = 0;
        for (; i < n && mask_ != kFirstMask; ++i) {
            dot(0, flags[i] != 0);
            next();
        }
        for (; i + 8 <= n; i += 8) {
            uint64_t eight;
            std::memcpy(&eight, flags + i, 8);
            // Flag j (bit 8j) moves to bit 56 + 7 - j: the first pixel on top.
            *out_++ = static_cast<uint8_t>((eight * 0x8040201008040201ull) >> 56);
        }
        for (; i < n; ++i) {
            dot(0, flags[i] != 0);
            next();
        }
    }

    // Two-bit, one plane: the next n pixels from dot codes (bytes 0 to 3),
    // four codes at a time into a whole output byte once the byte being
    // assembled is full.
    void codes(const uint8_t* codes, uint32_t n) {
        static_assert(Bits == 2 && Planes == 1);
        static_assert(std::endian::native == std::endian::little, "code i is byte i of the word");
        uint32_t i = 0;
        for (; i < n && mask_ != kFirstMask; ++i) {
            set(0, codes[i] * kCodeRepeat);
            next();
        }
        for (; i + 4 <= n; i += 4) {
            uint32_t four;
            std::memcpy(&four, codes + i, 4);
            // Code j (bits 8j, 8j + 1) moves to bits 30 - 2j, 31 - 2j; the
            // other products fall below bit 24 without carrying or past bit 31.
            *out_++ = static_cast<uint8_t>((four * 0x40100401u) >> 24);
        }
        for (; i < n; ++i) {
            set(0, codes[i] * kCodeRepeat);
            next();
        }
    }

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
