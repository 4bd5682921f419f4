#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kernels/ed2/matrix_scale.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

constexpr uint32_t kWidth = 64;

struct Colour : Ed2Hand {
    explicit Colour(uint32_t inputFormat = 2, uint32_t resX = 720, uint32_t resY = 720, int32_t scaleMode = 0)
        : Ed2Hand(ed2Settings(1, inputFormat, resX, resY, kWidth, scaleMode)) {}
    Planes out;
    uint32_t runPixels(const std::vector<uint8_t>& in, uint32_t count, uint32_t startX, uint32_t lineNo = 0,
                       uint32_t bitOffset = 0) {
        return run(in.data(), out.dst(), Planes::kStride, bitOffset, count, startX, lineNo);
    }
    // Split rows that give a recognisable code against a zero matrix value.
    void largeRow(uint8_t r) { setSplit(r, 0, 0, 255); }    // 3 in every plane
    void mediumRow(uint8_t r) { setSplit(r, 0, 100, 0); }   // 2 in every plane
    void smallOnlyRow(uint8_t r) { setSplit(r, 100, 0, 0); }  // 1 in plane 2 (matrix only)
};

TEST(Ed2ColourScale, ShiftBringsTheMatrixToTheByteRange) {
    EXPECT_EQ(matrixScaleShift(4096), 4u);
    EXPECT_EQ(matrixScaleShift(1024), 2u);
    EXPECT_EQ(matrixScaleShift(256), 0u);
    EXPECT_EQ(matrixScaleShift(16384), 6u);
    EXPECT_EQ(matrixScaleShift(0), 0u) << "256 x 256 cells keep 0 in 16 bits";
    EXPECT_EQ(matrixScaleShift(511), 1u);
    EXPECT_EQ(matrixScaleShift(510), 0u);
}

// The worked example: 64 x 64 matrix (S = 4), mP = 2090, q = 130.
TEST(Ed2ColourWorkedExample, NodeChoiceAndSmoothing) {
    Colour c;
    c.setFlatMatrix(64, 64, 0);
    c.setCell(0, (5 + 24) % 64, 2090);  // mP of column 5 on line 0
    // Previous pixel (column 4, q = 0): nodes 3, 6, 7 exactly (weight 255 never moves).
    c.setGridCell(10, 3, 255);
    c.setGridCell(20, 6, 255);
    c.setGridCell(30, 7, 255);
    c.setNode(7, 6, 3, packInks(20, 30, 40, 50));
    // This pixel: {3, 200} stays, {5, 60} and {7, 130} move up at q = 130.
    c.setGridCell(40, 3, 200);
    c.setGridCell(50, 5, 60);
    c.setGridCell(60, 7, 130);
    c.conversion[8387] = packInks(16, 32, 48, 64);
    // Only the smoothed values 18, 31, 44, 57 have ink, each with its own code.
    c.largeRow(18);
    c.mediumRow(31);
    c.smallOnlyRow(44);
    c.largeRow(57);
    ASSERT_EQ(c.runPixels({10, 20, 30, 40, 50, 60}, 2, 4), RC_OK);
    for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(c.out.code(k, 0), 0u) << "first pixel, plane " << k;
    EXPECT_EQ(c.out.code(0, 1), 3u);
    EXPECT_EQ(c.out.code(1, 1), 2u);
    EXPECT_EQ(c.out.code(2, 1), 1u);
    EXPECT_EQ(c.out.code(3, 1), 3u);
}

TEST(Ed2ColourGrid, WeightLimitsOfTheNodeChoice) {
    for (uint16_t mP : {uint16_t{0}, uint16_t{4095}}) {
        Colour c;
        c.setFlatMatrix(64, 64, 0);
        c.setCell(0, 24, mP);
        c.setGridCell(1, 0, 255);  // never moves, even at q = 254
        c.setGridCell(2, 4, 0);    // always moves, even at q = 0
        c.setNode(5, 0, 0, packInks(1, 0, 0, 0));
        c.largeRow(1);
        ASSERT_EQ(c.runPixels({1, 1, 2}, 1, 0), RC_OK);
        EXPECT_EQ(c.out.code(0, 0), 3u) << "mP " << mP;
    }
}

// Grid smoothing, observed on plane 2 (matrix only): rows 12, 11, 13 and 10
// give codes 3, 2, 1 and 2; everything else 0.
struct Smoothing : Colour {
    Smoothing() {
        setMatrix(32, 1, std::vector<uint16_t>(32, 0));
        for (uint8_t k = 0; k < 4; ++k) setGridCell(10 * k, k, 255);  // byte 10k sits on node k
        largeRow(12);
        mediumRow(11);
        smallOnlyRow(13);
        mediumRow(10);
        setNode(1, 0, 1, packInks(0, 0, 10, 0));  // bytes (10, 0, 10)
        setNode(0, 0, 2, packInks(0, 0, 13, 0));  // bytes (20, 0, 0): nodes differ by (1, 0, -1)
        setNode(1, 0, 3, packInks(0, 0, 13, 0));  // bytes (30, 0, 10): node 0 differs by 2
    }
};

TEST(Ed2ColourSmoothing, PlaneTwoCodes) {
    struct Case {
        const char* what;
        uint16_t column1Matrix;
        std::vector<uint8_t> pixels;
        std::string codes;
    };
    const Case cases[] = {
        {"first pixel never smoothed; even matrix: (10 + 13 + 1) >> 1 = 12", 0, {10, 0, 10, 20, 0, 0}, "23"},
        {"odd matrix: (10 + 13) >> 1 = 11", 1, {10, 0, 10, 20, 0, 0}, "22"},
        {"two nodes apart: 13 as it is", 0, {10, 0, 10, 30, 0, 10}, "21"},
        // (12 + 20 + 1) >> 1 = 16 prints large; the raw 13 would give 17, small.
        {"chains through white pixels with the smoothed value", 0, {10, 0, 10, 255, 255, 255, 20, 0, 0, 20, 0, 10},
         "2033"},
    };
    for (const Case& k : cases) {
        Smoothing c;
        c.setCell(0, 25, k.column1Matrix);
        c.setNode(1, 0, 2, packInks(0, 0, 20, 0));  // bytes (20, 0, 10)
        c.largeRow(16);
        c.smallOnlyRow(17);
        const auto count = static_cast<uint32_t>(k.codes.size());
        ASSERT_EQ(c.runPixels(k.pixels, count, 0), RC_OK);
        EXPECT_EQ(codesOf(c.out.bytes, Planes::kStride, 2, count), k.codes) << k.what;
    }
}

TEST(Ed2ColourWhite, ThreeChannelWhiteDropsEveryCell) {
    Colour c;
    c.fillLines(3200);
    c.setGridCell(255, 31, 255);
    c.setGridCell(254, 31, 255);
    c.setNode(31, 31, 31, packInks(1, 1, 1, 1));
    c.largeRow(1);
    ASSERT_EQ(c.runPixels({255, 255, 255, 255, 255, 254}, 2, 3), RC_OK);
    for (unsigned k = 0; k < 4; ++k) {
        EXPECT_EQ(c.out.code(k, 0), 0u);
        EXPECT_EQ(c.out.code(k, 1), 3u) << "(255, 255, 254) is converted";
    }
    // The white pixel dropped the pending 3200; then the next pixel (err 100 + 255
    // - 255) put G1's 4 x 100 into it for the next line.
    for (unsigned l = 0; l < 3; ++l) EXPECT_EQ(c.line(l)[3], 400) << "line " << l;
    EXPECT_EQ(c.line(3)[3], 3200) << "the fourth error line is not used";
}

TEST(Ed2ColourWhite, InkWhiteIsZeroInAllFour) {
    Colour c(4);
    c.fillLines(3200);  // reads 100
    c.largeRow(1);
    ASSERT_EQ(c.runPixels(inkPixels({{0, 0, 0, 0}, {0, 0, 0, 1}}), 2, 3), RC_OK);
    for (unsigned k = 0; k < 4; ++k) EXPECT_EQ(c.out.code(k, 0), 0u);
    EXPECT_EQ(c.line(0)[3], 8 * 100) << "3200 dropped; G0 of the next pixel adds 8 x 100";
    EXPECT_EQ(c.out.code(3, 1), 3u);
    EXPECT_EQ(c.out.code(0, 1), 0u) << "row 0 has no small amount";
    EXPECT_EQ(c.line(0)[4], 8 * 100) << "no dot: the whole sum goes out with G0";
}

TEST(Ed2ColourPlanes, PlaneTwoIsMatrixOnly) {
    Colour c(4);
    c.setMatrix(64, 1, std::vector<uint16_t>(64, 0));
    c.setCell(0, (1 + 48) % 64, 1600);  // plane 2's cell for column 1
    c.smallOnlyRow(7);                  // tone of the whole amount 1600
    c.fillLines(320000);                // planes 0, 1, 3 hold a large positive error
    ASSERT_EQ(c.runPixels(inkPixels({{9, 9, 7, 9}, {9, 9, 7, 9}}), 2, 0), RC_OK);
    EXPECT_EQ(c.out.code(2, 0), 1u) << "1600 > 0 prints a small dot with no error line";
    EXPECT_EQ(c.out.code(2, 1), 0u) << "1600 > 1600 fails";
    for (unsigned k : {0u, 1u, 3u}) {
        EXPECT_EQ(c.out.code(k, 0), 0u) << "row 9 has no small amount: never a small dot";
        EXPECT_EQ(c.out.code(k, 1), 0u);
    }
}

// Plane thresholds: planes 0 and 3 add p, plane 1 subtracts it.
struct PlanePerturbation {
    uint16_t mP;
    int32_t p;
};
class Ed2ColourPerturbation : public ::testing::TestWithParam<PlanePerturbation> {};

TEST_P(Ed2ColourPerturbation, PlaneOneMovesAgainstTheOthers) {
    for (int32_t slack : {0, 1}) {
        Colour c(4);
        c.setFlatMatrix(64, 64, 0);
        c.setCell(0, 24, GetParam().mP);
        c.setSplit(5, 10, 0, 0);
        c.edThreshold[5] = static_cast<int16_t>(10 - GetParam().p + slack);  // planes 0, 3 exactly at the sum
        ASSERT_EQ(c.runPixels(inkPixels({{5, 5, 0, 5}}), 1, 0), RC_OK);
        const unsigned planes03 = slack == 0 ? 1u : 0u;
        const unsigned plane1 = 10 >= 10 - 2 * GetParam().p + slack ? 1u : 0u;
        EXPECT_EQ(c.out.code(0, 0), planes03) << "mP " << GetParam().mP << " slack " << slack;
        EXPECT_EQ(c.out.code(3, 0), planes03);
        EXPECT_EQ(c.out.code(1, 0), plane1);
    }
}

INSTANTIATE_TEST_SUITE_P(Values, Ed2ColourPerturbation,
                         ::testing::Values(PlanePerturbation{0, 24}, PlanePerturbation{127, 24},
                                           PlanePerturbation{2048, 20}, PlanePerturbation{2090, -20},
                                           PlanePerturbation{4095, -24}));

// One ink pixel of amount row 5 at column 0; the error line 0 cells it leaves.
TEST(Ed2ColourPatterns, FormsByParityAndClass) {
    struct Case {
        const char* what;
        uint32_t resX, resY;
        uint16_t flat, mP;
        uint8_t split[3];
        int16_t threshold;
        unsigned code;
        std::vector<std::pair<int, int32_t>> cells;
    };
    const Case cases[] = {
        // err = 10 - 255; odd: G2a (4 at x, 2 at x + 5), even: G2b (6 at x).
        {"dot, odd cell: G2a", 720, 720, 0, 1, {10, 0, 0}, -30, 1, {{0, 4 * -245}, {5, 2 * -245}}},
        {"dot, even cell: G2b", 720, 720, 0, 0, {10, 0, 0}, -30, 1, {{0, 6 * -245}, {5, 0}}},
        // No dot, err 10: H0a (8 at x + 1, nothing at x + 3) on odd cells, H0b (4, 4) on even.
        {"1440 x 720 without a dot, odd cell: H0a", 1440, 720, 0, 1, {10, 0, 0}, 100, 0, {{1, 8 * 10}, {3, 0}}},
        {"1440 x 720 without a dot, even cell: H0b", 1440, 720, 0, 0, {10, 0, 0}, 100, 0, {{1, 4 * 10}, {3, 4 * 10}}},
        // Matrix 4000 is above every tone: no large or medium dot; a medium amount makes the
        // row heavy. err = 5; Y1: 8 at x - 1, x and (carry) x + 1; 4 at x + 1 and x + 2.
        {"DoubleY heavy row: Y1", 720, 1440, 4000, 4000, {2, 3, 0}, 1000, 0, {{0, 8 * 5}, {1, 4 * 5}, {2, 4 * 5}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Colour col(4, c.resX, c.resY);
        col.setFlatMatrix(32, 1, c.flat);
        col.setCell(0, 24, c.mP);
        col.setSplit(5, c.split[0], c.split[1], c.split[2]);
        col.edThreshold[5] = c.threshold;
        ASSERT_EQ(col.runPixels(inkPixels({{5, 0, 0, 0}}), 1, 0), RC_OK);
        EXPECT_EQ(col.out.code(0, 0), c.code);
        for (auto [x, v] : c.cells) EXPECT_EQ(col.line(0)[x], v) << "column " << x;
    }
}

// Small-dot history: rows without small ink diffuse for four pixels, then
// the plane stops until small ink is seen again.
struct History : Colour {
    History() : Colour(4) {
        setFlatMatrix(32, 1, 0);
        setSplit(1, 0, 50, 0);  // medium only: printed by the matrix, no small ink
        setSplit(2, 10, 0, 0);  // small ink
    }
    // Plane 0 gets row 1 everywhere but at the listed pixels.
    static std::vector<uint8_t> input(unsigned count, unsigned smallAt, unsigned whiteAt) {
        std::vector<uint8_t> in;
        for (unsigned i = 0; i < count; ++i) {
            const uint8_t v0 = i == smallAt ? 2 : i == whiteAt ? 0 : 1;
            in.insert(in.end(), {v0, 0, 0, 0});
        }
        return in;
    }
};

TEST(Ed2ColourHistory, FifthPixelWithoutSmallInkTakesTheCarry) {
    History c;
    ASSERT_EQ(c.runPixels(History::input(5, 99, 99), 5, 0), RC_OK);
    for (unsigned i = 0; i < 5; ++i) EXPECT_EQ(c.out.code(0, i), 2u) << "the matrix places the medium dot at " << i;
    // Pixels 0..3 diffuse with G1: err -205, -256, -294, -310 (cells read
    // -1640 as -51, -2868 as -89, -3376 as -105); pixel 4 is idle and its
    // cell takes the carry 4 x -310 instead of its pending -3656.
    EXPECT_EQ(c.line(0)[3], 8 * -310 + 4 * -294);
    EXPECT_EQ(c.line(0)[4], -1240);
}

TEST(Ed2ColourHistory, SmallInkSwitchesDiffusionOnForFivePixels) {
    History c;
    ASSERT_EQ(c.runPixels(History::input(16, 5, 99), 16, 0), RC_OK);
    for (unsigned i = 0; i < 16; ++i) {
        if (i == 5) continue;
        EXPECT_EQ(c.out.code(0, i), 2u) << i;
    }
    EXPECT_NE(c.line(0)[10], 0) << "pixel 10 takes the carry of pixel 9, the last of five diffusing again";
    for (unsigned x = 11; x < 16; ++x) EXPECT_EQ(c.line(0)[x], 0) << x;

    // A white pixel in place of the idle pixel 4 leaves the same error behind:
    // both drop the cell for the carry, and white leaves the history as it is.
    History w;
    ASSERT_EQ(w.runPixels(History::input(16, 5, 4), 16, 0), RC_OK);
    EXPECT_EQ(w.errorLines[0], c.errorLines[0]);
    EXPECT_EQ(w.out.code(0, 4), 0u);
}

// Ink rows 5 (large) and 9 (medium) through halving and doubling.
TEST(Ed2ColourInput, HalvingAndDoublingOfInkPixels) {
    struct Case {
        const char* what;
        uint32_t resX, resY;
        int32_t scaleMode;
        std::vector<uint8_t> in;
        uint32_t count;
        std::string plane0, plane1;
    };
    const Case cases[] = {
        {"DoubleY halving takes each byte's minimum; min(0, 7) in all four is white", 720, 1440, -1,
         inkPixels({{5, 9, 0, 0}, {9, 5, 0, 0}, {0, 0, 0, 0}, {7, 0, 0, 0}}), 2, "30", "30"},
        {"the general class reads one pixel per output pixel when halving", 720, 720, -1,
         inkPixels({{5, 0, 0, 0}, {9, 0, 0, 0}}), 2, "32", "00"},
        {"doubling serves each pixel twice", 1440, 720, 1, inkPixels({{5, 0, 0, 0}, {9, 0, 0, 0}}), 3, "3320", "0000"},
    };
    for (const Case& k : cases) {
        Colour c(4, k.resX, k.resY, k.scaleMode);
        c.largeRow(5);
        c.mediumRow(9);
        ASSERT_EQ(c.runPixels(k.in, k.count, 0), RC_OK) << k.what;
        const auto n = static_cast<uint32_t>(k.plane0.size());
        EXPECT_EQ(codesOf(c.out.bytes, Planes::kStride, 0, n), k.plane0) << k.what;
        EXPECT_EQ(codesOf(c.out.bytes, Planes::kStride, 1, n), k.plane1) << k.what;
    }
}

TEST(Ed2ColourInput, DoubleYRgbTakesTheSmallerChannelBytes) {
    Colour c(2, 720, 1440, -1);
    c.setGridCell(254, 2, 255);
    c.setGridCell(255, 3, 255);
    c.setNode(2, 3, 3, packInks(5, 0, 0, 0));
    c.largeRow(5);
    ASSERT_EQ(c.runPixels({255, 255, 255, 255, 255, 254}, 1, 0), RC_OK);
    EXPECT_EQ(c.out.code(0, 0), 3u) << "(255, 255, 254) is not white";
}

}  // namespace
}  // namespace inkdot::test
