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

struct GeneralFamily {
    static Pattern choose(const SmallDotPixel& p, const SmallThresholds& t) {
        if (p.heavy || p.small > t.t1) return Pattern::G1;
        if (!p.dot) return Pattern::G0;
        if (p.small > t.t2) return p.aForm ? Pattern::G2a : Pattern::G2b;
        if (p.small > t.t3) return Pattern::G3;
        return p.aForm ? Pattern::G4a : Pattern::G4b;
    }
};

struct Family1440x720 {
    static Pattern choose(const SmallDotPixel& p, const SmallThresholds& t) {
        if (!p.dot) return p.aForm ? Pattern::H0a : Pattern::H0b;
        if (p.heavy || p.small > t.t1) return Pattern::H1;
        if (p.small > t.t2) return Pattern::H2;
        return Pattern::H3;
    }
};

struct DoubleYFamily {
    static Pattern choose(const SmallDotPixel& p, const SmallThresholds& t) {
        if (p.heavy || p.small > t.t1) return Pattern::Y1;
        if (p.small > t.t2) return Pattern::Y2;
        if (!p.dot) return Pattern::Y0;
        if (p.small > t.t3) return Pattern::Y3;
        return Pattern::G3;
    }
};

}  // namespace inkdot::ed2
