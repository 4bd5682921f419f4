// The sized resource calls: valid blocks read exactly as through the unsized
// calls, and every block shorter than its format needs is refused with
// RC_DATA. Blocks are copied into vectors of their exact length, so that the
// sanitizer build catches any read behind them.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "cm/cm_context.h"
#include "pipeline.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::Bytes;
using test::Job;
using test::JobConfig;
using test::jobConfig;

// A copy of the first `length` bytes of a block in an allocation of exactly
// that length (never null, also when empty), so that the sanitizer build
// reports any read behind it.
struct ExactBlock {
    std::unique_ptr<uint8_t[]> bytes;
    uint32_t length;
    ExactBlock(const Bytes& whole, size_t cut) : bytes(new uint8_t[cut]), length(static_cast<uint32_t>(cut)) {
        std::copy(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut), bytes.get());
    }
    const uint8_t* data() const { return bytes.get(); }
};

const JobConfig kConfigs[] = {
    jobConfig("colour, channel tables, one-bit diffusion", 1, 1, 1, true),
    jobConfig("colour, two-bit diffusion", 1, 1, 2),
    jobConfig("mono one-bit diffusion", 1, 0, 1),
    jobConfig("mono two-bit dither", 3, 0, 2, true),
};

TEST(SizedBlocks, ValidJobsReadTheSameAsUnsized) {
    for (const JobConfig& config : kConfigs) {
        test::MemoryWatch watch;
        Job sized(config, true);
        Job unsized(config, false);
        ASSERT_TRUE(sized.runAll()) << config.name << ": " << sized.failedAt << " " << sized.failedRc;
        ASSERT_TRUE(unsized.runAll()) << config.name << ": " << unsized.failedAt << " " << unsized.failedRc;
        EXPECT_EQ(sized.cmAsked, unsized.cmAsked) << config.name;
        EXPECT_EQ(sized.htAsked, unsized.htAsked) << config.name;
        EXPECT_EQ(sized.cmAsked.size(), config.channelTables ? 6u : 2u) << config.name;

        const CmLut& a = *CmGetLut(sized.cm);
        const CmLut& b = *CmGetLut(unsized.cm);
        const size_t nodes = static_cast<size_t>(a.gridCount[0]) * a.gridCount[1] * a.gridCount[2] * a.channels;
        ASSERT_EQ(nodes, static_cast<size_t>(b.gridCount[0]) * b.gridCount[1] * b.gridCount[2] * b.channels);
        EXPECT_EQ(std::memcmp(a.lutData, b.lutData, nodes), 0) << config.name;
        EXPECT_EQ(std::memcmp(a.grayTable, b.grayTable, sizeof a.grayTable), 0) << config.name;
        EXPECT_EQ(std::memcmp(a.extraData, b.extraData, 8), 0) << config.name;
        EXPECT_EQ(sized.halftoneCodes, unsized.halftoneCodes) << config.name;
        EXPECT_EQ(sized.output, unsized.output) << config.name;
    }
}

// Colour management: one instance driven to `phase` and given a cut block.
// The test holding it watches the memory service.
struct CmCut {
    test::JobFiles files{jobConfig("cut", 1, 1, 1, true)};
    CmContext* ctx = nullptr;
    uint32_t next = 0;

    // Feeds the blocks before `phase` whole, then the block of `phase` cut to
    // `length` bytes; answers that call's code.
    uint32_t cutAt(uint32_t phase, size_t length) {
        EXPECT_EQ(CmNew(&files.s1, &files.s2, 0, &next, &ctx), RC_OK);
        for (uint32_t p = 1; p < phase; ++p) {
            const Bytes& block = files.cmBlocks.at(next);
            EXPECT_EQ(CmSetResourceSized(ctx, block.data(), static_cast<uint32_t>(block.size()), &next), RC_OK) << p;
        }
        const ExactBlock cut(files.cmBlocks.at(next), length);
        return CmSetResourceSized(ctx, cut.data(), cut.length, &next);
    }
    size_t lengthAt(uint32_t phase) {
        static const uint32_t numbers[] = {0, 0, test::kJobTableBlock, 980, 990, 900, test::kJobCorrectionBlock};
        return files.cmBlocks.at(numbers[phase]).size();
    }
    ~CmCut() {
        if (ctx != nullptr) CmDelete(ctx);
    }
};

TEST(SizedBlocks, ColourTableShorterThanItsGridIsRefused) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    const size_t whole = CmCut().lengthAt(2);
    for (size_t length = 0; length < whole; ++length) {
        CmCut job;
        EXPECT_EQ(job.cutAt(2, length), RC_DATA) << length;
        EXPECT_EQ(CmGetLut(job.ctx)->lutData, nullptr) << "nothing stored at " << length;
        EXPECT_EQ(CmGetLut(job.ctx)->extraData, nullptr);
    }
    CmCut job;
    EXPECT_EQ(job.cutAt(2, whole), RC_OK);
}

TEST(SizedBlocks, DataAreaOutsideTheBlockIsRefused) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    struct Case { const char* what; uint32_t offsetDelta; uint32_t size; uint32_t rc; };
    const Case cases[] = {
        {"area as written", 0, 8, RC_OK},
        {"one byte longer", 0, 9, RC_DATA},
        {"one byte further", 1, 8, RC_DATA},
        {"offset wraps with the size", 0, 0xFFFFFFF8u, RC_DATA},
        {"empty area anywhere", 0x7FFFFFFF, 0, RC_OK},
    };
    for (const Case& c : cases) {
        CmCut job;
        Bytes& table = job.files.cmBlocks[test::kJobTableBlock];
        const uint32_t offset = static_cast<uint32_t>(table.size() - 8) + c.offsetDelta;
        for (int i = 0; i < 4; ++i) {
            table[16 + i] = static_cast<uint8_t>(offset >> (8 * i));
            table[20 + i] = static_cast<uint8_t>(c.size >> (8 * i));
        }
        EXPECT_EQ(job.cutAt(2, table.size()), c.rc) << c.what;
    }
}

TEST(SizedBlocks, ShortDataAreaIsKeptInADescriptorSizedBlock) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    // A one-byte area: the halftone engine reads an eight-byte descriptor
    // through the CmLut, which finds the area's byte and zeros behind it.
    CmCut job;
    Bytes& table = job.files.cmBlocks[test::kJobTableBlock];
    const uint32_t offset = static_cast<uint32_t>(table.size() - 8);
    table[20] = 1;
    table[21] = table[22] = table[23] = 0;
    ASSERT_EQ(job.cutAt(2, table.size()), RC_OK);
    const CmLut& lut = *CmGetLut(job.ctx);
    ASSERT_NE(lut.extraData, nullptr);
    EXPECT_EQ(lut.extraData[0], table[offset]);
    for (int i = 1; i < 8; ++i) EXPECT_EQ(lut.extraData[i], 0) << i;
}

TEST(SizedBlocks, IndexTextEndsAtTheEndOfTheBlock) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    // The text carries no terminator: the end of the block ends it.
    CmCut whole;
    EXPECT_EQ(whole.cutAt(1, whole.lengthAt(1)), RC_OK);
    EXPECT_EQ(whole.next, test::kJobTableBlock);

    // Cut inside the record line, or before the name lists: no usable record.
    const std::string text(whole.files.cmBlocks[0].begin(), whole.files.cmBlocks[0].end());
    const size_t inRecord = text.find("100 317") + 5;
    const size_t beforeLists = text.find("L0");
    for (size_t length : {size_t{0}, size_t{1}, text.find("//") + 1, text.find("//") + 2, inRecord, beforeLists}) {
        CmCut job;
        EXPECT_EQ(job.cutAt(1, length), RC_DATA) << length;
        EXPECT_EQ(job.next, 0u) << length;
    }
}

TEST(SizedBlocks, LoaderBlocksShorterThanTheirFormatAreRefused) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    struct Case { const char* what; uint32_t phase; size_t length; };
    const size_t routing = CmCut().lengthAt(3);
    const size_t tables = CmCut().lengthAt(6);
    std::vector<Case> cases;
    for (size_t length = 0; length < routing; ++length) cases.push_back({"routing without its terminator", 3, length});
    for (size_t length = 0; length < 4; ++length) cases.push_back({"base weights short of the channels", 4, length});
    cases.push_back({"table index cut in its record", 5, CmCut().lengthAt(5) / 2});
    for (size_t length : {size_t{0}, size_t{1}, size_t{256}, tables - 256, tables - 1}) {
        cases.push_back({"correction tables short of 21", 6, length});
    }
    for (const Case& c : cases) {
        CmCut job;
        EXPECT_EQ(job.cutAt(c.phase, c.length), RC_DATA) << c.what << " " << c.length;
        EXPECT_EQ(job.ctx->loader, nullptr) << "the failed step releases the loader";
    }
    for (uint32_t phase = 3; phase <= 6; ++phase) {
        CmCut job;
        EXPECT_EQ(job.cutAt(phase, job.lengthAt(phase)), RC_OK) << phase;
    }
}

// Halftone: an instance fed whole blocks up to `phase`, then a cut one.
struct HtCut {
    test::ColourLut colour{test::evenLevels(3), [](int r, int g, int b) {
                               return test::ColourLut::Node{uint8_t(r), uint8_t(g), uint8_t(b), 0};
                           }};
    test::HtBlocks blocks;
    HtContext* ctx = nullptr;

    uint32_t cutAt(uint32_t phase, size_t length) {
        const HtSettings settings = test::htSettings(1, 1, 2);
        uint32_t model = 0;
        EXPECT_EQ(HalftoneNew(&settings, &colour.lut, 0, &model, &ctx), RC_OK);
        const Bytes* order[] = {&blocks.requestList, &blocks.gridLevels, &blocks.matrix, &blocks.dotSplit};
        uint32_t next = 0;
        for (uint32_t p = 1; p < phase; ++p) {
            const Bytes& b = *order[p - 1];
            EXPECT_EQ(HalftoneSetResourceSized(ctx, b.data(), static_cast<uint32_t>(b.size()), &next), RC_OK);
        }
        const ExactBlock cut(*order[phase - 1], length);
        return HalftoneSetResourceSized(ctx, cut.data(), cut.length, &next);
    }
    ~HtCut() {
        if (ctx != nullptr) {
            EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
        }
    }
};

TEST(SizedBlocks, HalftoneBlocksShorterThanTheirFormatAreRefused) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    const test::HtBlocks whole;
    const size_t lengths[] = {whole.requestList.size(), 34, whole.matrix.size(), 768};
    ASSERT_EQ(whole.gridLevels.size(), 34u);
    ASSERT_EQ(whole.dotSplit.size(), 768u);
    for (uint32_t phase = 1; phase <= 4; ++phase) {
        for (size_t length = 0; length < lengths[phase - 1]; length += phase == 3 || phase == 4 ? 7 : 1) {
            HtCut job;
            EXPECT_EQ(job.cutAt(phase, length), RC_DATA) << "phase " << phase << " length " << length;
            EXPECT_EQ(job.ctx->kernel, nullptr);
        }
        HtCut job;
        EXPECT_EQ(job.cutAt(phase, lengths[phase - 1] - 1), RC_DATA) << "phase " << phase << " one byte short";
        HtCut fits;
        EXPECT_EQ(fits.cutAt(phase, lengths[phase - 1]), RC_OK) << "phase " << phase;
    }
}

TEST(SizedBlocks, MatrixCellsBeyondTheBlockAreRefusedBeforeAcquiring) {
    test::MemoryWatch watch;  // one per test: the cut instances below live side by side
    // A 64 x 64 matrix announced by a block that holds a 16 x 16 one.
    HtCut job;
    job.blocks.matrix[0] = 64;
    job.blocks.matrix[1] = 64;
    EXPECT_EQ(job.cutAt(3, job.blocks.matrix.size()), RC_DATA);
    EXPECT_EQ(job.ctx->buffers[kThresholdMatrix].handle, nullptr);
}

}  // namespace
}  // namespace inkdot
