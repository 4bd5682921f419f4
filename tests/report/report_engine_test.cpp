// Targets printed through the real engine, where the answer is known: blank
// paper prints nothing, full ink covers everything, a flat gray patch prints
// its tone; and the report command's files.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "cli/cli.h"
#include "report/printed_patch.h"
#include "report/report_data.h"
#include "tools/temp_dir.h"

namespace inkdot::tools {
namespace {

using test::TempDir;

struct Config {
    Method method;
    unsigned bits;
};
const Config kConfigs[] = {{Method::ErrorDiffusion, 1}, {Method::Dither, 1}, {Method::Threshold, 1},
                           {Method::ErrorDiffusion, 2}, {Method::Dither, 2}};
const Resolution kResolutions[] = {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720,
                                   Resolution::R720x360};

std::unique_ptr<BlockSource> defaultPack() {
    std::string error;
    auto pack = openDefaultPack(error);
    EXPECT_TRUE(pack) << error;
    return pack;
}

std::vector<PrintedPatch> print(const ColourSettings& colour, Config config, Resolution resolution,
                                std::vector<Rgb> colours, PatchLayout layout = {64, 16, 32}) {
    auto pack = defaultPack();
    std::vector<PrintedPatch> patches;
    std::string error;
    EXPECT_TRUE(printFlatPatches(colour, {config.method, config.bits, resolution, HScale::x1, 0}, *pack, colours,
                                 layout, patches, error))
        << error;
    return patches;
}

// Two-bit output has no spread thresholds for columns twice as dense as lines.
bool available(Config c, Resolution r) { return !(c.bits == 2 && r == Resolution::R720x360); }

std::string describe(Config c, Resolution r) {
    return std::string(methodName(c.method)) + " " + std::to_string(c.bits) + "-bit " + resolutionName(r);
}

TEST(ReportTargets, BlankPaperPrintsNoDots) {
    for (bool mono : {false, true}) {
        ColourSettings colour;
        colour.mono = mono;
        for (Config c : kConfigs) {
            for (Resolution r : kResolutions) {
                if (!available(c, r)) continue;
                const auto patches = print(colour, c, r, {{255, 255, 255}});
                ASSERT_EQ(patches.size(), 1u);
                for (unsigned p = 0; p < patches[0].planes; ++p)
                    EXPECT_EQ(countPlane(patches[0], p).coverage({}), 0.0) << describe(c, r) << " plane " << p;
            }
        }
    }
}

TEST(ReportTargets, FullInkCoversEveryPixel) {
    ColourSettings mono;
    mono.mono = true;
    for (Config c : kConfigs) {
        for (Resolution r : kResolutions) {
            if (!available(c, r)) continue;
            const auto black = print(mono, c, r, {{0, 0, 0}});
            const DotCounts k = countPlane(black[0], 0);
            EXPECT_EQ(k.share(3), 1.0) << describe(c, r);  // every pixel a large dot
            EXPECT_EQ(k.coverage({}), 1.0) << describe(c, r);

            // Full cyan alone is within every ink limit: cyan everywhere, nothing else.
            const auto cyan = print({}, c, r, {{0, 255, 255}});
            EXPECT_EQ(countPlane(cyan[0], 0).coverage({}), 1.0) << describe(c, r);
            for (unsigned p = 1; p < 4; ++p) EXPECT_EQ(countPlane(cyan[0], p).coverage({}), 0.0) << describe(c, r);
        }
    }
}

TEST(ReportTargets, TwoBitPrintsTheToneOfOneBit) {
    // The report's ramps (gray and each primary from paper white to full) at
    // both depths with the same colour tables: every ink's coverage, dots
    // counted by their ink amounts (small 0.35, medium 0.65 of a large dot,
    // a one-bit dot as large), must agree within 0.006 plus 3 % of the
    // one-bit coverage (the largest difference seen is 0.008 at 0.45): the
    // dot split rounds each row to 1/255 per dot size and the two depths
    // place their dots by different rules. Before the dot split matched the
    // one-bit tone, cyan at input 223 printed 0.11 in one bit and 0.21 in two.
    const std::pair<const char*, Rgb (*)(uint8_t)> ramps[] = {
        {"gray", [](uint8_t v) { return Rgb{v, v, v}; }},
        {"cyan", [](uint8_t v) { return Rgb{v, 255, 255}; }},
        {"magenta", [](uint8_t v) { return Rgb{255, v, 255}; }},
        {"yellow", [](uint8_t v) { return Rgb{255, 255, v}; }},
    };
    const PatchLayout layout{128, 16, 64};
    for (bool mono : {false, true}) {
        ColourSettings colour;
        colour.mono = mono;
        for (Method m : {Method::ErrorDiffusion, Method::Dither}) {
            for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720}) {
                for (const auto& [name, rampColour] : ramps) {
                    if (mono && std::string(name) != "gray") continue;
                    std::vector<Rgb> ramp;
                    for (int v = 255; v >= 0; v -= 16) ramp.push_back(rampColour(static_cast<uint8_t>(v)));
                    const auto one = print(colour, {m, 1}, r, ramp, layout);
                    const auto two = print(colour, {m, 2}, r, ramp, layout);
                    ASSERT_EQ(one.size(), two.size());
                    for (size_t i = 0; i < one.size(); ++i) {
                        for (unsigned p = 0; p < one[i].planes; ++p) {
                            const double c1 = countPlane(one[i], p).coverage({});
                            const double c2 = countPlane(two[i], p).coverage({});
                            EXPECT_NEAR(c2, c1, 0.006 + 0.03 * c1)
                                << describe({m, 1}, r) << (mono ? " mono " : " ") << name << " ramp, input "
                                << 255 - 16 * i << ", plane " << p;
                        }
                    }
                }
            }
        }
    }
}

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

TEST(ReportCommand, WritesTheMeasurementsOfEveryMethod) {
    TempDir dir;
    std::ostringstream out, err;
    ASSERT_EQ(runCli({"report", "-o", dir.file("r"), "--quick", "--bits", "2", "--csv"}, out, err), kExitOk)
        << err.str();
    const auto tone = readLines(dir.file("r/tone.csv"));
    ASSERT_FALSE(tone.empty());
    EXPECT_EQ(tone[0], "method,ramp,level,ink,none,small,medium,large,dotted,coverage");
    // Two methods (no threshold at two bits), four ramps, levels 0, 32, ..., 224, 255, four inks.
    EXPECT_EQ(tone.size(), 1u + 2 * 4 * 9 * 4);
    // White paper: the last level of the first ramp prints nothing.
    bool sawWhite = false;
    for (const std::string& line : tone)
        if (line.rfind("ed,gray,255,", 0) == 0) {
            EXPECT_EQ(line.substr(line.rfind(',') + 1), "0") << line;
            sawWhite = true;
        }
    EXPECT_TRUE(sawWhite);
    for (const char* name : {"config.csv", "spectrum.csv", "flat.csv", "texture.csv"})
        EXPECT_GT(readLines(dir.file(std::string("r/") + name)).size(), 1u) << name;
}

}  // namespace
}  // namespace inkdot::tools
