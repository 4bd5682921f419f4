// Spreading by a pattern rule for pixel loops that keep the chain in
// registers (spreadAhead): a jump on the band (steady along a line), then on
// the dot where the rule tells dots apart, then the a or b form by the
// matrix parity, each where the rule tells them apart. In the dark band most
// rules spread alike whatever the dot and the parity, and there no choice is
// left at all.
#pragma once

#include <cstdint>

#include "kernels/diffusion/pattern_choice.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/diffusion/spread_row.h"
#include "kernels/force_inline.h"

namespace inkdot {

// How the a or b form is picked. The parity of a real matrix is as good as
// random, so a jump on it mispredicts about every other pixel; spreading
// both forms masked by it costs the taps of both. Measured on whole pages:
// the monochrome chain runs faster with the jump, the three chains of the
// colour planes with the masked forms.
enum class FormChoice { Jump, Masked };

namespace detail {

template <auto kRule, FormChoice kForms, unsigned kBand>
INKDOT_FORCE_INLINE void spreadInBand(bool dot, bool aForm, int32_t* cell, int32_t err, int32_t& carry,
                                      CellsAhead& ahead) {
    auto byForm = [&]<Pattern kA, Pattern kB>() INKDOT_INLINE_LAMBDA {
        if constexpr (kA == kB) spreadAhead<PatternType<kA>>(cell, err, carry, ahead);
        else if constexpr (kForms == FormChoice::Masked)
            spreadRow<PatternRow{{kA, kB, kA, kB}}>(aForm ? 0 : 1, cell, err, carry, &ahead);
        else if (aForm) spreadAhead<PatternType<kA>>(cell, err, carry, ahead);
        else spreadAhead<PatternType<kB>>(cell, err, carry, ahead);
    };
    constexpr Pattern kDotA = kRule(kBand, true, true), kDotB = kRule(kBand, true, false);
    constexpr Pattern kNoDotA = kRule(kBand, false, true), kNoDotB = kRule(kBand, false, false);
    if constexpr (kDotA == kNoDotA && kDotB == kNoDotB) byForm.template operator()<kDotA, kDotB>();
    else if (dot) byForm.template operator()<kDotA, kDotB>();
    else byForm.template operator()<kNoDotA, kNoDotB>();
}

}  // namespace detail

// Spreads err by kRule(band, dot, aForm), band < kLevelBands.
template <auto kRule, FormChoice kForms>
INKDOT_FORCE_INLINE void spreadByBand(unsigned band, bool dot, bool aForm, int32_t* cell, int32_t err,
                                      int32_t& carry, CellsAhead& ahead) {
    static_assert(kLevelBands == 5);
    switch (band) {
        case 0: detail::spreadInBand<kRule, kForms, 0>(dot, aForm, cell, err, carry, ahead); break;
        case 1: detail::spreadInBand<kRule, kForms, 1>(dot, aForm, cell, err, carry, ahead); break;
        case 2: detail::spreadInBand<kRule, kForms, 2>(dot, aForm, cell, err, carry, ahead); break;
        case 3: detail::spreadInBand<kRule, kForms, 3>(dot, aForm, cell, err, carry, ahead); break;
        default: detail::spreadInBand<kRule, kForms, 4>(dot, aForm, cell, err, carry, ahead); break;
    }
}

}  // namespace inkdot
