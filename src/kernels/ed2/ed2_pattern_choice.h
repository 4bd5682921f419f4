// How the two-bit error-diffusion kernels choose a spread pattern. Unlike the
// one-bit kernels they look at the small amount only: the less small-dot ink
// a pixel has, the wider its error spreads. A pixel whose row also holds
// medium or large ink ("heavy") always takes the narrowest pattern. The
// matrix parity picks between the a and b forms; the monochrome kernels take
// the a form on even cells, the colour kernels on odd ones.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/ed1/spread_patterns.h"

namespace inkdot::ed2 {

// spreadThreshold1..3, falling; the two-bit kernels never read the fourth.
struct SmallThresholds {
    int32_t t1, t2, t3;
};

inline SmallThresholds smallThresholds(const HtContext& ctx) {
    return {ctx.spreadThreshold1, ctx.spreadThreshold2, ctx.spreadThreshold3};
}

struct SmallDotPixel {
    bool heavy;     // the row has medium or large ink
    int32_t small;  // the row's small amount
    bool dot;       // a dot of any size was printed
    bool aForm;     // the matrix parity selects the a forms
};

// Each family also applies its own patterns: a switch over a handful of
// cases that inlines into the pixel loop, instead of the call through the
// switch over every pattern.
struct GeneralFamily {
    static void spread(Pattern pattern, int32_t* cell, int32_t err, int32_t& carry) {
        using namespace patterns;
        switch (pattern) {
            case Pattern::G0: inkdot::spread<G0>(cell, err, carry); return;
            case Pattern::G1: inkdot::spread<G1>(cell, err, carry); return;
            case Pattern::G2a: inkdot::spread<G2a>(cell, err, carry); return;
            case Pattern::G2b: inkdot::spread<G2b>(cell, err, carry); return;
            case Pattern::G3: inkdot::spread<G3>(cell, err, carry); return;
            case Pattern::G4a: inkdot::spread<G4a>(cell, err, carry); return;
            default: inkdot::spread<G4b>(cell, err, carry); return;
        }
    }
    static Pattern choose(const SmallDotPixel& p, const SmallThresholds& t) {
        if (p.heavy || p.small > t.t1) return Pattern::G1;
        if (!p.dot) return Pattern::G0;
        if (p.small > t.t2) return p.aForm ? Pattern::G2a : Pattern::G2b;
        if (p.small > t.t3) return Pattern::G3;
        return p.aForm ? Pattern::G4a : Pattern::G4b;
    }
};

struct Family1440x720 {
    static void spread(Pattern pattern, int32_t* cell, int32_t err, int32_t& carry) {
        using namespace patterns;
        switch (pattern) {
            case Pattern::H0a: inkdot::spread<H0a>(cell, err, carry); return;
            case Pattern::H0b: inkdot::spread<H0b>(cell, err, carry); return;
            case Pattern::H1: inkdot::spread<H1>(cell, err, carry); return;
            case Pattern::H2: inkdot::spread<H2>(cell, err, carry); return;
            default: inkdot::spread<H3>(cell, err, carry); return;
        }
    }
    static Pattern choose(const SmallDotPixel& p, const SmallThresholds& t) {
        if (!p.dot) return p.aForm ? Pattern::H0a : Pattern::H0b;
        if (p.heavy || p.small > t.t1) return Pattern::H1;
        if (p.small > t.t2) return Pattern::H2;
        return Pattern::H3;
    }
};

struct DoubleYFamily {
    static void spread(Pattern pattern, int32_t* cell, int32_t err, int32_t& carry) {
        using namespace patterns;
        switch (pattern) {
            case Pattern::Y0: inkdot::spread<Y0>(cell, err, carry); return;
            case Pattern::Y1: inkdot::spread<Y1>(cell, err, carry); return;
            case Pattern::Y2: inkdot::spread<Y2>(cell, err, carry); return;
            case Pattern::Y3: inkdot::spread<Y3>(cell, err, carry); return;
            default: inkdot::spread<G3>(cell, err, carry); return;
        }
    }
    static Pattern choose(const SmallDotPixel& p, const SmallThresholds& t) {
        if (p.heavy || p.small > t.t1) return Pattern::Y1;
        if (p.small > t.t2) return Pattern::Y2;
        if (!p.dot) return Pattern::Y0;
        if (p.small > t.t3) return Pattern::Y3;
        return Pattern::G3;
    }
};

}  // namespace inkdot::ed2
