// Whole jobs in configurations that together reach every kernel family and
// every allocation site: allocation and lock failure at every site answers its
// code, shows the "Alloc" message once per failed allocation (none for a failed
// lock), leaves the instance as its last completed step left it and leaks
// nothing; separate instances on separate threads at once give the bytes of the
// job run alone (the thread-sanitizer build runs Threads.*), as do the unsized calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "cm/cm_context.h"
#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Job;
using test::JobConfig;
using test::jobConfig;

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
test::Bytes outcome(const JobConfig& config, bool sized = true) {
    Job job(config, sized);
    if (!job.runAll()) return {};
    for (uint32_t code : job.halftoneCodes) job.output.push_back(static_cast<uint8_t>(code));
    return job.output;
}

// The instance the failing call left behind stands as its last completed step left it.
void checkState(const Job& job, const test::Bytes& grid, const std::string& what) {
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
        test::Bytes grid;  // as phase 2 leaves it: the same job without channel tables stops there
        {
            test::MemoryWatch watch;
            Job job(config);
            ASSERT_TRUE(job.runColour() && job.runHalftone()) << config.name << ": " << job.failedAt;
            allocs = watch.seam().allocs;
            job.runLines();
            EXPECT_EQ(watch.seam().allocs, allocs) << config.name << ": Halftone allocates nothing";
            EXPECT_EQ(watch.seam().locks, allocs) << config.name << ": every block is locked once";
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
    std::vector<test::Bytes> alone, together(2 * std::size(kConfigs));
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
