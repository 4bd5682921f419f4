// One-bit error-diffusion kernels not written yet answer RC_DATA.
#include "inkdot/inkdot.h"
#include "kernels/kernels.h"

namespace inkdot {

uint32_t Ed1MonoGeneral(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed1Mono1440x720(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed1MonoDoubleY(HtContext&, const HtRun&) { return RC_DATA; }

}  // namespace inkdot
