// Allocation and lock failure at every site of whole jobs: both ...New
// operations and both resource protocols, in configurations that together
// reach every site. Each failure must answer its code, show the "Alloc"
// message once per failed allocation (none for a failed lock), leave the
// instance as its last completed step left it, and leak nothing.
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

JobConfig with(JobConfig c, const std::function<void(HtSettings&)>& change) {
    change(c.ht);
    c.lines = 3;
    return c;
}
const auto same = [](HtSettings&) {};

// Channel tables with and without; monochrome and colour; one and two bits;
// diffusion (shared and separate error lines), dither, hybrid dither, fixed
// threshold; replication.
const JobConfig kConfigs[] = {
    with(jobConfig("colour, channel tables, one-bit diffusion, separate lines", 1, 1, 1, true, 4100),
         [](HtSettings& s) { s.resolutionX = 1440; }),
    with(jobConfig("colour, two-bit diffusion, replication", 1, 1, 2), [](HtSettings& s) { s.scaleMode = 2; }),
    with(jobConfig("colour, channel tables, one-bit hybrid dither", 3, 1, 1, true), [](HtSettings& s) { s.ditherMode = 0; }),
    with(jobConfig("colour, fixed threshold", 0, 1, 1), same),
    with(jobConfig("colour, two-bit dither", 3, 1, 2, true), same),
    with(jobConfig("mono, channel tables, one-bit diffusion", 1, 0, 1, true), same),
    with(jobConfig("mono, one-bit dither", 3, 0, 1), same),
    with(jobConfig("mono, two-bit diffusion, replication", 1, 0, 2), [](HtSettings& s) { s.scaleMode = 3; }),
    with(jobConfig("mono, two-bit dither", 3, 0, 2), same),
};

struct Reference {
    uint32_t allocs = 0;
    uint32_t locks = 0;
    test::Bytes gridAfterColourTable;  // the grid as phase 2 leaves it
};

Reference referenceRun(const JobConfig& config) {
    Reference ref;
    test::MemoryWatch watch;
    Job job(config);
    EXPECT_TRUE(job.runColour()) << config.name << ": " << job.failedAt;
    EXPECT_TRUE(job.runHalftone()) << config.name << ": " << job.failedAt << " " << job.failedRc;
    const uint32_t allocsBeforeLines = watch.seam().allocs;
    job.runLines();
    EXPECT_EQ(watch.seam().allocs, allocsBeforeLines) << config.name << ": Halftone allocates nothing";
    ref.allocs = watch.seam().allocs;
    ref.locks = watch.seam().locks;
    EXPECT_EQ(ref.allocs, ref.locks) << "every block is locked once";

    // The same job without the channel-weight record stops after phase 2.
    JobConfig plain = config;
    plain.channelTables = false;
    Job before(plain);
    EXPECT_TRUE(before.runColour());
    const CmLut& lut = *CmGetLut(before.cm);
    ref.gridAfterColourTable.assign(lut.lutData, lut.lutData + lut.gridCount[0] * lut.gridCount[1] * lut.gridCount[2] * lut.channels);
    return ref;
}

// The instance the failing call left behind stands as its last completed step left it.
void checkStateAfterFailure(Job& job, const Reference& ref, const std::string& what) {
    if (job.failedAt == "CmNew") {
        EXPECT_EQ(job.cm, nullptr) << what;
    } else if (job.failedAt.rfind("CmSetResource", 0) == 0) {
        ASSERT_NE(job.cm, nullptr) << what;
        const CmLut& lut = *CmGetLut(job.cm);
        EXPECT_EQ(job.cm->loader, nullptr) << what << ": a failed step leaves no loader";
        if (job.failedPhase == 1) {
            EXPECT_EQ(lut.lutData, nullptr) << what;
            EXPECT_EQ(lut.modelId, 0u) << what;
        }
        if (job.failedPhase >= 3) {
            ASSERT_NE(lut.lutData, nullptr) << what;
            EXPECT_EQ(std::memcmp(lut.lutData, ref.gridAfterColourTable.data(), ref.gridAfterColourTable.size()), 0)
                << what << ": the grid stays as phase 2 left it";
        }
        if (job.failedPhase >= 2) {
            uint32_t next = 0;
            const uint8_t any[1] = {0xFF};
            EXPECT_EQ(CmSetResourceSized(job.cm, any, 1, &next), RC_DATA) << what << ": nothing left to continue";
        }
    } else if (job.failedAt == "HalftoneNew") {
        EXPECT_EQ(job.ht, nullptr) << what;
    } else if (job.failedAt.rfind("HalftoneSetResource", 0) == 0) {
        ASSERT_NE(job.ht, nullptr) << what;
        EXPECT_TRUE(test::allSlotsEmpty(*job.ht)) << what << ": allocation failures release every slot";
        EXPECT_EQ(job.ht->kernel, nullptr) << what;
        uint8_t src[4] = {}, dst[4] = {};
        EXPECT_EQ(Halftone(job.ht, src, dst, 1, 0, 1, 0, 0, 0, 0, 0), RC_DATA) << what;
        uint32_t next = 0;
        EXPECT_EQ(HalftoneSetResourceSized(job.ht, src, 4, &next), RC_DATA) << what;
    } else {
        ADD_FAILURE() << what << ": failed at " << job.failedAt;
    }
}

// The index search reports one negative result for a scratch area it could
// not obtain, which its callers answer with RC_MEM_ALLOC whether the
// allocation or the lock failed (phase 1, and the table index of phase 5).
uint32_t expectedCode(const Job& job, bool lockFault) {
    const bool indexSearch = job.failedAt == "CmSetResource 1" || job.failedAt == "CmSetResource 5";
    return lockFault && !indexSearch ? RC_MEM_LOCK : RC_MEM_ALLOC;
}

TEST(AllocationFaults, EverySiteOfWholeJobs) {
    uint32_t injected = 0;
    for (const JobConfig& config : kConfigs) {
        const Reference ref = referenceRun(config);
        ASSERT_GT(ref.allocs, 0u) << config.name;
        for (int lockFaults = 0; lockFaults < 2; ++lockFaults) {
            for (uint32_t at = 1; at <= ref.allocs; ++at) {
                const std::string what = std::string(config.name) + (lockFaults ? ": lock " : ": allocation ") + std::to_string(at);
                test::MemoryWatch watch;
                (lockFaults ? watch.seam().failLockAt : watch.seam().failAllocAt) = at;
                {
                    Job job(config);
                    EXPECT_FALSE(job.runAll()) << what;
                    EXPECT_EQ(job.failedRc, expectedCode(job, lockFaults != 0)) << what << " at " << job.failedAt;
                    EXPECT_EQ(watch.seam().messages, lockFaults ? 0u : 1u) << what;
                    if (!lockFaults) {
                        EXPECT_EQ(std::string(watch.seam().lastMessage).rfind("size = ", 0), 0u) << what;
                    }
                    checkStateAfterFailure(job, ref, what);
                    job.release();
                }
                ++injected;
            }
        }
    }
    RecordProperty("injected", static_cast<int>(injected));
}

}  // namespace
}  // namespace inkdot
