// Invalid settings reaching the public calls, with the result code each
// answers, under a MemoryWatch: refusals leak nothing. Each check of a
// single step (argument order, block layouts, table limits) sits with that
// step's own tests; these rows cover what only the whole call path shows.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

// The code of the first failing colour-management call of a whole job.
uint32_t colourJob(const std::function<void(test::JobFiles&)>& change) {
    test::Job job(test::jobConfig("bad", 1, 1, 1, true));
    change(job.files);
    job.runColour();
    return job.failedRc;
}

TEST(BadSettings, EveryOperationAnswersItsCode) {
    static int32_t gamma99 = 99;
    static test::ChunkDir gammaDir;
    if (gammaDir.count == 0) gammaDir.add(1, &gamma99);
    const struct { const char* what; std::function<uint32_t()> call; uint32_t expected; } rows[] = {
        {"one-bit bitOffset far out", [] {
             test::MonoLut lut([](int v) { return 255 - v; });
             test::HtInstance ht(test::htSettings(1, 0, 1), lut.lut);
             std::vector<uint8_t> src(64, 128), dst(64, 0);
             return Halftone(ht.ctx, src.data(), dst.data(), 64, 0x80000000u, 8, 0, 0, 0, 0, 0);
         }, RC_ARG + 5},
        {"curves demanded, none supplied", [] { return colourJob([](test::JobFiles& f) { f.s1.curveSource = 1; }); }, RC_ARG + 1},
        {"offsetB -51", [] { return colourJob([](test::JobFiles& f) { f.s1.offsetB = -51; }); }, RC_ARG + 1},
        {"gamma 99", [] { return colourJob([](test::JobFiles& f) { f.s1.chunkDir = gammaDir.get(); }); }, RC_ARG + 2},
    };
    for (const auto& row : rows) {
        test::MemoryWatch watch;
        EXPECT_EQ(row.call(), row.expected) << row.what;
    }
}

}  // namespace
}  // namespace inkdot
