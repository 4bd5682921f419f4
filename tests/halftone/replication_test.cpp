#include <gtest/gtest.h>

#include <vector>

#include "halftone/replication.h"

namespace inkdot {
namespace {

TEST(Replication, SevenPixelsByThree) {
    const uint8_t in[] = {10, 11, 12, 13};
    std::vector<uint8_t> out(8, 0xEE);
    replicatePixels(in, out.data(), 1, 3, 7);
    EXPECT_EQ(out, (std::vector<uint8_t>{10, 10, 10, 11, 11, 11, 12, 0xEE}));
}

TEST(Replication, StopsInsideARepetition) {
    // Doubling with replication by 2: a run of 5 builds 3 pixels (0, 0, 1).
    const uint8_t in[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    std::vector<uint8_t> out(12, 0);
    replicatePixels(in, out.data(), 3, 2, 3);
    EXPECT_EQ(out, (std::vector<uint8_t>{1, 2, 3, 1, 2, 3, 4, 5, 6, 0, 0, 0}));
}

TEST(Replication, FourBytePixelsAsWords) {
    const uint8_t in[] = {1, 2, 3, 4, 5, 6, 7, 8};
    std::vector<uint8_t> out(20, 0);
    replicatePixels(in, out.data(), 4, 5, 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(out[4 * i], 1);
        EXPECT_EQ(out[4 * i + 3], 4);
    }
}

}  // namespace
}  // namespace inkdot
