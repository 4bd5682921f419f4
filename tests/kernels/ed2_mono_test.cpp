#include <gtest/gtest.h>

#include <array>
#include <utility>
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

// One run from column x over a cell holding `cell`: the first byte reads
// split row 50 (tone 16 i), the code of the first pixel and the cells after
// the run are checked.
struct OnePixel {
    const char* what;
    uint16_t matrix;
    std::array<uint8_t, 3> split;
    int16_t threshold;
    uint32_t x;
    int32_t cell;
    std::vector<uint8_t> in;
    uint8_t out;
    std::vector<std::pair<int, int32_t>> cells;  // column, value
};

// The worked example: row {40, 60, 0}, threshold 100, cell 320, err 110 - 255
// spread by G1 (the medium amount forces it).
const std::vector<std::pair<int, int32_t>> kWorkedG1 = {{10, -1160}, {11, -1160}, {12, -580}, {9, -580},
                                                      {8, -580},   {7, 0},       {13, 0}};
const OnePixel kOnePixelCases[] = {
    {"worked: matrix 500 below tone(60) + tone(0) = 960 prints medium", 500, {40, 60, 0}, 100, 10, 320, {7}, 0x80,
     kWorkedG1},
    {"worked: matrix 1000 (p -20) leaves the small dot to diffusion", 1000, {40, 60, 0}, 100, 10, 320, {7}, 0x40,
     kWorkedG1},
    {"worked: the white pixel replaces its cell with the carry", 500, {40, 60, 0}, 100, 10, 320, {7, 255}, 0x80,
     {{11, -580}}},
    {"-33 reads -1 (truncating): sum 9 reaches the threshold, G2a on an even cell", 0, {10, 0, 0}, 9 - 24, 5, -33,
     {1}, 0x40, {{5, 4 * -246}, {10, 2 * -246}}},
    {"33 reads 1: sum 11 stays below 12, G0 with the whole sum", 0, {10, 0, 0}, 12 - 24, 5, 33, {1}, 0x00,
     {{5, 8 * 11}}},
    {"large dot whatever the sum, removing 255, G1", 0, {0, 0, 200}, 128, 0, -320000, {2}, 0xC0,
     {{0, 8 * (-10000 + 200 - 255)}}},
    {"a full row with a dot diffuses just the cell", 0, {55, 100, 100}, 128, 3, 32 * 7, {2}, 0xC0, {{3, 8 * 7}}},
    {"no small amount never prints and diffuses the whole sum (G0)", 4095, {0, 0, 0}, -1000, 3, 32 * 300, {2}, 0x00,
     {{3, 8 * 300}, {4, 8 * 300}}},
    {"white drops the cell and prints nothing", 0, {0, 0, 255}, 128, 4, 5000, {255}, 0x00, {{4, 0}}},
    {"small 2 between T3 and T2 prints (sum 2 at threshold 2), err -253 spread by G3: 3 at x, x + 1; 1 at x + 4",
     0, {2, 0, 0}, 2 - 24, 10, 0, {1}, 0x40, {{10, 3 * -253}, {11, 3 * -253}, {14, -253}}},
    // G4a: this line +1..+4: 2, +5..+10: 1; next line -10..-5: 1, -4..0: 2.
    {"small 1 at T3 is the lowest band, G4a on an even cell", 0, {1, 0, 0}, 1 - 24, 10, 0, {1}, 0x40,
     {{10, 2 * -254}, {11, 2 * -254}, {15, -254}, {20, -254}, {21, 0}}},
    // Small-dot threshold + p: a sum equal to it prints, one below does not; only bits
    // 1..7 of the matrix value count (308: +20, 257: +24, 1000: -20, 254 and 0x1FE: -24).
    {"308: +20", 308, {10, 0, 0}, 10 - 20, 0, 0, {1}, 0x40, {}},
    {"308: +20, one below", 308, {10, 0, 0}, 11 - 20, 0, 0, {1}, 0x00, {}},
    {"257: +24", 257, {10, 0, 0}, 10 - 24, 0, 0, {1}, 0x40, {}},
    {"257: +24, one below", 257, {10, 0, 0}, 11 - 24, 0, 0, {1}, 0x00, {}},
    {"1000: -20", 1000, {10, 0, 0}, 10 + 20, 0, 0, {1}, 0x40, {}},
    {"1000: -20, one below", 1000, {10, 0, 0}, 11 + 20, 0, 0, {1}, 0x00, {}},
    {"254: -24", 254, {10, 0, 0}, 10 + 24, 0, 0, {1}, 0x40, {}},
    {"0x1FE: -24, one below", 0x1FE, {10, 0, 0}, 11 + 24, 0, 0, {1}, 0x00, {}},
    {"7: +24", 7, {10, 0, 0}, 10 - 24, 0, 0, {1}, 0x40, {}},
};

TEST(Ed2Mono, OnePixelCases) {
    for (const OnePixel& c : kOnePixelCases) {
        SCOPED_TRACE(c.what);
        Mono m;
        m.setFlatMatrix(1, 1, c.matrix);
        m.setSplit(50, c.split[0], c.split[1], c.split[2]);
        m.mapGray(c.in[0], 50);
        m.edThreshold[50] = c.threshold;
        m.line(0)[c.x] = c.cell;
        ASSERT_EQ(m.runBytes(c.in, c.x), RC_OK);
        EXPECT_EQ(m.out[0], c.out);
        for (auto [column, value] : c.cells) EXPECT_EQ(m.line(0)[column], value) << "column " << column;
    }
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

}  // namespace
}  // namespace inkdot::test
