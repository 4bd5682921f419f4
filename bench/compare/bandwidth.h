// The bandwidth floor of a task: reading its input once and writing its
// output once, as plain copies of the same byte counts. No halftoning or
// colour conversion can be faster than this on the same machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "timing.h"

namespace inkdot::compare {

inline double bandwidthSeconds(size_t inBytes, size_t outBytes, unsigned reps) {
    std::vector<uint8_t> in(inBytes, 77), sink(inBytes), outSource(outBytes, 33), out(outBytes);
    return medianSeconds(reps, [&] {
        std::memcpy(sink.data(), in.data(), inBytes);
        std::memcpy(out.data(), outSource.data(), outBytes);
        // Keep the copies: the compiler may not drop stores that are read later.
        volatile uint8_t keep = sink[inBytes / 2] ^ out[outBytes / 2];
        (void)keep;
    });
}

}  // namespace inkdot::compare
