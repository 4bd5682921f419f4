#include <gtest/gtest.h>

#include <cstring>

#include "frame/memory.h"
#include "inkdot/inkdot.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

TEST(MemoryService, ZeroFillOnRequest) {
    test::MemoryWatch watch;
    auto* p = static_cast<unsigned char*>(MemAlloc(4096, 1));
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 4096; ++i) ASSERT_EQ(p[i], 0) << i;
    EXPECT_EQ(MemLock(p), p);
    EXPECT_EQ(MemUnlock(p), 0u);
    EXPECT_EQ(MemFree(p), 0u);
}

TEST(MemoryService, FailedAllocationShowsOneMessage) {
    test::MemoryWatch watch;
    watch.seam().failAllocAt = 2;
    void* first = MemAlloc(16, 0);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(MemAlloc(1234567, 1), nullptr);
    EXPECT_EQ(watch.seam().messages, 1u);
    EXPECT_STREQ(watch.seam().lastMessage, "size = 1234567");
    EXPECT_EQ(MemFree(first), 0u);
    EXPECT_EQ(watch.seam().messages, 1u);
}

TEST(MemoryService, ObtainBlockFollowsTheCallerPattern) {
    test::MemoryWatch watch;
    void* block = nullptr;
    watch.seam().failAllocAt = 1;
    EXPECT_EQ(obtainBlock(8, true, &block), RC_MEM_ALLOC);
    // A failed lock frees the block it could not lock: nothing is left behind.
    watch.seam().failLockAt = 1;
    EXPECT_EQ(obtainBlock(8, true, &block), RC_MEM_LOCK);
    EXPECT_EQ(watch.seam().liveBlocks, 0);
    ASSERT_EQ(obtainBlock(8, true, &block), RC_OK);
    watch.seam().failUnlockAt = watch.seam().unlocks + 1;
    EXPECT_EQ(releaseBlock(block), RC_MEM_UNLOCK);  // not freed after a failed unlock
    EXPECT_EQ(watch.seam().liveBlocks, 1);
    watch.seam().failFreeAt = watch.seam().frees + 1;
    EXPECT_EQ(releaseBlock(block), RC_MEM_FREE);
    EXPECT_EQ(releaseBlock(block), RC_OK);
}

}  // namespace
}  // namespace inkdot
