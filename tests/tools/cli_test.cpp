// The inkdot command line: usage, option checks, and commands that need no
// engine (chart, pack, info).
#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "cli/print_options.h"
#include "image/image_reader.h"
#include "image_writers.h"
#include "pack/pack.h"
#include "temp_dir.h"

namespace inkdot::tools {
namespace {

using test::TempDir;

struct CliRun {
    int status;
    std::string out, err;
};

CliRun run(std::vector<std::string> args) {
    std::ostringstream out, err;
    const int status = runCli(args, out, err);
    return {status, out.str(), err.str()};
}

TEST(Cli, HelpEverywhere) {
    EXPECT_EQ(run({"--help"}).status, kExitOk);
    EXPECT_NE(run({"--help"}).out.find("print IN -o OUTDIR"), std::string::npos);
    for (const char* command : {"print", "chart", "pack", "info"}) {
        const CliRun r = run({command, "--help"});
        EXPECT_EQ(r.status, kExitOk) << command;
        EXPECT_NE(r.out.find(std::string("usage: inkdot ") + command), std::string::npos) << command;
        EXPECT_TRUE(r.err.empty()) << command;
    }
    // What print refuses or decides on its own is said in its help.
    const std::string print = run({"print", "--help"}).out;
    for (const char* said : {"not at 720x360", "sRGB names the built-in sRGB", "cannot be used stops the print"})
        EXPECT_NE(print.find(said), std::string::npos) << said;
}

TEST(Cli, BadUsageGivesOneLineAndStatus2) {
    for (const auto& args : std::vector<std::vector<std::string>>{
             {},
             {"frobnicate"},
             {"print", "in.png", "-o", "x", "--bits", "3"},
             {"print", "in.png", "-o", "x", "--bits", "2", "--method", "threshold"},
             {"print", "in.png", "-o", "x", "--brightness", "51"},
             {"print", "in.png", "-o", "x", "--saturation", "ten"},
             {"print", "in.png", "-o", "x", "--ink-weights", "50,50,50,71"},
             {"print", "in.png", "-o", "x", "--mono", "--colour"},
             {"print", "in.png", "-o", "x", "--wobble"},
             {"print", "in.png", "-o", "x", "--mono=yes"},
             {"chart"},
             {"chart", "-o", "c.tif"},
             {"pack", "dir"},
             {"info", "extra"},
             {"report"},
             {"report", "-o", "x", "--bits", "2", "--resolution", "720x360"},
         }) {
        const CliRun r = run(args);
        std::string joined;
        for (const auto& a : args) joined += a + " ";
        EXPECT_EQ(r.status, kExitUsage) << joined;
        EXPECT_FALSE(r.err.empty()) << joined;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), args.empty() ? 12 : 1) << joined << r.err;
    }
}

ParsedArgs parsed(std::vector<std::string> args) {
    ParsedArgs p;
    std::string error;
    EXPECT_TRUE(parseArgs(args, {kPrintOptions, kPrintOptionCount}, p, error)) << error;
    return p;
}

TEST(PrintOptions, MapToColourAndHalftoneSettings) {
    PrintOptions o;
    std::string error;
    ASSERT_TRUE(parsePrintOptions(parsed({"in.tif", "-o", "out", "--method=dither", "--bits", "2", "--resolution",
                                          "1440x720", "--mono", "--brightness", "-50", "--contrast", "50",
                                          "--saturation", "7", "--gamma", "2.2", "--offset-g", "-3", "--ink-weights",
                                          "30,40,60,70", "--pack", "p.pack", "--preview-width", "640"}),
                                  o, error))
        << error;
    EXPECT_EQ(o.input, "in.tif");
    EXPECT_EQ(o.outputDir, "out");
    EXPECT_EQ(o.packFile, "p.pack");
    EXPECT_EQ(o.halftone.method, Method::Dither);
    EXPECT_EQ(o.halftone.outputBits, 2u);
    EXPECT_EQ(o.halftone.resolution, Resolution::R1440x720);
    EXPECT_EQ(o.halftone.hscale, HScale::x2) << "automatic scaling doubles columns at 1440x720";
    EXPECT_TRUE(o.colour.mono);
    EXPECT_EQ(o.colour.brightness, -50);
    EXPECT_EQ(o.colour.contrast, 50);
    EXPECT_EQ(o.colour.saturation, 7);
    EXPECT_EQ(o.colour.gamma, 220);
    EXPECT_EQ(o.colour.offsetG, -3);
    ASSERT_TRUE(o.colour.inkWeights.has_value());
    EXPECT_EQ(*o.colour.inkWeights, (std::array<uint8_t, 4>{30, 40, 60, 70}));
    EXPECT_EQ(o.previewWidth, 640u);
}

TEST(PrintOptions, AutomaticScalingKeepsPixelsSquareOnPaper) {
    for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360}) {
        const Dpi dpi = resolutionDpi(r);
        const double across = static_cast<int>(autoHScale(r)) / double(dpi.x);
        const double down = autoLineRepeat(r) / double(dpi.y);
        EXPECT_DOUBLE_EQ(across, down) << dpi.x << "x" << dpi.y;
    }
    PrintOptions o;
    std::string error;
    ASSERT_TRUE(parsePrintOptions(parsed({"in.png", "-o", "out", "--hscale", "half"}), o, error));
    EXPECT_EQ(o.halftone.hscale, HScale::Half);
    EXPECT_FALSE(o.autoScale);
    ASSERT_TRUE(parsePrintOptions(parsed({"in.png", "-o", "out", "--hscale", "5"}), o, error));
    EXPECT_EQ(o.halftone.hscale, HScale::x5);
}

TEST(PrintCommand, BadInputLeavesNoOutput) {
    TempDir dir;
    test::writeBytes(dir.file("bad.png"), "\x89PNG\r\n\x1a\nbroken");
    test::writeBytes(dir.file("text.txt"), "hello");
    test::writeBytes(dir.file("claims.png"), test::claimedPng(1000000, 1000000, true));
    for (const char* input : {"missing.png", "bad.png", "text.txt", "claims.png"}) {
        const CliRun r = run({"print", dir.file(input), "-o", dir.file("out")});
        EXPECT_EQ(r.status, kExitFailed) << input;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(r.err.rfind("inkdot print: ", 0), 0u) << r.err;
        EXPECT_FALSE(std::filesystem::exists(dir.file("out"))) << input;
    }
    // A damaged pack file is refused before anything is written.
    ASSERT_EQ(run({"chart", "-o", dir.file("c.png"), "--width", "64", "--height", "64"}).status, kExitOk);
    test::writeBytes(dir.file("bad.pack"), "INKDPACK");
    const CliRun r = run({"print", dir.file("c.png"), "-o", dir.file("out"), "--pack", dir.file("bad.pack")});
    EXPECT_EQ(r.status, kExitFailed);
    EXPECT_NE(r.err.find("shorter than the header"), std::string::npos) << r.err;
    EXPECT_FALSE(std::filesystem::exists(dir.file("out")));
}

TEST(PackCommand, BuildsAPackThatInfoReadsAndMatchesTheBuiltInOne) {
    TempDir dir;
    const CliRun built = run({"pack", INKDOT_RESOURCE_DIR, "-o", dir.file("p.pack")});
    ASSERT_EQ(built.status, kExitOk) << built.err;
    const std::string bytes = test::readBytes(dir.file("p.pack"));
    const auto embedded = defaultPackBytes();
    EXPECT_EQ(bytes, std::string(embedded.begin(), embedded.end()));

    const CliRun info = run({"info", "--pack", dir.file("p.pack")});
    EXPECT_EQ(info.status, kExitOk) << info.err;
    EXPECT_NE(info.out.find("16 blocks"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("colour table: 33 points per axis"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("matrix, 1440x720: 128 x 64"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("dot-split table"), std::string::npos) << info.out;
    EXPECT_EQ(run({"info"}).out.substr(0, 13), "built-in pack");

    std::string damaged = bytes;
    damaged[damaged.size() / 2] ^= 0x01;
    test::writeBytes(dir.file("p.pack"), damaged);
    const CliRun refused = run({"info", "--pack", dir.file("p.pack")});
    EXPECT_EQ(refused.status, kExitFailed);
    EXPECT_NE(refused.err.find("checksum mismatch"), std::string::npos) << refused.err;
}

TEST(PackCommand, ReportsBadSourcesWithoutWritingAFile) {
    TempDir dir;
    dir.write("pack.txt", "1 matrix width=3\n");
    const CliRun r = run({"pack", dir.path().string(), "-o", dir.file("p.pack")});
    EXPECT_EQ(r.status, kExitFailed);
    EXPECT_NE(r.err.find("pack.txt:1: width must be a power of two"), std::string::npos) << r.err;
    EXPECT_FALSE(std::filesystem::exists(dir.file("p.pack")));
}

}  // namespace
}  // namespace inkdot::tools
