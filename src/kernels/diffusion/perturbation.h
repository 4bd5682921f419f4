// Matrix perturbation of the error-diffusion threshold: bits 1..7 of the
// matrix value jitter the threshold by +-20 or +-24, so that dot placement
// follows the blue-noise matrix instead of forming worms.
#pragma once

#include <array>
#include <cstdint>

namespace inkdot {

// p for q = m AND 0xFE (always even).
constexpr int32_t perturbationOf(uint32_t q) {
    if (q < 8) return 24;
    if (q <= 128) return 20;
    if (q <= 246) return -20;
    return -24;
}

// The same perturbation as a read-only table indexed by q. Odd indices never
// occur; they are filled so that any byte is a safe index.
inline constexpr std::array<int32_t, 256> kPerturbationTable = [] {
    std::array<int32_t, 256> table{};
    for (uint32_t i = 0; i < 256; ++i) table[i] = perturbationOf(i);
    return table;
}();

static_assert([] {
    for (uint32_t q = 0; q < 256; q += 2)
        if (kPerturbationTable[q] != perturbationOf(q)) return false;
    return true;
}(), "the table and the rule agree on every even index");

// p(m) for a whole matrix value: only bits 1..7 count, whatever the matrix size.
inline int32_t perturbation(uint32_t m) { return kPerturbationTable[m & 0xFE]; }

}  // namespace inkdot
