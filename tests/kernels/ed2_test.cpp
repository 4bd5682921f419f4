// Two-bit error diffusion on hand-worked runs: node choice and smoothing,
// white pixels, plane thresholds, the dot-size split and its perturbation,
// small-dot histories, patterns by parity and class.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "kernels/ed2/matrix_scale.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

// tone[i] = 16 i (a 64 x 64 matrix's scale), the square class's thresholds,
// and a mono curve with level spread 1 (input v reads split row v).
void ed2Tables(HandContext& hc) {
    for (uint32_t i = 0; i < 256; ++i) hc.tone[i] = static_cast<uint16_t>(16 * i);
    hc.setSpread(15, 3, 1, 0);
    hc.monoCurve()[0] = 1;
    for (uint32_t v = 0; v < 256; ++v) hc.monoCurve()[1 + v] = static_cast<uint16_t>(v);
}
// Split rows that give a recognisable code against a zero matrix value:
// 3 in every plane, 2 in every plane, 1 in plane 2 (dithered) only.
void large(HandContext& hc, uint8_t r) { hc.setSplit(r, 0, 0, 255); }
void medium(HandContext& hc, uint8_t r) { hc.setSplit(r, 0, 100, 0); }
void smallOnly(HandContext& hc, uint8_t r) { hc.setSplit(r, 100, 0, 0); }
void fillLines(HandContext& hc, int32_t v) {
    for (auto& l : hc.errorLines) std::fill(l.begin(), l.end(), v);
}
KernelSetup ink(KernelSetup s) { return (s.inputFormat = 4, s); }

const KernelSetup kColour = edSetup(1, 2, 720, 720), kInk = ink(kColour), kMono = edSetup(0, 2, 720, 720);

// Grid smoothing seen on plane 2: byte 10k sits on node k; rows 12, 11, 13
// give codes 3, 2, 1. Bytes (10, 0, 10) hold 10, (20, 0, 0) 13 (nodes differ
// by (1, 0, -1)), (30, 0, 10) 13 (node 0 differs by 2).
std::function<void(HandContext&)> smoothing(uint16_t column1) {
    return [=](HandContext& hc) {
        hc.setMatrix(32, 1, {});
        hc.matrix[25] = column1;
        for (uint8_t k = 0; k < 4; ++k) hc.setGridCell(10 * k, k, 255);
        large(hc, 12), medium(hc, 11), smallOnly(hc, 13), medium(hc, 10);
        hc.setNode(1, 0, 1, packInks(0, 0, 10, 0)), hc.setNode(0, 0, 2, packInks(0, 0, 13, 0));
        hc.setNode(1, 0, 3, packInks(0, 0, 13, 0));
    };
}
// Bytes 1 on node 0 (weight 255), 2 on node 4 (weight 0): node (5, 0, 0) at mP at column 24.
std::function<void(HandContext&)> weightLimits(uint16_t mP) {
    return [=](HandContext& hc) {
        hc.setFlatMatrix(64, 64, 0);
        hc.matrix[24] = mP;
        hc.setGridCell(1, 0, 255), hc.setGridCell(2, 4, 0), hc.setNode(5, 0, 0, packInks(1, 0, 0, 0)), large(hc, 1);
    };
}
// One ink pixel of amount row 5 at column 0 on a flat 32 x 1 matrix with mP at column 24.
std::function<void(HandContext&)> pattern(uint16_t flat, uint16_t mP, uint8_t s, uint8_t m, uint8_t l, int16_t t) {
    return [=](HandContext& hc) {
        hc.setFlatMatrix(32, 1, flat);
        hc.matrix[24] = mP;
        hc.setSplit(5, s, m, l);
        hc.edThreshold[5] = t;
    };
}
// Small-dot history: row 1 has medium ink only (printed by the matrix), row 2 small ink.
void history(HandContext& hc) {
    hc.setFlatMatrix(32, 1, 0);
    hc.setSplit(1, 0, 50, 0), hc.setSplit(2, 10, 0, 0);
}
std::vector<uint8_t> plane0(const std::string& rows) {
    std::vector<uint8_t> in;
    for (char r : rows) in.insert(in.end(), {static_cast<uint8_t>(r - '0'), 0, 0, 0});
    return in;
}
// Monochrome: byte `b` reads split row 50 over a cell holding `cell` at column x.
std::function<void(HandContext&)> one(uint16_t matrix, uint8_t s, uint8_t m, uint8_t l, int16_t t, uint32_t x,
                                      int32_t cell, uint8_t b) {
    return [=](HandContext& hc) {
        hc.setFlatMatrix(1, 1, matrix);
        hc.setSplit(50, s, m, l);
        hc.monoCurve()[1 + b] = 50;
        hc.edThreshold[50] = t;
        hc.line(0)[x] = cell;
    };
}

TEST(Ed2, HandWorkedRuns) {
    // The worked example: row {40, 60, 0}, threshold 100, cell 320, err 110 - 255 spread by G1.
    const std::vector<Cell> workedG1 = {{0, 10, -1160}, {0, 11, -1160}, {0, 12, -580}, {0, 9, -580},
                                        {0, 8, -580},   {0, 7, 0},      {0, 13, 0}};
    std::vector<std::pair<KernelSetup, RunCase>> cases = {
        // 64 x 64 matrix (S = 4), mP = 2090 at column 5 + 24, q = 130. The previous pixel
        // (q = 0) sits on nodes 3, 6, 7; this one: {3, 200} stays, {5, 60} and {7, 130}
        // move up, entry (8 x 32 + 6) x 32 + 3 = 8387; smoothed 18, 31, 44, 57.
        {kColour, {"worked example: node choice and smoothing", [](HandContext& hc) {
             hc.setFlatMatrix(64, 64, 0);
             hc.matrix[29] = 2090;
             hc.setGridCell(10, 3, 255), hc.setGridCell(20, 6, 255), hc.setGridCell(30, 7, 255);
             hc.setGridCell(40, 3, 200), hc.setGridCell(50, 5, 60), hc.setGridCell(60, 7, 130);
             hc.setNode(7, 6, 3, packInks(20, 30, 40, 50));
             hc.conversion[8387] = packInks(16, 32, 48, 64);
             large(hc, 18), medium(hc, 31), smallOnly(hc, 44), large(hc, 57);
         }, {10, 20, 30, 40, 50, 60}, 2, 4, 0, "03 02 01 03"}},
        // Weight 255 never moves, even at q = 254; weight 0 always moves, even at q = 0.
        {kColour, {"weight limits at mP 0", weightLimits(0), {1, 1, 2}, 1, 0, 0, "3 0 0 0"}},
        {kColour, {"weight limits at mP 4095", weightLimits(4095), {1, 1, 2}, 1, 0, 0, "3 0 0 0"}},
        // A lower node at the last grid node is held there whatever its weight.
        {kColour, {"the last node holds", [](HandContext& hc) {
             hc.setGridCell(254, 31, 0), hc.setNode(31, 31, 31, packInks(5, 5, 5, 5)), large(hc, 5);
         }, {254, 254, 254}, 1, 0, 0, "3 3 3 3"}},
        {kColour, {"a node below the last moves as its weight says", [](HandContext& hc) {
             hc.setGridCell(253, 30, 255), hc.setNode(30, 30, 30, packInks(5, 5, 5, 5)), large(hc, 5);
         }, {253, 253, 253}, 1, 0, 0, "3 3 3 3"}},
        {kColour, {"first pixel never smoothed; even matrix: (10 + 13 + 1) >> 1 = 12", smoothing(0),
                   {10, 0, 10, 20, 0, 0}, 2, 0, 0, "00 00 23 00"}},
        {kColour, {"odd matrix: (10 + 13) >> 1 = 11", smoothing(1), {10, 0, 10, 20, 0, 0}, 2, 0, 0, "00 00 22 00"}},
        {kColour, {"two nodes apart: 13 as it is", smoothing(0), {10, 0, 10, 30, 0, 10}, 2, 0, 0, "00 00 21 00"}},
        // The white pixel drops the pending 3200; the next (err 100 + 255 - 255) puts G1's
        // 4 x 100 into it. The fourth error line is not used.
        {kColour, {"three-channel white drops every cell; (255, 255, 254) is converted", [](HandContext& hc) {
             fillLines(hc, 3200);
             hc.setGridCell(255, 31, 255), hc.setGridCell(254, 31, 255), hc.setNode(31, 31, 31, packInks(1, 1, 1, 1));
             large(hc, 1);
         }, {255, 255, 255, 255, 255, 254}, 2, 3, 0, "03 03 03 03",
         {{0, 3, 400}, {1, 3, 400}, {2, 3, 400}, {3, 3, 3200}}}},
        // 3200 dropped; G0 of the next pixel (no dot: row 0 has no small amount) adds 8 x 100.
        {kInk, {"ink white is zero in all four", [](HandContext& hc) { fillLines(hc, 3200), large(hc, 1); },
                {0, 0, 0, 0, 0, 0, 0, 1}, 2, 3, 0, "00 00 00 03", {{0, 3, 800}, {0, 4, 800}}}},
        // Plane 2's cell for column 1 is 1600, the tone of the whole amount: 1600 > 0 prints
        // a small dot with no error line, 1600 > 1600 fails; row 9 has no small amount.
        {kInk, {"plane 2 is matrix only", [](HandContext& hc) {
             hc.setMatrix(64, 1, {});
             hc.matrix[49] = 1600;
             smallOnly(hc, 7), fillLines(hc, 320000);
         }, {9, 9, 7, 9, 9, 9, 7, 9}, 2, 0, 0, "00 00 10 00"}},
        // err = 10 - 255; odd: G2a (4 at x, 2 at x + 5), even: G2b (6 at x).
        {kInk, {"dot, odd cell: G2a", pattern(0, 1, 10, 0, 0, -30), plane0("5"), 1, 0, 0, "1 0 0 0",
                {{0, 0, 4 * -245}, {0, 5, 2 * -245}}}},
        {kInk, {"dot, even cell: G2b", pattern(0, 0, 10, 0, 0, -30), plane0("5"), 1, 0, 0, "1 0 0 0",
                {{0, 0, 6 * -245}, {0, 5, 0}}}},
        // No dot, err 10: H0a (8 at x + 1, nothing at x + 3) on odd cells, H0b (4, 4) on even.
        {ink(edSetup(1, 2, 1440, 720)), {"H0a", pattern(0, 1, 10, 0, 0, 100), plane0("5"), 1, 0, 0, "0 0 0 0",
                                         {{0, 1, 80}, {0, 3, 0}}}},
        {ink(edSetup(1, 2, 1440, 720)), {"H0b", pattern(0, 0, 10, 0, 0, 100), plane0("5"), 1, 0, 0, "0 0 0 0",
                                         {{0, 1, 40}, {0, 3, 40}}}},
        // Matrix 4000 is above every tone: no large or medium dot; a medium amount makes the
        // row heavy. err = 5; Y1: 8 at x - 1, x and (carry) x + 1; 4 at x + 1 and x + 2.
        {ink(edSetup(1, 2, 720, 1440)), {"DoubleY heavy row: Y1", pattern(4000, 4000, 2, 3, 0, 1000), plane0("5"), 1, 0,
                                         0, "0 0 0 0", {{0, 0, 40}, {0, 1, 20}, {0, 2, 20}}}},
        // Light rows, no dot: small 5 (t2 < 5 <= t1) takes Y2, err 5: 4 at x + 1, 2 at x + 2,
        // 2, 4, 16 at x - 2 .. x; small 2 (t3 < 2 <= t2) takes Y0, err 2: 8 at x - 1, x + 1, 16 at x.
        {ink(edSetup(1, 2, 720, 1440)), {"DoubleY light row: Y2", pattern(4000, 4000, 5, 0, 0, 1000), plane0("5"), 1, 0,
                                         0, "0 0 0 0", {{0, -2, 10}, {0, -1, 20}, {0, 0, 80}, {0, 1, 20}, {0, 2, 10}}}},
        {ink(edSetup(1, 2, 720, 1440)), {"DoubleY lighter row, no dot: Y0", pattern(4000, 4000, 2, 0, 0, 1000),
                                         plane0("5"), 1, 0, 0, "0 0 0 0", {{0, -1, 16}, {0, 0, 32}, {0, 1, 16}}}},
        // Pixels 0..3 diffuse with G1: err -205, -256, -294, -310 (cells read -1640 as -51,
        // -2868 as -89, -3376 as -105); pixel 4 is idle: its cell takes the carry 4 x -310.
        {kInk, {"the fifth pixel without small ink takes the carry", history, plane0("11111"), 5, 0, 0,
                "22222 00000 00000 00000", {{0, 3, 8 * -310 + 4 * -294}, {0, 4, -1240}}}},
        // Small ink at 5 (far below its threshold) turns diffusion on for five pixels again.
        {kInk, {"small ink switches diffusion on for five pixels", history, plane0("1111121111111111"), 16, 0, 0,
                "2222202222222222 0000000000000000 0000000000000000 0000000000000000",
                {{0, 11, 0}, {0, 12, 0}, {0, 13, 0}, {0, 14, 0}, {0, 15, 0}}}},
        {kMono, {"worked: matrix 500 below tone(60) + tone(0) = 960 prints medium",
                 one(500, 40, 60, 0, 100, 10, 320, 7), {7}, 1, 10, 0, "2", workedG1}},
        {kMono, {"worked: matrix 1000 (p -20) leaves the small dot to diffusion", one(1000, 40, 60, 0, 100, 10, 320, 7),
                 {7}, 1, 10, 0, "1", workedG1}},
        {kMono, {"worked: the white pixel replaces its cell with the carry", one(500, 40, 60, 0, 100, 10, 320, 7),
                 {7, 255}, 2, 10, 0, "20", {{0, 11, -580}}}},
        {kMono, {"-33 reads -1 (truncating): sum 9 reaches the threshold, G2a on an even cell (2)",
                 one(2, 10, 0, 0, 9 - 24, 5, -33, 1), {1}, 1, 5, 0, "1", {{0, 5, 4 * -246}, {0, 10, 2 * -246}}}},
        {kMono, {"33 reads 1: sum 11 stays below 12, G0 with the whole sum", one(0, 10, 0, 0, 12 - 24, 5, 33, 1),
                 {1}, 1, 5, 0, "0", {{0, 5, 8 * 11}}}},
        {kMono, {"large dot whatever the sum, removing 255, G1", one(0, 0, 0, 200, 128, 0, -320000, 2), {2}, 1, 0, 0,
                 "3", {{0, 0, 8 * (-10000 + 200 - 255)}}}},
        {kMono, {"a full row with a dot diffuses just the cell", one(0, 55, 100, 100, 128, 3, 32 * 7, 2), {2}, 1, 3, 0,
                 "3", {{0, 3, 8 * 7}}}},
        {kMono, {"no small amount never prints and diffuses the whole sum (G0)", one(4095, 0, 0, 0, -1000, 3, 9600, 2),
                 {2}, 1, 3, 0, "0", {{0, 3, 8 * 300}, {0, 4, 8 * 300}}}},
        {kMono, {"white drops the cell and prints nothing", one(0, 0, 0, 255, 128, 4, 5000, 255), {255}, 1, 4, 0, "0",
                 {{0, 4, 0}}}},
        {kMono, {"small 2 between T3 and T2, err -253 spread by G3: 3 at x, x + 1; 1 at x + 4",
                 one(0, 2, 0, 0, 2 - 24, 10, 0, 1), {1}, 1, 10, 0, "1", {{0, 10, -759}, {0, 11, -759}, {0, 14, -253}}}},
        // G4a: this line +1..+4: 2, +5..+10: 1; next line -10..-5: 1, -4..0: 2.
        {kMono, {"small 1 at T3 is the lowest band, G4a on an even cell", one(0, 1, 0, 0, 1 - 24, 10, 0, 1), {1}, 1, 10,
                 0, "1", {{0, 10, -508}, {0, 11, -508}, {0, 15, -254}, {0, 20, -254}, {0, 21, 0}}}},
        // Column 5 decides (value 0), column 5 + 24 jitters: 6 mod 4 = 2, so byte 10 reads entry 1 + 2 + 10.
        {kMono, {"the split row is shifted by the matrix jitter", [](HandContext& hc) {
             hc.setMatrix(32, 1, {});
             hc.matrix[29] = 6;
             hc.monoCurve()[0] = 4;
             for (uint16_t j = 0; j < 4; ++j) hc.monoCurve()[11 + j] = 20 + j;
             hc.setSplit(22, 0, 0, 255);
         }, {10}, 1, 5, 0, "3"}},
    };
    // Plane thresholds move with bits 1..7 of mP: planes 0 and 3 add p, plane 1
    // subtracts it; a sum equal to the threshold prints, one below does not.
    const std::pair<uint16_t, int16_t> planeP[] = {{0, 24}, {127, 24}, {2048, 20}, {2090, -20}, {4095, -24}};
    for (auto [mP, p] : planeP)
        for (int16_t below : {0, 1}) {
            const std::string on = below ? "0" : "1", planes = on + (p > 0 ? " 1 0 " : " 0 0 ") + on;
            cases.push_back({kInk, {"plane perturbation", [=](HandContext& hc) {
                 hc.setFlatMatrix(64, 64, 0);  // S = 4
                 hc.matrix[24] = mP, hc.setSplit(5, 10, 0, 0), hc.edThreshold[5] = static_cast<int16_t>(10 - p + below);
             }, {5, 5, 0, 5}, 1, 0, 0, planes}});
        }
    // Mono: 308 is +20, 257 and 7 +24, 1000 -20, 254 and 0x1FE -24.
    const std::pair<uint16_t, int16_t> monoP[] = {{308, 20}, {257, 24}, {7, 24}, {1000, -20}, {254, -24}, {0x1FE, -24}};
    for (auto [m, p] : monoP)
        for (int16_t below : {0, 1})
            cases.push_back(
                {kMono, {"threshold + p", one(m, 10, 0, 0, 10 + below - p, 0, 0, 1), {1}, 1, 0, 0, below ? "0" : "1"}});
    for (const auto& [setup, c] : cases) checkRun(setup, c, ed2Tables);
}

TEST(Ed2, MatrixScaleShiftBringsTheMatrixToTheByteRange) {
    // 256 x 256 cells keep 0 in 16 bits.
    const std::pair<uint32_t, uint32_t> cases[] = {{4096, 4}, {1024, 2}, {256, 0}, {16384, 6},
                                                   {0, 0},    {511, 1},  {510, 0}};
    for (auto [cells, shift] : cases) EXPECT_EQ(matrixScaleShift(cells), shift) << cells;
}

}  // namespace
}  // namespace inkdot::test
