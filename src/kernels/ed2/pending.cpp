// Two-bit error-diffusion kernels not written yet answer RC_DATA.
#include "inkdot/inkdot.h"
#include "kernels/kernels.h"

namespace inkdot {

uint32_t Ed2MonoGeneral(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed2Mono1440x720(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed2MonoDoubleY(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed2ColourGeneral(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed2Colour1440x720(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed2ColourDoubleY(HtContext&, const HtRun&) { return RC_DATA; }

}  // namespace inkdot
