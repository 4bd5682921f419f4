// Which colour planes still diffuse. A plane that has had no ink in its last
// five coloured pixels stops diffusing until ink comes back: the error it
// still holds would otherwise print stray dots into a paper-white stretch.
#pragma once

#include <cstdint>

namespace inkdot {

class ActivityHistory {
public:
    // Shifts in this pixel (bit 4 = ink now); true while any of the last five
    // pixels had ink. Starting full, a plane without ink still diffuses the
    // first four pixels of a run.
    bool step(int32_t level) {
        bits_ = (bits_ >> 1) | (level != 0 ? 16u : 0u);
        return bits_ != 0;
    }

private:
    uint32_t bits_ = 31;  // five bits, all set
};

}  // namespace inkdot
