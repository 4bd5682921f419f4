// The C interface of the driver layer: its settings reach the job as the C++
// layer's own records would give them, bad settings are refused by name, and
// the pack's blocks are handed out as they are.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "inkdot/inkdot_job.h"
#include "inkdot/job.h"

namespace inkdot {
namespace {

struct PackCloser {
    void operator()(InkdotPack* p) const { InkdotPackClose(p); }
};
struct JobCloser {
    void operator()(InkdotJob* j) const { InkdotJobClose(j); }
};
using PackHandle = std::unique_ptr<InkdotPack, PackCloser>;
using JobHandle = std::unique_ptr<InkdotJob, JobCloser>;

// Line y of a pattern of ramps, gray or RGB.
std::vector<uint8_t> rampLine(uint32_t width, unsigned bytesPerPixel, int y) {
    std::vector<uint8_t> line(size_t{width} * bytesPerPixel);
    for (size_t i = 0; i < line.size(); ++i) line[i] = static_cast<uint8_t>((i * 7 + size_t(y) * 13) % 256);
    return line;
}

struct Mapping {
    InkdotJobSettings c;  // the C settings
    ColourSettings colour;  // what they mean in the C++ layer
    HalftoneSetup setup;
};

std::vector<Mapping> mappings() {
    std::vector<Mapping> m(3);
    for (Mapping& x : m) InkdotJobSettingsInit(&x.c);
    // The defaults: one-bit colour error diffusion at 720 x 720, gamma 1.5.
    m[0].c.inputWidth = 40;
    m[0].setup = {Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::x1, 40};
    // Mono two-bit dither at 1440 x 720, doubled, every adjustment moved.
    m[1].c = {INKDOT_JOB_DITHER, 2, INKDOT_RES_1440X720, INKDOT_HSCALE_2, 1, 10, -20, 30, 220, 5, -5, 15, 0,
              {50, 50, 50, 50}, 33};
    m[1].colour = {true, 10, -20, 30, 220, 5, -5, 15, std::nullopt};
    m[1].setup = {Method::Dither, 2, Resolution::R1440x720, HScale::x2, 33};
    // Colour threshold at 360 x 720, halved, with ink weights.
    m[2].c = {INKDOT_JOB_THRESHOLD, 1, INKDOT_RES_360X720, INKDOT_HSCALE_HALF, 0, 0, 0, 0, 150, 0, 0, 0, 1,
              {40, 60, 45, 70}, 64};
    m[2].colour.inkWeights = std::array<uint8_t, 4>{40, 60, 45, 70};
    m[2].setup = {Method::Threshold, 1, Resolution::R360x720, HScale::Half, 64};
    return m;
}

TEST(JobCApi, PrintsWhatTheCppLayerPrintsWithTheSameSettings) {
    char error[200] = "";
    PackHandle pack(InkdotPackOpenDefault(error, sizeof error));
    ASSERT_TRUE(pack) << error;
    std::string why;
    auto source = openDefaultPack(why);
    for (const Mapping& m : mappings()) {
        JobHandle job(InkdotJobOpen(pack.get(), &m.c, error, sizeof error));
        ASSERT_TRUE(job) << error;
        auto reference = Job::open(m.colour, m.setup, *source, why);
        ASSERT_TRUE(reference) << why;
        InkdotJobLayout layout;
        InkdotJobGetLayout(job.get(), &layout);
        EXPECT_EQ(layout.outputWidth, reference->outputWidth());
        EXPECT_EQ(layout.planeCount, reference->planeCount());
        EXPECT_EQ(layout.planeStride, reference->planeStride());
        EXPECT_EQ(layout.outputBits, reference->outputBits());
        EXPECT_EQ(layout.inputBytesPerPixel, reference->inputBytesPerPixel());
        EXPECT_EQ(layout.modelId, reference->modelId());
        std::vector<uint8_t> got(layout.planeCount * layout.planeStride), want(got.size());
        for (int y = 0; y < 12; ++y) {
            const std::vector<uint8_t> line = rampLine(m.c.inputWidth, layout.inputBytesPerPixel, y);
            ASSERT_EQ(InkdotJobHalftoneLine(job.get(), line.data(), got.data(), error, sizeof error), INKDOT_JOB_OK)
                << error;
            ASSERT_TRUE(reference->halftoneLine(line.data(), want.data(), why)) << why;
            ASSERT_EQ(got, want) << "line " << y;
        }
    }
}

TEST(JobCApi, RefusesBadSettingsByName) {
    char error[200];
    PackHandle pack(InkdotPackOpenDefault(error, sizeof error));
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
        EXPECT_EQ(InkdotJobOpen(pack.get(), &s, error, sizeof error), nullptr) << c.message;
        EXPECT_STREQ(error, c.message);
    }
    // A short buffer gets the start of the message, terminated.
    InkdotJobSettings s;
    InkdotJobSettingsInit(&s);
    EXPECT_EQ(InkdotJobOpen(pack.get(), &s, error, 9), nullptr);
    EXPECT_STREQ(error, "the line");
    EXPECT_EQ(InkdotJobOpen(nullptr, &s, nullptr, 0), nullptr);
}

TEST(JobCApi, HandsOutThePacksBlocks) {
    char error[200];
    PackHandle pack(InkdotPackOpenDefault(error, sizeof error));
    ASSERT_TRUE(pack) << error;
    std::string why;
    auto source = openDefaultPack(why);
    size_t size = 1;
    const uint8_t* block = InkdotPackBlock(pack.get(), INKDOT_REQUEST_LIST_BLOCK, &size);
    const std::span<const uint8_t> want = source->block(source->requestListBlock());
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(size, want.size());
    EXPECT_EQ(std::memcmp(block, want.data(), size), 0);
    EXPECT_EQ(InkdotPackBlock(pack.get(), 7, &size), nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(InkdotPackOpenFile("/nonexistent/x.pack", error, sizeof error), nullptr);
    EXPECT_NE(std::strstr(error, "/nonexistent/x.pack"), nullptr) << error;
}

}  // namespace
}  // namespace inkdot
