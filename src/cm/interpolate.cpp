#include "cm/interpolate.h"

#include <array>
#include <cstring>

namespace inkdot {
namespace {

// Every division here has a numerator below 2^16 (at most 255 x 255) and a
// divisor from 1 to 255, so it is done exactly as a multiplication by
// floor(2^32 / d) + 1 keeping bits 32 and up: the excess over n / d is below
// n / 2^32 < 2^-16, smaller than the distance 1 / d from any fraction n / d
// to the next integer, so the truncated quotient never changes.
constexpr std::array<uint64_t, 256> kReciprocals = [] {
    std::array<uint64_t, 256> r{};
    for (uint64_t d = 1; d < 256; ++d) r[d] = (uint64_t{1} << 32) / d + 1;
    return r;
}();

inline uint32_t divide(uint32_t numerator, uint32_t divisor) {
    return static_cast<uint32_t>((numerator * kReciprocals[divisor]) >> 32);
}

// The tetrahedron: its second vertex is one step along the axis of the
// largest fraction, its third one step further along the axis of the middle
// one. Indexed by (fx >= fy) << 2 | (fy >= fz) << 1 | (fx >= fz); ties may
// go either way because the vertex they decide gets weight 0. Entries 1 and
// 6 cannot occur.
struct Tetrahedron {
    uint8_t largest;
    uint8_t middle;
};
constexpr Tetrahedron kTetrahedra[8] = {
    {2, 1},  // fz > fy > fx
    {2, 1},
    {1, 2},  // fy >= fz > fx
    {1, 0},  // fy > fx >= fz
    {2, 0},  // fz > fx >= fy
    {0, 2},  // fx >= fz > fy
    {0, 1},
    {0, 1},  // fx >= fy >= fz
};

// Four ink bytes spread into four 16-bit lanes: a node value times a weight
// is at most 255 x 255 and the four weights add up to the cell width (at
// most 255), so a whole weighted sum fits its lane.
inline uint64_t lanes(const uint8_t* node) {
    uint32_t bytes;
    std::memcpy(&bytes, node, 4);
    uint64_t t = bytes;
    t = (t | (t << 16)) & 0x0000FFFF0000FFFFull;
    return (t | (t << 8)) & 0x00FF00FF00FF00FFull;
}

template <bool kFourChannels>
void interpolateAll(const Interpolator& ip, const PixelLayout& layout, uint32_t count, const uint8_t* src,
                    uint8_t* dst) {
    const CmLut& lut = *ip.lut;
    const uint32_t channels = kFourChannels ? 4 : lut.channels;
    const uint8_t* nodes = lut.lutData;
    // Offsets of the second and third vertex, by tetrahedron.
    uint32_t second[8], third[8];
    for (int t = 0; t < 8; ++t) {
        second[t] = ip.step[kTetrahedra[t].largest];
        third[t] = second[t] + ip.step[kTetrahedra[t].middle];
    }
    const uint32_t farCorner = ip.step[0] + ip.step[1] + ip.step[2];

    for (uint32_t p = 0; p < count; ++p, src += layout.pixelBytes, dst += channels) {
        const AxisLevel& ax = ip.axis[0][src[layout.red]];
        const AxisLevel& ay = ip.axis[1][src[layout.green]];
        const AxisLevel& az = ip.axis[2][src[layout.blue]];
        // Fractions on axes 1 and 2 are rescaled to the cell width of axis 0,
        // so the four weights below always sum to dx.
        const uint32_t dx = ax.width;
        const uint32_t fx = ax.fraction;
        const uint32_t fy = divide(ay.fraction * dx, ay.width);
        const uint32_t fz = divide(az.fraction * dx, az.width);

        const uint32_t t = (fx >= fy) << 2 | (fy >= fz) << 1 | (fx >= fz);
        uint32_t high = fx > fy ? fx : fy;
        uint32_t low = fx > fy ? fy : fx;
        const uint32_t largest = high > fz ? high : fz;
        const uint32_t smallest = low < fz ? low : fz;
        const uint32_t middle = fx + fy + fz - largest - smallest;
        const uint32_t w0 = dx - largest, w1 = largest - middle, w2 = middle - smallest, w3 = smallest;

        const uint8_t* v000 = nodes + ax.nodeOffset + ay.nodeOffset + az.nodeOffset;
        const uint8_t* v2 = v000 + second[t];
        const uint8_t* v3 = v000 + third[t];
        const uint8_t* v111 = v000 + farCorner;
        if constexpr (kFourChannels) {
            const uint64_t sums = lanes(v000) * w0 + lanes(v2) * w1 + lanes(v3) * w2 + lanes(v111) * w3;
            for (uint32_t c = 0; c < 4; ++c)
                dst[c] = static_cast<uint8_t>(divide(static_cast<uint32_t>(sums >> (16 * c)) & 0xFFFF, dx));
        } else {
            for (uint32_t c = 0; c < channels; ++c) {
                const uint32_t sum = v000[c] * w0 + v2[c] * w1 + v3[c] * w2 + v111[c] * w3;
                dst[c] = static_cast<uint8_t>(divide(sum, dx));  // truncating, no rounding term
            }
        }
    }
}

}  // namespace

// Cell of v: the smallest index from 1 upward whose level is at or above v.
// The last level is 255, so the search always ends inside the row.
void prepareInterpolator(const CmLut& lut, Interpolator& out) {
    out.lut = &lut;
    out.step[2] = lut.channels;
    out.step[1] = lut.gridCount[2] * out.step[2];
    out.step[0] = lut.gridCount[1] * out.step[1];
    for (uint32_t axis = 0; axis < 3; ++axis) {
        const uint8_t* levels = lut.grid[axis];
        const uint32_t last = lut.gridCount[axis] - 1;
        uint32_t i = 1;
        for (uint32_t v = 0; v < 256; ++v) {
            while (i < last && levels[i] < v) ++i;
            out.axis[axis][v] = AxisLevel{(i - 1) * out.step[axis], static_cast<uint16_t>(v - levels[i - 1]),
                                          static_cast<uint16_t>(levels[i] - levels[i - 1])};
        }
    }
}

void interpolate(const Interpolator& ip, const PixelLayout& layout, uint32_t count, const uint8_t* src,
                 uint8_t* dst) {
    if (ip.lut->channels == 4) {
        interpolateAll<true>(ip, layout, count, src, dst);
    } else {
        interpolateAll<false>(ip, layout, count, src, dst);
    }
}

}  // namespace inkdot
