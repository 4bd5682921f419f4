// How the one-bit error-diffusion kernels choose a spread pattern: the lighter
// the level, the wider the spread. The matrix parity (bit 0 of the matrix
// value) picks between the a and b forms; the monochrome kernels take the a
// form on even cells and the colour kernels on odd ones, so the caller says
// which parity is the a form.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/diffusion/spread_patterns.h"

namespace inkdot {

struct SpreadThresholds {
    int32_t t1, t2, t3, t4;  // falling: wider spreads below each
};

// Every family first sorts the level into a band by the thresholds, tested
// in this order whatever the order of the thresholds themselves: 0 above t1,
// 1 above t2, 2 above t3, 3 above t4 (or at it where the boundary is
// inclusive), 4 below. The rules below are written on the band, so that
// every kernel's choice comes from the very same rules: the colour kernels'
// pattern tables (pattern_table.h), the monochrome kernels' jumps on band and
// dot (spread_by_band.h).
inline constexpr unsigned kLevelBands = 5;

inline unsigned levelBand(int32_t level, const SpreadThresholds& t, bool t4Inclusive) {
    if (level > t.t1) return 0;
    if (level > t.t2) return 1;
    if (level > t.t3) return 2;
    if (t4Inclusive ? level >= t.t4 : level > t.t4) return 3;
    return 4;
}

constexpr Pattern generalRule(unsigned band, bool dot, bool aForm) {
    if (band == 0) return Pattern::G1;
    if (!dot) return Pattern::G0;
    if (band == 1) return aForm ? Pattern::G2a : Pattern::G2b;
    if (band == 2) return Pattern::G3;
    if (band == 3) return aForm ? Pattern::G4a : Pattern::G4b;
    return aForm ? Pattern::G5a : Pattern::G5b;
}

// The lowest band's boundary is always exclusive here.
constexpr Pattern rule1440x720(unsigned band, bool dot, bool aForm) {
    if (!dot) return aForm ? Pattern::H0a : Pattern::H0b;
    constexpr Pattern kByBand[kLevelBands] = {Pattern::H1, Pattern::H2, Pattern::H3, Pattern::H4, Pattern::H5};
    return kByBand[band];
}

constexpr Pattern doubleYRule(unsigned band, bool dot, bool aForm) {
    if (band == 0) return Pattern::Y1;
    if (band == 1) return Pattern::Y2;
    if (!dot) return Pattern::Y0;
    if (band == 2) return Pattern::Y3;
    if (band == 3) return Pattern::G3;
    return aForm ? Pattern::G4a : Pattern::G4b;
}

inline SpreadThresholds spreadThresholds(const HtContext& ctx) {
    return {ctx.spreadThreshold1, ctx.spreadThreshold2, ctx.spreadThreshold3, ctx.spreadThreshold4};
}

}  // namespace inkdot
