// The AVX-512 grid pass: the AVX2 pass's steps on sixteen 32-bit lanes, with
// two changes that AVX-512 allows. The input bytes are moved into their
// lanes by byte permutations (VBMI) from loads masked to the exact bytes of
// the sixteen pixels; and the cell table (256 two-byte entries) is held in
// registers and read by word permutations, so that the grid look-up is the
// only gather left.
#include "kernels/colour_input/grid_pass.h"
#include "kernels/vector_paths.h"

#ifdef INKDOT_SIMD_GRID_PASS

#include <immintrin.h>

#include <algorithm>

#include "kernels/colour_input/table256_avx512.h"
#include "kernels/grid_node.h"

// GCC 12's AVX-512 headers start some intrinsics from a self-initialised
// register (_mm512_undefined_epi32), which -Wmaybe-uninitialized reports
// once they are inlined here.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace inkdot {

bool gridPassAvx512Runs() {
    return vectorPathsAllowed() && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi");
}

namespace {

#define INKDOT_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi")))

constexpr uint32_t kLanes = 16;
// The low byte of every 32-bit lane, and the low byte of each of its words.
constexpr __mmask64 kLowBytes = 0x1111111111111111ull;
constexpr __mmask64 kWordLowBytes = 0x5555555555555555ull;

// The sixteen pixels' bytes: bytes 0 and 1 as the words of each 32-bit lane
// (so that one cell look-up serves both), byte 2 by itself.
struct Channels {
    __m512i pair;
    __m512i third;
};

// Lane d's number, d = 0..15.
INKDOT_AVX512 inline __m512i laneNumbers() {
    return _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Byte picks from each lane's pixel offset: bytes k and k + 1 into the low
// bytes of the lane's two words, or byte k into the lane's low byte.
struct Picks {
    __m512i pair, third;
    INKDOT_AVX512 Picks(__m512i offset, int k) {
        pair = _mm512_add_epi32(_mm512_mullo_epi32(_mm512_add_epi32(offset, _mm512_set1_epi32(k)),
                                                   _mm512_set1_epi32(0x10001)),
                                _mm512_set1_epi32(0x10000));
        third = _mm512_add_epi32(offset, _mm512_set1_epi32(k + 2));
    }
    INKDOT_AVX512 Channels operator()(__m512i bytes) const {
        return {_mm512_maskz_permutexvar_epi8(kWordLowBytes, pair, bytes),
                _mm512_maskz_permutexvar_epi8(kLowBytes, third, bytes)};
    }
    INKDOT_AVX512 Channels operator()(__m512i low, __m512i high) const {
        return {_mm512_maskz_permutex2var_epi8(kWordLowBytes, low, pair, high),
                _mm512_maskz_permutex2var_epi8(kLowBytes, low, third, high)};
    }
};

// One input pixel per output pixel: 48 bytes.
struct OnePerPixel {
    Picks picks;
    INKDOT_AVX512 OnePerPixel() : picks(_mm512_mullo_epi32(laneNumbers(), _mm512_set1_epi32(3)), 0) {}
    INKDOT_AVX512 Channels operator()(const uint8_t* src, uint32_t i) const {
        return picks(_mm512_maskz_loadu_epi8((__mmask64{1} << 48) - 1, src + 3 * i));
    }
};

// Doubling: output pixels 2j and 2j + 1 read input pixel j (i is even): 24 bytes.
struct Doubled {
    Picks picks;
    INKDOT_AVX512 Doubled() : picks(_mm512_mullo_epi32(_mm512_srli_epi32(laneNumbers(), 1), _mm512_set1_epi32(3)), 0) {}
    INKDOT_AVX512 Channels operator()(const uint8_t* src, uint32_t i) const {
        return picks(_mm512_maskz_loadu_epi8((__mmask64{1} << 24) - 1, src + 3 * (i / 2)));
    }
};

// Halving: output pixel j reads the pair 2j, 2j + 1, byte by byte the
// smaller: 96 bytes, the first and the second pixel of each pair picked apart.
struct Halved {
    Picks first, second;
    INKDOT_AVX512 Halved()
        : first(_mm512_mullo_epi32(laneNumbers(), _mm512_set1_epi32(6)), 0),
          second(_mm512_mullo_epi32(laneNumbers(), _mm512_set1_epi32(6)), 3) {}
    INKDOT_AVX512 Channels operator()(const uint8_t* src, uint32_t i) const {
        const uint8_t* px = src + 6 * i;
        const __m512i low = _mm512_loadu_si512(px);
        const __m512i high = _mm512_maskz_loadu_epi8((__mmask64{1} << 32) - 1, px + 64);
        const Channels a = first(low, high), b = second(low, high);
        return {_mm512_min_epu8(a.pair, b.pair), _mm512_min_epu8(a.third, b.third)};
    }
};

// The matrix values of sixteen columns from `column` on: one load where the
// sixteen do not wrap around the row's end.
INKDOT_AVX512 inline __m512i matrixValues(const GridPassTables& t, uint32_t column) {
    const uint32_t c = column & t.columnMask;
    if (c + kLanes <= t.columnMask + 1)
        return _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(t.matrixRow + c)));
    alignas(64) uint32_t m[kLanes];
    for (uint32_t j = 0; j < kLanes; ++j) m[j] = t.matrixRow[(column + j) & t.columnMask];
    return _mm512_load_si512(m);
}

// node(b, q) of every word: the entry's lower node, plus one where q
// reaches its weight, held at lastNode (see the AVX2 pass; every value
// is below 512, so the 16-bit words hold them, and lastNode is taken to
// at most 0xFFFF).
INKDOT_AVX512 inline __m512i node(const Table256& cells, __m512i b, __m512i q, __m512i lastNode) {
    const __m512i entry = cells(b);
    const __m512i lower = _mm512_and_si512(entry, _mm512_set1_epi16(0xFF));
    const __mmask32 down = _mm512_cmpgt_epu16_mask(_mm512_srli_epi16(entry, 8), q);
    const __m512i up = _mm512_mask_mov_epi16(_mm512_add_epi16(lower, _mm512_set1_epi16(1)), down, lower);
    return _mm512_min_epu16(up, lastNode);
}

// neighbourMask on sixteen lanes, as a lane mask.
INKDOT_AVX512 inline __mmask16 neighbours(__m512i a, __m512i b) {
    const __m512i t = _mm512_add_epi32(_mm512_sub_epi32(_mm512_or_si512(a, _mm512_set1_epi32(static_cast<int>(kNodeFields512))), b),
                                       _mm512_set1_epi32(static_cast<int>(kNodeFieldsOne)));
    const __mmask16 high = _mm512_cmpeq_epi32_mask(_mm512_and_si512(t, _mm512_set1_epi32(static_cast<int>(kNodeFieldsBits2to9))),
                                                   _mm512_set1_epi32(static_cast<int>(kNodeFields512)));
    return _mm512_mask_testn_epi32_mask(high, _mm512_and_si512(t, _mm512_srli_epi32(t, 1)),
                                        _mm512_set1_epi32(static_cast<int>(kNodeFieldsOne)));
}

// The lanes of pixels i .. i + 15 below n.
INKDOT_AVX512 inline __mmask16 valid(uint32_t i, uint32_t n) {
    return n - i >= kLanes ? __mmask16{0xFFFF} : static_cast<__mmask16>((1u << (n - i)) - 1);
}

// Whether any of n white flags is set.
INKDOT_AVX512 inline bool anyWhite(const uint8_t* white, uint32_t n) {
    __m512i any = _mm512_setzero_si512();
    for (uint32_t i = 0; i < n; i += 64) {
        const __mmask64 v = n - i >= 64 ? ~__mmask64{0} : (__mmask64{1} << (n - i)) - 1;
        any = _mm512_or_si512(any, _mm512_maskz_loadu_epi8(v, white + i));
    }
    return _mm512_test_epi8_mask(any, any) != 0;
}

// Smoothing chains run side by side, where a chunk has this many coloured
// pixels (fewer are not worth the search for the chains' starts).
constexpr uint32_t kChains = 4;
constexpr uint32_t kSplitPixels = 64;
constexpr uint32_t kSearchPixels = 32;

// The first of pixels from .. to - 1 that neighbours no earlier pixel
// (smooth 0), or `to`.
INKDOT_AVX512 inline uint32_t firstFresh(const uint32_t* smooth, uint32_t from, uint32_t to) {
    for (uint32_t j = from; j < to; j += kLanes) {
        const __mmask16 fresh = _mm512_mask_testn_epi32_mask(valid(j, to), _mm512_loadu_si512(smooth + j),
                                                             _mm512_set1_epi32(-1));
        if (fresh != 0) return j + static_cast<uint32_t>(__builtin_ctz(fresh));
    }
    return to;
}

// One step of a smoothing chain (see smoothAvx512): z after pixel j.
INKDOT_AVX512 inline __m128i chainStep(__m128i z, uint32_t j, const uint32_t* smooth, const uint32_t* either,
                                       uint32_t* own) {
    const __m128i a = _mm_ternarylogic_epi32(z, _mm_cvtsi32_si128(static_cast<int>(smooth[j])),
                                             _mm_cvtsi32_si128(static_cast<int>(either[j])), 0x6A);  // (z & S) ^ E
    z = _mm_avg_epu8(a, _mm_cvtsi32_si128(static_cast<int>(own[j])));
    own[j] = static_cast<uint32_t>(_mm_cvtsi128_si32(z));
    return z;
}

template <class Read>
INKDOT_AVX512 uint32_t gridPass(const Read& read, const GridPassTables& t, const uint8_t* src, uint32_t x0,
                                uint32_t n, ColourChunk& out, GridPass& pass) {
    const Table256 cells(t.cells);  // the cell entries (lower node, weight) as words
    const __m512i lastNode = _mm512_set1_epi16(static_cast<int16_t>(t.lastNode > 0xFFFF ? 0xFFFF : t.lastNode));
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(t.shift));
    const __m512i roundBit = _mm512_set1_epi32(1 << t.roundBit);
    const __m512i two = _mm512_set1_epi32(2);
    const __m512i lowWord = _mm512_set1_epi32(0xFFFF);
    alignas(64) uint32_t entries[kColourChunk];
    uint32_t i = 0;
    for (; i + kLanes <= n; i += kLanes) {
        const Channels c = read(src, i);
        const __mmask16 white = _mm512_cmpeq_epi32_mask(c.pair, _mm512_set1_epi32(0x00FF00FF)) &
                                _mm512_cmpeq_epi32_mask(c.third, _mm512_set1_epi32(255));

        const __m512i m = matrixValues(t, x0 + i + t.column);
        const __m512i q = _mm512_and_si512(_mm512_srl_epi32(m, shift), _mm512_set1_epi32(0xFE));
        const __m512i i01 = node(cells, c.pair, _mm512_or_si512(q, _mm512_slli_epi32(q, 16)), lastNode);
        const __m512i i0 = _mm512_and_si512(i01, lowWord);
        const __m512i i1 = _mm512_srli_epi32(i01, 16);
        const __m512i i2 = _mm512_and_si512(node(cells, c.third, q, lastNode), lowWord);
        const __m512i entry = _mm512_and_si512(
            _mm512_add_epi32(_mm512_add_epi32(_mm512_slli_epi32(i2, 10), _mm512_slli_epi32(i1, 5)), i0),
            _mm512_set1_epi32(0x7FFF));
        const __m512i nodes = _mm512_or_si512(
            _mm512_or_si512(_mm512_add_epi32(i0, two), _mm512_slli_epi32(_mm512_add_epi32(i1, two), 10)),
            _mm512_slli_epi32(_mm512_add_epi32(i2, two), 20));
        const __m512i roundUp =
            _mm512_maskz_mov_epi32(_mm512_testn_epi32_mask(m, roundBit), _mm512_set1_epi32(kLowBits));

        _mm512_storeu_si512(entries + i, entry);
        _mm512_storeu_si512(pass.nodes + i, nodes);
        _mm512_storeu_si512(pass.roundUp + i, roundUp);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out.white + i), _mm_maskz_mov_epi8(white, _mm_set1_epi8(1)));
    }
    // The grid look-ups by plain loads: a gather of sixteen waits for all of
    // them, where separate loads overlap with one another.
    for (uint32_t j = 0; j < i; ++j) out.inks[j] = t.grid[entries[j]];
    return i;
}

}  // namespace

INKDOT_AVX512 uint32_t gridPassAvx512(const GridPassTables& t, InputSpacing spacing, const uint8_t* src, uint32_t x0,
                                      uint32_t n, uint32_t, ColourChunk& out, GridPass& pass) {
    switch (spacing) {
        case InputSpacing::kDoubled: return gridPass(Doubled(), t, src, x0, n, out, pass);
        case InputSpacing::kHalved: return gridPass(Halved(), t, src, x0, n, out, pass);
        default: return gridPass(OnePerPixel(), t, src, x0, n, out, pass);
    }
}

// The smoothing as a chain through one vector register, two steps a pixel
// where the portable chain takes five. The byte mean rounding up is
// vpavgb; rounding down it is the complement of vpavgb of the complements.
// So each pixel's flip F (all ones where it rounds down, else 0) is applied
// to both operands and to the result, and the chain carries z = y ^ F of
// the smoothed levels y: the next pixel's operand is z ^ F' ^ F in its
// smoothed bytes (S) and its own levels x ^ F elsewhere, where vpavgb of
// x ^ F with itself leaves them. Per pixel then
//     z = avg((z AND S) XOR E, X)   with X = x ^ F, E = S ? F' ^ F : X,
// F' the previous coloured pixel's flip. White pixels are taken out first
// (compressed away) and the results expanded back, so that the chain has no
// branch and every pixel's neighbour is the previous coloured one.
INKDOT_AVX512 void smoothAvx512(uint32_t smoothedPlanes, const GridPass& pass, uint32_t n, ColourChunk& out,
                                uint32_t& prevInks, uint32_t& prevNodes) {
    // The coloured pixels' values: the chunk's own where no pixel is white,
    // else compressed copies (one vector's slack behind the last).
    alignas(64) uint32_t inks[kColourChunk + kLanes], nodes[kColourChunk + kLanes], roundUp[kColourChunk + kLanes];
    const uint32_t* nodesOf = pass.nodes;
    const uint32_t* roundUpOf = pass.roundUp;
    uint32_t* own = out.inks;
    uint32_t coloured = n;
    if (anyWhite(out.white, n)) {
        coloured = 0;
        for (uint32_t i = 0; i < n; i += kLanes) {
            const __m128i white = _mm_maskz_loadu_epi8(valid(i, n), out.white + i);
            const __mmask16 keep = _mm_mask_testn_epi8_mask(valid(i, n), white, white);
            _mm512_storeu_si512(inks + coloured,
                                _mm512_maskz_compress_epi32(keep, _mm512_maskz_loadu_epi32(keep, out.inks + i)));
            _mm512_storeu_si512(nodes + coloured,
                                _mm512_maskz_compress_epi32(keep, _mm512_maskz_loadu_epi32(keep, pass.nodes + i)));
            _mm512_storeu_si512(roundUp + coloured,
                                _mm512_maskz_compress_epi32(keep, _mm512_maskz_loadu_epi32(keep, pass.roundUp + i)));
            coloured += static_cast<uint32_t>(__builtin_popcount(keep));
        }
        if (coloured == 0) return;
        nodesOf = nodes;
        roundUpOf = roundUp;
        own = inks;
    }

    // Per coloured pixel S, E and X (the last in place of the levels), and the flip.
    alignas(64) uint32_t smooth[kColourChunk + kLanes], either[kColourChunk + kLanes], flip[kColourChunk + kLanes];
    const __m512i planes = _mm512_set1_epi32(static_cast<int>(smoothedPlanes));
    __m512i nodesBefore = _mm512_set1_epi32(static_cast<int>(prevNodes));
    __m512i flipBefore = _mm512_setzero_si512();  // the chain starts from prevInks itself
    for (uint32_t j = 0; j < coloured; j += kLanes) {
        const __mmask16 v = valid(j, coloured);
        const __m512i nodesNow = _mm512_maskz_loadu_epi32(v, nodesOf + j);
        const __m512i s = _mm512_maskz_mov_epi32(neighbours(nodesNow, _mm512_alignr_epi32(nodesNow, nodesBefore, 15)),
                                                 planes);
        const __m512i f = _mm512_maskz_mov_epi32(_mm512_testn_epi32_mask(_mm512_maskz_loadu_epi32(v, roundUpOf + j),
                                                                         _mm512_set1_epi32(kLowBits)),
                                                 _mm512_set1_epi32(-1));
        const __m512i x = _mm512_xor_si512(_mm512_maskz_loadu_epi32(v, own + j), f);
        const __m512i d = _mm512_xor_si512(f, _mm512_alignr_epi32(f, flipBefore, 15));
        _mm512_store_si512(smooth + j, s);
        _mm512_store_si512(either + j, _mm512_ternarylogic_epi32(s, d, x, 0xCA));  // s ? d : x
        _mm512_mask_storeu_epi32(own + j, v, x);
        _mm512_store_si512(flip + j, f);
        nodesBefore = nodesNow;
        flipBefore = f;
    }

    // The chain, the results (z) over the own levels. A pixel whose nodes
    // do not neighbour the previous one's (S = 0) starts it afresh, so from
    // such pixels near the quarters of the chunk four chains run side by
    // side, each step of one overlapping the others' (in a photograph most
    // pixels are such; in an even tone there may be none, and one chain
    // runs alone). The chains' common length goes in lockstep, the rest of
    // each after it.
    // Each start is looked for among the 32 pixels from a quarter on; where
    // there is none, the chain before runs on.
    uint32_t start[kChains + 1];
    start[0] = 0;
    start[kChains] = coloured;
    for (uint32_t q = kChains - 1; q > 0; --q) {
        const uint32_t from = q * coloured / kChains, to = std::min(from + kSearchPixels, coloured);
        const uint32_t fresh = coloured < kSplitPixels ? to : firstFresh(smooth, from, to);
        start[q] = fresh < to ? fresh : start[q + 1];
    }
    uint32_t common = coloured;
    for (uint32_t q = 0; q < kChains; ++q) common = std::min(common, start[q + 1] - start[q]);
    __m128i z[kChains] = {_mm_cvtsi32_si128(static_cast<int>(prevInks))};
    for (uint32_t t = 0; t < common; ++t)
        for (uint32_t q = 0; q < kChains; ++q) z[q] = chainStep(z[q], start[q] + t, smooth, either, own);
    for (uint32_t q = 0; q < kChains; ++q)
        for (uint32_t j = start[q] + common; j < start[q + 1]; ++j) z[q] = chainStep(z[q], j, smooth, either, own);
    prevInks = own[coloured - 1] ^ flip[coloured - 1];
    prevNodes = nodesOf[coloured - 1];

    // Unflipped, and expanded back to the coloured pixels' places.
    for (uint32_t j = 0; j < coloured; j += kLanes) {
        const __mmask16 v = valid(j, coloured);
        _mm512_mask_storeu_epi32(own + j, v,
                                 _mm512_xor_si512(_mm512_maskz_loadu_epi32(v, own + j), _mm512_load_si512(flip + j)));
    }
    if (own == out.inks) return;
    uint32_t from = 0;
    for (uint32_t i = 0; i < n; i += kLanes) {
        const __m128i white = _mm_maskz_loadu_epi8(valid(i, n), out.white + i);
        const __mmask16 keep = _mm_mask_testn_epi8_mask(valid(i, n), white, white);
        _mm512_mask_storeu_epi32(out.inks + i, keep, _mm512_maskz_expand_epi32(keep, _mm512_loadu_si512(own + from)));
        from += static_cast<uint32_t>(__builtin_popcount(keep));
    }
}

}  // namespace inkdot

#endif
