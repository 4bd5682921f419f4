// One-bit colour error diffusion on hand-worked runs, each over the kernels
// it holds for: grid node choice and smoothing, per-plane thresholds,
// activity histories, the odd last pixel, white pixels, ink input and the
// parity forms. Levels are observed through the error lines: a pixel
// that prints no dot and has no pending error leaves 8 x level in its own
// cell for every pattern reached here (G1, Y1, H0a, H0b).
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "support/hand_context.h"

namespace inkdot::test {
namespace {

// The plain kernels are reached with halving (scaleMode -1), which reads one
// pixel per output pixel in them; the cached ones with ordinary scaling.
const KernelSetup kKernels[] = {edSetup(1, 1, 360, 360, -1), edSetup(1, 1, 1440, 720, -1), edSetup(1, 1, 360, 720),
                                edSetup(1, 1, 360, 360), edSetup(1, 1, 1440, 720)};
enum : unsigned { kGeneral = 1, k1440 = 2, kDoubleY = 4, kGeneralB = 8, k1440B = 16, kAll = 31 };

// Palette byte k (1..10) sits exactly on node 3k of every axis: pixel (k, k,
// k) has the levels given for k whatever the matrix says, and two palette
// colours are never averaged.
void palette(HandContext& hc, uint8_t k, uint8_t l0, uint8_t l1, uint8_t l2, uint8_t l3) {
    hc.setGridCell(k, 3 * k, 255);
    hc.setNode(3 * k, 3 * k, 3 * k, packInks(l0, l1, l2, l3));
}
// A pending error in every diffused line's cells [from, to).
void pending(HandContext& hc, int from, int to, int32_t value) {
    for (unsigned l = 0; l < 3; ++l) std::fill(hc.line(l) + from, hc.line(l) + to, value);
}
// Palette pixels: digit k is (k, k, k), 'w' white.
std::vector<uint8_t> px(const std::string& pixels) {
    std::vector<uint8_t> bytes;
    for (char p : pixels) bytes.insert(bytes.end(), 3, p == 'w' ? 255 : static_cast<uint8_t>(p - '0'));
    return bytes;
}

// The conversion example at matrix value m: cells {3, 200}, {5, 60}, {7, 130}
// choose nodes 3, 6, 8 at q = 130, entry (8 x 32 + 6) x 32 + 3 = 8387 (levels
// 16, 32, 48, 64). A previous pixel (10, 20, 30) on nodes 3, 6, i2 with the
// given levels prints planes 0, 1, 3 and leaves no error (dot value = level).
// tone[marked] = 1000 shows plane 2's level.
std::function<void(HandContext&)> example(uint16_t m, int i2, std::array<uint8_t, 4> previous, uint8_t marked) {
    return [=](HandContext& hc) {
        hc.setMatrix(1, 1, {m});
        hc.setGridCell(40, 3, 200), hc.setGridCell(50, 5, 60), hc.setGridCell(60, 7, 130);
        hc.conversion[8387] = packInks(16, 32, 48, 64);
        hc.tone[marked] = 1000;
        if (i2 < 0) return;
        hc.setGridCell(10, 3, 255), hc.setGridCell(20, 6, 255), hc.setGridCell(30, static_cast<uint8_t>(i2), 255);
        hc.setNode(i2, 6, 3, packInks(previous[0], previous[1], previous[2], previous[3]));
        for (unsigned p : {0, 1, 3}) hc.dotValue[previous[p]] = previous[p], hc.edThreshold[previous[p]] = -1000;
    };
}
const std::vector<uint8_t> kExample = {10, 20, 30, 40, 50, 60};
std::vector<Cell> levels(uint32_t x, int32_t l0, int32_t l1, int32_t l3) {
    return {{0, static_cast<int>(x), 8 * l0}, {1, static_cast<int>(x), 8 * l1}, {2, static_cast<int>(x), 8 * l3}};
}

// q = 100 gives p = +20: an edThresholdTable entry of 50 is 70 in planes 0
// and 3 and 30 in plane 1; a pending sum s = cell / 32 + level decides.
std::function<void(HandContext&)> pendingSum(int32_t sum) {
    return [=](HandContext& hc) {
        hc.setMatrix(1, 1, {100});
        palette(hc, 1, 10, 10, 0, 10);
        hc.edThreshold[10] = 50;
        pending(hc, 0, 1, 32 * (sum - 10));
    };
}
// The odd last pixel (M = 255, m = 10): planes 3 and 0 pair against m (t3 =
// 100 > 10; t0 + t3 > 255 - 10 adds plane 0), planes 1 and 2 against n = 245
// (t1 > 245 prints 1, else t1 + t2 > 245 prints 2).
std::function<void(HandContext&)> lastPair(uint8_t l0, uint8_t l1, uint8_t l2, uint8_t l3, uint16_t t1, uint16_t t2) {
    return [=](HandContext& hc) {
        hc.setFlatMatrix(16, 16, 10);
        palette(hc, 1, l0, l1, l2, l3);
        hc.tone[l0] = l0, hc.tone[100] = 100, hc.tone[40] = t1, hc.tone[50] = t2;
    };
}
// A large pending error everywhere: a plane prints wherever it diffuses.
void busy(HandContext& hc) {
    palette(hc, 1, 9, 0, 0, 9), palette(hc, 2, 0, 0, 0, 9);
    pending(hc, 0, 16, 32 * 1000);
}
// The a forms on odd matrix cells, the b forms on even ones; one pixel at
// column 10. With a dot, every plane prints (level 0 included).
std::function<void(HandContext&)> parity(uint16_t m, uint8_t l0, uint8_t l1, uint8_t l3, bool dot) {
    return [=](HandContext& hc) {
        hc.setMatrix(1, 1, {m});
        hc.setSpread(56, 22, 11, 4);
        palette(hc, 1, l0, l1, 0, l3);
        if (dot) hc.edThreshold[l0] = hc.edThreshold[l1] = hc.edThreshold[l3] = -100;
    };
}
// A level above T1 without a dot, then a white pixel over a pending error.
void levelThenWhite(HandContext& hc) { palette(hc, 1, 10, 20, 0, 30), pending(hc, 1, 2, 3200); }
void inkInput(HandContext& hc) { hc.ctx.inputFormat = 4; }

TEST(Ed1Colour, HandWorkedRuns) {
    const int32_t e4 = 4 - 255, e30 = 30 - 255, e3 = 3 - 255;
    struct Case { unsigned kernels; RunCase run; };
    const Case cases[] = {
        {kAll, {"conversion takes the matrix-chosen node", example(0x83, -1, {}, 48), {40, 50, 60, 255, 255, 255}, 2, 5,
                0, "00 00 10 00", levels(5, 16, 32, 64)}},
        {kAll, {"one node step: (previous + level) >> 1 on odd cells", example(0x83, 7, {20, 30, 40, 50}, 44), kExample,
                2, 0, 0, "10 10 01 10", levels(1, 18, 31, 57)}},
        {kAll, {"even cells round the average up", example(0x82, 7, {21, 31, 41, 51}, 45), kExample, 2, 0, 0,
                "10 10 01 10", levels(1, 19, 32, 58)}},
        {kAll, {"two node steps: not averaged", example(0x83, 6, {20, 30, 40, 50}, 48), kExample, 2, 0, 0,
                "10 10 01 10", levels(1, 16, 32, 64)}},
        {kAll, {"white pixels keep the smoothing state", example(0x83, 7, {20, 30, 40, 50}, 44),
                {10, 20, 30, 255, 255, 255, 40, 50, 60, 255, 255, 255}, 4, 0, 0, "1000 1000 0010 1000",
                levels(2, 18, 31, 57)}},
        // A level above T1 without a dot spreads its carry: G1 4/32, H0 none, Y1 8/32; the
        // white pixel writes it over its pending error.
        {kGeneral | kGeneralB, {"white takes G1's carry", levelThenWhite,
                                px("1w"), 2, 0, 0, "00 00 00 00", {{0, 1, 40}, {1, 1, 80}, {2, 1, 120}}}},
        {k1440 | k1440B, {"white takes H0's carry", levelThenWhite,
                          px("1w"), 2, 0, 0, "00 00 00 00", {{0, 1, 0}, {1, 1, 0}, {2, 1, 0}}}},
        {kDoubleY, {"white takes Y1's carry", levelThenWhite,
                    px("1w"), 2, 0, 0, "00 00 00 00", {{0, 1, 80}, {1, 1, 160}, {2, 1, 240}}}},
        {kAll, {"a run of one only dithers the pair: no diffusion", [](HandContext& hc) {
                    lastPair(200, 0, 0, 100, 0, 0)(hc), pending(hc, 0, 8, 32000);
                }, px("1"), 1, 3, 0, "0 0 0 1", {{0, 3, 32000}, {0, 4, 32000}, {2, 2, 32000}}}},
        {kAll, {"sum 29: no plane", pendingSum(29), px("1w"), 2, 0, 0, "00 00 00 00"}},
        {kAll, {"sum 30: plane 1 at 50 - 20", pendingSum(30), px("1w"), 2, 0, 0, "00 10 00 00"}},
        {kAll, {"sum 69: plane 1 only", pendingSum(69), px("1w"), 2, 0, 0, "00 10 00 00"}},
        {kAll, {"sum 70: planes 0 and 3 at 50 + 20", pendingSum(70), px("1w"), 2, 0, 0, "10 10 00 10"}},
        // Plane 2 is dithered: a dot where m < tone, compared as unsigned.
        {kAll, {"plane 2 dithered by the matrix", [](HandContext& hc) {
                    hc.setMatrix(4, 1, {99, 100, 101, 0x8000});
                    palette(hc, 1, 0, 0, 7, 0);
                    hc.tone[7] = 100;
                }, px("1111"), 4, 0, 0, "0000 0000 1000 0000"}},
        // A plane idles after five pixels without its ink (9 then zeros: five pixels;
        // zeros from the start: four); white pixels do not count.
        {kAll, {"activity: idle after five pixels without ink", busy, px("12222222"), 8, 0, 0,
                "11111000 11110000 00000000 11111111"}},
        {kAll, {"activity: white pixels do not count", busy, px("1w2222w2"), 8, 0, 0,
                "10111100 10111000 00000000 10111101"}},
        {kAll, {"last pixel: plane 3 alone", lastPair(200, 0, 0, 100, 0, 0), px("ww1"), 3, 0, 0, "000 000 000 001"}},
        {kAll, {"last pixel: planes 3 and 0", lastPair(250, 0, 0, 100, 0, 0), px("ww1"), 3, 0, 0, "001 000 000 001"}},
        {kAll, {"last pixel: plane 2 by the pair sum", lastPair(0, 40, 50, 0, 100, 200), px("1"), 1, 0, 0, "0 0 1 0"}},
        {kAll, {"last pixel: plane 1 alone", lastPair(0, 40, 50, 0, 250, 10), px("1"), 1, 0, 0, "0 1 0 0"}},
        {kAll, {"last pixel: 200 is not above 245", lastPair(0, 40, 50, 0, 100, 100), px("1"), 1, 0, 0, "0 0 0 0"}},
        // The last pixel's nodes are chosen at mid-matrix (q = 128 moves weight 128) and a
        // level of 31 or less counts as 0, except in ink input.
        {kAll, {"odd last pixel: nodes at mid-matrix, faint levels dropped", [](HandContext& hc) {
                    hc.setFlatMatrix(16, 16, 10);
                    hc.setGridCell(70, 3, 128);
                    hc.setNode(4, 4, 4, packInks(31, 0, 0, 40));
                    hc.tone[31] = hc.tone[40] = 1000;
                }, {70, 70, 70}, 1, 0, 0, "0 0 0 1"}},
        {kAll, {"ink input keeps faint levels", [](HandContext& hc) {
                    inkInput(hc), hc.setFlatMatrix(16, 16, 10);
                    hc.tone[31] = hc.tone[40] = 1000;
                }, {31, 0, 0, 40}, 1, 0, 0, "1 0 0 1"}},
        // All four zero is white and drops its cell; one byte of ink makes the pixel diffuse.
        {kGeneral | k1440 | kDoubleY, {"ink white is all four zero", [](HandContext& hc) {
             inkInput(hc), pending(hc, 40, 42, 32 * 1000);
         }, {0, 0, 0, 0, 0, 0, 0, 1}, 2, 40, 0, "01 01 00 01"}},
        // L = T4 = 4 with a dot includes T4 on odd cells (G4a, 2/32 at x) except in plane 1
        // (G5a, 1/32 at x); even cells exclude it (G5b).
        {kGeneral | kGeneralB, {"odd: plane 1 excludes T4", parity(0x43, 4, 4, 4, true), px("1w"), 2, 10, 0,
                                "10 10 00 10", {{0, 10, 2 * e4}, {1, 10, e4}, {2, 10, 2 * e4}}}},
        {kGeneral | kGeneralB, {"even: every plane excludes T4", parity(0x42, 4, 4, 4, true), px("1w"), 2, 10, 0,
                                "10 10 00 10", {{0, 10, e4}, {1, 10, e4}, {2, 10, e4}}}},
        {kGeneral | kGeneralB, {"L = 30 with a dot, odd: G2a (4 at x)", parity(0x43, 30, 0, 0, true), px("1w"), 2, 10,
                                0, "10 10 00 10", {{0, 10, 4 * e30}}}},
        {kGeneral | kGeneralB, {"L = 30 with a dot, even: G2b (6 at x)", parity(0x42, 30, 0, 0, true), px("1w"), 2, 10,
                                0, "10 10 00 10", {{0, 10, 6 * e30}}}},
        {k1440 | k1440B, {"L = 30 without a dot, odd: H0a (4 at x - 3)", parity(0x43, 30, 0, 0, false), px("1w"), 2, 10,
                          0, "00 00 00 00", {{0, 7, 4 * 30}}}},
        {k1440 | k1440B, {"L = 30 without a dot, even: H0b (none at x - 3)", parity(0x42, 30, 0, 0, false), px("1w"), 2,
                          10, 0, "00 00 00 00", {{0, 7, 0}}}},
        {kDoubleY, {"L = 3 below T4 with a dot, odd: G4a (1 at x + 10)", parity(0x43, 3, 0, 0, true), px("1w"), 2, 10,
                    0, "10 10 00 10", {{0, 20, e3}, {0, 21, 0}}}},
        {kDoubleY, {"L = 3 below T4 with a dot, even: G4b (1 at x + 11)", parity(0x42, 3, 0, 0, true), px("1w"), 2, 10,
                    0, "10 10 00 10", {{0, 20, 0}, {0, 21, e3}}}},
        // Dot value 40000: the plain kernels read planes 0 and 1 unsigned (err 100 - 40000),
        // plane 3 signed (err 100 + 25536); G1 leaves 8 x err at x.
        {kGeneral | kDoubleY, {"plain kernels: dot values", [](HandContext& hc) {
             palette(hc, 1, 100, 100, 0, 100), hc.dotValue[100] = 40000 - 65536, hc.edThreshold[100] = -1000;
         }, px("1w"), 2, 0, 0, "10 10 00 10", {{0, 0, 8 * -39900}, {1, 0, 8 * -39900}, {2, 0, 8 * 25636}}}},
        {kAll, {"an empty matrix is refused", [](HandContext& hc) { hc.ctx.matrixHeight = 0; }, px("ww"), 2, 0, 0,
                "refused"}},
        // The cached kernels keep one matrix row of at most 256 columns.
        {kGeneralB | k1440B, {"a matrix wider than 256 is refused untouched", [](HandContext& hc) {
             hc.setFlatMatrix(512, 1, 0x83), pending(hc, 20, 21, 1234);
         }, px("ww"), 2, 0, 0, "refused", {{2, 20, 1234}}}},
        {kGeneralB | k1440B, {"256 columns are not", [](HandContext& hc) { hc.setFlatMatrix(256, 1, 0x83); }, px("ww"),
                              2, 0, 0, "00 00 00 00"}},
    };
    for (const Case& c : cases)
        for (unsigned k = 0; k < 5; ++k)
            if (c.kernels >> k & 1) {
                SCOPED_TRACE(k);
                checkRun(kKernels[k], c.run, [](HandContext& hc) { hc.setMatrix(1, 1, {0x83}); });
            }
}

}  // namespace
}  // namespace inkdot::test
