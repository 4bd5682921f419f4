// The two-bit dot code of the largest dot size whose test holds: large 3,
// medium 2, small 1, none 0.
//
// The kernels test the sizes against matrix values, which are as good as
// random from pixel to pixel, so the code is put together from the three
// test bits instead of a chain of tests (GCC makes jumps even of a max of
// selects): under OR, large's 3 absorbs the rest, medium's 2 stands unless
// large holds, and the small bit counts only without medium.
#pragma once

#include <cstdint>

namespace inkdot {

inline uint32_t largestCode(bool large, bool medium, bool small) {
    return (3u * large) | (2u * medium) | static_cast<uint32_t>(small & !medium);
}

}  // namespace inkdot
