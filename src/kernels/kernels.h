// The twenty-two halftone kernels, named by method, output depth, colour mode
// and resolution class. Halftone reaches them through the dispatch table.
#pragma once

#include <cstdint>

#include "halftone/kernel.h"

namespace inkdot {

// One-bit ordered dither and fixed threshold (kernels/dither/).
uint32_t Dither1Mono(HtContext& ctx, const HtRun& run);
uint32_t Dither1Colour(HtContext& ctx, const HtRun& run);
uint32_t Dither1ColourHybrid(HtContext& ctx, const HtRun& run);
uint32_t Threshold1Colour(HtContext& ctx, const HtRun& run);

// Two-bit ordered dither with dot-size split (kernels/dither/).
uint32_t Dither2Mono(HtContext& ctx, const HtRun& run);
uint32_t Dither2MonoDoubleY(HtContext& ctx, const HtRun& run);
uint32_t Dither2Colour(HtContext& ctx, const HtRun& run);
uint32_t Dither2ColourDoubleY(HtContext& ctx, const HtRun& run);

// One-bit error diffusion (kernels/ed1/).
uint32_t Ed1MonoGeneral(HtContext& ctx, const HtRun& run);
uint32_t Ed1Mono1440x720(HtContext& ctx, const HtRun& run);
uint32_t Ed1MonoDoubleY(HtContext& ctx, const HtRun& run);
uint32_t Ed1ColourGeneral(HtContext& ctx, const HtRun& run);
uint32_t Ed1Colour1440x720(HtContext& ctx, const HtRun& run);
uint32_t Ed1ColourDoubleY(HtContext& ctx, const HtRun& run);
uint32_t Ed1ColourGeneralB(HtContext& ctx, const HtRun& run);
uint32_t Ed1Colour1440x720B(HtContext& ctx, const HtRun& run);

// Two-bit error diffusion (kernels/ed2/).
uint32_t Ed2MonoGeneral(HtContext& ctx, const HtRun& run);
uint32_t Ed2Mono1440x720(HtContext& ctx, const HtRun& run);
uint32_t Ed2MonoDoubleY(HtContext& ctx, const HtRun& run);
uint32_t Ed2ColourGeneral(HtContext& ctx, const HtRun& run);
uint32_t Ed2Colour1440x720(HtContext& ctx, const HtRun& run);
uint32_t Ed2ColourDoubleY(HtContext& ctx, const HtRun& run);

}  // namespace inkdot
