// Fixture helpers around the memory service's per-thread seam.
#pragma once

#include <gtest/gtest.h>

#include "frame/memory_seam.h"

namespace inkdot::test {

// Resets the seam on construction; checks on destruction that every block
// obtained since then has been released.
struct MemoryWatch {
    MemoryWatch() { memFaults() = MemFaults{}; }
    ~MemoryWatch() { EXPECT_EQ(memFaults().liveBlocks, 0) << "blocks leaked"; memFaults() = MemFaults{}; }
    MemFaults& seam() { return memFaults(); }
};

}  // namespace inkdot::test
