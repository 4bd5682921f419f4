// Spread thresholds of phase 3, by resolution class and ink parameter.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using Four = std::array<int32_t, 4>;

struct Outcome {
    uint32_t rc;
    Four t;
    bool tablesKept;
};

Outcome spreadOf(uint32_t method, uint32_t outputBits, uint32_t resX, uint32_t resY, int32_t inkParam0) {
    test::MonoLut lut([](int v) { return 255 - v; }, inkParam0);
    HtSettings s = test::htSettings(method, 0, outputBits);
    s.resolutionX = resX;
    s.resolutionY = resY;
    test::HtInstance ht(s, lut.lut, test::HtBlocks{}, 3);
    const HtContext& c = *ht.ctx;
    return {ht.rc, {c.spreadThreshold1, c.spreadThreshold2, c.spreadThreshold3, c.spreadThreshold4},
            c.buffers[kThresholdMatrix].handle != nullptr && c.buffers[kDotValueTable].handle != nullptr};
}

TEST(SpreadThresholds, OneBitEveryClassAndInkParameter) {
    test::MemoryWatch watch;
    struct Row { uint32_t method, resX, resY; Four t250, t350, t500; };
    const Row rows[] = {
        {1, 720, 720, {32, 9, 4, 2}, {37, 20, 5, 2}, {55, 22, 8, 3}},        // equal resolutions
        {3, 360, 360, {32, 9, 4, 2}, {37, 20, 5, 2}, {55, 22, 8, 3}},
        {1, 1440, 720, {30, 8, 5, 2}, {35, 18, 6, 3}, {52, 20, 9, 4}},       // 1440x720, error diffusion
        {2, 1440, 720, {30, 8, 5, 2}, {35, 18, 6, 3}, {52, 20, 9, 4}},       // method 2 diffuses like 1
        {1, 720, 1440, {40, 23, 6, 1}, {47, 30, 13, 2}, {63, 39, 14, 3}},    // DoubleY
        {3, 360, 720, {40, 23, 6, 1}, {47, 30, 13, 2}, {63, 39, 14, 3}},
        {3, 1440, 720, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},   // 1440x720, any other method: last row
        {0, 1440, 720, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},
        {4, 1440, 720, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},
        {5, 1440, 720, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},
        {9, 1440, 720, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},
        {5, 720, 720, {32, 9, 4, 2}, {37, 20, 5, 2}, {55, 22, 8, 3}},        // other methods in the other classes
        {6, 720, 1440, {40, 23, 6, 1}, {47, 30, 13, 2}, {63, 39, 14, 3}},
        {4, 720, 360, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},
        {1, 720, 360, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},    // any other
        {1, 720, 480, {56, 22, 11, 4}, {59, 27, 12, 5}, {60, 32, 14, 7}},
    };
    for (const Row& r : rows) {
        const Four* want[] = {&r.t250, &r.t350, &r.t500};
        const int32_t params[] = {250, 350, 500};
        for (int p = 0; p < 3; ++p) {
            const Outcome got = spreadOf(r.method, 1, r.resX, r.resY, params[p]);
            EXPECT_EQ(got.rc, RC_OK);
            EXPECT_EQ(got.t, *want[p]) << "method " << r.method << " " << r.resX << "x" << r.resY << " ink " << params[p];
        }
    }
}

// Worked by hand: method 5 at 1440x720 takes the last row (T1 = 56). Ink
// 255 - 200 = 55 on every pixel of two ten-pixel lines, with a one-cell matrix
// holding 0. On line 1 the dot at x 2 is spread with H2 (55 <= T1) rather than
// H1, which the 1440x720 row's T1 = 30 would pick; line 1 prints 20 00 (H1
// would give 21 00).
TEST(SpreadThresholds, Method5At1440x720DiffusesWithTheLastRow) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; }, 250, 100);
    HtSettings s = test::htSettings(5, 0, 1, 10);
    s.resolutionX = 1440;
    s.resolutionY = 720;
    test::HtBlocks blocks;
    blocks.matrix = test::thresholdMatrixBlock(1, 1, {0});
    test::HtInstance ht(s, lut.lut, blocks);
    ASSERT_EQ(ht.rc, RC_OK);
    const std::vector<uint8_t> line(10, 200);
    uint8_t out[2];
    ASSERT_EQ(Halftone(ht.ctx, line.data(), out, 2, 0, 10, 0, 0, 0, 0, 0), RC_OK);
    ASSERT_EQ(Halftone(ht.ctx, line.data(), out, 2, 0, 10, 0, 0, 1, 0, 0), RC_OK);
    EXPECT_EQ(out[0], 0x20);
    EXPECT_EQ(out[1], 0x00);
}

TEST(SpreadThresholds, OneBitOtherInkParameterRefusedKeepingTheSlots) {
    test::MemoryWatch watch;
    for (int32_t param : {0, 249, 300, 501, -250}) {
        const Outcome got = spreadOf(1, 1, 720, 720, param);
        EXPECT_EQ(got.rc, RC_DATA) << param;
        EXPECT_TRUE(got.tablesKept);
    }
}

TEST(SpreadThresholds, TwoBitByClassOnly) {
    test::MemoryWatch watch;
    EXPECT_EQ(spreadOf(1, 2, 1440, 720, 0).t, (Four{14, 3, 0, 0}));
    EXPECT_EQ(spreadOf(1, 2, 720, 720, 0).t, (Four{15, 3, 1, 0}));
    EXPECT_EQ(spreadOf(3, 2, 720, 1440, 123).t, (Four{111, 8, 2, 0}));
    EXPECT_EQ(spreadOf(1, 2, 720, 1440, 0).rc, RC_OK) << "inkParam[0] not consulted";
}

TEST(SpreadThresholds, TwoBitGeneralAndDoubleXRefusedKeepingTheSlots) {
    test::MemoryWatch watch;
    for (auto [x, y] : {std::pair{720u, 480u}, std::pair{720u, 360u}}) {
        const Outcome got = spreadOf(1, 2, x, y, 250);
        EXPECT_EQ(got.rc, RC_ARG + 1) << x << "x" << y;
        EXPECT_TRUE(got.tablesKept);
    }
}

}  // namespace
}  // namespace inkdot
