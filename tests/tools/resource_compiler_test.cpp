// The resource compiler: the default sources compile, and mistakes in a
// pack description are reported with file and line.
#include <gtest/gtest.h>

#include "rescomp/channel_tables.h"
#include "rescomp/halftone_blocks.h"
#include "rescomp/resource_compiler.h"
#include "temp_dir.h"

#ifndef INKDOT_RESOURCE_DIR
#error "the tests need INKDOT_RESOURCE_DIR"
#endif

namespace inkdot::tools {
namespace {

using test::TempDir;

TEST(ResourceCompiler, DefaultSourcesBuildTheEmbeddedPack) {
    BlockMap blocks;
    std::string error;
    ASSERT_TRUE(compileResources(INKDOT_RESOURCE_DIR, blocks, error)) << error;
    const Bytes pack = writePack(blocks);
    const auto embedded = defaultPackBytes();
    EXPECT_TRUE(std::equal(pack.begin(), pack.end(), embedded.begin(), embedded.end()))
        << "the embedded pack is generated from resources/ at build time";
}

std::string compileError(const std::string& manifest) {
    TempDir dir;
    dir.write("pack.txt", manifest);
    dir.write("idx.txt", "//3 index\nheading\n/\nA\nP\nS\n0\n");
    BlockMap blocks;
    std::string error;
    EXPECT_FALSE(compileResources(dir.path().string(), blocks, error));
    return error;
}

TEST(ResourceCompiler, ReportsMistakesWithFileAndLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"# comment\n\n5 grid-levels colour=1\n", "pack.txt:3: unknown setting 'colour'"},
        {"5 lut\n", "unknown block kind 'lut'"},
        {"5 grid-levels\n5 grid-levels\n", "pack.txt:2: block 5 is described twice"},
        {"5 matrix width=48 height=8\n", "power of two"},
        {"5 matrix width=256 height=256\n", "65535 cells"},
        {"5 colour-table points=49\n", "points must be a whole number from 2 to 48"},
        {"5 colour-table ink-limit=abc\n", "ink-limit"},
        {"5 index\n", "index needs file="},
        {"5 index file=missing.txt\n", "cannot open"},
        {"5 request-list ids=1,2,x\n", "ids must list"},
        {"5 base-weights weights=50,90\n", "weights must list"},
        {"5 dot-split large=0.9,0.2\n", "two rising numbers"},
        {"70000 grid-levels\n", "block number"},
        {"5\n", "needs a number and a kind"},
        {"5 grid-levels stray\n", "expected key=value"},
        {"# nothing\n", "describes no blocks"},
        // Bad values stop the line before anything is built from them: these
        // once divided by zero (points=1) or ran for minutes and gigabytes.
        {"5 colour-table points=1\n", "points must be a whole number from 2 to 48"},
        {"5 colour-table points=1000\n", "points must be a whole number from 2 to 48"},
        {"5 colour-table points=-3\n", "points must be a whole number from 2 to 48"},
        {"5 colour-table ink-param=0,100\n", "ink-param A and B must be from 1 to 1000"},
        {"5 colour-table ink-param=250,100,0,0,0,0\n", "at most five values"},
        {"5 colour-table dot-split=7\n", "pack.txt:1: dot-split=7 names no dot-split block"},
        {"5 colour-table dot-split=6\n6 grid-levels\n", "dot-split=6 names no dot-split block"},
        {"5 colour-table dot-split=7\n6 colour-table ink-param=350,100 dot-split=7\n7 dot-split\n",
         "pack.txt:2: its ink-param differs from block 5"},
        {"5 correction-tables strength=nan\n", "strength must be a number from 1 to 4"},
        {"5 routing records=0:0.1\n", "four rows from 0 to 3"},
        {"5 routing records=254:0.1.2.3\n", "a key from 0 to 253"},
        {"5 routing records=0:0.1.2.4\n", "four rows from 0 to 3"},
        {"5 base-weights weights=50,50\n", "weights takes four values"},
        {"5 dot-split medium=0.5,0.9 large=0.1,1\n", "medium dots must fade in before large ones"},
        {"5 matrix width=64 width=32\n", "'width' is set twice"},
        {"5 index file=.\n", "not a regular file"},
    };
    for (const auto& [manifest, message] : cases) {
        const std::string error = compileError(manifest);
        EXPECT_NE(error.find(message), std::string::npos) << manifest << ": " << error;
    }
}

TEST(ResourceCompiler, IndexBlocksEndWithNul) {
    TempDir dir;
    dir.write("pack.txt", "0 index file=idx.txt\n");
    dir.write("idx.txt", "//3 x\n");
    BlockMap blocks;
    std::string error;
    ASSERT_TRUE(compileResources(dir.path().string(), blocks, error)) << error;
    EXPECT_EQ(blocks[0], (Bytes{'/', '/', '3', ' ', 'x', '\n', 0}));
}

TEST(ResourceCompiler, DotSplitMatchesTheOneBitToneOfItsTables) {
    // Row 128 of a split for ink parameters 250,100 (the default) delivers
    // 128 × 255 / 349 = 93.5 units of ink, 349 being the one-bit dot value
    // at 128; for 100,100 (no dot gain) the amount itself, 128.
    const std::pair<const char*, double> cases[] = {{"1 dot-split\n", 93.5},
                                                    {"1 dot-split\n2 colour-table points=2 dot-split=1\n", 93.5},
                                                    {"1 dot-split\n2 colour-table points=2 ink-param=100,100 "
                                                     "dot-split=1\n",
                                                     128.0}};
    for (const auto& [manifest, ink] : cases) {
        TempDir dir;
        dir.write("pack.txt", manifest);
        BlockMap blocks;
        std::string error;
        ASSERT_TRUE(compileResources(dir.path().string(), blocks, error)) << error;
        const Bytes& split = blocks[1];
        ASSERT_EQ(split.size(), 768u);
        EXPECT_NEAR(split[3 * 128] * 0.35 + split[3 * 128 + 1] * 0.65 + split[3 * 128 + 2], ink, 1.5) << manifest;
    }
}

TEST(HalftoneBlocks, RequestListEndsWith65535) {
    EXPECT_EQ(requestListBlock({1001, 1010}), (Bytes{0xE9, 0x03, 0xF2, 0x03, 0xFF, 0xFF}));
}

TEST(HalftoneBlocks, GridLevelBlockHolds32RisingLevels) {
    const Bytes b = gridLevelBlock();
    ASSERT_EQ(b.size(), 34u);
    EXPECT_EQ(readU16le(b, 0), 32);
    EXPECT_EQ(b[2], 0);
    EXPECT_EQ(b[33], 255);
    for (int i = 3; i < 34; ++i) EXPECT_GT(b[i], b[i - 1]);
}

TEST(HalftoneBlocks, MatrixBlockWritesSizeBytesAndLittleEndianCells) {
    const Bytes b = matrixBlock(2, 1, {0x0102, 7});
    EXPECT_EQ(b, (Bytes{2, 1, 0, 0, 0x02, 0x01, 7, 0}));
    EXPECT_EQ(matrixBlock(256, 1, std::vector<uint16_t>(256))[0], 255) << "255 stands for 256";
}

TEST(ChannelTables, RoutingRecordsEndWithFEAndTheListWithFF) {
    EXPECT_EQ(routingBlock({{0, {0, 1, 2, 3}}, {5, {3, 2}}}), (Bytes{0, 0, 1, 2, 3, 0xFE, 5, 3, 2, 0xFE, 0xFF}));
    EXPECT_EQ(routingBlock({}), Bytes{0xFF});
}

TEST(ChannelTables, TableTenIsTheIdentityAndTheOthersBendAroundIt) {
    const Bytes b = correctionTableBlock(1.6);
    ASSERT_EQ(b.size(), 21u * 256);
    for (int x = 0; x < 256; ++x) EXPECT_EQ(b[10 * 256 + x], x);
    for (int d = 0; d < 21; ++d) {
        EXPECT_EQ(b[d * 256], 0);
        EXPECT_EQ(b[d * 256 + 255], 255);
        for (int x = 1; x < 256; ++x) EXPECT_GE(b[d * 256 + x], b[d * 256 + x - 1]) << "table " << d;
    }
    // Lower tables lay down less ink, higher ones more.
    for (int d = 1; d < 21; ++d) EXPECT_GT(b[d * 256 + 128], b[(d - 1) * 256 + 128]) << d;
}

}  // namespace
}  // namespace inkdot::tools
