// The one-bit colour error-diffusion kernels of the ordinary case: the plain
// kernels' loop with the tables copied into local arrays once per call, and
// an optional three-plane output.
#include "kernels/ed1/ed1_colour_run.h"
#include "kernels/ed1/ed1_colour_tables.h"
#include "kernels/kernels.h"

namespace inkdot {
namespace {

// colourMode 2 prints three inks: plane 3 is still diffused, so its error
// line evolves as in a four-plane run, but its bytes are never touched.
template <class Family>
uint32_t runCached(HtContext& ctx, const HtRun& run) {
    if (ctx.colourMode == INKDOT_COLOUR_THREE_PLANES) return runColour<Family, CachedColourTables, 3>(ctx, run);
    return runColour<Family, CachedColourTables, 4>(ctx, run);
}

}  // namespace

uint32_t Ed1ColourGeneralB(HtContext& ctx, const HtRun& run) { return runCached<GeneralColourFamily>(ctx, run); }

uint32_t Ed1Colour1440x720B(HtContext& ctx, const HtRun& run) { return runCached<Colour1440x720Family>(ctx, run); }

}  // namespace inkdot
