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

    // The next n pixels of every plane at once: values[k][i] is pixel i's
    // flag (one-bit: 0 or 1) or code (two-bit: 0 to 3) in plane k. Once the
    // byte being assembled is full, a whole output byte of a plane comes
    // from one multiplication of its 8 flags or 4 codes.
    void put(const uint8_t* const (&values)[Planes], uint32_t n) {
        static_assert(std::endian::native == std::endian::little, "value i is byte i of the word");
        constexpr uint32_t kPerByte = 8 / Bits;
        uint32_t i = 0;
        for (; i < n && mask_ != kFirstMask; ++i) putOne(values, i);
        for (; i + kPerByte <= n; i += kPerByte) {
            for (unsigned k = 0; k < Planes; ++k) plane(k)[0] = gatherByte(values[k] + i);
            ++out_;
        }
        for (; i < n; ++i) putOne(values, i);
    }

    // Whether the byte being assembled is empty: output bytes made whole
    // elsewhere can then go out as they are (putBytes).
    bool aligned() const { return mask_ == kFirstMask; }
    void putBytes(const uint8_t* const (&bytes)[Planes], uint32_t count) {
        for (unsigned k = 0; k < Planes; ++k) std::memcpy(plane(k), bytes[k], count);
        out_ += count;
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
    void putOne(const uint8_t* const (&values)[Planes], uint32_t i) {
        for (unsigned k = 0; k < Planes; ++k) set(k, Bits == 1 ? -uint32_t{values[k][i]} : values[k][i] * kCodeRepeat);
        next();
    }

    // Value j of the byte moves to the bits of pixel j, the first on top:
    // flag j (bit 8j) to bit 63 - j; code j (bits 8j, 8j + 1) to bits
    // 30 - 2j, 31 - 2j. The other partial products fall below the byte
    // without carrying into it, or beyond the word.
    static uint8_t gatherByte(const uint8_t* v) {
        if constexpr (Bits == 1) {
            uint64_t eight;
            std::memcpy(&eight, v, 8);
            return static_cast<uint8_t>((eight * 0x8040201008040201ull) >> 56);
        } else {
            uint32_t four;
            std::memcpy(&four, v, 4);
            return static_cast<uint8_t>((four * 0x40100401u) >> 24);
        }
    }

    uint8_t* plane(unsigned k) const { return out_ + static_cast<uintptr_t>(k) * stride_; }

    uint8_t* out_;
    uintptr_t stride_;
    uint32_t mask_;
    uint32_t word_ = 0;
};

}  // namespace inkdot
