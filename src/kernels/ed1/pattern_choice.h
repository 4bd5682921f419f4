// How the one-bit error-diffusion kernels choose a spread pattern: the lighter
// the level, the wider the spread. The matrix parity (bit 0 of the matrix
// value) picks between the a and b forms; the monochrome kernels take the a
// form on even cells and the colour kernels on odd ones, so the caller says
// which parity is the a form.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/ed1/spread_patterns.h"

namespace inkdot {

struct SpreadThresholds {
    int32_t t1, t2, t3, t4;  // falling: wider spreads below each
};

struct PixelClass {
    int32_t level;
    bool dot;
    bool aForm;        // the matrix parity that selects the a forms
    bool t4Inclusive;  // the lowest band's boundary test is >= rather than >
};

inline bool aboveT4(const PixelClass& p, const SpreadThresholds& t) {
    return p.t4Inclusive ? p.level >= t.t4 : p.level > t.t4;
}

inline Pattern chooseGeneral(const PixelClass& p, const SpreadThresholds& t) {
    if (p.level > t.t1) return Pattern::G1;
    if (!p.dot) return Pattern::G0;
    if (p.level > t.t2) return p.aForm ? Pattern::G2a : Pattern::G2b;
    if (p.level > t.t3) return Pattern::G3;
    if (aboveT4(p, t)) return p.aForm ? Pattern::G4a : Pattern::G4b;
    return p.aForm ? Pattern::G5a : Pattern::G5b;
}

inline Pattern choose1440x720(const PixelClass& p, const SpreadThresholds& t) {
    if (!p.dot) return p.aForm ? Pattern::H0a : Pattern::H0b;
    if (p.level > t.t1) return Pattern::H1;
    if (p.level > t.t2) return Pattern::H2;
    if (p.level > t.t3) return Pattern::H3;
    if (p.level > t.t4) return Pattern::H4;
    return Pattern::H5;
}

inline Pattern chooseDoubleY(const PixelClass& p, const SpreadThresholds& t) {
    if (p.level > t.t1) return Pattern::Y1;
    if (p.level > t.t2) return Pattern::Y2;
    if (!p.dot) return Pattern::Y0;
    if (p.level > t.t3) return Pattern::Y3;
    if (aboveT4(p, t)) return Pattern::G3;
    return p.aForm ? Pattern::G4a : Pattern::G4b;
}

inline SpreadThresholds spreadThresholds(const HtContext& ctx) {
    return {ctx.spreadThreshold1, ctx.spreadThreshold2, ctx.spreadThreshold3, ctx.spreadThreshold4};
}

}  // namespace inkdot
