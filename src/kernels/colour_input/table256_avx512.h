// A 256-entry table of 16-bit values held in eight AVX-512 registers, read
// by the low byte of each 16-bit word: a two-register word permutation
// covers 64 entries, and bits 6 and 7 of the byte choose among the four.
// The colour input's cell table and the dither decisions' tone tables are
// read this way, 32 look-ups in a few instructions and no memory access.
//
// Only for translation units that compile their callers for AVX-512 BW:
// everything here has internal linkage, so each such unit has its own copy
// and no caller elsewhere can be linked to it.
#pragma once

#include <immintrin.h>

namespace inkdot {
namespace {

struct Table256 {
    __m512i part[8];

    // From 256 16-bit values (512 bytes).
    __attribute__((target("avx512f,avx512bw"))) explicit Table256(const void* values) {
        for (int j = 0; j < 8; ++j) part[j] = _mm512_loadu_si512(static_cast<const char*>(values) + 64 * j);
    }
    __attribute__((target("avx512f,avx512bw"))) Table256() = default;

    // Entry (byte 0 of the word) for each word of index; byte 1 is not read.
    __attribute__((target("avx512f,avx512bw"))) __m512i operator()(__m512i index) const {
        const __mmask32 bit6 = _mm512_test_epi16_mask(index, _mm512_set1_epi16(0x40));
        const __mmask32 bit7 = _mm512_test_epi16_mask(index, _mm512_set1_epi16(0x80));
        const __m512i low = _mm512_mask_mov_epi16(_mm512_permutex2var_epi16(part[0], index, part[1]), bit6,
                                                  _mm512_permutex2var_epi16(part[2], index, part[3]));
        const __m512i high = _mm512_mask_mov_epi16(_mm512_permutex2var_epi16(part[4], index, part[5]), bit6,
                                                   _mm512_permutex2var_epi16(part[6], index, part[7]));
        return _mm512_mask_mov_epi16(low, bit7, high);
    }
};

}  // namespace
}  // namespace inkdot
