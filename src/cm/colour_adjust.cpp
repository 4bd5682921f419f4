#include "cm/colour_adjust.h"

namespace inkdot {
namespace {

// Index of the component strictly above both others, or -1.
int uniqueMaximum(const int32_t v[3]) {
    for (int i = 0; i < 3; ++i) {
        if (v[i] > v[(i + 1) % 3] && v[i] > v[(i + 2) % 3]) return i;
    }
    return -1;
}

// Index of the component strictly below both others, or -1.
int uniqueMinimum(const int32_t v[3]) {
    for (int i = 0; i < 3; ++i) {
        if (v[i] < v[(i + 1) % 3] && v[i] < v[(i + 2) % 3]) return i;
    }
    return -1;
}

int32_t smallerOfOthers(const int32_t v[3], int i) {
    const int32_t a = v[(i + 1) % 3];
    const int32_t b = v[(i + 2) % 3];
    return a < b ? a : b;
}

int32_t largerOfOthers(const int32_t v[3], int i) {
    const int32_t a = v[(i + 1) % 3];
    const int32_t b = v[(i + 2) % 3];
    return a > b ? a : b;
}

}  // namespace

void adjustDominant(int32_t cmy[3], const uint16_t percent[3]) {
    const int i = uniqueMaximum(cmy);
    if (i < 0) return;
    const int32_t v = cmy[i];
    const int32_t moved = v - ((v - largerOfOthers(cmy, i)) * static_cast<int32_t>(percent[i])) / 100;
    cmy[i] = moved < 0 ? 0 : moved;
}

void adjustMinimum(int32_t cmy[3], const int16_t percent[3]) {
    const int i = uniqueMinimum(cmy);
    if (i < 0) return;
    const int32_t e = ((smallerOfOthers(cmy, i) - cmy[i]) * percent[i]) / 100;
    cmy[(i + 1) % 3] -= e;
    cmy[(i + 2) % 3] -= e;
    for (int c = 0; c < 3; ++c) {
        if (cmy[c] < 0) cmy[c] = 0;
    }
}

void adjustHue(int32_t cmy[3], const int16_t percent[3]) {
    const int i = uniqueMinimum(cmy);
    if (i < 0) return;
    const int32_t h = percent[i];
    const int32_t half = h >= 0 ? 50 : -50;  // rounds the percentage half away from zero
    const int32_t e = ((smallerOfOthers(cmy, i) - cmy[i]) * h + half) / 100;
    if (h >= 0) {
        cmy[(i + 1) % 3] -= e;  // c lowers m, m lowers y, y lowers c
    } else {
        cmy[(i + 2) % 3] += e;  // c changes y, m changes c, y changes m; e <= 0
    }
    for (int c = 0; c < 3; ++c) cmy[c] = cmy[c] < 0 ? 0 : (cmy[c] > 255 ? 255 : cmy[c]);
}

}  // namespace inkdot
