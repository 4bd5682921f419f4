// Allocation and lock failure at every site of whole jobs, in configurations
// that together reach every site. Each failure answers its code, shows the
// "Alloc" message once per failed allocation (none for a failed lock), leaves
// the instance as its last completed step left it, and leaks nothing.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "cm/cm_context.h"
#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Job;
using test::JobConfig;
using test::jobConfig;

JobConfig with(JobConfig c, const std::function<void(HtSettings&)>& change = [](HtSettings&) {}) {
    change(c.ht);
    c.lines = 3;
    return c;
}

// Channel tables with and without; mono and colour; one and two bits; diffusion
// (shared and separate error lines), dither, hybrid dither, fixed threshold; replication.
const JobConfig kConfigs[] = {
    with(jobConfig("colour, channel tables, one-bit diffusion, separate lines", 1, 1, 1, true, 4100),
         [](HtSettings& s) { s.resolutionX = 1440; }),
    with(jobConfig("colour, two-bit diffusion, replication", 1, 1, 2), [](HtSettings& s) { s.scaleMode = 2; }),
    with(jobConfig("colour, channel tables, one-bit hybrid dither", 3, 1, 1, true), [](HtSettings& s) { s.ditherMode = 0; }),
    with(jobConfig("colour, fixed threshold", 0, 1, 1)),
    with(jobConfig("colour, two-bit dither", 3, 1, 2, true)),
    with(jobConfig("mono, channel tables, one-bit diffusion", 1, 0, 1, true)),
    with(jobConfig("mono, one-bit dither", 3, 0, 1)),
    with(jobConfig("mono, two-bit diffusion, replication", 1, 0, 2), [](HtSettings& s) { s.scaleMode = 3; }),
    with(jobConfig("mono, two-bit dither", 3, 0, 2)),
};

size_t gridBytes(const CmLut& lut) { return size_t{lut.gridCount[0]} * lut.gridCount[1] * lut.gridCount[2] * lut.channels; }

// The instance the failing call left behind stands as its last completed step left it.
void checkState(const Job& job, const test::Bytes& grid, const std::string& what) {
    uint32_t next = 0;
    uint8_t any[4] = {0xFF, 0, 0, 0}, dst[4] = {};
    if (job.failedAt == "CmNew" || job.failedAt == "HalftoneNew") {
        EXPECT_TRUE(job.failedAt == "CmNew" ? job.cm == nullptr : job.ht == nullptr) << what;
    } else if (job.ht == nullptr) {
        const CmLut& lut = job.lut();
        EXPECT_EQ(job.cm->loader, nullptr) << what << ": a failed step leaves no loader";
        if (job.failedPhase == 1) EXPECT_TRUE(lut.lutData == nullptr && lut.modelId == 0) << what;
        if (job.failedPhase >= 3)
            EXPECT_TRUE(lut.lutData != nullptr && std::memcmp(lut.lutData, grid.data(), grid.size()) == 0)
                << what << ": the grid stays as phase 2 left it";
        if (job.failedPhase >= 2) EXPECT_EQ(CmSetResourceSized(job.cm, any, 1, &next), RC_DATA) << what << ": nothing left";
    } else {
        EXPECT_TRUE(test::allSlotsEmpty(*job.ht) && job.ht->kernel == nullptr) << what << ": every slot released";
        EXPECT_EQ(Halftone(job.ht, any, dst, 1, 0, 1, 0, 0, 0, 0, 0), RC_DATA) << what;
        EXPECT_EQ(HalftoneSetResourceSized(job.ht, any, 4, &next), RC_DATA) << what;
    }
}

TEST(AllocationFaults, EverySiteOfWholeJobs) {
    for (const JobConfig& config : kConfigs) {
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
            JobConfig plain = config;
            plain.channelTables = false;
            Job before(plain);
            ASSERT_TRUE(before.runColour());
            grid.assign(before.lut().lutData, before.lut().lutData + gridBytes(before.lut()));
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
                if (!lock) EXPECT_EQ(std::string(watch.seam().lastMessage).rfind("size = ", 0), 0u) << what;
                checkState(job, grid, what);
            }
        }
    }
}

}  // namespace
}  // namespace inkdot
