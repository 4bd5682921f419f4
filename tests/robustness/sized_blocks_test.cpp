// The sized resource calls: valid blocks read exactly as through the unsized
// calls, and every block shorter than its format needs is refused with
// RC_DATA. The job hands each block over in a vector of its exact length, so
// that the sanitizer build catches any read behind it.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::Job;
using test::JobConfig;
using test::jobConfig;

TEST(SizedBlocks, ValidJobsReadTheSameAsUnsized) {
    const JobConfig configs[] = {
        jobConfig("colour, channel tables, one-bit diffusion", 1, 1, 1, true), jobConfig("colour, two-bit diffusion", 1, 1, 2),
        jobConfig("mono one-bit diffusion", 1, 0, 1), jobConfig("mono two-bit dither", 3, 0, 2, true)};
    for (const JobConfig& config : configs) {
        test::MemoryWatch watch;
        Job sized(config, true), unsized(config, false);
        ASSERT_TRUE(sized.runAll()) << config.name << ": " << sized.failedAt << " " << sized.failedRc;
        ASSERT_TRUE(unsized.runAll()) << config.name << ": " << unsized.failedAt << " " << unsized.failedRc;
        EXPECT_EQ(sized.cmAsked, unsized.cmAsked) << config.name;
        EXPECT_EQ(sized.htAsked, unsized.htAsked) << config.name;
        EXPECT_EQ(sized.cmAsked.size(), config.channelTables ? 6u : 2u) << config.name;
        const CmLut &a = sized.lut(), &b = unsized.lut();
        ASSERT_EQ(a.gridCount[0], b.gridCount[0]);
        EXPECT_EQ(std::memcmp(a.lutData, b.lutData, size_t{a.gridCount[0]} * a.gridCount[0] * a.gridCount[0] * a.channels), 0);
        EXPECT_EQ(std::memcmp(a.grayTable, b.grayTable, sizeof a.grayTable), 0) << config.name;
        EXPECT_EQ(std::memcmp(a.extraData, b.extraData, 8), 0) << config.name;
        EXPECT_EQ(sized.halftoneCodes, unsized.halftoneCodes) << config.name;
        EXPECT_EQ(sized.output, unsized.output) << config.name;
    }
}

// A job whose block of `phase` (colour management 1 to 6, then halftone 7 to
// 10) is cut to `length`; that call must answer RC_DATA and keep nothing.
void expectCutRefused(uint32_t phase, size_t length, const std::string& what) {
    static const uint32_t kBlocks[] = {0, test::kJobTableBlock, 980, 990, 900, test::kJobCorrectionBlock,
                                       0, test::kGridLevelsId, test::kMatrixGeneralId, test::kDotSplitId};
    test::MemoryWatch watch;
    Job job(jobConfig("cut", 1, 1, 2, true));
    Bytes& block = (phase <= 6 ? job.files.cmBlocks : job.files.htBlocks)[kBlocks[phase - 1]];
    block.resize(length);
    block.shrink_to_fit();
    EXPECT_FALSE(job.runAll()) << what;
    EXPECT_EQ(job.failedRc, RC_DATA) << what << " at " << job.failedAt;
    EXPECT_EQ(job.failedPhase, phase <= 6 ? phase : phase - 6) << what;
    if (phase <= 6) EXPECT_EQ(job.cm->loader, nullptr) << what << ": the failed step releases the loader";
    if (phase == 2) EXPECT_EQ(job.lut().lutData, nullptr) << what << ": nothing stored";
    if (phase == 2) EXPECT_EQ(job.lut().extraData, nullptr) << what;
    if (phase > 6) EXPECT_EQ(job.ht->kernel, nullptr) << what;
}

TEST(SizedBlocks, BlocksShorterThanTheirFormatAreRefused) {
    const test::JobFiles whole(jobConfig("whole", 1, 1, 2, true));
    const std::string text(whole.cmBlocks.at(0).begin(), whole.cmBlocks.at(0).end());
    // The index text carries no terminator: the end of the block ends it. Cut
    // inside the marker, the record line, or before the name lists: no usable record.
    for (size_t length : {size_t{0}, size_t{1}, text.find("//") + 1, text.find("//") + 2, text.find("100 317") + 5, text.find("L0")})
        expectCutRefused(1, length, "index text cut at " + std::to_string(length));
    for (size_t length = 0; length < whole.cmBlocks.at(test::kJobTableBlock).size(); ++length)
        expectCutRefused(2, length, "colour table shorter than its grid: " + std::to_string(length));
    for (size_t length = 0; length < whole.cmBlocks.at(980).size(); ++length)
        expectCutRefused(3, length, "routing without its terminator: " + std::to_string(length));
    for (size_t length = 0; length < 4; ++length) expectCutRefused(4, length, "base weights short of the channels");
    expectCutRefused(5, whole.cmBlocks.at(900).size() / 2, "table index cut in its record");
    const size_t tables = whole.cmBlocks.at(test::kJobCorrectionBlock).size();
    for (size_t length : {size_t{0}, size_t{1}, size_t{256}, tables - 256, tables - 1})
        expectCutRefused(6, length, "correction tables short of 21: " + std::to_string(length));
    // Halftone: the request list, 34 level bytes, the matrix, 768 dot-split bytes.
    for (uint32_t phase = 7; phase <= 10; ++phase) {
        static const uint32_t kIds[] = {0, test::kGridLevelsId, test::kMatrixGeneralId, test::kDotSplitId};
        const size_t size = whole.htBlocks.at(kIds[phase - 7]).size();
        for (size_t length = 0; length < size; length += phase >= 9 ? 7 : 1)
            expectCutRefused(phase, length, "halftone phase " + std::to_string(phase - 6) + " cut to " + std::to_string(length));
        expectCutRefused(phase, size - 1, "halftone phase " + std::to_string(phase - 6) + " one byte short");
    }
}

TEST(SizedBlocks, DataAreaOutsideTheBlock) {
    const struct { const char* what; uint32_t offsetDelta, size, rc; } cases[] = {
        {"area as written", 0, 8, RC_OK},
        {"one byte longer", 0, 9, RC_DATA},
        {"one byte further", 1, 8, RC_DATA},
        {"offset wraps with the size", 0, 0xFFFFFFF8u, RC_DATA},
        {"empty area anywhere", 0x7FFFFFFF, 0, RC_OK},
        {"one-byte area", 0, 1, RC_OK},
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
        // The halftone engine reads an eight-byte descriptor through the CmLut:
        // the area's one byte, then zeros.
        ASSERT_NE(job.lut().extraData, nullptr);
        EXPECT_EQ(job.lut().extraData[0], table[offset]);
        for (int i = 1; i < 8; ++i) EXPECT_EQ(job.lut().extraData[i], 0) << i;
    }
}

TEST(SizedBlocks, MatrixCellsBeyondTheBlockAreRefusedBeforeAcquiring) {
    test::MemoryWatch watch;
    Job job(jobConfig("matrix", 1, 1, 2));
    job.files.htBlocks[test::kMatrixGeneralId][0] = 64;  // a 64 x 64 matrix in a 16 x 16 block
    job.files.htBlocks[test::kMatrixGeneralId][1] = 64;
    EXPECT_FALSE(job.runAll());
    EXPECT_EQ(job.failedRc, RC_DATA);
    EXPECT_EQ(job.ht->buffers[kThresholdMatrix].handle, nullptr);
}

}  // namespace
}  // namespace inkdot
