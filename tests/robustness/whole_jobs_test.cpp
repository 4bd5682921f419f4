// Whole jobs as a driver runs them, with one thing wrong.
//
// Blocks shorter than their format needs (handed over in vectors of their
// exact length, so that the sanitizer build catches any read behind them),
// settings at and past their limits, and the inputs the fuzz targets found:
// each refusal answers its code at its call, leaks nothing and leaves nothing
// to continue.
//
// Configurations that together reach every kernel family and every allocation
// site: allocation and lock failure at every site answers its code, shows the
// "Alloc" message once per failed allocation (none for a failed lock), leaves
// the instance as its last completed step left it and leaks nothing; separate
// instances on separate threads at once give the bytes of the job run alone
// (the thread-sanitizer build runs Threads.*), as do the unsized calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "cm/cm_context.h"
#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::Job;
using test::JobConfig;
using test::jobConfig;
using test::JobFiles;

// One change to a job's blocks or settings; the call `at` answers `rc` (or the job runs through: RC_OK).
struct Row {
    std::string what;
    std::function<void(JobFiles&)> change;
    uint32_t rc;
    std::string at = "CmSetResource 2";  // the colour table: where settings are checked
    bool unsizedToo = false;
};

Bytes test::HtBlocks::* const kHalftoneBlocks[] = {&test::HtBlocks::requestList, &test::HtBlocks::gridLevels,
                                                   &test::HtBlocks::matrix, &test::HtBlocks::dotSplit};

// The block of colour-management phase 1 to 6, then halftone phase 7 to 10, cut to `length`.
Row cut(uint32_t phase, size_t length, const std::string& what) {
    static const uint32_t kBlocks[] = {0, test::kJobTableBlock, 980, 990, 900, test::kJobCorrectionBlock};
    const std::string at = phase <= 6 ? "CmSetResource " + std::to_string(phase)
                                      : "HalftoneSetResource " + std::to_string(phase - 6);
    return {what + " cut to " + std::to_string(length), [=](JobFiles& f) {
                Bytes& block = phase <= 6 ? f.cmBlocks[kBlocks[phase - 1]] : f.htBlocks.*kHalftoneBlocks[phase - 7];
                block.resize(length);
                block.shrink_to_fit();
            }, RC_DATA, at};
}

std::vector<Row> rows() {
    std::vector<Row> rows;
    const JobFiles whole(jobConfig("whole", 1, 1, 2, true));
    const std::string text(whole.cmBlocks.at(0).begin(), whole.cmBlocks.at(0).end());
    // The index text has no terminator: its end ends it. Cut inside the marker,
    // the record line, or before the name lists: no usable record.
    const size_t marker = text.find("//"), record = text.find("100 317");
    for (size_t length : {size_t{0}, size_t{1}, marker + 1, marker + 2, record + 5, text.find("L0")})
        rows.push_back(cut(1, length, "index text"));
    for (size_t length = 0; length < whole.cmBlocks.at(test::kJobTableBlock).size(); ++length)
        rows.push_back(cut(2, length, "colour table"));
    for (size_t length = 0; length < whole.cmBlocks.at(980).size(); ++length) rows.push_back(cut(3, length, "routing"));
    for (size_t length = 0; length < 4; ++length) rows.push_back(cut(4, length, "base weights"));
    rows.push_back(cut(5, whole.cmBlocks.at(900).size() / 2, "table index"));
    const size_t tables = whole.cmBlocks.at(test::kJobCorrectionBlock).size();
    for (size_t length : {size_t{0}, size_t{1}, size_t{256}, tables - 256, tables - 1})
        rows.push_back(cut(6, length, "21 tables"));
    // Halftone: the request list, 34 level bytes, the matrix, 768 dot-split bytes.
    for (uint32_t phase = 7; phase <= 10; ++phase) {
        const size_t size = (whole.htBlocks.*kHalftoneBlocks[phase - 7]).size();
        for (size_t length = 0; length < size; length += phase >= 9 ? 7 : 1) rows.push_back(cut(phase, length, "halftone block"));
        rows.push_back(cut(phase, size - 1, "halftone block"));
    }
    rows.push_back({"a 64 x 64 matrix in a 16 x 16 block", [](JobFiles& f) { f.htBlocks.matrix[0] = f.htBlocks.matrix[1] = 64; },
                    RC_DATA, "HalftoneSetResource 3"});

    // Adjustments from -50 to 50, gamma from 100 to 300: refused at the colour table.
    const std::pair<const char*, int32_t CmSettings1::*> words[] = {
        {"brightness", &CmSettings1::brightness}, {"contrast", &CmSettings1::contrast}, {"saturation", &CmSettings1::saturation},
        {"offsetR", &CmSettings1::offsetR},       {"offsetG", &CmSettings1::offsetG},   {"offsetB", &CmSettings1::offsetB}};
    for (const auto& [name, word] : words)
        for (int32_t v : {-51, -50, 50, 51})
            rows.push_back({name + std::to_string(v), [word = word, v](JobFiles& f) { f.s1.*word = v; },
                            v == -51 || v == 51 ? RC_ARG + 1 : RC_OK});
    rows.push_back({"curves demanded, none supplied", [](JobFiles& f) { f.s1.curveSource = 1; }, RC_ARG + 1});
    static int32_t gamma;
    static test::ChunkDir gammaDir;
    if (gammaDir.count == 0) gammaDir.add(1, &gamma);
    for (int32_t g : {99, 100, 300, 301})
        rows.push_back({"gamma " + std::to_string(g), [g](JobFiles& f) { gamma = g, f.s1.chunkDir = gammaDir.get(); },
                        g % 100 == 0 ? RC_OK : RC_ARG + 2});
    // The table's saturation offset joins the setting in the adjusting mode
    // (processLevel 2, selectC 4), limited to 50 from above only.
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

    // A token of 256 characters or more anywhere after the heading breaks the
    // index: no records. The token reader once left its copy unterminated and
    // numbers were read from a buffer without an end (fuzz_cm_protocol).
    for (size_t at = text.find('\n', text.find(';')) + 1; (at = text.find_first_not_of(" \r\n", at)) != std::string::npos;) {
        const size_t end = std::min(text.find_first_of(" \r\n", at), text.size());
        const std::string overlong = text.substr(0, at) + std::string(300, '7') + text.substr(end);
        rows.push_back({"an overlong token at " + std::to_string(at), [overlong](JobFiles& f) { f.putText(0, overlong); },
                        RC_DATA, "CmSetResource 1", true});
        at = end;
    }
    return rows;
}

TEST(BadInput, EachRefusalAnswersItsCodeAtItsCall) {
    for (const Row& row : rows()) {
        for (bool sized : {true, false}) {
            if (!sized && !row.unsizedToo) continue;
            test::MemoryWatch watch;
            Job job(jobConfig("bad input", 1, 1, 2, true), sized);
            row.change(job.files);
            const bool ran = job.runAll();
            EXPECT_EQ(ran ? RC_OK : job.failedRc, row.rc) << row.what << ": " << job.failedAt;
            if (ran) continue;
            EXPECT_EQ(job.failedAt, row.at) << row.what;
            uint32_t next = 77;
            if (job.ht != nullptr) {
                EXPECT_EQ(job.ht->kernel, nullptr) << row.what;
            } else {
                EXPECT_EQ(job.cm->loader, nullptr) << row.what << ": the failed step releases the loader";
                // From the colour table on, a failed step leaves nothing to continue.
                const uint8_t any[4] = {7, 1, 0, 3};
                EXPECT_EQ(job.failedPhase < 2 ? RC_DATA : CmSetResourceSized(job.cm, any, 4, &next), RC_DATA) << row.what;
                EXPECT_EQ(next, 77u) << row.what;
            }
            const bool tableRefused = job.failedAt == "CmSetResource 2" && row.rc == RC_DATA;
            EXPECT_TRUE(!tableRefused || (job.lut().lutData == nullptr && job.lut().extraData == nullptr)) << row.what;
            EXPECT_TRUE(job.failedAt != "HalftoneSetResource 3" || job.ht->buffers[kThresholdMatrix].handle == nullptr)
                << row.what << ": the matrix is refused before it is acquired";
        }
    }
}

TEST(SizedBlocks, DataAreaOutsideTheBlock) {
    const struct { const char* what; uint32_t offsetDelta, size, rc; } cases[] = {
        {"area as written", 0, 8, RC_OK},        {"one byte longer", 0, 9, RC_DATA},
        {"one byte further", 1, 8, RC_DATA},     {"offset wraps with the size", 0, 0xFFFFFFF8u, RC_DATA},
        {"empty area anywhere", 0x7FFFFFFF, 0, RC_OK}, {"one-byte area", 0, 1, RC_OK},
    };
    for (const auto& c : cases) {
        test::MemoryWatch watch;
        Job job(jobConfig("data area", 1, 1, 1, true));
        Bytes& table = job.files.cmBlocks[test::kJobTableBlock];
        const uint32_t offset = static_cast<uint32_t>(table.size() - 8) + c.offsetDelta;
        for (int i = 0; i < 4; ++i) {
            table[16 + i] = static_cast<uint8_t>(offset >> (8 * i));
            table[20 + i] = static_cast<uint8_t>(c.size >> (8 * i));
        }
        EXPECT_EQ(job.runColour(2) ? RC_OK : job.failedRc, c.rc) << c.what;
        if (c.size != 1) continue;
        // The halftone engine reads an eight-byte descriptor through the CmLut: the area's one byte, then zeros.
        const uint8_t* d = job.lut().extraData;
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(Bytes(d, d + 8), (Bytes{table[offset], 0, 0, 0, 0, 0, 0, 0}));
    }
}

// Channel tables with and without; mono and colour; one and two bits; diffusion
// (shared and separate error lines), dither, hybrid dither, fixed threshold;
// replication; the four resolution classes.
const JobConfig kConfigs[] = {
    jobConfig("colour, tables, one-bit diffusion, separate lines", 1, 1, 1, true, 1440, 720, 0, 1, 4100),
    jobConfig("colour, one-bit diffusion, DoubleY", 1, 1, 1, false, 360, 720),
    jobConfig("colour, two-bit diffusion, replication", 1, 1, 2, false, 720, 720, 2),
    jobConfig("colour, two-bit diffusion 1440x720", 1, 1, 2, false, 1440, 720),
    jobConfig("colour, tables, one-bit hybrid dither", 3, 1, 1, true, 720, 720, 0, 0),
    jobConfig("colour, one-bit dither", 3, 1, 1, false, 720, 720),
    jobConfig("colour, fixed threshold", 0, 1, 1, false, 720, 720),
    jobConfig("colour, tables, two-bit dither", 3, 1, 2, true, 720, 720),
    jobConfig("mono, one-bit diffusion", 1, 0, 1, false, 720, 720),
    jobConfig("mono, tables, one-bit diffusion 1440x720", 1, 0, 1, true, 1440, 720),
    jobConfig("mono, one-bit dither", 3, 0, 1, false, 720, 1440),
    jobConfig("mono, two-bit diffusion, replication", 1, 0, 2, false, 720, 1440, 3),
    jobConfig("mono, two-bit dither", 3, 0, 2, false, 720, 720),
};

// The Halftone codes and the planes, or nothing when the job failed.
Bytes outcome(const JobConfig& config, bool sized = true) {
    Job job(config, sized);
    return job.runAll() ? job.output : Bytes{};
}

// The instance the failing call left behind stands as its last completed step left it.
void checkState(const Job& job, const Bytes& grid, const std::string& what) {
    uint32_t next = 0;
    uint8_t any[4] = {0xFF, 0, 0, 0}, dst[4] = {};
    if (job.failedAt == "CmNew" || job.failedAt == "HalftoneNew") {
        EXPECT_TRUE(job.failedAt == "CmNew" ? job.cm == nullptr : job.ht == nullptr) << what;
    } else if (job.ht == nullptr) {
        const CmLut& lut = job.lut();
        EXPECT_EQ(job.cm->loader, nullptr) << what << ": a failed step leaves no loader";
        EXPECT_TRUE(job.failedPhase != 1 || (lut.lutData == nullptr && lut.modelId == 0)) << what;
        EXPECT_TRUE(job.failedPhase < 3 || (lut.lutData != nullptr && std::memcmp(lut.lutData, grid.data(), grid.size()) == 0))
            << what << ": the grid stays as phase 2 left it";
        EXPECT_EQ(job.failedPhase < 2 ? RC_DATA : CmSetResourceSized(job.cm, any, 1, &next), RC_DATA) << what << ": nothing left";
    } else {
        const auto empty = [](const HtBuffer& b) { return b.handle == nullptr && b.data == nullptr; };
        EXPECT_TRUE(std::all_of(std::begin(job.ht->buffers), std::end(job.ht->buffers), empty) && job.ht->kernel == nullptr)
            << what << ": every slot released";
        EXPECT_EQ(Halftone(job.ht, any, dst, 1, 0, 1, 0, 0, 0, 0, 0), RC_DATA) << what;
        EXPECT_EQ(HalftoneSetResourceSized(job.ht, any, 4, &next), RC_DATA) << what;
    }
}

TEST(AllocationFaults, EverySiteOfWholeJobs) {
    for (JobConfig config : kConfigs) {
        config.lines = 3;
        uint32_t allocs = 0;
        Bytes grid;  // as phase 2 leaves it: the same job without channel tables stops there
        {
            test::MemoryWatch watch;
            std::optional<Job> job(std::in_place, config);
            ASSERT_TRUE(job->runColour() && job->runHalftone()) << config.name << ": " << job->failedAt;
            allocs = watch.seam().allocs;
            job->runLines();
            EXPECT_EQ(watch.seam().allocs, allocs) << config.name << ": Halftone allocates nothing";
            EXPECT_EQ(watch.seam().locks, allocs) << config.name << ": every block is locked once";
            job.reset();  // views into the caller's data are never unlocked
            EXPECT_EQ(watch.seam().unlocks, allocs) << config.name << ": every block is unlocked once";
            JobConfig plainConfig = config;
            plainConfig.channelTables = false;
            Job plain(plainConfig);
            ASSERT_TRUE(plain.runColour());
            const CmLut& lut = plain.lut();
            grid.assign(lut.lutData, lut.lutData + size_t{lut.gridCount[0]} * lut.gridCount[1] * lut.gridCount[2] * lut.channels);
        }
        for (int lock = 0; lock < 2; ++lock) {
            for (uint32_t at = 1; at <= allocs; ++at) {
                const std::string what = std::string(config.name) + (lock ? ": lock " : ": allocation ") + std::to_string(at);
                test::MemoryWatch watch;
                (lock ? watch.seam().failLockAt : watch.seam().failAllocAt) = at;
                Job job(config);
                EXPECT_FALSE(job.runAll()) << what;
                // The index search (phases 1 and 5) answers RC_MEM_ALLOC for a scratch area it could not obtain or lock.
                const bool search = job.failedAt == "CmSetResource 1" || job.failedAt == "CmSetResource 5";
                EXPECT_EQ(job.failedRc, lock && !search ? RC_MEM_LOCK : RC_MEM_ALLOC) << what << " at " << job.failedAt;
                EXPECT_EQ(watch.seam().messages, lock ? 0u : 1u) << what;
                EXPECT_TRUE(lock || std::string(watch.seam().lastMessage).rfind("size = ", 0) == 0) << what;
                checkState(job, grid, what);
            }
        }
    }
}

// Two instances of every job, all started together: error carried between
// runs and lines never crosses instances of the same kernel.
TEST(Threads, SeparateInstancesGiveTheSequentialBytes) {
    std::vector<Bytes> alone, together(2 * std::size(kConfigs));
    for (const JobConfig& c : kConfigs) {
        alone.push_back(outcome(c));
        ASSERT_FALSE(alone.back().empty()) << c.name;
        EXPECT_EQ(outcome(c, false), alone.back()) << c.name << ": the unsized calls read as the sized ones";
    }
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < together.size(); ++t) {
        threads.emplace_back([&, t] {
            while (!go.load()) std::this_thread::yield();
            together[t] = outcome(kConfigs[t % std::size(kConfigs)]);
        });
    }
    go = true;
    for (std::thread& t : threads) t.join();
    for (size_t t = 0; t < together.size(); ++t)
        EXPECT_TRUE(together[t] == alone[t % alone.size()]) << kConfigs[t % alone.size()].name << ": thread " << t << " differs";
}

}  // namespace
}  // namespace inkdot
