// The inkdot command end to end: one table of runs, each with its exit status
// and the line it says, refusals of every tool area (usage, image readers,
// output paths, packs and their descriptions) and a good run of each command.
// "@" in an argument or a message stands for the test's directory.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <sstream>

#include "cli/cli.h"
#include "pack/pack.h"
#include "tools/test_files.h"

namespace inkdot::tools {
namespace {

// An ICC profile: sRGB, or gray with gamma 2.2.
std::string profile(bool gray) {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsHPROFILE p = gray ? cmsCreateGrayProfile(cmsD50_xyY(), curve) : cmsCreate_sRGBProfile();
    cmsFreeToneCurve(curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(p, nullptr, &size);
    std::string bytes(size, 0);
    cmsSaveProfileToMem(p, bytes.data(), &size);
    cmsCloseProfile(p);
    return bytes;
}

// Files the runs read: damaged headers, sizes past the readers' limits (1 000 000
// pixels a side, 256 MB for a whole interlaced PNG), layouts they do not read.
void writeInputs(const test::TempDir& dir) {
    const std::map<std::string, std::string> files = {
        {"bad.png", "\x89PNG\r\n\x1a\nbroken"},         {"text.txt", "hello"},
        {"wide.pgm", "P5 16777216 1 255\n"},
        {"zero.pgm", "P5 4 4 0\n"},                     {"words.pgm", "P5 four 4 255\n"},
        {"short.pgm", "P5 64 64 255\nabc"},
        {"huge.png", test::claimedPng(1000000, 1000000, true)}, {"big.png", test::claimedPng(10000, 10000, true)},
        {"wide.png", test::claimedPng(1000001, 1, false)},      {"bad.pack", "INKDPACK"},
        {"junk.icc", std::string(300, 'x')},                    {"empty.icc", ""},
        {"half.icc", profile(false).substr(0, profile(false).size() / 2)}, {"gray.icc", profile(true)},
    };
    for (const auto& [name, bytes] : files) dir.write(name, bytes);
    ASSERT_TRUE(test::writeTestTiff(dir.file("wide.tif"), 1000001, 1, {PHOTOMETRIC_MINISBLACK, 1},
                                    std::vector<uint16_t>(1000001)));
    ASSERT_TRUE(test::writeTestTiff(dir.file("sep.tif"), 1, 1, {PHOTOMETRIC_SEPARATED, 4}, {0, 0, 0, 0}));
    std::vector<uint16_t> noise(64 * 64), grayAlpha;
    for (size_t i = 0; i < noise.size(); ++i) noise[i] = uint16_t(i * 7919 % 256);
    ASSERT_TRUE(test::writeTestPng(dir.file("full.png"), 64, 64, PNG_COLOR_TYPE_GRAY, 8, noise));
    const std::string full = test::readBytes(dir.file("full.png"));
    dir.write("cut.png", full.substr(0, full.size() / 2));
    for (int i = 0; i < 32 * 16; ++i) grayAlpha.insert(grayAlpha.end(), {uint16_t(i % 32 * 2000), 65535});
    ASSERT_TRUE(test::writeTestPng(dir.file("g.png"), 32, 16, PNG_COLOR_TYPE_GRAY_ALPHA, 16, grayAlpha));
    const std::string srgb = profile(false);
    ASSERT_TRUE(test::writeTestPng(dir.file("tagged.png"), 2, 1, PNG_COLOR_TYPE_RGB, 8, {9, 99, 199, 0, 255, 0},
                                   {srgb.begin(), srgb.end()}));
    test::TiffParams broken;  // libtiff keeps whatever bytes the ICC tag holds
    broken.icc.assign(150, 1);
    ASSERT_TRUE(test::writeTestTiff(dir.file("broken.tif"), 2, 1, broken, std::vector<uint16_t>(6, 7)));
    const auto pack = defaultPackBytes();
    std::string flipped(pack.begin(), pack.end());
    flipped[flipped.size() / 2] ^= 0x01;
    dir.write("flipped.pack", flipped);
    for (const char* sub : {"sub", "src", "linked"}) std::filesystem::create_directories(dir.path() / sub);
    std::filesystem::create_symlink("nothing", dir.file("dangling.png"));
    std::filesystem::create_symlink("../g.png", dir.file("linked/c-cyan.pbm"));
}

struct Row {
    std::vector<std::string> args;
    int status;
    std::string says;                       // in the output and error together
    const char* manifest = nullptr;         // written to @src/pack.txt first
};

const Row kRows[] = {
    {{"chart", "-o", "@c.png", "--width", "120", "--height", "90"}, kExitOk, "wrote chart @c.png (120 x 90)\n"},
    // Bad usage: status 2 and one line.
    {{"frobnicate"}, kExitUsage, "inkdot: unknown command 'frobnicate'"},
    {{"report", "-o", "x", "--bits", "2", "--resolution", "720x360"}, kExitUsage, "--bits 2 is not available at 720x360"},
    {{"print", "i", "-o", "x", "--bits", "3"}, kExitUsage, "inkdot print: --bits must be 1 or 2, not '3' (see"},
    {{"print", "i", "-o", "x", "--brightness", "51"}, kExitUsage, "--brightness must be a whole number from -50 to 50, not '51'"},
    {{"print", "@c.png", "-o", "-"}, kExitUsage, "inkdot print: -o takes a directory"},
    {{"print", "--help"}, kExitOk, "not at 720x360"},  // what print refuses or decides on its own is in its help
    // Input it cannot read: status 1, one line, no output directory.
    {{"print", "@missing.png", "-o", "@out"}, kExitFailed, "inkdot print: cannot open @missing.png: No such file or directory\n"},
    {{"print", "@bad.png", "-o", "@out"}, kExitFailed, "inkdot print: @bad.png"},
    {{"print", "@text.txt", "-o", "@out"}, kExitFailed, "inkdot print: @text.txt is not a PNG, PNM (P5/P6) or TIFF image\n"},
    {{"print", "@wide.pgm", "-o", "@out"}, kExitFailed,
     "inkdot print: @wide.pgm: the image is too large (16777216 x 1 pixels; at most 1000000 pixels a side are read)\n"},
    {{"print", "@zero.pgm", "-o", "@out"}, kExitFailed, "maxval"},
    {{"print", "@words.pgm", "-o", "@out"}, kExitFailed, "damaged PNM header"},
    {{"print", "@huge.png", "-o", "@out"}, kExitFailed, "needs 7629394 MB"},  // 10^12 pixels of 8 bytes
    {{"print", "@big.png", "-o", "@out"}, kExitFailed, "needs 762 MB, more than the 256 MB allowed; save it without interlacing"},
    {{"print", "@wide.png", "-o", "@out"}, kExitFailed, "too large (1000001 x 1 pixels"},
    {{"print", "@wide.tif", "-o", "@out"}, kExitFailed, "too large (1000001 x 1 pixels"},
    {{"print", "@sep.tif", "-o", "@out"}, kExitFailed, "only gray and RGB"},
    {{"print", "@short.pgm", "-o", "@out"}, kExitFailed, "inkdot print: @short.pgm"},  // a row fails, naming the file
    {{"print", "@cut.png", "-o", "@out"}, kExitFailed, "inkdot print: @cut.png"},
    {{"print", "@c.png", "-o", "@out", "--pack", "@bad.pack"}, kExitFailed, "shorter than the header"},
    // Colour profiles: embedded ones convert into device RGB; one that cannot be used stops the print.
    {{"print", "@tagged.png", "-o", "@tagged", "--intent", "relative"}, kExitOk, "converted into device RGB (sRGB)"},
    {{"print", "@c.png", "-o", "@out", "--input-profile", "@junk.icc"}, kExitFailed, "@junk.icc is not a usable ICC profile: "},
    {{"print", "@c.png", "-o", "@out", "--input-profile", "@empty.icc"}, kExitFailed,
     "@empty.icc is not a usable ICC profile: it is empty"},
    {{"print", "@c.png", "-o", "@out", "--input-profile", "@half.icc"}, kExitFailed, "@half.icc is not a usable ICC profile: "},
    {{"print", "@c.png", "-o", "@out", "--input-profile", "@gray.icc"}, kExitFailed,
     "@gray.icc is a gray profile, but the image is RGB"},
    {{"print", "@c.png", "-o", "@out", "--input-profile", "@none.icc"}, kExitFailed, "cannot open @none.icc"},
    {{"print", "@broken.tif", "-o", "@out"}, kExitFailed, "the profile embedded in @broken.tif"},
    {{"print", "@broken.tif", "-o", "@tif", "--input-profile", "sRGB"}, kExitOk, "printed @broken.tif: 2 x 1 dots"},
    // Output paths: a link to nothing, a directory, a link in a set are refused.
    {{"chart", "-o", "@dangling.png"}, kExitFailed, "it is a link to nothing"},
    {{"chart", "-o", "@sub"}, kExitFailed, "it is a directory"},
    {{"print", "@c.png", "-o", "@linked"}, kExitFailed, "will not replace @linked/c-cyan.pbm: it is a symbolic link"},
    // Good prints: at 1440x720 the 120 image columns are doubled.
    {{"print", "@c.png", "-o", "@ed", "--resolution", "1440x720"}, kExitOk,
     "printed @c.png: 240 x 90 dots at 1440x720 dpi, 1 bit, table 101"},
    {{"print", "@c.png", "-o", "@dither", "--method", "dither", "--bits", "2", "--resolution", "1440x720"}, kExitOk,
     "printed @c.png: 240 x 90 dots at 1440x720 dpi, 2 bits"},
    {{"print", "@g.png", "-o", "@mono", "--mono"}, kExitOk, "printed @g.png: 32 x 16 dots at 720x720 dpi, 1 bit"},
    // Packs: the built-in one from resources/, read back by info; a damaged one.
    {{"pack", INKDOT_RESOURCE_DIR, "-o", "@p.pack"}, kExitOk, ""},
    {{"info", "--pack", "@p.pack"}, kExitOk, "16 blocks"},
    {{"info", "--pack", "@bad.pack"}, kExitFailed, "shorter than the header"},
    {{"info", "--pack", "@flipped.pack"}, kExitFailed, "checksum mismatch"},  // the built-in pack, one bit flipped
    // Mistakes in a pack description stop it by file and line before anything
    // is built: some once divided by zero (points=1) or ran for minutes and gigabytes.
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "@src/pack.txt:3: unknown setting 'colour'",
     "# comment\n\n5 grid-levels colour=1\n"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "pack.txt:2: block 5 is described twice", "5 grid-levels\n5 grid-levels\n"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "points must be a whole number from 2 to 48", "5 colour-table points=1\n"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "describes no blocks", "# nothing\n"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "pack.txt:1: dot-split=7 names no dot-split block",
     "5 colour-table dot-split=7\n"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "pack.txt:2: its ink-param differs from block 5",
     "5 colour-table dot-split=7\n6 colour-table ink-param=350,100 dot-split=7\n7 dot-split\n"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "strength must be a number from 1 to 4", "5 correction-tables strength=nan"},
    {{"pack", "@src", "-o", "@q.pack"}, kExitFailed, "not a regular file", "5 index file=.\n"},
};

std::string at(const test::TempDir& dir, std::string text) {
    for (size_t i = text.find('@'); i != std::string::npos; i = text.find('@', i + 1)) text.replace(i, 1, dir.file(""));
    return text;
}

TEST(Cli, EveryCommandRunsOrSaysWhyNot) {
    test::TempDir dir;
    writeInputs(dir);
    for (const Row& row : kRows) {
        std::vector<std::string> args;
        for (const std::string& a : row.args) args.push_back(at(dir, a));
        if (row.manifest != nullptr) dir.write("src/pack.txt", row.manifest);
        std::ostringstream out, err;
        const int status = runCli(args, out, err);
        const std::string said = out.str() + err.str(), what = row.args.front() + " " + row.args.back();
        EXPECT_EQ(status, row.status) << what << ": " << said;
        EXPECT_NE(said.find(at(dir, row.says)), std::string::npos) << what << ": " << said;
        EXPECT_EQ(said.find("converted") != std::string::npos, row.args.back() == "relative") << "untagged input is not";
        EXPECT_TRUE(status == kExitOk || std::count(said.begin(), said.end(), '\n') == 1) << what << ": one line: " << said;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("out")) || std::filesystem::exists(dir.file("q.pack")))
        << "refusals leave no output";
    EXPECT_EQ(test::readBytes(dir.file("linked/c-cyan.pbm")).substr(1, 3), "PNG") << "the link's file is left alone";
    // Planes: a PBM of one bit or a four-level PGM each; mono prints black only.
    const struct { const char* file; std::string header; size_t bytes; } planes[] = {
        {"ed/c-cyan.pbm", "P4\n240 90\n", 30 * 90},          {"ed/c-black.pbm", "P4\n240 90\n", 30 * 90},
        {"dither/c-yellow.pgm", "P5\n240 90\n3\n", 240 * 90}, {"mono/g-black.pbm", "P4\n32 16\n", 4 * 16},
        {"mono/g-cyan.pbm", "", 0},
    };
    for (const auto& p : planes) {
        const std::string bytes = test::readBytes(dir.file(p.file));
        EXPECT_TRUE(bytes.size() == p.header.size() + p.bytes && bytes.rfind(p.header, 0) == 0) << p.file;
    }
    const auto embedded = defaultPackBytes();
    EXPECT_EQ(test::readBytes(dir.file("p.pack")), std::string(embedded.begin(), embedded.end()))
        << "the embedded pack is built from resources/";
}

}  // namespace
}  // namespace inkdot::tools
