// The three colour adjustments of the grid rebuild, on cyan, magenta and
// yellow amounts (0..255, as 255 minus red, green, blue). Percentages are
// indexed by the component they apply to: 0 cyan, 1 magenta, 2 yellow.
#pragma once

#include <cstdint>

namespace inkdot {

// The unique maximum (strictly above both others) moves toward the larger of
// the other two by p percent; never below 0.
void adjustDominant(int32_t cmy[3], const uint16_t percent[3]);

// The unique minimum's gap to the next smallest, times q percent, is taken
// from both other components; negatives become 0.
void adjustMinimum(int32_t cmy[3], const int16_t percent[3]);

// The unique minimum's gap, times h percent (rounded half away from zero),
// turns the hue: h >= 0 lowers the next component in c -> m -> y -> c order,
// h < 0 changes the previous one. Components end limited to 0..255.
void adjustHue(int32_t cmy[3], const int16_t percent[3]);

}  // namespace inkdot
