// Tables of phase 3 that turn ink levels into matrix thresholds and error
// thresholds: dot values, tone, error-diffusion thresholds, grid cells.
#include "halftone/protocol_steps.h"

namespace inkdot {

void buildDotValueTable(int16_t dot[256], bool twoBit, int32_t inkParam0, int32_t inkParam1) {
    if (twoBit) {
        for (int k = 0; k < 256; ++k) dot[k] = 255;  // every dot counts as full ink
        return;
    }
    // A quadratic curve from inkParam0 % of 255 at level 0 to inkParam1 % at 255.
    // 64 bits: the difference of two signed 16-bit parameters times 255^2 may
    // pass 31 bits; the entry keeps its low 16 bits.
    const int64_t p1 = inkParam1;
    const int64_t d = int64_t{inkParam0} - p1;
    for (int64_t k = 0; k < 256; ++k) {
        const int64_t r = 255 - k;
        dot[k] = static_cast<int16_t>(((d * r * r + 1) / 255 + p1 * 255) / 100);  // percent of 255
    }
}

bool hasZeroDotValue(const int16_t dot[256]) {
    for (int k = 0; k < 256; ++k) {
        if (dot[k] == 0) return true;
    }
    return false;
}

void buildToneTable(uint16_t tone[256], const int16_t dot[256], uint16_t matrixCells) {
    // Tone in matrix units: cells / 256 per level step, scaled by 255 / dot value.
    const int32_t cellsPerLevel = matrixCells >> 8;
    for (int32_t i = 0; i < 256; ++i) {
        tone[i] = static_cast<uint16_t>(cellsPerLevel * i * 255 / dot[i]);
    }
    // Full level reaches above every threshold of the matrix.
    tone[255] = static_cast<uint16_t>((int32_t{matrixCells} * 255 - 255) / dot[255] + 1);
}

void composeToneWithInkCurve(uint16_t tone[512], const uint16_t inkCurve[256]) {
    // The upper half is built first, so every entry reads the plain tone table.
    for (int i = 0; i < 256; ++i) tone[256 + i] = tone[inkCurve[i]];
    for (int i = 0; i < 256; ++i) tone[i] = tone[256 + i];
}

void buildEdThresholdTable(int16_t edThreshold[256], const int16_t dot[256]) {
    int32_t entry[256];
    for (int32_t i = 1; i <= 254; ++i) entry[i] = (128 + 2 * i) / 3;  // a third of the way up from 64
    // The ends rise steeply from 22 and fall to 233, so that light and dark
    // areas start dots early.
    for (int32_t j = 1; j <= 9; ++j) {
        const int32_t a = (29 * j) / 10 + 20;
        entry[j] = a;
        entry[255 - j] = 255 - a;
    }
    for (int32_t i = 1; i <= 254; ++i) {
        // Scaled by a third of the dot value's excess over 255, then tilted
        // from +19 at level 1 to -19 at level 254 (in 128ths of 2540 - 20 (i - 1)).
        const int32_t scale = (dot[i] - 255) / 3 + 255;
        edThreshold[i] = static_cast<int16_t>(scale * entry[i] / 255 + (2540 - 20 * (i - 1)) / 128);
    }
    edThreshold[0] = 128;
    edThreshold[255] = 128;
}

void buildGridCellTable(uint8_t cells[512], const uint8_t* levels, uint32_t count) {
    // Only a level row gives every level a cell; the monochrome kernels never
    // read this table, so a monochrome instance whose black-table grid is no
    // level row keeps it empty.
    if (count > 68 || !isLevelRow(levels, count)) return;
    uint32_t j = 0;
    for (int32_t v = 0; v < 256; ++v) {
        if (levels[j] == v) {
            cells[2 * v] = static_cast<uint8_t>(j);
            cells[2 * v + 1] = 255;  // on a node: all weight on it
            ++j;
        } else {
            const int32_t upper = levels[j];
            const int32_t lower = levels[j - 1];
            cells[2 * v] = static_cast<uint8_t>(j - 1);
            cells[2 * v + 1] = static_cast<uint8_t>((upper - v) * 255 / (upper - lower));  // lower node's share
        }
    }
}

}  // namespace inkdot
