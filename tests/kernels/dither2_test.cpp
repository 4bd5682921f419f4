// Two-bit ordered dither: the three-size code rule, the level shift of the
// monochrome kernels, the four matrix places of the colour planes, the
// nearest-node last pixel, and the DoubleY kernels' halving.
#include <gtest/gtest.h>

#include <functional>
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

// Amounts 10, 40, 31, 32: rows 10 and 31 would print large, 40 and 32 medium.
void lastPixelRows(HandContext& hc) {
    hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
    splitRows(hc, {}, {40, 32}, {10, 31});
}

KernelSetup with(KernelSetup s, uint32_t inputFormat, int32_t scaleMode) {
    s.inputFormat = inputFormat;
    s.scaleMode = scaleMode;
    return s;
}
const KernelSetup kMono = monoSetup(2), kColour = colourSetup(2), kInk = with(colourSetup(2), 4, 0);

struct Case {
    const char* what;
    KernelSetup setup;
    std::function<void(HandContext&)> tables;
    std::vector<uint8_t> in;
    uint32_t count, line;
    std::string planes;
};

TEST(Dither2, HandWorkedRuns) {
    const Case cases[] = {
        // Row {1, 2, 3} of tones 100, 200, 300: large below 300, medium below 500, small below 600.
        {"the three-size code stacks large, medium, small", kMono, [](HandContext& hc) {
             hc.setMatrix(8, 8, {0, 299, 300, 499, 500, 599, 600, 4095});
             hc.tone[1] = 100, hc.tone[2] = 200, hc.tone[3] = 300;
             hc.setSplit(9, 1, 2, 3);
             flatShiftCurve(hc, {{50, 9}});
         }, std::vector<uint8_t>(8, 50), 8, 0, "33221100"},
        {"a full large row is large on every cell, an empty row never prints", kMono, [](HandContext& hc) {
             hc.setMatrix(16, 16, permutationMatrix(16, 1));
             hc.tone[255] = 256;  // above every matrix value
             hc.setSplit(200, 0, 0, 255);
             flatShiftCurve(hc, {{10, 200}, {20, 0}});
         }, {10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 20, 20, 20, 20}, 20, 5,
         "33333333333333330000"},
        // Columns 0..4 read shift cells 0, 1, 2, 3, 5 (modulo W = 4: 0, 1, 2, 3, 1) at x + 24.
        {"the matrix shifts the level before the curve", kMono, [](HandContext& hc) {
             std::vector<uint16_t> row(32, 0);
             const uint16_t shift[5] = {0, 1, 2, 3, 5};
             std::copy(shift, shift + 5, row.begin() + 24);
             hc.setMatrix(32, 1, row);
             splitRows(hc, {1}, {2}, {3});
             hc.monoCurve()[0] = 4;
             for (uint16_t d = 0; d < 4; ++d) hc.monoCurve()[11 + d] = d;  // entries d + 10 + 1
         }, std::vector<uint8_t>(5, 10), 5, 0, "01231"},
        {"halving reads one byte a pixel outside DoubleY", with(kMono, 0, -1), [](HandContext& hc) {
             splitRows(hc, {}, {}, {3});
             flatShiftCurve(hc, {{5, 3}, {9, 0}});
         }, {5, 9, 9, 5, 9, 9, 5, 5}, 4, 0, "3003"},
        {"DoubleY halving takes the smaller byte of a pair", with(doubleY(kMono), 0, -1), [](HandContext& hc) {
             splitRows(hc, {}, {}, {3});
             flatShiftCurve(hc, {{5, 3}, {9, 0}});
         }, {5, 9, 9, 5, 9, 9, 5, 5}, 4, 0, "3303"},
        // Line 40: row A = 40 mod 32 = 8, row B = 64 mod 32 = 0; plane 0 reads row A at
        // column x, plane 1 row B at x + 16, plane 2 row A at x + 48, plane 3 row B at x + 40.
        {"each colour plane reads its own matrix place", kColour, [](HandContext& hc) {
             std::vector<uint16_t> cells(64 * 32, 4095);
             cells[8 * 64 + 0] = cells[0 * 64 + 16 + 1] = cells[8 * 64 + 48 + 2] = cells[0 * 64 + 40 + 3] = 0;
             hc.setMatrix(64, 32, cells);
             splitRows(hc, {}, {}, {7});
             onNode(hc, 0, 0), hc.setNode(0, 0, 0, packInks(7, 7, 7, 7));
         }, std::vector<uint8_t>(12, 0), 4, 40, "3000 0300 0030 0003"},
        // Weight 128 of node 2 moves to node 3 (as near), 129 stays: node (5, 2, 3); its
        // amounts 10, 40, 31, 32 lose the small ones (below 32) as the odd last pixel.
        {"the odd last pixel takes the nearest node and drops small amounts", kColour, [](HandContext& hc) {
             lastPixelRows(hc);
             hc.setGridCell(50, 2, 128), hc.setGridCell(60, 2, 129), onNode(hc, 70, 5);
             hc.setNode(5, 2, 3, packInks(10, 40, 31, 32));
         }, {50, 60, 70}, 1, 0, "0 2 0 2"},
        {"ink input's odd last pixel keeps small amounts", kInk, lastPixelRows, {10, 40, 31, 32}, 1, 0, "3 2 3 2"},
        {"ink input: amounts as they are, pixels without ink skipped but the last", kInk, [](HandContext& hc) {
             hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
             splitRows(hc, {}, {9}, {0});  // a zero amount would print large but for the white test
         }, {0, 0, 0, 0, /**/ 9, 0, 9, 0, /**/ 0, 0, 0, 0}, 3, 0, "023 033 023 033"},
        {"white in the main pass but looked up as the odd last pixel", kColour, [](HandContext& hc) {
             hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));
             splitRows(hc, {}, {}, {60});
             onNode(hc, 255, 31), hc.setNode(31, 31, 31, packInks(60, 60, 60, 60));
         }, std::vector<uint8_t>(9, 255), 3, 0, "003 003 003 003"},
        {"smoothing rounds up from row A ((21 + 10 + 1) >> 1 = 16)", kColour, [](HandContext& hc) {
             hc.setMatrix(4, 4, std::vector<uint16_t>(16, 0));  // bit 2 clear
             splitRows(hc, {}, {}, {16});
             onNode(hc, 0, 0), onNode(hc, 1, 1);
             hc.setNode(0, 0, 0, packInks(10, 0, 0, 0)), hc.setNode(0, 0, 1, packInks(21, 0, 0, 0));
         }, {0, 0, 0, 1, 0, 0}, 2, 0, "03 00 00 00"},
    };
    for (const Case& c : cases) {
        HandContext hc(c.setup.settings());
        c.tables(hc);
        EXPECT_EQ(runPlanes(hc, c.in, c.count, 0, c.line), c.planes) << c.what;
    }
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
