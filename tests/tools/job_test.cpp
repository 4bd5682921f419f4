// The driver layer's job: the block or setting it names when it refuses a run,
// and its C interface, which prints what the C++ layer prints with the same
// settings and refuses bad settings by name.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "inkdot/inkdot_job.h"
#include "inkdot/job.h"

namespace inkdot {
namespace {

// The default pack with blocks replaced (an empty vector removes one).
struct EditedPack : BlockSource {
    std::unique_ptr<BlockSource> base;
    std::map<uint32_t, std::vector<uint8_t>> replaced;
    EditedPack() {
        std::string error;
        base = openDefaultPack(error);
    }
    std::span<const uint8_t> block(uint32_t number) const override {
        if (auto it = replaced.find(number); it != replaced.end()) return it->second;
        return base->block(number);
    }
    uint32_t requestListBlock() const override { return base->requestListBlock(); }
};

// The engine would refuse a spoilt block only while reading a later one (the
// matrix 1010 or the dot split), so the driver checks first and names the block.
TEST(Job, RefusesByNamingTheSettingOrTheBlockAtFault) {
    const HalftoneSetup dither1{Method::Dither, 1, Resolution::R720x720, HScale::x1, 8}, dither2{Method::Dither, 2, Resolution::R720x720, HScale::x1, 8};
    const struct {
        HalftoneSetup setup;
        uint32_t block;
        size_t at;  // where `bytes` go; ~0: the block is replaced by them
        std::vector<uint8_t> bytes;
        const char* message;
    } cases[] = {
        {{Method::ErrorDiffusion, 1, Resolution::R720x720, HScale::Half, 1}, 0, 0, {}, "line width of 1 pixels"},
        {{Method::ErrorDiffusion, 3, Resolution::R720x720, HScale::x1, 8}, 0, 0, {}, "output bits must be 1 or 2"},
        {dither1, 0, ~size_t{0}, {}, "the resource pack has no block 0 (index text)"},
        {dither1, 1010, ~size_t{0}, {64, 64, 0, 0, 1, 2}, "block 1010 (threshold matrix) holds 6 bytes, its layout needs 8196"},
        // Ink parameter A, big-endian at 48: 300 is 0x012C.
        {dither1, 100, 48, {0x01, 0x2C}, "block 100 (colour table) has ink parameter A = 300; one-bit halftoning takes 250, 350 or 500"},
        {dither1, 100, 50, {0x00, 0x00}, "block 100 (colour table) has ink parameter B = 0; one-bit halftoning takes 1 to 1000"},
        // Data area size, u32 at 20: 0 leaves out the dot-split descriptor.
        {dither2, 100, 20, {0, 0, 0, 0}, "block 100 (colour table) names no dot-split block, which two-bit output needs"},
        {dither1, 1010, 0, {48}, "block 1010 (threshold matrix) has a width of 48 cells, which is no power of two"},
        {dither2, 1100, 15, {100, 100, 100}, "block 1100 (dot-split table) has row 5, whose dot amounts add up to more than 255"},
    };
    for (const auto& c : cases) {
        EditedPack pack;
        const auto block = pack.base->block(c.block);
        std::vector<uint8_t>& edited = pack.replaced[c.block] = {block.begin(), block.end()};
        if (c.at == ~size_t{0}) edited = c.bytes;
        else std::copy(c.bytes.begin(), c.bytes.end(), edited.begin() + std::ptrdiff_t(c.at));
        std::string error;
        EXPECT_EQ(Job::open({}, c.setup, pack, error), nullptr) << c.message;
        EXPECT_NE(error.find(c.message), std::string::npos) << error;
    }
    EXPECT_EQ(resultMessage(RC_DATA), "resource data missing, out of order or invalid (code 0x300)");
    EXPECT_EQ(resultMessage(RC_ARG + 6), "argument 6 was refused (code 0x206)");
    EXPECT_EQ(resultMessage(RC_ARG), "this combination of settings is not supported (code 0x200)");
    EXPECT_EQ(resultMessage(RC_MEM_ALLOC), "the engine could not obtain memory (code 0x101)");
}

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
        std::vector<uint8_t> line(size_t{m.c.inputWidth} * l.inputBytesPerPixel), got(l.planeCount * l.planeStride), want(got.size());
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
    EXPECT_TRUE(block != nullptr && size == want.size() && std::memcmp(block, want.data(), size) == 0);
    EXPECT_TRUE(InkdotPackBlock(pack, 7, &size) == nullptr && size == 0);

    // Bad settings are refused by name; a short buffer gets the start of the message, terminated.
    const struct { void (*edit)(InkdotJobSettings&); const char* message; } refusals[] = {
        {[](InkdotJobSettings& s) { s.method = 3; }, "settings: method must be 0 to 2, not 3"},
        {[](InkdotJobSettings& s) { s.outputBits = 0; }, "settings: outputBits must be 1 to 2, not 0"},
        {[](InkdotJobSettings& s) { s.resolution = -1; }, "settings: resolution must be 0 to 3, not -1"},
        {[](InkdotJobSettings& s) { s.hscale = 6; }, "settings: hscale must be 0 to 5, not 6"},
        {[](InkdotJobSettings& s) { s.gamma = 99; }, "settings: gamma must be 100 to 300, not 99"},
        {[](InkdotJobSettings& s) { s.offsetB = 51; }, "settings: offsetB must be -50 to 50, not 51"},
        {[](InkdotJobSettings& s) { s.useInkWeights = 1, s.inkWeights[3] = 71; }, "settings: inkWeights[3] must be 30 to 70, not 71"},
        {[](InkdotJobSettings& s) { s.inputWidth = 0; }, "the line width of 0 pixels cannot be printed at this scaling"},
        {[](InkdotJobSettings& s) { s.inputWidth = 0; }, "the line"},
    };
    for (const auto& r : refusals) {
        InkdotJobSettings s = defaults;
        r.edit(s);
        EXPECT_EQ(InkdotJobOpen(pack, &s, error, std::strcmp(r.message, "the line") == 0 ? 9 : sizeof error), nullptr);
        EXPECT_STREQ(error, r.message);
    }
    EXPECT_EQ(InkdotJobOpen(nullptr, &defaults, nullptr, 0), nullptr);
    EXPECT_EQ(InkdotPackOpenFile("/nonexistent/x.pack", error, sizeof error), nullptr);
    EXPECT_NE(std::strstr(error, "/nonexistent/x.pack"), nullptr) << error;
    InkdotPackClose(pack);
}

}  // namespace
}  // namespace inkdot
