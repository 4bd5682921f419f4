// The inkdot command line: usage, option checks, print end to end, pack and info.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "cli/print_options.h"
#include "image/image_reader.h"
#include "pack/pack.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

using test::TempDir;

struct CliRun {
    int status;
    std::string out, err;
    bool says(const std::string& text) const { return (out + err).find(text) != std::string::npos; }
};

CliRun run(std::vector<std::string> args) {
    std::ostringstream out, err;
    const int status = runCli(args, out, err);
    return {status, out.str(), err.str()};
}

TEST(Cli, HelpAndBadUsage) {
    EXPECT_TRUE(run({"--help"}).says("print IN -o OUTDIR"));
    for (const char* command : {"print", "chart", "pack", "info"}) {
        const CliRun r = run({command, "--help"});
        EXPECT_TRUE(r.status == kExitOk && r.err.empty() && r.says("usage: inkdot " + std::string(command))) << command;
    }
    // What print refuses or decides on its own is said in its help.
    for (const char* said : {"not at 720x360", "sRGB names the built-in sRGB", "cannot be used stops the print"})
        EXPECT_TRUE(run({"print", "--help"}).says(said)) << said;
    // Bad usage: status 2 and one line (the whole usage when nothing is given).
    for (const auto& args : std::vector<std::vector<std::string>>{
             {}, {"frobnicate"}, {"chart"}, {"chart", "-o", "c.tif"}, {"pack", "dir"}, {"info", "extra"}, {"report"},
             {"report", "-o", "x", "--bits", "2", "--resolution", "720x360"},
             {"print", "i", "-o", "x", "--bits", "3"}, {"print", "i", "-o", "x", "--bits", "2", "--method", "threshold"},
             {"print", "i", "-o", "x", "--brightness", "51"}, {"print", "i", "-o", "x", "--saturation", "ten"},
             {"print", "i", "-o", "x", "--ink-weights", "50,50,50,71"}, {"print", "i", "-o", "x", "--mono", "--colour"},
             {"print", "i", "-o", "x", "--wobble"}, {"print", "i", "-o", "x", "--mono=yes"},
             {"print", "i", "-o", "x", "--intent", "vivid"}}) {
        const CliRun r = run(args);
        const std::string joined = args.empty() ? "(none)" : args.back();
        EXPECT_EQ(r.status, kExitUsage) << joined;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), args.empty() ? 12 : 1) << joined << r.err;
    }
}

TEST(PrintOptions, MapToColourAndHalftoneSettings) {
    ParsedArgs args;
    PrintOptions o;
    std::string error;
    ASSERT_TRUE(parseArgs({"in.tif", "-o", "out", "--method=dither", "--bits", "2", "--resolution", "1440x720", "--mono",
                           "--brightness", "-50", "--contrast", "50", "--saturation", "7", "--gamma", "2.2",
                           "--offset-g", "-3", "--ink-weights", "30,40,60,70", "--pack", "p.pack",
                           "--preview-width", "640"},
                          {kPrintOptions, kPrintOptionCount}, args, error) &&
                parsePrintOptions(args, o, error))
        << error;
    const ColourSettings& c = o.colour;
    const HalftoneSetup& h = o.halftone;
    // Automatic scaling doubles columns at 1440x720.
    EXPECT_EQ(std::vector<int>({c.mono, c.brightness, c.contrast, c.saturation, c.gamma, c.offsetR, c.offsetG, c.offsetB,
                                int(h.method), int(h.outputBits), int(h.resolution), int(h.hscale), int(o.previewWidth)}),
              std::vector<int>({1, -50, 50, 7, 220, 0, -3, 0, int(Method::Dither), 2, int(Resolution::R1440x720),
                                int(HScale::x2), 640}));
    EXPECT_EQ(o.input + " " + o.outputDir + " " + o.packFile, "in.tif out p.pack");
    EXPECT_EQ(c.inkWeights, (std::array<uint8_t, 4>{30, 40, 60, 70}));
    // Automatic scaling keeps image pixels square on paper.
    for (Resolution r : {Resolution::R720x720, Resolution::R1440x720, Resolution::R360x720, Resolution::R720x360})
        EXPECT_DOUBLE_EQ(int(autoHScale(r)) / double(resolutionDpi(r).x), autoLineRepeat(r) / double(resolutionDpi(r).y));
}

TEST(PrintCommand, PrintsPlanesAndAPreview) {
    TempDir dir;
    ASSERT_EQ(run({"chart", "-o", dir.file("c.png"), "--width", "120", "--height", "90"}).status, kExitOk);
    std::vector<uint16_t> grayAlpha;  // 16-bit gray with alpha, 32 x 16
    for (int i = 0; i < 32 * 16; ++i) grayAlpha.insert(grayAlpha.end(), {uint16_t(i % 32 * 2000), 65535});
    ASSERT_TRUE(test::writeTestPng(dir.file("g.png"), 32, 16, PNG_COLOR_TYPE_GRAY_ALPHA, 16, grayAlpha));
    // At 1440x720 the 120 image columns are doubled.
    const struct { const char* name; std::vector<std::string> args; std::string header; size_t bytes; bool mono; } cases[] = {
        {"c", {"--method", "ed", "--bits", "1", "--resolution", "1440x720"}, "P4\n240 90\n", 30 * 90, false},
        {"c", {"--method", "dither", "--bits", "2", "--resolution", "1440x720"}, "P5\n240 90\n3\n", 240 * 90, false},
        {"g", {"--mono"}, "P4\n32 16\n", 4 * 16, true},
    };
    for (const auto& c : cases) {
        const std::string out = dir.file("out") + "/" + c.name;
        std::vector<std::string> args{"print", dir.file(std::string(c.name) + ".png"), "-o", dir.file("out")};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const CliRun r = run(args);
        ASSERT_EQ(r.status, kExitOk) << r.err;
        for (const char* plane : {"cyan", "magenta", "yellow", "black"}) {
            const std::string bytes = test::readBytes(out + "-" + plane + (c.header[1] == '4' ? ".pbm" : ".pgm"));
            const bool wanted = !c.mono || std::string(plane) == "black";
            EXPECT_EQ(bytes.size(), wanted ? c.header.size() + c.bytes : 0) << c.header << plane;
            EXPECT_EQ(bytes.substr(0, c.header.size()), wanted ? c.header : "") << plane;
        }
        if (c.mono) continue;
        std::string error;
        auto preview = openImage(out + "-preview.png", error);
        ASSERT_TRUE(preview) << error;
        EXPECT_EQ(preview->width() * 1000 + preview->height(), 120090u) << "a preview pixel per image pixel";
        // Its top-left corner is paper, the gray ramp's right end dark.
        std::vector<uint8_t> row(120 * 3);
        ASSERT_TRUE(preview->readRow(row.data(), error)) << error;
        EXPECT_GT(row[0], 230);
        EXPECT_LT(row[119 * 3], 90);
    }
}

TEST(PrintCommand, BadInputLeavesNoOutput) {
    TempDir dir;
    dir.write("bad.png", "\x89PNG\r\n\x1a\nbroken");
    dir.write("text.txt", "hello");
    dir.write("claims.png", test::claimedPng(1000000, 1000000, true));
    dir.write("bad.pack", "INKDPACK");
    ASSERT_EQ(run({"chart", "-o", dir.file("c.png"), "--width", "64", "--height", "64"}).status, kExitOk);
    const std::vector<std::string> cases[] = {
        {"missing.png"}, {"bad.png"}, {"text.txt"}, {"claims.png"},
        {"c.png", "--pack", dir.file("bad.pack"), "shorter than the header"},  // refused before anything is written
    };
    for (const auto& c : cases) {
        std::vector<std::string> args{"print", dir.file(c[0]), "-o", dir.file("out")};
        args.insert(args.end(), c.begin() + 1, c.begin() + std::min<size_t>(c.size(), 3));
        const CliRun r = run(args);
        EXPECT_EQ(r.status, kExitFailed) << c[0];
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_EQ(r.err.rfind("inkdot print: ", 0), 0u) << r.err;
        EXPECT_TRUE(r.says(c.back())) << r.err;
        EXPECT_FALSE(std::filesystem::exists(dir.file("out"))) << c[0];
    }
}

TEST(PackCommand, BuildsTheBuiltInPackWhichInfoReads) {
    TempDir dir;
    const CliRun built = run({"pack", INKDOT_RESOURCE_DIR, "-o", dir.file("p.pack")});
    ASSERT_EQ(built.status, kExitOk) << built.err;
    const std::string bytes = test::readBytes(dir.file("p.pack"));
    const auto embedded = defaultPackBytes();
    EXPECT_EQ(bytes, std::string(embedded.begin(), embedded.end())) << "the embedded pack is built from resources/";
    const CliRun info = run({"info", "--pack", dir.file("p.pack")});
    EXPECT_EQ(info.status, kExitOk) << info.err;
    for (const char* line : {"16 blocks", "colour table: 33 points per axis", "matrix, 1440x720: 128 x 64", "dot-split table"})
        EXPECT_TRUE(info.says(line)) << info.out;
    EXPECT_EQ(run({"info"}).out.substr(0, 13), "built-in pack");
    // A damaged pack, and bad sources that leave no pack file behind.
    std::string damaged = bytes;
    damaged[damaged.size() / 2] ^= 0x01;
    dir.write("p.pack", damaged);
    const CliRun refused = run({"info", "--pack", dir.file("p.pack")});
    EXPECT_TRUE(refused.status == kExitFailed && refused.says("checksum mismatch")) << refused.err;
    std::filesystem::create_directories(dir.path() / "src");
    dir.write("src/pack.txt", "1 matrix width=3\n");
    const CliRun bad = run({"pack", dir.file("src"), "-o", dir.file("q.pack")});
    EXPECT_TRUE(bad.status == kExitFailed && bad.says("pack.txt:1: width must be a power of two")) << bad.err;
    EXPECT_FALSE(std::filesystem::exists(dir.file("q.pack")));
}

}  // namespace
}  // namespace inkdot::tools
