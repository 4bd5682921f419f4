#include <gtest/gtest.h>

#include "cm/cm_context.h"
#include "inkdot/inkdot.h"
#include "support/memory_watch.h"

namespace inkdot {
namespace {

TEST(CmInstance, DerivedKeys) {
    const struct { uint32_t selectA, processMode, processLevel, pixelFormat, wantA, wantLevel; int16_t wantC; } cases[] = {
        {0, 0, 7, 1, 3, 2, 4},  // selectA 0 means 3 and forces processLevel 2
        {0, 4, 7, 1, 3, 0, 0},  // processMode 4 clears both
        {1, 1, 0, 1, 1, 0, 4},  // processMode 1 gives 4 whatever processLevel holds
        {1, 1, 9, 0, 1, 9, 4},  // ... also with pixelFormat 0
        {1, 0, 3, 0, 1, 3, 0},  // pixelFormat 0 gives 0
        {1, 2, 3, 1, 1, 3, 3},  // otherwise the low 16 bits of processLevel
        {1, 2, 0x10005, 1, 1, 0x10005, 5},
        {1, 2, 2, 1, 1, 2, 4},
    };
    for (const auto& c : cases) {
        test::MemoryWatch watch;
        CmSettings1 s1{};
        CmSettings2 s2{};
        s2.selectA = c.selectA;
        s1.processMode = c.processMode;
        s1.processLevel = c.processLevel;
        s2.pixelFormat = c.pixelFormat;
        uint32_t first = 77;
        CmContext* ctx = nullptr;
        ASSERT_EQ(CmNew(&s1, &s2, 0xDEAD, &first, &ctx), RC_OK);
        EXPECT_EQ(first, 0u);
        EXPECT_EQ(ctx->settings2.selectA, c.wantA);
        EXPECT_EQ(ctx->settings1.processLevel, c.wantLevel);
        EXPECT_EQ(ctx->selectC, c.wantC) << c.processMode << " " << c.processLevel;
        EXPECT_EQ(ctx->phase, 1);
        EXPECT_EQ(CmDelete(ctx), RC_OK);
    }
}

}  // namespace
}  // namespace inkdot
