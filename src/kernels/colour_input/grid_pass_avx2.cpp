// The AVX2 grid pass. Each step is the portable loop's on eight 32-bit lanes:
// the same integers, so the same results (no rounding, no saturation: every
// intermediate value fits its lane).
#include "kernels/colour_input/grid_pass.h"
#include "kernels/vector_paths.h"

#ifdef INKDOT_SIMD_GRID_PASS

#include <immintrin.h>

#include <cstring>

#include "kernels/grid_node.h"

namespace inkdot {

bool gridPassAvx2Runs() { return vectorPathsAllowed() && __builtin_cpu_supports("avx2"); }

namespace {

#define INKDOT_AVX2 __attribute__((target("avx2")))

// The three bytes of eight pixels, each in its own 32-bit lane, read from
// the run's input without a byte past the eight pixels.
struct Channels {
    __m256i b[3];
};

// Shuffle control that puts byte at[d] + k of each 128-bit half into the low
// byte of 32-bit lane d (at[d] < 0: the lane stays 0).
INKDOT_AVX2 inline __m256i pick(const int (&at)[8], int k) {
    alignas(32) int8_t control[32];
    for (int d = 0; d < 8; ++d) {
        control[4 * d] = static_cast<int8_t>(at[d] < 0 ? -1 : at[d] + k);
        control[4 * d + 1] = control[4 * d + 2] = control[4 * d + 3] = -1;
    }
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(control));
}

// Bytes 0..15 of px in the low half, 8..23 in the high half: pixels 0..3 at
// bytes 0..11 of the low half, pixels 4..7 at bytes 4..15 of the high one.
INKDOT_AVX2 inline __m256i load24(const uint8_t* px) {
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(px + 8), reinterpret_cast<const __m128i*>(px));
}

// The three channels of loaded bytes, a shuffle each, by the byte offsets
// of the eight output pixels in their half.
struct Picks {
    __m256i byChannel[3];
    INKDOT_AVX2 explicit Picks(const int (&at)[8]) {
        for (int k = 0; k < 3; ++k) byChannel[k] = pick(at, k);
    }
    INKDOT_AVX2 Channels operator()(__m256i bytes) const {
        return {{_mm256_shuffle_epi8(bytes, byChannel[0]), _mm256_shuffle_epi8(bytes, byChannel[1]),
                 _mm256_shuffle_epi8(bytes, byChannel[2])}};
    }
};

// One input pixel per output pixel.
struct OnePerPixel {
    static constexpr int kAt[8] = {0, 3, 6, 9, 4, 7, 10, 13};
    Picks picks{kAt};
    INKDOT_AVX2 Channels operator()(const uint8_t* src, uint32_t i) const { return picks(load24(src + 3 * i)); }
};

// Doubling: output pixels 2j and 2j + 1 read input pixel j. i is even (a
// chunk starts at a multiple of its size), so eight output pixels read the
// twelve bytes of four input pixels, both halves holding all twelve.
struct Doubled {
    static constexpr int kAt[8] = {0, 0, 3, 3, 6, 6, 9, 9};
    Picks picks{kAt};
    INKDOT_AVX2 Channels operator()(const uint8_t* src, uint32_t i) const {
        const uint8_t* px = src + 3 * (i / 2);
        int32_t last;
        std::memcpy(&last, px + 8, 4);
        const __m128i twelve = _mm_insert_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(px)), last, 2);
        return picks(_mm256_broadcastsi128_si256(twelve));
    }
};

// Halving: output pixel j reads the pair of input pixels 2j, 2j + 1, byte by
// byte the smaller. Each 24 bytes (four pairs) loaded as above; a copy moved
// down by three bytes lines each pair's second pixel up with its first, so one
// byte minimum makes the pairs' bytes; output pixels 0, 1 come from the low
// half, 2, 3 from the high one (4..7 likewise from the next 24 bytes), and a
// lane permutation puts them in order.
struct Halved {
    __m256i pickFirst[3], pickSecond[3], order;
    INKDOT_AVX2 Halved() : order(_mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7)) {
        static constexpr int kFirst[8] = {0, 6, -1, -1, 4, 10, -1, -1};
        static constexpr int kSecond[8] = {-1, -1, 0, 6, -1, -1, 4, 10};
        for (int k = 0; k < 3; ++k) pickFirst[k] = pick(kFirst, k), pickSecond[k] = pick(kSecond, k);
    }
    INKDOT_AVX2 Channels operator()(const uint8_t* src, uint32_t i) const {
        const uint8_t* px = src + 6 * i;
        const __m256i first = load24(px), second = load24(px + 24);
        const __m256i firstMin = _mm256_min_epu8(first, _mm256_bsrli_epi128(first, 3));
        const __m256i secondMin = _mm256_min_epu8(second, _mm256_bsrli_epi128(second, 3));
        Channels c;
        for (int k = 0; k < 3; ++k)
            c.b[k] = _mm256_permutevar8x32_epi32(_mm256_or_si256(_mm256_shuffle_epi8(firstMin, pickFirst[k]),
                                                                 _mm256_shuffle_epi8(secondMin, pickSecond[k])),
                                                 order);
        return c;
    }
};

// The matrix values of eight columns from `column` on: one load where the
// eight do not wrap around the row's end.
INKDOT_AVX2 inline __m256i matrixValues(const GridPassTables& t, uint32_t column) {
    const uint32_t c = column & t.columnMask;
    if (c + 8 <= t.columnMask + 1)
        return _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(t.matrixRow + c)));
    alignas(32) uint32_t m[8];
    for (uint32_t j = 0; j < 8; ++j) m[j] = t.matrixRow[(column + j) & t.columnMask];
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(m));
}

// node(b, q): the cell entry's lower node, plus one where q reaches its
// weight, held at lastNode. The entry's two bytes are read as the low half of
// a 32-bit gather at 2b; entry 255 would read two bytes past the table, so
// its lanes are masked off and take the entry from `lastEntry`.
INKDOT_AVX2 inline __m256i node(const uint8_t* cells, __m256i b, __m256i q, __m256i lastEntry, __m256i lastNode) {
    const __m256i inTable = _mm256_xor_si256(_mm256_cmpeq_epi32(b, _mm256_set1_epi32(255)), _mm256_set1_epi32(-1));
    const __m256i entry =
        _mm256_mask_i32gather_epi32(lastEntry, reinterpret_cast<const int*>(cells), b, inTable, 2);
    const __m256i lower = _mm256_and_si256(entry, _mm256_set1_epi32(0xFF));
    const __m256i weight = _mm256_and_si256(_mm256_srli_epi32(entry, 8), _mm256_set1_epi32(0xFF));
    // lower + 1, less one where weight > q (both below 256: the signed compare is exact)
    const __m256i up = _mm256_add_epi32(_mm256_add_epi32(lower, _mm256_set1_epi32(1)), _mm256_cmpgt_epi32(weight, q));
    // The portable loop returns lastNode when lower reaches it, else
    // lower + 0 or 1, which is at most lastNode: the minimum is the same.
    return _mm256_min_epu32(up, lastNode);
}

// neighbourMask on eight lanes.
INKDOT_AVX2 inline __m256i neighbours(__m256i a, __m256i b) {
    const __m256i t = _mm256_add_epi32(_mm256_sub_epi32(_mm256_or_si256(a, _mm256_set1_epi32(static_cast<int>(kNodeFields512))), b),
                                       _mm256_set1_epi32(static_cast<int>(kNodeFieldsOne)));
    const __m256i high = _mm256_cmpeq_epi32(_mm256_and_si256(t, _mm256_set1_epi32(static_cast<int>(kNodeFieldsBits2to9))),
                                            _mm256_set1_epi32(static_cast<int>(kNodeFields512)));
    const __m256i low = _mm256_cmpeq_epi32(
        _mm256_and_si256(_mm256_and_si256(t, _mm256_srli_epi32(t, 1)), _mm256_set1_epi32(static_cast<int>(kNodeFieldsOne))),
        _mm256_setzero_si256());
    return _mm256_and_si256(high, low);
}

template <class Read>
INKDOT_AVX2 uint32_t gridPass(const Read& read, const GridPassTables& t, const uint8_t* src, uint32_t x0, uint32_t n,
                              uint32_t prevNodes, ColourChunk& out, GridPass& pass) {
    const __m256i lastEntry = _mm256_set1_epi32(t.cells[510] | t.cells[511] << 8);
    const __m256i lastNode = _mm256_set1_epi32(static_cast<int>(t.lastNode));
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(t.shift));
    const __m256i roundBit = _mm256_set1_epi32(1 << t.roundBit);
    const __m256i planes = _mm256_set1_epi32(static_cast<int>(t.smoothedPlanes));
    const __m256i two = _mm256_set1_epi32(2);
    // Lane 0 of the previous eight's nodes rotated up by one lane is the last of them.
    const __m256i rotate = _mm256_setr_epi32(7, 0, 1, 2, 3, 4, 5, 6);
    __m256i before = _mm256_set1_epi32(static_cast<int>(prevNodes));
    uint32_t i = 0;
    for (; i + 8 <= n; i += 8) {
        const Channels c = read(src, i);
        const __m256i b0 = c.b[0], b1 = c.b[1], b2 = c.b[2];
        const __m256i white =
            _mm256_cmpeq_epi32(_mm256_add_epi32(_mm256_add_epi32(b0, b1), b2), _mm256_set1_epi32(3 * 255));

        const __m256i m = matrixValues(t, x0 + i + t.column);
        const __m256i q = _mm256_and_si256(_mm256_srl_epi32(m, shift), _mm256_set1_epi32(0xFE));
        const __m256i i0 = node(t.cells, b0, q, lastEntry, lastNode);
        const __m256i i1 = node(t.cells, b1, q, lastEntry, lastNode);
        const __m256i i2 = node(t.cells, b2, q, lastEntry, lastNode);
        const __m256i entry = _mm256_and_si256(
            _mm256_add_epi32(_mm256_add_epi32(_mm256_slli_epi32(i2, 10), _mm256_slli_epi32(i1, 5)), i0),
            _mm256_set1_epi32(0x7FFF));
        const __m256i inks = _mm256_i32gather_epi32(reinterpret_cast<const int*>(t.grid), entry, 4);
        const __m256i nodes = _mm256_or_si256(
            _mm256_or_si256(_mm256_add_epi32(i0, two), _mm256_slli_epi32(_mm256_add_epi32(i1, two), 10)),
            _mm256_slli_epi32(_mm256_add_epi32(i2, two), 20));
        const __m256i rotated = _mm256_permutevar8x32_epi32(nodes, rotate);
        const __m256i previous = _mm256_blend_epi32(rotated, before, 0x01);
        before = rotated;
        const __m256i smooth = _mm256_and_si256(neighbours(nodes, previous), planes);
        const __m256i roundUp =
            _mm256_and_si256(_mm256_cmpeq_epi32(_mm256_and_si256(m, roundBit), _mm256_setzero_si256()),
                             _mm256_set1_epi32(kLowBits));

        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out.inks + i), inks);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pass.nodes + i), nodes);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pass.smooth + i), smooth);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pass.roundUp + i), roundUp);
        // The white lanes' low bytes (1 or 0) to eight bytes.
        const __m256i whiteBytes = _mm256_shuffle_epi8(
            _mm256_and_si256(white, _mm256_set1_epi32(1)),
            _mm256_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, 8, 12, -1, -1, -1, -1,
                             -1, -1, -1, -1, -1, -1, -1, -1));
        const __m128i packed = _mm_unpacklo_epi32(_mm256_castsi256_si128(whiteBytes),
                                                  _mm256_extracti128_si256(whiteBytes, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out.white + i), packed);
    }
    return i;
}

}  // namespace

INKDOT_AVX2 uint32_t gridPassAvx2(const GridPassTables& t, InputSpacing spacing, const uint8_t* src, uint32_t x0,
                                  uint32_t n, uint32_t prevNodes, ColourChunk& out, GridPass& pass) {
    switch (spacing) {
        case InputSpacing::kDoubled: return gridPass(Doubled(), t, src, x0, n, prevNodes, out, pass);
        case InputSpacing::kHalved: return gridPass(Halved(), t, src, x0, n, prevNodes, out, pass);
        default: return gridPass(OnePerPixel(), t, src, x0, n, prevNodes, out, pass);
    }
}

}  // namespace inkdot

#endif
