#include <gtest/gtest.h>

#include <vector>

#include "support/hand_context.h"
#include "kernels/kernels.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kWidth = 64;

struct Mono : Ed2Hand {
    explicit Mono(uint32_t resX = 720, uint32_t resY = 720, int32_t scaleMode = 0)
        : Ed2Hand(ed2Settings(0, 0, resX, resY, kWidth, scaleMode)) {}
    std::vector<uint8_t> out = std::vector<uint8_t>(8, 0);
    uint32_t runBytes(const std::vector<uint8_t>& in, uint32_t startX, uint32_t lineNo = 0, uint32_t bitOffset = 0) {
        return run(in.data(), out.data(), 0, bitOffset, static_cast<uint32_t>(in.size()), startX, lineNo);
    }
};

// The worked example: tone 16 i, row {40, 60, 0} with threshold 100, cell 320.
struct WorkedExample : Mono {
    static constexpr uint8_t kInput = 7;
    static constexpr uint8_t kRow = 50;
    static constexpr uint32_t kX = 10;
    explicit WorkedExample(uint16_t matrixValue) {
        setFlatMatrix(1, 1, matrixValue);
        mapGray(kInput, kRow);
        setSplit(kRow, 40, 60, 0);
        edThreshold[kRow] = 100;
        line(0)[kX] = 320;
    }
    void expectG1Spread() {
        // err = 110 - 255 = -145 spread by G1 (the medium amount forces it).
        EXPECT_EQ(line(0)[kX], -1160);
        EXPECT_EQ(line(0)[kX + 1], -1160);
        EXPECT_EQ(line(0)[kX + 2], -580);
        EXPECT_EQ(line(0)[kX - 1], -580);
        EXPECT_EQ(line(0)[kX - 2], -580);
        EXPECT_EQ(line(0)[kX - 3], 0);
        EXPECT_EQ(line(0)[kX + 3], 0);
    }
};

TEST(Ed2MonoWorkedExample, MatrixBelowMediumTonePrintsMedium) {
    WorkedExample w(500);  // tone(60) + tone(0) = 960 > 500
    ASSERT_EQ(w.runBytes({WorkedExample::kInput}, WorkedExample::kX), RC_OK);
    EXPECT_EQ(w.out[0], 0x80);  // code 2 in the top pair
    w.expectG1Spread();
}

TEST(Ed2MonoWorkedExample, MatrixAboveMediumToneLeavesTheSmallDotToDiffusion) {
    WorkedExample w(1000);  // bits 1..7 give 232: threshold 100 - 20, sum 110 prints small
    ASSERT_EQ(w.runBytes({WorkedExample::kInput}, WorkedExample::kX), RC_OK);
    EXPECT_EQ(w.out[0], 0x40);
    w.expectG1Spread();
}

TEST(Ed2MonoWorkedExample, CarryLandsOnTheNextPixelsCell) {
    WorkedExample w(500);
    ASSERT_EQ(w.runBytes({WorkedExample::kInput, 255}, WorkedExample::kX), RC_OK);
    // The white pixel replaces its cell (-1160 pending) with the carry -580.
    EXPECT_EQ(w.line(0)[WorkedExample::kX + 1], -580);
    EXPECT_EQ(w.out[0], 0x80);
}

// Cells are read by division truncating toward zero.
TEST(Ed2MonoCells, NegativeCellReadsTruncatingTowardZero) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);  // perturbation +24, even
    m.setSplit(3, 10, 0, 0);
    m.mapGray(1, 3);
    m.edThreshold[3] = 9 - 24;  // threshold exactly sum when -33 reads as -1
    m.line(0)[5] = -33;
    m.runBytes({1}, 5);
    EXPECT_EQ(m.out[0], 0x40) << "-33 reads -1: sum 9 reaches the threshold";
    // err = 9 - 255; s = 10 lies between T2 and T1 with a dot: G2a on an even cell.
    EXPECT_EQ(m.line(0)[5], 4 * -246);
    EXPECT_EQ(m.line(0)[10], 2 * -246);
}

TEST(Ed2MonoCells, PositiveCellReadsDown) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(3, 10, 0, 0);
    m.mapGray(1, 3);
    m.edThreshold[3] = 12 - 24;
    m.line(0)[5] = 33;  // reads 1: sum 11 stays below 12
    m.runBytes({1}, 5);
    EXPECT_EQ(m.out[0], 0x00);
    EXPECT_EQ(m.line(0)[5], 8 * 11) << "no dot: G0 with the whole sum";
}

// Small-dot threshold + p: a sum equal to it prints. Only bits 1..7 count.
struct PerturbationCase {
    uint16_t matrixValue;
    int32_t p;
};
class Ed2MonoPerturbation : public ::testing::TestWithParam<PerturbationCase> {};

TEST_P(Ed2MonoPerturbation, ThresholdMovesByBitsOneToSeven) {
    for (int32_t slack : {0, 1}) {
        Mono m;
        m.setFlatMatrix(1, 1, GetParam().matrixValue);
        m.setSplit(3, 10, 0, 0);
        m.mapGray(1, 3);
        m.edThreshold[3] = static_cast<int16_t>(10 - GetParam().p + slack);
        m.runBytes({1}, 0);
        EXPECT_EQ(m.out[0], slack == 0 ? 0x40 : 0x00) << "matrix " << GetParam().matrixValue << " slack " << slack;
    }
}

INSTANTIATE_TEST_SUITE_P(Values, Ed2MonoPerturbation,
                         ::testing::Values(PerturbationCase{308, 20}, PerturbationCase{257, 24},
                                           PerturbationCase{1000, -20}, PerturbationCase{254, -24},
                                           PerturbationCase{0x1FE, -24}, PerturbationCase{7, 24}));

TEST(Ed2MonoDots, LargeDotWhateverTheSumAndEveryDotRemoves255) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(9, 0, 0, 200);
    m.mapGray(2, 9);
    m.line(0)[0] = -320000;  // reads -10000
    m.runBytes({2}, 0);
    EXPECT_EQ(m.out[0], 0xC0);
    EXPECT_EQ(m.line(0)[0], 8 * (-10000 + 200 - 255));  // G1 (large amount), weight 8 at x
}

TEST(Ed2MonoDots, FullRowWithADotDiffusesJustTheCell) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(9, 55, 100, 100);  // 255 in all
    m.mapGray(2, 9);
    m.line(0)[3] = 32 * 7;
    m.runBytes({2}, 3);
    EXPECT_EQ(m.out[0], 0xC0);
    EXPECT_EQ(m.line(0)[3], 8 * 7);
}

TEST(Ed2MonoDots, ZeroSmallAmountNeverPrintsAndDiffusesTheWholeSum) {
    Mono m;
    m.setFlatMatrix(1, 1, 4095);
    m.setSplit(9, 0, 0, 0);
    m.mapGray(2, 9);
    m.edThreshold[9] = -1000;
    m.line(0)[3] = 32 * 300;
    m.runBytes({2}, 3);
    EXPECT_EQ(m.out[0], 0x00);
    EXPECT_EQ(m.line(0)[3], 8 * 300);  // G0
    EXPECT_EQ(m.line(0)[4], 8 * 300);
}

TEST(Ed2MonoDots, SplitRowShiftedByTheMatrixJitter) {
    Mono m;
    // Column x decides (value 0), column x + 24 jitters: 6 mod 4 = 2.
    std::vector<uint16_t> row(32, 0);
    row[(5 + 24) % 32] = 6;
    m.setMatrix(32, 1, row);
    m.monoCurve()[0] = 4;
    for (uint32_t j = 0; j < 4; ++j) m.monoCurve()[1 + j + 10] = static_cast<uint16_t>(20 + j);
    m.setSplit(22, 0, 0, 255);  // only the row reached with shift 2 prints
    m.runBytes({10}, 5);
    EXPECT_EQ(m.out[0], 0xC0);
    m.monoCurve()[1 + 2 + 10] = 21;
    m.runBytes({10}, 5);
    EXPECT_EQ(m.out[0], 0x00);
}

TEST(Ed2MonoWhite, WhiteDropsTheCellAndPrintsNothing) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);
    m.line(0)[4] = 5000;
    m.mapGray(255, 9);  // never consulted for white
    m.setSplit(9, 0, 0, 255);
    m.runBytes({255}, 4);
    EXPECT_EQ(m.out[0], 0x00);
    EXPECT_EQ(m.line(0)[4], 0);
}

TEST(Ed2MonoWhite, DoubleYReducesPairsToTheSmallerByte) {
    Mono m(360, 720, -1);
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(7, 0, 0, 255);
    m.setSplit(9, 0, 100, 0);
    m.mapGray(7, 7);
    m.mapGray(254, 9);
    m.line(0)[1] = 5000;
    m.line(0)[2] = 5000;
    const std::vector<uint8_t> in = {200, 7, 255, 254, 255, 255};
    ASSERT_EQ(m.run(in.data(), m.out.data(), 0, 0, 3, 0, 0), RC_OK);
    EXPECT_EQ(m.out[0], 0b11100000) << "min(200, 7) = 7 large; min(255, 254) medium; (255, 255) white";
    // Pixel 0 diffuses nothing (255 in, one dot out); pixel 1 reads 5000 as 156,
    // err = 156 + 100 - 255 = 1, and Y1 carries 8 x 1 to the white pair's cell.
    EXPECT_EQ(m.line(0)[2], 8) << "the white pair replaced its pending 5004 by the carry";
}

TEST(Ed2MonoInput, GeneralReadsOneBytePerPixelWhenHalving) {
    Mono m(720, 720, -1);
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(7, 0, 0, 255);
    m.mapGray(7, 7);
    const std::vector<uint8_t> in = {7, 255, 7};
    ASSERT_EQ(m.run(in.data(), m.out.data(), 0, 0, 3, 0, 0), RC_OK);
    EXPECT_EQ(m.out[0], 0b11001100);
}

TEST(Ed2MonoInput, DoublingReusesEachByteForTwoPixels) {
    Mono m(1440, 720, 1);
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(7, 0, 0, 255);
    m.mapGray(7, 7);
    const std::vector<uint8_t> in = {7, 255, 7};
    ASSERT_EQ(m.run(in.data(), m.out.data(), 0, 0, 5, 0, 0), RC_OK);
    EXPECT_EQ(m.out[0], 0b11110000);
    EXPECT_EQ(m.out[1], 0b11000000);
}

TEST(Ed2MonoPacking, SixPixelsFromOffsetThree) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);
    m.setSplit(1, 0, 0, 255);
    m.setSplit(2, 0, 100, 0);
    m.mapGray(1, 1);
    m.mapGray(2, 2);
    m.out = {0xA8, 0xFF, 0xFF, 0x5A};
    ASSERT_EQ(m.runBytes({1, 255, 2, 1, 255, 2}, 0, 0, 3), RC_OK);
    EXPECT_EQ(m.out[0], 0xAB) << "top six bits kept, code 3 in the lowest pair";
    EXPECT_EQ(m.out[1], 0b00101100);
    EXPECT_EQ(m.out[2], 0b10000000);
    EXPECT_EQ(m.out[3], 0x5A) << "not touched";
}

TEST(Ed2MonoPacking, EmptyRunRewritesTheFirstByteOnlyWithAnOffset) {
    Mono m;
    m.ctx.prevLineNo = 3;
    m.out[0] = 0xFF;
    ASSERT_EQ(m.run(nullptr, m.out.data(), 0, 0, 0, 7, 4), RC_OK);
    EXPECT_EQ(m.out[0], 0xFF);
    EXPECT_EQ(m.ctx.prevLineNo, 4u);
    EXPECT_EQ(m.ctx.prevRunEnd, 7u);
    ASSERT_EQ(m.run(nullptr, m.out.data(), 0, 2, 0, 9, 4), RC_OK);
    EXPECT_EQ(m.out[0], 0xF0);
    EXPECT_EQ(m.ctx.prevRunEnd, 9u);
}

TEST(Ed2MonoContinuity, SkippedLineClearsTheWholeLine) {
    Mono m;
    m.setFlatMatrix(1, 1, 0);
    for (uint32_t x = 0; x < kWidth; ++x) m.line(0)[x] = 77;
    m.runBytes({255}, 10, 2);  // line 2 after line 0
    for (uint32_t x = 0; x < kWidth; ++x) EXPECT_EQ(m.line(0)[x], 0) << x;
}

// Argument checks, in their order, leave everything untouched.
struct ArgumentCase {
    uint32_t startX, count, reserved10, option11;
    uint32_t expected;
};
class Ed2MonoArguments : public ::testing::TestWithParam<ArgumentCase> {};

TEST_P(Ed2MonoArguments, RefusedBeforeAnythingChanges) {
    const ArgumentCase& a = GetParam();
    for (HtKernel kernel : {Ed2MonoGeneral, Ed2Mono1440x720, Ed2MonoDoubleY}) {
        Mono m;
        m.ctx.prevLineNo = 5;
        m.ctx.prevRunEnd = 6;
        m.line(0)[0] = 99;
        std::vector<uint8_t> in(4, 0);
        m.out[0] = 0x3C;
        const HtRun run{in.data(), m.out.data(), 0, 1, a.count, a.startX, 0, 9, a.reserved10, a.option11};
        EXPECT_EQ(kernel(m.ctx, run), a.expected);
        EXPECT_EQ(m.ctx.prevLineNo, 5u);
        EXPECT_EQ(m.ctx.prevRunEnd, 6u);
        EXPECT_EQ(m.line(0)[0], 99);
        EXPECT_EQ(m.out[0], 0x3C);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Order, Ed2MonoArguments,
    ::testing::Values(ArgumentCase{0, 1, 1, 1, RC_ARG + 11}, ArgumentCase{kWidth, 1, 1, 0, RC_ARG + 6},
                      ArgumentCase{0xFFFFFFFFu, 2, 0, 0, RC_ARG + 6}, ArgumentCase{2, 0xFFFFFFFFu, 0, 0, RC_ARG + 6},
                      ArgumentCase{0, 1, 1, 0, RC_ARG + 10}));

TEST(Ed2MonoArguments, OptionElevenThroughHalftone) {
    Mono m;
    const std::vector<uint8_t> in = {1};
    EXPECT_EQ(m.run(in.data(), m.out.data(), 0, 0, 1, 0, 0, 1), RC_ARG + 11);
}

}  // namespace
}  // namespace inkdot::test
