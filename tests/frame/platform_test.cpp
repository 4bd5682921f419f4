// The platform layer under the memory service: what every platform keeps
// (zero fill, a zero-byte request still a block, the failure text), and on
// Windows the movable global memory behind each block.
#include <gtest/gtest.h>

#include <cstring>

#include "frame/platform.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace inkdot::platform {
namespace {

TEST(PlatformLayer, FailureTextCarriesTheDecimalSize) {
    char text[kAllocTextChars];
    formatAllocFailure(text, 0);
    EXPECT_STREQ(text, "size = 0");
    formatAllocFailure(text, 8400);
    EXPECT_STREQ(text, "size = 8400");
    // The largest request: all 32 bits unsigned, never a negative number.
    formatAllocFailure(text, 0xFFFFFFFFu);
    EXPECT_STREQ(text, "size = 4294967295");
}

TEST(PlatformLayer, ZeroByteRequestIsStillABlock) {
    void* first = allocate(0, false);
    void* second = allocate(0, true);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(release(first), 0u);
    EXPECT_EQ(release(second), 0u);
}

#if defined(_WIN32)
TEST(PlatformLayerWindows, BlockIsMovableGlobalMemoryLockedOnce) {
    void* block = allocate(64, true);
    ASSERT_NE(block, nullptr);
    HGLOBAL handle = GlobalHandle(block);
    ASSERT_NE(handle, nullptr);
    // A movable block: its handle is not its address, and it is locked once.
    EXPECT_NE(static_cast<void*>(handle), block);
    EXPECT_EQ(GlobalFlags(handle) & GMEM_LOCKCOUNT, 1u);
    EXPECT_GE(GlobalSize(handle), 64u);
    EXPECT_EQ(release(block), 0u);
}
#endif

}  // namespace
}  // namespace inkdot::platform
