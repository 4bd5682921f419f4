// Two-bit ordered dither: the three-size code rule, the level shift of the
// monochrome kernels, the four matrix places of the colour planes, the
// nearest-node last pixel, and the DoubleY kernels' halving.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kStride = 16;

// Split rows by the dot size they print on a threshold of 0: tone[8] = 1000.
constexpr uint8_t kMark = 8;
void splitRows(HandContext& hc, std::initializer_list<uint8_t> small, std::initializer_list<uint8_t> medium,
               std::initializer_list<uint8_t> large) {
    hc.tone[kMark] = 1000;
    for (uint8_t r : small) hc.setSplit(r, kMark, 0, 0);
    for (uint8_t r : medium) hc.setSplit(r, 0, kMark, 0);
    for (uint8_t r : large) hc.setSplit(r, 0, 0, kMark);
}

// The padded curve with no level spread: level v gives curve entry v + 1.
void flatShiftCurve(HandContext& hc, std::initializer_list<std::pair<uint8_t, uint16_t>> levels) {
    hc.monoCurve()[0] = 1;
    for (auto [v, amount] : levels) hc.monoCurve()[v + 1] = amount;
}

TEST(Dither2Mono, ThreeSizeCodeStacksLargeMediumSmall) {
    HandContext hc(monoSetup(2).settings());
    hc.setMatrix(8, 8, {0, 299, 300, 499, 500, 599, 600, 4095});
    hc.tone[1] = 100;
    hc.tone[2] = 200;
    hc.tone[3] = 300;
    hc.setSplit(9, 1, 2, 3);
    flatShiftCurve(hc, {{50, 9}});
    const std::vector<uint8_t> in(8, 50);
    std::vector<uint8_t> out(2);
    ASSERT_EQ(hc.run(in.data(), out.data(), 0, 0, 8, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, 0, 0, 8), "33221100");
}

TEST(Dither2Mono, FullLargeRowAlwaysLargeEmptyRowNever) {
    HandContext hc(monoSetup(2).settings());
    hc.setMatrix(16, 16, permutationMatrix(16, 1));
    hc.tone[255] = 256;  // above every matrix value
    hc.setSplit(200, 0, 0, 255);
    hc.setSplit(0, 0, 0, 0);
    flatShiftCurve(hc, {{10, 200}, {20, 0}});
    for (auto [level, code] : {std::pair<uint8_t, char>{10, '3'}, {20, '0'}}) {
        std::vector<uint8_t> in(64, level), out(16);
        for (uint32_t line = 0; line < 16; ++line) {
            ASSERT_EQ(hc.run(in.data(), out.data(), 0, 0, 64, 0, line), RC_OK);
            EXPECT_EQ(codesOf(out, 0, 0, 64), std::string(64, code));
        }
    }
}

TEST(Dither2Mono, MatrixShiftsTheLevelBeforeTheCurve) {
    HandContext hc(monoSetup(2).settings());
    std::vector<uint16_t> row(32, 0);  // thresholds 0 at columns 0..4
    const uint16_t shift[5] = {0, 1, 2, 3, 5};  // modulo W = 4: 0, 1, 2, 3, 1
    std::copy(shift, shift + 5, row.begin() + 24);
    hc.setMatrix(32, 1, row);
    splitRows(hc, {1}, {2}, {3});
    hc.monoCurve()[0] = 4;
    const uint16_t curveAt11[4] = {0, 1, 2, 3};  // entries d + 10 + 1
    std::copy(curveAt11, curveAt11 + 4, hc.monoCurve() + 11);
    const std::vector<uint8_t> in(5, 10);
    std::vector<uint8_t> out(2);
    ASSERT_EQ(hc.run(in.data(), out.data(), 0, 0, 5, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, 0, 0, 5), "01231");
}

TEST(Dither2Mono, HalvingIsTheDoubleYKernelsOnly) {
    const std::vector<uint8_t> in = {5, 9, 9, 5, 9, 9, 5, 5};
    for (bool dy : {false, true}) {
        KernelSetup s = monoSetup(2);
        s.scaleMode = -1;
        HandContext hc((dy ? doubleY(s) : s).settings());
        splitRows(hc, {}, {}, {3});
        flatShiftCurve(hc, {{5, 3}, {9, 0}});
        std::vector<uint8_t> out(1);
        ASSERT_EQ(hc.run(in.data(), out.data(), 0, 0, 4, 0, 0), RC_OK);
        EXPECT_EQ(codesOf(out, 0, 0, 4), dy ? "3303" : "3003");
    }
}

TEST(Dither2Colour, EachPlaneReadsItsOwnMatrixPlace) {
    HandContext hc(colourSetup(2).settings());
    std::vector<uint16_t> cells(64 * 32, 4095);
    // Line 40: row A = 40 mod 32 = 8, row B = 64 mod 32 = 0.
    cells[8 * 64 + 0] = 0;        // plane 0 at pixel 0: row A, column x
    cells[0 * 64 + 16 + 1] = 0;   // plane 1 at pixel 1: row B, column x + 16
    cells[8 * 64 + 48 + 2] = 0;   // plane 2 at pixel 2: row A, column x + 48
    cells[0 * 64 + 40 + 3] = 0;   // plane 3 at pixel 3: row B, column x + 40
    hc.setMatrix(64, 32, cells);
    splitRows(hc, {}, {}, {7});
    onNode(hc, 0, 0);
    hc.setNode(0, 0, 0, packInks(7, 7, 7, 7));
    const std::vector<uint8_t> in(12, 0);
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 4, 0, 40), RC_OK);
    EXPECT_EQ(codesOf(out, kStride, 0, 4), "3000");
    EXPECT_EQ(codesOf(out, kStride, 1, 4), "0300");
    EXPECT_EQ(codesOf(out, kStride, 2, 4), "0030");
    EXPECT_EQ(codesOf(out, kStride, 3, 4), "0003");
}

// Amounts 10, 40, 31, 32: rows 10 and 31 would print large, 40 and 32 medium.
void lastPixelRows(HandContext& hc) {
    hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
    splitRows(hc, {}, {40, 32}, {10, 31});
}

TEST(Dither2Colour, OddLastPixelTakesTheNearestNodeAndDropsSmallAmounts) {
    HandContext hc(colourSetup(2).settings());
    lastPixelRows(hc);
    hc.setGridCell(50, 2, 128);  // weight 128: the upper node 3 is nearer or as near
    hc.setGridCell(60, 2, 129);  // node 2
    onNode(hc, 70, 5);
    hc.setNode(5, 2, 3, packInks(10, 40, 31, 32));
    const auto in = rgbPixels({{50, 60, 70}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 1, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, kStride, 0, 1) + codesOf(out, kStride, 1, 1) + codesOf(out, kStride, 2, 1) +
                  codesOf(out, kStride, 3, 1),
              "0202");
}

TEST(Dither2Colour, InkInputLastPixelKeepsSmallAmounts) {
    KernelSetup s = colourSetup(2);
    s.inputFormat = 4;
    HandContext hc(s.settings());
    lastPixelRows(hc);
    const std::vector<uint8_t> in = {10, 40, 31, 32};
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 1, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, kStride, 0, 1) + codesOf(out, kStride, 1, 1) + codesOf(out, kStride, 2, 1) +
                  codesOf(out, kStride, 3, 1),
              "3232");
}

TEST(Dither2Colour, InkInputMainPassTakesAmountsAndSkipsPixelsWithoutInk) {
    KernelSetup s = colourSetup(2);
    s.inputFormat = 4;
    HandContext hc(s.settings());
    hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
    splitRows(hc, {}, {9}, {0});  // a zero amount would print large but for the white test
    const std::vector<uint8_t> in = {0, 0, 0, 0, /**/ 9, 0, 9, 0, /**/ 0, 0, 0, 0};
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 3, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, kStride, 0, 3), "023");
    EXPECT_EQ(codesOf(out, kStride, 1, 3), "033");
    EXPECT_EQ(codesOf(out, kStride, 2, 3), "023");
}

TEST(Dither2Colour, WhiteInTheMainPassButLookedUpAsTheOddLastPixel) {
    HandContext hc(colourSetup(2).settings());
    hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
    splitRows(hc, {}, {}, {60});
    onNode(hc, 255, 31);
    hc.setNode(31, 31, 31, packInks(60, 60, 60, 60));
    const auto in = rgbPixels({{255, 255, 255}, {255, 255, 255}, {255, 255, 255}});
    std::vector<uint8_t> out(4 * kStride, 0xFF);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 3, 0, 0), RC_OK);
    for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(codesOf(out, kStride, k, 4), "0030") << "plane " << k;
}

TEST(Dither2Colour, SmoothsWithRoundingFromRowA) {
    HandContext hc(colourSetup(2).settings());
    hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));  // bit 2 clear: round up
    splitRows(hc, {}, {}, {16});                       // (21 + 10 + 1) >> 1
    onNode(hc, 0, 0);
    onNode(hc, 1, 1);
    hc.setNode(0, 0, 0, packInks(10, 0, 0, 0));
    hc.setNode(0, 0, 1, packInks(21, 0, 0, 0));
    const auto in = rgbPixels({{0, 0, 0}, {1, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 2, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, kStride, 0, 2), "03");
}

TEST(Dither2Colour, DoublingAndTheOddLastPixelReadTheNextInputPixel) {
    KernelSetup s = colourSetup(2);
    s.scaleMode = 1;
    HandContext hc(s.settings());
    hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
    splitRows(hc, {}, {}, {60});
    onNode(hc, 0, 0);
    onNode(hc, 1, 1);
    hc.setNode(0, 0, 1, packInks(0, 0, 60, 0));
    const auto in = rgbPixels({{1, 0, 0}, {0, 0, 0}, {1, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 5, 0, 0), RC_OK);
    EXPECT_EQ(codesOf(out, kStride, 2, 8), "33003000");
}

// Random tables shared by a sister pair.
void randomTwoBitTables(HandContext& hc, uint32_t seed) {
    std::mt19937 rng(seed);
    hc.setMatrix(16, 16, permutationMatrix(16, seed));
    evenGridCells(hc);
    for (uint32_t v = 0; v < 256; ++v) hc.tone[v] = static_cast<uint16_t>(v);
    for (uint32_t r = 0; r < 256; ++r) {
        const uint32_t s = rng() % 86, m = rng() % 86, l = rng() % 84;
        hc.setSplit(static_cast<uint8_t>(r), static_cast<uint8_t>(s), static_cast<uint8_t>(m), static_cast<uint8_t>(l));
    }
    for (uint32_t e = 0; e < 32 * 32 * 32; ++e) hc.conversion[e] = static_cast<uint32_t>(rng());
    hc.monoCurve()[0] = 6;  // the mono kernels' curve overlays the start of the grid
}

std::vector<uint8_t> pairwiseSmaller(const std::vector<uint8_t>& in, uint32_t pixelBytes) {
    std::vector<uint8_t> out;
    for (size_t p = 0; p + 2 * pixelBytes <= in.size(); p += 2 * pixelBytes)
        for (uint32_t k = 0; k < pixelBytes; ++k) out.push_back(std::min(in[p + k], in[p + pixelBytes + k]));
    return out;
}

class DoubleYSister : public ::testing::TestWithParam<bool> {};

// With scaleMode -1 each DoubleY kernel equals its sister fed the smaller
// values of each input pair; with scaleMode 0 it equals its sister outright.
TEST_P(DoubleYSister, IsTheSisterPlusTheHalving) {
    const bool colour = GetParam();
    const uint32_t pixelBytes = colour ? 3 : 1;
    std::mt19937 rng(23);
    for (int32_t scaleMode : {-1, 0}) {
        KernelSetup sister = colour ? colourSetup(2) : monoSetup(2);
        KernelSetup halving = doubleY(sister);
        halving.scaleMode = scaleMode;
        HandContext a(halving.settings()), b(sister.settings());
        randomTwoBitTables(a, 9);
        randomTwoBitTables(b, 9);
        for (uint32_t trial = 0; trial < 20; ++trial) {
            const uint32_t count = 1 + rng() % 63, startX = rng() % (64 - count + 1), line = rng() % 50;
            std::vector<uint8_t> in(2 * pixelBytes * count);
            for (auto& byte : in) byte = static_cast<uint8_t>(rng() % 5 == 0 ? 255 : rng());
            const std::vector<uint8_t> reduced = scaleMode == -1 ? pairwiseSmaller(in, pixelBytes) : in;
            std::vector<uint8_t> outA(4 * kStride), outB(4 * kStride);
            ASSERT_EQ(a.run(in.data(), outA.data(), kStride, startX % 4, count, startX, line), RC_OK);
            ASSERT_EQ(b.run(reduced.data(), outB.data(), kStride, startX % 4, count, startX, line), RC_OK);
            EXPECT_EQ(outA, outB) << "scaleMode " << scaleMode << " trial " << trial;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(MonoAndColour, DoubleYSister, ::testing::Values(false, true));

}  // namespace
}  // namespace inkdot::test
