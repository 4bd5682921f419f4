// The dispatch table: rows tried top to bottom, first match wins. Read it
// against the kernel documentation row by row; adding a kernel is adding a row.
#include "halftone/dispatch.h"

#include "halftone/setting_kinds.h"
#include "kernels/kernels.h"

namespace inkdot {
namespace {

// Two-bit output with a method that has no two-bit kernel.
uint32_t NoTwoBitKernel(HtContext&, const HtRun&) { return RC_ARG; }

bool twoBit(const HtContext& c) { return isTwoBit(c.outputBits); }
bool colour(const HtContext& c) { return isColour(c.colourMode); }
bool hybrid(const HtContext& c) { return isHybridDither(c.ditherMode); }
bool matrix(const HtContext& c) { return c.method == INKDOT_METHOD_MATRIX; }
bool threshold(const HtContext& c) { return c.method == INKDOT_METHOD_THRESHOLD; }
// Two-bit diffusion exists for method 1 only.
bool diffusion(const HtContext& c) { return c.method == INKDOT_METHOD_DIFFUSION; }
// The cached-table colour kernels serve the ordinary case; ink input and
// halving fall back to their plain sisters.
bool cachedTablesFit(const HtContext& c) { return !isInkInput(c.inputFormat) && c.scaleMode != INKDOT_SCALE_HALVE; }

using Match = bool (*)(const HtContext&);
struct Row {
    Match matches;
    HtKernel kernel;
    const char* name;
};

#define ROW(condition, kernel) {[]([[maybe_unused]] const HtContext& c) { return condition; }, kernel, #kernel}

// clang-format off
constexpr Row kRows[] = {
    // Two-bit output.
    ROW(twoBit(c) && matrix(c) &&  colour(c) && isDoubleY(c),      Dither2ColourDoubleY),
    ROW(twoBit(c) && matrix(c) &&  colour(c),                      Dither2Colour),
    ROW(twoBit(c) && matrix(c) && !colour(c) && isDoubleY(c),      Dither2MonoDoubleY),
    ROW(twoBit(c) && matrix(c) && !colour(c),                      Dither2Mono),
    ROW(twoBit(c) && diffusion(c) &&  colour(c) && is1440x720(c),  Ed2Colour1440x720),
    ROW(twoBit(c) && diffusion(c) &&  colour(c) && isDoubleY(c),   Ed2ColourDoubleY),
    ROW(twoBit(c) && diffusion(c) &&  colour(c),                   Ed2ColourGeneral),
    ROW(twoBit(c) && diffusion(c) && !colour(c) && is1440x720(c),  Ed2Mono1440x720),
    ROW(twoBit(c) && diffusion(c) && !colour(c) && isDoubleY(c),   Ed2MonoDoubleY),
    ROW(twoBit(c) && diffusion(c) && !colour(c),                   Ed2MonoGeneral),
    ROW(twoBit(c),                                                 NoTwoBitKernel),
    // One-bit output.
    ROW(matrix(c) && !colour(c),                                   Dither1Mono),
    ROW(matrix(c) &&  colour(c) && hybrid(c),                      Dither1ColourHybrid),
    ROW(matrix(c) &&  colour(c),                                   Dither1Colour),
    ROW(threshold(c) && !colour(c),                                Dither1Mono),
    ROW(threshold(c) &&  colour(c),                                Threshold1Colour),
    ROW(!colour(c) && isDoubleY(c),                                Ed1MonoDoubleY),
    ROW(!colour(c) && is1440x720(c),                               Ed1Mono1440x720),
    ROW(!colour(c),                                                Ed1MonoGeneral),
    ROW(isDoubleY(c),                                              Ed1ColourDoubleY),
    ROW(is1440x720(c) &&  cachedTablesFit(c),                      Ed1Colour1440x720B),
    ROW(is1440x720(c),                                             Ed1Colour1440x720),
    ROW(cachedTablesFit(c),                                        Ed1ColourGeneralB),
    ROW(true,                                                      Ed1ColourGeneral),
};
// clang-format on

#undef ROW

}  // namespace

KernelChoice chooseKernel(const HtContext& ctx) {
    for (const Row& row : kRows) {
        if (row.matches(ctx)) return {row.kernel, row.name};
    }
    return {nullptr, nullptr};  // unreachable: the last row matches everything
}

}  // namespace inkdot
