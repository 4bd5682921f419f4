// The memory service and the platform layer under it: zero fill, a zero-byte
// request still a block, one failure message with the decimal size, the
// caller pattern of obtaining and releasing, and on Windows the movable
// global memory behind each block.
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

TEST(MemoryService, ZeroFillZeroBytesAndTheFailureMessage) {
    test::MemoryWatch watch;
    auto* p = static_cast<unsigned char*>(MemAlloc(4096, 1));
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 4096; ++i) ASSERT_EQ(p[i], 0) << i;
    EXPECT_EQ(MemLock(p), p);
    EXPECT_EQ(MemUnlock(p) | MemFree(p), 0u);
    void* first = platform::allocate(0, false);
    void* second = platform::allocate(0, true);
    ASSERT_TRUE(first != nullptr && second != nullptr && first != second);
    EXPECT_EQ(platform::release(first) | platform::release(second), 0u);
    watch.seam().failAllocAt = watch.seam().allocs + 1;
    EXPECT_EQ(MemAlloc(1234567, 1), nullptr);
    EXPECT_EQ(watch.seam().messages, 1u);
    EXPECT_STREQ(watch.seam().lastMessage, "size = 1234567");
    char text[platform::kAllocTextChars];
    platform::formatAllocFailure(text, 0xFFFFFFFFu);  // all 32 bits unsigned
    EXPECT_STREQ(text, "size = 4294967295");
}

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
