// The AVX-512 decision stage of the colour dither kernels. The portable
// loops compare tone values and matrix values (all 0..65535) as signed 32-bit
// numbers; here they are unsigned 16-bit lanes, so a difference that may go
// below 0 and a sum that may pass 65535 are each compared with their borrow
// or carry taken into account.
#include "kernels/dither/dither_dots_avx512.h"
#include "kernels/vector_paths.h"

#ifdef INKDOT_AVX512_DITHER_DOTS

#include <immintrin.h>

#include "kernels/colour_input/table256_avx512.h"

// GCC 12's AVX-512 headers start some intrinsics from a self-initialised
// register, which -Wmaybe-uninitialized reports once they are inlined here.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace inkdot {

bool ditherDotsAvx512Runs() {
    return vectorPathsAllowed() && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("gfni");
}

namespace {

#define INKDOT_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,gfni")))

// Pixels per step: 16-bit lanes of a 512-bit register.
constexpr uint32_t kLanes = 32;

// The low (half 0) or high (half 1) 16 bits of a table of 256 32-bit values.
INKDOT_AVX512 inline Table256 halves(const uint32_t* values, int half) {
    alignas(64) uint16_t at[32];
    for (int i = 0; i < 32; ++i) at[i] = static_cast<uint16_t>(2 * i + half);
    const __m512i pick = _mm512_load_si512(at);
    Table256 table;
    for (int j = 0; j < 8; ++j)
        table.part[j] = _mm512_permutex2var_epi16(_mm512_loadu_si512(values + 32 * j), pick,
                                                  _mm512_loadu_si512(values + 32 * j + 16));
    return table;
}

// The ink words of 32 pixels: pixels 0..15 and 16..31.
struct InkWords {
    __m512i first, second;
};

// Plane k's level of each of 32 pixels in the low byte of its 16-bit lane
// (the high byte is not read by the look-ups): one byte permutation each.
struct LevelPicks {
    __m512i at[4];

    INKDOT_AVX512 LevelPicks() {
        for (unsigned k = 0; k < 4; ++k) {
            alignas(64) uint8_t bytes[64];
            for (unsigned i = 0; i < kLanes; ++i) bytes[2 * i] = bytes[2 * i + 1] = static_cast<uint8_t>(4 * i + k);
            at[k] = _mm512_load_si512(bytes);
        }
    }
    INKDOT_AVX512 __m512i operator()(const InkWords& inks, unsigned k) const {
        return _mm512_permutex2var_epi8(inks.first, at[k], inks.second);
    }
};

// t > limit - m as signed numbers: true where m passes limit (the
// difference is negative), else the unsigned compare.
INKDOT_AVX512 inline __mmask32 aboveDifference(__m512i t, __m512i limit, __m512i m, __mmask32 mAboveLimit) {
    return mAboveLimit | _mm512_cmpgt_epu16_mask(t, _mm512_sub_epi16(limit, m));
}

// The first `bytes` bytes of v (at most 16).
INKDOT_AVX512 inline void storeBytes(uint8_t* to, __m128i v, uint32_t bytes) {
    _mm_mask_storeu_epi8(to, static_cast<__mmask16>((1u << bytes) - 1), v);
}

// One-bit dots of pixels i .. i + 31 (those in `valid`): flags 0 or 1 at
// to + i, or packed at to + i / 8, the first pixel in the top bit (the bits
// of each mask byte reversed). Packed, the pixels fill whole bytes.
INKDOT_AVX512 inline void storeDots(const DotsOut& out, unsigned k, uint32_t i, __mmask32 valid, __mmask32 dots) {
    if (out.packed) {
        const __m128i reversed = _mm_gf2p8affine_epi64_epi8(_mm_cvtsi32_si128(static_cast<int>(dots)),
                                                            _mm_set1_epi64x(0x8040201008040201), 0);
        storeBytes(out.to[k] + i / 8, reversed, static_cast<uint32_t>(__builtin_popcount(valid)) / 8);
    } else {
        _mm256_mask_storeu_epi8(out.to[k] + i, valid, _mm256_maskz_mov_epi8(dots, _mm256_set1_epi8(1)));
    }
}

// Two-bit codes 0 to 3 (bit 1 where `high`, bit 0 where `low`) likewise:
// at to + i, or packed four to a byte at to + i / 4, by multiply-adds of
// neighbouring codes (c0 * 4 + c1, then pairs of those * 16 + the next).
INKDOT_AVX512 inline void storeCodes(const DotsOut& out, unsigned k, uint32_t i, __mmask32 valid, __mmask32 high,
                                     __mmask32 low) {
    const __m256i bit0 = _mm256_maskz_mov_epi8(low, _mm256_set1_epi8(1));
    const __m256i codes = _mm256_mask_add_epi8(bit0, high, bit0, _mm256_set1_epi8(2));
    if (out.packed) {
        const __m256i pairs = _mm256_maddubs_epi16(codes, _mm256_set1_epi16(0x0104));
        const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00010010));
        storeBytes(out.to[k] + i / 4, _mm256_cvtepi32_epi8(fours),
                   static_cast<uint32_t>(__builtin_popcount(valid)) / 4);
    } else {
        _mm256_mask_storeu_epi8(out.to[k] + i, valid, codes);
    }
}

}  // namespace

INKDOT_AVX512 void dither2CodesAvx512(const uint32_t* cumulative, const uint32_t* total,
                                      const uint16_t* const (&threshold)[4], const ColourChunk& chunk, uint32_t n,
                                      const DotsOut& codes) {
    const Table256 large = halves(cumulative, 0), medium = halves(cumulative, 1), totalLow = halves(total, 0);
    // Totals above 65535 pass every threshold; their high halves are looked
    // up only where the table has such a total.
    __m512i highHalves = _mm512_setzero_si512();
    for (int j = 0; j < 16; ++j) highHalves = _mm512_or_si512(highHalves, _mm512_loadu_si512(total + 16 * j));
    const bool wideTotals = _mm512_test_epi32_mask(highHalves, _mm512_set1_epi32(static_cast<int>(0xFFFF0000u))) != 0;
    const Table256 totalHigh = halves(total, 1);
    const LevelPicks level;
    for (uint32_t i = 0; i < n; i += kLanes) {
        const __mmask32 valid = n - i >= kLanes ? ~__mmask32{0} : (__mmask32{1} << (n - i)) - 1;
        const InkWords inks{_mm512_maskz_loadu_epi32(static_cast<__mmask16>(valid), chunk.inks + i),
                            _mm512_maskz_loadu_epi32(static_cast<__mmask16>(valid >> 16), chunk.inks + i + 16)};
        const __m256i white = _mm256_maskz_loadu_epi8(valid, chunk.white + i);
        const __mmask32 coloured = _mm256_testn_epi8_mask(white, white);
        for (unsigned k = 0; k < 4; ++k) {
            const __m512i amount = level(inks, k);
            const __m512i th = _mm512_maskz_loadu_epi16(valid, threshold[k] + i);
            const __mmask32 l = _mm512_cmpgt_epu16_mask(large(amount), th);
            const __mmask32 m = _mm512_cmpgt_epu16_mask(medium(amount), th);
            __mmask32 s = _mm512_cmpgt_epu16_mask(totalLow(amount), th);
            if (wideTotals) {
                const __m512i high = totalHigh(amount);
                s |= _mm512_test_epi16_mask(high, high);
            }
            // largestCode: 3 for large, 2 for medium, 1 for small alone.
            storeCodes(codes, k, i, valid, (l | m) & coloured, (l | (s & ~m)) & coloured);
        }
    }
}

INKDOT_AVX512 void dither1DotsAvx512(const uint16_t* tone, uint32_t maxT, const uint16_t* m, const ColourChunk& chunk,
                                     uint32_t n, bool plane1, const DotsOut& dots) {
    const Table256 toneOf(tone);
    const LevelPicks level;
    const __m512i limit = _mm512_set1_epi16(static_cast<int16_t>(maxT));
    for (uint32_t i = 0; i < n; i += kLanes) {
        const __mmask32 valid = n - i >= kLanes ? ~__mmask32{0} : (__mmask32{1} << (n - i)) - 1;
        const __m512i mv = _mm512_maskz_loadu_epi16(valid, m + i);
        const InkWords inks{_mm512_maskz_loadu_epi32(static_cast<__mmask16>(valid), chunk.inks + i),
                            _mm512_maskz_loadu_epi32(static_cast<__mmask16>(valid >> 16), chunk.inks + i + 16)};
        const __m256i white = _mm256_maskz_loadu_epi8(valid, chunk.white + i);
        const __mmask32 coloured = _mm256_testn_epi8_mask(white, white);
        const __mmask32 mAboveLimit = _mm512_cmpgt_epu16_mask(mv, limit);
        const __m512i t0 = toneOf(level(inks, 0)), t2 = toneOf(level(inks, 2)), t3 = toneOf(level(inks, 3));

        // Plane 3 takes the cells below its tone, plane 0 the next ones
        // (pairedThreshold), or counts from the top when the two overfill.
        const __mmask32 a = _mm512_cmpgt_epu16_mask(t3, mv);
        const __m512i sum = _mm512_add_epi16(t3, t0);
        const __mmask32 carry = _mm512_cmplt_epu16_mask(sum, t3);
        const __mmask32 overfull = carry | _mm512_cmpgt_epu16_mask(sum, limit);
        const __mmask32 afterA = ~a & (carry | _mm512_cmpgt_epu16_mask(sum, mv));
        const __mmask32 fromTop = aboveDifference(t0, limit, mv, mAboveLimit);
        const __mmask32 b = (overfull & fromTop) | (~overfull & afterA);

        storeDots(dots, 3, i, valid, a & coloured);
        storeDots(dots, 0, i, valid, b & coloured);
        storeDots(dots, 2, i, valid, aboveDifference(t2, limit, mv, mAboveLimit) & coloured);
        if (plane1) storeDots(dots, 1, i, valid, aboveDifference(toneOf(level(inks, 1)), limit, mv, mAboveLimit) & coloured);
    }
}

}  // namespace inkdot

#endif
