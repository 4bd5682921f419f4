// One-bit monochrome error diffusion on hand-worked runs: the threshold and
// its matrix perturbation, the dot value, white pixels, and the spread
// pattern of each band, parity and class.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/hand_context.h"

namespace inkdot::test {
namespace {

const KernelSetup kGeneral = edSetup(0, 1, 360, 360), k1440 = edSetup(0, 1, 1440, 720),
                  kDoubleY = edSetup(0, 1, 360, 720);

// Byte 1 reads `level`; spread thresholds 32, 9, 4, 2; a flat matrix. The
// level tables are read at the level's low byte.
std::function<void(HandContext&)> mono(int16_t level, int16_t threshold, int16_t dotValue = 255,
                                       uint16_t matrix = 0x43) {
    return [=](HandContext& hc) {
        hc.setSpread(32, 9, 4, 2);
        hc.setFlatMatrix(4, 4, matrix);
        hc.monoCurve()[1] = static_cast<uint16_t>(level);
        hc.edThreshold[level & 0xFF] = threshold;
        hc.dotValue[level & 0xFF] = dotValue;
    };
}

// Every cell of error line 0: weights[i] x err at column x + from + i ('a' is
// 10, 'g' 16, 'h' err >> 1), 0 elsewhere.
std::vector<Cell> line0(int x, int from, int32_t err, const std::string& weights) {
    std::vector<Cell> cells;
    for (int c = -30; c < 94; ++c) {
        const int i = c - x - from;
        const char w = i >= 0 && i < static_cast<int>(weights.size()) ? weights[i] : '0';
        cells.push_back({0, c, w == 'h' ? err >> 1 : err * (w <= '9' ? w - '0' : w - 'a' + 10)});
    }
    return cells;
}

TEST(Ed1Mono, HandWorkedRuns) {
    const int32_t e2 = 2 - 255, e3 = 3 - 255, e6 = 6 - 255, e20 = 20 - 255;
    // Pixel 0 (level 200, dot, err -55) leaves a carry; the white pixel 1
    // overwrites its cell with it (G1 and H1 4 x err, Y1 8 x err: 0 at 1440).
    const auto dotThenWhite = [](HandContext& hc) {
        mono(200, 128)(hc);
        hc.edThreshold[0] = -30000;  // a white pixel never consults it
        hc.line(0)[11] = 32000, hc.line(0)[12] = 5000;
        hc.ctx.prevLineNo = 3, hc.ctx.prevRunEnd = 10;
    };
    std::vector<std::pair<KernelSetup, RunCase>> cases = {
        // Column 60: sum 320 / 32 + 20 = 30 < 15 + 20, no dot, G0. Column 61: sum 47 >=
        // -100 + 20, dot, err -208, G1. An earlier run of line 5 ended at 60: nothing cleared.
        {kGeneral, {"worked two-pixel run", [](HandContext& hc) {
             mono(20, 15)(hc);
             hc.monoCurve()[2] = 40, hc.edThreshold[40] = -100, hc.line(0)[60] = 320;
             hc.ctx.prevLineNo = 5, hc.ctx.prevRunEnd = 60;
         }, {1, 2}, 2, 60, 5, "01", {{0, 57, 0}, {0, 58, 120}, {0, 59, -592}, {0, 60, -592}, {0, 61, -1664},
                                     {0, 62, -1544}, {0, 63, -832}, {0, 64, 0}}}},
        {kGeneral, {"white: G1's carry", dotThenWhite, {1, 0, 0}, 3, 10, 3, "100", {{0, 11, 4 * -55}, {0, 12, 0}}}},
        {k1440, {"white: H1's carry", dotThenWhite, {1, 0, 0}, 3, 10, 3, "100", {{0, 11, 0}, {0, 12, 0}}}},
        {kDoubleY, {"white: Y1's carry", dotThenWhite, {1, 0, 0}, 3, 10, 3, "100", {{0, 11, 8 * -55}, {0, 12, 0}}}},
        {kGeneral, {"the dot value is read unsigned: 0xFFFF removes 65535 (G1)", mono(100, 0, -1), {1}, 1, 10, 0, "1",
                    line0(10, -2, 100 - 65535, "44884")}},
        {kGeneral, {"curve entry 0xFFEC is level -20, tables read at 236: G5b", mono(-20, -100, 10), {1}, 1, 30, 0, "1",
                    line0(30, -14, -30, std::string(29, '1'))}},
        // G1 without a dot (33 > T1): the white pixel at x + 1 writes the carry 4 into its cell.
        {kGeneral, {"G1 without a dot", mono(33, 1000), {1, 0}, 2, 10, 0, "00", line0(10, -2, 33, "44844")}},
        {kGeneral, {"G4a: lowest bands, even cell", mono(2, -100, 255, 0x42), {1}, 1, 30, 0, "1",
                    line0(30, -10, e2, "111111222222222111111")}},
        {kGeneral, {"G3: between T3 and T2", mono(6, -100), {1}, 1, 30, 0, "1", line0(30, -7, e6, "112222333331111")}},
        {kGeneral, {"G5b: odd cell", mono(2, -100), {1}, 1, 30, 0, "1", line0(30, -14, e2, std::string(29, '1'))}},
        {kGeneral, {"G2a: between T2 and T1, even cell", mono(20, -100, 255, 0x42), {1}, 1, 30, 0, "1",
                    line0(30, -4, e20, "2224444222")}},
        {kGeneral, {"G2b: T2..T1, odd cell", mono(20, -100), {1}, 1, 30, 0, "1", line0(30, -4, e20, "222464422")}},
        {kGeneral, {"G4b: above T4, odd cell", mono(3, -100), {1}, 1, 30, 0, "1",
                    line0(30, -10, e3, "1111112222222221111101")}},
        // No dot: H0b on an odd cell, H0a on an even one, whatever the level.
        {k1440, {"H0b", mono(20, 1000), {1}, 1, 30, 0, "0", line0(30, -2, 20, "488444")}},
        {k1440, {"H0a", mono(3, 1000, 255, 0x42), {1}, 1, 30, 0, "0", line0(30, -3, 3, "444884")}},
        {k1440, {"H2", mono(20, -100), {1}, 1, 30, 0, "1", line0(30, -7, e20, "112233323332211")}},
        {k1440, {"H3", mono(6, -100), {1}, 1, 30, 0, "1", line0(30, -10, e6, "111112222222222211111")}},
        {k1440, {"H4", mono(3, -100, 255, 0x42), {1}, 1, 30, 0, "1",
                 line0(30, -14, e3, std::string(13, '1') + "212" + std::string(13, '1'))}},
        // H5: err on x - 9 .. x + 9 but x, err >> 1 (-253 >> 1 = -127) on x - 21 .. x - 10, x, x + 10 .. x + 23.
        {k1440, {"H5: at T4 and below", mono(2, -100), {1}, 1, 30, 0, "1",
                 line0(30, -21, e2, std::string(12, 'h') + "111111111h111111111" + std::string(14, 'h'))}},
        {kDoubleY, {"Y2", mono(20, -100), {1}, 1, 30, 0, "1", line0(30, -2, e20, "24g42")}},
        {kDoubleY, {"Y3", mono(6, -100), {1}, 1, 30, 0, "1", line0(30, -4, e6, "222482222")}},
        {kDoubleY, {"G3 above T4", mono(3, -100), {1}, 1, 30, 0, "1", line0(30, -7, e3, "112222333331111")}},
        {kDoubleY, {"G4b at T4", mono(2, -100), {1}, 1, 30, 0, "1", line0(30, -10, e2, "1111112222222221111101")}},
    };
    // Bits 1..7 of the matrix value move the threshold by +24, +20, -20 or -24:
    // a sum equal to threshold + p prints, one below it does not.
    const std::pair<uint16_t, int16_t> perturbations[] = {{0x00, 24},  {0x07, 24},  {0x08, 20},  {0x81, 20},
                                                          {0x82, -20}, {0xF7, -20}, {0xF8, -24}, {0x1FF, -24}};
    for (const KernelSetup& k : {kGeneral, k1440, kDoubleY})
        for (auto [m, p] : perturbations)
            for (int16_t below : {0, 1})
                cases.push_back(
                    {k, {"matrix perturbation", mono(100, 100 - p + below, 255, m), {1}, 1, 0, 0, below ? "0" : "1"}});
    for (const auto& [setup, c] : cases) checkRun(setup, c);
}

}  // namespace
}  // namespace inkdot::test
