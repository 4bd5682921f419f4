// Flat patches printed through the real engine in every setting, where the
// answer is known. (The report command's page is checked in a browser by
// scripts/test-report-browser.sh.)
#include <gtest/gtest.h>

#include "report/printed_patch.h"
#include "report/report_data.h"

namespace inkdot::tools {
namespace {

double coverage(const PrintedPatch& patch, unsigned plane) { return countPlane(patch, plane).coverage({}); }

// Paper white takes no ink, darker grays take more, black in mono is a large
// dot on every pixel, full cyan (within every ink limit) is cyan everywhere and
// nothing else, and red lands in its two inks.
TEST(ReportTargets, EverySettingPrintsTheKnownTones) {
    const std::vector<Rgb> colours = {{255, 255, 255}, {192, 192, 192}, {128, 128, 128}, {64, 64, 64},
                                      {0, 0, 0},       {0, 255, 255},   {255, 0, 0}};
    std::string error;
    const auto pack = openDefaultPack(error);
    for (Method m : {Method::ErrorDiffusion, Method::Dither, Method::Threshold})
        for (unsigned bits : {1u, 2u})
            for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360})
                for (bool mono : {false, true}) {
                    // Threshold is one-bit only; two-bit output has no spread table for 720x360.
                    if (bits == 2 && (m == Method::Threshold || r == Resolution::R720x360)) continue;
                    const std::string name = std::string(methodName(m)) + " " + std::to_string(bits) + "-bit " +
                                             resolutionName(r) + (mono ? " mono" : " colour");
                    ColourSettings colour;
                    colour.mono = mono;
                    std::vector<PrintedPatch> p;
                    ASSERT_TRUE(printFlatPatches(colour, {m, bits, r, HScale::x1, 0}, *pack, colours, {64, 16, 32}, p, error))
                        << error;
                    ASSERT_EQ(p.size(), colours.size()) << name;
                    std::vector<double> ink(colours.size());
                    for (size_t i = 0; i < p.size(); ++i)
                        for (unsigned k = 0; k < p[i].planes; ++k) ink[i] += coverage(p[i], k);
                    EXPECT_EQ(ink[0], 0.0) << name;
                    // A fixed threshold steps; in colour it may trade a few dots of colour for black.
                    for (size_t i = 1; i < 5; ++i)
                        EXPECT_GT(ink[i], ink[i - 1] - (m == Method::Threshold ? 0.01 : 0.0)) << name << " " << i;
                    if (mono) {
                        EXPECT_EQ(countPlane(p[4], 0).share(3), 1.0) << name;
                        continue;
                    }
                    EXPECT_TRUE(coverage(p[5], 0) == 1.0 && ink[5] == 1.0) << name;
                    // Red is magenta and yellow: little cyan or black.
                    EXPECT_GT(std::min(coverage(p[6], 1), coverage(p[6], 2)), 0.8) << name;
                    EXPECT_LT(coverage(p[6], 0) + coverage(p[6], 3), 0.02) << name;
                }
}

}  // namespace
}  // namespace inkdot::tools
