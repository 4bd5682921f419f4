// The memory service: the caller pattern of obtaining and releasing, and on
// Windows the movable global memory behind each block.
#include <gtest/gtest.h>

#include "frame/memory.h"
#include "frame/platform.h"
#include "inkdot/inkdot.h"
#include "support/memory_watch.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace inkdot {
namespace {

// A failed lock frees the block it could not lock; a failed unlock frees
// nothing; a failed free keeps the block for a later release.
TEST(MemoryService, ObtainBlockFollowsTheCallerPattern) {
    test::MemoryWatch watch;
    void* block = nullptr;
    watch.seam().failAllocAt = 1;
    EXPECT_EQ(obtainBlock(8, true, &block), RC_MEM_ALLOC);
    watch.seam().failLockAt = 1;
    EXPECT_EQ(obtainBlock(8, true, &block), RC_MEM_LOCK);
    EXPECT_EQ(watch.seam().liveBlocks, 0);
    ASSERT_EQ(obtainBlock(8, true, &block), RC_OK);
    watch.seam().failUnlockAt = watch.seam().unlocks + 1;
    EXPECT_EQ(releaseBlock(block), RC_MEM_UNLOCK);
    EXPECT_EQ(watch.seam().liveBlocks, 1);
    watch.seam().failFreeAt = watch.seam().frees + 1;
    EXPECT_EQ(releaseBlock(block), RC_MEM_FREE);
    EXPECT_EQ(releaseBlock(block), RC_OK);
}

#if defined(_WIN32)
TEST(PlatformLayerWindows, BlockIsMovableGlobalMemoryLockedOnce) {
    void* block = platform::allocate(64, true);
    ASSERT_NE(block, nullptr);
    HGLOBAL handle = GlobalHandle(block);
    ASSERT_NE(handle, nullptr);
    EXPECT_NE(static_cast<void*>(handle), block);  // movable: the handle is not the address
    EXPECT_EQ(GlobalFlags(handle) & GMEM_LOCKCOUNT, 1u);
    EXPECT_GE(GlobalSize(handle), 64u);
    EXPECT_EQ(platform::release(block), 0u);
}
#endif

}  // namespace
}  // namespace inkdot
