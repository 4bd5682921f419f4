// Ordered dither and fixed threshold on hand-worked runs, one row per rule:
// tone against the matrix, the paired threshold rule of the one-bit colour
// planes, the three-size code and level shift of the two-bit kernels, grid
// node choice and smoothing, white pixels, the odd last pixel, ink input,
// and the hybrid's error-diffused plane 1.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/hand_context.h"

namespace inkdot::test {
namespace {

KernelSetup with(KernelSetup s, uint32_t method, uint32_t inputFormat, int32_t scaleMode = 0, uint32_t ditherMode = 1,
                 uint32_t width = 64) {
    s.method = method, s.inputFormat = inputFormat, s.scaleMode = scaleMode, s.ditherMode = ditherMode, s.width = width;
    return s;
}
const KernelSetup kMono = monoSetup(), kColour = colourSetup(), kThreshold = with(kColour, 0, 2),
                  kInk = with(kColour, 3, 4), kHybrid = with(kColour, 3, 2, 0, 0), kMono2 = monoSetup(2),
                  kColour2 = colourSetup(2), kInk2 = with(kColour2, 3, 4);

void onNode(HandContext& hc, uint8_t v, uint8_t n) { hc.setGridCell(v, n, 255); }
// Matrix cells row by row from `row0`, `fill` elsewhere.
void matrix(HandContext& hc, uint32_t w, uint32_t h, uint16_t fill, std::vector<uint16_t> row0 = {}) {
    std::vector<uint16_t> cells(w * h, fill);
    std::copy(row0.begin(), row0.end(), cells.begin());
    hc.setMatrix(w, h, cells);
}
// A 4 x 4 matrix of zeros (maxT 15) and tone 16 for the marked amounts: a
// plane alone prints exactly where its amount is marked.
void marked(HandContext& hc, std::vector<uint8_t> amounts, std::vector<uint16_t> row0 = {}) {
    matrix(hc, 4, 4, 0, row0);
    for (uint8_t a : amounts) hc.tone[a] = 16;
}
// Split rows by the dot size they print on a zero matrix (tone[8] = 1000).
void splitRows(HandContext& hc, std::vector<uint8_t> small, std::vector<uint8_t> medium, std::vector<uint8_t> large) {
    hc.tone[8] = 1000;
    for (uint8_t r : small) hc.setSplit(r, 8, 0, 0);
    for (uint8_t r : medium) hc.setSplit(r, 0, 8, 0);
    for (uint8_t r : large) hc.setSplit(r, 0, 0, 8);
}
// Amounts 10, 40, 31, 32: rows 10 and 31 would print large, 40 and 32 medium.
void lastPixelRows(HandContext& hc) { matrix(hc, 4, 4, 0), splitRows(hc, {}, {40, 32}, {10, 31}); }
// The hybrid: byte 1 sits on node 1, 3 on node 3 (two pixels on them are two
// nodes apart, never smoothed together); matrix m = 0x43 gives p = +20, and
// bit 2 clear picks the a forms although bit 0 is set.
std::function<void(HandContext&)> hybrid(uint16_t m, std::function<void(HandContext&)> tables) {
    return [=](HandContext& hc) {
        hc.setFlatMatrix(16, 16, m);
        hc.setSpread(32, 9, 4, 2);
        for (uint8_t n : {0, 1, 3}) onNode(hc, n, n);
        onNode(hc, 255, 31);
        tables(hc);
    };
}
void nodesApart(HandContext& hc) {
    marked(hc, {30}, {4, 4, 4, 4});
    for (uint8_t n : {0, 1, 2}) onNode(hc, n, n);
    hc.setNode(0, 0, 0, packInks(20, 0, 0, 0)), hc.setNode(1, 0, 0, packInks(40, 0, 0, 0));
    hc.setNode(0, 0, 2, packInks(40, 0, 0, 0));
}
std::vector<Cell> line0From(int from, std::vector<int32_t> values) {
    std::vector<Cell> cells;
    for (int32_t v : values) cells.push_back({0, from++, v});
    return cells;
}

TEST(Dither, HandWorkedRuns) {
    std::vector<std::pair<KernelSetup, RunCase>> cases = {
        {kMono, {"tone above the matrix value prints, equal does not", [](HandContext& hc) {
             hc.setMatrix(4, 1, {4, 5, 6, 0}), hc.tone[10] = 5;
         }, std::vector<uint8_t>(8, 10), 8, 0, 0, "10011001"}},
        // Row y of the 4 x 3 matrix holds 0 in column y only; line 7 reads row 1, columns 5
        // and 9 are column 1 of the row (the run wraps the row after three pixels).
        {kMono, {"matrix row follows the line, column wraps", [](HandContext& hc) {
             hc.setMatrix(4, 3, {0, 9, 9, 9, 9, 0, 9, 9, 9, 9, 0, 9}), hc.tone[1] = 5;
         }, std::vector<uint8_t>(8, 1), 8, 5, 7, "10001000"}},
        // Misleading middle entries: a kernel that read tone[byte] would print 128, not 129.
        {with(kMono, 0, 0), {"fixed threshold takes the table ends", [](HandContext& hc) {
             hc.setFlatMatrix(2, 2, 5), hc.tone[128] = hc.tone[255] = 10;
         }, {128, 129, 0, 255}, 4, 0, 0, "0101"}},
        // maxT 4095, c0 = 50, c3 = 100: 3 where m < 100, 0 on 100..149 (the cells after 3's).
        {kColour, {"planes 3 and 0 share the matrix by the paired rule", [](HandContext& hc) {
             matrix(hc, 64, 64, 4095, {0, 99, 100, 149, 150, 4095, 50, 120});
             hc.tone[7] = 50, hc.tone[9] = 100;
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(7, 0, 0, 9));
         }, std::vector<uint8_t>(24, 0), 8, 0, 0, "00110001 00000000 00000000 11000010"}},
        // maxT - m = 100, 99 against tone 100.
        {kColour, {"planes 1 and 2 read the matrix from the top", [](HandContext& hc) {
             matrix(hc, 64, 64, 0, {3995, 3996, 3995, 3996});
             hc.tone[5] = 100;
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(0, 5, 5, 0));
         }, std::vector<uint8_t>(12, 0), 4, 0, 0, "0000 0101 0101 0000"}},
        // A, white, B, B: B averages with A across the white pixel (bit 2 of m clear rounds
        // up: (21 + 10 + 1) >> 1 = 16), then with itself smoothed ((21 + 16) >> 1 = 18);
        // likewise 30/41 -> 36, 38 and 50/61 -> 56, 58; plane 2 (70/81) is never smoothed.
        {kColour, {"smoothing with the previous non-white pixel", [](HandContext& hc) {
             marked(hc, {10, 16, 18, 30, 36, 38, 50, 56, 58, 70, 76, 78}, {0, 0, 0, 4});
             onNode(hc, 0, 0), onNode(hc, 1, 1), onNode(hc, 255, 3);
             hc.setNode(0, 0, 0, packInks(10, 30, 70, 50)), hc.setNode(0, 0, 1, packInks(21, 41, 81, 61));
             hc.setNode(3, 3, 3, packInks(10, 30, 70, 50));
         }, {0, 0, 0, 255, 255, 255, 1, 0, 0, 1, 0, 0}, 4, 0, 0, "1011 1011 1000 1011"}},
        // Node indices 1 apart are smoothed ((40 + 20) >> 1 = 30 on m = 4, no rounding), 2
        // apart are not; byte 2 selects the first node index.
        {kColour, {"one node apart smooths", nodesApart, {0, 0, 0, 0, 0, 1}, 2, 0, 0, "01 00 00 00"}},
        {kColour, {"two nodes apart do not", nodesApart, {0, 0, 0, 2, 0, 0}, 2, 0, 0, "00 00 00 00"}},
        // Tone 16 overfills both pairs: the odd last pixel prints all four planes.
        {kColour, {"white in the main pass but looked up as the odd last pixel", [](HandContext& hc) {
             marked(hc, {50}), onNode(hc, 255, 31), hc.setNode(31, 31, 31, packInks(50, 50, 50, 50));
         }, std::vector<uint8_t>(9, 255), 3, 0, 0, "001 001 001 001"}},
        {kInk, {"ink input takes the four bytes as amounts", [](HandContext& hc) { marked(hc, {40}); },
                {40, 0, 0, 0, 0, 0, 40, 0, 0, 40, 0, 0}, 3, 0, 0, "100 001 010 000"}},
        {kInk, {"ink input without ink is white only in the main pass", [](HandContext& hc) { marked(hc, {0}); },
                std::vector<uint8_t>(12, 0), 3, 0, 0, "001 001 001 001"}},
        // Byte k is 129 (bit set) or 128 (counts as 0): pixels read entries 0, 1, 6, 3, 4, 2
        // of (bit2 x 2 + bit1) x 2 + bit0; only entry 6 has ink.
        {kThreshold, {"fixed threshold: bits above 128 pick the small grid entry", [](HandContext& hc) {
             marked(hc, {70}), hc.conversion[6] = packInks(0, 0, 70, 0);
         }, {128, 128, 128, 129, 128, 128, 128, 129, 129, 129, 129, 128, 128, 128, 129, 128, 129, 128}, 6, 0, 0,
         "000000 000000 001000 000000"}},
        {kThreshold, {"fixed threshold: all bits set is white only in the main pass", [](HandContext& hc) {
             marked(hc, {70}), hc.conversion[7] = packInks(0, 0, 70, 0);
         }, {200, 200, 200, 129, 129, 129, 255, 255, 255}, 3, 0, 0, "000 000 001 000"}},
        // Pixel pairs on cells 99, 100, 101, 355 (q = 98, 100, 100, 98 from bits 1..7)
        // against weight 100: the upper node (and plane 2's ink) where q >= 100.
        {kColour, {"matrix bits 1 to 7 choose the upper node", [](HandContext& hc) {
             matrix(hc, 32, 16, 0, {99, 99, 100, 100, 101, 101, 355, 355});
             hc.tone[200] = 600;  // above maxT 511: plane 2 prints on any cell
             hc.setGridCell(77, 3, 100), hc.setNode(4, 4, 4, packInks(0, 0, 200, 0));
         }, std::vector<uint8_t>(24, 77), 8, 0, 0, "00000000 00000000 00111100 00000000"}},
        // Row {1, 2, 3} of tones 100, 200, 300: large below 300, medium below 500, small below 600.
        {kMono2, {"the three-size code stacks large, medium, small", [](HandContext& hc) {
             hc.setMatrix(8, 8, {0, 299, 300, 499, 500, 599, 600, 4095});
             hc.tone[1] = 100, hc.tone[2] = 200, hc.tone[3] = 300;
             hc.setSplit(9, 1, 2, 3);
             hc.monoCurve()[0] = 1, hc.monoCurve()[50 + 1] = 9;  // no level spread: byte 50 reads row 9
         }, std::vector<uint8_t>(8, 50), 8, 0, 0, "33221100"}},
        {with(kMono2, 3, 0, 0, 1, 300), {"a run longer than one chunk", [](HandContext& hc) {
             hc.tone[255] = 1, hc.setSplit(9, 0, 0, 255), hc.monoCurve()[0] = 1, hc.monoCurve()[50 + 1] = 9;
         }, std::vector<uint8_t>(300, 50), 300, 0, 0, std::string(300, '3')}},
        // Columns 0..4 read shift cells 0, 1, 2, 3, 5 (modulo W = 4: 0, 1, 2, 3, 1) at x + 24.
        {kMono2, {"the matrix shifts the level before the curve", [](HandContext& hc) {
             const uint16_t shift[] = {0, 1, 2, 3, 5};
             hc.setMatrix(32, 1, {});
             std::copy(shift, shift + 5, hc.matrix.begin() + 24);
             splitRows(hc, {1}, {2}, {3});
             hc.monoCurve()[0] = 4;
             for (uint16_t d = 0; d < 4; ++d) hc.monoCurve()[11 + d] = d;  // entries d + 10 + 1
         }, std::vector<uint8_t>(5, 10), 5, 0, 0, "01231"}},
        // Line 40: row A = 40 mod 32 = 8, row B = 64 mod 32 = 0; plane 0 reads row A at
        // column x, plane 1 row B at x + 16, plane 2 row A at x + 48, plane 3 row B at x + 40;
        // the odd last pixel (x = 4) too.
        {kColour2, {"each colour plane reads its own matrix place", [](HandContext& hc) {
             matrix(hc, 64, 32, 4095);
             hc.matrix[8 * 64 + 0] = hc.matrix[16 + 1] = hc.matrix[8 * 64 + 48 + 2] = hc.matrix[40 + 3] = 0;
             hc.matrix[8 * 64 + 4] = hc.matrix[16 + 4] = hc.matrix[8 * 64 + 48 + 4] = hc.matrix[40 + 4] = 0;
             splitRows(hc, {}, {}, {40});
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(40, 40, 40, 40));
         }, std::vector<uint8_t>(15, 0), 5, 0, 40, "30003 03003 00303 00033"}},
        // Weight 128 of node 2 moves to node 3 (as near), 129 stays: node (5, 2, 3); its
        // amounts 10, 40, 31, 32 lose the small ones (below 32) as the odd last pixel.
        {kColour2, {"the odd last pixel takes the nearest node and drops small amounts", [](HandContext& hc) {
             lastPixelRows(hc);
             hc.setGridCell(50, 2, 128), hc.setGridCell(60, 2, 129), onNode(hc, 70, 5);
             hc.setNode(5, 2, 3, packInks(10, 40, 31, 32));
         }, {50, 60, 70}, 1, 0, 0, "0 2 0 2"}},
        {kInk2, {"ink: the odd last pixel keeps small amounts", lastPixelRows, {10, 40, 31, 32}, 1, 0, 0, "3 2 3 2"}},
        {kInk2, {"ink input: amounts as they are, pixels without ink skipped but the last", [](HandContext& hc) {
             matrix(hc, 4, 4, 0), splitRows(hc, {}, {9}, {0});  // 0 would print large but for the white test
         }, {0, 0, 0, 0, 9, 0, 9, 0, 0, 0, 0, 0}, 3, 0, 0, "023 033 023 033"}},
        {kColour2, {"white in the main pass but looked up as the odd last pixel", [](HandContext& hc) {
             matrix(hc, 4, 4, 0), splitRows(hc, {}, {}, {60});
             onNode(hc, 255, 31), hc.setNode(31, 31, 31, packInks(60, 60, 60, 60));
         }, std::vector<uint8_t>(9, 255), 3, 0, 0, "003 003 003 003"}},
        {kColour2, {"smoothing rounds up from row A ((21 + 10 + 1) >> 1 = 16)", [](HandContext& hc) {
             matrix(hc, 4, 4, 0), splitRows(hc, {}, {}, {16});  // bit 2 clear
             onNode(hc, 0, 0), onNode(hc, 1, 1);
             hc.setNode(0, 0, 0, packInks(10, 0, 0, 0)), hc.setNode(0, 0, 1, packInks(21, 0, 0, 0));
         }, {0, 0, 0, 1, 0, 0}, 2, 0, 0, "03 00 00 00"}},
        // Column 10: sum 10 + 20 = 30 >= 45 - 20, dot, err -225, G2a. Column 11: (-900 >> 5)
        // + 40 = 11 < 35 - 20, no dot, G1.
        {kHybrid, {"hybrid: a worked run of two pixels", hybrid(0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 20, 0, 0)), hc.setNode(0, 0, 3, packInks(0, 40, 0, 0));
             hc.edThreshold[20] = 45, hc.edThreshold[40] = 35, hc.line(0)[10] = 320;
         }), {1, 0, 0, 3, 0, 0}, 2, 10, 0, "00 10 00 00",
         line0From(5, {0, -450, -450, -450, -856, -856, -812, -812, -406, -450, -450, 0})}},
        // q = 70: p = +20; bit 2 set: G2b, 6 at x, 4 at x + 1 (the carry, which the white
        // pixel writes over its pending 5000), nothing at x + 5.
        {kHybrid, {"hybrid: bit 2 set picks the b form and white takes the carry", hybrid(0x47, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 20, 0, 0));
             hc.edThreshold[20] = 45, hc.line(0)[10] = 320, hc.line(0)[11] = 5000;
         }), {1, 0, 0, 255, 255, 255}, 2, 10, 0, "00 10 00 00",
         line0From(5, {0, -450, -450, -450, -900, -1350, -900, -900, -450, -450, 0, 0})}},
        // Level 2 = spreadThreshold4 is not above it: G5a, 30/32 of err = 42 - 255 = -213 on
        // columns 21..34 (this line), 7..20 (next line), 21 again by the carry; not 6 or 35.
        {kHybrid, {"hybrid: a level at the lowest threshold spreads widest", hybrid(0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 2, 0, 0));
             hc.edThreshold[2] = 30, hc.line(0)[20] = 40 * 32;
         }), {1, 0, 0, 255, 255, 255}, 2, 20, 0, "00 10 00 00",
         line0From(5, {-213, 0, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213,
                       -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, -213, 0})}},
        // The floor of the cell meets the threshold less p = 45 - 20: 159 reads 4, and 4 + 20
        // misses it; 160 reads 5 and prints.
        {kHybrid, {"hybrid: a cell just below the threshold less p", hybrid(0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 20, 0, 0)), hc.edThreshold[20] = 45, hc.line(0)[10] = 159;
         }), {1, 0, 0, 255, 255, 255}, 2, 10, 0, "00 00 00 00"}},
        {kHybrid, {"hybrid: a cell at the threshold less p", hybrid(0x43, [](HandContext& hc) {
             hc.setNode(0, 0, 1, packInks(0, 20, 0, 0)), hc.edThreshold[20] = 45, hc.line(0)[10] = 160;
         }), {1, 0, 0, 255, 255, 255}, 2, 10, 0, "00 10 00 00"}},
        // maxT 255 - m 0 = 255 < tone 256 for planes 1 and 2.
        {kHybrid, {"hybrid: the odd last pixel uses the matrix and leaves its cell", hybrid(0, [](HandContext& hc) {
             hc.tone[30] = 256, hc.setNode(0, 0, 0, packInks(0, 30, 0, 0)), hc.line(0)[7] = 777;
         }), {0, 0, 0}, 1, 7, 0, "0 1 0 0", {{0, 7, 777}}}},
    };
    // One pixel at columns 0..5 of row 0, maxT - m = 99, 100, 149, 150, 0, 4095:
    // planes 1 and 2 pair on maxT - m (1 where 100 > it, else 2 where 150 > it);
    // planes 3 and 0 pair on m itself (3 where 3950 > m, else 0 where 4000 > m).
    const char* lastPixel[] = {"1 1 0 0", "1 0 1 0", "0 0 1 1", "0 0 0 1", "0 1 0 0", "0 0 0 1"};
    for (uint32_t x = 0; x < 6; ++x)
        cases.push_back({kColour, {"the odd last pixel pairs both pairs", [](HandContext& hc) {
             matrix(hc, 64, 64, 0, {3996, 3995, 3946, 3945, 4095, 0});
             hc.tone[5] = 100, hc.tone[6] = 50, hc.tone[7] = 50, hc.tone[9] = 3950;
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(7, 5, 6, 9));
         }, {0, 0, 0}, 1, x, 0, lastPixel[x]}});
    for (const auto& [setup, c] : cases) checkRun(setup, c);
}

}  // namespace
}  // namespace inkdot::test
