// The level shift of the two-bit monochrome kernels: a matrix value modulo
// the level spread W of the padded ink curve, once per pixel.
//
// A division per pixel costs more than the rest of the pixel together, and W
// is fixed for the whole call, so the quotient comes from a multiplication by
// R = ceil(2^32 / W) instead: for a 16-bit matrix value m and W <= 65535,
// (m * R) >> 32 is exactly m / W (the excess of R over 2^32 / W adds less
// than m * W / (W * 2^32) < 2^-16 <= 1 / W to the quotient, too little to
// reach the next integer).
#pragma once

#include <cstdint>

namespace inkdot {

class LevelShift {
public:
    // spread >= 1; the callers hold a stray W of 0 at 1.
    explicit LevelShift(uint32_t spread)
        : spread_(spread), reciprocal_(((uint64_t{1} << 32) + spread - 1) / spread) {}

    // m modulo W, for a matrix value m (16 bits).
    uint32_t operator()(uint32_t m) const {
        const uint32_t quotient = static_cast<uint32_t>((uint64_t{m} * reciprocal_) >> 32);
        return m - quotient * spread_;
    }
    uint32_t spread() const { return spread_; }

private:
    uint32_t spread_;
    uint64_t reciprocal_;
};

}  // namespace inkdot
