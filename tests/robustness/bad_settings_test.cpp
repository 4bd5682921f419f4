// Settings at and past their limits, through whole jobs under a MemoryWatch:
// each refusal answers its code at the colour table (phase 2), leaks nothing
// and leaves nothing to continue.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::JobFiles;

TEST(BadSettings, EveryOperationAnswersItsCode) {
    static int32_t gamma;
    static test::ChunkDir gammaDir;
    if (gammaDir.count == 0) gammaDir.add(1, &gamma);
    struct Row { std::string what; std::function<void(JobFiles&)> change; uint32_t rc; };
    std::vector<Row> rows;
    const std::pair<const char*, int32_t CmSettings1::*> words[] = {
        {"brightness", &CmSettings1::brightness}, {"contrast", &CmSettings1::contrast},
        {"saturation", &CmSettings1::saturation}, {"offsetR", &CmSettings1::offsetR},
        {"offsetG", &CmSettings1::offsetG},       {"offsetB", &CmSettings1::offsetB}};
    for (const auto& [name, word] : words)
        for (int32_t v : {-51, -50, 50, 51})
            rows.push_back({name + std::to_string(v), [word = word, v](JobFiles& f) { f.s1.*word = v; },
                            v == -51 || v == 51 ? RC_ARG + 1 : RC_OK});
    rows.push_back({"curves demanded, none supplied", [](JobFiles& f) { f.s1.curveSource = 1; }, RC_ARG + 1});
    for (int32_t g : {99, 100, 300, 301})
        rows.push_back({"gamma " + std::to_string(g), [g](JobFiles& f) { gamma = g; f.s1.chunkDir = gammaDir.get(); },
                        g == 99 || g == 301 ? RC_ARG + 2 : RC_OK});
    // The table's saturation offset joins the setting in the adjusting mode
    // (processLevel 2), limited to 50 from above only.
    const struct { int32_t saturation; int8_t offset; uint32_t level, rc; } offsets[] = {
        {40, 20, 2, RC_OK}, {-50, -1, 2, RC_ARG + 1}, {-50, -1, 3, RC_OK}, {50, 0, 2, RC_OK}};
    for (const auto& o : offsets)
        rows.push_back({"saturation " + std::to_string(o.saturation) + " + " + std::to_string(o.offset), [o](JobFiles& f) {
                            f.s1.saturation = o.saturation;
                            f.s1.processLevel = o.level;
                            f.s1.processMode = 0;
                            f.putIndex(0, test::kJobTableBlock, 317, 1, o.level == 2 ? 4 : 3);
                            test::ColourTableWriter w = f.table;
                            w.saturationOffset = o.offset;
                            f.putTable(w);
                        }, o.rc});
    for (const Row& row : rows) {
        test::MemoryWatch watch;
        test::Job job(test::jobConfig("bad", 1, 1, 1, true));
        row.change(job.files);
        const bool ran = job.runColour();
        EXPECT_EQ(ran ? RC_OK : job.failedRc, row.rc) << row.what << " " << job.failedAt;
        if (ran) continue;
        EXPECT_EQ(job.failedPhase, 2u) << row.what;
        uint32_t next = 77;
        EXPECT_EQ(CmSetResource(job.cm, job.files.cmBlocks[980].data(), &next), RC_DATA) << row.what;
        EXPECT_EQ(next, 77u) << row.what;
    }
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    test::HtInstance ht(test::htSettings(1, 0, 1), lut.lut);
    std::vector<uint8_t> src(64, 128), dst(64, 0);
    EXPECT_EQ(Halftone(ht.ctx, src.data(), dst.data(), 64, 0x80000000u, 8, 0, 0, 0, 0, 0), RC_ARG + 5) << "bitOffset far out";
}

}  // namespace
}  // namespace inkdot
