// Dither1Mono: tone value against the matrix, the fixed-threshold method,
// input doubling and halving, packing, and the argument checks.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "kernels/kernels.h"
#include "support/hand_context.h"

namespace inkdot::test {
namespace {

// One run on a hand-made matrix and tone table, read back as bits.
struct MonoCase {
    const char* what;
    uint32_t method;
    int32_t scaleMode;
    uint32_t matrixWidth, matrixHeight;
    std::vector<uint16_t> cells;
    std::vector<std::pair<uint8_t, uint16_t>> tones;
    std::vector<uint8_t> in;
    uint32_t count, startX, lineNo;
    std::string bits;
};

// Row y of the 4 x 3 matrix holds 0 in column y only, 9 elsewhere.
const std::vector<uint16_t> kDiagonal = {0, 9, 9, 9, 9, 0, 9, 9, 9, 9, 0, 9};

TEST(Dither1Mono, RunCases) {
    const MonoCase cases[] = {
        {"tone above the matrix value prints, equal does not", 3, 0, 4, 1, {4, 5, 6, 0}, {{10, 5}},
         std::vector<uint8_t>(8, 10), 8, 0, 0, "10011001"},
        {"tone 0 never prints, even on matrix 0", 3, 0, 8, 8, std::vector<uint16_t>(64, 0), {{3, 0}, {4, 1}},
         {3, 4, 3, 4, 3, 4, 3, 4}, 8, 0, 0, "01010101"},
        // Line 7 reads row 1; columns 9 and 13 are column 1 of the row (AND 3).
        {"matrix row follows the line, column wraps", 3, 0, 4, 3, kDiagonal, {{1, 5}}, std::vector<uint8_t>(8, 1), 8,
         6, 7, "00010001"},
        // Misleading middle entries: a kernel that read tone[byte] would print 128, not 129.
        {"fixed threshold takes the table ends", 0, 0, 2, 2, {5, 5, 5, 5}, {{128, 10}, {255, 10}}, {128, 129, 0, 255},
         4, 0, 0, "0101"},
        {"halving takes the smaller of two bytes", 3, -1, 1, 1, {0}, {{2, 1}}, {2, 9, 9, 2, 2, 2, 9, 9}, 4, 0, 0,
         "1110"},
    };
    for (const MonoCase& c : cases) {
        KernelSetup s = monoSetup();
        s.method = c.method;
        s.scaleMode = c.scaleMode;
        HandContext hc(s.settings());
        hc.setMatrix(c.matrixWidth, c.matrixHeight, c.cells);
        for (auto [level, tone] : c.tones) hc.tone[level] = tone;
        std::vector<uint8_t> out(1, 0xAA);
        ASSERT_EQ(hc.run(c.in.data(), out.data(), 0, 0, c.count, c.startX, c.lineNo), RC_OK) << c.what;
        EXPECT_EQ(bitsOf(out, 0, 0, static_cast<uint32_t>(c.bits.size())), c.bits) << c.what;
    }
}

TEST(Dither1Mono, SplitRunsEqualOneRun) {
    HandContext hc(monoSetup().settings());
    hc.setMatrix(16, 16, permutationMatrix(16, 7));
    for (uint32_t v = 0; v < 256; ++v) hc.tone[v] = static_cast<uint16_t>(v);
    std::mt19937 rng(3);
    std::vector<uint8_t> in(64);
    for (auto& b : in) b = static_cast<uint8_t>(rng());
    std::vector<uint8_t> whole(8), pieces(8);
    ASSERT_EQ(hc.run(in.data(), whole.data(), 0, 0, 64, 0, 21), RC_OK);
    // 13 + 30 + 21 pixels: the second run starts at bit 5 of byte 1, the third at bit 3 of byte 5.
    ASSERT_EQ(hc.run(in.data(), pieces.data(), 0, 0, 13, 0, 21), RC_OK);
    ASSERT_EQ(hc.run(in.data() + 13, pieces.data() + 1, 0, 5, 30, 13, 21), RC_OK);
    ASSERT_EQ(hc.run(in.data() + 43, pieces.data() + 5, 0, 3, 21, 43, 21), RC_OK);
    EXPECT_EQ(pieces, whole);
}

}  // namespace
}  // namespace inkdot::test
