#include <gtest/gtest.h>

#include <string>

#include "halftone/dispatch.h"

namespace inkdot {
namespace {

struct Config {
    uint32_t outputBits, method, colourMode, resX, resY;
    uint32_t ditherMode = 1;
    uint32_t inputFormat = 3;
    int32_t scaleMode = 0;
};

std::string kernelFor(const Config& c) {
    HtContext ctx{};
    ctx.outputBits = c.outputBits;
    ctx.method = c.method;
    ctx.colourMode = c.colourMode;
    ctx.resolutionX = c.resX;
    ctx.resolutionY = c.resY;
    ctx.ditherMode = c.ditherMode;
    ctx.inputFormat = c.colourMode ? c.inputFormat : 0;
    ctx.scaleMode = c.scaleMode;
    return chooseKernel(ctx).name;
}

TEST(Dispatch, TwoBitRows) {
    EXPECT_EQ(kernelFor({2, 3, 1, 360, 720}), "Dither2ColourDoubleY");
    EXPECT_EQ(kernelFor({2, 3, 1, 1440, 720}), "Dither2Colour");
    EXPECT_EQ(kernelFor({2, 3, 0, 360, 720}), "Dither2MonoDoubleY");
    EXPECT_EQ(kernelFor({2, 3, 0, 720, 720}), "Dither2Mono");
    EXPECT_EQ(kernelFor({2, 1, 1, 1440, 720}), "Ed2Colour1440x720");
    EXPECT_EQ(kernelFor({2, 1, 1, 720, 1440}), "Ed2ColourDoubleY");
    EXPECT_EQ(kernelFor({2, 1, 1, 720, 720}), "Ed2ColourGeneral");
    EXPECT_EQ(kernelFor({2, 1, 0, 1440, 720}), "Ed2Mono1440x720");
    EXPECT_EQ(kernelFor({2, 1, 0, 360, 720}), "Ed2MonoDoubleY");
    EXPECT_EQ(kernelFor({2, 1, 0, 720, 360}), "Ed2MonoGeneral");
    EXPECT_EQ(kernelFor({2, 0, 0, 720, 720}), "NoTwoBitKernel");
    EXPECT_EQ(kernelFor({2, 2, 1, 720, 720}), "NoTwoBitKernel");
}

TEST(Dispatch, OneBitDitherRows) {
    EXPECT_EQ(kernelFor({1, 3, 0, 360, 720}), "Dither1Mono");
    EXPECT_EQ(kernelFor({1, 3, 1, 720, 720, 0}), "Dither1ColourHybrid");
    EXPECT_EQ(kernelFor({1, 3, 1, 720, 720, 2}), "Dither1ColourHybrid");
    EXPECT_EQ(kernelFor({1, 3, 1, 720, 720, 1}), "Dither1Colour");
    EXPECT_EQ(kernelFor({1, 0, 0, 1440, 720}), "Dither1Mono");
    EXPECT_EQ(kernelFor({1, 0, 1, 1440, 720}), "Threshold1Colour");
}

TEST(Dispatch, OneBitDiffusionRows) {
    EXPECT_EQ(kernelFor({1, 1, 0, 360, 720}), "Ed1MonoDoubleY");
    EXPECT_EQ(kernelFor({1, 1, 0, 1440, 720}), "Ed1Mono1440x720");
    EXPECT_EQ(kernelFor({1, 1, 0, 720, 720}), "Ed1MonoGeneral");
    EXPECT_EQ(kernelFor({1, 1, 1, 360, 720}), "Ed1ColourDoubleY");
    EXPECT_EQ(kernelFor({1, 1, 1, 1440, 720}), "Ed1Colour1440x720B");
    EXPECT_EQ(kernelFor({1, 1, 1, 1440, 720, 1, 4}), "Ed1Colour1440x720");
    EXPECT_EQ(kernelFor({1, 1, 1, 1440, 720, 1, 3, -1}), "Ed1Colour1440x720");
    EXPECT_EQ(kernelFor({1, 1, 1, 720, 360}), "Ed1ColourGeneralB");
    EXPECT_EQ(kernelFor({1, 1, 1, 720, 360, 1, 4}), "Ed1ColourGeneral");
    EXPECT_EQ(kernelFor({1, 1, 1, 720, 720, 1, 3, -1}), "Ed1ColourGeneral");
    // method 2 is error diffusion, routed like method 1.
    EXPECT_EQ(kernelFor({1, 2, 1, 1440, 720}), "Ed1Colour1440x720B");
    EXPECT_EQ(kernelFor({1, 2, 0, 720, 720}), "Ed1MonoGeneral");
}

}  // namespace
}  // namespace inkdot
