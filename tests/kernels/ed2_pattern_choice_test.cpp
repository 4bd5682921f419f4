#include <gtest/gtest.h>

#include "kernels/ed2/dot_size.h"
#include "kernels/ed2/ed2_pattern_choice.h"

namespace inkdot::ed2 {
namespace {

constexpr SmallThresholds kSquare{15, 3, 1};
constexpr SmallThresholds k1440x720{14, 3, 0};
constexpr SmallThresholds kDoubleY{111, 8, 2};

SmallDotPixel px(bool heavy, int32_t small, bool dot, bool aForm = true) { return {heavy, small, dot, aForm}; }

TEST(Ed2PatternChoice, General) {
    EXPECT_EQ(GeneralFamily::choose(px(true, 0, false), kSquare), Pattern::G1) << "heavy, dot or not";
    EXPECT_EQ(GeneralFamily::choose(px(true, 0, true), kSquare), Pattern::G1);
    EXPECT_EQ(GeneralFamily::choose(px(false, 16, false), kSquare), Pattern::G1);
    EXPECT_EQ(GeneralFamily::choose(px(false, 15, false), kSquare), Pattern::G0) << "s = T1 without a dot";
    EXPECT_EQ(GeneralFamily::choose(px(false, 15, true, true), kSquare), Pattern::G2a);
    EXPECT_EQ(GeneralFamily::choose(px(false, 15, true, false), kSquare), Pattern::G2b);
    EXPECT_EQ(GeneralFamily::choose(px(false, 2, true), kSquare), Pattern::G3);
    EXPECT_EQ(GeneralFamily::choose(px(false, 1, true, true), kSquare), Pattern::G4a);
    EXPECT_EQ(GeneralFamily::choose(px(false, 1, true, false), kSquare), Pattern::G4b);
}

TEST(Ed2PatternChoice, Family1440x720) {
    EXPECT_EQ(Family1440x720::choose(px(true, 0, false, true), k1440x720), Pattern::H0a) << "no dot comes first";
    EXPECT_EQ(Family1440x720::choose(px(true, 0, false, false), k1440x720), Pattern::H0b);
    EXPECT_EQ(Family1440x720::choose(px(true, 0, true), k1440x720), Pattern::H1);
    EXPECT_EQ(Family1440x720::choose(px(false, 15, true), k1440x720), Pattern::H1);
    EXPECT_EQ(Family1440x720::choose(px(false, 14, true), k1440x720), Pattern::H2);
    EXPECT_EQ(Family1440x720::choose(px(false, 4, true), k1440x720), Pattern::H2);
    EXPECT_EQ(Family1440x720::choose(px(false, 3, true), k1440x720), Pattern::H3);
}

TEST(Ed2PatternChoice, DoubleY) {
    EXPECT_EQ(DoubleYFamily::choose(px(true, 0, false), kDoubleY), Pattern::Y1);
    EXPECT_EQ(DoubleYFamily::choose(px(false, 112, false), kDoubleY), Pattern::Y1);
    EXPECT_EQ(DoubleYFamily::choose(px(false, 9, false), kDoubleY), Pattern::Y2) << "dot or not";
    EXPECT_EQ(DoubleYFamily::choose(px(false, 8, false), kDoubleY), Pattern::Y0);
    EXPECT_EQ(DoubleYFamily::choose(px(false, 3, true), kDoubleY), Pattern::Y3);
    EXPECT_EQ(DoubleYFamily::choose(px(false, 2, true, true), kDoubleY), Pattern::G3);
    EXPECT_EQ(DoubleYFamily::choose(px(false, 2, true, false), kDoubleY), Pattern::G3) << "no parity forms";
}

TEST(Ed2DotSize, RulesInOrder) {
    const SplitAgainstMatrix row{300, 500, 40, 80};
    EXPECT_EQ(decideDot(-5000, 299, row).code, kLargeDot);
    EXPECT_EQ(decideDot(-5000, 299, row).err, -5255);
    EXPECT_EQ(decideDot(0, 300, row).code, kMediumDot);
    EXPECT_EQ(decideDot(80, 500, row).code, kSmallDot) << "a sum equal to the threshold prints";
    EXPECT_EQ(decideDot(80, 500, row).err, 80 - 255);
    EXPECT_EQ(decideDot(79, 500, row).code, kNoDot);
    EXPECT_EQ(decideDot(79, 500, row).err, 79);
    const SplitAgainstMatrix noSmall{0, 0, 0, -1000};
    EXPECT_EQ(decideDot(500, 0, noSmall).code, kNoDot) << "no small amount, no small dot";
    EXPECT_EQ(decideDot(500, 0, noSmall).err, 500);
}

TEST(Ed2DotSize, MatrixOnlyStacksTheTones) {
    // Tones small 100, medium 200, large 300.
    EXPECT_EQ(matrixOnlyCode(299, 300, 500, 600), kLargeDot);
    EXPECT_EQ(matrixOnlyCode(300, 300, 500, 600), kMediumDot);
    EXPECT_EQ(matrixOnlyCode(499, 300, 500, 600), kMediumDot);
    EXPECT_EQ(matrixOnlyCode(500, 300, 500, 600), kSmallDot);
    EXPECT_EQ(matrixOnlyCode(599, 300, 500, 600), kSmallDot);
    EXPECT_EQ(matrixOnlyCode(600, 300, 500, 600), kNoDot);
    EXPECT_EQ(matrixLargeMediumCode(599, 300, 500), kNoDot) << "an idle plane never prints small";
    EXPECT_EQ(matrixLargeMediumCode(499, 300, 500), kMediumDot);
}

}  // namespace
}  // namespace inkdot::ed2
