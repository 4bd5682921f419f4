// The C interface of the driver layer: its settings reach the job as the C++
// layer's own records would give them, bad settings are refused by name, and
// the pack's blocks are handed out as they are.
#include <gtest/gtest.h>

#include <cstring>

#include "inkdot/inkdot_job.h"
#include "inkdot/job.h"

namespace inkdot {
namespace {

TEST(JobCApi, PrintsWhatTheCppLayerPrintsWithTheSameSettings) {
    InkdotJobSettings defaults;
    InkdotJobSettingsInit(&defaults);
    defaults.inputWidth = 40;
    const struct {
        InkdotJobSettings c;
        ColourSettings colour;  // what the C settings mean in the C++ layer
        HalftoneSetup setup;
    } mappings[] = {
        // The defaults: one-bit colour error diffusion at 720 x 720, gamma 1.5.
        {defaults, {}, {Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::x1, 40}},
        // Mono two-bit dither at 1440 x 720, doubled, every adjustment moved.
        {{INKDOT_JOB_DITHER, 2, INKDOT_RES_1440X720, INKDOT_HSCALE_2, 1, 10, -20, 30, 220, 5, -5, 15, 0, {50, 50, 50, 50}, 33},
         {true, 10, -20, 30, 220, 5, -5, 15, std::nullopt},
         {Method::Dither, 2, Resolution::R1440x720, HScale::x2, 33}},
        // Colour threshold at 360 x 720, halved, with ink weights.
        {{INKDOT_JOB_THRESHOLD, 1, INKDOT_RES_360X720, INKDOT_HSCALE_HALF, 0, 0, 0, 0, 150, 0, 0, 0, 1, {40, 60, 45, 70}, 64},
         {.inkWeights = std::array<uint8_t, 4>{40, 60, 45, 70}},
         {Method::Threshold, 1, Resolution::R360x720, HScale::Half, 64}},
    };
    char error[200] = "";
    InkdotPack* pack = InkdotPackOpenDefault(error, sizeof error);
    ASSERT_TRUE(pack) << error;
    std::string why;
    const auto source = openDefaultPack(why);
    for (const auto& m : mappings) {
        InkdotJob* job = InkdotJobOpen(pack, &m.c, error, sizeof error);
        const auto reference = Job::open(m.colour, m.setup, *source, why);
        ASSERT_TRUE(job && reference) << error << why;
        InkdotJobLayout l;
        InkdotJobGetLayout(job, &l);
        EXPECT_EQ(std::vector<size_t>({l.outputWidth, l.planeCount, l.planeStride, l.outputBits, l.inputBytesPerPixel, l.modelId}),
                  std::vector<size_t>({reference->outputWidth(), reference->planeCount(), reference->planeStride(),
                                       reference->outputBits(), reference->inputBytesPerPixel(), reference->modelId()}));
        std::vector<uint8_t> line(size_t{m.c.inputWidth} * l.inputBytesPerPixel), got(l.planeCount * l.planeStride),
            want(got.size());
        for (int y = 0; y < 12; ++y) {
            for (size_t i = 0; i < line.size(); ++i) line[i] = uint8_t(i * 7 + size_t(y) * 13);  // ramps
            ASSERT_EQ(InkdotJobHalftoneLine(job, line.data(), got.data(), error, sizeof error), INKDOT_JOB_OK) << error;
            ASSERT_TRUE(reference->halftoneLine(line.data(), want.data(), why)) << why;
            ASSERT_EQ(got, want) << "line " << y;
        }
        InkdotJobClose(job);
    }
    // The pack's blocks as they are; none for a number it does not hold.
    size_t size = 1;
    const uint8_t* block = InkdotPackBlock(pack, INKDOT_REQUEST_LIST_BLOCK, &size);
    const std::span<const uint8_t> want = source->block(source->requestListBlock());
    ASSERT_TRUE(block != nullptr && size == want.size());
    EXPECT_EQ(std::memcmp(block, want.data(), size), 0);
    EXPECT_EQ(InkdotPackBlock(pack, 7, &size), nullptr);
    EXPECT_EQ(size, 0u);
    InkdotPackClose(pack);
}

TEST(JobCApi, RefusesBadSettingsByName) {
    char error[200];
    InkdotPack* pack = InkdotPackOpenDefault(error, sizeof error);
    ASSERT_TRUE(pack) << error;
    const struct {
        void (*edit)(InkdotJobSettings&);
        const char* message;
    } cases[] = {
        {[](InkdotJobSettings& s) { s.method = 3; }, "settings: method must be 0 to 2, not 3"},
        {[](InkdotJobSettings& s) { s.outputBits = 0; }, "settings: outputBits must be 1 to 2, not 0"},
        {[](InkdotJobSettings& s) { s.resolution = -1; }, "settings: resolution must be 0 to 3, not -1"},
        {[](InkdotJobSettings& s) { s.hscale = 6; }, "settings: hscale must be 0 to 5, not 6"},
        {[](InkdotJobSettings& s) { s.gamma = 99; }, "settings: gamma must be 100 to 300, not 99"},
        {[](InkdotJobSettings& s) { s.offsetB = 51; }, "settings: offsetB must be -50 to 50, not 51"},
        {[](InkdotJobSettings& s) { s.useInkWeights = 1, s.inkWeights[3] = 71; },
         "settings: inkWeights[3] must be 30 to 70, not 71"},
        {[](InkdotJobSettings& s) { s.inputWidth = 0; }, "the line width of 0 pixels cannot be printed at this scaling"},
    };
    for (const auto& c : cases) {
        InkdotJobSettings s;
        InkdotJobSettingsInit(&s);
        s.inputWidth = 16;
        c.edit(s);
        EXPECT_EQ(InkdotJobOpen(pack, &s, error, sizeof error), nullptr) << c.message;
        EXPECT_STREQ(error, c.message);
    }
    // A short buffer gets the start of the message, terminated.
    InkdotJobSettings s;
    InkdotJobSettingsInit(&s);
    EXPECT_EQ(InkdotJobOpen(pack, &s, error, 9), nullptr);
    EXPECT_STREQ(error, "the line");
    EXPECT_EQ(InkdotJobOpen(nullptr, &s, nullptr, 0), nullptr);
    EXPECT_EQ(InkdotPackOpenFile("/nonexistent/x.pack", error, sizeof error), nullptr);
    EXPECT_NE(std::strstr(error, "/nonexistent/x.pack"), nullptr) << error;
    InkdotPackClose(pack);
}

}  // namespace
}  // namespace inkdot
