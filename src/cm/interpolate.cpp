#include "cm/interpolate.h"

namespace inkdot {

// Cell of v: the smallest index from 1 upward whose level is at or above v.
// The last level is 255, so the search always ends inside the row.
void prepareInterpolator(const CmLut& lut, Interpolator& out) {
    out.lut = &lut;
    for (uint32_t axis = 0; axis < 3; ++axis) {
        const uint8_t* levels = lut.grid[axis];
        const uint32_t last = lut.gridCount[axis] - 1;
        uint32_t i = 1;
        for (uint32_t v = 0; v < 256; ++v) {
            while (i < last && levels[i] < v) ++i;
            out.cell[axis][v] = static_cast<uint8_t>(i);
        }
    }
}

void interpolate(const Interpolator& ip, const PixelLayout& layout, uint32_t count, const uint8_t* src,
                 uint8_t* dst) {
    const CmLut& lut = *ip.lut;
    const uint32_t channels = lut.channels;
    const uint32_t n1 = lut.gridCount[1];
    const uint32_t n2 = lut.gridCount[2];
    // Node offsets in bytes of one step along each axis.
    const uint32_t step2 = channels;
    const uint32_t step1 = n2 * channels;
    const uint32_t step0 = n1 * n2 * channels;

    for (uint32_t p = 0; p < count; ++p, src += layout.pixelBytes, dst += channels) {
        const uint32_t x = src[layout.red];
        const uint32_t y = src[layout.green];
        const uint32_t z = src[layout.blue];
        const uint32_t i = ip.cell[0][x];
        const uint32_t j = ip.cell[1][y];
        const uint32_t k = ip.cell[2][z];
        const uint32_t x0 = lut.grid[0][i - 1];
        const uint32_t y0 = lut.grid[1][j - 1];
        const uint32_t z0 = lut.grid[2][k - 1];
        const uint32_t dx = lut.grid[0][i] - x0;
        const uint32_t dy = lut.grid[1][j] - y0;
        const uint32_t dz = lut.grid[2][k] - z0;
        // Fractions on axes 1 and 2 are rescaled to the cell width of axis 0,
        // so the four weights below always sum to dx.
        const uint32_t fx = x - x0;
        const uint32_t fy = ((y - y0) * dx) / dy;
        const uint32_t fz = ((z - z0) * dx) / dz;

        const uint8_t* v000 = lut.lutData + (i - 1) * step0 + (j - 1) * step1 + (k - 1) * step2;
        const uint8_t* v111 = v000 + step0 + step1 + step2;
        const uint8_t* second;
        const uint8_t* third;
        uint32_t w0, w1, w2, w3;  // weights of V000, second, third, V111
        if (fx >= fy && fy >= fz) {
            second = v000 + step0;          third = v000 + step0 + step1;
            w0 = dx - fx; w1 = fx - fy; w2 = fy - fz; w3 = fz;
        } else if (fx >= fz && fz > fy) {
            second = v000 + step0;          third = v000 + step0 + step2;
            w0 = dx - fx; w1 = fx - fz; w2 = fz - fy; w3 = fy;
        } else if (fz > fx && fx >= fy) {
            second = v000 + step2;          third = v000 + step0 + step2;
            w0 = dx - fz; w1 = fz - fx; w2 = fx - fy; w3 = fy;
        } else if (fy > fx && fx >= fz) {
            second = v000 + step1;          third = v000 + step0 + step1;
            w0 = dx - fy; w1 = fy - fx; w2 = fx - fz; w3 = fz;
        } else if (fy >= fz && fz > fx) {
            second = v000 + step1;          third = v000 + step1 + step2;
            w0 = dx - fy; w1 = fy - fz; w2 = fz - fx; w3 = fx;
        } else {  // fz > fy > fx
            second = v000 + step2;          third = v000 + step1 + step2;
            w0 = dx - fz; w1 = fz - fy; w2 = fy - fx; w3 = fx;
        }
        for (uint32_t c = 0; c < channels; ++c) {
            const uint32_t sum = v000[c] * w0 + second[c] * w1 + third[c] * w2 + v111[c] * w3;
            dst[c] = static_cast<uint8_t>(sum / dx);  // truncating, no rounding term
        }
    }
}

}  // namespace inkdot
