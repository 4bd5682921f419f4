// Dither1Colour and Threshold1Colour: grid node choice, smoothing, the
// paired threshold rule, white pixels, the last pixel of an odd run, input
// layouts and doubling.
#include <gtest/gtest.h>

#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kStride = 16;  // bytes between output planes in these tests

// Every byte level 0 sits on node 0; the node (0, 0, 0) holds the inks.
HandContext& singleNode(HandContext& hc, uint32_t packed) {
    onNode(hc, 0, 0);
    hc.setNode(0, 0, 0, packed);
    return hc;
}

TEST(Dither1Colour, Planes3And0ShareTheMatrixByThePairedRule) {
    HandContext hc(colourSetup().settings());
    std::vector<uint16_t> cells(64 * 64, 4095);  // maxT = 4095
    const uint16_t row0[8] = {0, 99, 100, 149, 150, 4095, 50, 120};
    std::copy(row0, row0 + 8, cells.begin());
    hc.setMatrix(64, 64, cells);
    hc.tone[7] = 50;   // c0
    hc.tone[9] = 100;  // c3
    singleNode(hc, packInks(7, 0, 0, 9));
    const std::vector<uint8_t> in(3 * 8, 0);
    std::vector<uint8_t> out(4 * kStride, 0xEE);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 8, 0, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 3, 8), "11000010");
    EXPECT_EQ(bitsOf(out, kStride, 0, 8), "00110001");
    EXPECT_EQ(bitsOf(out, kStride, 1, 8), "00000000");
    EXPECT_EQ(bitsOf(out, kStride, 2, 8), "00000000");
}

TEST(Dither1Colour, Planes1And2ReadTheMatrixFromTheTop) {
    HandContext hc(colourSetup().settings());
    std::vector<uint16_t> cells(64 * 64, 0);
    const uint16_t row0[4] = {3995, 3996, 3995, 3996};  // maxT - m = 100, 99
    std::copy(row0, row0 + 4, cells.begin());
    hc.setMatrix(64, 64, cells);
    hc.tone[5] = 100;
    singleNode(hc, packInks(0, 5, 5, 0));
    const std::vector<uint8_t> in(3 * 4, 0);
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 4, 0, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 1, 4), "0101");
    EXPECT_EQ(bitsOf(out, kStride, 2, 4), "0101");
}

TEST(Dither1Colour, OddLastPixelPairsBothPairs) {
    HandContext hc(colourSetup().settings());
    std::vector<uint16_t> cells(64 * 64, 0);
    // maxT - m at columns 0..5: 99, 100, 149, 150, 0, 4095.
    const uint16_t row0[6] = {3996, 3995, 3946, 3945, 4095, 0};
    std::copy(row0, row0 + 6, cells.begin());
    hc.setMatrix(64, 64, cells);
    hc.tone[5] = 100;   // c1
    hc.tone[6] = 50;    // c2
    hc.tone[7] = 50;    // c0
    hc.tone[9] = 3950;  // c3
    singleNode(hc, packInks(7, 5, 6, 9));
    const std::vector<uint8_t> in(3, 0);
    std::string plane0, plane1, plane2, plane3;
    for (uint32_t x = 0; x < 6; ++x) {
        std::vector<uint8_t> out(4 * kStride);
        ASSERT_EQ(hc.run(in.data(), out.data(), kStride, 0, 1, x, 0), RC_OK);
        plane0 += bitsOf(out, kStride, 0, 1);
        plane1 += bitsOf(out, kStride, 1, 1);
        plane2 += bitsOf(out, kStride, 2, 1);
        plane3 += bitsOf(out, kStride, 3, 1);
    }
    EXPECT_EQ(plane1, "100010");
    EXPECT_EQ(plane2, "011000");
    // Planes 3 and 0 pair against m itself: 3 where 3950 > m, else 0 where 4000 > m.
    EXPECT_EQ(plane3, "001101");
    EXPECT_EQ(plane0, "110000");
}

// A 4 x 4 matrix (maxT 15) and tone 16 for the marked amounts: any plane
// alone prints exactly where its amount is marked, whatever the matrix value.
struct MarkedAmounts {
    explicit MarkedAmounts(KernelSetup s = colourSetup()) : hc(s.settings()) {
        hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
    }
    void mark(std::initializer_list<uint8_t> amounts) {
        for (uint8_t a : amounts) hc.tone[a] = 16;
    }
    void setRow0(std::initializer_list<uint16_t> values) { std::copy(values.begin(), values.end(), hc.matrix.begin()); }
    HandContext hc;
};

uint32_t inkOn(unsigned plane, uint32_t amount) { return amount << (8 * plane); }

class Smoothing : public ::testing::TestWithParam<unsigned> {};

// A, white, B, B: B is averaged with A across the white pixel (rounding up
// on bit 2 of m clear), then with itself smoothed; plane 2 is never smoothed.
TEST_P(Smoothing, AveragesWithThePreviousNonWhitePixel) {
    const unsigned plane = GetParam();
    MarkedAmounts t;
    t.setRow0({0, 0, 0, 4});
    t.mark({10, 16, 18});  // 10 = A; (21 + 10 + 1) >> 1 = 16; (21 + 16 + 0) >> 1 = 18
    onNode(t.hc, 0, 0);
    onNode(t.hc, 1, 1);
    onNode(t.hc, 255, 3);
    t.hc.setNode(0, 0, 0, inkOn(plane, 10));
    t.hc.setNode(0, 0, 1, inkOn(plane, 21));
    t.hc.setNode(3, 3, 3, inkOn(plane, 10));
    const auto in = rgbPixels({{0, 0, 0}, {255, 255, 255}, {1, 0, 0}, {1, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 4, 0, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, plane, 4), plane == 2 ? "1000" : "1011");
}
INSTANTIATE_TEST_SUITE_P(Planes, Smoothing, ::testing::Values(0u, 1u, 2u, 3u));

class NodeDistance : public ::testing::TestWithParam<unsigned> {};

// Along each axis: node indices 1 apart are smoothed, 2 apart are not.
TEST_P(NodeDistance, OneApartSmoothsTwoApartDoesNot) {
    const unsigned axis = GetParam();  // byte b_axis moves
    MarkedAmounts t;
    t.mark({30});  // (40 + 20 + 0) >> 1 with m = 4
    t.setRow0({4, 4, 4, 4});
    onNode(t.hc, 0, 0);
    onNode(t.hc, 1, 1);
    onNode(t.hc, 2, 2);
    uint32_t step1[3] = {0, 0, 0}, step2[3] = {0, 0, 0};
    step1[2 - axis] = 1;  // b2 selects the first node index
    step2[2 - axis] = 2;
    t.hc.setNode(0, 0, 0, inkOn(0, 20));
    t.hc.setNode(step1[0], step1[1], step1[2], inkOn(0, 40));
    t.hc.setNode(step2[0], step2[1], step2[2], inkOn(0, 40));
    for (uint8_t far : {1, 2}) {
        std::vector<uint8_t> in = rgbPixels({{0, 0, 0}, {0, 0, 0}});
        in[3 + axis] = far;
        std::vector<uint8_t> out(4 * kStride);
        ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 2, 0, 0), RC_OK);
        EXPECT_EQ(bitsOf(out, kStride, 0, 2), far == 1 ? "01" : "00") << "axis " << axis << " distance " << int(far);
    }
}
INSTANTIATE_TEST_SUITE_P(Axes, NodeDistance, ::testing::Values(0u, 1u, 2u));

TEST(Dither1Colour, EachRunStartsUnsmoothed) {
    MarkedAmounts t;
    t.setRow0({4, 4, 4, 4});
    t.mark({30});
    onNode(t.hc, 0, 0);
    onNode(t.hc, 1, 1);
    t.hc.setNode(0, 0, 0, inkOn(0, 20));
    t.hc.setNode(0, 0, 1, inkOn(0, 40));
    const auto in = rgbPixels({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, 0, 0}});
    std::vector<uint8_t> whole(4 * kStride), split(4 * kStride);
    ASSERT_EQ(t.hc.run(in.data(), whole.data(), kStride, 0, 4, 0, 0), RC_OK);
    ASSERT_EQ(t.hc.run(in.data(), split.data(), kStride, 0, 2, 0, 0), RC_OK);
    ASSERT_EQ(t.hc.run(in.data() + 6, split.data(), kStride, 2, 2, 2, 0), RC_OK);
    EXPECT_EQ(bitsOf(whole, kStride, 0, 4), "0010");
    EXPECT_EQ(bitsOf(split, kStride, 0, 4), "0000");
}

TEST(Dither1Colour, MatrixBits1To7ChooseTheUpperNode) {
    MarkedAmounts t;
    std::vector<uint16_t> cells(32 * 16, 0);  // 512 cells
    const uint16_t row0[8] = {99, 99, 100, 100, 101, 101, 355, 355};  // q = 98, 100, 100, 98
    std::copy(row0, row0 + 8, cells.begin());
    t.hc.setMatrix(32, 16, cells);
    t.hc.tone[200] = 600;  // above maxT 511: plane 2 prints on any cell
    t.hc.setGridCell(77, 3, 100);
    t.hc.setNode(4, 4, 4, inkOn(2, 200));
    const auto in = rgbPixels({{77, 77, 77}, {77, 77, 77}});
    std::string plane2;
    for (uint32_t x = 0; x < 8; x += 2) {
        std::vector<uint8_t> out(4 * kStride);
        ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 2, x, 0), RC_OK);
        plane2 += bitsOf(out, kStride, 2, 2);
    }
    EXPECT_EQ(plane2, "00111100");
}

TEST(Dither1Colour, WhiteInTheMainPassButLookedUpAsTheOddLastPixel) {
    MarkedAmounts t;
    t.mark({50});
    onNode(t.hc, 255, 31);
    t.hc.setNode(31, 31, 31, packInks(50, 50, 50, 50));
    const auto in = rgbPixels({{255, 255, 255}, {255, 255, 255}, {255, 255, 255}});
    std::vector<uint8_t> out(4 * kStride, 0xFF);
    ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 3, 0, 0), RC_OK);
    // Only the last pixel prints; tone 16 overfills both pairs, so all four planes print.
    for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(bitsOf(out, kStride, k, 8), "00100000") << "plane " << k;
}

TEST(Dither1Colour, DoublingAndTheOddLastPixelReadTheNextInputPixel) {
    KernelSetup s = colourSetup();
    s.scaleMode = 1;
    MarkedAmounts t(s);
    t.mark({60});
    onNode(t.hc, 0, 0);
    onNode(t.hc, 1, 1);
    t.hc.setNode(0, 0, 1, inkOn(2, 60));
    const auto in = rgbPixels({{1, 0, 0}, {0, 0, 0}, {1, 0, 0}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 5, 0, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 2, 8), "11001000");
}

KernelSetup inkInput() {
    KernelSetup s = colourSetup();
    s.inputFormat = 4;
    return s;
}

TEST(Dither1Colour, InkInputTakesTheFourBytesAsAmounts) {
    MarkedAmounts t(inkInput());
    t.mark({40});
    const std::vector<uint8_t> in = {40, 0, 0, 0, /**/ 0, 0, 40, 0, /**/ 0, 40, 0, 0};
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 3, 0, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 0, 3), "100");
    EXPECT_EQ(bitsOf(out, kStride, 2, 3), "010");
    EXPECT_EQ(bitsOf(out, kStride, 1, 3), "001");
    EXPECT_EQ(bitsOf(out, kStride, 3, 3), "000");
}

TEST(Dither1Colour, InkInputWithoutInkIsWhiteOnlyInTheMainPass) {
    MarkedAmounts t(inkInput());
    t.mark({0});  // an amount of 0 that would print: only the white test keeps pixels blank
    const std::vector<uint8_t> in(12, 0);
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 3, 0, 0), RC_OK);
    for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(bitsOf(out, kStride, k, 3), "001") << "plane " << k;
}

TEST(Threshold1Colour, BitsAbove128PickTheSmallGridEntry) {
    KernelSetup s = colourSetup();
    s.method = 0;
    MarkedAmounts t(s);
    t.mark({70});
    for (uint32_t entry = 0; entry < 8; ++entry) {
        std::fill(t.hc.conversion.begin(), t.hc.conversion.begin() + 8, 0u);
        t.hc.conversion[entry] = inkOn(2, 70);
        std::string plane2;
        for (uint32_t p = 0; p < 8; ++p) {
            // Pixel p: byte k is 129 when bit k of p is set, else 128 (which counts as 0).
            const uint8_t b0 = (p & 1) ? 129 : 128, b1 = (p & 2) ? 129 : 128, b2 = (p & 4) ? 129 : 128;
            const std::vector<uint8_t> in = {b0, b1, b2};
            std::vector<uint8_t> out(4 * kStride);
            ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 1, 0, 0), RC_OK);
            plane2 += bitsOf(out, kStride, 2, 1);
        }
        // Entry (bit2 * 2 + bit1) * 2 + bit0: pixel p reads entry p.
        std::string expected(8, '0');
        expected[entry] = '1';
        EXPECT_EQ(plane2, expected) << "entry " << entry;
    }
}

TEST(Threshold1Colour, AllBitsSetIsWhiteOnlyInTheMainPass) {
    KernelSetup s = colourSetup();
    s.method = 0;
    MarkedAmounts t(s);
    t.mark({70});
    t.hc.conversion[7] = inkOn(2, 70);
    const auto in = rgbPixels({{200, 200, 200}, {129, 129, 129}, {255, 255, 255}});
    std::vector<uint8_t> out(4 * kStride);
    ASSERT_EQ(t.hc.run(in.data(), out.data(), kStride, 0, 3, 0, 0), RC_OK);
    EXPECT_EQ(bitsOf(out, kStride, 2, 3), "001");
}

}  // namespace
}  // namespace inkdot::test
