// On Windows the memory service's blocks are movable global memory, locked
// once while in use. (Failures of allocation and lock, and the leaks they
// could leave, are checked at every site by the whole-job runs.)
#if defined(_WIN32)
#include <windows.h>

#include <gtest/gtest.h>

#include "frame/platform.h"

namespace inkdot {
namespace {

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

}  // namespace
}  // namespace inkdot

#endif  // _WIN32
