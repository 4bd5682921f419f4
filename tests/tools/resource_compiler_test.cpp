// The resource compiler: the default sources compile, and mistakes in a
// pack description are reported with file and line.
#include <gtest/gtest.h>

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
        {"5 grid-levels\n5 grid-levels\n", "pack.txt:2: block 5 is described twice"},
        {"5 matrix width=48 height=8\n", "power of two"},
        {"5 colour-table points=49\n", "points must be a whole number from 2 to 48"},
        {"5 index\n", "index needs file="},
        {"# nothing\n", "describes no blocks"},
        // Bad values stop the line before anything is built from them: these
        // once divided by zero (points=1) or ran for minutes and gigabytes.
        {"5 colour-table points=1\n", "points must be a whole number from 2 to 48"},
        {"5 colour-table dot-split=7\n", "pack.txt:1: dot-split=7 names no dot-split block"},
        {"5 colour-table dot-split=7\n6 colour-table ink-param=350,100 dot-split=7\n7 dot-split\n",
         "pack.txt:2: its ink-param differs from block 5"},
        {"5 correction-tables strength=nan\n", "strength must be a number from 1 to 4"},
        {"5 routing records=0:0.1\n", "four rows from 0 to 3"},
        {"5 dot-split medium=0.5,0.9 large=0.1,1\n", "medium dots must fade in before large ones"},
        {"5 index file=.\n", "not a regular file"},
    };
    for (const auto& [manifest, message] : cases) {
        const std::string error = compileError(manifest);
        EXPECT_NE(error.find(message), std::string::npos) << manifest << ": " << error;
    }
}

}  // namespace
}  // namespace inkdot::tools
