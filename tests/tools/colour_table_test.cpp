// The colour table block as written by the resource compiler, read back
// field by field with the block's own offsets.
#include <gtest/gtest.h>

#include "driver/block_checks.h"
#include "rescomp/colour_table.h"

namespace inkdot::tools {
namespace {

using namespace colourtable;

// Reads a written table the way its layout describes it.
struct TableView {
    std::span<const uint8_t> b;
    unsigned n() const { return b[kGridCountAt]; }
    unsigned channels() const { return b[kChannelsAt]; }
    uint8_t level(int axis, unsigned i) const { return b[kGridLevelsAt + axis * n() + i]; }
    size_t nodesAt() const { return kGridLevelsAt + 3 * n(); }
    size_t nodeBytes() const { return size_t{channels()} * n() * n() * n(); }
    const uint8_t* node(unsigned r, unsigned g, unsigned bl) const {
        return &b[nodesAt() + ((size_t{r} * n() + g) * n() + bl) * channels()];
    }
    size_t neutralListAt() const { return nodesAt() + nodeBytes(); }
    size_t neutralNodesAt() const { return neutralListAt() + n(); }
};

TEST(GridLevels, RiseStrictlyFromZeroTo255) {
    for (unsigned n : {2u, 17u, 33u, 48u}) {
        EXPECT_EQ(gridLevel(0, n), 0);
        EXPECT_EQ(gridLevel(n - 1, n), 255);
        for (unsigned i = 1; i < n; ++i) EXPECT_GT(gridLevel(i, n), gridLevel(i - 1, n)) << n;
    }
    EXPECT_EQ(gridLevel(1, 17), 16);  // 255 / 16 = 15.94, rounded
    EXPECT_EQ(gridLevel(1, 33), 8);
}

class ColourTableLayout : public ::testing::TestWithParam<unsigned> {};

TEST_P(ColourTableLayout, FieldsSitWhereTheLayoutSays) {
    ColourTableParams params;
    params.points = GetParam();
    params.blackMode = 1;
    params.inkParam = {250, 100, -3, 0, 7};
    params.dotSplitBlock = 1100;
    const Bytes bytes = buildColourTable(params);
    const TableView t{bytes};

    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 13), "inkdot ctable");
    EXPECT_EQ(bytes[kTableModeAt], 50);
    EXPECT_EQ(bytes[kBlackModeAt], 1);
    // Big-endian 16-bit ink parameters.
    EXPECT_EQ(bytes[kInkParamAt], 0x00);
    EXPECT_EQ(bytes[kInkParamAt + 1], 250);
    EXPECT_EQ(bytes[kInkParamAt + 3], 100);
    EXPECT_EQ(bytes[kInkParamAt + 4], 0xFF);
    EXPECT_EQ(bytes[kInkParamAt + 5], 0xFD);
    EXPECT_EQ(bytes[kInkParamAt + 9], 7);
    for (size_t i = 25; i < 48; ++i) EXPECT_EQ(bytes[i], 0) << "no adjustments, byte " << i;
    for (int axis = 0; axis < 3; ++axis) EXPECT_EQ(bytes[kGridCountAt + axis], GetParam());
    EXPECT_EQ(t.channels(), 4u);
    for (int axis = 0; axis < 3; ++axis)
        for (unsigned i = 0; i < t.n(); ++i) EXPECT_EQ(t.level(axis, i), gridLevel(i, t.n()));

    // White and black corners.
    EXPECT_EQ(t.node(t.n() - 1, t.n() - 1, t.n() - 1)[3], 0);
    EXPECT_EQ(t.node(0, 0, 0)[3], 255);
    // Red is made of magenta and yellow: blue runs fastest, red slowest.
    const uint8_t* red = t.node(t.n() - 1, 0, 0);
    EXPECT_EQ(red[0], 0);
    EXPECT_EQ(red[1], 255);
    EXPECT_EQ(red[2], 255);
    const uint8_t* yellow = t.node(t.n() - 1, t.n() - 1, 0);
    EXPECT_EQ(yellow[2], 255);
    EXPECT_EQ(yellow[0] + yellow[1] + yellow[3], 0);

    // Neutral node list repeats the neutral nodes (i, i, i).
    for (unsigned i = 0; i < t.n(); ++i)
        for (unsigned c = 0; c < 4; ++c) EXPECT_EQ(bytes[t.neutralNodesAt() + i * 4 + c], t.node(i, i, i)[c]);
    // Neutral list: black only, paper at the white end.
    EXPECT_EQ(bytes[t.neutralListAt() + t.n() - 1], 0);
    EXPECT_EQ(bytes[t.neutralListAt()], 255);

    // Data area: the dot-split descriptor.
    const size_t areaAt = readU32le(bytes, kDataAreaOffsetAt);
    EXPECT_EQ(readU32le(bytes, kDataAreaSizeAt), 8u);
    EXPECT_EQ(areaAt, t.neutralNodesAt() + 4 * t.n());
    EXPECT_EQ(readU32le(bytes, areaAt), 1u);
    EXPECT_EQ(readU16le(bytes, areaAt + 4), 1u);
    EXPECT_EQ(readU16le(bytes, areaAt + 6), 1100u);
    EXPECT_EQ(bytes.size(), areaAt + 8);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ColourTableLayout, ::testing::Values(17u, 33u));

TEST(ColourTable, WithoutDotSplitHasNoDataArea) {
    ColourTableParams params;
    params.points = 2;
    const Bytes bytes = buildColourTable(params);
    EXPECT_EQ(readU32le(bytes, kDataAreaSizeAt), 0u);
    EXPECT_EQ(bytes.size(), kGridLevelsAt + 6 + 32 + 2 + 8);
}

TEST(ColourTableCheck, AcceptsAWrittenTableAndRefusesAShortOne) {
    ColourTableParams params;
    params.dotSplitBlock = 1100;
    Bytes bytes = buildColourTable(params);
    EXPECT_EQ(checkBlock(BlockRole::ColourTable, bytes), "");
    bytes.resize(bytes.size() - 9);  // the descriptor and one neutral byte gone
    EXPECT_NE(checkBlock(BlockRole::ColourTable, bytes), "");
    bytes.resize(40);
    EXPECT_NE(checkBlock(BlockRole::ColourTable, bytes).find("holds 40 bytes"), std::string::npos);
}

}  // namespace
}  // namespace inkdot::tools
