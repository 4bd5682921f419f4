// Spreading by a pattern rule with a jump on the band, the dot and the
// matrix parity, each where the rule tells them apart, for pixel loops that
// keep the chain in registers (spreadAhead). The band is steady along a
// line; the dot and the parity are as good as random, but in the dark band
// most rules spread alike whatever they are, and there no jump is left.
#pragma once

#include <cstdint>

#include "kernels/diffusion/pattern_choice.h"
#include "kernels/diffusion/spread_patterns.h"
#include "kernels/diffusion/spread_row.h"
#include "kernels/force_inline.h"

namespace inkdot {

namespace detail {

template <auto kRule, unsigned kBand>
INKDOT_FORCE_INLINE void spreadInBand(bool dot, bool aForm, int32_t* cell, int32_t err, int32_t& carry,
                                      CellsAhead& ahead) {
    auto byForm = [&]<Pattern kA, Pattern kB>() INKDOT_INLINE_LAMBDA {
        if constexpr (kA == kB) spreadAhead<PatternType<kA>>(cell, err, carry, ahead);
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
template <auto kRule>
INKDOT_FORCE_INLINE void spreadByBand(unsigned band, bool dot, bool aForm, int32_t* cell, int32_t err,
                                      int32_t& carry, CellsAhead& ahead) {
    static_assert(kLevelBands == 5);
    switch (band) {
        case 0: detail::spreadInBand<kRule, 0>(dot, aForm, cell, err, carry, ahead); break;
        case 1: detail::spreadInBand<kRule, 1>(dot, aForm, cell, err, carry, ahead); break;
        case 2: detail::spreadInBand<kRule, 2>(dot, aForm, cell, err, carry, ahead); break;
        case 3: detail::spreadInBand<kRule, 3>(dot, aForm, cell, err, carry, ahead); break;
        default: detail::spreadInBand<kRule, 4>(dot, aForm, cell, err, carry, ahead); break;
    }
}

}  // namespace inkdot
