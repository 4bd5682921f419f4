// inkScale: lowering ink amounts by two percentages, A at v = 0 and B at v = 255.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot {

// With A = B = 100 the result equals v; larger percentages lower it.
uint8_t inkScale(uint8_t v, int32_t percentAt0, int32_t percentAt255);

// Whole-table ink scaling with inkParam[0] and [1]: every byte of the node
// data, all channels.
void inkScaleGrid(CmLut& lut);

}  // namespace inkdot
