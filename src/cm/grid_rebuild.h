// Baking the colour settings into the grid: every node's own input colour
// goes through the tone curves, saturation and (in one processing mode) the
// colour adjustments, and is looked up in the grid as read.
#pragma once

#include <cstdint>

struct CmContext;

namespace inkdot {

// RC_MEM_ALLOC / RC_MEM_LOCK, or the curve builder's RC_ARG + 1 / + 2; on
// failure the grid is as before.
uint32_t rebuildGrid(CmContext* ctx);

}  // namespace inkdot
