// One-bit error-diffusion kernels not written yet answer RC_DATA.
#include "inkdot/inkdot.h"
#include "kernels/kernels.h"

namespace inkdot {

uint32_t Ed1ColourGeneral(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed1Colour1440x720(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed1ColourDoubleY(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed1ColourGeneralB(HtContext&, const HtRun&) { return RC_DATA; }
uint32_t Ed1Colour1440x720B(HtContext&, const HtRun&) { return RC_DATA; }

}  // namespace inkdot
