#include "report/dot_counts.h"

namespace inkdot::tools {

double dotAmount(unsigned code, unsigned bits, const DotAmounts& amounts) {
    if (bits == 1) return code != 0 ? 1.0 : 0.0;
    switch (code) {
        case 1: return amounts.small;
        case 2: return amounts.medium;
        case 3: return 1.0;
        default: return 0.0;
    }
}

double DotCounts::share(unsigned size) const {
    const uint64_t n = pixels();
    return n == 0 ? 0.0 : static_cast<double>(bySize[size]) / static_cast<double>(n);
}

double DotCounts::coverage(const DotAmounts& amounts) const {
    return share(1) * amounts.small + share(2) * amounts.medium + share(3);
}

void countDots(const uint8_t* line, uint32_t x0, uint32_t width, unsigned bits, DotCounts& into) {
    for (uint32_t x = x0; x < x0 + width; ++x) {
        const unsigned code = dotCode(line, x, bits);
        // One bit: a dot is the only size there is, counted as large.
        ++into.bySize[bits == 1 && code != 0 ? 3 : code];
    }
}

}  // namespace inkdot::tools
