// Error cells hold 32 times the error they carry, so spread weights in 32nds
// are written unscaled. The two families read a cell differently; both
// readings live here so the difference stays visible.
#pragma once

#include <cstdint>

namespace inkdot {

// One-bit diffusion: arithmetic shift, the floor of cell / 32.
inline int32_t readCellFloor(int32_t cell) { return cell >> 5; }

// Two-bit diffusion: signed division truncating toward zero (a cell of -33
// reads as -1, not -2): add 31 to a negative cell before the shift.
inline int32_t readCellTruncate(int32_t cell) { return (cell < 0 ? cell + 31 : cell) >> 5; }

}  // namespace inkdot
