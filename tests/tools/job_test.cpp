// The driver layer's job through its C interface refuses settings by naming
// them. (Its prints, and the pack's blocks, are checked end to end by the
// packaged examples in scripts/test-package.sh.)
#include <gtest/gtest.h>

#include <cstring>

#include "inkdot/inkdot_job.h"

namespace inkdot {
namespace {

TEST(JobCApi, RefusesBadSettingsByName) {
    const struct { void (*edit)(InkdotJobSettings&); const char* message; } cases[] = {
        {[](InkdotJobSettings& s) { s.method = 3; }, "settings: method must be 0 to 2, not 3"},
        {[](InkdotJobSettings& s) { s.outputBits = 0; }, "settings: outputBits must be 1 to 2, not 0"},
        {[](InkdotJobSettings& s) { s.resolution = -1; }, "settings: resolution must be 0 to 3, not -1"},
        {[](InkdotJobSettings& s) { s.hscale = 6; }, "settings: hscale must be 0 to 5, not 6"},
        {[](InkdotJobSettings& s) { s.gamma = 99; }, "settings: gamma must be 100 to 300, not 99"},
        {[](InkdotJobSettings& s) { s.offsetB = 51; }, "settings: offsetB must be -50 to 50, not 51"},
        {[](InkdotJobSettings& s) { s.useInkWeights = 1, s.inkWeights[3] = 71; },
         "settings: inkWeights[3] must be 30 to 70, not 71"},
        {[](InkdotJobSettings& s) { s.inputWidth = 1, s.hscale = INKDOT_HSCALE_HALF; },
         "the line width of 1 pixels cannot be printed at this scaling"},
    };
    char error[200];
    InkdotPack* pack = InkdotPackOpenDefault(error, sizeof error);
    for (const auto& c : cases) {
        InkdotJobSettings s;
        InkdotJobSettingsInit(&s);
        s.inputWidth = 8;
        c.edit(s);
        EXPECT_EQ(InkdotJobOpen(pack, &s, error, sizeof error), nullptr) << c.message;
        EXPECT_STREQ(error, c.message);
    }
    // A short buffer gets the start of the message, terminated; no pack, no job.
    InkdotJobSettings s;
    InkdotJobSettingsInit(&s);
    EXPECT_EQ(InkdotJobOpen(pack, &s, error, 9), nullptr);
    EXPECT_STREQ(error, "the line");
    InkdotPackClose(pack);
    EXPECT_EQ(InkdotJobOpen(nullptr, &s, nullptr, 0), nullptr);
    EXPECT_EQ(InkdotPackOpenFile("/nonexistent/x.pack", error, sizeof error), nullptr);
    EXPECT_NE(std::strstr(error, "/nonexistent/x.pack"), nullptr) << error;
    const std::pair<uint32_t, const char*> results[] = {
        {RC_DATA, "resource data missing, out of order or invalid (code 0x300)"},
        {RC_MEM_ALLOC, "the engine could not obtain memory (code 0x101)"}};
    for (const auto& [code, message] : results) EXPECT_STREQ(InkdotResultMessage(code, error, sizeof error), message);
}

}  // namespace
}  // namespace inkdot
