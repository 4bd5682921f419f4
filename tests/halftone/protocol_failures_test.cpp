// Failures of the resource protocol: which slots each one keeps or releases,
// and allocation failures at every site.
#include <gtest/gtest.h>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

using test::HtBlocks;
using test::HtInstance;

// Instances whose protocol touches every allocation site: one-bit and
// two-bit, monochrome and colour, shared and separate error lines.
struct Config {
    const char* name;
    HtSettings settings;
    int allocations;  // blocks a complete build takes, the record included
};

HtSettings colourWide(uint32_t outputBits) {
    HtSettings s = test::htSettings(1, 1, outputBits, 4100);  // four separate error lines
    s.resolutionX = 1440;
    s.resolutionY = 720;
    return s;
}

const Config kConfigs[] = {
    {"mono one-bit diffusion", test::htSettings(1, 0, 1), 6},   // record, line, replicated, curve, matrix, dot values
    {"mono two-bit dither", test::htSettings(3, 0, 2), 6},      // no error line; dot-split table
    {"colour one-bit, wide", colourWide(1), 9},                 // four lines, replicated, grid, matrix, dot values
    {"colour two-bit, shared lines", test::htSettings(1, 1, 2), 7},
};

struct Lut {
    test::ColourLut colour{test::evenLevels(3), [](int r, int g, int b) {
                               return test::ColourLut::Node{uint8_t(r), uint8_t(g), uint8_t(b), 0};
                           }};
    test::MonoLut mono{[](int v) { return 255 - v; }};
    const CmLut& forSettings(const HtSettings& s) const { return s.colourMode ? colour.lut : mono.lut; }
};

void failEverySite(bool lock) {
    for (const Config& c : kConfigs) {
        {
            test::MemoryWatch watch;
            Lut lut;
            HtInstance ht(c.settings, lut.forSettings(c.settings));
            ASSERT_EQ(ht.rc, RC_OK) << c.name;
            EXPECT_EQ(watch.seam().liveBlocks, c.allocations) << c.name << ": a complete build takes every site";
        }
        for (int n = 1; n <= c.allocations; ++n) {
            test::MemoryWatch watch;  // checks on leaving that nothing leaked after HalftoneDelete
            if (lock) watch.seam().failLockAt = n; else watch.seam().failAllocAt = n;
            Lut lut;
            HtInstance ht(c.settings, lut.forSettings(c.settings));
            const uint32_t want = lock ? RC_MEM_LOCK : RC_MEM_ALLOC;
            EXPECT_EQ(ht.rc, want) << c.name << ", failure " << n;
            if (n == 1) {
                EXPECT_EQ(ht.ctx, nullptr) << "the record itself";
                continue;
            }
            ASSERT_NE(ht.ctx, nullptr);
            EXPECT_TRUE(test::allSlotsEmpty(*ht.ctx)) << c.name << ", failure " << n << ": all slots released";
            EXPECT_EQ(watch.seam().liveBlocks, 1) << c.name << ", failure " << n;
            EXPECT_EQ(ht.ctx->kernel, nullptr);
            EXPECT_EQ(ht.ctx->failedPhase, ht.ctx->callCount);
        }
    }
}

TEST(AllocationFailure, EveryAllocationSiteReleasesAllSlots) { failEverySite(false); }
TEST(AllocationFailure, EveryLockSiteReleasesAllSlots) { failEverySite(true); }

TEST(AllocationFailure, FailingPhaseOfEachSite) {
    // Mono two-bit dither: record, then replicated line (phase 1), ink curve
    // (2), matrix and dot values (3), dot-split table (4).
    const uint32_t phaseOf[] = {0, 1, 2, 3, 3, 4};
    for (int n = 2; n <= 6; ++n) {
        test::MemoryWatch watch;
        watch.seam().failAllocAt = n;
        Lut lut;
        HtInstance ht(test::htSettings(3, 0, 2), lut.mono.lut);
        EXPECT_EQ(ht.ctx->callCount, phaseOf[n - 1]) << "failure " << n;
    }
}

TEST(FailureTable, ClassIdTerminatorKeepsTheSlots) {
    test::MemoryWatch watch;
    Lut lut;
    HtBlocks blocks;
    blocks.requestList = test::requestListBlock({100});  // position 1 is the terminator
    HtInstance ht(test::htSettings(1, 1, 1), lut.colour.lut, blocks);
    EXPECT_EQ(ht.rc, RC_DATA);
    EXPECT_EQ(ht.ctx->callCount, 2u);
    EXPECT_EQ(ht.ctx->failedPhase, 2u);
    EXPECT_EQ(ht.feed(blocks.matrix), RC_DATA) << "a driver that goes on gets no kernel";
    EXPECT_EQ(ht.ctx->kernel, nullptr);
    EXPECT_EQ(ht.answers[1], 0xDEADBEEFu);
    EXPECT_NE(ht.ctx->buffers[kErrorLine0].handle, nullptr);
    EXPECT_NE(ht.ctx->buffers[kReplicatedLine].handle, nullptr);
    EXPECT_EQ(ht.ctx->buffers[kConversionTable].handle, nullptr) << "nothing else done";
}

TEST(FailureTable, NullBlockRefusedWhereABlockIsRead) {
    test::MemoryWatch watch;
    Lut lut;
    HtContext* ctx = nullptr;
    uint32_t model = 0, next = 0;
    const HtSettings s = test::htSettings(1, 0, 1);
    ASSERT_EQ(HalftoneNew(&s, &lut.mono.lut, 0, &model, &ctx), RC_OK);
    EXPECT_EQ(HalftoneSetResource(ctx, nullptr, &next), RC_ARG + 2);
    EXPECT_EQ(ctx->failedPhase, 1u);
    EXPECT_EQ(HalftoneDelete(ctx), RC_OK);
}

TEST(FailureTable, RefusedSettingsAreNotFed) {
    test::MemoryWatch watch;
    test::MonoLut lut([](int v) { return 255 - v; });
    HtSettings s = test::htSettings(1, 0, 1);
    s.inputFormat = 3;  // colour pixels for a monochrome instance: HalftoneNew answered 513
    test::HtInstance ht(s, lut.lut);
    EXPECT_EQ(ht.rc, RC_ARG + 1);
    ASSERT_NE(ht.ctx, nullptr);
    uint32_t next = 0;
    EXPECT_EQ(HalftoneSetResource(ht.ctx, test::HtBlocks{}.requestList.data(), &next), RC_ARG + 1);
    EXPECT_EQ(ht.feed(test::HtBlocks{}.gridLevels), RC_DATA);
    EXPECT_EQ(watch.seam().liveBlocks, 1);
}

}  // namespace
}  // namespace inkdot
