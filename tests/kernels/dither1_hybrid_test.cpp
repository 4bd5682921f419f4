// Dither1ColourHybrid: plane 1 by error diffusion on error line 0, the other
// planes exactly as Dither1Colour.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kStride = 16;

KernelSetup hybridSetup() {
    KernelSetup s = colourSetup();
    s.ditherMode = 0;
    return s;
}

// Byte level 1 sits on node 1 and level 3 on node 3: two pixels on them are
// two nodes apart and never smoothed together.
struct Hybrid {
    explicit Hybrid(uint16_t flatMatrixValue) : hc(hybridSetup().settings()) {
        EXPECT_EQ(hc.ready().kernel, &Dither1ColourHybrid);
        hc.setFlatMatrix(16, 16, flatMatrixValue);
        hc.setSpread(32, 9, 4, 2);
        onNode(hc, 0, 0);
        onNode(hc, 1, 1);
        onNode(hc, 3, 3);
        onNode(hc, 255, 31);
    }
    std::vector<int32_t> cells(int from, int to) { return std::vector<int32_t>(hc.line(0) + from, hc.line(0) + to + 1); }
    HandContext hc;
};

// Matrix 0x43: p = +20, subtracted; bit 2 clear picks the a forms although bit 0 (parity) is set.
TEST(Dither1ColourHybrid, WorkedRunOfTwoPixels) {
    Hybrid h(0x43);
    h.hc.setNode(0, 0, 1, packInks(0, 20, 0, 0));
    h.hc.setNode(0, 0, 3, packInks(0, 40, 0, 0));
    h.hc.edThreshold[20] = 45;  // threshold 45 - 20 = 25: sum 30 prints
    h.hc.edThreshold[40] = 35;  // threshold 15
    h.hc.line(0)[10] = 320;     // 10 pending at column 10
    const auto in = rgbPixels({{1, 0, 0}, {3, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(h.hc.run(in.data(), out.data(), kStride, 2, 2, 10, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 1, 4), "0010");
    // Column 10: sum 30, dot, err -225, G2a. Column 11: (-900 >> 5) + 40 = 11 < 15, no dot, G1.
    EXPECT_EQ(h.cells(5, 16), (std::vector<int32_t>{0, -450, -450, -450, -856, -856, -812, -812, -406, -450, -450, 0}));
}

TEST(Dither1ColourHybrid, Bit2SetPicksTheBFormAndWhiteTakesTheCarry) {
    Hybrid h(0x47);  // q = 70: p = +20; bit 2 set
    h.hc.setNode(0, 0, 1, packInks(0, 20, 0, 0));
    h.hc.edThreshold[20] = 45;
    h.hc.line(0)[10] = 320;
    h.hc.line(0)[11] = 5000;  // dropped by the white pixel
    const auto in = rgbPixels({{1, 0, 0}, {255, 255, 255}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(h.hc.run(in.data(), out.data(), kStride, 0, 2, 10, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 1, 2), "10");
    // G2b: x: 6, x+1: 4 (the carry that the white pixel writes), no weight at x+5.
    EXPECT_EQ(h.cells(5, 16), (std::vector<int32_t>{0, -450, -450, -450, -900, -1350, -900, -900, -450, -450, 0, 0}));
}

// Level 2 = spreadThreshold4 is not above it: the lightest band, G5a, 30/32 of the error.
TEST(Dither1ColourHybrid, LevelAtTheLowestThresholdSpreadsWidest) {
    Hybrid h(0x43);
    h.hc.setNode(0, 0, 1, packInks(0, 2, 0, 0));
    h.hc.edThreshold[2] = 30;  // threshold 10
    h.hc.line(0)[20] = 40 * 32;
    const auto in = rgbPixels({{1, 0, 0}, {255, 255, 255}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(h.hc.run(in.data(), out.data(), kStride, 0, 2, 20, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 1, 2), "10");
    // err = 42 - 255 = -213 on columns 21..34 (this line), 5 and 7..20 (next line), 21 again by the carry.
    std::vector<int32_t> expected(31, -213);
    expected[1] = 0;   // column 6: G5a skips x - 14
    expected[30] = 0;  // column 35
    EXPECT_EQ(h.cells(5, 35), expected);
}

TEST(Dither1ColourHybrid, NoInkInPlane1DropsTheCell) {
    Hybrid h(0x43);
    h.hc.setNode(0, 0, 0, packInks(9, 0, 9, 9));
    h.hc.line(0)[20] = 3000;
    h.hc.line(0)[21] = -3000;
    const auto in = rgbPixels({{0, 0, 0}, {0, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(h.hc.run(in.data(), out.data(), kStride, 0, 2, 20, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 1, 2), "00");
    EXPECT_EQ(h.cells(20, 21), (std::vector<int32_t>{0, 0}));
}

TEST(Dither1ColourHybrid, OddLastPixelUsesTheMatrixAndLeavesItsCell) {
    Hybrid h(0);  // maxT 255, t = maxT - m = 255 for planes 1 and 2
    h.hc.tone[30] = 256;
    h.hc.setNode(0, 0, 0, packInks(0, 30, 0, 0));
    h.hc.line(0)[7] = 777;
    const auto in = rgbPixels({{0, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(h.hc.run(in.data(), out.data(), kStride, 0, 1, 7, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 1, 1), "1");
    EXPECT_EQ(h.hc.line(0)[7], 777);
}

TEST(Dither1ColourHybrid, KeepsNoContinuityRuleAndNoRunEnd) {
    Hybrid h(0x43);
    h.hc.setNode(0, 0, 0, packInks(0, 50, 0, 0));
    h.hc.line(0)[40] = 999;
    h.hc.ctx.prevRunEnd = 1234;
    const auto in = rgbPixels({{0, 0, 0}, {0, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    // Line 9 after line 0 would clear the whole line under the continuity rule.
    ASSERT_EQ(h.hc.run(in.data(), out.data(), kStride, 0, 2, 0, 9), RC_OK);
    EXPECT_EQ(h.hc.line(0)[40], 999);
    EXPECT_EQ(h.hc.ctx.prevRunEnd, 1234u);
    EXPECT_EQ(h.hc.ctx.prevLineNo, 9u);
}

// Planes 0, 2 and 3 of the hybrid are Dither1Colour's, on random runs.
TEST(Dither1ColourHybrid, OtherPlanesEqualDither1Colour) {
    std::mt19937 rng(11);
    KernelSetup plainSetup = colourSetup();
    HandContext hybrid(hybridSetup().settings()), plain(plainSetup.settings());
    for (HandContext* hc : {&hybrid, &plain}) {
        hc->setMatrix(16, 16, permutationMatrix(16, 5));
        evenGridCells(*hc);
        hc->setSpread(32, 9, 4, 2);
    }
    for (uint32_t v = 0; v < 256; ++v) hybrid.tone[v] = plain.tone[v] = static_cast<uint16_t>(v);
    for (uint32_t e = 0; e < 32 * 32 * 32; ++e) hybrid.conversion[e] = plain.conversion[e] = static_cast<uint32_t>(rng());
    for (uint32_t trial = 0; trial < 20; ++trial) {
        const uint32_t count = 1 + rng() % 63, startX = rng() % (64 - count + 1), line = rng() % 40;
        std::vector<uint8_t> in(3 * count);
        for (auto& b : in) b = static_cast<uint8_t>(rng() % 4 == 0 ? 255 : rng());
        std::vector<uint8_t> a(4 * kStride), b(4 * kStride);
        ASSERT_EQ(hybrid.run(in.data(), a.data(), kStride, startX % 8, count, startX, line), RC_OK);
        ASSERT_EQ(plain.run(in.data(), b.data(), kStride, startX % 8, count, startX, line), RC_OK);
        for (unsigned k : {0u, 2u, 3u}) EXPECT_EQ(bitsOf(a, kStride, k, 72), bitsOf(b, kStride, k, 72)) << "plane " << k;
    }
}

}  // namespace
}  // namespace inkdot::test
