// Dither1Colour and Threshold1Colour: grid node choice, smoothing, the
// paired threshold rule, white pixels, the last pixel of an odd run and ink
// input, one hand-worked run per row.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

uint32_t inkOn(unsigned plane, uint32_t amount) { return amount << (8 * plane); }

// Matrix cells row by row from `row0`, `fill` elsewhere.
void matrix(HandContext& hc, uint32_t w, uint32_t h, uint16_t fill, std::vector<uint16_t> row0) {
    std::vector<uint16_t> cells(w * h, fill);
    std::copy(row0.begin(), row0.end(), cells.begin());
    hc.setMatrix(w, h, cells);
}
// A 4 x 4 matrix of zeros (maxT 15) and tone 16 for the marked amounts: a
// plane alone prints exactly where its amount is marked.
void marked(HandContext& hc, std::initializer_list<uint8_t> amounts, std::vector<uint16_t> row0 = {}) {
    matrix(hc, 4, 4, 0, row0);
    for (uint8_t a : amounts) hc.tone[a] = 16;
}

KernelSetup with(KernelSetup s, uint32_t method, uint32_t inputFormat) {
    s.method = method;
    s.inputFormat = inputFormat;
    return s;
}
const KernelSetup kDither = colourSetup(), kThreshold = with(colourSetup(), 0, 2), kInk = with(colourSetup(), 3, 4);

struct Case {
    const char* what;
    KernelSetup setup;
    std::function<void(HandContext&)> tables;
    std::vector<uint8_t> in;
    uint32_t count;
    std::string planes;  // planes 0 1 2 3
};

TEST(Dither1Colour, HandWorkedRuns) {
    const Case cases[] = {
        // maxT 4095, c0 = 50, c3 = 100: 3 where m < 100, 0 on 100..149 (the cells after 3's).
        {"planes 3 and 0 share the matrix by the paired rule", kDither, [](HandContext& hc) {
             matrix(hc, 64, 64, 4095, {0, 99, 100, 149, 150, 4095, 50, 120});
             hc.tone[7] = 50, hc.tone[9] = 100;
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(7, 0, 0, 9));
         }, std::vector<uint8_t>(24, 0), 8, "00110001 00000000 00000000 11000010"},
        // maxT - m = 100, 99 against tone 100.
        {"planes 1 and 2 read the matrix from the top", kDither, [](HandContext& hc) {
             matrix(hc, 64, 64, 0, {3995, 3996, 3995, 3996});
             hc.tone[5] = 100;
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(0, 5, 5, 0));
         }, std::vector<uint8_t>(12, 0), 4, "0000 0101 0101 0000"},
        // A, white, B, B: B averages with A across the white pixel (bit 2 of m clear rounds
        // up: (21 + 10 + 1) >> 1 = 16), then with itself smoothed ((21 + 16) >> 1 = 18);
        // likewise 30/41 -> 36, 38 and 50/61 -> 56, 58; plane 2 (70/81) is never smoothed.
        {"smoothing with the previous non-white pixel", kDither, [](HandContext& hc) {
             marked(hc, {10, 16, 18, 30, 36, 38, 50, 56, 58, 70, 76, 78}, {0, 0, 0, 4});
             onNode(hc, 0, 0), onNode(hc, 1, 1), onNode(hc, 255, 3);
             hc.setNode(0, 0, 0, packInks(10, 30, 70, 50)), hc.setNode(0, 0, 1, packInks(21, 41, 81, 61));
             hc.setNode(3, 3, 3, packInks(10, 30, 70, 50));
         }, rgbPixels({{0, 0, 0}, {255, 255, 255}, {1, 0, 0}, {1, 0, 0}}), 4, "1011 1011 1000 1011"},
        // Tone 16 overfills both pairs: the odd last pixel prints all four planes.
        {"white in the main pass but looked up as the odd last pixel", kDither, [](HandContext& hc) {
             marked(hc, {50});
             onNode(hc, 255, 31), hc.setNode(31, 31, 31, packInks(50, 50, 50, 50));
         }, std::vector<uint8_t>(9, 255), 3, "001 001 001 001"},
        {"ink input takes the four bytes as amounts", kInk, [](HandContext& hc) { marked(hc, {40}); },
         {40, 0, 0, 0, /**/ 0, 0, 40, 0, /**/ 0, 40, 0, 0}, 3, "100 001 010 000"},
        {"ink input without ink is white only in the main pass", kInk, [](HandContext& hc) { marked(hc, {0}); },
         std::vector<uint8_t>(12, 0), 3, "001 001 001 001"},
        // Byte k is 129 (bit set) or 128 (counts as 0): pixels read entries 0, 1, 6, 3, 4, 2
        // of (bit2 x 2 + bit1) x 2 + bit0; only entry 6 has ink.
        {"fixed threshold: bits above 128 pick the small grid entry", kThreshold, [](HandContext& hc) {
             marked(hc, {70});
             hc.conversion[6] = inkOn(2, 70);
         }, {128, 128, 128, 129, 128, 128, 128, 129, 129, 129, 129, 128, 128, 128, 129, 128, 129, 128}, 6,
         "000000 000000 001000 000000"},
        {"fixed threshold: all bits set is white only in the main pass", kThreshold, [](HandContext& hc) {
             marked(hc, {70});
             hc.conversion[7] = inkOn(2, 70);
         }, rgbPixels({{200, 200, 200}, {129, 129, 129}, {255, 255, 255}}), 3, "000 000 001 000"},
    };
    for (const Case& c : cases) {
        HandContext hc(c.setup.settings());
        c.tables(hc);
        EXPECT_EQ(runPlanes(hc, c.in, c.count), c.planes) << c.what;
    }
}

// One pixel runs at columns 0..5 of row 0, maxT - m = 99, 100, 149, 150, 0,
// 4095: planes 1 and 2 pair on maxT - m (1 where 100 > it, else 2 where 150 >
// it); planes 3 and 0 pair on m itself (3 where 3950 > m, else 0 where 4000 > m).
TEST(Dither1Colour, OddLastPixelPairsBothPairs) {
    HandContext hc(colourSetup().settings());
    matrix(hc, 64, 64, 0, {3996, 3995, 3946, 3945, 4095, 0});
    hc.tone[5] = 100, hc.tone[6] = 50, hc.tone[7] = 50, hc.tone[9] = 3950;
    onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(7, 5, 6, 9));
    std::string planes[4];
    for (uint32_t x = 0; x < 6; ++x) {
        const std::string p = runPlanes(hc, {0, 0, 0}, 1, x);
        for (unsigned k = 0; k < 4; ++k) planes[k] += p[2 * k];
    }
    EXPECT_EQ(planes[0] + " " + planes[1] + " " + planes[2] + " " + planes[3], "110000 100010 011000 001101");
}

// Pixel pairs on cells 99, 100, 101, 355 (q = 98, 100, 100, 98 from bits 1..7)
// against weight 100: the upper node (and plane 2's ink) where q >= 100.
TEST(Dither1Colour, MatrixBits1To7ChooseTheUpperNode) {
    HandContext hc(colourSetup().settings());
    matrix(hc, 32, 16, 0, {99, 99, 100, 100, 101, 101, 355, 355});
    hc.tone[200] = 600;  // above maxT 511: plane 2 prints on any cell
    hc.setGridCell(77, 3, 100), hc.setNode(4, 4, 4, inkOn(2, 200));
    std::string plane2;
    for (uint32_t x = 0; x < 8; x += 2) plane2 += runPlanes(hc, std::vector<uint8_t>(6, 77), 2, x).substr(6, 2);
    EXPECT_EQ(plane2, "00111100");
}

// Along each axis: node indices 1 apart are smoothed ((40 + 20) >> 1 = 30 on
// m = 4, no rounding), 2 apart are not.
TEST(Dither1Colour, OneNodeApartSmoothsTwoApartDoesNot) {
    for (unsigned axis = 0; axis < 3; ++axis) {
        for (uint8_t far : {1, 2}) {
            HandContext hc(colourSetup().settings());
            marked(hc, {30}, {4, 4, 4, 4});
            for (uint8_t n : {0, 1, 2}) onNode(hc, n, n);
            uint32_t node[3] = {0, 0, 0};
            node[2 - axis] = far;  // byte 2 selects the first node index
            hc.setNode(0, 0, 0, inkOn(0, 20)), hc.setNode(node[0], node[1], node[2], inkOn(0, 40));
            std::vector<uint8_t> in(6, 0);
            in[3 + axis] = far;
            EXPECT_EQ(runPlanes(hc, in, 2).substr(0, 2), far == 1 ? "01" : "00") << "axis " << axis << " distance " << int(far);
        }
    }
}

TEST(Dither1Colour, EachRunStartsUnsmoothed) {
    HandContext hc(colourSetup().settings());
    marked(hc, {30}, {4, 4, 4, 4});
    onNode(hc, 0, 0), onNode(hc, 1, 1);
    hc.setNode(0, 0, 0, inkOn(0, 20)), hc.setNode(0, 0, 1, inkOn(0, 40));
    EXPECT_EQ(runPlanes(hc, {0, 0, 0, 1, 0, 0}, 2, 0).substr(0, 2), "01") << "smoothed within a run";
    runPlanes(hc, {0, 0, 0, 0, 0, 0}, 2, 0);
    EXPECT_EQ(runPlanes(hc, {1, 0, 0, 1, 0, 0}, 2, 2).substr(0, 2), "00") << "not with the run before";
}

}  // namespace
}  // namespace inkdot::test
