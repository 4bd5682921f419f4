// Phase 1's split of an expansion into doubling and replication.
#include <gtest/gtest.h>

#include "support/ht_fixture.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

struct Replication {
    int32_t scaleMode;
    uint32_t factor;
    uint32_t lineBytes;
};

Replication setUp(int32_t scaleMode, uint32_t colourMode = 0, uint32_t inputFormat = 0) {
    test::MonoLut lut([](int v) { return v; });
    HtSettings s = test::htSettings(1, colourMode, 1, 50);
    s.inputFormat = inputFormat;
    s.scaleMode = scaleMode;
    test::HtInstance ht(s, lut.lut, test::HtBlocks{}, 1);
    EXPECT_EQ(ht.rc, RC_OK);
    EXPECT_NE(ht.ctx->buffers[kReplicatedLine].handle, nullptr);
    return {ht.ctx->scaleMode, ht.ctx->replicationFactor, ht.ctx->buffers[kReplicatedLine].size};
}

TEST(ReplicationSetup, ExpansionSplitIntoDoublingAndFactor) {
    test::MemoryWatch watch;
    struct Case { int32_t in, scaleMode; uint32_t factor; };
    const Case cases[] = {
        {2, 0, 3},   // expansion 3: replication by 3
        {3, 1, 2},   // expansion 4: doubling and replication by 2
        {4, 0, 5},   // expansion 5
        {5, 1, 3},   // expansion 6
        {1, 1, 1},   // doubling alone stays
        {0, 0, 1},
        {-1, -1, 1}, // halving stays
    };
    for (const Case& c : cases) {
        const Replication got = setUp(c.in);
        EXPECT_EQ(got.scaleMode, c.scaleMode) << "scaleMode " << c.in;
        EXPECT_EQ(got.factor, c.factor) << "scaleMode " << c.in;
    }
}

TEST(ReplicationSetup, ReplicatedLineHoldsAWholeInputLine) {
    test::MemoryWatch watch;
    EXPECT_EQ(setUp(0).lineBytes, 50u);        // gray bytes
    EXPECT_EQ(setUp(2, 1, 3).lineBytes, 200u); // four-byte pixels
    EXPECT_EQ(setUp(2, 1, 2).lineBytes, 150u); // three colour bytes
}

}  // namespace
}  // namespace inkdot
