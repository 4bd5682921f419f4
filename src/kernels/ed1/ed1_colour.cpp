// The one-bit colour error-diffusion kernels that read their tables in place.
// Halftone sends ink input (inputFormat 4) and halving (scaleMode -1) here,
// and every colour run of the DoubleY class; halving reads one pixel per
// output pixel in these kernels like any other scaling.
#include "kernels/ed1/ed1_colour_run.h"
#include "kernels/ed1/ed1_colour_tables.h"
#include "kernels/kernels.h"

namespace inkdot {

uint32_t Ed1ColourGeneral(HtContext& ctx, const HtRun& run) {
    return runColour<GeneralColourFamily, DirectColourTables, 4>(ctx, run);
}

uint32_t Ed1Colour1440x720(HtContext& ctx, const HtRun& run) {
    return runColour<Colour1440x720Family, DirectColourTables, 4>(ctx, run);
}

uint32_t Ed1ColourDoubleY(HtContext& ctx, const HtRun& run) {
    return runColour<DoubleYColourFamily, DirectColourTables, 4>(ctx, run);
}

}  // namespace inkdot
