#include <gtest/gtest.h>

#include <vector>

#include "kernels/diffusion/spread_patterns.h"

namespace inkdot {
namespace {

using namespace patterns;

// Weights are taken from the pattern definitions themselves.
static_assert(weightIn64ths<G0>() == 64 && weightIn64ths<G1>() == 64);
static_assert(weightIn64ths<G2a>() == 64 && weightIn64ths<G2b>() == 64);
static_assert(weightIn64ths<G3>() == 64 && weightIn64ths<G4a>() == 64 && weightIn64ths<G4b>() == 64);
static_assert(weightIn64ths<G5a>() == 60 && weightIn64ths<G5b>() == 60, "G5 spreads 30/32");
static_assert(weightIn64ths<H0a>() == 64 && weightIn64ths<H0b>() == 64 && weightIn64ths<H1>() == 64);
static_assert(weightIn64ths<H2>() == 64 && weightIn64ths<H3>() == 64 && weightIn64ths<H4>() == 64);
static_assert(weightIn64ths<H5>() == 64);
static_assert(weightIn64ths<Y0>() == 64 && weightIn64ths<Y1>() == 64);
static_assert(weightIn64ths<Y2>() == 64 && weightIn64ths<Y3>() == 64);

// A line of cells with the margin in front; column x is cells[40 + x].
struct Cells {
    std::vector<int32_t> cells = std::vector<int32_t>(100, 0);
    int32_t* at(int x) { return cells.data() + 40 + x; }
    int32_t total() const { int32_t s = 0; for (int32_t c : cells) s += c; return s; }
};

// Each pattern delivers its whole weight (the cell at x gets its weight plus
// the old carry; the +1 weight travels in the new carry), and the run-time
// choice names the same pattern.
template <class P>
void expectPattern(Pattern pattern) {
    Cells line, runtime;
    int32_t carry = 7, runtimeCarry = 7;
    spread<P>(line.at(0), 10, carry);
    EXPECT_EQ(line.total() + carry, (weightIn64ths<P>() * 10) / 2 + 7) << static_cast<int>(pattern);
    spread(pattern, runtime.at(0), 10, runtimeCarry);
    EXPECT_EQ(runtime.cells, line.cells) << static_cast<int>(pattern);
    EXPECT_EQ(runtimeCarry, carry);
}

TEST(SpreadPatterns, EveryPatternDeliversItsWeightAndIsNamedAtRunTime) {
    expectPattern<G0>(Pattern::G0);   expectPattern<G1>(Pattern::G1);
    expectPattern<G2a>(Pattern::G2a); expectPattern<G2b>(Pattern::G2b);
    expectPattern<G3>(Pattern::G3);   expectPattern<G4a>(Pattern::G4a);
    expectPattern<G4b>(Pattern::G4b); expectPattern<G5a>(Pattern::G5a);
    expectPattern<G5b>(Pattern::G5b); expectPattern<H0a>(Pattern::H0a);
    expectPattern<H0b>(Pattern::H0b); expectPattern<H1>(Pattern::H1);
    expectPattern<H2>(Pattern::H2);   expectPattern<H3>(Pattern::H3);
    expectPattern<H4>(Pattern::H4);   expectPattern<H5>(Pattern::H5);
    expectPattern<Y0>(Pattern::Y0);   expectPattern<Y1>(Pattern::Y1);
    expectPattern<Y2>(Pattern::Y2);   expectPattern<Y3>(Pattern::Y3);
}

}  // namespace
}  // namespace inkdot
