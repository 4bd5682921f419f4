// How the two-bit error-diffusion kernels choose a spread pattern. Unlike the
// one-bit kernels they look at the small amount only: the less small-dot ink
// a pixel has, the wider its error spreads. A pixel whose row also holds
// medium or large ink ("heavy") always takes the narrowest pattern. The
// matrix parity picks between the a and b forms; the monochrome kernels take
// the a form on even cells, the colour kernels on odd ones.
#pragma once

#include <cstdint>

#include "halftone/ht_context.h"
#include "kernels/diffusion/pattern_table.h"
#include "kernels/force_inline.h"

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

// Band of a pixel: 0 when heavy or its small amount is above t1, 1 above t2,
// 2 above t3, 3 below; tested in this order like the rules, whatever the
// order of the thresholds themselves.
inline unsigned smallBand(const SmallDotPixel& p, const SmallThresholds& t) {
    if (p.heavy || p.small > t.t1) return 0;
    if (p.small > t.t2) return 1;
    if (p.small > t.t3) return 2;
    return 3;
}

inline constexpr unsigned kSmallBands = 4;

// The rules, written on the band like the one-bit rules (pattern_choice.h),
// and the tables built from them.

// Heavy or above t1: G1; no dot: G0; then G2, G3, G4 by band, a or b form by parity.
constexpr Pattern generalRule(unsigned band, bool dot, bool aForm) {
    if (band == 0) return Pattern::G1;
    if (!dot) return Pattern::G0;
    if (band == 1) return aForm ? Pattern::G2a : Pattern::G2b;
    if (band == 2) return Pattern::G3;
    return aForm ? Pattern::G4a : Pattern::G4b;
}

// No dot comes first: H0, a or b form by parity; then H1, H2, H3 by the
// small band (the lowest two both H3).
constexpr Pattern rule1440x720(unsigned band, bool dot, bool aForm) {
    if (!dot) return aForm ? Pattern::H0a : Pattern::H0b;
    constexpr Pattern kByBand[kSmallBands] = {Pattern::H1, Pattern::H2, Pattern::H3, Pattern::H3};
    return kByBand[band];
}

// Y1 and Y2 whether a dot printed or not; below t2 no dot gives Y0, a dot
// Y3 or G3. No parity forms.
constexpr Pattern doubleYRule(unsigned band, bool dot, bool /*aForm*/) {
    if (band == 0) return Pattern::Y1;
    if (band == 1) return Pattern::Y2;
    if (!dot) return Pattern::Y0;
    if (band == 2) return Pattern::Y3;
    return Pattern::G3;
}

// Each family's choice is a pattern table: the band picks a row (smallBand,
// unless the family has its own), the dot decision and the matrix parity a
// column. The kernels spread through the table (spreadChosen), which
// branches on the band only.
template <class Family>
struct TableChoice {
    static unsigned band(const SmallDotPixel& p, const SmallThresholds& t) { return smallBand(p, t); }
    static INKDOT_FORCE_INLINE void spreadChosen(const SmallDotPixel& p, const SmallThresholds& t, int32_t* cell,
                                                 int32_t err, int32_t& carry) {
        spreadByTable<Family::kTable>(Family::band(p, t), patternColumn(p.dot, p.aForm), cell, err, carry);
    }
};

struct GeneralFamily : TableChoice<GeneralFamily> {
    static constexpr auto kTable = bandTable<kSmallBands>(generalRule);
};

// The pixels without a dot have a band of their own, so that they do not pay
// for the wider patterns of a dot.
struct Family1440x720 : TableChoice<Family1440x720> {
    static constexpr auto kTable = noDotFirstTable<kSmallBands>(rule1440x720);
    static unsigned band(const SmallDotPixel& p, const SmallThresholds& t) { return p.dot ? 1 + smallBand(p, t) : 0; }
};

struct DoubleYFamily : TableChoice<DoubleYFamily> {
    static constexpr auto kTable = bandTable<kSmallBands>(doubleYRule);
};

}  // namespace inkdot::ed2
