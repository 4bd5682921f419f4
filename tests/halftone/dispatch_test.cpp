#include <gtest/gtest.h>

#include <string>

#include "halftone/dispatch.h"

namespace inkdot {
namespace {

// The kernel every settings row leads to; method 2 is error diffusion,
// routed like method 1.
TEST(Dispatch, KernelByRow) {
    struct Row {
        uint32_t outputBits, method, colourMode, resX, resY, ditherMode, inputFormat;
        int32_t scaleMode;
        const char* kernel;
    };
    const Row rows[] = {
        {2, 3, 1, 360, 720, 1, 3, 0, "Dither2ColourDoubleY"},  {2, 3, 1, 1440, 720, 1, 3, 0, "Dither2Colour"},
        {2, 3, 0, 360, 720, 1, 0, 0, "Dither2MonoDoubleY"},    {2, 3, 0, 720, 720, 1, 0, 0, "Dither2Mono"},
        {2, 1, 1, 1440, 720, 1, 3, 0, "Ed2Colour1440x720"},    {2, 1, 1, 720, 1440, 1, 3, 0, "Ed2ColourDoubleY"},
        {2, 1, 1, 720, 720, 1, 3, 0, "Ed2ColourGeneral"},      {2, 1, 0, 1440, 720, 1, 0, 0, "Ed2Mono1440x720"},
        {2, 1, 0, 360, 720, 1, 0, 0, "Ed2MonoDoubleY"},        {2, 1, 0, 720, 360, 1, 0, 0, "Ed2MonoGeneral"},
        {2, 0, 0, 720, 720, 1, 0, 0, "NoTwoBitKernel"},        {2, 2, 1, 720, 720, 1, 3, 0, "NoTwoBitKernel"},
        {1, 3, 0, 360, 720, 1, 0, 0, "Dither1Mono"},           {1, 3, 1, 720, 720, 0, 3, 0, "Dither1ColourHybrid"},
        {1, 3, 1, 720, 720, 2, 3, 0, "Dither1ColourHybrid"},   {1, 3, 1, 720, 720, 1, 3, 0, "Dither1Colour"},
        {1, 0, 0, 1440, 720, 1, 0, 0, "Dither1Mono"},          {1, 0, 1, 1440, 720, 1, 3, 0, "Threshold1Colour"},
        {1, 1, 0, 360, 720, 1, 0, 0, "Ed1MonoDoubleY"},        {1, 1, 0, 1440, 720, 1, 0, 0, "Ed1Mono1440x720"},
        {1, 1, 0, 720, 720, 1, 0, 0, "Ed1MonoGeneral"},        {1, 1, 1, 360, 720, 1, 3, 0, "Ed1ColourDoubleY"},
        {1, 1, 1, 1440, 720, 1, 3, 0, "Ed1Colour1440x720B"},   {1, 1, 1, 1440, 720, 1, 4, 0, "Ed1Colour1440x720"},
        {1, 1, 1, 1440, 720, 1, 3, -1, "Ed1Colour1440x720"},   {1, 1, 1, 720, 360, 1, 3, 0, "Ed1ColourGeneralB"},
        {1, 1, 1, 720, 360, 1, 4, 0, "Ed1ColourGeneral"},      {1, 1, 1, 720, 720, 1, 3, -1, "Ed1ColourGeneral"},
        {1, 2, 1, 1440, 720, 1, 3, 0, "Ed1Colour1440x720B"},   {1, 2, 0, 720, 720, 1, 0, 0, "Ed1MonoGeneral"},
    };
    for (const Row& r : rows) {
        HtContext ctx{};
        ctx.outputBits = r.outputBits;
        ctx.method = r.method;
        ctx.colourMode = r.colourMode;
        ctx.resolutionX = r.resX;
        ctx.resolutionY = r.resY;
        ctx.ditherMode = r.ditherMode;
        ctx.inputFormat = r.inputFormat;
        ctx.scaleMode = r.scaleMode;
        EXPECT_EQ(std::string(chooseKernel(ctx).name), r.kernel) << r.outputBits << " bits, method " << r.method
            << ", colour " << r.colourMode << ", " << r.resX << "x" << r.resY;
    }
}

}  // namespace
}  // namespace inkdot
