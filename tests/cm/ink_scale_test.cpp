#include <gtest/gtest.h>

#include "cm/ink_scale.h"

namespace inkdot {
namespace {

TEST(InkScale, WorkedValuesAndMonotony) {
    // A = 150, B = 100. v = 128: t = 127^2 x 50 + 1 = 806451, u = (3162 + 25500) / 100 = 286,
    // (143 + 32640) / 286 = 114.
    EXPECT_EQ(inkScale(128, 150, 100), 114);
    // v = 0: u = (12750 + 25500) / 100 = 382; (191 + 0) / 382 = 0. v = 255: t = 1, u = 255.
    EXPECT_EQ(inkScale(0, 150, 100), 0);
    EXPECT_EQ(inkScale(255, 150, 100), 255);
    // v = 1: t = 254^2 x 50 + 1 = 3225801, u = (12650 + 25500) / 100 = 381; (190 + 255) / 381 = 1
    // where a quotient without the half divisor would give 0.
    EXPECT_EQ(inkScale(1, 150, 100), 1);
    // 100 % is the identity; larger percentages lower the value.
    for (int v = 0; v <= 255; ++v) {
        const auto u = static_cast<uint8_t>(v);
        EXPECT_EQ(inkScale(u, 100, 100), v) << v;
        EXPECT_LE(inkScale(u, 130, 120), v);
        EXPECT_LE(inkScale(u, 200, 200), inkScale(u, 130, 120));
    }
}

TEST(InkScale, OutOfRangeTablesAreClampedOrLeftAlone) {
    // A = B = 50: u = 127, v = 200 gives (63 + 51000) / 127 = 402: clamped.
    EXPECT_EQ(inkScale(200, 50, 50), 255);
    // A = B = 0: u = (1 / 255 + 0) / 100 = 0: the value stays.
    for (int v : {0, 1, 77, 255}) EXPECT_EQ(inkScale(static_cast<uint8_t>(v), 0, 0), v);
    // Negative u (B far below 0) gives a negative quotient: clamped to 0.
    EXPECT_EQ(inkScale(200, 0, -1000), 0);
    // Extreme 16-bit percentages wrap in 32 bits instead of overflowing.
    for (int v = 0; v <= 255; ++v) (void)inkScale(static_cast<uint8_t>(v), 32767, -32768);
}

}  // namespace
}  // namespace inkdot
