// The driver layer's job through its C interface refuses a run by naming the
// setting or the block at fault. (Its prints are checked end to end by the
// packaged examples in scripts/test-package.sh.)
#include <gtest/gtest.h>

#include <cstring>

#include "inkdot/inkdot_job.h"
#include "pack/pack.h"
#include "tools/test_files.h"

namespace inkdot {
namespace {

// A spoilt block would be refused by the engine only while it reads a later
// one (the matrix 1010 or the dot split), so the driver checks first and names it.
TEST(JobCApi, RefusesByNamingTheSettingOrTheBlockAtFault) {
    using Edit = void (*)(InkdotJobSettings&);
    const Edit dither = [](InkdotJobSettings& s) { s.method = INKDOT_JOB_DITHER; };
    const Edit twoBits = [](InkdotJobSettings& s) { s.method = INKDOT_JOB_DITHER, s.outputBits = 2; };
    const struct {
        Edit edit;
        std::string message;
        uint32_t block = 0;
        size_t at = 0;  // where `bytes` go; ~0: the block is replaced by them
        tools::Bytes bytes = {};
    } cases[] = {
        {[](InkdotJobSettings& s) { s.method = 3; }, "settings: method must be 0 to 2, not 3"},
        {[](InkdotJobSettings& s) { s.outputBits = 0; }, "settings: outputBits must be 1 to 2, not 0"},
        {[](InkdotJobSettings& s) { s.resolution = -1; }, "settings: resolution must be 0 to 3, not -1"},
        {[](InkdotJobSettings& s) { s.hscale = 6; }, "settings: hscale must be 0 to 5, not 6"},
        {[](InkdotJobSettings& s) { s.gamma = 99; }, "settings: gamma must be 100 to 300, not 99"},
        {[](InkdotJobSettings& s) { s.offsetB = 51; }, "settings: offsetB must be -50 to 50, not 51"},
        {[](InkdotJobSettings& s) { s.useInkWeights = 1, s.inkWeights[3] = 71; }, "settings: inkWeights[3] must be 30 to 70, not 71"},
        {[](InkdotJobSettings& s) { s.inputWidth = 1, s.hscale = INKDOT_HSCALE_HALF; },
         "the line width of 1 pixels cannot be printed at this scaling"},
        {dither, "the resource pack has no block 0 (index text)", 0, ~size_t{0}},
        {dither, "block 1010 (threshold matrix) holds 6 bytes, its layout needs 8196", 1010, ~size_t{0}, {64, 64, 0, 0, 1, 2}},
        // Ink parameter A, big-endian at 48: 300 is 0x012C.
        {dither, "block 100 (colour table) has ink parameter A = 300; one-bit halftoning takes 250, 350 or 500", 100, 48, {0x01, 0x2C}},
        {dither, "block 100 (colour table) has ink parameter B = 0; one-bit halftoning takes 1 to 1000", 100, 50, {0, 0}},
        // Data area size, u32 at 20: 0 leaves out the dot-split descriptor.
        {twoBits, "block 100 (colour table) names no dot-split block, which two-bit output needs", 100, 20, {0, 0, 0, 0}},
        {dither, "block 1010 (threshold matrix) has a width of 48 cells, which is no power of two", 1010, 0, {48}},
        {twoBits, "block 1100 (dot-split table) has row 5, whose dot amounts add up to more than 255", 1100, 15, {100, 100, 100}},
    };
    tools::Pack base;
    std::string why;
    ASSERT_TRUE(base.open(tools::defaultPackBytes(), why)) << why;
    test::TempDir dir;
    char error[200];
    for (const auto& c : cases) {
        tools::BlockMap blocks;
        for (const tools::PackEntry& e : base.entries()) blocks[e.number].assign(e.bytes.begin(), e.bytes.end());
        if (c.at == ~size_t{0}) blocks[c.block] = c.bytes;
        else std::copy(c.bytes.begin(), c.bytes.end(), blocks[c.block].begin() + std::ptrdiff_t(c.at));
        if (c.at == ~size_t{0} && c.bytes.empty()) blocks.erase(c.block);
        const tools::Bytes packed = tools::writePack(blocks);
        dir.write("edited.pack", std::string(packed.begin(), packed.end()));
        InkdotPack* pack = InkdotPackOpenFile(dir.file("edited.pack").c_str(), error, sizeof error);
        InkdotJobSettings s;
        InkdotJobSettingsInit(&s);
        s.inputWidth = 8;
        c.edit(s);
        EXPECT_EQ(InkdotJobOpen(pack, &s, error, sizeof error), nullptr) << c.message;
        EXPECT_EQ(error, c.message);
        InkdotPackClose(pack);
    }
    // A short buffer gets the start of the message, terminated; no pack, no job.
    InkdotJobSettings s;
    InkdotJobSettingsInit(&s);
    InkdotPack* pack = InkdotPackOpenDefault(error, sizeof error);
    EXPECT_EQ(InkdotJobOpen(pack, &s, error, 9), nullptr);
    EXPECT_STREQ(error, "the line");
    InkdotPackClose(pack);
    EXPECT_EQ(InkdotJobOpen(nullptr, &s, nullptr, 0), nullptr);
    EXPECT_EQ(InkdotPackOpenFile("/nonexistent/x.pack", error, sizeof error), nullptr);
    EXPECT_NE(std::strstr(error, "/nonexistent/x.pack"), nullptr) << error;
    EXPECT_STREQ(InkdotResultMessage(RC_DATA, error, sizeof error), "resource data missing, out of order or invalid (code 0x300)");
    EXPECT_STREQ(InkdotResultMessage(RC_ARG + 6, error, sizeof error), "argument 6 was refused (code 0x206)");
    EXPECT_STREQ(InkdotResultMessage(RC_ARG, error, sizeof error), "this combination of settings is not supported (code 0x200)");
    EXPECT_STREQ(InkdotResultMessage(RC_MEM_ALLOC, error, sizeof error), "the engine could not obtain memory (code 0x101)");
}

}  // namespace
}  // namespace inkdot
