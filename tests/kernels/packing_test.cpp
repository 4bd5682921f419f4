#include <gtest/gtest.h>

#include <vector>

#include "kernels/packing.h"

namespace inkdot {
namespace {

TEST(Packing, OneBitKeepsLeadingBitsAndZeroesTrailing) {
    std::vector<uint8_t> out = {0xFF, 0xFF, 0xFF};
    PlanePacker<1, 1> p(out.data(), 0, 3);
    for (bool dot : {true, false, true, true, false, true, false}) {
        p.dot(0, dot);
        p.next();
    }
    p.finish();
    // Pixels land at bit 4 down; the 3 leading bits survive; after pixel 7 the rest is 0.
    EXPECT_EQ(out[0], 0xE0 | 0x10 | 0x04 | 0x02);
    EXPECT_EQ(out[1], 0x80);
    EXPECT_EQ(out[2], 0xFF) << "bytes behind the run are not touched";
}

TEST(Packing, TwoBitCodesAndPlanes) {
    std::vector<uint8_t> out(8, 0xFF);
    PlanePacker<2, 2> p(out.data(), 4, 3);  // one pixel left in the first byte
    for (uint8_t code : {1, 2, 3, 0, 1, 2}) {
        p.set(0, code * kCodeRepeat);
        p.set(1, (3 - code) * kCodeRepeat);
        p.next();
    }
    p.finish();
    EXPECT_EQ(out[0], 0xFC | 0x01);
    EXPECT_EQ(out[1], 0b10110001);
    EXPECT_EQ(out[2], 0b10000000);
    EXPECT_EQ(out[3], 0xFF);
    EXPECT_EQ(out[4], 0xFC | 0x02);
    EXPECT_EQ(out[5], 0b01001110);
    EXPECT_EQ(out[6], 0b01000000);
}

}  // namespace
}  // namespace inkdot
