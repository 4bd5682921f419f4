// Dither1ColourHybrid: plane 1 by error diffusion on error line 0, the other
// planes exactly as Dither1Colour.
#include <gtest/gtest.h>

#include <functional>
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
// two nodes apart and never smoothed together. A matrix value of 0x43 gives
// p = +20 (subtracted), and bit 2 clear picks the a forms although bit 0 is set.
struct Case {
    const char* what;
    uint16_t matrix;
    std::function<void(HandContext&)> tables;
    std::vector<uint8_t> in;
    uint32_t startX, line;
    std::string plane1;
    int from;  // the cells of error line 0 from this column on
    std::vector<int32_t> cells;
};

std::vector<int32_t> lowestBand() {
    std::vector<int32_t> cells(31, -213);
    cells[1] = cells[30] = 0;  // columns 6 (G5a skips x - 14) and 35
    return cells;
}

TEST(Dither1ColourHybrid, HandWorkedRuns) {
    const Case cases[] = {
        // Column 10: sum 10 + 20 = 30 >= 45 - 20, dot, err -225, G2a. Column 11: (-900 >> 5)
        // + 40 = 11 < 35 - 20, no dot, G1.
        {"a worked run of two pixels", 0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 20, 0, 0)), hc.setNode(0, 0, 3, packInks(0, 40, 0, 0));
             hc.edThreshold[20] = 45, hc.edThreshold[40] = 35;
             hc.line(0)[10] = 320;
         }, {1, 0, 0, 3, 0, 0}, 10, 0, "10", 5, {0, -450, -450, -450, -856, -856, -812, -812, -406, -450, -450, 0}},
        // q = 70: p = +20; bit 2 set: G2b, 6 at x, 4 at x + 1 (the carry, which the white
        // pixel writes over its pending 5000), nothing at x + 5.
        {"bit 2 set picks the b form and white takes the carry", 0x47, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 20, 0, 0));
             hc.edThreshold[20] = 45;
             hc.line(0)[10] = 320, hc.line(0)[11] = 5000;
         }, {1, 0, 0, 255, 255, 255}, 10, 0, "10", 5, {0, -450, -450, -450, -900, -1350, -900, -900, -450, -450, 0, 0}},
        // Level 2 = spreadThreshold4 is not above it: G5a, 30/32 of err = 42 - 255 = -213 on
        // columns 21..34 (this line), 5 and 7..20 (next line), 21 again by the carry.
        {"a level at the lowest threshold spreads widest", 0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 2, 0, 0));
             hc.edThreshold[2] = 30;
             hc.line(0)[20] = 40 * 32;
         }, {1, 0, 0, 255, 255, 255}, 20, 0, "10", 5, lowestBand()},
        {"no ink in plane 1 drops the cell", 0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 0, packInks(9, 0, 9, 9));
             hc.line(0)[20] = 3000, hc.line(0)[21] = -3000;
         }, {0, 0, 0, 0, 0, 0}, 20, 0, "00", 20, {0, 0}},
        // maxT 255 - m 0 = 255 < tone 256 for planes 1 and 2.
        {"the odd last pixel uses the matrix and leaves its cell", 0, [](HandContext& hc) {
             hc.tone[30] = 256;
             hc.setNode(0, 0, 0, packInks(0, 30, 0, 0));
             hc.line(0)[7] = 777;
         }, {0, 0, 0}, 7, 0, "1", 7, {777}},
        // Line 9 after line 0 would clear the whole line under the continuity rule.
        {"no continuity rule", 0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 0, packInks(0, 50, 0, 0));
             hc.line(0)[40] = 999;
         }, {0, 0, 0, 0, 0, 0}, 0, 9, "00", 40, {999}},  // 50 < 128 - 20
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        HandContext hc(hybridSetup().settings());
        EXPECT_EQ(hc.ready().kernel, &Dither1ColourHybrid);
        hc.setFlatMatrix(16, 16, c.matrix);
        hc.setSpread(32, 9, 4, 2);
        for (uint8_t n : {0, 1, 3}) onNode(hc, n, n);
        onNode(hc, 255, 31);
        c.tables(hc);
        hc.ctx.prevRunEnd = 1234;
        const auto count = static_cast<uint32_t>(c.in.size() / 3);
        EXPECT_EQ(runPlanes(hc, c.in, count, c.startX, c.line).substr(count + 1, count), c.plane1);
        EXPECT_EQ(std::vector<int32_t>(hc.line(0) + c.from, hc.line(0) + c.from + c.cells.size()), c.cells);
        EXPECT_EQ(hc.ctx.prevRunEnd, 1234u) << "no run end kept";
        EXPECT_EQ(hc.ctx.prevLineNo, c.line);
    }
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
