// The parametric RGB → CMYK separation behind the colour tables.
//
// Device RGB is taken as sRGB-like: 8-bit, gamma-encoded, 255 = white paper.
//  1. Ink demand per primary: c' = 1 − (R/255)^inputGamma, likewise m' from G
//     and y' from B (inputGamma 1 is the plain complement; larger values give
//     the mid-tones more ink, as the encoded values are lighter than the
//     reflectance they stand for).
//  2. Gray component k0 = min(c', m', y').
//  3. Black generation (gray-component replacement): K = ((k0 − blackStart) /
//     (1 − blackStart))^blackPower above blackStart, else 0. With blackPower > 1
//     black fades in with zero slope, so the neutral axis has no kink, and
//     K ≤ k0 everywhere, so the replaced gray never goes negative.
//  4. The primaries keep what black does not cover: X = (x' − K) / (1 − K).
//     Equal inputs give equal C, M and Y: the neutral axis is balanced. Where
//     K reaches 1 (only at the black corner) the quotient takes its limit
//     along the neutral axis, 1 − (1 − blackStart) / blackPower.
//  4b. Rich black: above the gray level richBlackStart the primaries climb
//     smoothly (smoothstep in the gray level) towards the share that fills
//     the ink limit under full black, (inkLimit − 1) / 3. Without the climb
//     the corner would be the only rich node, and the last grid cell of every
//     dark ramp would jump in density.
//  5. Total ink limit: when C + M + Y + K exceeds inkLimit, C, M and Y are
//     scaled down together (black is kept, it carries the shadow density).
//  6. Every amount is rounded to 0..255; a rounded sum above the limit loses
//     single units from its largest primary.
#pragma once

#include <cstdint>

namespace inkdot::tools {

struct SeparationModel {
    double inputGamma = 1.8;
    double blackStart = 0.05;   // gray level (0..1) where black begins
    double blackPower = 1.2;    // > 1: black fades in smoothly
    int inkLimitPercent = 280;  // C + M + Y + K at most this, in percent of one full ink
    double grayGamma = 1.0;     // shape of the black-only gray ramp (neutral list)
    double richBlackStart = 0.9;  // gray level (0..1) where primaries climb to rich black; 1: none
};

struct Cmyk {
    uint8_t c, m, y, k;
};

Cmyk separate(const SeparationModel& model, uint8_t r, uint8_t g, uint8_t b);

// The black amount that renders gray level v (0..255) with black ink alone.
uint8_t blackOnlyGray(const SeparationModel& model, uint8_t v);

}  // namespace inkdot::tools
