// HalftoneNew, the phase machine, the slots each failure keeps or releases,
// the checks of a Halftone call and the kernel each settings row leads to.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "halftone/dispatch.h"
#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::HtBlocks;
using test::HtInstance;
using test::WatchedMono;

TEST(HalftoneNew, ChecksInOrderCopiesAndPixelLayouts) {
    test::MemoryWatch watch;
    const test::MonoLut mono([](int v) { return 255 - v; });
    const CmLut& lut = mono.lut;
    HtSettings s = test::htSettings(1, 0, 1, 100);
    HtContext* ctx = nullptr;
    uint32_t model = 0;
    EXPECT_EQ(HalftoneNew(nullptr, nullptr, 1, &model, &ctx), RC_ARG + 3);  // reserved3 first
    EXPECT_EQ(HalftoneNew(nullptr, &lut, 0, &model, &ctx), RC_ARG + 1);
    EXPECT_EQ(HalftoneNew(&s, nullptr, 0, &model, &ctx), RC_ARG + 2);
    EXPECT_TRUE(model == 0 && ctx == nullptr && watch.seam().allocs == 0);
    s.spare8 = 8;
    ASSERT_EQ(HalftoneNew(&s, &lut, 0, &model, &ctx), RC_OK);
    EXPECT_EQ(model, 7u);
    EXPECT_EQ(std::memcmp(&ctx->method, &s, sizeof s), 0);
    EXPECT_EQ(std::memcmp(&ctx->lut, &lut, sizeof lut), 0);
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
    // {inputFormat, colourMode, outputBits, rc}: a refused layout still hands back the record.
    const uint32_t layouts[][4] = {{0, 0, 1, RC_OK},     {3, 1, 1, RC_OK},     {2, 1, 2, RC_OK},     {4, 2, 1, RC_OK},
                                   {0, 1, 1, RC_ARG + 1}, {3, 0, 1, RC_ARG + 1}, {7, 1, 1, RC_ARG + 1}, {1, 1, 1, RC_ARG + 1},
                                   {0, 0, 0, RC_ARG + 1}, {0, 0, 3, RC_ARG + 1}, {6, 1, 1, RC_ARG + 1}};
    for (const auto& c : layouts) {
        s.inputFormat = c[0];
        s.colourMode = c[1];
        s.outputBits = c[2];
        const HtInstance ht(s, lut, HtBlocks{}, 0);
        EXPECT_EQ(ht.rc, c[3]) << c[0] << "/" << c[1] << "/" << c[2];
        EXPECT_NE(ht.ctx, nullptr);
    }
}

// The answers: the first id, then the matrix id by the resolution class's
// position (General 1, DoubleX 2, 1440 x 720 3, DoubleY 4), then the dot-split
// block for two-bit output; ids arrive widened with their sign.
TEST(RequestList, AnswersByResolutionClass) {
    const std::vector<uint16_t> ids{100, 101, 102, 103, 104};
    const uint32_t end = 0xFFFFFFFFu, none = 0xDEADBEEFu;
    const struct { std::vector<uint16_t> ids; HtSettings s; uint32_t rc; std::vector<uint32_t> answers; } cases[] = {
        {ids, test::htSettings(1, 0, 1), RC_OK, {100, 101, end}},
        {ids, test::htSettings(1, 0, 1, 64, 720, 360), RC_OK, {100, 102, end}},
        {ids, test::htSettings(1, 0, 1, 64, 600, 300), RC_OK, {100, 102, end}},
        {ids, test::htSettings(1, 0, 1, 64, 1440, 720), RC_OK, {100, 103, end}},
        {ids, test::htSettings(1, 0, 1, 64, 720, 1440), RC_OK, {100, 104, end}},
        {ids, test::htSettings(1, 0, 1, 64, 300, 600), RC_OK, {100, 104, end}},
        {ids, test::htSettings(3, 0, 2), RC_OK, {100, 101, 200, end}},
        {{}, test::htSettings(1, 0, 1), RC_OK, {end}},
        {{40000, 32767}, test::htSettings(1, 0, 1), RC_OK, {0xFFFF9C40u, 32767}},
        {{100, 101}, test::htSettings(1, 0, 1, 64, 720, 480), RC_OK, {100, 101}},
        {{100, 101}, test::htSettings(1, 0, 1, 64, 720, 360), RC_DATA, {100, none}},  // position 2 is the terminator
        {{100, 101}, test::htSettings(1, 0, 1, 64, 1440, 720), RC_OK, {100, 0}},      // behind the terminator
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, test::htSettings(1, 0, 1), RC_OK, {1}},
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}, test::htSettings(1, 0, 1), RC_DATA, {none}},
    };
    for (const auto& c : cases) {
        HtBlocks blocks;
        blocks.requestList = test::requestListBlock(c.ids);
        WatchedMono m(c.s, blocks, static_cast<int>(c.answers.size()));
        EXPECT_EQ(m.ht.rc, c.rc) << c.ids.size() << " ids, " << c.s.resolutionX << "x" << c.s.resolutionY;
        EXPECT_EQ(m.ht.answers, c.answers) << c.ids.size() << " ids, " << c.s.resolutionX << "x" << c.s.resolutionY;
        EXPECT_TRUE(c.ids.size() != 16 || m.watch.seam().liveBlocks == 1) << "no slot before the list is read";
        EXPECT_TRUE(c.answers.size() < 3 || m.ctx().kernel == chooseKernel(m.ctx()).kernel) << c.s.resolutionX;
    }
}

// Two-bit output with method 0 has no kernel: Halftone answers 512 after
// replication, which makes the checks before it visible.
TEST(HalftoneCall, ChecksInOrder) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    HtInstance ht(test::htSettings(0, 0, 2, 64), lut.lut);
    std::vector<uint8_t> src(64, 9), dst(256, 0xA5);
    const auto run = [&](HtContext* ctx, uint32_t bitOffset, uint32_t count, uint32_t startX, uint32_t reserved10 = 0) {
        return Halftone(ctx, src.data(), dst.data(), 64, bitOffset, count, startX, 0, 0, reserved10, 0);
    };
    EXPECT_EQ(run(ht.ctx, 0, 4, 60), RC_ARG) << "a run ending at the width is accepted";
    EXPECT_EQ(run(ht.ctx, 0, 5, 60, 1), RC_ARG + 6) << "518 before reserved10";
    EXPECT_EQ(run(ht.ctx, 9, 4, 60, 1), RC_ARG + 10) << "522 before bitOffset";
    EXPECT_EQ(run(ht.ctx, 4, 4, 60), RC_ARG + 5) << "two-bit: four pixels a byte";
    EXPECT_EQ(run(ht.ctx, 3, 4, 60), RC_ARG);
    EXPECT_EQ(run(ht.ctx, 0, 1, 0xFFFFFFFFu), RC_ARG + 6) << "a wrapping sum does not fit";
    for (int phases = 0; phases < 4; ++phases) {
        HtInstance one(test::htSettings(3, 0, 1, 64), lut.lut, HtBlocks{}, phases);
        EXPECT_EQ(run(one.ctx, phases < 3 ? 0 : 8, 4, 0), phases < 3 ? RC_DATA : RC_ARG + 5) << phases << " phases fed";
    }
    for (uint8_t b : dst) ASSERT_EQ(b, 0xA5) << "nothing written";
}

// Repeating by 3 in front of the kernel is the kernel run on every input
// pixel given three times, whatever a pixel's size: gray 1 byte, RGB 3,
// padded RGB and ink 4.
TEST(HalftoneCall, RepeatingCopiesWholePixels) {
    const test::ColourLut grid(test::evenLevels(5), [](int r, int g, int b) {
        return test::ColourLut::Node{uint8_t(255 - r), uint8_t(255 - g), uint8_t(255 - b), uint8_t(r / 2)};
    });
    const test::MonoLut mono([](int v) { return 255 - v; });
    for (const auto& [format, bytes] : {std::pair{0u, 1u}, {2u, 3u}, {3u, 4u}, {4u, 4u}}) {
        HtSettings s = test::htSettings(3, format == 0 ? 0 : 1, 1, 60);
        s.inputFormat = format;
        std::vector<uint8_t> src(20 * bytes), repeated, out[2] = {std::vector<uint8_t>(32), std::vector<uint8_t>(32)};
        for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 37);
        for (size_t i = 0; i < src.size(); i += bytes)
            for (int r = 0; r < 3; ++r) repeated.insert(repeated.end(), src.begin() + i, src.begin() + i + bytes);
        for (int32_t scale : {2, 0}) {
            s.scaleMode = scale;
            HtInstance ht(s, format == 0 ? mono.lut : grid.lut);
            EXPECT_EQ(Halftone(ht.ctx, (scale ? src : repeated).data(), out[scale / 2].data(), 8, 0, 60, 0, 0, 0, 0, 0), RC_OK);
        }
        EXPECT_EQ(out[1], out[0]) << "format " << format;
    }
}

// The kernel every settings row leads to; method 2 is error diffusion, routed like method 1.
TEST(Dispatch, KernelByRow) {
    // The first eight setting words: method, ditherMode, inputFormat, colourMode, resolutionX, resolutionY,
    // outputBits, scaleMode.
    const struct { int32_t s[8]; const char* kernel; } rows[] = {
        {{3, 1, 3, 1, 360, 720, 2, 0}, "Dither2ColourDoubleY"}, {{3, 1, 3, 1, 1440, 720, 2, 0}, "Dither2Colour"},
        {{3, 1, 0, 0, 360, 720, 2, 0}, "Dither2MonoDoubleY"},  {{3, 1, 0, 0, 720, 720, 2, 0}, "Dither2Mono"},
        {{1, 1, 3, 1, 1440, 720, 2, 0}, "Ed2Colour1440x720"},  {{1, 1, 3, 1, 720, 1440, 2, 0}, "Ed2ColourDoubleY"},
        {{1, 1, 3, 1, 720, 720, 2, 0}, "Ed2ColourGeneral"},    {{1, 1, 0, 0, 1440, 720, 2, 0}, "Ed2Mono1440x720"},
        {{1, 1, 0, 0, 360, 720, 2, 0}, "Ed2MonoDoubleY"},      {{1, 1, 0, 0, 720, 360, 2, 0}, "Ed2MonoGeneral"},
        {{0, 1, 0, 0, 720, 720, 2, 0}, "NoTwoBitKernel"},      {{2, 1, 3, 1, 720, 720, 2, 0}, "NoTwoBitKernel"},
        {{3, 1, 0, 0, 360, 720, 1, 0}, "Dither1Mono"},         {{3, 0, 3, 1, 720, 720, 1, 0}, "Dither1ColourHybrid"},
        {{3, 2, 3, 1, 720, 720, 1, 0}, "Dither1ColourHybrid"}, {{3, 1, 3, 1, 720, 720, 1, 0}, "Dither1Colour"},
        {{0, 1, 3, 1, 1440, 720, 1, 0}, "Threshold1Colour"},   {{1, 1, 0, 0, 360, 720, 1, 0}, "Ed1MonoDoubleY"},
        {{1, 1, 0, 0, 1440, 720, 1, 0}, "Ed1Mono1440x720"},    {{1, 1, 3, 1, 360, 720, 1, 0}, "Ed1ColourDoubleY"},
        {{1, 1, 3, 1, 1440, 720, 1, 0}, "Ed1Colour1440x720B"}, {{1, 1, 4, 1, 1440, 720, 1, 0}, "Ed1Colour1440x720"},
        {{1, 1, 3, 1, 720, 720, 1, -1}, "Ed1ColourGeneral"},   {{2, 1, 0, 0, 720, 720, 1, 0}, "Ed1MonoGeneral"},
        {{1, 1, 3, 1, 720, 360, 1, 0}, "Ed1ColourGeneralB"},   {{2, 1, 3, 1, 1440, 720, 1, -1}, "Ed1Colour1440x720"},
    };
    for (const auto& r : rows) {
        HtContext ctx{};
        std::memcpy(&ctx.method, r.s, sizeof r.s);  // the record begins with the settings, as HalftoneNew copies them
        EXPECT_EQ(std::string(chooseKernel(ctx).name), r.kernel) << r.kernel;
    }
}

}  // namespace
}  // namespace inkdot
