// Ordered-dither kernels not written yet answer RC_DATA.
#include "inkdot/inkdot.h"
#include "kernels/kernels.h"

namespace inkdot {

uint32_t Dither1Mono(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Dither1Colour(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Dither1ColourHybrid(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Threshold1Colour(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Dither2Mono(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Dither2MonoDoubleY(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Dither2Colour(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Dither2ColourDoubleY(HtContext&, const HtRun&) { return RC_DATA; }

}  // namespace inkdot
